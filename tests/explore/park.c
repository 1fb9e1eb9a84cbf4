/* SPDX-License-Identifier: Apache-2.0 */
/* Preloaded into a process that works on the store: makes it stand still wherever it could meet another process, and
   wait for the word to go on. All that processes of the library have of each other are the store's lock, the lock of
   the saves and the files; so these are the places: before a lock is granted, after it was released, and inside a save,
   an event image or a load, where a process can be killed or overtaken by one that takes no lock.

   A request that would wait is turned into a try, so that the kernel never holds a process back where the explorer does
   not see it. The clock stands still, pauses take no time, and nothing goes to the system log: an operation does the
   same whenever it runs. */
#include "tests/explore/park.h"

#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

/* The C library's names, under names of our own: its headers redirect some of them. */
int parkedFcntl(int fd, int command, ...) __asm__("fcntl");
int parkedFcntl64(int fd, int command, ...) __asm__("fcntl64");
int parkedOpen(const char* path, int flags, ...) __asm__("open");
int parkedOpen64(const char* path, int flags, ...) __asm__("open64");
void silentLogChecked(int priority, int flag, const char* format, ...) __asm__("__syslog_chk");
void silentLog(int priority, const char* format, ...) __asm__("syslog");

enum { kNoDescriptor = -1, kImageSize = 360460, kStandingClock = 1700000000 };

static const char kStoreLock[] = "/var/lock/shm";
static const char kLoadedSuffix[] = ".load";
static const char kPolicyRouting[] = "/sbin/ip ";

static int line = kNoDescriptor;
static pid_t owner;
static int storeFd = kNoDescriptor; /* held through */
static int saveFd = kNoDescriptor;  /* held through */
static int loadFd = kNoDescriptor;
static int lockRefused;
static struct Report report;

/* The C library's own. */
static struct {
  int (*fcntl)(int, int, ...);
  int (*open)(const char*, int, ...);
  int (*flock)(int, int);
  int (*close)(int);
  int (*fsync)(int);
  ssize_t (*read)(int, void*, size_t);
  ssize_t (*write)(int, const void*, size_t);
  int (*system)(const char*);
} real;

#define FIND(call, name) *(void**)&real.call = dlsym(RTLD_NEXT, name)

__attribute__((constructor)) static void findReal(void) {
  FIND(fcntl, "fcntl64");
  FIND(open, "open64");
  FIND(flock, "flock");
  FIND(close, "close");
  FIND(fsync, "fsync");
  FIND(read, "read");
  FIND(write, "write");
  FIND(system, "system");
}

/* Not in the programs that an operation starts. */
static int watched(void) { return line != kNoDescriptor && getpid() == owner; }

static void sayAndWait(int park) {
  char word;
  report.park = park;
  report.pid = owner;
  report.holdsStore = storeFd != kNoDescriptor;
  report.holdsSave = saveFd != kNoDescriptor;
  if (write(line, &report, sizeof report) != (ssize_t)sizeof report) _exit(1);
  if (park != kParkDone && read(line, &word, 1) != 1) _exit(1);
}

void parkEnable(int fd) {
  line = fd;
  owner = getpid();
  parkHere(kParkStart);
}

void parkHere(int park) {
  int error = errno;
  if (watched()) sayAndWait(park);
  errno = error;
}

void parkResult(int32_t result, uint32_t code) {
  struct CallResult* place = &report.result[report.calls++];
  place->result = result;
  place->code = code;
}

void parkRefuseLock(int refused) { lockRefused = refused; }

static int isStoreLock(int fd) {
  struct stat file, lock;
  return watched() && fstat(fd, &file) == 0 && stat(kStoreLock, &lock) == 0 && file.st_dev == lock.st_dev &&
         file.st_ino == lock.st_ino;
}

static int held(int error) { return error == EAGAIN || error == EACCES || error == EWOULDBLOCK; }

static int takeStore(int fd, struct flock* request) {
  for (int park = kParkStoreLock;; park = kParkBlocked) {
    parkHere(park);
    if (lockRefused) {
      errno = ENOLCK;
      return -1;
    }
    if (real.fcntl(fd, F_SETLK, request) == 0) break;
    if (!held(errno)) return -1;
  }
  storeFd = fd;
  return 0;
}

static int releaseStore(int fd, struct flock* request) {
  int result = real.fcntl(fd, F_SETLK, request);
  storeFd = kNoDescriptor;
  parkHere(kParkStoreReleased);
  return result;
}

static int lockOrPass(int fd, int command, void* argument) {
  struct flock* request = argument;
  int asks = command == F_SETLK || command == F_SETLKW;
  if (!asks || !isStoreLock(fd)) return real.fcntl(fd, command, argument);
  if (request->l_type == F_UNLCK) return releaseStore(fd, request);
  return command == F_SETLKW ? takeStore(fd, request) : real.fcntl(fd, command, argument);
}

#define LAST_ARGUMENT(type, last, name) \
  va_list arguments;                    \
  va_start(arguments, last);            \
  type name = va_arg(arguments, type);  \
  va_end(arguments)

int parkedFcntl(int fd, int command, ...) {
  LAST_ARGUMENT(void*, command, argument);
  return lockOrPass(fd, command, argument);
}

int parkedFcntl64(int fd, int command, ...) {
  LAST_ARGUMENT(void*, command, argument);
  return lockOrPass(fd, command, argument);
}

static int takeSave(int fd) {
  for (int park = kParkSaveLock;; park = kParkBlocked) {
    parkHere(park);
    if (real.flock(fd, LOCK_EX | LOCK_NB) == 0) break;
    if (!held(errno)) return -1;
  }
  saveFd = fd;
  return 0;
}

/* One that does not wait is that of a temporary file. */
int flock(int fd, int operation) {
  if (!watched()) return real.flock(fd, operation);
  if (operation == LOCK_EX) return takeSave(fd);
  int result = real.flock(fd, operation);
  if (result == 0 && operation == (LOCK_EX | LOCK_NB)) parkHere(kParkTemporary);
  return result;
}

int close(int fd) {
  int result = real.close(fd);
  if (fd == loadFd) loadFd = kNoDescriptor;
  if (!watched() || fd != saveFd) return result;
  saveFd = kNoDescriptor;
  if (storeFd == kNoDescriptor) parkHere(kParkSaveReleased);
  return result;
}

int fsync(int fd) {
  parkHere(kParkSync);
  return real.fsync(fd);
}

ssize_t write(int fd, const void* data, size_t size) {
  if (size == kImageSize) parkHere(kParkImage);
  return real.write(fd, data, size);
}

static int endsWith(const char* text, const char* end) {
  size_t length = strlen(text);
  return length >= strlen(end) && strcmp(text + length - strlen(end), end) == 0;
}

static int openAndNote(const char* path, int flags, mode_t mode) {
  int fd = real.open(path, flags, mode);
  if (watched() && endsWith(path, kLoadedSuffix)) loadFd = fd;
  return fd;
}

int parkedOpen(const char* path, int flags, ...) {
  LAST_ARGUMENT(unsigned, flags, mode);
  return openAndNote(path, flags, mode);
}

int parkedOpen64(const char* path, int flags, ...) {
  LAST_ARGUMENT(unsigned, flags, mode);
  return openAndNote(path, flags, mode);
}

ssize_t read(int fd, void* data, size_t size) {
  if (fd == loadFd && fd != kNoDescriptor) {
    loadFd = kNoDescriptor;
    parkHere(kParkLoad);
  }
  return real.read(fd, data, size);
}

/* What an operation starts is noted, in the order in which it starts it, and not run: other programs do the same
   whenever they run. The policy routing's own are run, for the kernel's rules. */
static void note(const char* word, const char* end) {
  int fd = openAndNote(kStartedPrograms, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (fd == kNoDescriptor || write(fd, word, strlen(word)) < 0 || write(fd, end, strlen(end)) < 0) _exit(1);
  close(fd);
}

static int usesStore(const char* program) {
  static const char* const names[] = {"/usr/bin/apacheConfig.sh", "/usr/bin/snmpdConfig.sh",
                                      "/usr/bin/sshdConfig.sh",   "/bin/shm-init",
                                      "/bin/restartKestrove",     "dhcpcd"};
  for (size_t i = 0; i < sizeof names / sizeof names[0]; ++i) {
    if (strncmp(program, names[i], strlen(names[i])) == 0) return 1;
  }
  return 0;
}

/* One that waits for the store would wait for ever; what is started without the lock has no order. */
static void noteHold(const char* program) {
  if (storeFd == kNoDescriptor) {
    note(kStartedFreely, "");
  } else if (usesStore(program)) {
    note(kStartedUnderLock, "");
  }
}

int system(const char* command) {
  if (!watched()) return real.system(command);
  noteHold(command);
  note(command, "\n");
  if (usesStore(command)) parkHere(kParkProgram);
  return strncmp(command, kPolicyRouting, strlen(kPolicyRouting)) == 0 ? real.system(command) : 0;
}

int execvp(const char* program, char* const argv[]) {
  noteHold(program);
  for (int i = 0; argv[i]; ++i) note(argv[i], argv[i + 1] ? " " : "\n");
  _exit(0);
}

time_t time(time_t* now) {
  if (now) *now = kStandingClock;
  return kStandingClock;
}

int gettimeofday(struct timeval* now, void* zone) {
  (void)zone;
  now->tv_sec = kStandingClock;
  now->tv_usec = 0;
  return 0;
}

int nanosleep(const struct timespec* asked, struct timespec* left) {
  (void)asked;
  if (left) *left = (struct timespec){0, 0};
  return 0;
}

unsigned sleep(unsigned seconds) {
  (void)seconds;
  return 0;
}

int usleep(useconds_t time) {
  (void)time;
  return 0;
}

int clock_nanosleep(clockid_t clock, int flags, const struct timespec* asked, struct timespec* left) {
  (void)clock;
  (void)flags;
  return nanosleep(asked, left);
}

void silentLog(int priority, const char* format, ...) {
  (void)priority;
  (void)format;
}

void silentLogChecked(int priority, int flag, const char* format, ...) {
  (void)priority;
  (void)flag;
  (void)format;
}
