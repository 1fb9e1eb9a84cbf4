// SPDX-License-Identifier: Apache-2.0
#include "store/codes.h"

#include <gtest/gtest.h>

using namespace kestrove;

namespace {

struct Row {
  int code;
  const char* text;
};

template <size_t N>
void expectRows(const MessageTable& table, const Row (&rows)[N]) {
  EXPECT_EQ(static_cast<int>(N), table.count);
  for (const Row& row : rows) EXPECT_STREQ(row.text, shm_getMessage(&table, row.code)) << row.code;
  EXPECT_EQ(rows[N - 1].code, table.defaultCode);
  for (int outside : {-1, 3000, INT32_MIN, INT32_MAX}) {
    EXPECT_STREQ(rows[N - 1].text, shm_getMessage(&table, outside)) << outside;
  }
}

TEST(Codes, States) {
  expectRows(kOperationalStateNames, {{0, "Uninitialized"},
                                      {1, "Operational"},
                                      {2, "Disabled"},
                                      {3, "Unconfigured"},
                                      {4, "Configuration Mode"},
                                      {5, "Debug Mode"},
                                      {6, "Invalid Mode"}});
  EXPECT_STREQ("Invalid Mode", shm_getMessage(&kOperationalStateNames, 9));
}

TEST(Codes, Congestion) {
  expectRows(
      kCongestionNames,
      {{0, "Unconfigured"}, {1, "Global"}, {2, "Per-Connection"}, {3, "TCP"}, {4, "Error Tolerance"}, {5, "None"}});
  EXPECT_STREQ("None", shm_getMessage(&kCongestionNames, 6));
}

TEST(Codes, Compression) {
  expectRows(kCompressionNames, {{0, "NULL"},
                                 {1, "LZ"},
                                 {2, "LZP"},
                                 {4, "DDUP"},
                                 {5, "LZ+DDUP"},
                                 {6, "LZP+DDUP"},
                                 {8, "Extended Header"},
                                 {255, "Disabled"}});
  for (int unlisted : {3, 7, 9, 254, 256}) EXPECT_STREQ("Disabled", shm_getMessage(&kCompressionNames, unlisted));
}

TEST(Codes, Tasks) {
  expectRows(kTaskNames, {{0, "snmpd"},
                          {1, "httpd"},
                          {2, "statsd"},
                          {3, "sshd"},
                          {4, "kestrove"},
                          {5, "miscMonitor"},
                          {6, "monitor"},
                          {7, "No such task"}});
}

TEST(Codes, RowStates) {
  expectRows(kRowStatusNames,
             {{0, "* Undefined *"}, {1, "Invalid"}, {2, "NIS"}, {3, "Active"}, {4, "* No Such Value *"}});
}

}  // namespace
