// SPDX-License-Identifier: Apache-2.0
// The script's policy rules.

#include "tests/state/script_fixture.h"

namespace kestrove::testing {
namespace {

using ::testing::EndsWith;

TEST_F(ScriptTest, DefaultRuleAloneGivesNoLine) { EXPECT_EQ("", printed(__saveSARules)); }

TEST_F(ScriptTest, RuleAddressesByFamily) {
  FilterRule rule = rule4();
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", line(rule));
  rule.srcAddr = quad("10.0.0.0");
  rule.dstAddr = quad("10.9.0.0");
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", line(rule)) << "addresses without masks";
  rule.srcMask = quad("255.0.0.0");
  EXPECT_EQ("rule add 1 -ipVersion 4 -sa 10.0.0.0/255.0.0.0 -proto ANY -b \n", line(rule));
  rule.dstMask = quad("255.255.0.0");
  EXPECT_EQ("rule add 1 -ipVersion 4 -sa 10.0.0.0/255.0.0.0 -da 10.9.0.0/255.255.0.0 -proto ANY -b \n", line(rule));
  rule.ipVersion = 6;
  setIp6(rule.srcAddr6, "2001:db8::");
  rule.srcPrefixLen6 = 20;
  rule.dstPrefixLen6 = 0xFFFFFFFF;
  EXPECT_EQ("rule add 1 -ipVersion 6 -sa6 2001:db8::/20 -da6 ::/-1 -proto ANY -b \n", line(rule));
  for (uint32_t family : {0u, 1u, 5u, 0xFFFFFFFFu}) {
    rule.ipVersion = family;
    EXPECT_EQ("rule add 1 -ipVersion Any -proto ANY -b \n", line(rule));
  }
}

struct ProtocolRow {
  uint32_t proto;
  const char* word;
};

TEST_F(ScriptTest, RuleProtocols) {
  for (const ProtocolRow& row : {ProtocolRow{0, "ANY "}, {6, "TCP "}, {17, "UDP "}, {1, ""}, {0xFFFFFFFF, ""}}) {
    FilterRule rule = rule4();
    rule.proto = row.proto;
    EXPECT_EQ(std::string("rule add 1 -ipVersion 4 -proto ") + row.word + "-b \n", line(rule));
  }
}

struct PortRow {
  uint32_t proto;
  int32_t source, sourceEnd, destination, destinationEnd;
  const char* words;
};

TEST_F(ScriptTest, RulePorts) {
  const PortRow rows[] = {
      {0, 80, 81, 82, 83, "ANY "},
      {6, 0, 0, 80, 80, "TCP "},
      {6, 0, 9, 80, 90, "TCP "},
      {6, 5, 5, 0, 0, "TCP -srcPort 5 -destPort 0 "},
      {6, 5, 6, 80, 80, "TCP -srcPort 5 -srcPortEnd 6 -destPort 80 "},
      {6, 5, 5, 80, 90, "TCP -srcPort 5 -destPort 80 -destPortEnd 90 "},
      {17, 5, 0, 80, 0, "UDP -srcPort 5 -srcPortEnd 0 -destPort 80 -destPortEnd 0 "},
      {99, -1, INT32_MIN, INT32_MAX, 0, "-srcPort -1 -srcPortEnd -2147483648 -destPort 2147483647 -destPortEnd 0 "},
  };
  for (const PortRow& row : rows) {
    FilterRule rule = rule4();
    rule.proto = row.proto;
    rule.srcPort = row.source;
    rule.srcPortEnd = row.sourceEnd;
    rule.destPort = row.destination;
    rule.destPortEnd = row.destinationEnd;
    EXPECT_EQ(std::string("rule add 1 -ipVersion 4 -proto ") + row.words + "-b \n", line(rule));
  }
}

struct TargetRow {
  int32_t target;
  uint32_t accel;
  const char* words;
};

TEST_F(ScriptTest, RuleTargets) {
  const TargetRow rows[] = {
      {0, 1, "-d "},
      {-1, 1, "-b "},
      {-2, 2, "-p -3 "},
      {INT32_MIN, 1, "-p -3 "},
      {1, 1, "-p -3 -bw 64 "},
      {INT32_MAX, 1, "-p -3 -bw 64 "},
      {1, 2, "-p -3 -bw 64  -noAccel "},
      {1, 0, "-p -3 -bw 64  -noAccel "},
  };
  for (const TargetRow& row : rows) {
    FilterRule rule = rule4();
    rule.target = row.target;
    rule.accel = row.accel;
    rule.priority = -3;
    rule.bandwidth = 64999;
    EXPECT_EQ(std::string("rule add 1 -ipVersion 4 -proto ANY ") + row.words + "\n", line(rule));
  }
}

TEST_F(ScriptTest, RuleBandwidthIsDividedTowardsZero) {
  FilterRule rule = rule4();
  rule.target = 1;
  rule.accel = 1;
  rule.bandwidth = -1999;
  EXPECT_THAT(line(rule), EndsWith("-p 0 -bw -1 \n"));
  rule.bandwidth = INT32_MIN;
  EXPECT_THAT(line(rule), EndsWith("-p 0 -bw -2147483 \n"));
}

TEST_F(ScriptTest, RuleNotInService) {
  for (uint32_t status : {0u, 1u, 3u, 4u, 0xFFFFFFFFu}) {
    FilterRule rule = rule4();
    rule.ruleAction = status;
    EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b \n", line(rule));
  }
  FilterRule rule = rule4();
  rule.ruleAction = 2;
  EXPECT_EQ("rule add 1 -ipVersion 4 -proto ANY -b -NIS \n", line(rule));
}

TEST_F(ScriptTest, FullTableWithoutItsLastRule) {
  FilterRule longest;
  memset(&longest, 0xFF, sizeof longest);
  longest.ipVersion = 6;
  longest.srcPort = longest.destPort = longest.priority = longest.bandwidth = INT32_MIN;
  longest.target = 1;
  longest.ruleAction = 2;
  for (FilterRule& rule : shm->filterTable.rule) rule = longest;
  for (int32_t count : {8192, 8193, INT32_MAX}) {
    shm->filterTable.ruleCount = count;
    std::string text = printed(__saveSARules);
    EXPECT_EQ(8191, std::count(text.begin(), text.end(), '\n'));
    std::string last = text.substr(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_EQ(
        "rule add 8191 -ipVersion 6 -sa6 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/-1 "
        "-da6 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/-1 -proto -srcPort -2147483648 -srcPortEnd -1 "
        "-destPort -2147483648 -destPortEnd -1 -p -2147483648 -bw -2147483  -noAccel -NIS \n",
        last);
  }
  for (int32_t count : {1, 0, -1, INT32_MIN}) {
    shm->filterTable.ruleCount = count;
    EXPECT_EQ("", printed(__saveSARules));
  }
}

}  // namespace
}  // namespace kestrove::testing
