// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/lock_waiters.h"

#include <fstream>
#include <sstream>
#include <string>

namespace ctl {
namespace {

// "7: POSIX  ADVISORY  WRITE 4711 00:2f:1234 0 EOF", and for who waits for it "7: -> POSIX ...".
struct KernelLock {
  std::string number;
  bool waits = false;
  bool wholeFile = false;
  int pid = 0;
};

KernelLock kernelLock(const std::string& line) {
  KernelLock lock;
  std::istringstream words(line);
  std::string kind;
  std::string strictness;
  std::string access;
  words >> lock.number >> kind;
  lock.waits = kind == "->";
  if (lock.waits) words >> kind;
  words >> strictness >> access >> lock.pid;
  lock.wholeFile = kind == "POSIX" && access == "WRITE" && line.ends_with(" 0 EOF");
  return lock;
}

}  // namespace

std::vector<int> waitersBehind(int pid) {
  std::vector<int> waiters;
  std::ifstream file("/proc/locks");
  std::string number;
  for (std::string line; std::getline(file, line);) {
    const KernelLock lock = kernelLock(line);
    if (!lock.wholeFile) continue;
    if (!lock.waits && lock.pid == pid) number = lock.number;
    if (lock.waits && lock.number == number && lock.pid > 0) waiters.push_back(lock.pid);
  }
  return waiters;
}

}  // namespace ctl
