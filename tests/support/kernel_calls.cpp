// SPDX-License-Identifier: Apache-2.0
#include "tests/support/kernel_calls.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <errno.h>
#include <linux/if_bridge.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// After the C library's headers, which it gives way to.
#include <linux/ipv6.h>

#include <map>

namespace kestrove::testing {
namespace {

struct Failure {
  int calls = 0;
  int at = 0;
  int error = 0;
};

struct Watch {
  Kernel kernel = Kernel::kReal;
  std::vector<std::string> calls;
  std::vector<std::string> sockets;
  std::vector<std::string> messages;
  std::vector<std::string> received;
  std::map<std::string, Failure> failures;
  short flags = 0;
};

Watch& watch() {
  static Watch instance;
  return instance;
}

// True, with errno set, when this call was asked to fail.
bool fails(const char* call) {
  Failure& failure = watch().failures[call];
  if (++failure.calls != failure.at) return false;
  errno = failure.error;
  return true;
}

std::string addressText(const sockaddr& address) {
  sockaddr_in inet;
  memcpy(&inet, &address, sizeof inet);
  return inet_ntoa(inet.sin_addr);
}

std::string number(const char* format, long long value) {
  char text[64];
  snprintf(text, sizeof text, format, value);
  return text;
}

std::string bridgeText(const char* name, const unsigned long* words) {
  return std::string(name) + " " + number("%lld", static_cast<long long>(words[0]));
}

std::string describe6(const char* name, const in6_ifreq& request) {
  char text[INET6_ADDRSTRLEN];
  inet_ntop(AF_INET6, &request.ifr6_addr, text, sizeof text);
  return std::string(name) + " " + text + "/" + std::to_string(request.ifr6_prefixlen) + " index " +
         std::to_string(request.ifr6_ifindex);
}

std::string describeArp(const char* name, const arpreq& entry) {
  std::string text = std::string(name) + " " + addressText(entry.arp_pa);
  if (strcmp(name, "SIOCDARP") == 0) return text;
  for (int i = 0; i < 6; ++i) {
    text += (i == 0 ? ' ' : ':') + number("%02llx", static_cast<unsigned char>(entry.arp_ha.sa_data[i]));
  }
  return text + " flags " + std::to_string(entry.arp_flags);
}

bool version6(int fd) {
  int domain = 0;
  socklen_t size = sizeof domain;
  return getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_INET6;
}

std::string describe(int fd, unsigned long request, void* argument) {
  const auto* about = static_cast<ifreq*>(argument);
  switch (request) {
    case SIOCSIFADDR:
      if (version6(fd)) return describe6("SIOCSIFADDR", *static_cast<in6_ifreq*>(argument));
      return std::string("SIOCSIFADDR ") + about->ifr_name + " " + addressText(about->ifr_addr);
    case SIOCDIFADDR: return describe6("SIOCDIFADDR", *static_cast<in6_ifreq*>(argument));
    case SIOCSIFNETMASK: return std::string("SIOCSIFNETMASK ") + about->ifr_name + " " + addressText(about->ifr_addr);
    case SIOCSIFBRDADDR: return std::string("SIOCSIFBRDADDR ") + about->ifr_name + " " + addressText(about->ifr_addr);
    case SIOCSIFFLAGS:
      return std::string("SIOCSIFFLAGS ") + about->ifr_name +
             number(" 0x%llx", static_cast<uint16_t>(about->ifr_flags));
    case SIOCGIFFLAGS: return std::string("SIOCGIFFLAGS ") + about->ifr_name;
    case SIOCGIFINDEX: return std::string("SIOCGIFINDEX ") + about->ifr_name;
    case SIOCGIFNAME: return "SIOCGIFNAME";
    case SIOCGIFBR: return bridgeText("SIOCGIFBR", static_cast<unsigned long*>(argument));
    case SIOCDEVPRIVATE:
      return bridgeText((std::string("SIOCDEVPRIVATE ") + about->ifr_name).c_str(),
                        reinterpret_cast<unsigned long*>(about->ifr_data));
    case SIOCSARP: return describeArp("SIOCSARP", *static_cast<arpreq*>(argument));
    case SIOCDARP: return describeArp("SIOCDARP", *static_cast<arpreq*>(argument));
    default: return "ioctl " + number("0x%llx", static_cast<long long>(request));
  }
}

int pretend(unsigned long request, void* argument) {
  auto* about = static_cast<ifreq*>(argument);
  if (request == SIOCGIFFLAGS) about->ifr_flags = watch().flags;
  if (request == SIOCGIFINDEX) about->ifr_ifindex = 7;
  return 0;
}

std::string hexadecimal(const msghdr& message) {
  std::string text;
  for (size_t i = 0; i < message.msg_iovlen; ++i) {
    const auto* bytes = static_cast<const unsigned char*>(message.msg_iov[i].iov_base);
    for (size_t j = 0; j < message.msg_iov[i].iov_len; ++j) text += number("%02llx", bytes[j]);
  }
  return text;
}

}  // namespace

void watchKernel(Kernel kernel) {
  watch() = Watch();
  watch().kernel = kernel;
}

std::vector<std::string> kernelCalls() { return watch().calls; }
std::vector<std::string> socketsOpened() { return watch().sockets; }
std::vector<std::string> messagesSent() { return watch().messages; }

void failCall(const std::string& call, int n, int error) {
  Failure& failure = watch().failures[call];
  failure.at = failure.calls + n;
  failure.error = error;
}

int callsOf(const std::string& call) { return watch().failures[call].calls; }

void answerReceive(const std::string& bytes) { watch().received.push_back(bytes); }

void pretendFlags(short flags) { watch().flags = flags; }

int openDescriptors() {
  DIR* folder = opendir("/proc/self/fd");
  int count = 0;
  while (readdir(folder)) ++count;
  closedir(folder);
  return count - 3;  // the two dots and the folder itself
}

}  // namespace kestrove::testing

using namespace kestrove::testing;

#pragma GCC visibility push(default)
extern "C" {

int socket(int family, int type, int protocol) {
  watch().sockets.push_back(std::to_string(family) + "/" + std::to_string(type & ~SOCK_CLOEXEC) + "/" +
                            std::to_string(ntohs(static_cast<uint16_t>(protocol)) == 3 ? 3 : protocol));
  return fails("socket") ? -1 : static_cast<int>(syscall(SYS_socket, family, type, protocol));
}

int ioctl(int fd, unsigned long request, ...) {
  va_list list;
  va_start(list, request);
  void* argument = va_arg(list, void*);
  va_end(list);
  watch().calls.push_back(describe(fd, request, argument));
  if (fails("ioctl")) return -1;
  if (watch().kernel == Kernel::kPretend) return pretend(request, argument);
  return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

int bind(int fd, const sockaddr* address, socklen_t size) {
  return fails("bind") ? -1 : static_cast<int>(syscall(SYS_bind, fd, address, size));
}

ssize_t sendmsg(int fd, const msghdr* message, int flags) {
  watch().messages.push_back(hexadecimal(*message));
  return fails("sendmsg") ? -1 : syscall(SYS_sendmsg, fd, message, flags);
}

ssize_t recv(int fd, void* buffer, size_t size, int flags) {
  if (fails("recv")) return -1;
  if (watch().received.empty()) return syscall(SYS_recvfrom, fd, buffer, size, flags, nullptr, nullptr);
  std::string bytes = watch().received.front();
  watch().received.erase(watch().received.begin());
  memcpy(buffer, bytes.data(), bytes.size() < size ? bytes.size() : size);
  return static_cast<ssize_t>(bytes.size() < size ? bytes.size() : size);
}

int system(const char* line) {
  watch().calls.push_back(std::string("run ") + line);
  if (watch().kernel == Kernel::kPretend) return 0;
  pid_t child = fork();
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", line, nullptr);
    _exit(127);
  }
  int status = -1;
  while (child > 0 && waitpid(child, &status, 0) == -1 && errno == EINTR) continue;
  return status;
}

}  // extern "C"
#pragma GCC visibility pop
