// rule.
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

constexpr int kBitsPerKilobit = 1000;

// What a command line says of a rule: only what is given changes a rule.
struct RuleOptions {
  std::optional<std::string> source, destination, protocol, action, target;
  std::optional<int> sourcePort, sourcePortEnd, destinationPort, destinationPortEnd, priority, kilobits;
  std::optional<bool> accelerate;
  bool any = false;
};

RuleOptions given;
int position = 0;
int destinationPosition = 0;

FilterRule ruleAt(int number) {
  FilterRule rule;
  accept(getRuleTableEntry(number, &rule), "rule " + std::to_string(number));
  return rule;
}

void list(const Session& session) {
  requireStore();
  Json rules = Json::array();
  int count = accept(getRuleCount(), "rules");
  for (int i = 0; i < count && i < SHM_RULES; ++i) rules.push_back(ruleRow(i, ruleAt(i)));
  session.show(rules);
}

void split(const std::string& text, std::string& address, std::string& length) {
  size_t slash = text.find('/');
  address = text.substr(0, slash);
  length = slash == std::string::npos ? "" : text.substr(slash + 1);
}

uint32_t prefixLength(const std::string& length) {
  if (length.empty()) return 128;
  if (length.size() > 3 || length.find_first_not_of("0123456789") != std::string::npos || std::stoi(length) > 128) {
    throw Refusal(kUsage, length + ": no prefix length");
  }
  return static_cast<uint32_t>(std::stoi(length));
}

void setEnd(FilterRule& rule, const std::string& textOfEnd, bool source) {
  std::string address;
  std::string length;
  split(textOfEnd, address, length);
  if (address.find(':') != std::string::npos) {
    rule.ipVersion = 6;
    parseAddress6(address, source ? rule.srcAddr6 : rule.dstAddr6);
    (source ? rule.srcPrefixLen6 : rule.dstPrefixLen6) = prefixLength(length);
    return;
  }
  rule.ipVersion = 4;
  (source ? rule.srcAddr : rule.dstAddr) = parseAddress(address);
  (source ? rule.srcMask : rule.dstMask) = parseMask(length.empty() ? "32" : length);
}

void setPorts(int32_t& first, int32_t& last, const std::optional<int>& start, const std::optional<int>& end) {
  if (start) first = last = *start;
  if (end) last = *end;
}

int targetOf(const std::string& text) { return text == "drop" ? 0 : text == "bridge" ? -1 : 1; }

void apply(FilterRule& rule) {
  if (given.any) rule.ipVersion = 1;
  if (given.source) setEnd(rule, *given.source, true);
  if (given.destination) setEnd(rule, *given.destination, false);
  if (given.protocol) rule.proto = protocolNumber(*given.protocol);
  setPorts(rule.srcPort, rule.srcPortEnd, given.sourcePort, given.sourcePortEnd);
  setPorts(rule.destPort, rule.destPortEnd, given.destinationPort, given.destinationPortEnd);
  if (given.target) rule.target = targetOf(*given.target);
  if (given.priority) rule.priority = *given.priority;
  if (given.kilobits) rule.bandwidth = *given.kilobits * kBitsPerKilobit;
  if (given.accelerate) rule.accel = *given.accelerate ? SHM_ON : SHM_OFF;
  if (given.action) rule.ruleAction = ruleStatusNumber(*given.action);
}

FilterRule freshRule() {
  FilterRule rule = {};
  rule.ipVersion = 4;
  rule.target = 1;
  rule.priority = 8;
  rule.accel = SHM_ON;
  rule.ruleAction = 3;
  return rule;
}

void add(const Session& session) {
  requireStore();
  FilterRule rule = freshRule();
  apply(rule);
  accept(addRule(position, &rule, 0, 0), "rule " + std::to_string(position));
  session.show(ruleRow(position, rule));
}

void change(const Session& session) {
  requireStore();
  FilterRule rule = ruleAt(position);
  apply(rule);
  accept(changeRule(position, &rule), "rule " + std::to_string(position));
  session.show(ruleRow(position, rule));
}

void addRuleOptions(CLI::App* command) {
  const std::string end = "ADDRESS[/LENGTH], IPv4 or IPv6";
  const CLI::Range port(0, 65535);
  command->add_flag("--any", given.any, "Match any address family");
  command->add_option("--from", given.source, "Source " + end);
  command->add_option("--to", given.destination, "Destination " + end);
  command->add_option("--proto", given.protocol, "any, tcp, udp or a number");
  command->add_option("--sport", given.sourcePort, "First source port")->check(port);
  command->add_option("--sport-end", given.sourcePortEnd, "Last source port")->check(port);
  command->add_option("--dport", given.destinationPort, "First destination port")->check(port);
  command->add_option("--dport-end", given.destinationPortEnd, "Last destination port")->check(port);
  command->add_option("--target", given.target, "What matching traffic gets")
      ->check(CLI::IsMember({"accelerate", "bridge", "drop"}));
  command->add_option("--priority", given.priority, "Scheduling priority");
  command->add_option("--kbps", given.kilobits, "Rate limit in kbit/s")
      ->check(CLI::Range(0, INT32_MAX / kBitsPerKilobit));
  command->add_option("--accel", given.accelerate, "Acceleration, true or false");
  command->add_option("--status", given.action, "active, nis or invalid");
}

}  // namespace

void addRuleCommands(CLI::App& app, Session& session) {
  CLI::App* rule = app.add_subcommand("rule", "The table of traffic policy rules, first match first");
  rule->require_subcommand(1);
  rule->add_subcommand("list", "All rules; the last is the default rule")->callback([&session] { list(session); });

  CLI::App* adding = rule->add_subcommand("add", "Insert a rule in front of a position");
  CLI::App* changing = rule->add_subcommand("change", "Change what the options name");
  for (CLI::App* command : {adding, changing}) {
    command->add_option("POSITION", position, "0 is the first rule")->required();
    addRuleOptions(command);
  }
  adding->callback([&session] { add(session); });
  changing->callback([&session] { change(session); });

  CLI::App* moving = rule->add_subcommand("move", "Move a rule in front of another");
  moving->add_option("FROM", position, "The rule to move")->required();
  moving->add_option("TO", destinationPosition, "The rule to stand in front of")->required();
  moving->callback([&session] {
    requireStore();
    accept(moveRule(position, destinationPosition), "rule " + std::to_string(position));
    session.done("rule " + std::to_string(position) + " moved in front of " + std::to_string(destinationPosition));
  });

  CLI::App* deleting = rule->add_subcommand("delete", "Delete a rule");
  deleting->add_option("POSITION", position, "0 is the first rule")->required();
  deleting->callback([&session] {
    requireStore();
    accept(deleteRule(position), "rule " + std::to_string(position));
    session.done("rule " + std::to_string(position) + " deleted");
  });
}

}  // namespace ctl
