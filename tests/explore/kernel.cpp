// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/kernel.h"

#include <arpa/inet.h>
#include <linux/fib_rules.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <span>

namespace kestrove::explore {
namespace {

// What an entry is: the rest are ages, counters and flags that change by themselves.
constexpr uint16_t kAddressParts[] = {IFA_ADDRESS, IFA_LOCAL, IFA_BROADCAST, IFA_LABEL};
constexpr uint16_t kRouteParts[] = {RTA_DST, RTA_GATEWAY, RTA_OIF, RTA_PRIORITY, RTA_PREFSRC, RTA_TABLE};
constexpr uint16_t kRuleParts[] = {FRA_DST, FRA_SRC, FRA_IIFNAME, FRA_PRIORITY, FRA_TABLE, FRA_OIFNAME};

std::string partText(unsigned char family, const rtattr* part) {
  size_t length = RTA_PAYLOAD(part);
  const auto* bytes = static_cast<const unsigned char*>(RTA_DATA(part));
  char text[INET6_ADDRSTRLEN];
  bool address = (family == AF_INET && length == 4 && bytes[0] != 0) || (family == AF_INET6 && length == 16);
  if (address && inet_ntop(family, bytes, text, sizeof text)) return text;
  std::string hex;
  for (size_t i = 0; i < length; ++i) {
    snprintf(text, sizeof text, "%02x", bytes[i]);
    hex += text;
  }
  return hex;
}

const rtattr* after(const rtattr* part) {
  return reinterpret_cast<const rtattr*>(reinterpret_cast<const char*>(part) + RTA_ALIGN(part->rta_len));
}

std::string partsText(unsigned char family, const rtattr* part, const nlmsghdr* message,
                      std::span<const uint16_t> wanted) {
  std::vector<std::string> found(wanted.size());
  const char* end = reinterpret_cast<const char*>(message) + message->nlmsg_len;
  for (; RTA_OK(part, end - reinterpret_cast<const char*>(part)); part = after(part)) {
    auto place = std::find(wanted.begin(), wanted.end(), part->rta_type);
    if (place != wanted.end()) found[static_cast<size_t>(place - wanted.begin())] = partText(family, part);
  }
  std::string text;
  for (const std::string& one : found) text += " " + (one.empty() ? "-" : one);
  return text;
}

std::string addressText(const nlmsghdr* message) {
  const auto* head = static_cast<const ifaddrmsg*>(NLMSG_DATA(message));
  char text[64];
  snprintf(text, sizeof text, "address /%d scope %d dev %u", head->ifa_prefixlen, head->ifa_scope, head->ifa_index);
  return text + partsText(head->ifa_family, IFA_RTA(head), message, kAddressParts);
}

std::string routeText(const nlmsghdr* message) {
  const auto* head = static_cast<const rtmsg*>(NLMSG_DATA(message));
  char text[96];
  snprintf(text, sizeof text, "route v%d /%d table %d from %d scope %d kind %d", head->rtm_family == AF_INET ? 4 : 6,
           head->rtm_dst_len, head->rtm_table, head->rtm_protocol, head->rtm_scope, head->rtm_type);
  return text + partsText(head->rtm_family, RTM_RTA(head), message, kRouteParts);
}

std::string ruleText(const nlmsghdr* message) {
  const auto* head = static_cast<const fib_rule_hdr*>(NLMSG_DATA(message));
  const auto* parts = reinterpret_cast<const rtattr*>(reinterpret_cast<const char*>(head) + NLMSG_ALIGN(sizeof *head));
  char text[64];
  snprintf(text, sizeof text, "rule v%d table %d does %d", head->family == AF_INET ? 4 : 6, head->table, head->action);
  return text + partsText(head->family, parts, message, kRuleParts);
}

// The kernel's own: they follow the addresses.
bool derived(const nlmsghdr* message) {
  if (message->nlmsg_type != RTM_NEWROUTE) return false;
  const auto* head = static_cast<const rtmsg*>(NLMSG_DATA(message));
  return (head->rtm_flags & RTM_F_CLONED) != 0 || head->rtm_table == RT_TABLE_LOCAL;
}

KernelEntry entryOf(const nlmsghdr* message) {
  std::string bytes(reinterpret_cast<const char*>(message), message->nlmsg_len);
  switch (message->nlmsg_type) {
    case RTM_NEWADDR: return {addressText(message), bytes, message->nlmsg_type};
    case RTM_NEWROUTE: return {routeText(message), bytes, message->nlmsg_type};
    default: return {ruleText(message), bytes, message->nlmsg_type};
  }
}

bool byText(const KernelEntry& a, const KernelEntry& b) { return a.text < b.text; }
bool sameText(const KernelEntry& a, const KernelEntry& b) { return a.text == b.text; }

[[noreturn]] void giveUp(const char* what) {
  perror(what);
  exit(2);
}

}  // namespace

Kernel::Kernel() : socket_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {
  if (socket_ == -1) giveUp("explore: netlink");
}

Kernel::~Kernel() { close(socket_); }

void Kernel::dump(uint16_t request, unsigned char family, std::vector<KernelEntry>& out) {
  struct {
    nlmsghdr head;
    rtmsg body;
  } ask = {};
  ask.head = {sizeof ask, request, NLM_F_REQUEST | NLM_F_DUMP, ++serial_, 0};
  ask.body.rtm_family = family;
  if (send(socket_, &ask, sizeof ask, 0) == -1) giveUp("explore: asking the kernel");
  alignas(nlmsghdr) char buffer[32768];
  for (;;) {
    ssize_t got = recv(socket_, buffer, sizeof buffer, 0);
    if (got <= 0) giveUp("explore: answer of the kernel");
    auto length = static_cast<unsigned>(got);
    for (auto* message = reinterpret_cast<nlmsghdr*>(buffer); NLMSG_OK(message, length);
         message = NLMSG_NEXT(message, length)) {
      if (message->nlmsg_type == NLMSG_DONE || message->nlmsg_type == NLMSG_ERROR) return;
      if (!derived(message)) out.push_back(entryOf(message));
    }
  }
}

std::vector<KernelEntry> Kernel::entries() {
  std::vector<KernelEntry> found;
  for (int family : {AF_INET, AF_INET6}) {
    for (int request : {RTM_GETADDR, RTM_GETROUTE, RTM_GETRULE})
      dump(static_cast<uint16_t>(request), static_cast<unsigned char>(family), found);
  }
  std::sort(found.begin(), found.end(), byText);
  return found;
}

// The answer is left aside: whether it helped shows in the next listing.
void Kernel::change(const KernelEntry& entry, bool add) {
  std::string message = entry.message;
  auto* head = reinterpret_cast<nlmsghdr*>(message.data());
  head->nlmsg_type = static_cast<uint16_t>(entry.kind + (add ? 0 : 1));
  head->nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | NLM_F_ACK | (add ? NLM_F_CREATE | NLM_F_APPEND : 0));
  head->nlmsg_seq = ++serial_;
  head->nlmsg_pid = 0;
  if (entry.kind == RTM_NEWROUTE) static_cast<rtmsg*>(NLMSG_DATA(head))->rtm_flags = 0;
  char answer[1024];
  if (send(socket_, message.data(), message.size(), 0) == -1 || recv(socket_, answer, sizeof answer, 0) == -1) {
    giveUp("explore: changing the kernel");
  }
}

void Kernel::changeAll(const std::vector<KernelEntry>& these, const std::vector<KernelEntry>& without, bool add) {
  std::vector<KernelEntry> rest;
  std::set_difference(these.begin(), these.end(), without.begin(), without.end(), std::back_inserter(rest), byText);
  // Addresses come before the routes that need them: by text as well.
  for (const KernelEntry& entry : rest) change(entry, add);
}

bool Kernel::restore(const std::vector<KernelEntry>& wanted) {
  for (int round = 0; round < 4; ++round) {
    std::vector<KernelEntry> now = entries();
    if (std::equal(now.begin(), now.end(), wanted.begin(), wanted.end(), sameText)) return true;
    changeAll(now, wanted, false);
    changeAll(wanted, entries(), true);
  }
  return false;
}

std::string textOf(const std::vector<KernelEntry>& entries) {
  std::string text;
  for (const KernelEntry& entry : entries) text += entry.text + "\n";
  return text;
}

}  // namespace kestrove::explore
