// SPDX-License-Identifier: Apache-2.0
// Bridges by the kernel's first bridge requests, which programs of both widths still have.
#include <linux/if_bridge.h>
#include <linux/sockios.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <memory>

#include "kestrove/iface.h"
#include "store/fail.h"
#include "sys/interface_request.h"

int32_t br_socket_fd = -1;

using namespace kestrove;

namespace {

constexpr int kListedBridges = 32;
constexpr int kPortChanged = 1;

struct FreeBlock {
  void operator()(void* block) const { free(block); }
};
using BridgeInfo = std::unique_ptr<__bridge_info, FreeBlock>;
// Filled by the kernel; whoever asks looks only whether there is one, and frees it.
static_assert(sizeof(__bridge_info) == 72, "callers of br_find_bridge were built for a block of 72 bytes");

sys::Descriptor openStreamSocket() { return sys::openSocket(AF_LOCAL, SOCK_STREAM); }

// A bridge that cannot be put together or taken apart is fatal to the calling process, with status 0: kept on purpose.
[[noreturn]] void giveUp() { exit(0); }

sys::Descriptor openLookUpSocket() {
  sys::Descriptor socket = openStreamSocket();
  if (!socket) giveUp();
  return socket;
}

int bridgeRequest(unsigned long command, unsigned long first, unsigned long second) {
  unsigned long words[] = {command, first, second};
  return ioctl(br_socket_fd, SIOCGIFBR, words);
}

// The kernel reads a whole name buffer, whatever the length of the name.
int namedBridgeRequest(unsigned long command, const char* name) {
  char padded[IFNAMSIZ] = "";
  size_t length = strnlen(name, sizeof padded);
  if (length > sys::kLongestInterfaceName) {
    errno = EINVAL;
    return -1;
  }
  memcpy(padded, name, length);
  return bridgeRequest(command, reinterpret_cast<unsigned long>(padded), 0);
}

bool nameOf(const sys::Descriptor& socket, int index, char (&name)[IFNAMSIZ]) {
  sys::InterfaceRequest look("");
  look.ifr_ifindex = index;
  if (look.issue(socket.get(), SIOCGIFNAME) != 0) return false;
  memcpy(name, look.ifr_name, sizeof name);
  return true;
}

// Whether one of the bridges has the name; an index that cannot be looked up ends the search.
bool bridgeListed(const char* wanted) {
  int indexes[kListedBridges] = {};
  int count = bridgeRequest(BRCTL_GET_BRIDGES, reinterpret_cast<unsigned long>(indexes), kListedBridges);
  sys::Descriptor socket = openLookUpSocket();
  for (int i = 0; i < count && i < kListedBridges; ++i) {
    char name[IFNAMSIZ];
    if (!nameOf(socket, indexes[i], name)) return false;
    if (strncmp(name, wanted, sizeof name) == 0) return true;
  }
  return false;
}

int changePort(const char* bridge, const char* port, unsigned long command) {
  if (!bridge || !port) return fail(SHM_EINVAL);
  sys::Descriptor socket = openLookUpSocket();
  sys::InterfaceRequest look(port);
  if (look.issue(socket.get(), SIOCGIFINDEX) != 0) return -1;
  auto index = static_cast<unsigned long>(look.ifr_ifindex);
  return br_ioctldev(bridge, command, index, 0, 0) < 0 ? -1 : kPortChanged;
}

// Only for the death that a missing look-up socket brings: whether the bridge was found does not matter here.
void requireLookUp(const char* bridge) { BridgeInfo(static_cast<__bridge_info*>(br_find_bridge(bridge))); }

// The flag word is IFF_UP alone, as set_iface_up has it.
int raiseBridge(const char* bridge) {
  sys::InterfaceRequest flags(bridge);
  flags.ifr_flags = IFF_UP;
  return flags.issue(br_socket_fd, SIOCSIFFLAGS);
}

int closeAfterFailure(int result) {
  br_close();
  return result;
}

// The socket that br_init opened. The exported number is the caller's to change, and a number that the caller closed
// may be another file by now: the inode tells.
struct OpenedSocket {
  int fd = -1;
  ino_t inode = 0;
};
OpenedSocket opened;

ino_t socketInode(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 && S_ISSOCK(status.st_mode) ? status.st_ino : 0;
}

void closeOpened() {
  if (opened.fd >= 0 && socketInode(opened.fd) == opened.inode) close(opened.fd);
  opened = {};
}

}  // namespace

// The result is an errno, and no code is set: kept on purpose.
int br_init(void) {
  closeOpened();
  br_socket_fd = openStreamSocket().release();
  if (br_socket_fd < 0) return errno;
  opened = {br_socket_fd, socketInode(br_socket_fd)};
  return 0;
}

int br_close(void) {
  int result = close(br_socket_fd);
  if (br_socket_fd == opened.fd) opened = {};
  br_socket_fd = -1;
  return result;
}

int br_add_bridge(const char* name) {
  int result = br_cmd_addbr(name);
  return name && result < 0 ? errno : result;
}

int br_cmd_addbr(const char* name) { return name ? namedBridgeRequest(BRCTL_ADD_BRIDGE, name) : fail(SHM_EINVAL); }

int br_cmd_delbr(const char* name) {
  if (!name) return fail(SHM_EINVAL);
  return namedBridgeRequest(BRCTL_DEL_BRIDGE, name) < 0 ? errno : 0;
}

int br_ioctldev(const char* name, unsigned long a0, unsigned long a1, unsigned long a2, unsigned long a3) {
  if (!name) return fail(SHM_EINVAL);
  unsigned long words[] = {a0, a1, a2, a3};
  sys::InterfaceRequest request(name);
  request.ifr_data = reinterpret_cast<char*>(words);
  return request.issue(br_socket_fd, SIOCDEVPRIVATE);
}

void* br_find_bridge(const char* name) {
  if (!name) {
    fail(SHM_EINVAL);
    return nullptr;
  }
  BridgeInfo info(static_cast<__bridge_info*>(calloc(1, sizeof(__bridge_info))));
  if (!info || !bridgeListed(name)) return nullptr;
  auto place = reinterpret_cast<unsigned long>(info.get());
  return br_ioctldev(name, BRCTL_GET_BRIDGE_INFO, place, 0, 0) == 0 ? info.release() : nullptr;
}

// The block that br_find_bridge gives is accepted for old callers and means nothing.
int br_cmd_addif(void*, const char* bridge, const char* port) { return changePort(bridge, port, BRCTL_ADD_IF); }

int br_cmd_delif(void*, const char* bridge, const char* port) { return changePort(bridge, port, BRCTL_DEL_IF); }

int set_bridge_up(const char* bridge, const char* port1, const char* port2) {
  if (!bridge || !port1 || !port2) return fail(SHM_EINVAL);
  br_init();             // a failure shows when the first port is refused
  br_cmd_addbr(bridge);  // it may be there already
  requireLookUp(bridge);
  if (br_cmd_addif(nullptr, bridge, port1) != kPortChanged) giveUp();
  if (br_cmd_addif(nullptr, bridge, port2) != kPortChanged) giveUp();
  if (br_ioctldev(bridge, BRCTL_SET_BRIDGE_STP_STATE, 0, 0, 0) < 0) return closeAfterFailure(errno);
  if (raiseBridge(bridge) < 0) return closeAfterFailure(-1);
  return br_close();
}

int set_bridge_down(const char* bridge, const char* port1, const char* port2) {
  if (!bridge || !port1 || !port2) return fail(SHM_EINVAL);
  br_init();
  requireLookUp(bridge);
  set_iface_down(bridge);  // the kernel removes no bridge that is up; one that stays up shows in the removal
  if (br_cmd_delif(nullptr, bridge, port1) != kPortChanged) giveUp();
  if (br_cmd_delif(nullptr, bridge, port2) != kPortChanged) giveUp();
  br_cmd_delbr(bridge);  // without its ports it carries nothing, there or not
  return br_close();
}
