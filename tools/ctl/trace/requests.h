// SPDX-License-Identifier: Apache-2.0
// ioctl requests on sockets, in words.
#pragma once

#include <cstdint>
#include <string>

#include "tools/ctl/trace/memory.h"

namespace ctl {

struct SocketRequest {
  uint64_t number;
  uint64_t argument;
  int family;  // of the socket: the same request has another record on an IPv6 one
};

// Whether the request is among those that change interfaces, routes, the ARP table or bridges.
bool changesNetwork(uint64_t number);

// "SIOCADDRT 172.20.0.0/16 via 10.0.0.1 flags UP|GATEWAY". Empty for a request that only looks, as some bridge
// commands do under the number of those that change.
std::string requestText(const Memory& memory, const SocketRequest& request);

// The records of requests.cpp's table, in words, without the request's name.
std::string routeText(const Memory& memory, const SocketRequest& request);
std::string bridgeText(const Memory& memory, const SocketRequest& request);
std::string bridgePortText(const Memory& memory, const SocketRequest& request);

constexpr char kUnreadable[] = "with a record that cannot be read";

}  // namespace ctl
