// SPDX-License-Identifier: Apache-2.0
// Every row of the transitions: requests and command lines whole and in order, names, new mode.

#include <errno.h>
#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/net/opmode/opmode_fixture.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr uint32_t kDual = 0;
constexpr uint32_t kSingle = 1;
constexpr uint32_t kPolicyRouting = 2;

const Lines kPhysicalCleared = cleared("base0") + cleared("plan0") + cleared("pwan0");
const Lines kVlansCleared = cleared("base0.12") + cleared("plan0") + cleared("base0.13");
const Lines kAddressed = lanAddress("base0.12") + wanAddress();

class Transitions : public ModeTest {
 protected:
  void expectMove(uint32_t mode, int event, const Lines& effects, const char* namesAfter, uint32_t newMode) {
    EXPECT_EQ(0, raiseIn(mode, event));
    EXPECT_THAT(kernelCalls(), ElementsAreArray(effects));
    EXPECT_EQ(namesAfter, names());
    EXPECT_EQ(newMode, shm->config.opModeState);
    EXPECT_EQ(newMode, context_.mode);
    EXPECT_EQ(0, shm_lock_count);
  }
  // 22 and 23 in place of 32 and 33.
  void renumberVlans() {
    context_.lanVlanId = 22;
    context_.wanVlanId = 23;
    context_.lanVlanIdCopy = 32;
    context_.wanVlanIdCopy = 33;
  }
};

TEST_F(Transitions, DualPoweredOn) {
  expectMove(kDual, 1, kPhysicalCleared + bridged("base0"), "plan0 pwan0", kDual);
  EXPECT_THAT(syslogLines(), IsEmpty()) << "the dual mode logs nothing";
}

TEST_F(Transitions, DualPoweredOnWithoutABridgeOnModelNine) {
  shm->config.productId = 9;
  expectMove(kDual, 1, kPhysicalCleared, "plan0 pwan0", kDual);
}

TEST_F(Transitions, DualToSingle) {
  expectMove(kDual, 2, unbridged("base0") + vlansAdded("12", "13") + kVlansCleared + bridged("base0.12"),
             "plan0 base0.13", kSingle);
}

TEST_F(Transitions, SinglePoweredOn) {
  expectMove(kSingle, 1, kPhysicalCleared + vlansAdded("12", "13") + kVlansCleared + bridged("base0.12"),
             "plan0 base0.13", kSingle);
  EXPECT_THAT(syslogLines(), ElementsAre("debug: opModeSingleOnly event:1"));
}

TEST_F(Transitions, SingleToDual) {
  expectMove(kSingle, 3,
             unbridged("base0.12") + down("base0.12") + down("plan0") + down("base0.13") + vlansRemoved("12", "13") +
                 kPhysicalCleared + bridged("base0"),
             "plan0 pwan0", kDual);
}

TEST_F(Transitions, SingleToDualBridgesOnModelNineToo) {
  shm->config.productId = 9;
  ASSERT_EQ(0, raiseIn(kSingle, 3));
  EXPECT_EQ(bridged("base0").back(), kernelCalls().back());
}

TEST_F(Transitions, SingleToPolicyRouting) {
  expectMove(kSingle, 4, unbridged("base0") + kAddressed + forwarding("1", "base0.12") + policyRouting(),
             "plan0 base0.13", kPolicyRouting);
  EXPECT_THAT(syslogLines(), ElementsAre("debug: opModeSingleOnly event:4", "debug: EVENT_PBR_ON",
                                         "debug: turnOnPBR: turnOffBridge base0 plan0"));
}

TEST_F(Transitions, SingleWithNewVlans) {
  renumberVlans();
  expectMove(kSingle, 6,
             unbridged("base0.32") + down("base0.32") + down("base0.33") + down("plan0") + vlansRemoved("32", "33") +
                 vlansAdded("22", "23") + cleared("base0.22") + cleared("base0.23") + cleared("plan0") +
                 bridged("base0.22"),
             "plan0 base0.23", kSingle);
  EXPECT_EQ(12u, shm->config.lanVlanId) << "the configuration's ids are the caller's business";
}

TEST_F(Transitions, VlanChangeWithoutOldIdsTakesTheConfigurations) {
  context_.lanVlanId = 22;
  context_.wanVlanId = 23;
  ASSERT_EQ(0, raiseIn(kSingle, 6));
  EXPECT_EQ(unbridged("base0.12").front(), kernelCalls().front());
  EXPECT_EQ(0u, context_.lanVlanIdCopy);
}

TEST_F(Transitions, OneOldIdIsEnough) {
  context_.lanVlanId = 22;
  context_.wanVlanId = 23;
  context_.wanVlanIdCopy = 33;
  ASSERT_EQ(0, raiseIn(kSingle, 6));
  EXPECT_EQ(unbridged("base0.0").front(), kernelCalls().front());
}

TEST_F(Transitions, PolicyRoutingPoweredOnLeavesTheNames) {
  expectMove(kPolicyRouting, 1,
             kPhysicalCleared + vlansAdded("12", "13") + kAddressed + forwarding("1", "base0.12") + policyRouting(),
             "lan? wan?", kPolicyRouting);
  EXPECT_EQ(1u, shm->config.lanPbrRouteSet);
  EXPECT_EQ(1u, shm->config.wanPbrRouteSet);
  EXPECT_THAT(syslogLines(), ElementsAre("debug: opModeSinglePBR event:1"));
}

TEST_F(Transitions, PolicyRoutingToDual) {
  expectMove(kPolicyRouting, 3,
             policyReset() + forwarding("0", "base0.12") + down("base0.12") + down("base0.13") + down("plan0") +
                 vlansRemoved("12", "13") + kPhysicalCleared + bridged("base0"),
             "plan0 pwan0", kDual);
}

TEST_F(Transitions, PolicyRoutingToSingle) {
  expectMove(kPolicyRouting, 5,
             forwarding("0", "base0.12") + policyReset() + bridged("base0.12") +
                 Lines{"SIOCDARP 10.1.0.254", "SIOCDARP 10.2.0.254"},
             "plan0 base0.13", kSingle);
}

TEST_F(Transitions, PolicyRoutingWithNewVlansUsesTheConfigurationsIdsInItsRules) {
  renumberVlans();
  expectMove(kPolicyRouting, 6,
             forwarding("0", "base0.32") + policyReset() + down("base0.32") + down("base0.33") + down("plan0") +
                 vlansRemoved("32", "33") + vlansAdded("22", "23") + lanAddress("base0.22") + wanAddress() +
                 forwarding("1", "base0.22") + policyRouting(),
             "plan0 base0.23", kPolicyRouting);
}

struct Unhandled {
  uint32_t mode;
  int event;
  const char* text;  // null: nothing is logged as an error
};

TEST_F(Transitions, UnhandledEventsNameTheFollowingOne) {
  const Unhandled rows[] = {
      {kDual, 0, nullptr},
      {kDual, 3, nullptr},
      {kDual, 4, nullptr},
      {kDual, 5, nullptr},
      {kDual, 6, nullptr},
      {kDual, 13, nullptr},
      {kDual, 19, nullptr},
      {kSingle, 0, "err: opModeSingleOnly: EVENT EVENT_POWERED_ON error"},
      {kSingle, 2, "err: opModeSingleOnly: EVENT EVENT_SINGLIF_INTERFACE_OFF error"},
      {kSingle, 5, "err: opModeSingleOnly: EVENT EVENT_VLANID_CHANGE error"},
      {kSingle, 11, nullptr},
      {kSingle, 12, nullptr},
      {kSingle, 13, "err: opModeSingleOnly: EVENT EVENT_LAN_IP_CHANGE error"},
      {kSingle, 17, "err: opModeSingleOnly: EVENT EVENT_LAN_NETMASK_CHANGE error"},
      {kSingle, 18, "err: opModeSingleOnly: EVENT  error"},
      {kSingle, 19, "err: opModeSingleOnly: EVENT  error"},
      {kPolicyRouting, 0, "err: opModeSinglePBR: EVENT EVENT_POWERED_ON error"},
      {kPolicyRouting, 2, "err: opModeSinglePBR: EVENT EVENT_SINGLIF_INTERFACE_OFF error"},
      {kPolicyRouting, 4, "err: opModeSinglePBR: EVENT EVENT_PBR_OFF error"},
      {kPolicyRouting, 17, "err: opModeSinglePBR: EVENT EVENT_LAN_NETMASK_CHANGE error"},
      {kPolicyRouting, 18, "err: opModeSinglePBR: EVENT  error"},
      {kPolicyRouting, 19, "err: opModeSinglePBR: EVENT  error"},
  };
  const char* handlers[] = {"", "opModeSingleOnly", "opModeSinglePBR"};
  for (const Unhandled& row : rows) {
    clearSyslog();
    Lines expected;
    if (row.mode != kDual) {
      expected.push_back("debug: " + std::string(handlers[row.mode]) + " event:" + std::to_string(row.event));
    }
    if (row.text) expected.push_back(row.text);
    EXPECT_EQ(0, raiseIn(row.mode, row.event));
    EXPECT_EQ(expected, syslogLines()) << row.mode << " " << row.event;
    EXPECT_EQ(row.mode, shm->config.opModeState);
  }
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_EQ("lan? wan?", names());
}

TEST_F(Transitions, ApplicationEventsChangeNothingInAnyMode) {
  for (uint32_t mode : {kDual, kSingle, kPolicyRouting}) {
    for (uint32_t application : {0u, 1u, 3u, 4u}) {
      for (int event = 7; event <= 10; ++event) {
        shm->config.opModeSubState = application;
        EXPECT_EQ(0, raiseIn(mode, event));
        EXPECT_EQ(mode, shm->config.opModeState);
      }
    }
  }
  EXPECT_THAT(kernelCalls(), IsEmpty());
}

TEST_F(Transitions, AddressChangesActInPolicyRoutingAlone) {
  const Lines effects[] = {{}, {}, wanAddress(), lanAddress("base0.12"), policyRouting(), policyRouting()};
  for (int event = 11; event <= 16; ++event) {
    for (uint32_t mode : {kDual, kSingle, kPolicyRouting}) {
      watchKernel(Kernel::kPretend);
      EXPECT_EQ(0, raiseIn(mode, event));
      EXPECT_EQ(mode == kPolicyRouting ? effects[event - 11] : Lines(), kernelCalls()) << mode << " " << event;
    }
  }
}

TEST_F(Transitions, AddressChangesDoNothingInOtherApplicationModes) {
  for (uint32_t application : {1u, 2u, 3u, 4u, 4294967295u}) {
    shm->config.opModeSubState = application;
    EXPECT_EQ(0, raiseIn(kPolicyRouting, 13));
    EXPECT_EQ(0, raiseIn(kPolicyRouting, 16));
  }
  EXPECT_THAT(kernelCalls(), IsEmpty());
}

TEST_F(Transitions, FailuresOfTheActionsDoNotStopThem) {
  for (int n = 1; n <= 6; ++n) failCall("ioctl", n, EPERM);
  failCall("socket", 2, EMFILE);
  EXPECT_EQ(0, raiseIn(kDual, 2));
  EXPECT_EQ(bridged("base0.12").back(), kernelCalls().back());
  EXPECT_EQ(kSingle, shm->config.opModeState);
}

// A base of twelve characters: its VLANs of four digits have more than the kernel takes.
class LongVlanNames : public Transitions {
 protected:
  void SetUp() override {
    Transitions::SetUp();
    strcpy(shm->config.bridgeRouterPhysicalName, "abcdefghijkl");
    shm->config.lanVlanId = 4093;
    shm->config.wanVlanId = 4094;
  }
  // What was done to the interfaces, without the commands and requests on others.
  Lines about(const std::string& name) {
    Lines found;
    for (const std::string& call : kernelCalls()) {
      if (call.find(" " + name + " ") != call.npos || call.find(name + "/") != call.npos) found.push_back(call);
    }
    return found;
  }
};

TEST_F(LongVlanNames, GoWholeToProgramsAndNotToTheKernel) {
  ASSERT_EQ(0, raiseIn(kDual, 2));
  EXPECT_EQ(Lines({"run /usr/sbin/brctl delif br0 abcdefghijkl  > /dev/null 2>&1",
                   "run /usr/sbin/brctl delif br0 plan0  > /dev/null 2>&1", "run ifconfig br0 down  > /dev/null 2>&1 ",
                   "run /usr/sbin/brctl delbr br0  > /dev/null 2>&1",
                   "run /sbin/vconfig add abcdefghijkl 4093 > /dev/null 2>&1",
                   "run /sbin/vconfig add abcdefghijkl 4094 > /dev/null 2>&1"}) +
                cleared("plan0") + bridged("abcdefghijkl.4093"),
            kernelCalls());
  EXPECT_EQ(uint32_t(SHM_EINVAL), shm_errno);
  EXPECT_EQ(kSingle, shm->config.opModeState);
}

TEST_F(LongVlanNames, AreTakenDownWhole) {
  ASSERT_EQ(0, raiseIn(kSingle, 3));
  EXPECT_EQ(down("abcdefghijkl.4094") + Lines{"run /sbin/vconfig rem abcdefghijkl.4094 > /dev/null 2>&1"},
            about("abcdefghijkl.4094"));
  EXPECT_EQ(kDual, shm->config.opModeState);
}

TEST_F(LongVlanNames, GetNoAddressButForwardingAndRoutes) {
  ASSERT_EQ(0, raiseIn(kSingle, 4));
  EXPECT_THAT(about("abcdefghijkl.4093"),
              ElementsAre("run echo 1 > /proc/sys/net/ipv4/conf/abcdefghijkl.4093/forwarding",
                          "run /sbin/ip rule add dev abcdefghijkl.4093 table 102 >> /dev/null 2>&1 ",
                          "run /sbin/ip route add default via 10.1.0.254 dev abcdefghijkl.4093 table 103          "
                          ">> /dev/null 2>&1 ",
                          "run /sbin/ip route add  10.1.0.0/16 dev abcdefghijkl.4093 table 103 >> /dev/null 2>&1 "));
  EXPECT_EQ(kPolicyRouting, shm->config.opModeState);
  watchKernel(Kernel::kPretend);
  ASSERT_EQ(0, raiseIn(kPolicyRouting, 14));
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_EQ(uint32_t(SHM_EINVAL), shm_errno);
}

TEST_F(LongVlanNames, AreCutWhereTheStoreHoldsThem) {
  memset(shm->config.wanInterfaceName, '?', sizeof shm->config.wanInterfaceName);
  ASSERT_EQ(0, raiseIn(kDual, 2));
  EXPECT_STREQ("abcdefghijkl.40", shm->config.wanInterfaceName);
  shm->config.wanVlanId = 4294967295u;
  ASSERT_EQ(0, raiseIn(kDual, 2));
  EXPECT_STREQ("abcdefghijkl.-1", shm->config.wanInterfaceName);
  memcpy(shm->config.bridgeRouterPhysicalName, "abcdefghijklmnop", 16);  // without a terminator
  ASSERT_EQ(0, raiseIn(kDual, 2));
  EXPECT_STREQ("abcdefghijklmno", shm->config.wanInterfaceName);
}

TEST_F(LongVlanNames, OfTheLargestIdsFit) {
  memset(shm->config.bridgeRouterPhysicalName, 'b', 16);
  shm->config.lanVlanId = 0x80000000u;
  ASSERT_EQ(0, raiseIn(kDual, 2));
  EXPECT_EQ("run /usr/bin/init-bridging bbbbbbbbbbbbbbb.-2147483648 plan0  > /dev/null 2>&1",
            kernelCalls().at(kernelCalls().size() - 2));
}

TEST_F(Transitions, EmptyNamesRunAsTheyAre) {
  strcpy(shm->config.bridgeRouterPhysicalName, "");
  strcpy(shm->config.physicalLanInterfaceName, "");
  ASSERT_EQ(0, raiseIn(kDual, 2));
  const Lines calls = kernelCalls();
  EXPECT_EQ("run /usr/sbin/brctl delif br0   > /dev/null 2>&1", calls.front());
  EXPECT_EQ("run /usr/bin/init-bridging .12   > /dev/null 2>&1", calls.at(calls.size() - 2));
}

TEST_F(Transitions, NamesWithShellCharactersReachNoShell) {
  strcpy(shm->config.bridgeRouterPhysicalName, "$(reboot)");
  strcpy(shm->config.physicalLanInterfaceName, ";reboot");
  for (uint32_t mode : {kDual, kSingle, kPolicyRouting}) {
    for (int event = 1; event <= 6; ++event) EXPECT_EQ(0, raiseIn(mode, event));
  }
  for (const std::string& call : kernelCalls()) {
    EXPECT_FALSE(call.rfind("run ", 0) == 0 && call.find("reboot") != std::string::npos) << call;
  }
}

class Handlers : public ModeTest {};

TEST(HandlersWithoutStore, GiveZeroAndTheirLinesWhereNothingIsToBeDone) {
  OpModeContext context = {};
  for (int event : {0, 3, 4, 5, 6, 7, 10, 11, 12, 13, 19}) EXPECT_EQ(0, opModeDualIf(event, &context)) << event;
  for (int event : {0, 2, 5, 7, 10, 11, 12, 13, 19}) EXPECT_EQ(0, opModeSingleOnly(event, &context)) << event;
  clearSyslog();
  for (int event : {2, 7, 11, 13}) EXPECT_EQ(0, opModeSinglePBR(event, &context)) << event;
  EXPECT_THAT(syslogLines(), ElementsAre("debug: opModeSinglePBR event:2",
                                         "err: opModeSinglePBR: EVENT EVENT_SINGLIF_INTERFACE_OFF error",
                                         "debug: opModeSinglePBR event:7", "debug: opModeSinglePBR event:11",
                                         "debug: opModeSinglePBR event:13"));
}

TEST(HandlersWithoutStore, AddressDispatcherGivesZeroWhereNothingIsToBeDone) {
  OpModeContext context = {};
  for (int event : {11, 13, 16}) EXPECT_EQ(0, appNetConfigChange(event, &context)) << event;
  context.l7Mode = 3;
  EXPECT_EQ(0, appNetConfigChange(13, &context));
  context.l7Mode = 4;
  EXPECT_FAILS_WITH(SHM_EINVAL, appNetConfigChange(13, &context));
  context = {};
  context.mode = kPolicyRouting;
  for (int event : {11, 12, 17}) EXPECT_EQ(0, appNetConfigChange(event, &context)) << event;
}

TEST(HandlersWithoutStore, FailToAttachForATransition) {
  OpModeContext context = {};
  EXPECT_FAILS_WITH(SHM_EATTACH, opModeDualIf(1, &context));
  EXPECT_FAILS_WITH(SHM_EATTACH, opModeSingleOnly(3, &context));
  EXPECT_FAILS_WITH(SHM_EATTACH, opModeSinglePBR(6, &context));
  EXPECT_EQ(0u, context.mode);
  context.mode = kPolicyRouting;
  for (int event : {13, 14, 15, 16}) EXPECT_FAILS_WITH(SHM_EATTACH, appNetConfigChange(event, &context));
}

TEST_F(Handlers, CanBeCalledByThemselves) {
  context_.lanVlanId = 42;
  context_.wanVlanId = 43;
  EXPECT_EQ(0, opModeDualIf(2, &context_));
  EXPECT_EQ(kSingle, context_.mode);
  EXPECT_EQ("plan0 base0.43", names());
  EXPECT_EQ(0, opModeSingleOnly(4, &context_));
  EXPECT_EQ(kPolicyRouting, context_.mode);
  EXPECT_EQ(0, opModeSinglePBR(3, &context_));
  EXPECT_EQ(kDual, context_.mode);
  EXPECT_EQ(kDual, shm->config.opModeState) << "a handler alone stores no mode";
}

TEST_F(Handlers, EventsOutOfRangeAreUnhandled) {
  for (int event : {-1, 20, 2147483647}) {
    EXPECT_EQ(0, opModeDualIf(event, &context_));
    EXPECT_EQ(0, opModeSingleOnly(event, &context_));
    EXPECT_EQ(0, opModeSinglePBR(event, &context_));
  }
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_EQ("err: opModeSinglePBR: EVENT  error", syslogLines().back());
}

TEST_F(Handlers, AddressDispatcherRefusesOtherApplicationModes) {
  context_.mode = kPolicyRouting;
  for (uint32_t application : {0u, 1u, 2u, 3u}) {
    context_.l7Mode = application;
    EXPECT_EQ(0, appNetConfigChange(13, &context_));
    EXPECT_EQ(0, appAccelerationModeChange(7, &context_));
  }
  EXPECT_EQ(wanAddress(), kernelCalls()) << "only the first slot is filled";
  context_.l7Mode = 4;
  EXPECT_EQ(0, appAccelerationModeChange(7, &context_));
  EXPECT_FAILS_WITH(SHM_EINVAL, appNetConfigChange(13, &context_));
}

TEST_F(Handlers, NullIsRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, opModeDualIf(1, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, opModeSingleOnly(1, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, opModeSinglePBR(1, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, appAccelerationModeChange(7, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, appNetConfigChange(13, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, addAddressesToInterfaces(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, OpModeState(1, nullptr));
}

int slotCalls = 0;
int countCall(int event, OpModeContext*) { return slotCalls += event; }

TEST_F(Handlers, AccelerationTableIsFourNullSlotsThatCanBeFilled) {
  for (OpModeHandler slot : appAccelerateModeFtbl) EXPECT_EQ(nullptr, slot);
  appAccelerateModeFtbl[3] = countCall;
  shm->config.opModeSubState = 3;
  EXPECT_EQ(0, raiseIn(kDual, 8));
  EXPECT_EQ(8, slotCalls);
  appAccelerateModeFtbl[3] = nullptr;
}

TEST(Names, AreThoseOfTheNumbers) {
  EXPECT_STREQ("STATE_SINGLIF_OFF", state_single_str[0]);
  EXPECT_STREQ("STATE_SINGLIF_ON", state_single_str[1]);
  EXPECT_STREQ("STATE_PBR_OFF", state_pbr_str[0]);
  EXPECT_STREQ("STATE_PBR_ON", state_pbr_str[1]);
  EXPECT_STREQ("STATE_SQUID_OFF", state_squid_str[0]);
  EXPECT_STREQ("STATE_SQUID_ON", state_squid_str[1]);
  EXPECT_STREQ("STATE_DOMO_OFF", state_domo_str[0]);
  EXPECT_STREQ("STATE_DOMO_ON", state_domo_str[1]);
  EXPECT_THAT(Lines(oprmode_str, oprmode_str + 3),
              ElementsAre("OPMODE_DUAL_IF", "OPMODE_SINGLIF_ONLY", "OPMODE_SINGLIF_PBR"));
  EXPECT_THAT(Lines(l7mode_str, l7mode_str + 4),
              ElementsAre("L7MODE_NONE", "L7MODE_DOMO_ONLY", "L7MODE_SQUID_ONLY", "L7MODE_SQUID_DOMO"));
  EXPECT_THAT(
      Lines(event_str, event_str + 18),
      ElementsAre("EVENT_POWERED_ON", "EVENT_SINGLIF_INTERFACE_ON", "EVENT_SINGLIF_INTERFACE_OFF", "EVENT_PBR_ON",
                  "EVENT_PBR_OFF", "EVENT_VLANID_CHANGE", "EVENT_SQUID_ON", "EVENT_SQUID_OFF", "EVENT_DOMO_ON",
                  "EVENT_DOMO_OFF", "EVENT_OUTBAND_MGT_IP_CHANGE", "EVENT_INBAND_MGT_IP_CHANGE", "EVENT_WAN_IP_CHANGE",
                  "EVENT_LAN_IP_CHANGE", "EVENT_WAN_GATEWAY_CHANGE", "EVENT_LAN_GATEWAY_CHANGE",
                  "EVENT_WAN_NETMASK_CHANGE", "EVENT_LAN_NETMASK_CHANGE"));
  EXPECT_EQ(nullptr, event_str[18]);
  EXPECT_EQ(nullptr, event_str[19]);
}

}  // namespace
}  // namespace kestrove::testing
