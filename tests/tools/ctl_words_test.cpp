// SPDX-License-Identifier: Apache-2.0
// The words of kestrovectl: usage, limits, near misses, switches, and rules that make no sense.
#include <gmock/gmock.h>
#include <string.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class CtlWordsTest : public StoreTest {};

TEST(CtlUsage, NamesTheWholeCommand) {
  EXPECT_THAT(ctl("rule add --help").out, HasSubstr("Usage: kestrovectl rule add [OPTIONS] POSITION\n"));
  EXPECT_THAT(ctl("status --help").out, HasSubstr("Usage: kestrovectl status [OPTIONS]\n"));
  EXPECT_THAT(ctl("--help").out, HasSubstr("Usage: kestrovectl [OPTIONS] [SUBCOMMAND]\n"));
  Ran ran = ctl("rule add");
  EXPECT_EQ(2, ran.status);
  EXPECT_EQ("kestrovectl: POSITION is required\nUsage: kestrovectl rule add [OPTIONS] POSITION\n", ran.err);
}

TEST(CtlUsage, HelpSaysWhatEachValueTakes) {
  const std::string help = ctl("rule add --help").out;
  EXPECT_THAT(help, AllOf(HasSubstr("POSITION NUMBER|last REQUIRED\n"), HasSubstr("--kbps 0..2147483 kbit/s "),
                          HasSubstr("--target accelerate|bridge|drop\n"), HasSubstr("--from ADDRESS[/LENGTH] ")));
  EXPECT_THAT(ctl("dhcp --help").out, HasSubstr("--timeout 1..3600 seconds=30\n"));
}

// The line's other words only ever add commands to the parser.
TEST_F(CtlWordsTest, AValueMayBeTheNameOfACommand) {
  EXPECT_EQ(0, ctl("set sysName rule").status);
  EXPECT_THAT(ctl("--user load show sysName").out, HasSubstr("rule"));
  EXPECT_EQ("kestrovectl: rule: one word too many\nUsage: kestrovectl status [OPTIONS]\n", ctl("status rule").err);
  EXPECT_THAT(ctl("colour rule list").err, HasSubstr("colour: one word too many"));
}

TEST(CtlUsage, HelpListsEveryExitCode) {
  const std::string help = ctl("--help").out;
  for (const char* code : {"0  done", "1  refused", "2  wrong usage", "3  there is no store", "4  something was found",
                           "5  a file, a program or standard output", "6  another process held", "7  not permitted",
                           "8  applied, but not saved", "9  partly applied", "10  not confirmed in time"}) {
    EXPECT_THAT(help, HasSubstr(std::string("  ") + code));
  }
}

TEST(CtlUsage, NearMissesAreSuggested) {
  struct Row {
    const char* command;
    const char* said;
  };
  for (const Row& row : {Row{"stauts", "stauts: no such command; did you mean status?"},
                         {"rules list", "rules: no such command; did you mean rule?"},
                         {"rule lsit", "lsit: no such command of kestrovectl rule; did you mean list?"},
                         {"frobnicate", "frobnicate: no such command\n"},
                         {"rule add 0 --protoo tcp", "--protoo: no such option; did you mean --proto?"},
                         {"status --jsno", "--jsno: no such option; did you mean --json?"},
                         {"status now", "now: one word too many\n"}}) {
    Ran ran = ctl(row.command);
    EXPECT_EQ(2, ran.status) << row.command;
    EXPECT_THAT(ran.err, HasSubstr(row.said)) << row.command;
  }
}

TEST_F(CtlWordsTest, NearMissesOfItemsSectionsAndUsers) {
  EXPECT_THAT(ctl("show wanlinkrate").err, HasSubstr("no such item (did you mean wanLinkRate?)"));
  EXPECT_THAT(ctl("set lanMaximumTransferUnits 5").err, HasSubstr("did you mean lanMaximumTransferUnit?"));
  EXPECT_THAT(ctl("show colour").err, HasSubstr("no such item (kestrovectl show lists them)"));
  EXPECT_THAT(ctl("dump rule").err, HasSubstr("no such section; did you mean rules?"));
  EXPECT_THAT(ctl("--json dump evnts").json()["error"]["message"], HasSubstr("did you mean events?"));
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  Ran ran = ctl("user remove alcie");
  EXPECT_EQ(1, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("alcie: No such user exists in the system; did you mean alice?"));
}

TEST_F(CtlWordsTest, LimitsAreNumbers) {
  shm->config.minRate = 256000;
  shm->config.minMtu = 128;
  EXPECT_THAT(
      ctl("set wanLinkRate 5").err,
      HasSubstr("wanLinkRate takes 256000..2147483647 bit/s: The given value does not fall in the allowed range"));
  EXPECT_THAT(ctl("set lanLinkRate 5").err, HasSubstr("lanLinkRate takes 10000..100000000 bit/s: "));
  EXPECT_THAT(ctl("set lanMaximumTransferUnit fast").err,
              HasSubstr("fast: lanMaximumTransferUnit takes 128..1500 bytes"));
  EXPECT_EQ("256000..2147483647", ctl("--json show wanLinkRate").json()[0]["accepts"]);
}

TEST_F(CtlWordsTest, PositionsOfRulesAreNumbers) {
  EXPECT_THAT(ctl("rule delete 99").err, HasSubstr("rule 99: there is only rule 0\n"));
  ASSERT_EQ(0, ctl("rule add 0 --proto tcp").status);
  ASSERT_EQ(0, ctl("rule add 0 --proto udp").status);
  for (const char* command :
       {"rule delete 99", "rule change 99 --kbps 5", "rule add 99 --proto tcp", "rule move 99 0", "rule move 0 99"}) {
    Ran ran = ctl(command);
    EXPECT_EQ(1, ran.status) << command;
    EXPECT_EQ("kestrovectl: rule 99: there are rules 0 to 2\n", ran.err) << command;
    EXPECT_EQ(3, ctl(std::string("--json ") + command).json()["error"]["code"]) << command;
  }
  EXPECT_THAT(ctl("rule delete 2").err, HasSubstr("rule 2, the default rule, stays where it is: Object is read-only"));
}

TEST_F(CtlWordsTest, NoFailureReadsAsASuccess) {
  for (const char* command :
       {"route remove 172.20.0.0/16", "route6 remove fd00:77::/32", "address remove 10.1.2.3",
        "address remove --br0 fd00::1", "user remove nobody", "rule delete 0", "rule move 0 0", "set minRate 5",
        "address add 300.1.2.3", "mode single 1 0", "state load", "route add 1.2.3.4/33 10.0.0.1"}) {
    Ran ran = ctl(command);
    EXPECT_NE(0, ran.status) << command;
    EXPECT_THAT(ran.err, Not(HasSubstr("Normal successful completion"))) << command;
    EXPECT_THAT(ran.err, StartsWith("kestrovectl: ")) << command;
  }
}

TEST_F(CtlWordsTest, SwitchesAreOnAndOff) {
  EXPECT_EQ("unset", ctl("--json show compression").json()[0]["value"]);
  ASSERT_EQ(0, ctl("set compression on").status);
  EXPECT_EQ("on", ctl("--json dump config").json()["config"]["compression"]);
  EXPECT_EQ("unset", ctl("--json dump config").json()["config"]["webCacheOperState"]);
  shm->config.compression = 77;
  EXPECT_EQ("invalid", ctl("--json show compression").json()[0]["value"]);
  for (const char* wrong : {"1", "true", "ON", ""}) {
    Ran ran = ctl(std::string("set compression '") + wrong + "'");
    EXPECT_EQ(2, ran.status) << wrong;
    EXPECT_THAT(ran.err, HasSubstr("compression takes on, off")) << wrong;
  }
  ASSERT_EQ(0, ctl("rule add 0 --proto tcp --accel off").status);
  EXPECT_EQ("off", ctl("--json rule list").json()[0]["acceleration"]);
  EXPECT_EQ(2, ctl("rule change 0 --accel true").status);
}

TEST_F(CtlWordsTest, RulesThatMakeNoSenseAreUsageErrors) {
  struct Row {
    const char* options;
    const char* said;
  };
  for (const Row& row :
       {Row{"--from 10.0.0.0/8 --to fd00::/8", "--from and --to are of different address families"},
        {"--any --to 10.0.0.0/8", "--any matches both address families: it goes without --from and --to"},
        {"--proto tcp --dport 90 --dport-end 80", "ports 90 to 80 run backwards (--dport, --dport-end)"},
        {"--proto tcp --sport-end 80", "--sport-end goes with a first port (--sport)"},
        {"--to 10.0.0.0/8 --dport 80", "ports go with --proto tcp or udp"},
        {"--proto 1 --sport 80", "ports go with --proto tcp or udp"},
        {"", "this rule matches all traffic and no rule behind it is reached: say --match-all"},
        {"--any", "say --match-all"},
        {"--to 0.0.0.0/0 --kbps 512", "say --match-all"},
        {"--proto any --target drop", "say --match-all"},
        {"--proto 256", "256: no protocol (any, tcp, udp or 0 to 255)"},
        {"--to fd00::/129", "129: no prefix length (0 to 128)"},
        {"--proto tcp --status awake", "awake: no status (active, nis or invalid)"}}) {
    Ran ran = ctl(std::string("rule add 0 ") + row.options);
    EXPECT_EQ(2, ran.status) << row.options;
    EXPECT_THAT(ran.err, HasSubstr(row.said)) << row.options;
  }
  EXPECT_EQ(1, shm->filterTable.ruleCount);
  EXPECT_EQ(0, ctl("rule add 0 --match-all --target drop").status);
}

TEST_F(CtlWordsTest, PrefixesAreReadAlikeEverywhere) {
  for (const char* command : {"rule add 0 --to 10.1.2.3/33", "route add 10.1.2.3/33 10.0.0.1",
                              "route replace 10.0.0.0/8 10.1.2.3/33 10.0.0.1", "address add 10.1.2.3/33"}) {
    Ran ran = ctl(command);
    EXPECT_EQ(2, ran.status) << command;
    EXPECT_EQ("kestrovectl: 33: Invalid Ip Address Subnet Mask\n", ran.err) << command;
  }
  for (const char* command :
       {"rule add 0 --from fd00::/129", "route6 add fd00::/129 fd00::1", "address remove --br0 fd00::/129"}) {
    EXPECT_EQ("kestrovectl: 129: no prefix length (0 to 128)\n", ctl(command).err) << command;
  }
  for (const char* command : {"rule add 0 --to 10.1.2.3/", "route add 10.1.2.3/ 10.0.0.1", "address add 10.1.2.3/"}) {
    EXPECT_EQ("kestrovectl: 10.1.2.3/: no prefix length behind the slash\n", ctl(command).err) << command;
  }
  EXPECT_EQ(0, ctl("route add 10.1.0.0/255.255.0.0 192.168.10.3 --disabled").status);
  EXPECT_EQ("255.255.0.0", ctl("--json route list").json()[0]["mask"]);
}

TEST_F(CtlWordsTest, AnEmptyWordIsNoPosition) {
  ASSERT_EQ(0, ctl("rule add 0 --proto tcp").status);
  EXPECT_EQ(2, ctl("rule delete ''").status);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
}

TEST_F(CtlWordsTest, ChangesOfRulesAreHeldAgainstTheRule) {
  ASSERT_EQ(0, ctl("rule add 0 --from 10.0.0.0/8 --proto tcp --dport 80 --dport-end 90").status);
  struct Row {
    const char* options;
    const char* said;
  };
  for (const Row& row : {Row{"--to fd00::/8", "--to is of another address family than the rule's source"},
                         {"--proto any", "ports go with --proto tcp or udp"},
                         {"--dport 100 --dport-end 99", "ports 100 to 99 run backwards"},
                         {"--dport-end 70", "ports 80 to 70 run backwards"}}) {
    Ran ran = ctl(std::string("rule change 0 ") + row.options);
    EXPECT_EQ(2, ran.status) << row.options;
    EXPECT_THAT(ran.err, HasSubstr(row.said)) << row.options;
  }
  EXPECT_EQ(0, ctl("rule change 0 --from fd00::/8 --to fd00::/8").status);
  EXPECT_EQ(0, ctl("rule change 0 --proto any --dport 0").status);
}

TEST_F(CtlWordsTest, WhatTheStoreMadeOfARuleIsAnnounced) {
  shm->config.minRate = 256000;
  Json row = ctl("--json rule add 0 --proto tcp --kbps 5").json();
  EXPECT_EQ(256, row["kbit/s"]);
  EXPECT_EQ(Json::array({"rate raised from 5 to 256 kbit/s, the least there is (minRate)"}), row["notes"]);
  EXPECT_THAT(ctl("rule change 0 --kbps 6").out, HasSubstr("rate raised from 6 to 256 kbit/s"));
  EXPECT_THAT(ctl("rule change 0 --kbps 512").out, Not(HasSubstr("raised")));
  EXPECT_THAT(ctl("rule change 0 --proto udp").out, HasSubstr("acceleration off: UDP is never accelerated"));
}

TEST_F(CtlWordsTest, TheRulesOfNamesAndPasswordsAreTold) {
  constexpr char kName[] = "a name has 5 to 31 letters and digits";
  constexpr char kPassword[] = "a password has 8 to 31 characters, among them a small letter, a capital, a digit and";
  EXPECT_THAT(ctl("user add --help").out, AllOf(HasSubstr(kName), HasSubstr(kPassword)));
  EXPECT_THAT(ctl("user passwd --help").out,
              AllOf(HasSubstr(kPassword), HasSubstr("at least 4 characters must differ")));
  for (const char* name : {"ali", "ali-ce", "a23456789012345678901234567890123"}) {
    Ran ran = ctl(std::string("user add ") + name, "Passw0rd!\n");
    EXPECT_EQ(1, ran.status) << name;
    EXPECT_THAT(ran.err, HasSubstr(kName)) << name;
  }
  for (const char* password : {"short", "alllowercase1!", "NoDigitsHere!", "NoSpecial12"}) {
    Ran ran = ctl("user add alice", std::string(password) + "\n");
    EXPECT_EQ(1, ran.status) << password;
    EXPECT_THAT(ran.err, HasSubstr(kPassword)) << password;
    EXPECT_THAT(ran.err, Not(HasSubstr(password)));
  }
  EXPECT_EQ(2, ctl("user add alice", "Passw0\x01rd!\n").status);
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  Ran near = ctl("user passwd alice", "Passw0rd!\nPassw0rd?\n");
  EXPECT_EQ(1, near.status);
  EXPECT_THAT(near.err, HasSubstr("new password: at least 4 characters must differ from the old password"));
}

TEST_F(CtlWordsTest, AccountsOfTheMachineAreLeftAlone) {
  const std::string before = readFile("/etc/passwd");
  ASSERT_THAT(before, HasSubstr("\ngames:"));
  Ran added = ctl("user add games", "Passw0rd!\n");
  EXPECT_EQ(1, added.status);
  EXPECT_THAT(added.err, HasSubstr("games: the machine has an account of this name that is not in the store"));
  Ran removed = ctl("user remove games");
  EXPECT_EQ(1, removed.status);
  EXPECT_THAT(removed.err, HasSubstr("games: No such user exists in the system"));
  EXPECT_EQ(1, ctl("user passwd games", "Passw0rd!\nXyzuvw9#k\n").status);
  EXPECT_EQ(before, readFile("/etc/passwd"));
  EXPECT_EQ(0, shm->config.userCount);
}

TEST_F(CtlWordsTest, TheEngineIsNotRestartedOnItsOwnBehalf) {
  Ran ran = ctl("--source 1 engine restart");
  EXPECT_EQ(2, ran.status);
  EXPECT_THAT(ran.err, HasSubstr("--source 1 is the engine"));
}

}  // namespace
}  // namespace kestrove::testing
