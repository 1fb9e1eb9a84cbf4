// SPDX-License-Identifier: Apache-2.0
// What a configuration file says before the store reads it, and that its keywords are those of the reader.
#include "tools/common/config_lint.h"

#include <gmock/gmock.h>

#include "config/keywords.h"
#include "kestrove/kestrove.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::IsEmpty;

tools::ConfigForm formOf(Kind kind) {
  switch (kind) {
    case Kind::kNumber: return tools::ConfigForm::kNumber;
    case Kind::kSwitch: return tools::ConfigForm::kSwitch;
    case Kind::kText: return tools::ConfigForm::kText;
    case Kind::kAddress: return tools::ConfigForm::kAddress;
    case Kind::kRow: return tools::ConfigForm::kRow;
  }
  return {};
}

TEST(ConfigLint, ItsKeywordsAreTheReaders) {
  const auto own = tools::configKeywords();
  const auto readers = keywords();
  ASSERT_EQ(readers.size(), own.size());
  for (size_t i = 0; i < own.size(); ++i) {
    EXPECT_EQ(readers[i].name, own[i].name);
    EXPECT_EQ(formOf(readers[i].kind), own[i].form) << own[i].name;
    EXPECT_EQ(readers[i].limit, own[i].limit) << own[i].name;
    EXPECT_EQ(i < writtenKeywords().size(), own[i].saved) << own[i].name;
  }
}

std::string inspected(const std::string& text) {
  writeFile("/tmp/inspected.conf", text);
  return tools::faultText(tools::inspectConfig("/tmp/inspected.conf"));
}

TEST(ConfigLint, SoundLines) {
  for (const char* line : {"",
                           "# anything at all",
                           "   ",
                           "LAN_MTU 1400",
                           "  LAN_MTU\t1400 ",
                           "LAN_MTU -5",
                           "SSHD 0",
                           "SSHD 1",
                           "SSHD 2",
                           "LAN_NAME eth0",
                           "LAN_ADDR 10.1.2.3",
                           "DNS_ADDR",
                           "SYS_NAME",
                           "SYS_NAME two words",
                           "LAN_CC",
                           "DDUP LZ,DDUP",
                           "MANAGEMENT_ADDR 4 10.1.2.3 255.255.255.0 4",
                           "MANAGEMENT_ADDR 6 fd00::1 64 4",
                           "MANAGEMENT_ADDR_6 fd00::1 64",
                           "ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 2 and more",
                           "ROUTE6 fd00:: 32 fd00::3 3",
                           "SELEC_ACCEL 10.1.0.0 255.255.0.0 0.0.0.0 0.0.0.0 6 0 0 0 0 5 NONE 20000 1 3",
                           "SELEC_ACCEL_V6 2001:db8:: 32 :: 0 6 0 0 80 80 -5 DROP 20000 1 3",
                           "SELEC_ACCEL_ANY 17 0 0 53 53 5 NONE 1 1 3",
                           "USER_ACCOUNT alice 1 0 0",
                           "PRODUCT_ID 5"}) {
    EXPECT_EQ("", inspected(std::string(line) + "\n")) << line;
    EXPECT_EQ("", inspected(line)) << line << ", the last one";
  }
}

TEST(ConfigLint, LinesThatAreRefusedOrCut) {
  struct Row {
    std::string line;
    const char* fault;
  };
  for (const Row& row :
       {Row{"colour red", "line 1: unknown keyword colour"},
        {"LAN_MTU", "line 1: LAN_MTU: no number: "},
        {"LAN_MTU fast", "line 1: LAN_MTU: no number: fast"},
        {"LAN_MTU 1400x", "line 1: LAN_MTU: no number: 1400x"},
        {"LAN_RATE 99999999999", "line 1: LAN_RATE: too large a number: 99999999999"},
        {"LAN_RATE 2147483648", "line 1: LAN_RATE: too large a number: 2147483648"},
        {"SSHD on", "line 1: SSHD: no switch (0 or 1): on"},
        {"LAN_NAME abcdefghijklmno", "line 1: LAN_NAME: cut to 14 characters"},
        {"LAN_ADDR 10.1.2", "line 1: LAN_ADDR: no address: 10.1.2"},
        {"LAN_ADDR", "line 1: LAN_ADDR: no address: "},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.3", "line 1: ROUTE: a column is missing"},
        {"ROUTE 172.20.0.0 255.0.255.0 192.168.10.3 2", "line 1: ROUTE: no netmask: 255.0.255.0"},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 4", "line 1: ROUTE: no status (1 to 3): 4"},
        {"ROUTE6 fd00::g 32 fd00::3 3", "line 1: ROUTE6: no IPv6 address: fd00::g"},
        {"MANAGEMENT_ADDR 6 10.1.2.3 64 4", "line 1: MANAGEMENT_ADDR: no IPv6 address: 10.1.2.3"},
        {"USER_ACCOUNT bob 1 0 0", "line 1: USER_ACCOUNT: no user name (5 to 31 letters and digits): bob"},
        {"SYS_NAME " + std::string(600, 'x'), "line 1: SYS_NAME: cut to 510 characters"},
        {std::string("LAN_MTU 14\0"
                     "00",
                     13),
         "line 1: LAN_MTU: cut to 510 characters"},
        {"\x1b[2J", "line 1: unknown keyword \\x1b[2J"}}) {
    EXPECT_EQ(row.fault, inspected(row.line + "\n")) << row.line;
  }
}

TEST(ConfigLint, TablesTakeSoManyRows) {
  std::string users;
  for (int i = 0; i < 5; ++i) users += "USER_ACCOUNT user" + std::to_string(i) + " 1 0 0\n";
  EXPECT_EQ("", inspected(users));
  EXPECT_EQ("line 6: USER_ACCOUNT: its table takes 5 rows", inspected(users + "USER_ACCOUNT user5 1 0 0\n"));
}

TEST(ConfigLint, ManyFaultsAreCounted) {
  EXPECT_EQ("line 1: unknown keyword a; line 2: unknown keyword b; line 3: unknown keyword c; and 2 more",
            inspected("a\nb\nc\nd\ne\n"));
  writeFile("/tmp/inspected.conf", "a\nLAN_MTU 1400\nLAN_MTU x\n");
  EXPECT_EQ(2, tools::inspectConfig("/tmp/inspected.conf").known);
  EXPECT_EQ(ENOENT, tools::inspectConfig("/tmp/none.conf").error);
  EXPECT_EQ(EISDIR, tools::inspectConfig("/tmp").error);
}

class ConfigLintTest : public StoreTest {};

TEST_F(ConfigLintTest, WhatTheWriterWritesIsSound) {
  shm->config.compression = 3;
  shm->config.wanLinkRate = 2048000;
  ManagementAddress address = {4, 0, 0x0100000A, 0x00FFFFFF, {}, 0, 4};
  shm->managementAddress[0] = address;
  address.ipVersion = 6;
  shm->managementAddress[1] = address;
  shm->managementAddressCount = 2;
  shm_errno = SHM_OK;
  ASSERT_EQ(0, save_shared_memory());
  const tools::ConfigReport report = tools::inspectConfig("/etc/config/kestrove.conf");
  EXPECT_EQ("", tools::faultText(report));
  EXPECT_LT(20, report.known);
}

}  // namespace
}  // namespace kestrove::testing
