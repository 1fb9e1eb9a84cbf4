// SPDX-License-Identifier: Apache-2.0
// The kernel rules through the real programs: what the kernel holds afterwards.
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>

#include "tests/net/policy/policy_fixture.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class RealKernelRules : public StoreTest {};

TEST_F(RealKernelRules, AnUpdateLeavesEmptyChainsThatAccept) {
  run("iptables -P FORWARD DROP && iptables -A INPUT -p tcp --dport 9 -j DROP && iptables -N MINE");
  run("iptables -t mangle -A FORWARD -j ACCEPT && iptables -t mangle -N OTHER && ip6tables -A FORWARD -j DROP");
  EXPECT_EQ(0, updateKernelRules());
  std::string rules = outputOf("iptables-save -t filter; iptables-save -t mangle");
  EXPECT_THAT(rules, Not(HasSubstr("-A ")));
  EXPECT_THAT(rules, Not(HasSubstr("MINE")));
  EXPECT_THAT(rules, Not(HasSubstr("OTHER")));
  EXPECT_THAT(rules, Not(HasSubstr("DROP")));
  EXPECT_THAT(rules, HasSubstr(":FORWARD ACCEPT [0:0]"));
  EXPECT_THAT(rules, HasSubstr(":POSTROUTING ACCEPT [0:0]"));
  EXPECT_THAT(outputOf("ip6tables-save -t filter"), Not(HasSubstr("-A ")));
}

TEST_F(RealKernelRules, AddedLinesAreLoaded) {
  fp = fopen("/tmp/restore_file", "w");
  for (const char* line : {"*mangle", "-A PREROUTING -p tcp -j ACCEPT"}) addToRestoreFile(line);
  EXPECT_EQ(0, commitHandler());
  EXPECT_THAT(outputOf("iptables-save -t mangle"), HasSubstr("-A PREROUTING -p tcp -j ACCEPT"));
}

TEST_F(RealKernelRules, ForwardedIpv6IsDropped) {
  EXPECT_EQ(0, addIp6tablesDropRule());
  EXPECT_THAT(outputOf("ip6tables-save -t filter"), HasSubstr("-A FORWARD -j DROP"));
}

class RealPolicyRouting : public PolicyTest {
 protected:
  void SetUp() override {
    PolicyTest::SetUp();
    run("vconfig add eth0 12 > /dev/null 2>&1");
    for (const char* name : {"eth0", "eth1", "eth0.12"}) run(std::string("ip link set ") + name + " up");
    run("ip addr flush dev eth0 && ip addr flush dev eth1");
    run("ip addr add 10.1.2.1/24 dev eth0.12 && ip addr add 172.16.9.2/16 dev eth1");
  }
};

TEST_F(RealPolicyRouting, EachSideLeavesThroughTheOthersGateway) {
  run("ip route add 10.9.0.0/16 dev eth1 table 100 && ip rule add from 10.7.0.1 table 101");
  pbrPolicyRule(1);
  EXPECT_THAT(outputOf("ip route show table 103"), HasSubstr("default via 10.1.2.254 dev eth0.12"));
  EXPECT_THAT(outputOf("ip route show table 102"), HasSubstr("default via 172.16.9.1 dev eth1"));
  EXPECT_THAT(outputOf("ip route show table 102"), HasSubstr("172.16.0.0/16 dev eth1"));
  std::string rules = outputOf("ip rule show");
  EXPECT_THAT(rules, HasSubstr("from all iif eth1 lookup 103"));
  EXPECT_THAT(rules, HasSubstr("from all iif eth0.12 lookup 102"));
  EXPECT_THAT(rules, Not(HasSubstr("10.7.0.1")));
}

TEST_F(RealPolicyRouting, AResetLeavesThePlainRules) {
  pbrPolicyRule(1);
  EXPECT_EQ(0, resetPolicyRules());
  EXPECT_EQ("0:\tfrom all lookup local\n32766:\tfrom all lookup main\n32767:\tfrom all lookup default\n",
            outputOf("ip rule show"));
  for (const char* table : {"100", "101", "102", "103"}) {
    EXPECT_EQ("", outputOf(std::string("ip route show table ") + table + " 2> /dev/null || true"));
  }
}

TEST_F(RealPolicyRouting, ASecondRunGivesTheSameTables) {
  pbrPolicyRule(1);
  std::string first = outputOf("ip rule show; ip route show table 102; ip route show table 103");
  pbrPolicyRule(1);
  EXPECT_EQ(first, outputOf("ip rule show; ip route show table 102; ip route show table 103"));
}

}  // namespace
}  // namespace kestrove::testing
