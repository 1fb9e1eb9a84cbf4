// SPDX-License-Identifier: Apache-2.0
#include "tools/common/lock_wait.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <limits>

#include "tools/common/plain_text.h"
#include "tools/common/steady_clock.h"

namespace tools {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";
constexpr suseconds_t kAgain = 50000;

struct flock wholeFile() {
  struct flock request = {};
  request.l_type = F_WRLCK;
  request.l_whence = SEEK_SET;
  return request;
}

int lockFile() {
  static int fd = -1;
  if (fd == -1) fd = open(kLockFile, O_RDWR | O_CLOEXEC);
  return fd;
}

std::string ownFile(int pid, const char* name) { return "/proc/" + std::to_string(pid) + "/" + name; }

void heard(int) {}

double left = std::numeric_limits<double>::infinity();

class CountedWait {
 public:
  CountedWait() : begun_(steadySeconds()) {}
  ~CountedWait() { countWait(steadySeconds() - begun_); }
  CountedWait(const CountedWait&) = delete;
  CountedWait& operator=(const CountedWait&) = delete;

 private:
  double begun_;
};

// Ends a wait of this process after some time.
class Alarm {
 public:
  explicit Alarm(double seconds) {
    struct sigaction action = {};
    action.sa_handler = heard;
    sigaction(SIGALRM, &action, &before_);
    const auto whole = static_cast<time_t>(seconds);
    const auto rest = static_cast<suseconds_t>((seconds - static_cast<double>(whole)) * 1000000);
    struct itimerval time = {{0, kAgain}, {whole, whole == 0 && rest == 0 ? 1 : rest}};
    setitimer(ITIMER_REAL, &time, nullptr);
  }
  ~Alarm() {
    struct itimerval none = {};
    setitimer(ITIMER_REAL, &none, nullptr);
    sigaction(SIGALRM, &before_, nullptr);
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;

 private:
  struct sigaction before_ = {};
};

LockAnswer failed(int error) {
  const bool denied = error == EACCES || error == EPERM;
  return {error == ENOENT ? LockState::kMissing : denied ? LockState::kDenied : LockState::kFailed, {}, error};
}

// The holder may have given it up in the meantime: then it is nobody, and the next try gets it.
LockAnswer heldBy(int fd) {
  struct flock request = wholeFile();
  if (fcntl(fd, F_GETLK, &request) == -1) return failed(errno);
  return {LockState::kHeld, request.l_type == F_UNLCK ? LockHolder{} : holderOf(request.l_pid), 0};
}

}  // namespace

LockHolder holderOf(int pid) {
  LockHolder holder = {pid > 0 ? pid : 0, "", false};
  std::ifstream comm(ownFile(pid, "comm"));
  std::getline(comm, holder.name);
  std::ifstream file(ownFile(pid, "stat"));
  std::string stat;
  std::getline(file, stat);
  const size_t behindName = stat.rfind(") ");  // the name may hold blanks and brackets
  const char state = behindName == std::string::npos ? '?' : stat[behindName + 2];
  holder.stopped = state == 'T' || state == 't';
  return holder;
}

std::string describe(const LockHolder& holder) {
  if (holder.pid == 0) return "a process that cannot be seen from here";
  std::string text = "process " + std::to_string(holder.pid);
  if (!holder.name.empty()) text += " (" + escaped(holder.name) + ")";
  return text + (holder.stopped ? ", which is stopped" : "");
}

LockAnswer lookAtLock() {
  const int fd = lockFile();
  if (fd == -1) return failed(errno);
  struct flock request = wholeFile();
  if (fcntl(fd, F_GETLK, &request) == -1) return failed(errno);
  if (request.l_type == F_UNLCK) return {LockState::kFree, {}, 0};
  return {LockState::kHeld, holderOf(request.l_pid), 0};
}

LockAnswer tryLock() {
  const int fd = lockFile();
  if (fd == -1) return failed(errno);
  struct flock request = wholeFile();
  if (fcntl(fd, F_SETLK, &request) == 0) return {LockState::kFree, {}, 0};
  return errno == EACCES || errno == EAGAIN ? heldBy(fd) : failed(errno);
}

// In the kernel's queue, so that others that ask again and again do not go before. The alarm comes again and again: the
// first may have come before the wait began.
LockAnswer waitForLock(double seconds) {
  const double most = waitLeft(seconds);
  if (LockAnswer answer = tryLock(); answer.state != LockState::kHeld || most <= 0) return answer;
  struct flock request = wholeFile();
  int result;
  {
    const CountedWait wait;
    const Alarm alarm(most);
    result = fcntl(lockFile(), F_SETLKW, &request);
  }
  return result == 0 ? LockAnswer{LockState::kFree, {}, 0} : tryLock();
}

void limitWaits(double seconds) { left = seconds; }

double waitLeft(double seconds) { return std::min(seconds, left); }

void countWait(double seconds) { left = std::max(0.0, left - seconds); }

void giveLockBack() {
  struct flock request = wholeFile();
  request.l_type = F_UNLCK;
  fcntl(lockFile(), F_SETLK, &request);
}

std::string heldTooLong(const LockHolder& holder, double seconds) {
  char limit[32];
  snprintf(limit, sizeof limit, "%g", seconds);
  return "the store is locked by " + describe(holder) + "; not free within " + limit + " seconds (--wait)";
}

}  // namespace tools
