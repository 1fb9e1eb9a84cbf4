// SPDX-License-Identifier: Apache-2.0
#include "sandbox/veth.h"

#include <errno.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <string.h>
#include <sys/socket.h>

#include "sandbox/report.h"
#include "sys/descriptor.h"

namespace kestrove::sandbox {
namespace {

// A request under construction; attributes that nest are closed in the order in which they were opened.
class LinkRequest {
 public:
  LinkRequest() {
    header()->nlmsg_type = RTM_NEWLINK;
    header()->nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK | NLM_F_CREATE | NLM_F_EXCL;
    header()->nlmsg_len = NLMSG_HDRLEN;
  }

  void* append(size_t size) {
    char* place = buffer_ + header()->nlmsg_len;
    header()->nlmsg_len += static_cast<uint32_t>(NLMSG_ALIGN(size));
    return place;
  }
  rtattr* open(int type) {
    auto* attribute = static_cast<rtattr*>(append(sizeof(rtattr)));
    attribute->rta_type = static_cast<unsigned short>(type);
    return attribute;
  }
  void close(rtattr* attribute) {
    char* end = buffer_ + header()->nlmsg_len;
    attribute->rta_len = static_cast<unsigned short>(end - reinterpret_cast<char*>(attribute));
  }
  void add(int type, const void* data, size_t size) {
    rtattr* attribute = open(type);
    memcpy(append(size), data, size);
    attribute->rta_len = static_cast<unsigned short>(RTA_LENGTH(size));
  }
  void addEnd(const VethEnd& end) {
    static_cast<ifinfomsg*>(append(sizeof(ifinfomsg)))->ifi_index = end.index;
    add(IFLA_IFNAME, end.name, strlen(end.name) + 1);
    add(IFLA_ADDRESS, end.mac.data(), end.mac.size());
  }

  nlmsghdr* header() { return reinterpret_cast<nlmsghdr*>(buffer_); }

 private:
  alignas(nlmsghdr) char buffer_[512] = {};
};

// Zero, or the negative number of the kernel's error.
int transact(LinkRequest& request) {
  sys::Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
  if (send(socket.get(), request.header(), request.header()->nlmsg_len, 0) == -1) return -errno;
  alignas(nlmsghdr) char answer[4096];
  if (recv(socket.get(), answer, sizeof answer, 0) == -1) return -errno;
  return static_cast<nlmsgerr*>(NLMSG_DATA(reinterpret_cast<nlmsghdr*>(answer)))->error;
}

}  // namespace

void addVeth(const VethEnd& here, const VethEnd& there, int otherNetwork) {
  LinkRequest request;
  request.addEnd(here);
  rtattr* info = request.open(IFLA_LINKINFO);
  request.add(IFLA_INFO_KIND, "veth", 4);
  rtattr* data = request.open(IFLA_INFO_DATA);
  rtattr* peer = request.open(VETH_INFO_PEER);
  request.addEnd(there);
  request.add(IFLA_NET_NS_FD, &otherNetwork, sizeof otherNetwork);
  request.close(peer);
  request.close(data);
  request.close(info);
  int result = transact(request);
  errno = -result;
  if (result != 0) giveUp("cannot make the port %s: %m", there.name);
}

}  // namespace kestrove::sandbox
