// SPDX-License-Identifier: Apache-2.0
// The IPv6 addresses of an interface, by ioctl.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdio.h>
#include <string.h>

// The kernel's header, after the C library's, which it gives way to.
#include <linux/ipv6.h>

#include "kestrove/iface.h"
#include "store/fail.h"
#include "sys/interface_request.h"
#include "sys/stream.h"

using namespace kestrove;

namespace {

enum { kAdd = 0, kDelete = 1, kOperations = 2 };

constexpr char kAddressList[] = "/proc/net/if_inet6";
constexpr int kLongestLine = 118;
constexpr int kListedAddresses = 7;  // the room that callers have
constexpr size_t kDigits = 32;
constexpr size_t kGroup = 4;

sys::Descriptor openRawSocket() { return sys::openSocket(AF_INET6, SOCK_RAW, IPPROTO_RAW); }

// The list has the address as 32 bare digits; the parser wants a colon between each four.
bool parseDigits(const char* line, void* address) {
  const char* digits = line + strspn(line, " ");
  if (strcspn(digits, " \n") != kDigits) return false;
  char text[kDigits + kDigits / kGroup];
  char* position = text;
  for (size_t i = 0; i < kDigits; i += kGroup) {
    if (i > 0) *position++ = ':';
    memcpy(position, digits + i, kGroup);
    position += kGroup;
  }
  *position = '\0';
  return inet_pton(AF_INET6, text, address) == 1;
}

int change(const sys::Descriptor& socket, unsigned long request, in6_ifreq& address) {
  return ioctl(socket.get(), request, &address);
}

// Unlike set_iface_up, which clears all other flags.
bool raiseKeepingFlags(const sys::Descriptor& socket, const char* name) {
  sys::InterfaceRequest flags(name);
  if (flags.issue(socket.get(), SIOCGIFFLAGS) != 0) return false;
  if (flags.ifr_flags & IFF_UP) return true;
  flags.ifr_flags = static_cast<short>(flags.ifr_flags | IFF_UP);
  return flags.issue(socket.get(), SIOCSIFFLAGS) == 0;
}

bool listed(const in6_addr (&list)[kListedAddresses], int count, const in6_addr& address) {
  for (int i = 0; i < count; ++i) {
    if (memcmp(&list[i], &address, sizeof address) == 0) return true;
  }
  return false;
}

int addAddress(const sys::Descriptor& socket, const char* name, in6_ifreq& address) {
  in6_addr present[kListedAddresses];
  int count = getIpv6Addrs(name, present);
  if (count < 0) return fail(SHM_ESYSTEM);
  if (listed(present, count, address.ifr6_addr)) return 0;  // the kernel would refuse it a second time
  bool done = change(socket, SIOCSIFADDR, address) == 0 && raiseKeepingFlags(socket, name);
  return done ? 0 : fail(SHM_ESYSTEM);
}

// False at an address that does not parse. The name is sought anywhere in the line, so eth0 also lists the addresses of
// eth0.12: kept on purpose.
bool readAddresses(FILE* list, const char* name, in6_addr (&found)[kListedAddresses], int& count) {
  char line[kLongestLine + 1];
  while (count < kListedAddresses && fgets(line, sizeof line, list)) {
    if (!strstr(line, name)) continue;
    if (!parseDigits(line, &found[count])) return false;
    ++count;
  }
  return true;
}

}  // namespace

int getIpv6Addrs(const char* name, void* out7x16) {
  if (!name || !out7x16) return fail(SHM_EINVAL);
  sys::Stream list(fopen(kAddressList, "re"));
  if (!list) return -1;
  in6_addr found[kListedAddresses];  // the output may lie where the name does
  int count = 0;
  bool sound = readAddresses(list.get(), name, found, count);
  memcpy(out7x16, found, static_cast<size_t>(count) * sizeof found[0]);
  return sound ? count : -1;
}

int getIfaceIndex(const char* name) {
  if (!name) return fail(SHM_EINVAL);
  sys::Descriptor socket = openRawSocket();
  if (!socket) return fail(SHM_ESYSTEM);
  sys::InterfaceRequest look(name);
  return look.issue(socket.get(), SIOCGIFINDEX) == 0 ? look.ifr_ifindex : fail(SHM_ESYSTEM);
}

int shm_if6config(const char* name, const void* address16, uint32_t prefixLength, int op) {
  if (!name || !address16 || strlen(name) > sys::kLongestInterfaceName) return fail(SHM_EINVAL);
  if (static_cast<unsigned>(op) >= kOperations) return fail(SHM_EINVAL);
  sys::Descriptor socket = openRawSocket();
  if (!socket) return fail(SHM_ESYSTEM);
  in6_ifreq address = {};
  memcpy(&address.ifr6_addr, address16, sizeof address.ifr6_addr);
  address.ifr6_prefixlen = prefixLength;
  address.ifr6_ifindex = getIfaceIndex(name);  // -1 for an unknown one: the kernel refuses it
  // A refused deletion sets no code: kept on purpose.
  if (op == kDelete) return change(socket, SIOCDIFADDR, address) == 0 ? 0 : -1;
  return addAddress(socket, name, address);
}
