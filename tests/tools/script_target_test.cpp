// SPDX-License-Identifier: Apache-2.0
// The store that a script leads to, made on a copy: nothing of it reaches the store of the test.
#include "tools/ctl/script/target.h"

#include <gmock/gmock.h>

#include "tests/support/memory_stream.h"
#include "tests/support/random_store.h"
#include "tests/support/store.h"
#include "tests/tools/random_script.h"
#include "tools/ctl/script/lost.h"
#include "tools/ctl/settings/copy.h"
#include "tools/ctl/settings/difference.h"

namespace kestrove::testing {
namespace {

using namespace ctl;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Script scriptIn(std::string text) {
  FILE* in = fmemopen(text.data(), text.size(), "r");
  Script script = text.empty() ? Script{.name = "script"} : scriptOf("script", in);
  if (in) fclose(in);
  return script;
}

class ScriptTargetTest : public StoreTest {
 protected:
  static Target merged(const Image& start, const std::string& text) {
    return targetOf(start, scriptIn(text), Joining::kMerge);
  }
  static Target replaced(const Image& start, const std::string& text) {
    return targetOf(start, scriptIn(text), Joining::kReplace);
  }
  static Image present() { return Image(*shm); }
  static std::vector<std::string> texts(const Image& image, const std::string& section) {
    std::vector<std::string> lines;
    for (const SettingLine& line : settingLines(*image)) {
      if (line.section == section) lines.push_back(line.text);
    }
    return lines;
  }
  static void expectSame(const Image& one, const Image& other) {
    EXPECT_EQ("", differenceText(compare(*one, *other), false));
  }
};

constexpr char kRuleX[] = "-ipVersion Any -proto TCP -b\n";
constexpr char kRuleY[] = "-ipVersion Any -proto UDP -b\n";

TEST_F(ScriptTargetTest, TheStoreItselfIsLeftAlone) {
  const Image before = present();
  const Target target = merged(before, "set rateLimit WAN 2048\nip add 10.0.0.1 255.0.0.0 -b\nrule add 1 -d\n");
  EXPECT_EQ(0, memcmp(&*before, shm, sizeof *shm));
  EXPECT_EQ(2048000u, target.store->config.wanLinkRate);
  EXPECT_EQ(1, target.store->managementAddressCount);
  EXPECT_EQ(2, target.store->filterTable.ruleCount);
  EXPECT_THAT(target.changes, ElementsAre(true, true, true));
}

TEST_F(ScriptTargetTest, MergingChangesWhatIsThereInItsPlace) {
  const Image first = merged(present(),
                             "ip add 10.0.0.1 255.0.0.0 -b\nip add 11.0.0.1 255.0.0.0 -b\n"
                             "route add 172.16.0.0 255.255.0.0 10.0.0.9\n")
                          .store;
  const Target second = merged(first, "ip add 10.0.0.1 255.255.0.0 -v\nroute add 172.16.0.0 255.255.0.0 10.0.0.8 -n\n");
  EXPECT_THAT(texts(second.store, "addresses"),
              ElementsAre("address add 10.0.0.1/16 --interface lan", "address add 11.0.0.1/8 --interface bridge"));
  EXPECT_THAT(texts(second.store, "routes"), ElementsAre("route add 172.16.0.0/16 10.0.0.8 --disabled"));
}

TEST_F(ScriptTargetTest, RulesOfTheScriptStandAtTheirNumbers) {
  const Image first = merged(present(), std::string("rule add 1 ") + kRuleY + "rule add 2 -d\n").store;
  const Image second = merged(first, std::string("rule add 1 ") + kRuleX + "rule add 2 " + kRuleY).store;
  EXPECT_THAT(texts(second, "rules"),
              ElementsAre(HasSubstr("--proto tcp"), HasSubstr("--proto udp"), HasSubstr("drop")));
}

TEST_F(ScriptTargetTest, EqualRulesAreCounted) {
  const std::string twice = std::string("rule add 1 ") + kRuleX + "rule add 2 " + kRuleX;
  const Image first = merged(present(), twice).store;
  EXPECT_EQ(3, first->filterTable.ruleCount);
  expectSame(first, merged(first, twice).store);
}

TEST_F(ScriptTargetTest, ReplacingTakesAwayWhatIsNotSaid) {
  const Image first = merged(present(),
                             "ip add 10.0.0.1 255.0.0.0 -b\nroute add 172.16.0.0 255.255.0.0 10.0.0.9\n"
                             "route6 add fd10:: 16 fd00::1\nrule add 1 -d\nset mtu WAN 1400\n"
                             "address add fd00::1/64 --br0\n")
                          .store;
  const Image second = replaced(first, std::string("rule add 1 ") + kRuleX).store;
  EXPECT_THAT(texts(second, "addresses"), IsEmpty());
  EXPECT_THAT(texts(second, "routes"), IsEmpty());
  EXPECT_THAT(texts(second, "routes6"), IsEmpty());
  EXPECT_THAT(texts(second, "rules"), ElementsAre(HasSubstr("--proto tcp")));
  EXPECT_EQ(1400u, second->config.wanMaximumTransferUnit) << "a single value stays";
  EXPECT_EQ(1, second->ip6Count) << "a table that saved scripts do not have stays";
  EXPECT_EQ(1, replaced(second, "address add fd00::2/64 --br0\n").store->ip6Count) << "unless it is named";
}

TEST_F(ScriptTargetTest, WhatTheStoreRefusesIsNamedByItsLine) {
  const Target target = merged(present(),
                               "set mtu WAN 1400\nset mtu WAN 9000\nip add 10.0.0.1 255.0.0.0 -b\n"
                               "ip add 10.0.0.2 255.0.0.0 -b\nrule add 5 -d\n"
                               "rule add 1 -ipVersion 4 -sa 10.0.0.0/255.0.255.0\n");
  ASSERT_EQ(4u, target.refused.size());
  EXPECT_EQ(2u, target.refused[0].line);
  EXPECT_THAT(target.refused[0].refusal.what(), HasSubstr("576..1500"));
  EXPECT_EQ(4u, target.refused[1].line);
  EXPECT_EQ(SHM_EEXIST, target.refused[1].refusal.code());
  EXPECT_EQ(5u, target.refused[2].line);
  EXPECT_THAT(target.refused[2].refusal.what(), HasSubstr("no place for rule 5"));
  EXPECT_EQ(SHM_EMASK, target.refused[3].refusal.code());
  EXPECT_EQ(1400u, target.store->config.wanMaximumTransferUnit);
}

TEST_F(ScriptTargetTest, AComplaintKeepsTheReasonOfTheSystem) {
  const Script script = {.name = "script"};
  const Refusal wrong(kSystem, "/etc/config: No space left on device", SHM_ESYSTEM, ENOSPC);
  const Refusal carried = unpacked(packed(wrong));
  Exit exit = kDone;
  const std::string json = printed([&](FILE* out) {
    Session session;
    session.json = true;
    session.out = out;
    try {
      refuseScript(session, script, {{7, carried}});
    } catch (const Refusal& refusal) {
      exit = refusal.exit();
    }
    return 0;
  });
  EXPECT_EQ(kSystem, exit);
  const Json told = Json::parse(json);
  const Json& complaint = told["complaints"][0];
  EXPECT_EQ(7, complaint["line"]);
  EXPECT_EQ(wrong.what(), complaint["message"]);
  EXPECT_EQ(SHM_ESYSTEM, complaint["code"]);
  EXPECT_EQ("ENOSPC", complaint["errno"]["name"]);
  EXPECT_EQ(complaint["errno"], told["error"]["errno"]);
}

TEST_F(ScriptTargetTest, AFullTableRefusesTheNext) {
  std::string script;
  for (int i = 1; i <= SHM_RULES; ++i) script += "rule add " + std::to_string(i) + " -ipVersion Any -proto TCP -d \n";
  const Target target = merged(present(), script);
  EXPECT_EQ(SHM_RULES, target.store->filterTable.ruleCount);
  ASSERT_EQ(1u, target.refused.size());
  EXPECT_EQ(SHM_EFULL, target.refused[0].refusal.code());
  EXPECT_EQ(static_cast<size_t>(SHM_RULES), target.refused[0].line);
}

TEST_F(ScriptTargetTest, WrongLinesAreNamedBeforeAnythingIsTried) {
  const Script script =
      scriptIn("set mtu WAN 1400\nset mtu WAN fast\n\x01\x02\nshow\nrule delete 0\n--json set mtu WAN 1400\n");
  EXPECT_EQ(1u, script.lines.size());
  std::vector<size_t> lines;
  for (const Complaint& one : script.complaints) lines.push_back(one.line);
  EXPECT_THAT(lines, ElementsAre(2, 3, 4, 5, 6));
  EXPECT_FALSE(scriptIn(std::string(10000, '\n') + std::string(1000, 'x') + "\n").complaints.empty());
}

TEST_F(ScriptTargetTest, NoiseIsGivenUpEarly) {
  std::string noise;
  for (int i = 0; i < 100000; ++i) noise += static_cast<char>(i * 31 % 251);
  const Script script = scriptIn(noise);
  EXPECT_LE(script.complaints.size(), kMostComplaints);
  EXPECT_THAT(script.lines, IsEmpty());
}

TEST_F(ScriptTargetTest, TheSecondTimeNothingChanges) {
  for (unsigned seed = 0; seed < scriptRounds(8); ++seed) {
    SCOPED_TRACE(seed);
    const std::string script = drawScript(seed);
    for (const Joining joining : {Joining::kMerge, Joining::kReplace}) {
      const Image start = merged(present(), drawScript(seed + 100000)).store;
      const Image once = targetOf(start, scriptIn(script), joining).store;
      const Target twice = targetOf(once, scriptIn(script), joining);
      expectSame(once, twice.store);
    }
    if (HasFailure()) return void(fprintf(stderr, "%s", script.c_str()));
  }
}

TEST_F(ScriptTargetTest, ReplacingLeadsToTheSameTablesFromEverywhere) {
  for (unsigned seed = 0; seed < scriptRounds(8); ++seed) {
    SCOPED_TRACE(seed);
    const std::string script = drawScript(seed);
    const Image one = replaced(present(), script).store;
    const Image other = replaced(merged(present(), drawScript(seed + 200000)).store, script).store;
    for (const char* table : {"addresses", "routes", "routes6", "rules"}) {
      EXPECT_EQ(texts(one, table), texts(other, table)) << table;
    }
  }
}

// A store of what the library accepts, in the places that a script knows and in those that it does not.
TEST_F(ScriptTargetTest, EverySettingThatIsLostHasItsReason) {
  for (unsigned seed = 0; seed < scriptRounds(8); ++seed) {
    SCOPED_TRACE(seed);
    drawStore(seed);
    shm->operationalState = SHM_STATE_OPERATIONAL;
    for (const LostSetting& one : lostIn(Image(*shm))) {
      EXPECT_THAT(one.reason, ::testing::Not(HasSubstr("does not come back as it was")))
          << one.change.section << " " << one.change.key << ": " << one.change.after.value_or("-") << " / "
          << one.change.before.value_or("-");
    }
    if (HasFailure()) return;
  }
}

struct LostRow {
  const char* situation;
  void (*plant)();
  const char* section;
  const char* reason;
};

void plantRule(uint32_t protocol, int32_t sourcePort, int32_t destinationPort) {
  FilterRule rule = {};
  rule.ipVersion = SHM_FAMILY_IPV4;
  rule.proto = protocol;
  rule.srcPort = rule.srcPortEnd = sourcePort;
  rule.destPort = rule.destPortEnd = destinationPort;
  rule.target = 1;
  rule.priority = 8;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  ASSERT_EQ(0, insertRule(0, &rule));
}

constexpr LostRow kLost[] = {
    {"a destination port alone", [] { plantRule(6, 0, 80); }, "rules", "not written without a source port"},
    {"another protocol", [] { plantRule(47, 0, 0); }, "rules", "other protocols"},
    {"link code 120", [] { shm->config.lanLinkSetting = 120; }, "items", "says 10baseT"},
    {"a rate of no whole kbit/s", [] { shm->config.wanLinkRate = 2048001; }, "items", "whole kbit/s"},
    {"a text", [] { strcpy(shm->config.sysName, "branch"); }, "items", "no texts"},
    {"a gateway", [] { shm->config.lanGateway = 0x0100000A; }, "items", "no gateways"},
    {"a mode of congestion", [] { shm->config.wanCongestionControl = 3; }, "items", "no word for it"},
    {"the switch of the serial line", [] { shm->config.cliOperState = SHM_ON; }, "items", "no line for it"},
};

TEST_F(ScriptTargetTest, EachKindOfLossIsNamed) {
  for (const LostRow& row : kLost) {
    makeFreshStore();
    shm->operationalState = SHM_STATE_CONFIGURATION;
    row.plant();
    std::vector<std::string> reasons;
    for (const LostSetting& one : lostIn(Image(*shm))) {
      if (one.change.section == row.section) reasons.push_back(one.reason);
    }
    EXPECT_THAT(reasons, ::testing::Contains(HasSubstr(row.reason))) << row.situation;
  }
}

}  // namespace
}  // namespace kestrove::testing
