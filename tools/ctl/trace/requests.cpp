// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/requests.h"

#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>

#include <cstdio>
#include <cstring>

// The kernel's headers, after the C library's, which they give way to.
#include <linux/ipv6.h>
#include <linux/sockios.h>

#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

constexpr NumberName kInterfaceFlags[] = {{IFF_UP, "UP"},
                                          {IFF_BROADCAST, "BROADCAST"},
                                          {IFF_DEBUG, "DEBUG"},
                                          {IFF_LOOPBACK, "LOOPBACK"},
                                          {IFF_POINTOPOINT, "POINTOPOINT"},
                                          {IFF_NOTRAILERS, "NOTRAILERS"},
                                          {IFF_RUNNING, "RUNNING"},
                                          {IFF_NOARP, "NOARP"},
                                          {IFF_PROMISC, "PROMISC"},
                                          {IFF_ALLMULTI, "ALLMULTI"},
                                          {IFF_MASTER, "MASTER"},
                                          {IFF_SLAVE, "SLAVE"},
                                          {IFF_MULTICAST, "MULTICAST"},
                                          {IFF_PORTSEL, "PORTSEL"},
                                          {IFF_AUTOMEDIA, "AUTOMEDIA"},
                                          {IFF_DYNAMIC, "DYNAMIC"}};

constexpr NumberName kArpFlags[] = {{ATF_COM, "COM"},         {ATF_PERM, "PERM"},
                                    {ATF_PUBL, "PUBL"},       {ATF_USETRAILERS, "USETRAILERS"},
                                    {ATF_NETMASK, "NETMASK"}, {ATF_DONTPUB, "DONTPUB"}};

std::string nameIn(const char (&field)[IFNAMSIZ]) { return {field, strnlen(field, sizeof field)}; }

std::string ipv4In(const sockaddr& address) {
  sockaddr_in inet;
  memcpy(&inet, &address, sizeof inet);
  return ipText(AF_INET, &inet.sin_addr);
}

std::string hardwareText(const char* bytes) {
  std::string text;
  for (int i = 0; i < 6; ++i) {
    char two[4];
    snprintf(two, sizeof two, i == 0 ? "%02x" : ":%02x", static_cast<unsigned char>(bytes[i]));
    text += two;
  }
  return text;
}

std::string address6Text(const Memory& memory, uint64_t argument) {
  in6_ifreq record;
  if (!memory.read(argument, record)) return kUnreadable;
  return ipText(AF_INET6, &record.ifr6_addr) + "/" + std::to_string(record.ifr6_prefixlen) + " index " +
         std::to_string(record.ifr6_ifindex);
}

std::string addressText(const Memory& memory, const SocketRequest& request) {
  if (request.family == AF_INET6) return address6Text(memory, request.argument);
  ifreq record;
  if (!memory.read(request.argument, record)) return kUnreadable;
  return nameIn(record.ifr_name) + " " + ipv4In(record.ifr_addr);
}

std::string interfaceFlagsText(const Memory& memory, const SocketRequest& request) {
  ifreq record;
  if (!memory.read(request.argument, record)) return kUnreadable;
  return nameIn(record.ifr_name) + " " + flagsText(kInterfaceFlags, static_cast<uint16_t>(record.ifr_flags));
}

// A deletion names the address alone.
std::string arpText(const Memory& memory, const SocketRequest& request) {
  arpreq record;
  if (!memory.read(request.argument, record)) return kUnreadable;
  std::string text = ipv4In(record.arp_pa);
  if (request.number != SIOCDARP) text += " " + hardwareText(record.arp_ha.sa_data);
  text += " flags " + flagsText(kArpFlags, static_cast<unsigned>(record.arp_flags));
  std::string device = nameIn(record.arp_dev);
  return device.empty() ? text : text + " dev " + device;
}

struct RequestRow {
  uint64_t number;
  const char* name;
  std::string (*text)(const Memory&, const SocketRequest&);
};

constexpr RequestRow kRequests[] = {{SIOCSIFADDR, "SIOCSIFADDR", addressText},
                                    {SIOCDIFADDR, "SIOCDIFADDR", addressText},
                                    {SIOCSIFNETMASK, "SIOCSIFNETMASK", addressText},
                                    {SIOCSIFBRDADDR, "SIOCSIFBRDADDR", addressText},
                                    {SIOCSIFFLAGS, "SIOCSIFFLAGS", interfaceFlagsText},
                                    {SIOCADDRT, "SIOCADDRT", routeText},
                                    {SIOCDELRT, "SIOCDELRT", routeText},
                                    {SIOCSARP, "SIOCSARP", arpText},
                                    {SIOCDARP, "SIOCDARP", arpText},
                                    {SIOCSIFBR, "SIOCSIFBR", bridgeText},
                                    {SIOCGIFBR, "SIOCGIFBR", bridgeText},
                                    {SIOCDEVPRIVATE, "SIOCDEVPRIVATE", bridgePortText}};

const RequestRow* find(uint64_t number) {
  for (const RequestRow& row : kRequests) {
    if (row.number == number) return &row;
  }
  return nullptr;
}

}  // namespace

bool changesNetwork(uint64_t number) { return find(number) != nullptr; }

std::string requestText(const Memory& memory, const SocketRequest& request) {
  const RequestRow* row = find(request.number);
  if (!row) return {};
  std::string text = row->text(memory, request);
  return text.empty() ? text : std::string(row->name) + " " + text;
}

}  // namespace ctl
