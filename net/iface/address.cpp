#include <arpa/inet.h>
#include <netinet/if_ether.h>
#include <netinet/in.h>
#include <string.h>

#include "kestrove/iface.h"
#include "store/fail.h"
#include "sys/interface_request.h"

using namespace kestrove;

namespace {

constexpr short kRaisedFlags = IFF_UP | IFF_BROADCAST | IFF_MULTICAST;

bool setAddress(int socket, const char* name, unsigned long request, uint32_t address) {
  sockaddr_in inet = {};
  inet.sin_family = AF_INET;
  inet.sin_addr.s_addr = address;
  sys::InterfaceRequest change(name);
  memcpy(&change.ifr_addr, &inet, sizeof inet);
  return change.issue(socket, request) == 0;
}

bool setMaskAndBroadcast(int socket, const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) {
  if (mask != 0 && !setAddress(socket, name, SIOCSIFNETMASK, mask)) return false;
  if (mask != 0 && broadcast == 0) broadcast = ~mask | address;
  return broadcast == 0 || setAddress(socket, name, SIOCSIFBRDADDR, broadcast);
}

bool raise(int socket, const char* name) {
  sys::InterfaceRequest change(name);
  change.ifr_flags = kRaisedFlags;
  return change.issue(socket, SIOCSIFFLAGS) == 0;
}

}  // namespace

int shm_ifconfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast) {
  if (!name || strlen(name) > sys::kLongestInterfaceName) return fail(SHM_EINVAL);
  sys::Descriptor socket = sys::openSocket(AF_PACKET, SOCK_RAW, htons(ETH_P_ALL));
  if (!socket) return fail(SHM_ESYSTEM);
  bool done = setAddress(socket.get(), name, SIOCSIFADDR, address) &&
              (address == 0 || setMaskAndBroadcast(socket.get(), name, address, mask, broadcast)) &&
              raise(socket.get(), name);
  return done ? 0 : fail(SHM_ESYSTEM);
}
