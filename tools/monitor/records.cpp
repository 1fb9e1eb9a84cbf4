// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/records.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>

#include "kestrove/kestrove.h"

namespace monitor {
namespace {

constexpr size_t kIntervalBytes = SHM_INTERVAL_WORDS * sizeof(uint32_t);
constexpr size_t kSessionBytes = 8 * sizeof(uint64_t) + sizeof(uint32_t);
constexpr int kAtOnce = 64;

kestrove::sys::Descriptor bound(const std::string& path) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return kestrove::sys::Descriptor();
  memcpy(address.sun_path, path.data(), path.size());
  kestrove::sys::Descriptor line(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  unlink(path.c_str());
  const mode_t before = umask(0177);
  const bool done = line && bind(line.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  umask(before);
  return done ? std::move(line) : kestrove::sys::Descriptor();
}

}  // namespace

Records::Records(const std::string& path) : socket_(bound(path)) {
  if (!socket_) syslog(LOG_ERR, "%s: %m; no records are taken there", path.c_str());
}

Records::Kind Records::next() {
  const ssize_t length = recv(socket_.get(), record_, sizeof record_, MSG_TRUNC);
  if (length < 0) return Kind::kNone;
  if (length == static_cast<ssize_t>(kIntervalBytes)) return Kind::kInterval;
  if (length == static_cast<ssize_t>(kSessionBytes)) return Kind::kSessions;
  if (!toldOfUnknown_) syslog(LOG_WARNING, "a record of %zd bytes is none that is known; it is dropped", length);
  toldOfUnknown_ = true;
  return Kind::kUnknown;
}

bool Records::fold(Store& store) {
  for (int i = 0; i < kAtOnce; ++i) {
    if (waiting_ == Kind::kNone) waiting_ = next();
    if (waiting_ == Kind::kNone) return true;
    if (waiting_ != Kind::kUnknown) {
      Visit visit(store);
      if (!visit) return false;
      uint32_t words[SHM_INTERVAL_WORDS];
      memcpy(words, record_, sizeof words);
      if (waiting_ == Kind::kInterval) shm_updateKestroveStats(words);
      if (waiting_ == Kind::kSessions) updateDomoStats(record_);
    }
    waiting_ = Kind::kNone;
  }
  return true;
}

}  // namespace monitor
