// SPDX-License-Identifier: Apache-2.0
// Lines of saved scripts as commands: one by one, and from standard input.
#include <gmock/gmock.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class CtlScriptTest : public StoreTest {};

TEST_F(CtlScriptTest, ALineOfAScriptIsTheSameChangeAndSaysSo) {
  const Ran ran = ctl("--json set rateLimit WAN 2048");
  EXPECT_EQ(0, ran.status);
  EXPECT_EQ(2048000u, shm->config.wanLinkRate);
  EXPECT_EQ("wanLinkRate", ran.json()["item"]);
  EXPECT_EQ("rateLimit WAN 2048", ran.json()["script"]);
  EXPECT_EQ("INTERNET_RATE 2048000", ran.json()["file"]);
  EXPECT_EQ("rateLimit WAN 4096", ctl("--json set wanLinkRate 4096000").json()["script"]);
  EXPECT_FALSE(ctl("--json set wanLinkRate 4096001").json().contains("script")) << "no whole kbit/s";
  EXPECT_EQ(0, ctl("set INTERNET_RATE 1M").status);
  EXPECT_EQ(1000000u, shm->config.wanLinkRate);
}

TEST_F(CtlScriptTest, EveryLineThatAScriptHoldsIsTaken) {
  shm->config.productId = SHM_PRODUCT_DRELM;
  for (const char* line :
       {"set rateLimit LAN 100000",
        "set mtu WAN 1400",
        "ip add 192.168.7.1 255.255.255.0 -v",
        "ip add fd00::1 64 -v",
        "set pbr off",
        "set prb off",
        "set pbrAddress LAN 0.0.0.0",
        "set pbrMask WAN 255.255.0.0",
        "set sshInterface off",
        "set httpInterface off",
        "set compression on",
        "set logging on",
        "set accelerationMode variable",
        "set accelerationMode ",
        "set interfaceMode single 0 0",
        "set interfaceMode double",
        "set linkSetting LAN 100baseTx-FD",
        "route add 10.1.0.0 255.255.0.0 192.168.7.254 -n",
        "route6 add fd01:: 32 fd00::9 -n",
        "rule add 1 -ipVersion 4 -sa 10.1.0.0/255.255.0.0 -proto TCP -srcPort 5 -p 3 -bw 512  -noAccel "}) {
    const Ran ran = ctl(line);
    EXPECT_EQ(0, ran.status) << line << ": " << ran.err;
  }
  EXPECT_EQ(100u, shm->config.lanLinkSetting);
  EXPECT_EQ(2, shm->managementAddressCount);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
  EXPECT_EQ(5, shm->filterTable.rule[0].srcPort) << "rule 1 of a script is the first";
}

TEST_F(CtlScriptTest, LinesComeFromStandardInputWithoutPrompts) {
  const std::string lines =
      "# a remark\n\nset rateLimit WAN 2048\n  set   mtu WAN 1400  \nshow lanMaximumTransferUnit\n";
  for (const char* program : {"", "-"}) {
    shm->config.wanLinkRate = 0;
    const Ran ran = ctl(program, lines);
    EXPECT_EQ(0, ran.status) << ran.err;
    EXPECT_EQ(2048000u, shm->config.wanLinkRate);
    EXPECT_EQ(1400u, shm->config.wanMaximumTransferUnit);
    EXPECT_THAT(ran.out, AllOf(HasSubstr("lanMaximumTransferUnit"), Not(HasSubstr(">"))));
    EXPECT_THAT(ran.err, IsEmpty());
  }
}

TEST_F(CtlScriptTest, AWrongLineIsNamedAndTheOthersRun) {
  const Ran ran = ctl("-", "set mtu WAN 1400\nset mtu WAN fast\nfrobnicate\nset mtu LAN 1300\n");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, AllOf(HasSubstr("kestrovectl: -:2: fast: wanMaximumTransferUnit takes 576..1500 bytes"),
                             HasSubstr("kestrovectl: -:3: frobnicate: no such command")));
  EXPECT_EQ(1400u, shm->config.wanMaximumTransferUnit);
  EXPECT_EQ(1300u, shm->config.lanMaximumTransferUnit);
}

TEST_F(CtlScriptTest, OptionsHoldForTheirLineAlone) {
  const Ran ran = ctl("-", "--json set mtu WAN 1400\nset mtu LAN 1300\n");
  EXPECT_THAT(ran.out, AllOf(HasSubstr("\"item\": \"wanMaximumTransferUnit\""), Not(HasSubstr("\"item\": \"lan"))));
}

TEST_F(CtlScriptTest, AScriptLineThatMakesNoSenseShowsItsOwnUsage) {
  const Ran ran = ctl("rule add 1 -ipVersion 5");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err,
              AllOf(HasSubstr("5: -ipVersion takes 4|6|Any"), HasSubstr("Usage: kestrovectl rule add NUMBER")));
  EXPECT_EQ(2, ctl("set rateLimit").status);
  EXPECT_EQ(2, ctl("set rateLimit WAN").status);
  EXPECT_EQ(2, ctl("set rateLimit WAN fast").status);
  EXPECT_EQ(1, ctl("set rateLimit WAN 1").status) << "below minRate";
  EXPECT_EQ(2, ctl("set interfaceMode triple").status);
}

TEST_F(CtlScriptTest, AliasesRangesAndDefault) {
  ASSERT_EQ(0, ctl("rule add 0 --proto tcp --dport 80-90 --kbps 1M").status);
  EXPECT_EQ(90, shm->filterTable.rule[0].destPortEnd);
  EXPECT_EQ(1000000, shm->filterTable.rule[0].bandwidth);
  EXPECT_THAT(ctl("rule ls").out, HasSubstr("80-90"));
  EXPECT_EQ(0, ctl("rule del 0").status);
  ASSERT_EQ(0, ctl("route add default 192.168.7.254 --disabled").status);
  EXPECT_EQ(0, ctl("route rm 0.0.0.0/0").status);
  EXPECT_THAT(ctl("rule rm --help").out, HasSubstr("Usage: kestrovectl rule delete"));
}

TEST_F(CtlScriptTest, AQuestionMarkShowsWhatMayFollow) {
  EXPECT_THAT(ctl("'?'").out, AllOf(HasSubstr("  rule "), HasSubstr("  route6 ")));
  EXPECT_THAT(ctl("route '?'").out, AllOf(HasSubstr("  add "), HasSubstr("Add a route")));
  EXPECT_THAT(ctl("set linkSetting LAN '?' and whatever follows").out, HasSubstr("100baseTx-FD"));
  EXPECT_EQ(0, ctl("set rateLimit '?'").status);
}

TEST_F(CtlScriptTest, HelpTellsOfTheLinesOfScripts) {
  EXPECT_THAT(ctl("rule add --help").out, AllOf(HasSubstr("In a saved script"), HasSubstr("-srcPortEnd"),
                                                HasSubstr("numbered from 1"), HasSubstr("--kbps")));
  EXPECT_THAT(ctl("set --help").out, HasSubstr("set INTERNET_RATE 2048000"));
}

}  // namespace
}  // namespace kestrove::testing
