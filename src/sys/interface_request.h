// SPDX-License-Identifier: Apache-2.0
// Short-lived sockets and the interface requests issued on them.
#pragma once

#include <errno.h>
#include <net/if.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <string_view>

#include "sys/descriptor.h"

namespace kestrove::sys {

// Not inherited by the programs started here.
[[nodiscard]] inline Descriptor openSocket(int family, int type, int protocol = 0) {
  return Descriptor(socket(family, type | SOCK_CLOEXEC, protocol));
}

// The longest name that the kernel gives an interface.
constexpr size_t kLongestInterfaceName = IFNAMSIZ - 1;

// A request about one interface. A name that no interface can bear fails as an unknown one does, before the kernel is
// asked: cut to fit, it might hit another interface.
class InterfaceRequest : public ifreq {
 public:
  explicit InterfaceRequest(std::string_view name) : ifreq{}, named_(name.size() <= kLongestInterfaceName) {
    if (named_) memcpy(ifr_name, name.data(), name.size());
  }

  // The result of the ioctl.
  [[nodiscard]] int issue(int socket, unsigned long request) {
    if (named_) return ioctl(socket, request, static_cast<ifreq*>(this));
    errno = ENODEV;
    return -1;
  }

 private:
  bool named_;
};

}  // namespace kestrove::sys
