// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/lost_reasons.h"

#include <algorithm>
#include <string_view>

#include "kestrove/codes.h"
#include "tools/ctl/item_names.h"

namespace ctl {
namespace {

constexpr char kNoLine[] = "a script has no line for it";

struct SectionReason {
  const char* section;
  const char* reason;
};
constexpr SectionReason kSectionReasons[] = {
    {"users", "a script names no users"}, {"addresses6", "a script has no line for the bridge's own IPv6 addresses"}};

struct ItemReason {
  bool (*holds)(const ItemRow& row, const std::string& value);
  const char* reason;
};

bool isText(const ItemRow& row, const std::string&) { return row.form == ItemForm::kText; }
bool isGateway(const ItemRow& row, const std::string&) { return std::string_view(row.name).ends_with("Gateway"); }
bool hasNoLine(const ItemRow& row, const std::string&) { return !*row.script; }
bool isOtherSwitch(const ItemRow& row, const std::string& value) {
  return row.form == ItemForm::kSwitch && value != "on" && value != "off";
}
bool isLink(const ItemRow& row, const std::string&) { return std::string_view(row.script).starts_with("linkSetting"); }
bool hasNoWord(const ItemRow& row, const std::string&) { return !row.scriptWords.empty(); }
bool isFraction(const ItemRow& row, const std::string& value) {
  return row.scriptFactor == 1000 && !value.ends_with("000");
}

constexpr ItemReason kItems[] = {{isText, "a script has no texts"},
                                 {isGateway, "a script has no gateways of the ports"},
                                 {hasNoLine, kNoLine},
                                 {isOtherSwitch, "a switch is on or off in a script"},
                                 {isLink, "a script has no word for this link setting and says 10baseT"},
                                 {hasNoWord, "a script has no word for it and says nothing"},
                                 {isFraction, "a script has whole kbit/s"}};

bool isKnown(const FilterRule& rule) {
  return rule.ipVersion == SHM_FAMILY_IPV4 || rule.ipVersion == SHM_FAMILY_IPV6 || rule.ipVersion == SHM_FAMILY_ANY;
}
bool accelerates(const FilterRule& rule) { return rule.target > 0; }
bool hasPorts(const FilterRule& rule) {
  return rule.srcPort != 0 || rule.srcPortEnd != 0 || rule.destPort != 0 || rule.destPortEnd != 0;
}

struct RuleReason {
  bool (*holds)(const FilterRule& rule);
  const char* reason;
};
constexpr RuleReason kRules[] = {
    {[](const FilterRule& rule) { return !isKnown(rule); }, "other families are written as any"},
    {[](const FilterRule& rule) {
       return rule.ipVersion == SHM_FAMILY_IPV4 &&
              ((rule.srcMask == 0 && rule.srcAddr != 0) || (rule.dstMask == 0 && rule.dstAddr != 0));
     },
     "an address with the mask 0 is not written"},
    {[](const FilterRule& rule) {
       return rule.proto != SHM_PROTO_ANY && rule.proto != SHM_PROTO_TCP && rule.proto != SHM_PROTO_UDP;
     },
     "other protocols than TCP and UDP have no word"},
    {[](const FilterRule& rule) { return rule.proto == SHM_PROTO_ANY && hasPorts(rule); },
     "ports without a protocol are not written"},
    {[](const FilterRule& rule) { return rule.proto != SHM_PROTO_ANY && rule.srcPort == 0 && hasPorts(rule); },
     "a destination port is not written without a source port"},
    {[](const FilterRule& rule) { return rule.target > 1 || rule.target < -1; },
     "what it gets of traffic has no word but accelerate, bridge and drop"},
    {[](const FilterRule& rule) { return (rule.target == 0 || rule.target == -1) && rule.priority != 8; },
     "the priority of a rule that bridges or drops is not written"},
    {[](const FilterRule& rule) { return !accelerates(rule); },
     "the rate of a rule that does not accelerate is not written"},
    {[](const FilterRule& rule) { return accelerates(rule) && rule.bandwidth % 1000 != 0; },
     "a script has whole kbit/s"},
    {[](const FilterRule& rule) { return !accelerates(rule) && rule.accel != SHM_ON; },
     "the acceleration of a rule that bridges or drops is not written"},
    {[](const FilterRule& rule) { return rule.accel != SHM_ON && rule.accel != SHM_OFF; },
     "acceleration is on or off in a script"},
    {[](const FilterRule& rule) { return rule.ruleAction != SHM_RULE_NIS && rule.ruleAction != SHM_RULE_ACTIVE; },
     "a rule is active or not in service in a script"}};

// The rate of a rule that bridges is lost only where it is not the least there is.
bool applies(const RuleReason& reason, const FilterRule& rule, const ShmData& store) {
  if (!reason.holds(rule)) return false;
  const bool aboutRate = std::string_view(reason.reason).starts_with("the rate");
  return !aboutRate || rule.bandwidth != static_cast<int32_t>(store.config.minRate);
}

std::string ruleReason(const std::string& key, const ShmData& store) {
  const size_t number = std::min<size_t>(std::stoul(key), SHM_RULES - 1);
  std::string text;
  for (const RuleReason& row : kRules) {
    if (applies(row, store.filterTable.rule[number], store))
      text += (text.empty() ? "" : "; ") + std::string(row.reason);
  }
  return text;
}

std::string lastWord(const std::string& line) { return line.substr(line.rfind(' ') + 1); }

std::string itemReason(const SettingChange& change) {
  const ItemRow* row = findItemRow(change.key);
  if (!row) return kNoLine;
  const std::string value = change.after ? lastWord(*change.after) : "";
  for (const ItemReason& reason : kItems) {
    if (reason.holds(*row, value)) return reason.reason;
  }
  return {};
}

std::string interfaceReason(const SettingChange& change) {
  if (change.key == "mode") {
    return change.after && change.after->starts_with("mode double")
               ? "the VLAN ids of a mode that is off are not written"
               : "a script has two modes, single and double";
  }
  if (change.key == "pbr") return "policy routing is on or off in a script";
  return "a script has no names of interfaces";
}

std::string addressReason(const SettingChange& change) {
  if (!change.before) return "only IPv4 and IPv6 addresses are written";
  return "a script has three places: -b the bridge, -v the LAN side, -m all others";
}

}  // namespace

std::string lostReason(const SettingChange& change, const ShmData& store) {
  for (const SectionReason& row : kSectionReasons) {
    if (change.section == row.section) return row.reason;
  }
  if (change.section == "items") return itemReason(change);
  if (change.section == "interfaces") return interfaceReason(change);
  if (change.section == "addresses") return addressReason(change);
  if (change.section == "rules") return ruleReason(change.key, store);
  return {};
}

}  // namespace ctl
