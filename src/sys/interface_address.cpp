// SPDX-License-Identifier: Apache-2.0
#include "sys/interface_address.h"

#include <netinet/in.h>

#include "sys/interface_request.h"

namespace kestrove::sys {
namespace {

constexpr short kRaisedFlags = IFF_UP | IFF_BROADCAST | IFF_MULTICAST;

}  // namespace

bool InterfaceAddresses::configure(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) const {
  return setAddress(name, SIOCSIFADDR, address) &&
         (address == 0 || setMaskAndBroadcast(name, address, mask, broadcast)) && raise(name);
}

bool InterfaceAddresses::setAddress(const char* name, unsigned long request, uint32_t address) const {
  sockaddr_in inet = {};
  inet.sin_family = AF_INET;
  inet.sin_addr.s_addr = address;
  InterfaceRequest change(name);
  memcpy(&change.ifr_addr, &inet, sizeof inet);
  return change.issue(socket_.get(), request) == 0;
}

bool InterfaceAddresses::setMaskAndBroadcast(const char* name, uint32_t address, uint32_t mask,
                                             uint32_t broadcast) const {
  if (mask != 0 && !setAddress(name, SIOCSIFNETMASK, mask)) return false;
  if (mask != 0 && broadcast == 0) broadcast = ~mask | address;
  return broadcast == 0 || setAddress(name, SIOCSIFBRDADDR, broadcast);
}

bool InterfaceAddresses::raise(const char* name) const {
  InterfaceRequest change(name);
  change.ifr_flags = kRaisedFlags;
  return change.issue(socket_.get(), SIOCSIFFLAGS) == 0;
}

}  // namespace kestrove::sys
