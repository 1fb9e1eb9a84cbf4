// SPDX-License-Identifier: Apache-2.0
// Routing requests to the kernel: one short-lived raw socket each.
#include <net/route.h>
#include <netinet/in.h>
#include <string.h>

#include "kestrove/iface.h"
#include "kestrove/ipv6.h"
#include "kestrove/routes.h"
#include "store/fail.h"
#include "store/text.h"
#include "sys/interface_request.h"

namespace kestrove {
namespace {

constexpr uint32_t kHostMask = 0xFFFFFFFFu;
constexpr uint32_t kHostPrefix = 128;
constexpr int kAnyInterface = 0;

int request(int family, unsigned long command, void* argument) {
  sys::Descriptor raw = sys::openSocket(family, SOCK_RAW, IPPROTO_RAW);
  if (!raw) return fail(SHM_ESYSTEM);
  int result = ioctl(raw.get(), command, argument);
  return result < 0 ? fail(SHM_ESYSTEM) : result;
}

void setAddress(sockaddr& out, uint32_t address) {
  sockaddr_in in = {};
  in.sin_family = AF_INET;
  in.sin_addr.s_addr = address;
  memcpy(&out, &in, sizeof out);
}

int request4(const RouteEntry* route, unsigned long command) {
  if (!route) return fail(SHM_EINVAL);
  rtentry entry = {};
  setAddress(entry.rt_dst, route->destination);
  setAddress(entry.rt_gateway, route->gateway);
  setAddress(entry.rt_genmask, route->netmask);
  entry.rt_flags = RTF_UP | RTF_GATEWAY;
  // With RTF_HOST the kernel asks for no mask.
  if (route->netmask == kHostMask) entry.rt_flags |= RTF_HOST;
  return request(AF_INET, command, &entry);
}

int indexOf(const Route6Entry& route) {
  char name[sizeof route.interfaceName];
  copyField(name, sizeof name, route.interfaceName);
  return getIfaceIndex(name);
}

int request6(const Route6Entry& route, unsigned long command, int index) {
  if (index < 0) return fail(SHM_ESYSTEM);
  in6_rtmsg message = {};
  memcpy(&message.rtmsg_dst, route.destination, sizeof route.destination);
  memcpy(&message.rtmsg_gateway, route.gateway, sizeof route.gateway);
  message.rtmsg_dst_len = static_cast<uint16_t>(route.prefixLength);
  message.rtmsg_flags = RTF_UP;  // unlike IPv4 without RTF_GATEWAY: kept on purpose
  if (route.prefixLength == kHostPrefix) message.rtmsg_flags |= RTF_HOST;
  message.rtmsg_ifindex = index;
  return request(AF_INET6, command, &message);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int addKernelRoute(const RouteEntry* route) { return request4(route, SIOCADDRT); }

int deleteKernelRoute(const RouteEntry* route) { return request4(route, SIOCDELRT); }

int addKernelRoute6(const Route6Entry* route) {
  if (!route) return fail(SHM_EINVAL);
  return request6(*route, SIOCADDRT, indexOf(*route));
}

// The stored route has the name that its giver put in, often none: then the route is found on any interface.
int deleteKernelRoute6(const Route6Entry* route) {
  if (!route) return fail(SHM_EINVAL);
  return request6(*route, SIOCDELRT, route->interfaceName[0] ? indexOf(*route) : kAnyInterface);
}
