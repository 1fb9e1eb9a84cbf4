// rule.
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;
constexpr uint32_t kTcp = 6;
constexpr uint32_t kUdp = 17;
constexpr uint32_t kAnyFamily = 1;
constexpr uint32_t kIpv4 = 4;
constexpr uint32_t kIpv6 = 6;

// What a command line says of a rule: only what is given changes a rule.
struct RuleOptions {
  std::optional<std::string> source, destination, protocol, action, target, accelerate;
  std::optional<int> sourcePort, sourcePortEnd, destinationPort, destinationPortEnd, priority, kilobits;
  bool any = false;
  bool matchAll = false;
};

// The words of one rule command.
struct RuleLine {
  RuleOptions given;
  int position = 0;
  int destination = 0;
};

std::string nameOf(int position) { return "rule " + std::to_string(position); }

// Why a position is refused: the numbers of the rules that there are, or the text of the library.
Refusal ruleRefusal(int position) {
  const uint32_t code = shm_errno;
  const int error = errno;
  const int count = getRuleCount();
  shm_errno = code;
  errno = error;
  if (code != SHM_EINVAL || count < 1 || (position >= 0 && position < count)) {
    if (code == SHM_EREADONLY) return refusal(nameOf(position) + ", the default rule, stays where it is");
    return refusal(nameOf(position));
  }
  const std::string range = count == 1 ? "there is only rule 0" : "there are rules 0 to " + std::to_string(count - 1);
  return {kRefused, nameOf(position) + ": " + range, SHM_EINVAL};
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

void split(const std::string& text, std::string& address, std::string& length) {
  size_t slash = text.find('/');
  address = text.substr(0, slash);
  length = slash == std::string::npos ? "" : text.substr(slash + 1);
}

uint32_t prefixLength(const std::string& length) {
  if (length.empty()) return 128;
  if (length.size() > 3 || length.find_first_not_of("0123456789") != std::string::npos || std::stoi(length) > 128) {
    throw Refusal(kUsage, length + ": no prefix length (0 to 128)");
  }
  return static_cast<uint32_t>(std::stoi(length));
}

uint32_t familyOf(const std::string& end) { return end.find(':') == std::string::npos ? kIpv4 : kIpv6; }

void setEnd(FilterRule& rule, const std::string& textOfEnd, bool source) {
  std::string address;
  std::string length;
  split(textOfEnd, address, length);
  rule.ipVersion = familyOf(textOfEnd);
  if (rule.ipVersion == kIpv6) {
    parseAddress6(address, source ? rule.srcAddr6 : rule.dstAddr6);
    (source ? rule.srcPrefixLen6 : rule.dstPrefixLen6) = prefixLength(length);
    return;
  }
  (source ? rule.srcAddr : rule.dstAddr) = parseAddress(address);
  (source ? rule.srcMask : rule.dstMask) = parseMask(length.empty() ? "32" : length);
}

// What makes no sense whatever rule it is for.
void refuseContradictions(const RuleOptions& given) {
  if (given.any && (given.source || given.destination)) {
    throw Refusal(kUsage, "--any matches both address families: it goes without --from and --to");
  }
  if (given.source && given.destination && familyOf(*given.source) != familyOf(*given.destination)) {
    throw Refusal(kUsage, "--from and --to are of different address families");
  }
}

bool hasEnd(const FilterRule& rule, bool source) {
  if (rule.ipVersion == kIpv4) return (source ? rule.srcMask : rule.dstMask) != 0;
  return rule.ipVersion == kIpv6 && (source ? rule.srcPrefixLen6 : rule.dstPrefixLen6) != 0;
}

// An end that stays in a rule goes with the family that it has.
void refuseOtherFamily(const FilterRule& rule, const RuleOptions& given) {
  for (bool source : {true, false}) {
    const std::optional<std::string>& changed = source ? given.source : given.destination;
    const std::optional<std::string>& other = source ? given.destination : given.source;
    if (!changed || other || !hasEnd(rule, !source) || familyOf(*changed) == rule.ipVersion) continue;
    throw Refusal(kUsage, std::string(source ? "--from" : "--to") + " is of another address family than the rule's " +
                              (source ? "destination" : "source"));
  }
}

void setPorts(int32_t& first, int32_t& last, const std::optional<int>& start, const std::optional<int>& end) {
  if (start) first = last = *start;
  if (end) last = *end;
}

void refusePorts(int first, int last, const char* option) {
  const std::string name = option;
  if (first == 0 && last != 0) throw Refusal(kUsage, name + "-end goes with a first port (" + name + ")");
  if (last < first) {
    throw Refusal(kUsage, "ports " + std::to_string(first) + " to " + std::to_string(last) + " run backwards (" + name +
                              ", " + name + "-end)");
  }
}

void refuseMeaninglessPorts(const FilterRule& rule) {
  refusePorts(rule.srcPort, rule.srcPortEnd, "--sport");
  refusePorts(rule.destPort, rule.destPortEnd, "--dport");
  const bool ports = rule.srcPort != 0 || rule.destPort != 0;
  if (ports && rule.proto != kTcp && rule.proto != kUdp) throw Refusal(kUsage, "ports go with --proto tcp or udp");
}

bool namesPorts(const RuleOptions& given) {
  return given.protocol || given.sourcePort || given.sourcePortEnd || given.destinationPort || given.destinationPortEnd;
}

bool matchesAll(const FilterRule& rule) {
  return !hasEnd(rule, true) && !hasEnd(rule, false) && rule.proto == 0 && rule.srcPort == 0 && rule.destPort == 0;
}

int targetOf(const std::string& text) { return text == "drop" ? 0 : text == "bridge" ? -1 : 1; }

void apply(FilterRule& rule, const RuleOptions& given) {
  refuseContradictions(given);
  refuseOtherFamily(rule, given);
  if (given.any) rule.ipVersion = kAnyFamily;
  if (given.source) setEnd(rule, *given.source, true);
  if (given.destination) setEnd(rule, *given.destination, false);
  if (given.protocol) rule.proto = protocolNumber(*given.protocol);
  setPorts(rule.srcPort, rule.srcPortEnd, given.sourcePort, given.sourcePortEnd);
  setPorts(rule.destPort, rule.destPortEnd, given.destinationPort, given.destinationPortEnd);
  if (namesPorts(given)) refuseMeaninglessPorts(rule);
  if (given.target) rule.target = targetOf(*given.target);
  if (given.priority) rule.priority = *given.priority;
  if (given.kilobits) rule.bandwidth = *given.kilobits * kBitsPerKilobit;
  if (given.accelerate) rule.accel = parseSwitch(*given.accelerate);
  if (given.action) rule.ruleAction = ruleStatusNumber(*given.action);
}

FilterRule freshRule() {
  FilterRule rule = {};
  rule.ipVersion = kIpv4;
  rule.target = 1;
  rule.priority = 8;
  rule.accel = SHM_ON;
  rule.ruleAction = 3;
  return rule;
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

void add(const Session& session, const RuleLine& line) {
  FilterRule rule = freshRule();
  apply(rule, line.given);
  if (matchesAll(rule) && !line.given.matchAll) {
    throw Refusal(kUsage,
                  "this rule matches all traffic and no rule behind it is reached: say --match-all, or name an "
                  "address, a protocol or a port");
  }
  requireStore(session);
  const FilterRule asked = rule;
  Change change(session);
  const int result = addRule(line.position, &rule, 0, 0);
  if (result < 0) throw ruleRefusal(line.position);
  change.made(result, nameOf(line.position));
  tell(change, line.position, asked, rule);
}

void changeOne(const Session& session, const RuleLine& line) {
  requireStore(session);
  Change change(session);
  FilterRule rule = ruleAt(line.position);
  apply(rule, line.given);
  const FilterRule asked = rule;
  const int result = changeRule(line.position, &rule);
  if (result < 0) throw ruleRefusal(line.position);
  change.made(result, nameOf(line.position));
  tell(change, line.position, asked, rule);
}

void move(const Session& session, const RuleLine& line) {
  requireStore(session);
  Change change(session);
  const int result = moveRule(line.position, line.destination);
  const int count = result < 0 ? getRuleCount() : 0;
  const bool wrongPlace = line.destination < 0 || line.destination >= count;
  if (result < 0) throw ruleRefusal(wrongPlace ? line.destination : line.position);
  change.made(result, nameOf(line.position));
  change.done(nameOf(line.position) + " moved in front of " + std::to_string(line.destination));
}

void remove(const Session& session, const RuleLine& line) {
  requireStore(session);
  Change change(session);
  const int result = deleteRule(line.position);
  if (result < 0) throw ruleRefusal(line.position);
  change.made(result, nameOf(line.position));
  change.done(nameOf(line.position) + " deleted");
}

void addRuleOptions(CLI::App* command, RuleOptions& given) {
  const std::string end = "ADDRESS[/LENGTH], IPv4 or IPv6";
  const CLI::Range port(0, 65535);
  command->add_flag("--any", given.any, "Match both address families");
  command->add_option("--from", given.source, "Source " + end);
  command->add_option("--to", given.destination, "Destination " + end);
  command->add_option("--proto", given.protocol, "any, tcp, udp or a number from 0 to 255");
  command->add_option("--sport", given.sourcePort, "First source port, with tcp or udp; 0 is any")->check(port);
  command->add_option("--sport-end", given.sourcePortEnd, "Last source port")->check(port);
  command->add_option("--dport", given.destinationPort, "First destination port, with tcp or udp; 0 is any")
      ->check(port);
  command->add_option("--dport-end", given.destinationPortEnd, "Last destination port")->check(port);
  command->add_option("--target", given.target, "What matching traffic gets")
      ->check(CLI::IsMember({"accelerate", "bridge", "drop"}));
  command->add_option("--priority", given.priority, "Scheduling priority");
  command->add_option("--kbps", given.kilobits, "Rate limit in kbit/s; the least is minRate")
      ->check(CLI::Range(0, INT32_MAX / kBitsPerKilobit));
  command->add_option("--accel", given.accelerate, "Acceleration, on or off")->check(CLI::IsMember({"on", "off"}));
  command->add_option("--status", given.action, "active, nis or invalid");
}

}  // namespace

void addRuleCommands(CLI::App& app, Session& session) {
  static RuleLine line;
  CLI::App* rule = app.add_subcommand("rule", "The table of traffic policy rules, first match first");
  rule->require_subcommand(1);
  rule->add_subcommand("list", "All rules; the last is the default rule")->callback([&session] {
    showRead(session, rows);
  });

  CLI::App* adding = rule->add_subcommand("add", "Insert a rule in front of a position");
  CLI::App* changing = rule->add_subcommand("change", "Change what the options name");
  for (CLI::App* command : {adding, changing}) {
    command->add_option("POSITION", line.position, "0 is the first rule")->required();
    addRuleOptions(command, line.given);
  }
  adding->add_flag("--match-all", line.given.matchAll, "The rule may match all traffic");
  adding->callback([&session] { add(session, line); });
  changing->callback([&session] { changeOne(session, line); });

  CLI::App* moving = rule->add_subcommand("move", "Move a rule in front of another");
  moving->add_option("FROM", line.position, "The rule to move")->required();
  moving->add_option("TO", line.destination, "The rule to stand in front of")->required();
  moving->callback([&session] { move(session, line); });

  CLI::App* deleting = rule->add_subcommand("delete", "Delete a rule");
  deleting->add_option("POSITION", line.position, "0 is the first rule")->required();
  deleting->callback([&session] { remove(session, line); });
}

}  // namespace ctl
