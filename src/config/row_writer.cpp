// SPDX-License-Identifier: Apache-2.0
#include "config/row_writer.h"

#include "config/row_columns.h"
#include "kestrove/codes.h"
#include "kestrove/segment.h"
#include "store/bounds.h"
#include "store/slots.h"

namespace kestrove {
namespace {

constexpr std::string_view kRuleKeyword6 = "SELEC_ACCEL_V6";
constexpr std::string_view kRuleKeywordAny = "SELEC_ACCEL_ANY";

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
    rows::RuleSource6::write(line, rule);
    rows::RuleDestination6::write(line, rule);
  } else if (rule.ipVersion != SHM_FAMILY_ANY) {
    rows::RuleEnds::write(line, rule);
  }
}

void writeRule(LineWriter line, const FilterRule& rule) {
  writeEnds(line, rule);
  rows::AnyRule::write(line, rule);
  line.end();
}

template <class Row, class Entry>
void writeRow(LineWriter line, const Entry& entry) {
  Row::write(line, entry);
  line.end();
}

template <class Row, class Entry>
[[nodiscard]] bool writeRows(std::string_view keyword, const Entry* entries, int count, sys::TextWriter& out) {
  LineHead head(keyword);
  for (int i = 0; i < count; ++i) writeRow<Row>({out, head}, entries[i]);
  return true;
}

template <class Row, class Slot, size_t N>
[[nodiscard]] bool writeList(std::string_view keyword, const Slot (&slots)[N], uint32_t first, sys::TextWriter& out) {
  LineHead head(keyword);
  return eachInOrder(slots, first, [&](const Slot& slot) {
    writeRow<Row>({out, head}, slot);
    return true;
  });
}

}  // namespace

bool writeUserRows(std::string_view keyword, sys::TextWriter& out) {
  return writeRows<rows::User>(keyword, shm->config.users, userEntries(*shm), out);
}

bool writeIp6AddressRows(std::string_view keyword, sys::TextWriter& out) {
  return writeRows<rows::Ip6>(keyword, shm->ip6Address, ip6Entries(*shm), out);
}

bool writeManagementRows(std::string_view keyword, sys::TextWriter& out) {
  return writeRows<rows::Management>(keyword, shm->managementAddress, managementEntries(*shm), out);
}

bool writeRouteRows(std::string_view keyword, sys::TextWriter& out) {
  return writeList<rows::Route>(keyword, shm->routes.slot, shm->routes.head, out);
}

bool writeRoute6Rows(std::string_view keyword, sys::TextWriter& out) {
  return writeList<rows::Route6>(keyword, shm->routes6.slot, shm->routes6.head6, out);
}

// A failure before them is none of theirs.
bool writeRuleRows(std::string_view keyword, sys::TextWriter& out) {
  if (!out.good()) return true;
  RuleHeads heads = {LineHead(keyword), LineHead(kRuleKeyword6), LineHead(kRuleKeywordAny)};
  int last = ruleEntries(*shm) - 1;
  for (int i = 0; i < last && out.good(); ++i) {
    const FilterRule& rule = shm->filterTable.rule[i];
    writeRule({out, headOf(rule, heads)}, rule);
  }
  return out.good();
}

}  // namespace kestrove
