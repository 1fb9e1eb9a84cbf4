// SPDX-License-Identifier: Apache-2.0
// Words for the requests of routes.
#include <net/route.h>
#include <netinet/in.h>

#include <cstring>

#include "tools/ctl/trace/requests.h"
#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

constexpr NumberName kRouteFlags[] = {
    {RTF_UP, "UP"},           {RTF_GATEWAY, "GATEWAY"},   {RTF_HOST, "HOST"}, {RTF_REINSTATE, "REINSTATE"},
    {RTF_DYNAMIC, "DYNAMIC"}, {RTF_MODIFIED, "MODIFIED"}, {RTF_MTU, "MTU"},   {RTF_WINDOW, "WINDOW"},
    {RTF_IRTT, "IRTT"},       {RTF_REJECT, "REJECT"}};

uint32_t addressIn(const sockaddr& address) {
  sockaddr_in inet;
  memcpy(&inet, &address, sizeof inet);
  return inet.sin_addr.s_addr;
}

std::string route4Text(const Memory& memory, uint64_t argument) {
  rtentry route;
  if (!memory.read(argument, route)) return kUnreadable;
  uint32_t destination = addressIn(route.rt_dst);
  uint32_t gateway = addressIn(route.rt_gateway);
  std::string text = ipText(AF_INET, &destination) + maskText(addressIn(route.rt_genmask)) + " via " +
                     ipText(AF_INET, &gateway) + " flags " + flagsText(kRouteFlags, route.rt_flags);
  if (route.rt_metric != 0) text += " metric " + std::to_string(route.rt_metric);
  if (route.rt_dev) text += " dev " + memory.text(reinterpret_cast<uintptr_t>(route.rt_dev));
  return text;
}

std::string route6Text(const Memory& memory, uint64_t argument) {
  in6_rtmsg route;
  if (!memory.read(argument, route)) return kUnreadable;
  std::string text = ipText(AF_INET6, &route.rtmsg_dst) + "/" + std::to_string(route.rtmsg_dst_len) + " via " +
                     ipText(AF_INET6, &route.rtmsg_gateway) + " index " + std::to_string(route.rtmsg_ifindex) +
                     " flags " + flagsText(kRouteFlags, route.rtmsg_flags);
  if (route.rtmsg_metric != 0) text += " metric " + std::to_string(route.rtmsg_metric);
  return text;
}

}  // namespace

std::string routeText(const Memory& memory, const SocketRequest& request) {
  return request.family == AF_INET6 ? route6Text(memory, request.argument) : route4Text(memory, request.argument);
}

}  // namespace ctl
