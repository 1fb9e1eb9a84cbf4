#include "config/row_writer.h"

#include "config/line_text.h"
#include "config/line_writer.h"
#include "config/values.h"
#include "kestrove/codes.h"
#include "kestrove/segment.h"
#include "store/bounds.h"
#include "store/slots.h"
#include "store/text.h"

namespace kestrove {
namespace {

constexpr std::string_view kRuleKeyword6 = "SELEC_ACCEL_V6";
constexpr std::string_view kRuleKeywordAny = "SELEC_ACCEL_ANY";

using TargetWord = char[7];

constexpr TargetWord kDrop = "  DROP";
constexpr TargetWord kBridge = "BRIDGE";
constexpr TargetWord kAccelerate = "  NONE";

const TargetWord& targetWord(int32_t target) { return target == 0 ? kDrop : target == -1 ? kBridge : kAccelerate; }

// A dropping or bridging rule has its priority negated, so that the row carries the target twice: kept on purpose.
int32_t priorityColumn(const FilterRule& rule) {
  if (rule.target != 0 && rule.target != -1) return rule.priority;
  return static_cast<int32_t>(0 - static_cast<uint32_t>(rule.priority));
}

struct RuleHeads {
  LineHead four;
  LineHead six;
  LineHead any;
};

// The keyword follows the rule's family; whatever is neither 6 nor any is written as IPv4.
const LineHead& headOf(const FilterRule& rule, const RuleHeads& heads) {
  return rule.ipVersion == SHM_FAMILY_IPV6 ? heads.six : rule.ipVersion == SHM_FAMILY_ANY ? heads.any : heads.four;
}

void writeEnds(LineWriter& line, const FilterRule& rule) {
  if (rule.ipVersion == SHM_FAMILY_IPV6) {
    line.address6<40>(rule.srcAddr6).number(rule.srcPrefixLen6);
    line.address6<40>(rule.dstAddr6).number(rule.dstPrefixLen6);
  } else if (rule.ipVersion != SHM_FAMILY_ANY) {
    line.quad<16>(rule.srcAddr).quad<16>(rule.srcMask).quad<16>(rule.dstAddr).quad<16>(rule.dstMask);
  }
}

// No blank between the last port and the priority: part of the format.
void writeRule(const RuleHeads& heads, const FilterRule& rule, sys::TextWriter& out) {
  LineWriter line(out, headOf(rule, heads));
  writeEnds(line, rule);
  line.number<9>(rule.proto).number<9>(rule.srcPort).number<9>(rule.srcPortEnd);
  line.number<9>(rule.destPort).number<9>(rule.destPortEnd).adjacent<9>(priorityColumn(rule));
  line.word(targetWord(rule.target));
  line.number<9>(rule.bandwidth).number<9>(rule.accel).number<9>(rule.ruleAction).end();
}

void writeManagementAddress(LineWriter line, const ManagementAddress& entry) {
  line.number(entry.ipVersion);
  if (entry.ipVersion == SHM_FAMILY_IPV6) {
    line.address6<32>(entry.address6).number(entry.prefixLength6);
  } else {
    line.quad<16>(entry.address).quad<16>(entry.mask);
  }
  line.number(entry.interfaceKind).end();
}

}  // namespace

bool writeUserRows(std::string_view keyword, sys::TextWriter& out) {
  int32_t count = boundedCount(shm->config.userCount, SHM_USERS);
  for (int32_t i = 0; i < count; ++i) {
    const UserAccount& account = shm->config.users[i];
    LineWriter line(out, keyword);
    line.text<25>(columnText(fieldView(account.username))).number<12>(fileSwitch(account.superUser));
    line.number<12>(account.lastLoginSeconds).number(account.lastPasswdChange).end();
  }
  return true;
}

bool writeIp6AddressRows(std::string_view keyword, sys::TextWriter& out) {
  int32_t count = ip6Entries(*shm);
  for (int32_t i = 0; i < count; ++i) {
    const Ip6Address& entry = shm->ip6Address[i];
    LineWriter(out, keyword).address6<32>(entry.address).number(entry.prefixLength).end();
  }
  return true;
}

bool writeManagementRows(std::string_view keyword, sys::TextWriter& out) {
  int32_t count = managementEntries(*shm);
  for (int32_t i = 0; i < count; ++i) writeManagementAddress({out, keyword}, shm->managementAddress[i]);
  return true;
}

bool writeRouteRows(std::string_view keyword, sys::TextWriter& out) {
  LineHead head(keyword);
  return eachInOrder(shm->routes.slot, shm->routes.head, [&](const RouteEntry& route) {
    LineWriter line(out, head);
    line.quad<18>(route.destination).quad<18>(route.netmask).quad<18>(route.gateway);
    line.number<18>(route.status).emptyColumn().end();
    return true;
  });
}

bool writeRoute6Rows(std::string_view keyword, sys::TextWriter& out) {
  LineHead head(keyword);
  return eachInOrder(shm->routes6.slot, shm->routes6.head6, [&](const Route6Entry& route) {
    LineWriter line(out, head);
    line.address6<32>(route.destination).number<3>(route.prefixLength).address6<32>(route.gateway);
    line.number<18>(route.status).emptyColumn().end();
    return true;
  });
}

// A failure before them is none of theirs.
bool writeRuleRows(std::string_view keyword, sys::TextWriter& out) {
  if (!out.good()) return true;
  RuleHeads heads = {LineHead(keyword), LineHead(kRuleKeyword6), LineHead(kRuleKeywordAny)};
  int32_t count = boundedCount(shm->filterTable.ruleCount, SHM_RULES);
  for (int32_t i = 0; i < count - 1 && out.good(); ++i) writeRule(heads, shm->filterTable.rule[i], out);
  return out.good();
}

}  // namespace kestrove
