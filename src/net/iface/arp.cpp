// SPDX-License-Identifier: Apache-2.0
// Entries of the kernel's ARP table.
#include <net/if_arp.h>
#include <netinet/ether.h>
#include <netinet/in.h>
#include <string.h>
#include <syslog.h>

#include "kestrove/iface.h"
#include "kestrove/text.h"
#include "store/fail.h"
#include "sys/interface_request.h"

using namespace kestrove;

namespace {

constexpr int kPermanentFlags = ATF_COM | ATF_PERM;
constexpr int kProbes = 2;
constexpr size_t kNeighbourText = 240;  // a whole line of the probing tool

arpreq entryOf(uint32_t address) {
  sockaddr_in inet = {};
  inet.sin_family = AF_INET;
  inet.sin_addr.s_addr = address;
  arpreq entry = {};
  memcpy(&entry.arp_pa, &inet, sizeof inet);
  return entry;
}

int issue(unsigned long request, arpreq& entry) {
  sys::Descriptor socket = sys::openSocket(AF_INET, SOCK_DGRAM);
  if (!socket) {
    syslog(LOG_ERR, "socket: %m");
    return -1;
  }
  if (ioctl(socket.get(), request, &entry) == 0) return 0;
  syslog(LOG_ERR, "SIOCSARP: %m");  // the same text for a deletion: kept on purpose
  return -1;
}

}  // namespace

int addArpEntry(uint32_t address, const char* hardwareAddressText, int flags) {
  if (!hardwareAddressText) return fail(SHM_EINVAL);
  ether_addr hardware;
  if (!ether_aton_r(hardwareAddressText, &hardware)) return -1;
  arpreq entry = entryOf(address);
  entry.arp_ha.sa_family = ARPHRD_ETHER;
  memcpy(entry.arp_ha.sa_data, &hardware, sizeof hardware);
  entry.arp_flags = flags;
  return issue(SIOCSARP, entry);
}

int delArpEntry(uint32_t address) {
  arpreq entry = entryOf(address);
  return issue(SIOCDARP, entry);
}

// A neighbour that does not answer leaves an empty text, which the adding refuses: what the table has of it stays.
int setPermArpEntry(uint32_t address, const char* name) {
  if (!name) return fail(SHM_EINVAL);
  char hardware[kNeighbourText] = "";
  if (neighb_mac(kProbes, name, ipv4_to_a(address), hardware) != 0) syslog(LOG_ERR, "fail to get neighb_mac \n");
  return addArpEntry(address, hardware, kPermanentFlags);
}
