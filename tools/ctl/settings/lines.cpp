// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/lines.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/address_sense.h"
#include "tools/ctl/rule_sense.h"
#include "tools/ctl/settings/quoting.h"
#include "tools/ctl/settings/route_walk.h"
#include "tools/ctl/settings/setting_items.h"
#include "tools/ctl/vocabulary.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;

// Counts of a damaged store are bounded by its tables.
template <typename Count, size_t N, typename Entry>
size_t used(Count count, const Entry (&)[N]) {
  return count < 0 ? 0 : std::min(static_cast<size_t>(count), N);
}

// The length, or the mask itself where it has holes.
std::string maskText(uint32_t mask) { return hasHoles(mask) ? addressText(mask) : std::to_string(inet_ntocidr(mask)); }

// Whether the kernel took a route is no setting.
const char* disabledText(uint32_t status) { return status == SHM_ROUTE_DISABLED ? " --disabled" : ""; }

class Lines {
 public:
  explicit Lines(const ShmData& store) : store_(store), config_(store.config) {}

  std::vector<SettingLine> small() {
    items();
    interfaces();
    users();
    addresses6();
    addresses();
    return std::move(lines_);
  }

  std::vector<SettingLine> all() {
    lines_ = small();
    for (const RouteEntry* route : routesOf(store_)) add("routes", keyOf(*route), routeLine(*route));
    for (const Route6Entry* route : routes6Of(store_)) add("routes6", keyOf(*route), routeLine(*route));
    rules();
    return std::move(lines_);
  }

 private:
  void add(const char* section, std::string key, std::string text) {
    lines_.push_back({section, std::move(key), std::move(text)});
  }

  void items() {
    for (const SettingItem& item : settingItems()) {
      const std::string value = valueText(item);
      if (!value.empty()) add("items", item.row->name, "set " + std::string(item.row->name) + " " + value);
    }
  }

  // Empty for a switch that nothing has set.
  std::string valueText(const SettingItem& item) const {
    if (item.row->form == ItemForm::kText) return quoted(textOf(item, config_));
    const uint32_t word = wordOf(item, config_);
    if (item.row->form == ItemForm::kAddress) return addressText(word);
    if (item.row->form == ItemForm::kNumber) return std::to_string(word);
    return word == 0 ? "" : nameOf(kSwitches, word);
  }

  void interfaces() {
    mode();
    if (config_.pbrOperState != 0) add("interfaces", "pbr", "mode pbr " + nameOf(kSwitches, config_.pbrOperState));
    name("lan", config_.lanInterfaceName);
    name("wan", config_.wanInterfaceName);
    name("management", config_.managementInterfaceName);
    name("router", config_.bridgeRouterPhysicalName);
  }

  // The ids of a mode that is off are kept for its next time.
  void mode() {
    const std::string ids = std::to_string(config_.lanVlanId) + " " + std::to_string(config_.wanVlanId);
    const bool withIds = config_.lanVlanId != 0 || config_.wanVlanId != 0;
    switch (config_.singleInterfaceMode) {
      case SHM_ON: return add("interfaces", "mode", "mode single " + ids);
      case SHM_OFF: return add("interfaces", "mode", "mode double" + (withIds ? " " + ids : ""));
      case 0:
        if (withIds) add("interfaces", "mode", "mode unset " + ids);
        return;
      default: add("interfaces", "mode", "mode other " + std::to_string(config_.singleInterfaceMode) + " " + ids);
    }
  }

  void name(const char* port, const char (&field)[16]) {
    if (field[0]) add("interfaces", port, "interface name " + std::string(port) + " " + quoted(text(field)));
  }

  void users() {
    for (size_t i = 0; i < used(config_.userCount, config_.users); ++i) {
      const UserAccount& account = config_.users[i];
      const std::string user = text(account.username);
      add("users", user, "user add " + quoted(user) + rightsText(account.superUser));
    }
  }

  static std::string rightsText(int32_t superUser) {
    if (superUser == SHM_OFF) return "";
    return superUser == SHM_ON ? " --admin" : " --rights " + std::to_string(superUser);
  }

  void addresses6() {
    for (size_t i = 0; i < used(store_.ip6Count, store_.ip6Address); ++i) {
      const Ip6Address& entry = store_.ip6Address[i];
      const std::string address = address6Text(entry.address);
      add("addresses6", address, "address add " + address + "/" + std::to_string(entry.prefixLength) + " --br0");
    }
  }

  void addresses() {
    for (size_t i = 0; i < used(store_.managementAddressCount, store_.managementAddress); ++i) {
      const ManagementAddress& entry = store_.managementAddress[i];
      const bool six = entry.ipVersion == SHM_FAMILY_IPV6;
      const std::string address = six ? address6Text(entry.address6) : addressText(entry.address);
      add("addresses", address,
          "address add " + address + "/" + (six ? std::to_string(entry.prefixLength6) : maskText(entry.mask)) +
              " --interface " + nameOf(kInterfaceKinds, static_cast<uint32_t>(entry.interfaceKind)) +
              (six || entry.ipVersion == SHM_FAMILY_IPV4 ? "" : " --family " + std::to_string(entry.ipVersion)) +
              (isUsable(entry) ? "" : " --as-is"));
    }
  }

  // The last rule is the default rule, which nobody sets.
  void rules() {
    const size_t count = used(store_.filterTable.ruleCount, store_.filterTable.rule);
    for (size_t i = 0; i + 1 < count; ++i) add("rules", std::to_string(i), ruleLine(store_.filterTable.rule[i]));
  }

  const ShmData& store_;
  const ConfigRecord& config_;
  std::vector<SettingLine> lines_;
};

class RuleText {
 public:
  explicit RuleText(const FilterRule& rule) : rule_(rule) {}

  std::string line() {
    ends();
    match();
    if (matchesAll()) text_ += " --match-all";
    number(" --priority ", rule_.priority, 8);
    rate();
    word(" --target ", kTargets, static_cast<uint32_t>(rule_.target), SHM_TARGET_ACCELERATE);
    word(" --accel ", kSwitches, rule_.accel, SHM_ON);
    word(" --status ", kRuleStatus, rule_.ruleAction, SHM_RULE_ACTIVE);
    if (isSenseless(rule_)) text_ += " --as-is";
    return std::move(text_);
  }

 private:
  void ends() {
    if (rule_.ipVersion == SHM_FAMILY_IPV6) return ends6();
    if (rule_.ipVersion == SHM_FAMILY_ANY) {
      text_ += " --any";
      return;
    }
    if (rule_.ipVersion != SHM_FAMILY_IPV4) text_ += " --family " + std::to_string(rule_.ipVersion);
    end(" --from ", rule_.srcAddr, rule_.srcMask);
    end(" --to ", rule_.dstAddr, rule_.dstMask);
  }

  void end(const char* option, uint32_t address, uint32_t mask) {
    if (address != 0 || mask != 0) text_ += option + addressText(address) + "/" + maskText(mask);
  }

  // One end tells the family.
  void ends6() {
    const bool source = present6(rule_.srcAddr6, rule_.srcPrefixLen6);
    const bool destination = present6(rule_.dstAddr6, rule_.dstPrefixLen6);
    if (source || !destination) end6(" --from ", rule_.srcAddr6, rule_.srcPrefixLen6);
    if (destination) end6(" --to ", rule_.dstAddr6, rule_.dstPrefixLen6);
  }
  static bool present6(const uint8_t (&address)[16], uint32_t length) {
    constexpr uint8_t kNone[16] = {};
    return length != 0 || memcmp(address, kNone, sizeof kNone) != 0;
  }
  void end6(const char* option, const uint8_t (&address)[16], uint32_t length) {
    text_ += option + address6Text(address) + "/" + std::to_string(length);
  }

  void match() {
    if (rule_.proto != SHM_PROTO_ANY) text_ += " --proto " + nameOf(kProtocols, rule_.proto);
    ports(" --sport ", " --sport-end ", rule_.srcPort, rule_.srcPortEnd);
    ports(" --dport ", " --dport-end ", rule_.destPort, rule_.destPortEnd);
  }
  void ports(const char* option, const char* endOption, int32_t first, int32_t last) {
    if (first != 0 || last != 0) text_ += option + std::to_string(first);
    if (last != first) text_ += endOption + std::to_string(last);
  }

  bool matchesAll() const {
    const bool any4 = rule_.srcMask == 0 && rule_.dstMask == 0;
    const bool any6 = rule_.srcPrefixLen6 == 0 && rule_.dstPrefixLen6 == 0;
    return any4 && any6 && rule_.proto == SHM_PROTO_ANY && rule_.srcPort == 0 && rule_.destPort == 0;
  }

  void number(const char* option, int32_t value, int32_t usual) {
    if (value != usual) text_ += option + std::to_string(value);
  }
  void rate() {
    const bool whole = rule_.bandwidth >= 0 && rule_.bandwidth % kBitsPerKilobit == 0;
    text_ += whole ? " --kbps " + std::to_string(rule_.bandwidth / kBitsPerKilobit)
                   : " --bps " + std::to_string(rule_.bandwidth);
  }
  void word(const char* option, Vocabulary words, uint32_t value, uint32_t usual) {
    if (value != usual) text_ += option + nameOf(words, value);
  }

  const FilterRule& rule_;
  std::string text_ = "rule add last";
};

}  // namespace

std::string keyOf(const RouteEntry& route) { return addressText(route.destination) + "/" + maskText(route.netmask); }

std::string keyOf(const Route6Entry& route) {
  return address6Text(route.destination) + "/" + std::to_string(route.prefixLength);
}

std::string routeLine(const RouteEntry& route) {
  return "route add " + keyOf(route) + " " + addressText(route.gateway) + disabledText(route.status);
}

std::string routeLine(const Route6Entry& route) {
  return "route6 add " + keyOf(route) + " " + address6Text(route.gateway) + disabledText(route.status);
}

std::string ruleLine(const FilterRule& rule) { return RuleText(rule).line(); }

std::vector<SettingLine> smallSettingLines(const ShmData& store) { return Lines(store).small(); }

std::vector<SettingLine> settingLines(const ShmData& store) { return Lines(store).all(); }

}  // namespace ctl
