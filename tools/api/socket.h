// SPDX-License-Identifier: Apache-2.0
// The socket that the web server in front speaks to.
#pragma once

#include <string>

#include "sys/descriptor.h"

namespace api {

struct SocketPlace {
  std::string path = "/run/kestrove/api.sock";
  std::string group = "www-data";  // who may connect beside root
};

// Throws a Refusal where another process listens there.
kestrove::sys::Descriptor listenAt(const SocketPlace& place);

}  // namespace api
