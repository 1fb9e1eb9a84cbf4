// SPDX-License-Identifier: Apache-2.0
#include "net/dhcp/lease.h"

#include <string.h>

namespace kestrove {
namespace {

constexpr size_t kLineSize = 120;

struct KindRow {
  const char* word;
  uint32_t kind;
};
// In the order of asking: a line may hold several of the words.
constexpr KindRow kKinds[] = {{"IPADDR", 0},    {"NETMASK", 1},    {"GATEWAYS", 2},
                              {"DNSDOMAIN", 5}, {"DNSSERVERS", 4}, {"DHCPSID", 3}};
constexpr uint32_t kOtherKind = 6;

uint32_t kindOf(const char* line) {
  for (const KindRow& row : kKinds) {
    if (strstr(line, row.word)) return row.kind;
  }
  return kOtherKind;
}

// A line without a quote leaves the value of an earlier one.
void takeValue(const char* line, char (&value)[kLineSize]) {
  const char* quote = strchr(line, '\'');
  if (!quote) return;
  const char* text = quote + 1;
  size_t length = strcspn(text, "'\n");
  memcpy(value, text, length);
  value[length] = '\0';
}

}  // namespace

void readLease(FILE* file, DhcpCallback callback, uint32_t* kind) {
  char line[kLineSize];
  char value[kLineSize] = "";
  while (fgets(line, sizeof line, file)) {
    takeValue(line, value);
    *kind = kindOf(line);
    if (callback) callback(kind, value);
  }
}

}  // namespace kestrove
