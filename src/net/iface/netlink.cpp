// SPDX-License-Identifier: Apache-2.0
// IPv4 addresses by routing netlink: unlike the ioctl it keeps the addresses that are already there.
#include <arpa/inet.h>
#include <errno.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <stddef.h>
#include <string.h>
#include <syslog.h>

#include "kestrove/iface.h"
#include "store/fail.h"
#include "sys/interface_request.h"

using namespace kestrove;

namespace {

constexpr size_t kRequestLimit = 88;  // what does not fit is left out and shows in errno alone
constexpr size_t kReplySize = 256;

struct Request {
  nlmsghdr header;
  ifaddrmsg message;
  unsigned char attributes[kRequestLimit - sizeof(nlmsghdr) - sizeof(ifaddrmsg)];
};
static_assert(sizeof(Request) == kRequestLimit && NLMSG_LENGTH(sizeof(ifaddrmsg)) == offsetof(Request, attributes));

uint32_t sequence = 0;

// errno is for the caller: it outlives the logging.
int failWith(const char* reason) {
  int error = errno;
  syslog(LOG_DEBUG, "%s", reason);
  errno = error;
  return -1;
}

void appendAttribute(Request& request, unsigned short type, const void* value, size_t length) {
  size_t place = NLMSG_ALIGN(request.header.nlmsg_len);
  if (place + RTA_SPACE(length) > sizeof request) {
    errno = ENOBUFS;
    return;
  }
  rtattr attribute = {static_cast<unsigned short>(RTA_LENGTH(length)), type};
  auto* start = reinterpret_cast<unsigned char*>(&request) + place;
  memcpy(start, &attribute, sizeof attribute);
  memcpy(start + sizeof attribute, value, length);
  request.header.nlmsg_len = static_cast<uint32_t>(place + RTA_SPACE(length));
}

void startRequest(Request& request, bool adding, uint32_t mask, unsigned index) {
  request.header.nlmsg_len = NLMSG_LENGTH(sizeof request.message);
  request.header.nlmsg_type = adding ? RTM_NEWADDR : RTM_DELADDR;
  // With EXCL an address that is there already is refused, not changed.
  request.header.nlmsg_flags = adding ? NLM_F_REQUEST | NLM_F_CREATE | NLM_F_EXCL : NLM_F_REQUEST;
  request.message.ifa_family = AF_INET;
  request.message.ifa_prefixlen = static_cast<unsigned char>(inet_ntocidr(mask));
  request.message.ifa_flags = IFA_F_PERMANENT;
  request.message.ifa_index = index;
}

ssize_t receive(const sys::Descriptor& socket, void* reply, size_t size) {
  ssize_t length;
  do {
    length = recv(socket.get(), reply, size, 0);
  } while (length < 0 && errno == EINTR);
  return length;
}

// A refusal shows in errno alone.
void noteError(const nlmsghdr& header) {
  if (header.nlmsg_len < NLMSG_LENGTH(sizeof(nlmsgerr))) {
    errno = EBADMSG;
    return;
  }
  nlmsgerr answer;
  memcpy(&answer, NLMSG_DATA(&header), sizeof answer);
  if (answer.error != 0) errno = -answer.error;
}

// Whatever comes back, the request was sent, and that is the result: kept on purpose.
void awaitAcknowledgement(const sys::Descriptor& socket) {
  alignas(nlmsghdr) char reply[kReplySize];
  for (;;) {
    ssize_t length = receive(socket, reply, sizeof reply);
    if (length <= 0) return;
    auto rest = static_cast<unsigned>(length);
    for (auto* header = reinterpret_cast<nlmsghdr*>(reply); NLMSG_OK(header, rest); header = NLMSG_NEXT(header, rest)) {
      if (header->nlmsg_type == NLMSG_ERROR) return noteError(*header);
    }
  }
}

bool transmit(const sys::Descriptor& socket, Request& request) {
  request.header.nlmsg_flags |= NLM_F_ACK;
  request.header.nlmsg_seq = ++sequence;
  sockaddr_nl kernel = {};
  kernel.nl_family = AF_NETLINK;
  iovec part = {&request, request.header.nlmsg_len};
  msghdr message = {};
  message.msg_name = &kernel;
  message.msg_namelen = sizeof kernel;
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  return sendmsg(socket.get(), &message, 0) >= 0;
}

int send(Request& request) {
  sys::Descriptor socket = sys::openSocket(AF_NETLINK, SOCK_RAW, NETLINK_ROUTE);
  if (!socket) return failWith("send_netlink socket failed");
  sockaddr_nl local = {};
  local.nl_family = AF_NETLINK;
  if (bind(socket.get(), reinterpret_cast<sockaddr*>(&local), sizeof local) != 0) {
    return failWith("send_netlink bind failed");
  }
  if (!transmit(socket, request)) return failWith("sendmsg failed");
  awaitAcknowledgement(socket);
  return 0;
}

}  // namespace

// Counts up to the lowest bit that is set: holes above it do not show.
int inet_ntocidr(uint32_t mask) {
  int shifts = 0;
  for (uint32_t bits = ntohl(mask); bits != 0; bits <<= 1) ++shifts;
  return shifts;
}

int shm_netlinkConfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast, int op) {
  if (!name) return fail(SHM_EINVAL);
  unsigned index = if_nametoindex(name);
  if (index == 0) {
    errno = ENODEV;
    return failWith("if_nametoindex failed");
  }
  bool adding = op >= 0;
  if (broadcast == 0) broadcast = ~mask | address;
  Request request = {};
  startRequest(request, adding, mask, index);
  appendAttribute(request, IFA_LABEL, name, strlen(name) + 1);
  appendAttribute(request, IFA_LOCAL, &address, sizeof address);
  if (adding && broadcast != 0) appendAttribute(request, IFA_BROADCAST, &broadcast, sizeof broadcast);
  return send(request) == 0 ? 0 : failWith("send_netlink failed");
}
