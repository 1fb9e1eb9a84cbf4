// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/netlink.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cstring>

#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

using Bytes = std::span<const unsigned char>;

constexpr NumberName kTypes[] = {
    {RTM_NEWLINK, "RTM_NEWLINK"},   {RTM_DELLINK, "RTM_DELLINK"},   {RTM_SETLINK, "RTM_SETLINK"},
    {RTM_NEWADDR, "RTM_NEWADDR"},   {RTM_DELADDR, "RTM_DELADDR"},   {RTM_NEWROUTE, "RTM_NEWROUTE"},
    {RTM_DELROUTE, "RTM_DELROUTE"}, {RTM_NEWNEIGH, "RTM_NEWNEIGH"}, {RTM_DELNEIGH, "RTM_DELNEIGH"},
    {RTM_NEWRULE, "RTM_NEWRULE"},   {RTM_DELRULE, "RTM_DELRULE"}};

// The upper ones as they read on a message that makes something.
constexpr NumberName kMessageFlags[] = {{NLM_F_REQUEST, "REQUEST"}, {NLM_F_MULTI, "MULTI"},     {NLM_F_ACK, "ACK"},
                                        {NLM_F_ECHO, "ECHO"},       {NLM_F_REPLACE, "REPLACE"}, {NLM_F_EXCL, "EXCL"},
                                        {NLM_F_CREATE, "CREATE"},   {NLM_F_APPEND, "APPEND"}};

constexpr NumberName kFamilies[] = {{AF_UNSPEC, "AF_UNSPEC"}, {AF_INET, "AF_INET"}, {AF_INET6, "AF_INET6"}};

constexpr NumberName kAddressFlags[] = {{IFA_F_SECONDARY, "SECONDARY"},     {IFA_F_NODAD, "NODAD"},
                                        {IFA_F_OPTIMISTIC, "OPTIMISTIC"},   {IFA_F_DADFAILED, "DADFAILED"},
                                        {IFA_F_HOMEADDRESS, "HOMEADDRESS"}, {IFA_F_DEPRECATED, "DEPRECATED"},
                                        {IFA_F_TENTATIVE, "TENTATIVE"},     {IFA_F_PERMANENT, "PERMANENT"}};

constexpr NumberName kAttributes[] = {{IFA_ADDRESS, "IFA_ADDRESS"},     {IFA_LOCAL, "IFA_LOCAL"},
                                      {IFA_LABEL, "IFA_LABEL"},         {IFA_BROADCAST, "IFA_BROADCAST"},
                                      {IFA_ANYCAST, "IFA_ANYCAST"},     {IFA_CACHEINFO, "IFA_CACHEINFO"},
                                      {IFA_MULTICAST, "IFA_MULTICAST"}, {IFA_FLAGS, "IFA_FLAGS"}};

// Every fourth type, from the third on, asks for what there is.
bool looks(uint16_t type) { return type < RTM_BASE || (type - RTM_BASE) % 4 == 2; }

template <typename Record>
bool readFront(Bytes bytes, Record& out) {
  if (bytes.size() < sizeof out) return false;
  memcpy(&out, bytes.data(), sizeof out);
  return true;
}

Bytes behind(Bytes bytes, size_t length) { return bytes.subspan(length < bytes.size() ? length : bytes.size()); }

size_t addressSize(int family) { return family == AF_INET6 ? 16 : 4; }

std::string valueText(int family, uint16_t type, Bytes value) {
  if (type == IFA_LABEL) {
    auto* text = reinterpret_cast<const char*>(value.data());
    return {text, strnlen(text, value.size())};
  }
  bool address = type == IFA_ADDRESS || type == IFA_LOCAL || type == IFA_BROADCAST || type == IFA_ANYCAST;
  return address && value.size() == addressSize(family) ? ipText(family, value.data()) : hexText(value);
}

std::string attributesText(int family, Bytes rest) {
  std::string text;
  rtattr attribute;
  while (readFront(rest, attribute)) {
    if (attribute.rta_len < sizeof attribute || attribute.rta_len > rest.size()) return text + " damaged attribute";
    Bytes value = rest.subspan(sizeof attribute, attribute.rta_len - sizeof attribute);
    text += " " + nameOf(kAttributes, attribute.rta_type) + " " + valueText(family, attribute.rta_type, value);
    rest = behind(rest, RTA_ALIGN(attribute.rta_len));
  }
  return text;
}

std::string addressMessageText(Bytes body) {
  ifaddrmsg message;
  if (!readFront(body, message)) return " cut short";
  return " " + nameOf(kFamilies, message.ifa_family) + " prefix " + std::to_string(message.ifa_prefixlen) + " flags " +
         flagsText(kAddressFlags, message.ifa_flags) + " scope " + std::to_string(message.ifa_scope) + " index " +
         std::to_string(message.ifa_index) +
         attributesText(message.ifa_family, behind(body, NLMSG_ALIGN(sizeof message)));
}

}  // namespace

std::string netlinkText(Bytes message) {
  nlmsghdr header;
  if (!readFront(message, header)) return "cut short bytes " + hexText(message);
  if (looks(header.nlmsg_type)) return {};
  Bytes whole = message.first(header.nlmsg_len < message.size() ? header.nlmsg_len : message.size());
  std::string text = nameOf(kTypes, header.nlmsg_type) + " flags " + flagsText(kMessageFlags, header.nlmsg_flags) +
                     " seq " + std::to_string(header.nlmsg_seq);
  if (header.nlmsg_type == RTM_NEWADDR || header.nlmsg_type == RTM_DELADDR) {
    text += addressMessageText(behind(whole, NLMSG_HDRLEN));
  }
  return text + " bytes " + hexText(message);
}

std::optional<int> netlinkAnswer(Bytes reply) {
  nlmsghdr header;
  while (readFront(reply, header) && header.nlmsg_len >= sizeof header) {
    nlmsgerr answer;
    if (header.nlmsg_type == NLMSG_ERROR && readFront(behind(reply, NLMSG_HDRLEN), answer)) return answer.error;
    reply = behind(reply, NLMSG_ALIGN(header.nlmsg_len));
  }
  return std::nullopt;
}

}  // namespace ctl
