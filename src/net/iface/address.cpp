// SPDX-License-Identifier: Apache-2.0
// The IPv4 address of an interface, by ioctl.
#include <arpa/inet.h>
#include <netinet/if_ether.h>
#include <string.h>

#include <utility>

#include "kestrove/iface.h"
#include "store/fail.h"
#include "sys/interface_address.h"
#include "sys/interface_request.h"

using namespace kestrove;

int shm_ifconfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) {
  if (!name || strlen(name) > sys::kLongestInterfaceName) return fail(SHM_EINVAL);
  // The kernel hands address requests on a packet socket on to IPv4.
  sys::Descriptor socket = sys::openSocket(AF_PACKET, SOCK_RAW, htons(ETH_P_ALL));
  if (!socket) return fail(SHM_ESYSTEM);
  sys::InterfaceAddresses addresses(std::move(socket));
  return addresses.configure(name, address, mask, broadcast) ? 0 : fail(SHM_ESYSTEM);
}
