// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/hints.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/snmp/setting.h"

namespace snmp {
namespace {

constexpr monitor::Milliseconds kQuiet = 60000;

kestrove::sys::Descriptor bound(const std::string& path) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return kestrove::sys::Descriptor();
  memcpy(address.sun_path, path.data(), path.size());
  mkdir(path.substr(0, path.rfind('/')).c_str(), 0755);
  unlink(path.c_str());
  kestrove::sys::Descriptor line(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const mode_t before = umask(0177);
  const bool done = line && bind(line.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  umask(before);
  return done ? std::move(line) : kestrove::sys::Descriptor();
}

// snmpd does not stay root. Without that group root alone may tell.
void openFor(const std::string& path, const std::string& name) {
  const struct group* group = getgrnam(name.c_str());
  if (group && chown(path.c_str(), static_cast<uid_t>(-1), group->gr_gid) == 0) chmod(path.c_str(), 0620);
}

}  // namespace

void Refusals::log(monitor::Milliseconds now) {
  if (!due(now)) return;
  logEvent(event_, *source_, kUser);
  source_.reset();
  notBefore_ = now + kQuiet;
}

Hints::Hints(const std::string& path, const std::string& group) : socket_(bound(path)) {
  if (socket_) {
    openFor(path, group);
  } else {
    syslog(LOG_WARNING, "%s: %m; refused requests are not logged", path.c_str());
  }
}

void Hints::hear() {
  char words[2];
  while (recv(socket_.get(), words, sizeof words, 0) == static_cast<ssize_t>(sizeof words)) {
    if (words[1] >= '1' && words[1] <= '3') take(words[0], SHM_SOURCE_SNMP_V1 + static_cast<uint32_t>(words[1] - '1'));
  }
}

void Hints::take(char hint, uint32_t source) {
  switch (hint) {
    case kReadRefused: return reads_.heard(source);
    case kWriteRefused: return writes_.heard(source);
    case kWriteAsked: writer_ = source; return;
    default: return;
  }
}

void Hints::log(monitor::Milliseconds now) {
  reads_.log(now);
  writes_.log(now);
}

}  // namespace snmp
