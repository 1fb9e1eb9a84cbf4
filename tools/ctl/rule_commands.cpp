// SPDX-License-Identifier: Apache-2.0
// rule.
#include <algorithm>
#include <cstring>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/rule_sense.h"
#include "tools/ctl/rule_setting.h"
#include "tools/ctl/script/script_rows.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;

// What a command line says of a rule: only what is given changes it.
struct RuleLine {
  int position = 0;
  int destinationPosition = 0;
  std::optional<Prefix> source, destination;
  std::optional<uint32_t> family, protocol, accelerate, action;
  std::optional<Ports> sourcePorts, destinationPorts;
  std::optional<int> sourcePortEnd, destinationPortEnd, target, priority, kilobits, bits;
  bool any = false;
  bool matchAll = false;
  bool asIs = false;
};

std::string ruleName(int position) { return "rule " + std::to_string(position); }

// Why a position is refused: the numbers of the rules that there are, or the text of the library.
Refusal ruleRefusal(int position) {
  const uint32_t code = shm_errno;
  const int error = errno;
  const int count = getRuleCount();
  shm_errno = code;
  errno = error;
  if (code != SHM_EINVAL || count < 1 || (position >= 0 && position < count)) {
    if (code == SHM_EREADONLY) return refusal(ruleName(position) + ", the default rule, stays where it is");
    return refusal(ruleName(position));
  }
  const std::string range = count == 1 ? "there is only rule 0" : "there are rules 0 to " + std::to_string(count - 1);
  return {kRefused, ruleName(position) + ": " + range, SHM_EINVAL};
}

FilterRule ruleAt(int number) {
  FilterRule rule;
  if (getRuleTableEntry(number, &rule) < 0) throw ruleRefusal(number);
  return rule;
}

Json rows() {
  Json rules = Json::array();
  int count = accept(getRuleCount(), "rules");
  for (int i = 0; i < count && i < SHM_RULES; ++i) rules.push_back(ruleRow(i, ruleAt(i)));
  return rules;
}

void setEnd(FilterRule& rule, const Prefix& end, bool source) {
  rule.ipVersion = end.version();
  if (rule.ipVersion == SHM_FAMILY_IPV6) {
    memcpy(source ? rule.srcAddr6 : rule.dstAddr6, end.host.address6, sizeof end.host.address6);
    (source ? rule.srcPrefixLen6 : rule.dstPrefixLen6) = end.length6;
    return;
  }
  (source ? rule.srcAddr : rule.dstAddr) = end.host.address;
  (source ? rule.srcMask : rule.dstMask) = end.mask;
}

// What makes no sense whatever rule it is for.
void refuseContradictions(const RuleLine& given) {
  if (given.any && (given.source || given.destination)) {
    throw Refusal(kUsage, "--any matches both address families: it goes without --from and --to");
  }
  if (given.any && given.family) throw Refusal(kUsage, "--any is an address family: it goes without --family");
  if (given.kilobits && given.bits) throw Refusal(kUsage, "--kbps and --bps are one rate: one of them");
  if (given.source && given.destination && given.source->version() != given.destination->version()) {
    throw Refusal(kUsage, "--from and --to are of different address families");
  }
}

bool hasEnd(const FilterRule& rule, bool source) {
  if (rule.ipVersion == SHM_FAMILY_IPV4) return (source ? rule.srcMask : rule.dstMask) != 0;
  return rule.ipVersion == SHM_FAMILY_IPV6 && (source ? rule.srcPrefixLen6 : rule.dstPrefixLen6) != 0;
}

// An end that stays in a rule goes with the family that it has.
void refuseOtherFamily(const FilterRule& rule, const RuleLine& given) {
  for (bool source : {true, false}) {
    const std::optional<Prefix>& changed = source ? given.source : given.destination;
    const std::optional<Prefix>& other = source ? given.destination : given.source;
    if (!changed || other || !hasEnd(rule, !source) || changed->version() == rule.ipVersion) continue;
    throw Refusal(kUsage, std::string(source ? "--from" : "--to") + " is of another address family than the rule's " +
                              (source ? "destination" : "source"));
  }
}

void setPorts(int32_t& first, int32_t& last, const std::optional<Ports>& ports, const std::optional<int>& end) {
  if (ports && ports->last && end) throw Refusal(kUsage, "a range has its last port: it goes without a second one");
  if (ports) first = ports->first;
  if (ports) last = ports->last.value_or(first);
  if (end) last = *end;
}

bool namesPorts(const RuleLine& given) {
  return given.protocol || given.sourcePorts || given.sourcePortEnd || given.destinationPorts ||
         given.destinationPortEnd;
}

bool matchesAll(const FilterRule& rule) {
  return !hasEnd(rule, true) && !hasEnd(rule, false) && rule.proto == SHM_PROTO_ANY && rule.srcPort == 0 &&
         rule.destPort == 0;
}

void refuseNonsense(const std::string& wrong) {
  if (!wrong.empty()) throw Refusal(kUsage, wrong);
}

void apply(FilterRule& rule, const RuleLine& given) {
  const FilterRule before = rule;
  refuseContradictions(given);
  refuseOtherFamily(rule, given);
  if (given.any) rule.ipVersion = SHM_FAMILY_ANY;
  if (given.source) setEnd(rule, *given.source, true);
  if (given.destination) setEnd(rule, *given.destination, false);
  if (given.family) rule.ipVersion = *given.family;
  if (given.protocol) rule.proto = *given.protocol;
  setPorts(rule.srcPort, rule.srcPortEnd, given.sourcePorts, given.sourcePortEnd);
  setPorts(rule.destPort, rule.destPortEnd, given.destinationPorts, given.destinationPortEnd);
  if (given.target) rule.target = *given.target;
  if (given.priority) rule.priority = *given.priority;
  if (given.kilobits) rule.bandwidth = *given.kilobits * kBitsPerKilobit;
  if (given.bits) rule.bandwidth = *given.bits;
  if (given.accelerate) rule.accel = *given.accelerate;
  if (given.action) rule.ruleAction = *given.action;
  if (given.asIs) return;
  refuseNonsense(senselessNumber(rule, before));
  if (namesPorts(given)) refuseNonsense(senselessPorts(rule));
}

// What the library made of the rule beyond reducing its addresses.
void announce(const FilterRule& asked, const FilterRule& stored, Json& row) {
  Json notes = Json::array();
  if (stored.bandwidth > asked.bandwidth) {
    notes.push_back("rate raised from " + std::to_string(asked.bandwidth / kBitsPerKilobit) + " to " +
                    std::to_string(stored.bandwidth / kBitsPerKilobit) + " kbit/s, the least there is (minRate)");
  }
  if (asked.accel == SHM_ON && stored.accel != SHM_ON) notes.push_back("acceleration off: UDP is never accelerated");
  if (!notes.empty()) row["notes"] = notes;
}

void tell(Change& change, int position, const FilterRule& asked, const FilterRule& stored) {
  Json row = ruleRow(position, stored);
  announce(asked, stored, row);
  change.show(row);
}

RuleWish wished(const RuleLine& line) {
  FilterRule rule = freshRule();
  apply(rule, line);
  if (matchesAll(rule) && !line.matchAll && !line.asIs) {
    throw Refusal(kUsage,
                  "this rule matches all traffic and no rule behind it is reached: say --match-all, or name an "
                  "address, a protocol or a port");
  }
  return {line.position, rule};
}

void add(const Session& session, const RuleLine& line) { insertRule(session, wished(line)); }

Wish wish(const RuleLine& line) { return wished(line); }

void changeOne(const Session& session, const RuleLine& line) {
  requireStore(session);
  Change change(session);
  const FilterRule before = ruleAt(line.position);
  FilterRule rule = before;
  apply(rule, line);
  const FilterRule asked = rule;
  if (session.leavesEqual && memcmp(&rule, &before, sizeof rule) == 0) return tell(change, line.position, asked, rule);
  const int result = changeRule(line.position, &rule);
  if (result < 0) throw ruleRefusal(line.position);
  change.made(result, ruleName(line.position));
  tell(change, line.position, asked, rule);
}

void move(const Session& session, const RuleLine& line) {
  requireStore(session);
  Change change(session);
  const int result = moveRule(line.position, line.destinationPosition);
  const int count = result < 0 ? getRuleCount() : 0;
  const bool wrongPlace = line.destinationPosition < 0 || line.destinationPosition >= count;
  if (result < 0) throw ruleRefusal(wrongPlace ? line.destinationPosition : line.position);
  change.made(result, ruleName(line.position));
  change.done(ruleName(line.position) + " moved in front of " + std::to_string(line.destinationPosition));
}

void remove(const Session& session, const RuleLine& line) {
  requireStore(session);
  Change change(session);
  const int result = deleteRule(line.position);
  if (result < 0) throw ruleRefusal(line.position);
  change.made(result, ruleName(line.position));
  change.done(ruleName(line.position) + " deleted");
}

constexpr Type kEnd = takes::prefix(Family::kBoth);
constexpr Type kRate = takes::kilobits(INT32_MAX / kBitsPerKilobit);
constexpr Type kFamily = takes::code(kScriptFamilies, "4|6", "address family (4 or 6)");
constexpr Type kProtocol = takes::code(kProtocols, "any|tcp|udp|0..255", "protocol (any, tcp, udp or 0 to 255)");
constexpr Type kTarget = takes::code(kTargets, "accelerate|bridge|drop", "target (accelerate, bridge or drop)");
constexpr Type kSwitch = takes::code(kSwitches, "on|off", "switch (on or off)");
constexpr Type kStatus = takes::code(kRuleStatus, "active|nis|invalid", "status (active, nis or invalid)");

Argument<RuleLine> position() { return needed("POSITION", &RuleLine::position, takes::rule(), "0 is the first rule"); }

Argument<RuleLine> place() {
  return needed("POSITION", &RuleLine::position, takes::place(), "0 is the first rule; last is the default rule's");
}

std::vector<Argument<RuleLine>> matching() {
  return {
      flag("--any", &RuleLine::any, "Match both address families"),
      option("--family", &RuleLine::family, kFamily, "Address family, where no address tells it"),
      option("--from", &RuleLine::source, kEnd, "Source, IPv4 or IPv6"),
      option("--to", &RuleLine::destination, kEnd, "Destination, IPv4 or IPv6"),
      option("--proto", &RuleLine::protocol, kProtocol, "Protocol"),
      option("--sport", &RuleLine::sourcePorts, takes::ports(), "Source ports, with tcp or udp: 80, 80-90; 0 is any"),
      option("--sport-end", &RuleLine::sourcePortEnd, takes::number(), "Last source port"),
      option("--dport", &RuleLine::destinationPorts, takes::ports(), "Destination ports, as well"),
      option("--dport-end", &RuleLine::destinationPortEnd, takes::number(), "Last destination port")};
}

std::vector<Argument<RuleLine>> treatment() {
  return {option("--target", &RuleLine::target, kTarget, "What matching traffic gets"),
          option("--priority", &RuleLine::priority, takes::number(), "Scheduling priority"),
          option("--kbps", &RuleLine::kilobits, kRate, "Rate limit; the least is minRate"),
          option("--bps", &RuleLine::bits, takes::number().in("bit/s"), "The same, where it is no whole kbit/s"),
          option("--accel", &RuleLine::accelerate, kSwitch, "Acceleration"),
          option("--status", &RuleLine::action, kStatus, "Status"),
          flag("--as-is", &RuleLine::asIs, "Take ports and numbers that make no sense, as a store may hold them")};
}

std::vector<Argument<RuleLine>> ruleValues() { return matching() + treatment(); }

}  // namespace

FilterRule freshRule() {
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rule.target = SHM_TARGET_ACCELERATE;
  rule.priority = 8;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  return rule;
}

void insertRule(const Session& session, const RuleWish& wish) {
  requireStore(session);
  FilterRule rule = wish.rule;
  Change change(session);
  const int position = wish.position == kLastPlace ? std::max(0, getRuleCount() - 1) : wish.position;
  const int result = addRule(position, &rule, 0, 0);
  if (result < 0) throw ruleRefusal(position);
  change.made(result, ruleName(position));
  tell(change, position, wish.rule, rule);
}

std::vector<Command> ruleCommands() {
  const std::vector<Argument<RuleLine>> values = ruleValues();
  return {group("rule", "The table of traffic policy rules, first match first"),
          command("rule list", "All rules; the last is the default rule", showing<rows>),
          setting("rule add", "Insert a rule in front of a position", add, wish,
                  std::vector{place()} + values +
                      std::vector{flag("--match-all", &RuleLine::matchAll, "The rule may match all traffic")}),
          scriptRuleCommand(),
          changing("rule change", "Change what the options name", changeOne, std::vector{position()} + values),
          changing("rule move", "Move a rule in front of another", move,
                   {needed("FROM", &RuleLine::position, takes::rule(), "The rule to move"),
                    needed("TO", &RuleLine::destinationPosition, takes::rule(), "The rule to stand in front of")}),
          changing("rule delete", "Delete a rule", remove, {position()})};
}

}  // namespace ctl
