// SPDX-License-Identifier: Apache-2.0
#include "config/row_reader.h"

#include <stdio.h>
#include <string.h>

#include "config/messages.h"
#include "config/row_columns.h"
#include "kestrove/codes.h"
#include "kestrove/ipv6.h"
#include "kestrove/management.h"
#include "kestrove/routes.h"
#include "kestrove/rules.h"
#include "kestrove/segment.h"
#include "kestrove/users.h"

namespace kestrove {
namespace {

// Routes and rules have the same three states; a row with another one is dropped.
bool validStatus(uint32_t status) { return status >= 1 && status <= 3; }

bool ipv6Supported() { return shm->config.ipv6Support == SHM_ON; }

// Just before the default rule. A damaged count leaves no such place, which the table refuses.
int lastPlace() {
  int count = getRuleCount();
  return count > 0 ? count - 1 : -1;
}

// The columns that every rule has, then the insertion just before the default rule.
void finishRule(Columns& columns, FilterRule& rule) {
  rows::AnyRule::read(columns, rule);
  if (columns.complete() && validStatus(rule.ruleAction)) addRule(lastPlace(), &rule, 0, 0);
}

}  // namespace

void readIp6Address(const ConfigLine& line) {
  Columns columns(line.value);
  Ip6Address entry = {};
  rows::Ip6::read(columns, entry);
  if (columns.complete()) addIp6(&entry);
}

void readManagementAddress(const ConfigLine& line) {
  Columns columns(line.value);
  ManagementAddress entry = {};
  rows::Management::read(columns, entry);
  if (columns.complete()) addManagementAddr(&entry);
}

void readRoute(const ConfigLine& line) {
  Columns columns(line.value);
  RouteEntry route = {};
  rows::Route::read(columns, route);
  if (columns.complete() && validStatus(route.status)) addUserRoute(&route);
}

void readRoute6(const ConfigLine& line) {
  Columns columns(line.value);
  Route6Entry route = {};
  rows::Route6::read(columns, route);
  if (columns.complete() && validStatus(route.status)) addUserRoute6(&route);
}

void readRule(const ConfigLine& line) {
  Columns columns(line.value);
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rows::RuleEnds::read(columns, rule);
  finishRule(columns, rule);
}

// Both texts go to standard output, with the one newline between them and what follows: kept on purpose.
void readRule6(const ConfigLine& line) {
  if (!ipv6Supported()) return;
  printf("IPv6 Rule");
  Columns columns(line.value);
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV6;
  rows::RuleSource6::read(columns, rule);
  if (columns.complete()) printf("sourceRoutingPrefix: %d\n", static_cast<int>(rule.srcPrefixLen6));
  rows::RuleDestination6::read(columns, rule);
  finishRule(columns, rule);
}

void readRuleAny(const ConfigLine& line) {
  Columns columns(line.value);
  FilterRule rule = {};
  rule.ipVersion = ipv6Supported() ? SHM_FAMILY_ANY : SHM_FAMILY_IPV4;
  finishRule(columns, rule);
}

// The length of the whole rest of the row is held against the name alone, which the columns leave there, so an ordinary
// row warns: kept on purpose. A name that fills its field is refused by addUser.
void readUserAccount(const ConfigLine& line) {
  size_t length = strlen(line.value);
  Columns columns(line.value);
  UserAccount account = {};
  rows::User::read(columns, account);
  size_t nameLength = strlen(line.value);
  if (length > nameLength) warnTruncated(line, nameLength);
  if (columns.complete()) addUser(&account, nullptr);
}

}  // namespace kestrove
