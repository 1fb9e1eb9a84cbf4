// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/notify.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "sys/descriptor.h"

namespace monitor {
namespace {

std::string taken(const char* name) {
  const char* value = getenv(name);
  std::string text = value ? value : "";
  unsetenv(name);
  return text;
}

Milliseconds quarterOfWatchdog() {
  const std::string microseconds = taken("WATCHDOG_USEC");
  const std::string process = taken("WATCHDOG_PID");
  const long long span = atoll(microseconds.c_str());
  const bool meant = process.empty() || atoll(process.c_str()) == getpid();
  return meant && span > 0 ? std::max<Milliseconds>(span / 4000, 1) : kNever;
}

}  // namespace

Manager::Manager() : path_(taken("NOTIFY_SOCKET")), span_(quarterOfWatchdog()) {}

void Manager::tell(const char* words) const {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path_.empty() || path_.size() >= sizeof address.sun_path) return;
  memcpy(address.sun_path, path_.data(), path_.size());
  if (path_[0] == '@') address.sun_path[0] = '\0';
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path_.size());
  const kestrove::sys::Descriptor line(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (line) sendto(line.get(), words, strlen(words), 0, reinterpret_cast<const sockaddr*>(&address), length);
}

void Manager::alive(Milliseconds now) {
  if (span_ == kNever || now < next_) return;
  next_ = now + span_;
  tell("WATCHDOG=1");
}

}  // namespace monitor
