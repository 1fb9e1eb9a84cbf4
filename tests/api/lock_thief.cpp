// SPDX-License-Identifier: Apache-2.0
#include "tests/api/lock_thief.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <new>
#include <string>

#include "kestrove/kestrove.h"
#include "tools/common/lock_wait.h"

namespace kestrove::testing {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";

// What the thief and all that are watched share.
struct Board {
  int left = 0;  // until it strikes
  bool holds = false;
  bool struck = false;
  bool begun = false;  // the store was another one when the lock was given up
  int endless = 0;
  dev_t device = 0;  // of the lock file: a copy of the appliance has its own
  ino_t inode = 0;
  double waited = 0;
};

Board* board = nullptr;
const Peer::Line* line = nullptr;
std::string* before = nullptr;  // the store, as it was when the thief began to wait

long kernelsOwn(int fd, int command, void* argument) {
#ifdef SYS_fcntl64
  return syscall(SYS_fcntl64, fd, command, argument);
#else
  return syscall(SYS_fcntl, fd, command, argument);
#endif
}

struct flock wholeFile(short type) {
  struct flock request = {};
  request.l_type = type;
  request.l_whence = SEEK_SET;
  return request;
}

int rob(const Peer::Line& given) {
  const int file = open(kLockFile, O_RDWR | O_CLOEXEC);
  for (char word; (word = given.hear()) != '\0';) {
    struct flock request = wholeFile(word == 't' ? F_WRLCK : F_UNLCK);
    kernelsOwn(file, F_SETLKW, &request);
    given.say(word);
  }
  return 0;
}

void tell(char word) {
  line->say(word);
  line->hear();
  board->holds = word == 't';
}

void strike() {
  board->struck = true;
  tell('t');
}

bool isLockFile(int fd) {
  struct stat given;
  return fstat(fd, &given) == 0 && given.st_dev == board->device && given.st_ino == board->inode;
}

// The commands of both widths of an offset.
bool waits(int command) { return command == 7 || command == 14; }
bool asksForLock(int command) { return command == 6 || command == 13 || waits(command); }

double limit() {
  struct itimerval time = {};
  getitimer(ITIMER_REAL, &time);
  return static_cast<double>(time.it_value.tv_sec) + static_cast<double>(time.it_value.tv_usec) / 1e6;
}

void noteBeginning() { board->begun = board->begun || (shm && memcmp(before->data(), shm, SHM_SIZE) != 0); }

// True where the wait is over without the lock.
bool waitInVain() {
  const double seconds = limit();
  board->waited += seconds;
  tools::countWait(seconds);
  if (seconds > 0) return true;
  if (!board->begun) ++board->endless;
  tell('g');
  return false;
}

// A child that forgets its parent's lock gives up nothing.
bool isFree(int fd) {
  struct flock request = wholeFile(F_WRLCK);
  return kernelsOwn(fd, F_GETLK, &request) == 0 && request.l_type == F_UNLCK;
}

long watched(int fd, int command, void* argument) {
  const bool gives = static_cast<const struct flock*>(argument)->l_type == F_UNLCK;
  if (!gives && waits(command) && board->holds && waitInVain()) {
    errno = EINTR;
    return -1;
  }
  if (gives) noteBeginning();
  const long result = kernelsOwn(fd, command, argument);
  if (gives && board->left > 0 && isFree(fd) && --board->left == 0) strike();
  return result;
}

int call(int fd, int command, void* argument) {
  if (!board || !asksForLock(command) || !isLockFile(fd)) return static_cast<int>(kernelsOwn(fd, command, argument));
  return static_cast<int>(watched(fd, command, argument));
}

void* makeBoard() { return mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0); }

}  // namespace

LockThief::LockThief() : peer_(rob) {
  board = new (makeBoard()) Board;
  line = &peer_.line();
  before = new std::string;
}

LockThief::~LockThief() {
  munmap(board, sizeof(Board));
  board = nullptr;
  delete before;
}

void LockThief::strikeAt(int release) {
  struct stat file = {};
  stat(kLockFile, &file);
  *board = {.left = release, .device = file.st_dev, .inode = file.st_ino};
  before->assign(reinterpret_cast<const char*>(shm), SHM_SIZE);
  if (release == 0) strike();
}

void LockThief::letGo() {
  board->left = 0;
  if (board->holds) tell('g');
}

bool LockThief::struck() const { return board->struck; }
int LockThief::endlessWaits() const { return board->endless; }
double LockThief::secondsWaited() const { return board->waited; }

}  // namespace kestrove::testing

// Before the C library's, which the store's library and the commands would call.
extern "C" {

__attribute__((visibility("default"))) int lockThiefCall(int fd, int command, ...) __asm__("fcntl64");
__attribute__((visibility("default"))) int lockThiefOldCall(int fd, int command, ...) __asm__("fcntl");

int lockThiefCall(int fd, int command, ...) {
  va_list list;
  va_start(list, command);
  void* argument = va_arg(list, void*);
  va_end(list);
  return kestrove::testing::call(fd, command, argument);
}

int lockThiefOldCall(int fd, int command, ...) {
  va_list list;
  va_start(list, command);
  void* argument = va_arg(list, void*);
  va_end(list);
  return kestrove::testing::call(fd, command, argument);
}
}
