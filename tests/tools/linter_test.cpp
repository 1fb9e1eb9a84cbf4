// SPDX-License-Identifier: Apache-2.0
// What becomes of each line of a configuration file, and that reading it line by line leaves what reading it whole
// leaves.
#include "tools/ctl/lint/linter.h"

#include <gmock/gmock.h>
#include <string.h>

#include <random>

#include "tests/support/random_store.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kScratch[] = "/run/line";

class LinterTest : public StoreTest {
 protected:
  static void startAnew(uint32_t ipv6 = SHM_ON) {
    makeFreshStore();
    shm->config.ipv6Support = ipv6;
    manAddrEnt = {};
  }

  static std::vector<ctl::lint::Finding> findings(const std::string& text) {
    return ctl::lint::Linter(kScratch, true).run(text);
  }

  // "LINE:COLUMN KIND TEXT", on a new store.
  static std::vector<std::string> said(const std::string& text, uint32_t ipv6 = SHM_ON) {
    startAnew(ipv6);
    std::vector<std::string> lines;
    for (const ctl::lint::Finding& finding : findings(text)) {
      lines.push_back(std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " + finding.kind + " " +
                      finding.text);
    }
    return lines;
  }
};

TEST_F(LinterTest, LinesThatTheStoreTakesAsTheyStand) {
  for (const char* line : {"",
                           "# anything at all",
                           "   ",
                           "LAN_MTU 1400",
                           "  LAN_MTU\t1400 ",
                           "LAN_MTU -5",
                           "LAN_MTU +0005",
                           "SSHD 0",
                           "SSHD 1",
                           "SSHD 2",
                           "LAN_NAME abcdefghijklmn",
                           "LAN_NAME",
                           "SYS_NAME two words",
                           "LAN_ADDR 10.1.2.3",
                           "LAN_ADDR 0.0.0.0",
                           "MANAGEMENT_ADDR 4 10.1.2.3 255.255.255.0 4",
                           "MANAGEMENT_ADDR 6 FD00::1 64 4",
                           "MANAGEMENT_ADDR_6 fd00:0::1 64",
                           "ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 2",
                           "ROUTE6 fd00:: 32 fd00::3 3",
                           "SELEC_ACCEL 10.1.0.0 255.255.0.0 0.0.0.0 0.0.0.0 6 0 0 0 0 5 NONE 20000 1 3",
                           "SELEC_ACCEL_V6 2001:db8:: 32 :: 0 6 0 0 80 80 -5 DROP 20000 1 3",
                           "SELEC_ACCEL_ANY 6 0 0 53 53 -5 BRIDGE 20000 1 3",
                           "USER_ACCOUNT alice 1 0 0"}) {
    EXPECT_THAT(said(line), IsEmpty()) << line;
    EXPECT_THAT(said(std::string(line) + "\n\n"), IsEmpty()) << line;
  }
}

TEST_F(LinterTest, ValuesThatAreStoredAsOthersOrNotAtAll) {
  struct Row {
    std::string line;
    const char* said;
  };
  for (const Row& row :
       {Row{"colour red", "1:1 unknown unknown keyword \"colour\""},
        {"\tlan_mtu 5", "1:2 unknown unknown keyword \"lan_mtu\"; did you mean LAN_MTU?"},
        {"LAN_MTU", "1:8 changed no value: 0 is stored"},
        {"LAN_MTU fast", "1:9 cut \"fast\" is stored as 0"},
        {"LAN_MTU 1400 bytes", "1:9 cut \"1400 bytes\" is stored as 1400"},
        {"LAN_MTU 1400\r", "1:9 cut \"1400\\x0d\" is stored as 1400"},
        {"LAN_RATE 2147483648", "1:10 changed \"2147483648\" is stored as 2147483647"},
        {"LAN_RATE -99999999999999999999", "1:10 changed \"-99999999999999999999\" is stored as -2147483648"},
        {"SNMP_VERSION 258", "1:14 changed \"258\" is stored as 2"},
        {"SSHD on", "1:6 changed \"on\" is stored as off"},
        {"SSHD 7", "1:6 changed \"7\" is stored as neither on nor off"},
        {"SSHD", "1:5 changed no value: off is stored"},
        {"LAN_NAME abcdefghijklmno", "1:24 cut cut to 14 characters"},
        {"SYS_NAME seven\r", "1:15 control the control character \\x0d is stored"},
        {"LAN_ADDR 10.1.2", "1:10 dropped \"10.1.2\" is no address: nothing is stored"},
        {"LAN_ADDR", "1:9 dropped no value: nothing is stored"},
        {"SYS_NAME " + std::string(501, 'x') + "y", "1:511 cut not read: a line has 510 characters at most"},
        {std::string("LAN_MTU 14\0"
                     "00",
                     13),
         "1:11 cut a zero byte ends the line"},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.3", "1:1 dropped dropped: 3 of 4 columns"},
        {"ROUTE 172.20.0.0 255.0.255.0 192.168.10.3 2", "1:1 dropped dropped: Invalid Ip Address Subnet Mask"},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 4", "1:1 dropped dropped: \"4\" is none of 1, 2 and 3"},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 2x", "1:43 changed \"2x\" is stored as 2"},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.300 2", "1:30 changed \"192.168.10.300\" is stored as 0.0.0.0"},
        {"ROUTE 172.20.0.0 255.255.0.0 192.168.10.3 2 #", "1:45 cut not read: the row is complete before it"},
        {"ROUTE6 fd00:: 32 fd00::3 9", "1:1 dropped dropped: \"9\" is none of 1, 2 and 3"},
        {"ROUTE6 fd00::g 32 fd00::3 3", "1:8 changed \"fd00::g\" is stored as ::"},
        {"MANAGEMENT_ADDR 6 fd00::1 64", "1:1 dropped dropped: 3 of 4 columns"},
        {"USER_ACCOUNT bob 1 0 0", "1:1 dropped dropped: The given value does not fall in the allowed range"},
        {"USER_ACCOUNT alice 7 0 0", "1:20 changed \"7\" is stored as 2"},
        {"SELEC_ACCEL_ANY 6 0 0 53 53 5 FAST 20000 1 3", "1:31 changed \"FAST\" is stored as NONE"},
        {"SELEC_ACCEL_ANY 6 0 0 53 53 5 NONE 200 1 3", "1:36 changed \"200\" is stored as 10000"},
        {"SELEC_ACCEL_ANY 17 0 0 53 53 5 NONE 20000 1 3", "1:43 changed \"1\" is stored as 2"},
        {"SELEC_ACCEL_ANY 6 0 0 53 53 5 NONE 20000 1 4", "1:1 dropped dropped: \"4\" is none of 1, 2 and 3"}}) {
    EXPECT_THAT(said(row.line), ::testing::Contains(row.said)) << row.line;
  }
}

TEST_F(LinterTest, WithoutIpv6SupportItsRulesAreDropped) {
  EXPECT_THAT(said("SELEC_ACCEL_V6 :: 0 :: 0 6 0 0 80 80 -5 DROP 20000 1 3\n"
                   "SELEC_ACCEL_ANY 6 0 0 53 53 5 NONE 20000 1 3\n",
                   SHM_OFF),
              ElementsAre("1:1 dropped dropped: this appliance has no IPv6 support (ipv6Support)",
                          "2:1 changed stored as a rule for IPv4: this appliance has no IPv6 support (ipv6Support)"));
}

TEST_F(LinterTest, WhatIsSaidTwice) {
  EXPECT_THAT(said("LAN_MTU 1400\nLAN_MTU 1500\nLAN_MTU 1400\n"),
              ElementsAre("2:1 duplicate said in line 1 already: this line wins",
                          "3:1 duplicate said in line 2 already: this line wins"));
  EXPECT_THAT(said("LAN_ADDR 10.1.2.3\nLAN_ADDR here\n"),
              ElementsAre("2:10 dropped \"here\" is no address: nothing is stored"));
  EXPECT_THAT(said("ROUTE6 fd00:: 32 fd00::3 3\nROUTE6 FD00:0:: 32 fd00::4 3\n"),
              ElementsAre("2:1 duplicate dropped: it is there already"));
  EXPECT_THAT(said("USER_ACCOUNT alice 1 0 0\nUSER_ACCOUNT alice 0 0 0\n"),
              ElementsAre("2:1 duplicate the same as in line 1"));
  EXPECT_THAT(said("MANAGEMENT_ADDR 4 10.1.2.3 255.255.255.0 4\nBRIDGE_MASK 255.255.255.0\n"), IsEmpty());
}

TEST_F(LinterTest, TwoKeywordsOfOneFieldAreOne) {
  EXPECT_THAT(said("INTERNET_CONGESTION 1\nGLOBAL_CONGESTION_CONTROL 2\nINTERNET_CONGESTION 1\n"),
              ElementsAre("2:1 unsaved GLOBAL_CONGESTION_CONTROL is saved as INTERNET_CONGESTION",
                          "2:1 duplicate sets what INTERNET_CONGESTION in line 1 sets: this line wins",
                          "3:1 duplicate sets what GLOBAL_CONGESTION_CONTROL in line 2 sets: this line wins"));
}

TEST_F(LinterTest, TheBridgesAddressIsARowAsWell) {
  const auto lines =
      said("MANAGEMENT_ADDR 4 10.1.2.3 255.255.255.0 4\nBRIDGE_ADDR 10.1.2.9\nBRIDGE_MASK 255.255.255.0\n");
  EXPECT_THAT(lines,
              ElementsAre(HasSubstr("2:1 unsaved"),
                          "3:1 duplicate the management address that it completes is dropped: it is there already"));
}

TEST_F(LinterTest, MethodsThatChangeNothing) {
  EXPECT_THAT(said("DDUP LZP,LZ+DEDUP\n"),
              ElementsAre(HasSubstr("1:1 unsaved"), "1:6 dropped \"LZP\" changes nothing here",
                          "1:13 dropped \"DEDUP\" changes nothing here"));
  EXPECT_THAT(said("DDUP DISABLED\n"), ElementsAre(HasSubstr("unsaved")));
  EXPECT_THAT(said("DDUP NULL\n"), ElementsAre(HasSubstr("unsaved")));
  EXPECT_EQ(0u, shm->config.ddupOperState);
}

TEST_F(LinterTest, AFullTableTakesNoMore) {
  std::string users;
  for (int i = 0; i < 6; ++i) users += "USER_ACCOUNT user" + std::to_string(i) + " 1 0 0\n";
  EXPECT_THAT(said(users), ElementsAre("6:1 full dropped: its table is full"));
}

TEST_F(LinterTest, ManyFindingsEndIt) {
  std::string text;
  for (int i = 0; i < 5100; ++i) text += "SSHD on\n";
  startAnew();
  const auto all = findings(text);
  EXPECT_EQ(10002u, all.size());
  EXPECT_EQ(5002u, all.back().line);
  EXPECT_EQ("end", all.back().kind);
}

TEST_F(LinterTest, WhereSavesDoNotReplaceTheFileEveryKeywordBelongs) {
  EXPECT_THAT(ctl::lint::Linter(kScratch, false).run("MANAGEMENT_NAME eth2\n"), IsEmpty());
  EXPECT_THAT(said("MANAGEMENT_NAME eth2\n"),
              ElementsAre("1:1 unsaved MANAGEMENT_NAME is never saved: a save leaves it out"));
}

// Lines cut short, swapped, doubled, and with bytes changed.
std::string damaged(std::string text, unsigned seed) {
  std::mt19937 lot(seed);
  for (int i = 0; i < 20; ++i) {
    const size_t at = lot() % text.size();
    switch (lot() % 4) {
      case 0: text[at] = static_cast<char>(lot()); break;
      case 1: text.erase(at, lot() % 40); break;
      case 2: text.insert(at, text.substr(lot() % text.size(), lot() % 200)); break;
      default: text.insert(at, 1, "\n 09#."[lot() % 6]);
    }
  }
  return text;
}

TEST_F(LinterTest, LineByLineTheStoreIsWhatItIsReadWhole) {
  for (unsigned seed = 0; seed < 30; ++seed) {
    drawStore(seed);
    ASSERT_EQ(0, write_shared_memory());
    const std::string text = damaged(readFile("/etc/config/kestrove.conf"), seed);
    writeFile("/etc/config/damaged.conf", text);
    startAnew();
    ASSERT_EQ(0, load_shared_memory("/etc/config/damaged.conf"));
    const std::string whole(reinterpret_cast<const char*>(shm), SHM_SIZE);
    startAnew();
    findings(text);
    ASSERT_EQ(0, memcmp(whole.data(), shm, SHM_SIZE)) << "seed " << seed;
  }
}

TEST_F(LinterTest, WhatASaveWritesHasNoFindings) {
  startAnew();
  shm->config.compression = 3;
  shm->config.wanLinkRate = 2048000;
  strcpy(shm->config.sysName, "branch seven");
  ASSERT_EQ(0, write_shared_memory());
  EXPECT_THAT(said(readFile("/etc/config/kestrove.conf")), IsEmpty());
}

}  // namespace
}  // namespace kestrove::testing
