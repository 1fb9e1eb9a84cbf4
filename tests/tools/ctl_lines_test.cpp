// SPDX-License-Identifier: Apache-2.0
// The lines of settings, as history and diff show them, are commands: what they make is the store that they are of.
#include <gmock/gmock.h>

#include "tests/support/random_store.h"
#include "tests/tools/programs.h"
#include "tests/tools/random_script.h"
#include "tools/ctl/history/recording.h"
#include "tools/ctl/script/run_line.h"
#include "tools/ctl/settings/lines.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kPassword[] = "Passw0rd!\n";

// Every form, and each option of a rule with a value that only this option can make.
constexpr const char* kForms[] = {"set lanLinkRate 2048000",
                                  "set compression on",
                                  "set lanGateway 192.168.10.254",
                                  "set sysName \"Berlin two\"",
                                  "mode double 10 20",
                                  "mode pbr off",
                                  "interface name lan eth7",
                                  "interface name wan eth8",
                                  "interface name management eth9",
                                  "interface name router eth6",
                                  "user add alice --admin",
                                  "user add bobby",
                                  "user add carol --rights 3",
                                  "address add fd00::1/64 --br0",
                                  "address add 192.168.7.1/24 --interface lan",
                                  "address add fd00::2/64 --interface bridge",
                                  "address add 10.0.0.1/255.0.255.0 --interface 2 --family 5 --as-is",
                                  "route add 10.2.0.0/16 192.168.10.3 --disabled",
                                  "route add 10.1.0.0/16 192.168.10.3",
                                  "route6 add fd11::/16 fd00::9 --disabled",
                                  "route6 add fd10::/16 fd00::9",
                                  "rule add last --any --match-all --kbps 10",
                                  "rule add last --family 77 --from 10.0.0.0/8 --kbps 10 --as-is",
                                  "rule add last --from 10.0.0.0/8 --to 11.0.0.0/8 --kbps 10",
                                  "rule add last --from fd00::/16 --kbps 10",
                                  "rule add last --to fd00::/16 --kbps 10",
                                  "rule add last --proto tcp --sport 80 --sport-end 90 --dport 7 --kbps 10",
                                  "rule add last --proto tcp --sport 90 --sport-end 80 --kbps 10 --as-is",
                                  "rule add last --proto 47 --dport 80 --kbps 10 --as-is",
                                  "rule add last --proto 1000 --kbps 10 --as-is",
                                  "rule add last --proto udp --kbps 10 --accel off",
                                  "rule add last --proto tcp --priority -3 --bps 10001 --target drop --status nis"};

class CtlLinesTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->operationalState = SHM_STATE_CONFIGURATION;
    shm->config.minRate = 10000;
    shm->config.ipv6Support = SHM_ON;
  }
  // The settings that the forms name, in their order.
  static std::vector<std::string> made() {
    std::vector<std::string> texts;
    for (const ctl::SettingLine& line : ctl::settingLines(*shm)) {
      const bool named =
          line.section != "items" || std::find(std::begin(kForms), std::end(kForms), line.text) != std::end(kForms);
      if (named) texts.push_back(line.text);
    }
    return texts;
  }
  static bool reads(const std::string& line) { return line.starts_with("user add"); }
  static std::string allLines() {
    std::string lines;
    for (const std::string line : kForms) lines += line + "\n" + (reads(line) ? kPassword : "");
    return lines;
  }
  static std::vector<std::string> forms() { return {std::begin(kForms), std::end(kForms)}; }
};

TEST_F(CtlLinesTest, EachFormIsACommand) {
  for (const std::string line : kForms) {
    const Ran ran = ctl(line, reads(line) ? kPassword : "");
    EXPECT_EQ(0, ran.status) << line << ": " << ran.err;
  }
  EXPECT_EQ(forms(), made());
}

TEST_F(CtlLinesTest, AllFormsComeFromStandardInput) {
  const Ran ran = ctl("-", allLines());
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_EQ(forms(), made());
}

TEST_F(CtlLinesTest, AllFormsAreTakenByTheShell) {
  const Ran ran = ctl("shell", allLines());
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_EQ(forms(), made());
}

TEST_F(CtlLinesTest, AScriptTakesAllButTheUsers) {
  std::string lines;
  for (const std::string line : kForms) lines += reads(line) ? "" : line + "\n";
  const Ran ran = ctl("--json apply -", lines);
  EXPECT_EQ(8, ran.status) << "Configuration Mode saves nothing: " << ran.err;
  std::vector<std::string> wanted = forms();
  std::erase_if(wanted, reads);
  EXPECT_EQ(wanted, made());
  EXPECT_EQ(false, ctl("--json apply -", lines).json()["changed"]);
  EXPECT_EQ(false, ctl("--json apply --replace -", lines).json()["changed"]);
}

TEST_F(CtlLinesTest, ModesThatNobodySetsAreCommandsToo) {
  shm->operationalState = SHM_STATE_OPERATIONAL;
  ASSERT_EQ(0, shm->config.singleInterfaceMode);
  EXPECT_EQ(0, ctl("mode unset 10 20").status);
  EXPECT_EQ(10u, shm->config.lanVlanId);
  EXPECT_EQ(0, ctl("mode other 3 11 21").status);
  EXPECT_EQ(3, shm->config.singleInterfaceMode);
  EXPECT_EQ(0, ctl("mode double 12 22").status);
  EXPECT_EQ(22u, shm->config.wanVlanId);
  EXPECT_EQ(SHM_OFF, shm->config.singleInterfaceMode);
  const Ran refused = ctl("mode unset 10 20");
  EXPECT_EQ(1, refused.status);
  EXPECT_THAT(refused.err, HasSubstr("a mode is set, and none unsets it"));
  EXPECT_EQ(12u, shm->config.lanVlanId);
}

TEST_F(CtlLinesTest, ANameOfAnInterfaceIsStoredAndSaidToBeUnsaved) {
  shm->operationalState = SHM_STATE_OPERATIONAL;
  const Json named = ctl("--json interface name wan eth8").json();
  EXPECT_EQ("eth8", named["name"]);
  EXPECT_EQ("the next save of anything writes it", named["reason"]);
  EXPECT_STREQ("eth8", shm->config.wanInterfaceName);
  EXPECT_FALSE(ctl("--json interface name wan eth8").json().contains("saved")) << "nothing changed";
  EXPECT_THAT(ctl("interface name wan a234567890123456").err, HasSubstr("15 characters at most"));
  EXPECT_EQ(2, ctl("interface name base eth8").status);
}

TEST_F(CtlLinesTest, WhatMakesNoSenseIsAskedForByName) {
  struct Row {
    const char* line;
    const char* said;
  };
  for (const Row& row : {Row{"rule add last --proto tcp --accel 7", "7: no switch (on or off)"},
                         {"rule add last --proto tcp --target 9", "9: no target (accelerate, bridge or drop)"},
                         {"rule add last --proto tcp --kbps 5 --bps 5", "--kbps and --bps are one rate"},
                         {"rule add last --any --family 6", "it goes without --family"},
                         {"rule add first --proto tcp", "first: no position (a number from 0, or last)"},
                         {"address add 10.0.0.1 --interface 2", "2: no interface (lan, wan"},
                         {"address add 10.0.0.1 --family 5", "it goes with --as-is"},
                         {"mode single 5000 6", "5000: no VLAN id (1 to 4094)"},
                         {"mode double 5", "the VLAN id of the WAN side is missing"},
                         {"user add alice --admin --rights 1", "--admin and --rights exclude each other"}}) {
    const Ran ran = ctl(row.line, kPassword);
    EXPECT_EQ(2, ran.status) << row.line;
    EXPECT_THAT(ran.err, HasSubstr(row.said)) << row.line;
  }
}

TEST_F(CtlLinesTest, TheLastPlaceIsInFrontOfTheDefaultRule) {
  ASSERT_EQ(0, ctl("rule add last --proto tcp").status);
  const Json second = ctl("--json rule add last --proto udp").json();
  EXPECT_EQ(1, second["position"]);
  EXPECT_EQ(uint32_t{SHM_PROTO_UDP}, shm->filterTable.rule[1].proto);
  EXPECT_THAT(ctl("rule add '?'").out, HasSubstr("last"));
}

std::vector<std::string> textsOf(const ShmData& store, const std::string& section) {
  std::vector<std::string> texts;
  for (const ctl::SettingLine& line : ctl::settingLines(store)) {
    if (line.section == section) texts.push_back(line.text);
  }
  return texts;
}

TEST_F(CtlLinesTest, TablesDrawnByLotComeBackLineByLine) {
  const ctl::PartOfAnother unrecorded;
  ctl::Session session;
  session.out = fopen("/dev/null", "we");
  for (unsigned seed = 0; seed < scriptRounds(4); ++seed) {
    SCOPED_TRACE(seed);
    drawStore(seed);
    const ctl::Image drawn(*shm);
    makeFreshStore();
    shm->operationalState = SHM_STATE_CONFIGURATION;
    for (const char* section : {"addresses6", "addresses", "routes", "routes6", "rules"}) {
      for (const std::string& line : textsOf(*drawn, section)) EXPECT_EQ(0, ctl::runLine(session, line)) << line;
      EXPECT_EQ(textsOf(*drawn, section), textsOf(*shm, section));
    }
    if (HasFailure()) break;
  }
  fclose(session.out);
}

}  // namespace
}  // namespace kestrove::testing
