// SPDX-License-Identifier: Apache-2.0
#include "tools/api/socket.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/ctl/session.h"

namespace api {
namespace {

using kestrove::sys::Descriptor;

constexpr int kBacklog = 128;

struct sockaddr_un addressOf(const std::string& path) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) throw ctl::Refusal(ctl::kUsage, path + ": too long for a socket");
  memcpy(address.sun_path, path.data(), path.size());
  return address;
}

bool answers(const struct sockaddr_un& address) {
  const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return probe && connect(probe.get(), reinterpret_cast<const struct sockaddr*>(&address), sizeof address) == 0;
}

void makeFolder(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/'));
  if (!folder.empty() && mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST) throw ctl::systemRefusal(folder, errno);
}

// Without that group root alone may connect.
void openFor(const SocketPlace& place) {
  const struct group* group = getgrnam(place.group.c_str());
  if (group && chown(place.path.c_str(), static_cast<uid_t>(-1), group->gr_gid) != 0) group = nullptr;
  if (chmod(place.path.c_str(), group ? 0660 : 0600) != 0) throw ctl::systemRefusal(place.path, errno);
}

}  // namespace

Descriptor listenAt(const SocketPlace& place) {
  const struct sockaddr_un address = addressOf(place.path);
  makeFolder(place.path);
  if (answers(address)) throw ctl::Refusal(ctl::kSystem, place.path + ": another process listens there");
  unlink(place.path.c_str());
  Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!listener) throw ctl::systemRefusal("a socket", errno);
  const mode_t mask = umask(0177);
  const int bound = bind(listener.get(), reinterpret_cast<const struct sockaddr*>(&address), sizeof address);
  umask(mask);
  if (bound != 0 || listen(listener.get(), kBacklog) != 0) throw ctl::systemRefusal(place.path, errno);
  openFor(place);
  return listener;
}

}  // namespace api
