// SPDX-License-Identifier: Apache-2.0
#include "sandbox/ports.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/ipv6.h>
#include <net/if.h>
#include <sched.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "sandbox/files.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"
#include "sandbox/veth.h"
#include "sys/descriptor.h"

namespace kestrove::sandbox {
namespace {

struct Port {
  const char* name;
  int index;
  const char* host;
  const char* address;   // of the host, /24
  const char* address6;  // of the host, /64
  Mac mac;
  Mac hostMac;
};

constexpr Port kPorts[] = {
    {"eth0", 2, "wan", "192.168.10.3", "fd00:10::3", {2, 0, 0, 0, 0, 1}, {2, 0, 0, 0, 1, 1}},
    {"eth1", 3, "lan", "192.168.10.2", "fd00:10::2", {2, 0, 0, 0, 0, 2}, {2, 0, 0, 0, 1, 2}},
    {"eth2", 4, "mgmt", "192.168.30.2", "fd00:30::2", {2, 0, 0, 0, 0, 3}, {2, 0, 0, 0, 1, 3}},
};
constexpr const char* kHostPort = "eth0";
constexpr int kHostIndex = 10;
constexpr const char* kNetmask = "255.255.255.0";
constexpr uint32_t kPrefix6 = 64;

sys::Descriptor controlSocket(int family) { return sys::Descriptor(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)); }

ifreq requestFor(const char* interface) {
  ifreq request = {};
  strncpy(request.ifr_name, interface, IFNAMSIZ - 1);
  return request;
}

void raise(const char* interface) {
  sys::Descriptor control = controlSocket(AF_INET);
  ifreq request = requestFor(interface);
  request.ifr_flags = IFF_UP | IFF_RUNNING;
  if (ioctl(control.get(), SIOCSIFFLAGS, &request) == -1) giveUp("cannot raise %s: %m", interface);
}

void setAddress(const char* interface, unsigned long kind, const char* text) {
  sys::Descriptor control = controlSocket(AF_INET);
  ifreq request = requestFor(interface);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, text, &address.sin_addr);
  memcpy(&request.ifr_addr, &address, sizeof address);
  if (ioctl(control.get(), kind, &request) == -1) giveUp("cannot address %s: %m", interface);
}

// A kernel without IPv6 leaves the hosts with IPv4 alone.
void addAddress6(const char* interface, const char* text) {
  sys::Descriptor control = controlSocket(AF_INET6);
  in6_ifreq request = {};
  inet_pton(AF_INET6, text, &request.ifr6_addr);
  request.ifr6_prefixlen = kPrefix6;
  request.ifr6_ifindex = static_cast<int>(if_nametoindex(interface));
  ioctl(control.get(), SIOCSIFADDR, &request);
}

// Addresses are usable at once: there is nobody here who might have them already.
void skipDuplicateDetection() {
  sys::Descriptor file(open("/proc/sys/net/ipv6/conf/default/accept_dad", O_WRONLY | O_CLOEXEC));
  if (file) (void)!write(file.get(), "0", 1);
}

sys::Descriptor currentNetwork() { return sys::Descriptor(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)); }

// The name by which "ip netns" knows the host.
void nameNetwork(const char* host) {
  std::string name = kStage + "/run/netns/" + host;
  writeText(name, "", 0444);
  if (mount("/proc/thread-self/ns/net", name.c_str(), nullptr, MS_BIND, nullptr) == -1) {
    giveUp("cannot name the network of %s: %m", host);
  }
}

void joinNetwork(const sys::Descriptor& network) {
  if (setns(network.get(), CLONE_NEWNET) == -1) giveUp("cannot change the network: %m");
}

void openPort(const Port& port, const sys::Descriptor& appliance) {
  if (unshare(CLONE_NEWNET) == -1) giveUp("no network for a host: %m");
  skipDuplicateDetection();
  raiseLoopback();
  nameNetwork(port.host);
  addVeth({kHostPort, kHostIndex, port.hostMac}, {port.name, port.index, port.mac}, appliance.get());
  setAddress(kHostPort, SIOCSIFADDR, port.address);
  setAddress(kHostPort, SIOCSIFNETMASK, kNetmask);
  raise(kHostPort);
  addAddress6(kHostPort, port.address6);
  joinNetwork(appliance);
}

}  // namespace

void raiseLoopback() { raise("lo"); }

void openPorts() {
  skipDuplicateDetection();
  sys::Descriptor appliance = currentNetwork();
  for (const Port& port : kPorts) {
    openPort(port, appliance);
    raise(port.name);
  }
}

}  // namespace kestrove::sandbox
