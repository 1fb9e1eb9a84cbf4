// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/lint/rows.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/session.h"

namespace ctl::lint {
namespace {

constexpr std::string_view kTables[] = {"USER_ACCOUNT", "MANAGEMENT_ADDR_6", "MANAGEMENT_ADDR", "ROUTE",
                                        "ROUTE6",       "SELEC_ACCEL",       "SELEC_ACCEL_V6",  "SELEC_ACCEL_ANY"};

std::string number(int64_t value) { return std::to_string(value); }
// A 32-bit word is written as a signed one.
std::string word(uint32_t value) { return number(static_cast<int32_t>(value)); }
std::string switchNumber(int32_t stored) { return stored == SHM_ON ? "1" : stored == SHM_OFF ? "0" : "2"; }

Columns columnsOf(const UserAccount& user) {
  return {text(user.username), switchNumber(user.superUser), number(user.lastLoginSeconds),
          number(user.lastPasswdChange)};
}

Columns columnsOf(const Ip6Address& entry) { return {address6Text(entry.address), word(entry.prefixLength)}; }

Columns columnsOf(const ManagementAddress& entry) {
  if (entry.ipVersion == SHM_FAMILY_IPV6) {
    return {word(entry.ipVersion), address6Text(entry.address6), word(entry.prefixLength6),
            number(entry.interfaceKind)};
  }
  return {word(entry.ipVersion), addressText(entry.address), addressText(entry.mask), number(entry.interfaceKind)};
}

Columns columnsOf(const RouteEntry& route) {
  return {addressText(route.destination), addressText(route.netmask), addressText(route.gateway), word(route.status)};
}

Columns columnsOf(const Route6Entry& route) {
  return {address6Text(route.destination), word(route.prefixLength), address6Text(route.gateway), word(route.status)};
}

Columns endsOf(const FilterRule& rule, std::string_view keyword) {
  if (keyword == "SELEC_ACCEL") {
    return {addressText(rule.srcAddr), addressText(rule.srcMask), addressText(rule.dstAddr), addressText(rule.dstMask)};
  }
  if (keyword != "SELEC_ACCEL_V6") return {};
  return {address6Text(rule.srcAddr6), word(rule.srcPrefixLen6), address6Text(rule.dstAddr6), word(rule.dstPrefixLen6)};
}

// Rules that drop or bridge have their priority negated in a file.
Columns columnsOf(const FilterRule& rule, std::string_view keyword) {
  const bool accelerates = rule.target != SHM_TARGET_DROP && rule.target != SHM_TARGET_BRIDGE;
  const char* target = rule.target == SHM_TARGET_DROP ? "DROP" : rule.target == SHM_TARGET_BRIDGE ? "BRIDGE" : "NONE";
  Columns columns = endsOf(rule, keyword);
  const Columns common = {word(rule.proto),
                          number(rule.srcPort),
                          number(rule.srcPortEnd),
                          number(rule.destPort),
                          number(rule.destPortEnd),
                          number(accelerates ? int64_t{rule.priority} : -int64_t{rule.priority}),
                          target,
                          number(rule.bandwidth),
                          word(rule.accel),
                          word(rule.ruleAction)};
  columns.insert(columns.end(), common.begin(), common.end());
  return columns;
}

// Of a list that grows at its end.
template <typename Entry, size_t N>
Columns addedAtEnd(const Entry (&entries)[N], int32_t count, int32_t& known) {
  const bool grown = count > known && count <= static_cast<int32_t>(N);
  known = count;
  return grown ? columnsOf(entries[count - 1]) : Columns{};
}

template <typename Slot, size_t N>
Columns addedSlot(const Slot (&slots)[N], std::vector<bool>& known) {
  for (size_t i = 0; i < N; ++i) {
    if (slots[i].inUse != 1 || known[i]) continue;
    known[i] = true;
    return columnsOf(slots[i]);
  }
  return {};
}

template <typename Slot, size_t N>
std::vector<bool> usedOf(const Slot (&slots)[N]) {
  std::vector<bool> used(N);
  for (size_t i = 0; i < N; ++i) used[i] = slots[i].inUse == 1;
  return used;
}

bool readWhole(std::string_view text, int64_t& out) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), out);
  return error == std::errc() && end == text.data() + text.size();
}

bool readAddress6(std::string_view text, uint8_t (&out)[16]) {
  return inet_pton(AF_INET6, std::string(text).c_str(), out) == 1;
}

}  // namespace

Tables::Tables()
    : users_(shm->config.userCount),
      addresses6_(shm->ip6Count),
      addresses_(shm->managementAddressCount),
      rules_(shm->filterTable.ruleCount),
      routes_(usedOf(shm->routes.slot)),
      routes6_(usedOf(shm->routes6.slot)) {}

Columns Tables::added(std::string_view keyword) {
  if (keyword == "USER_ACCOUNT") return addedAtEnd(shm->config.users, shm->config.userCount, users_);
  if (keyword == "MANAGEMENT_ADDR_6") return addedAtEnd(shm->ip6Address, shm->ip6Count, addresses6_);
  if (keyword == "ROUTE") return addedSlot(shm->routes.slot, routes_);
  if (keyword == "ROUTE6") return addedSlot(shm->routes6.slot, routes6_);
  if (keyword.starts_with("SELEC_ACCEL")) return addedRule(keyword);
  return addedAtEnd(shm->managementAddress, shm->managementAddressCount, addresses_);
}

// In front of the default rule, which stays the last.
Columns Tables::addedRule(std::string_view keyword) {
  const int32_t count = shm->filterTable.ruleCount;
  const bool grown = count > rules_ && count >= 2 && count <= SHM_RULES;
  rules_ = count;
  return grown ? columnsOf(shm->filterTable.rule[count - 2], keyword) : Columns{};
}

bool hasTable(std::string_view keyword) { return std::ranges::find(kTables, keyword) != std::end(kTables); }

bool sameColumn(std::string_view given, std::string_view stored) {
  int64_t one = 0, other = 0;
  uint8_t address[16], otherAddress[16];
  if (given == stored) return true;
  if (readWhole(given, one) && readWhole(stored, other)) return one == other;
  return readAddress6(given, address) && readAddress6(stored, otherAddress) &&
         memcmp(address, otherAddress, sizeof address) == 0;
}

}  // namespace ctl::lint
