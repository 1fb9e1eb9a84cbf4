// SPDX-License-Identifier: Apache-2.0
// OpModeState around the handlers: checks, context, lock, addresses and routes, engine, save.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/net/opmode/opmode_fixture.h"
#include "tests/support/files.h"
#include "tests/support/kernel.h"
#include "tests/support/records.h"

namespace kestrove::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kOpModeBit = 0x4000;
constexpr int kEngineTask = 4;

int signals = 0;
uint32_t modeAtSignal = 0;
void noteSignal(int) {
  ++signals;
  modeAtSignal = shm->config.opModeState;
}

class State : public ModeTest {
 protected:
  void SetUp() override {
    ModeTest::SetUp();
    signals = 0;
    signal(SIGUSR1, noteSignal);
    shm->taskPids[kEngineTask] = getpid();
  }

  void addManagement(uint32_t version, int32_t kind) {
    ManagementAddress& entry = shm->managementAddress[shm->managementAddressCount++];
    entry = {};
    entry.ipVersion = version;
    entry.interfaceKind = kind;
    entry.address = quad("10.9.0.1");
    entry.mask = quad("255.255.255.0");
    setIp6(entry.address6, "fd00:9::1");
    entry.prefixLength6 = 64;
  }
  std::vector<uint32_t> statuses() const {
    std::vector<uint32_t> list;
    for (int i = 0; i < shm->managementAddressCount; ++i) list.push_back(shm->managementAddress[i].status);
    return list;
  }
  void addRoute6(uint32_t slot, const char* gateway, uint32_t status) {
    Route6Entry route = route6Record("fd00:77::", 128, gateway, status);
    route.destination[15] = static_cast<uint8_t>(slot);
    shm->routes6.slot[slot] = linked(route, shm->routes6.slot[slot].next);
  }
};

TEST_F(State, EventsAndModesOutOfRangeChangeNothing) {
  for (int event : {-1, 20, 2147483647}) EXPECT_FAILS_WITH(SHM_EINVAL, raise(event));
  for (uint32_t mode : {3u, 4294967295u}) EXPECT_FAILS_WITH(SHM_EINVAL, raiseIn(mode, 1));
  EXPECT_EQ(77u, context_.mode);
  EXPECT_EQ(77u, context_.word5);
  EXPECT_FALSE(fileExists(kConfigFile));
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_EQ(0, shm_lock_count);
  EXPECT_EQ(0, signals);
}

TEST_F(State, ContextIsFilledFromTheStore) {
  shm->config.opModeSubState = 3;
  ASSERT_EQ(0, raiseIn(1, 19));
  EXPECT_EQ(1u, context_.mode);
  EXPECT_EQ(3u, context_.l7Mode);
  EXPECT_EQ(3u, context_.l7ModeCopy);
  EXPECT_EQ(0u, context_.word5);
  EXPECT_EQ(0u, context_.word6);
  EXPECT_EQ(13u, context_.wanVlanId);
  EXPECT_EQ(12u, context_.lanVlanId);
  EXPECT_EQ(13u, context_.wanVlanIdCopy);
  EXPECT_EQ(12u, context_.lanVlanIdCopy);
}

TEST_F(State, VlanChangeKeepsTheCallersIds) {
  context_.wanVlanId = 1;
  context_.lanVlanId = 2;
  context_.wanVlanIdCopy = 3;
  context_.lanVlanIdCopy = 4;
  ASSERT_EQ(0, raiseIn(0, 6));
  EXPECT_EQ(1u, context_.wanVlanId);
  EXPECT_EQ(2u, context_.lanVlanId);
  EXPECT_EQ(3u, context_.wanVlanIdCopy);
  EXPECT_EQ(4u, context_.lanVlanIdCopy);
}

TEST_F(State, ContextMayLieInTheStore) {
  auto& context = *reinterpret_cast<OpModeContext*>(shm->config.reserved95);
  shm->config.opModeState = 0;
  ASSERT_EQ(0, OpModeState(2, &context));
  EXPECT_EQ(1u, context.mode);
  EXPECT_EQ(12u, context.lanVlanId);
  EXPECT_EQ(1u, shm->config.opModeState);
  const Lines calls = kernelCalls();
  watchKernel(Kernel::kPretend);
  ASSERT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(calls, kernelCalls()) << "as with a context elsewhere";
}

TEST_F(State, ContextMayLieInTheStoreForEachHandler) {
  auto& context = *reinterpret_cast<OpModeContext*>(shm->config.reserved95);
  context.lanVlanId = 12;
  context.wanVlanId = 13;
  EXPECT_EQ(0, opModeDualIf(2, &context));
  EXPECT_EQ(1u, context.mode);
  EXPECT_EQ(0, opModeSingleOnly(4, &context));
  EXPECT_EQ(2u, context.mode);
  EXPECT_EQ(0, appNetConfigChange(14, &context));
  EXPECT_EQ(0, appAccelerationModeChange(7, &context));
  EXPECT_EQ(0, addAddressesToInterfaces(&context));
  EXPECT_EQ(0, opModeSinglePBR(3, &context));
  EXPECT_EQ(0u, context.mode);
}

TEST_F(State, EventsTwoToSixMarkAndSignalTheEngine) {
  for (int event = 0; event <= 19; ++event) {
    shm->pendingChanges = 0;
    signals = 0;
    ASSERT_EQ(0, raiseIn(0, event));
    bool changes = event >= 2 && event <= 6;
    EXPECT_EQ(changes ? kOpModeBit : 0, shm->pendingChanges) << event;
    EXPECT_EQ(changes ? 1 : 0, signals) << event;
  }
}

TEST_F(State, EngineFindsTheNewModeWhenItIsSignalled) {
  ASSERT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(1u, modeAtSignal);
}

TEST_F(State, EveryEventIsSaved) {
  for (int event = 0; event <= 19; ++event) {
    unlink(kConfigFile);
    ASSERT_EQ(0, raiseIn(0, event));
    EXPECT_TRUE(fileExists(kConfigFile)) << event;
  }
}

TEST_F(State, ConfigurationModeNeitherSavesNorMarksNorSignals) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  ASSERT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_EQ(0, signals);
  EXPECT_EQ(1u, shm->config.opModeState);
  EXPECT_FALSE(fileExists(kConfigFile));
}

TEST_F(State, DebugModeMarksAndSignalsAllTheSame) {
  shm->operationalState = SHM_STATE_DEBUG;
  ASSERT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(kOpModeBit, shm->pendingChanges);
  EXPECT_EQ(1, signals);
}

TEST_F(State, FailedSaveLeavesTheResult) {
  mkdir("/etc/config/there", 0755);
  strcpy(shm->config.configFileName, "/etc/config/there");
  shm_errno = 0;
  EXPECT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno);
  EXPECT_EQ(1u, shm->config.opModeState);
}

TEST_F(State, HeldLockStaysWithTheCaller) {
  ASSERT_EQ(0, shm_lock());
  context_.locked = 1;
  EXPECT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_FAILS_WITH(SHM_EINVAL, raise(20));
  EXPECT_EQ(1, shm_lock_count);
}

TEST_F(State, UnsentSignalLeavesTheLockCounted) {
  shm->taskPids[kEngineTask] = 4194304;
  EXPECT_EQ(0, raiseIn(0, 2));
  EXPECT_EQ(1, shm_lock_count);
  EXPECT_TRUE(fileExists(kConfigFile));
}

TEST(StateWithoutStore, FailsToAttach) {
  OpModeContext context = {};
  EXPECT_FAILS_WITH(SHM_EATTACH, OpModeState(1, &context));
  context.locked = 1;
  EXPECT_FAILS_WITH(SHM_EATTACH, OpModeState(1, &context));
  EXPECT_FAILS_WITH(SHM_EATTACH, opModeDualIf(1, &context));
  EXPECT_FAILS_WITH(SHM_EATTACH, addAddressesToInterfaces(&context));
}

struct StatusRow {
  uint32_t mode;
  uint32_t product;
  int32_t kind;
  uint32_t status;
};

TEST_F(State, AddressesOfInterfacesThatTheModeDoesNotUseAreKeptAside) {
  const StatusRow rows[] = {{0, 0, 4, 1}, {1, 0, 4, 1}, {2, 0, 4, 2}, {2, 9, 4, 2}, {0, 0, 0, 2}, {0, 0, 5, 2},
                            {0, 9, 0, 1}, {0, 9, 5, 1}, {1, 0, 0, 1}, {2, 0, 5, 1}, {0, 0, 1, 1}, {0, 0, 3, 1}};
  for (char* name : {shm->config.lanInterfaceName, shm->config.wanInterfaceName, shm->config.managementInterfaceName,
                     shm->config.bridgeRouterPhysicalName}) {
    strcpy(name, "lo");
  }
  tried("/sbin/ip link add br0 type veth peer name peer0");  // any interface of that name will do
  for (const StatusRow& row : rows) {
    for (uint32_t version : {4u, 6u, 9u}) {
      shm->managementAddressCount = 0;
      addManagement(version, row.kind);
      shm->config.productId = row.product;
      context_.mode = row.mode;
      pretendFlags(1);
      EXPECT_EQ(0, addAddressesToInterfaces(&context_));
      EXPECT_THAT(statuses(), ElementsAre(row.status)) << row.mode << " " << row.product << " " << row.kind;
    }
  }
}

TEST_F(State, FamiliesOtherThanSixAreAppliedAsFour) {
  strcpy(shm->config.wanInterfaceName, "lo");
  addManagement(4, 1);
  addManagement(9, 1);
  addManagement(6, 1);
  ASSERT_EQ(0, addAddressesToInterfaces(&context_));
  EXPECT_EQ(2u, messagesSent().size());
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCGIFFLAGS lo", "SIOCSIFFLAGS lo 0x1", "SIOCGIFFLAGS lo",
                                         "SIOCSIFFLAGS lo 0x1", "SIOCGIFINDEX lo", "SIOCSIFADDR fd00:9::1/64 index 7",
                                         "SIOCGIFFLAGS lo", "SIOCSIFFLAGS lo 0x1"));
}

TEST_F(State, RefusedAddressesAreMarkedNotApplied) {
  strcpy(shm->config.wanInterfaceName, "lo");
  strcpy(shm->config.managementInterfaceName, "nosuch");
  for (uint32_t version : {4u, 6u}) {
    for (int32_t kind : {1, 3, 2, 99, -1}) {
      shm->managementAddressCount = 0;
      addManagement(version, kind);
      watchKernel(kind == 1 ? Kernel::kPretend : Kernel::kReal);
      if (kind == 1) failCall("ioctl", 2, EPERM);  // raising it, or the address itself
      EXPECT_EQ(0, addAddressesToInterfaces(&context_));
      EXPECT_THAT(statuses(), ElementsAre(2u)) << version << " " << kind;
    }
  }
}

TEST_F(State, DamagedCountsEndAtTheTables) {
  for (int32_t count : {-1, 8, 2147483647}) {
    shm->managementAddressCount = count;
    shm->ip6Count = count;
    EXPECT_EQ(0, raiseIn(0, 1));
  }
}

TEST_F(State, Ipv6AddressesGoOnTheBridge) {
  for (const char* text : {"fd00:50::1", "fd00:51::1"}) {
    Ip6Address& entry = shm->ip6Address[shm->ip6Count++];
    setIp6(entry.address, text);
    entry.prefixLength = 64;
  }
  pretendFlags(1);
  failCall("ioctl", 8, EPERM);  // the first address: its refusal is ignored
  ASSERT_EQ(0, raiseIn(0, 1));
  Lines calls = kernelCalls();
  EXPECT_THAT(Lines(calls.begin() + 8, calls.end()),
              ElementsAre("SIOCGIFINDEX br0", "SIOCSIFADDR fd00:50::1/64 index 7", "SIOCGIFINDEX br0",
                          "SIOCSIFADDR fd00:51::1/64 index 7", "SIOCGIFFLAGS br0"));
}

TEST_F(State, RoutesFollowTheirGateways) {
  addManagement(6, 4);
  addRoute6(3, "fd00:9::5", 1);   // its gateway is reached
  addRoute6(5, "fd00:99::5", 3);  // its gateway is not
  addRoute6(7, "fd00:9::5", 2);   // disabled
  shm->routes6.head6 = 3;
  shm->routes6.slot[3].next = 5;
  shm->routes6.slot[5].next = 7;
  ASSERT_EQ(0, raiseIn(0, 1));
  EXPECT_EQ(3u, shm->routes6.slot[3].status);
  EXPECT_EQ(1u, shm->routes6.slot[5].status);
  EXPECT_EQ(2u, shm->routes6.slot[7].status);
  EXPECT_STREQ("", shm->routes6.slot[3].interfaceName) << "the name found belongs into the request only";
}

TEST_F(State, RefusedRoutesAreInactive) {
  addManagement(6, 4);
  addRoute6(0, "fd00:9::5", 3);
  shm->routes6.head6 = 0;
  watchKernel(Kernel::kReal);
  shm->config.productId = 9;  // no bridge to be made
  ASSERT_EQ(0, raiseIn(0, 1));
  EXPECT_EQ(1u, shm->routes6.slot[0].status);
}

TEST_F(State, DamagedRouteChainsEnd) {
  addRoute6(0, "fd00:9::5", 1);
  addRoute6(1, "fd00:9::5", 1);
  shm->routes6.slot[0].next = 1;
  shm->routes6.slot[1].next = 0;
  for (uint32_t head : {0u, 1023u, 1024u, 4294967295u}) {
    shm->routes6.head6 = head;
    shm->routes.head = head;
    EXPECT_EQ(0, raiseIn(0, 1));
  }
}

TEST_F(State, RoutesOfVersionFourAreInstalledWhenThereAreAny) {
  RouteEntry& route = shm->routes.slot[0];
  route = {quad("10.77.0.0"), quad("255.255.0.0"), quad("10.9.0.5"), 1, 1, SHM_NO_SLOT};
  addManagement(4, 1);
  strcpy(shm->config.wanInterfaceName, "lo");
  ASSERT_EQ(0, raiseIn(0, 1));
  EXPECT_EQ(3u, route.status);
  route.inUse = SHM_NO_SLOT;
  shm_errno = 0;
  ASSERT_EQ(0, raiseIn(0, 1));
  EXPECT_EQ(0u, shm_errno) << "an empty table is not walked";
}

class Reapplied : public State {
 protected:
  void SetUp() override {
    State::SetUp();
    shm->config.productId = 9;  // an event 1 in dual mode clears three interfaces and makes no bridge
    Ip6Address& entry = shm->ip6Address[shm->ip6Count++];
    setIp6(entry.address, "fd00:50::1");
    entry.prefixLength = 64;
    shm->routes.slot[0] = {quad("10.77.0.0"), quad("255.255.0.0"), quad("10.9.0.5"), 3, 1, SHM_NO_SLOT};
    shm->routes.head = 0;
    addRoute6(0, "fd00:9::5", 3);
    shm->routes6.head6 = 0;
    pretendFlags(1);
  }
  // Neither gateway is reached, so routes that were applied again are inactive.
  uint32_t route4() const { return shm->routes.slot[0].status; }
  uint32_t route6() const { return shm->routes6.slot[0].status; }
  Lines powerOn() {
    EXPECT_EQ(0, raiseIn(0, 1));
    return kernelCalls();
  }
  const Lines kCleared = cleared("base0") + cleared("plan0") + cleared("pwan0");
  const Lines kAddress = {"SIOCGIFINDEX br0", "SIOCSIFADDR fd00:50::1/64 index 7", "SIOCGIFFLAGS br0"};
};

TEST_F(Reapplied, NothingByEventsThatTheModeDoesNotHandle) {
  const std::vector<int> unhandled[] = {{3, 4, 5, 6}, {2, 5}, {2, 4}};
  for (uint32_t mode : {0u, 1u, 2u}) {
    for (int event : unhandled[mode]) ASSERT_EQ(0, raiseIn(mode, event));
    for (int event : {0, 7, 10, 11, 12, 17, 18, 19}) ASSERT_EQ(0, raiseIn(mode, event));
  }
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_EQ(3u, route4());
  EXPECT_EQ(3u, route6());
}

TEST_F(Reapplied, AddressesAndRoutesByEveryTransition) {
  const std::vector<int> handled[] = {{1, 2}, {1, 3, 4, 6}, {1, 3, 5, 6}};
  for (uint32_t mode : {0u, 1u, 2u}) {
    for (int event : handled[mode]) {
      shm->routes.slot[0].status = shm->routes6.slot[0].status = 3;
      watchKernel(Kernel::kPretend);
      ASSERT_EQ(0, raiseIn(mode, event));
      EXPECT_THAT(kernelCalls(), Contains(kAddress[1])) << mode << " " << event;
      EXPECT_EQ(1u, route4()) << mode << " " << event;
      EXPECT_EQ(1u, route6()) << mode << " " << event;
    }
  }
}

TEST_F(Reapplied, NothingInConfigurationMode) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(kCleared, powerOn());
  EXPECT_EQ(3u, route4());
  EXPECT_EQ(3u, route6());
}

TEST_F(Reapplied, AddressesWithoutRoutesInDebugMode) {
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(kCleared + kAddress, powerOn());
  EXPECT_EQ(3u, route4());
  EXPECT_EQ(3u, route6());
}

TEST_F(Reapplied, BothInTheOtherStates) {
  for (uint32_t state : {SHM_STATE_UNINITIALIZED, SHM_STATE_OPERATIONAL, SHM_STATE_DISABLED, SHM_STATE_UNCONFIGURED}) {
    shm->operationalState = state;
    shm->routes.slot[0].status = shm->routes6.slot[0].status = 3;
    watchKernel(Kernel::kPretend);
    EXPECT_THAT(powerOn(), Contains(kAddress[1])) << state;
    EXPECT_EQ(1u, route4()) << state;
    EXPECT_EQ(1u, route6()) << state;
  }
}

}  // namespace
}  // namespace kestrove::testing
