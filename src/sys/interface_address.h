// SPDX-License-Identifier: Apache-2.0
// IPv4 addresses of interfaces by ioctl, on a socket that several changes can share.
#pragma once

#include <stdint.h>

#include <utility>

#include "sys/descriptor.h"

namespace kestrove::sys {

class InterfaceAddresses {
 public:
  explicit InterfaceAddresses(Descriptor socket) : socket_(std::move(socket)) {}

  // Sets address, mask and broadcast as shm_ifconfig says, for a name of at most 15 characters, and raises the
  // interface. False at the first step that is refused, with its errno.
  [[nodiscard]] bool configure(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) const;

 private:
  [[nodiscard]] bool setAddress(const char* name, unsigned long request, uint32_t address) const;
  [[nodiscard]] bool setMaskAndBroadcast(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) const;
  [[nodiscard]] bool raise(const char* name) const;

  Descriptor socket_;
};

}  // namespace kestrove::sys
