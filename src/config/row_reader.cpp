#include "config/row_reader.h"

#include <stdio.h>
#include <string.h>
#include <syslog.h>

#include "config/messages.h"
#include "config/values.h"
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
bool validStatus(int32_t status) { return status >= 1 && status <= 3; }

bool ipv6Supported() { return shm->config.ipv6Support == SHM_ON; }

int32_t negated(int32_t value) { return static_cast<int32_t>(0 - static_cast<uint32_t>(value)); }

// Dropping and bridging rules stand in the file with their priority negated.
void setTarget(FilterRule& rule, const char* word) {
  rule.target = strcmp(word, "DROP") == 0 ? 0 : strcmp(word, "BRIDGE") == 0 ? -1 : 1;
  if (rule.target != 1) rule.priority = negated(rule.priority);
}

// Just before the default rule. A damaged count leaves no such place, which the table refuses.
int lastPlace() {
  int count = getRuleCount();
  return count > 0 ? count - 1 : -1;
}

// The columns that the rules of all families have, then the insertion just before the default rule.
void finishRule(Columns& columns, FilterRule& rule) {
  rule.proto = static_cast<uint32_t>(columns.number());
  rule.srcPort = columns.number();
  rule.srcPortEnd = columns.number();
  rule.destPort = columns.number();
  rule.destPortEnd = columns.number();
  rule.priority = columns.number();
  const char* target = columns.word();
  rule.bandwidth = columns.number();
  rule.accel = static_cast<uint32_t>(columns.number());
  rule.ruleAction = static_cast<uint32_t>(columns.number());
  if (!columns.complete() || !validStatus(static_cast<int32_t>(rule.ruleAction))) return;
  setTarget(rule, target);
  addRule(lastPlace(), &rule, 0, 0);
}

}  // namespace

void readIp6Address(const ConfigLine& line) {
  Columns columns(line.value);
  Ip6Address entry = {};
  columns.address6(entry.address);
  entry.prefixLength = static_cast<uint32_t>(columns.number());
  if (columns.complete()) addIp6(&entry);
}

void readManagementAddress(const ConfigLine& line) {
  Columns columns(line.value);
  ManagementAddress entry = {};
  entry.ipVersion = static_cast<uint32_t>(columns.number());
  if (entry.ipVersion == SHM_FAMILY_IPV6) {
    columns.address6(entry.address6);
    entry.prefixLength6 = static_cast<uint32_t>(columns.number());
  } else {
    entry.address = columns.address();
    entry.mask = columns.address();
  }
  entry.interfaceKind = columns.number();
  if (columns.complete()) addManagementAddr(&entry);
}

void readRoute(const ConfigLine& line) {
  Columns columns(line.value);
  RouteEntry route = {};
  route.destination = columns.address();
  route.netmask = columns.address();
  route.gateway = columns.address();
  route.status = static_cast<uint32_t>(columns.number());
  if (columns.complete() && validStatus(static_cast<int32_t>(route.status))) addUserRoute(&route);
}

void readRoute6(const ConfigLine& line) {
  Columns columns(line.value);
  Route6Entry route = {};
  columns.address6(route.destination);
  route.prefixLength = static_cast<uint32_t>(columns.number());
  columns.address6(route.gateway);
  route.status = static_cast<uint32_t>(columns.number());
  if (columns.complete() && validStatus(static_cast<int32_t>(route.status))) addUserRoute6(&route);
}

void readRule(const ConfigLine& line) {
  Columns columns(line.value);
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rule.srcAddr = columns.address();
  rule.srcMask = columns.address();
  rule.dstAddr = columns.address();
  rule.dstMask = columns.address();
  finishRule(columns, rule);
}

// Both texts go to standard output, with the one newline between them and what follows: kept on purpose.
void readRule6(const ConfigLine& line) {
  if (!ipv6Supported()) return;
  printf("IPv6 Rule");
  Columns columns(line.value);
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV6;
  columns.address6(rule.srcAddr6);
  rule.srcPrefixLen6 = static_cast<uint32_t>(columns.number());
  if (columns.complete()) printf("sourceRoutingPrefix: %d\n", static_cast<int>(rule.srcPrefixLen6));
  columns.address6(rule.dstAddr6);
  rule.dstPrefixLen6 = static_cast<uint32_t>(columns.number());
  finishRule(columns, rule);
}

void readRuleAny(const ConfigLine& line) {
  Columns columns(line.value);
  FilterRule rule = {};
  rule.ipVersion = ipv6Supported() ? SHM_FAMILY_ANY : SHM_FAMILY_IPV4;
  finishRule(columns, rule);
}

// The length of the whole rest of the row is held against the name alone, so an ordinary row warns: kept on purpose.
// A name that fills its field has no terminator there, which addUser refuses.
void readUserAccount(const ConfigLine& line) {
  Columns columns(line.value);
  size_t length = strlen(line.value);
  UserAccount account = {};
  const char* name = columns.word();
  if (!name) return;
  size_t nameLength = strlen(name);
  if (length > nameLength) warnTruncated(line, nameLength);
  memcpy(account.username, name, nameLength < sizeof account.username ? nameLength : sizeof account.username);
  account.superUser = storedSwitch(columns.number());
  account.lastLoginSeconds = columns.number();
  account.lastPasswdChange = columns.number();
  if (columns.complete()) addUser(&account, nullptr);
}

}  // namespace kestrove
