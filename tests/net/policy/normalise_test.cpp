// SPDX-License-Identifier: Apache-2.0
// In which form a rule gets into the table, and back to its caller.

#include <arpa/inet.h>
#include <gmock/gmock.h>

#include "tests/net/policy/rules_fixture.h"
#include "tests/support/addresses.h"

namespace kestrove::testing {
namespace {

// Every word of the addresses is set, in both families.
FilterRule crowded(uint32_t ipVersion) {
  FilterRule rule = ruleNamed(7);
  rule.ipVersion = ipVersion;
  rule.srcAddr = quad("10.1.2.3");
  rule.srcMask = quad("255.255.0.0");
  rule.dstAddr = quad("172.16.5.6");
  rule.dstMask = quad("255.255.255.0");
  memset(rule.srcAddr6, 0xFF, sizeof rule.srcAddr6);
  memset(rule.dstAddr6, 0xFF, sizeof rule.dstAddr6);
  rule.srcPrefixLen6 = 20;
  rule.dstPrefixLen6 = 64;
  return rule;
}

const FilterRule& stored() { return shm->filterTable.rule[0]; }

// The rule once through insertion and once through a change; the table and the caller's record must agree.
class NormaliseTest : public RulesTest {
 protected:
  FilterRule through(FilterRule rule) {
    FilterRule changed = rule;
    EXPECT_EQ(0, insertRule(0, &rule));
    EXPECT_EQ(0, memcmp(&rule, &stored(), sizeof rule));
    memset(&shm->filterTable.rule[0], 0xAB, sizeof(FilterRule));
    EXPECT_EQ(0, changeRule(0, &changed));
    EXPECT_EQ(0, memcmp(&changed, &stored(), sizeof changed));
    EXPECT_EQ(0, memcmp(&changed, &rule, sizeof changed));
    return rule;
  }
};

bool ipv4Clear(const FilterRule& rule) { return !rule.srcAddr && !rule.srcMask && !rule.dstAddr && !rule.dstMask; }
bool ipv6Clear(const FilterRule& rule) {
  static const uint8_t kZero[16] = {};
  return !memcmp(rule.srcAddr6, kZero, 16) && !memcmp(rule.dstAddr6, kZero, 16) && !rule.srcPrefixLen6 &&
         !rule.dstPrefixLen6;
}

TEST_F(NormaliseTest, FieldsOfOtherFamiliesAreCleared) {
  EXPECT_TRUE(ipv6Clear(through(crowded(4))));
  EXPECT_FALSE(ipv4Clear(through(crowded(4))));
  EXPECT_TRUE(ipv4Clear(through(crowded(6))));
  EXPECT_FALSE(ipv6Clear(through(crowded(6))));
  EXPECT_TRUE(ipv4Clear(through(crowded(1))));
  EXPECT_TRUE(ipv6Clear(through(crowded(1))));
}

TEST_F(NormaliseTest, UnknownFamiliesStayUntouched) {
  for (uint32_t family : {0u, 2u, 5u, 7u, 0xFFFFFFFFu}) {
    FilterRule rule = crowded(family);
    rule.srcMask = quad("255.0.255.0");
    FilterRule out = through(rule);
    EXPECT_EQ(0, memcmp(&rule, &out, sizeof rule)) << family;
  }
}

TEST_F(NormaliseTest, ActiveIpv4AddressesAreReduced) {
  FilterRule rule = through(crowded(4));
  EXPECT_EQ(quad("10.1.0.0"), rule.srcAddr);
  EXPECT_EQ(quad("172.16.5.0"), rule.dstAddr);
}

TEST_F(NormaliseTest, OnlyActiveRulesAreReduced) {
  for (uint32_t status : {0u, 1u, 2u, 4u, 0xFFFFFFFFu}) {
    FilterRule rule = crowded(4);
    rule.ruleAction = status;
    rule.proto = 17;
    rule = through(rule);
    EXPECT_EQ(quad("10.1.2.3"), rule.srcAddr);
    EXPECT_EQ(1u, rule.accel);
    FilterRule rule6 = crowded(6);
    rule6.ruleAction = status;
    EXPECT_EQ(0xFF, through(rule6).srcAddr6[15]);
  }
}

struct PrefixRow {
  uint32_t length;
  int whole;     // bytes kept
  uint8_t part;  // the byte behind them
};

TEST_F(NormaliseTest, ActiveIpv6AddressesAreCutToTheirPrefix) {
  const PrefixRow rows[] = {{0, 0, 0},   {1, 0, 0x80},    {7, 0, 0xFE},       {8, 1, 0},    {20, 2, 0xF0},
                            {64, 8, 0},  {127, 15, 0xFE}, {128, 16, 0},       {129, 16, 0}, {255, 16, 0},
                            {256, 0, 0}, {276, 2, 0xF0},  {0xFFFFFFFF, 16, 0}};
  for (const PrefixRow& row : rows) {
    uint8_t expected[17] = {};
    memset(expected, 0xFF, static_cast<size_t>(row.whole));
    expected[row.whole] = row.part;
    FilterRule source = crowded(6), destination = crowded(6);
    source.srcPrefixLen6 = destination.dstPrefixLen6 = row.length;
    EXPECT_EQ(0, memcmp(expected, through(source).srcAddr6, 16)) << row.length;
    FilterRule out = through(destination);
    EXPECT_EQ(0, memcmp(expected, out.dstAddr6, 16)) << row.length;
    EXPECT_EQ(row.length, out.dstPrefixLen6);
  }
}

TEST_F(NormaliseTest, ActiveUdpIsNeverAccelerated) {
  for (uint32_t family : {1u, 4u, 6u, 9u}) {
    FilterRule rule = crowded(family);
    rule.proto = 17;
    EXPECT_EQ(2u, through(rule).accel);
    rule.proto = 6;
    EXPECT_EQ(1u, through(rule).accel);
  }
}

TEST_F(NormaliseTest, BandwidthIsRaisedToTheLeastRate) {
  FilterRule rule = ruleNamed(7);
  for (int32_t low : {5000, 9999, 0, -1, INT32_MIN}) {
    rule.bandwidth = low;
    EXPECT_EQ(10000, through(rule).bandwidth);
  }
  for (int32_t enough : {10000, 10001, INT32_MAX}) {
    rule.bandwidth = enough;
    EXPECT_EQ(enough, through(rule).bandwidth);
  }
  shm->config.minRate = 0xFFFFFFFF;  // -1 in the signed comparison
  rule.bandwidth = -2;
  EXPECT_EQ(-1, through(rule).bandwidth);
}

TEST_F(NormaliseTest, MasksMustBeNetmasks) {
  for (const char* bad : {"255.0.255.0", "0.255.255.255", "255.255.255.1", "1.0.0.0"}) {
    for (uint32_t FilterRule::*mask : {&FilterRule::srcMask, &FilterRule::dstMask}) {
      FilterRule rule = crowded(4);
      rule.*mask = quad(bad);
      EXPECT_FAILS_WITH(SHM_EMASK, insertRule(0, &rule));
      EXPECT_FAILS_WITH(SHM_EMASK, insertRule(99, &rule));  // the masks come before the position
      EXPECT_EQ(1, getRuleCount());
      FilterRule good = ruleNamed(3);
      ASSERT_EQ(0, insertRule(0, &good));
      EXPECT_FAILS_WITH(SHM_EMASK, changeRule(0, &rule));
      EXPECT_EQ(0, memcmp(&good, &stored(), sizeof good));
      EXPECT_FAILS_WITH(SHM_EINVAL, changeRule(99, &rule));  // the position comes before the masks
      ASSERT_EQ(0, deleteRule(0));
    }
  }
  FilterRule any = crowded(4);
  any.srcMask = any.dstMask = 0;
  EXPECT_EQ(0u, through(any).srcAddr);
}

TEST_F(NormaliseTest, RefusedInsertLeavesBandwidthRefusedChangeRaisesIt) {
  FilterRule rule = crowded(4);
  rule.srcMask = quad("255.0.255.0");
  rule.bandwidth = 1;
  EXPECT_FAILS_WITH(SHM_EMASK, insertRule(0, &rule));
  EXPECT_EQ(1, rule.bandwidth);
  EXPECT_TRUE(ipv6Clear(rule)) << "normalised in part";
  EXPECT_EQ(quad("10.1.2.3"), rule.srcAddr);
  FilterRule good = ruleNamed(3);
  ASSERT_EQ(0, insertRule(0, &good));
  EXPECT_FAILS_WITH(SHM_EMASK, changeRule(0, &rule));
  EXPECT_EQ(10000, rule.bandwidth);
}

TEST_F(NormaliseTest, RefusedPositionLeavesTheLaterSteps) {
  FilterRule rule = crowded(4);
  rule.bandwidth = 1;
  EXPECT_FAILS_WITH(SHM_EINVAL, insertRule(1, &rule));
  EXPECT_EQ(1, rule.bandwidth);
  EXPECT_EQ(quad("10.1.2.3"), rule.srcAddr);
  EXPECT_TRUE(ipv6Clear(rule));
}

TEST_F(NormaliseTest, EveryFieldAtItsExtreme) {
  FilterRule rule;
  memset(&rule, 0xFF, sizeof rule);
  rule.order = 0;  // the one field in which insertion and change differ
  FilterRule out = through(rule);
  EXPECT_EQ(10000, out.bandwidth);
  out.bandwidth = -1;
  EXPECT_EQ(0, memcmp(&rule, &out, sizeof rule));
  memset(&rule, 0, sizeof rule);
  EXPECT_EQ(10000, through(rule).bandwidth);
}

}  // namespace
}  // namespace kestrove::testing
