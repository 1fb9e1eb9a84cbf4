// SPDX-License-Identifier: Apache-2.0
// A process that dies between any two instructions of a change of routes or events.
#include <string.h>

#include "store/journal.h"
#include "tests/store/death_fixture.h"

namespace kestrove::testing {
namespace {

using DeathInRoutesTest = DeathTest;
using DeathInRoutes6Test = DeathTest;
using DeathInEventsTest = DeathTest;

uint32_t destinationOf(uint8_t number) { return routeNamed(number).destination; }
constexpr uint32_t kMask = 0x00FFFFFF;

// Outside Configuration Mode, without a kernel. A save that finds no folder for its file is a short one.
void debugMode() {
  shm->operationalState = SHM_STATE_DEBUG;
  strcpy(shm->config.configFileName, "/nowhere/kestrove.conf");
}

TEST_F(DeathInRoutesTest, AddingAtTheFrontInTheMiddleAndAtTheEnd) {
  for (uint8_t number : Numbers{30, 10}) {
    RouteEntry route = routeNamed(number);
    expectSound([&] { return addUserRoute(&route); });
  }
}

TEST_F(DeathInRoutesTest, DeletingTheFirstAndTheLast) {
  debugMode();
  Proof proof = expectSound([] { return deleteUserRoute(destinationOf(22), kMask); });
  EXPECT_GT(proof.takenBack, 0);
  EXPECT_GT(proof.finished, 0);
  expectSound([] { return deleteUserRoute(destinationOf(20), kMask); });
}

TEST_F(DeathInRoutesTest, TheOnlyRouteComesAndGoes) {
  debugMode();
  for (uint8_t number : Numbers{20, 21, 22}) ASSERT_EQ(0, deleteUserRoute(destinationOf(number), kMask));
  RouteEntry route = routeNamed(9);
  expectSound([&] { return addUserRoute(&route); });
  expectSound([] { return deleteUserRoute(destinationOf(9), kMask); });
}

TEST_F(DeathInRoutesTest, ReplacingBySomethingElseUnderTheSameKey) {
  debugMode();
  RouteEntry route = routeNamed(21);
  route.gateway = 99;
  expectSound([&] { return replaceUserRoute(route.destination, kMask, &route, 0, "--"); });
}

TEST_F(DeathInRoutesTest, ReplacingByAnotherKey) {
  debugMode();
  RouteEntry route = routeNamed(30);
  expectSound([&] { return replaceUserRoute(destinationOf(20), kMask, &route, 0, "--"); });
}

TEST_F(DeathInRoutesTest, ReplacingTheOnlyRoute) {
  debugMode();
  for (uint8_t number : Numbers{20, 22}) ASSERT_EQ(0, deleteUserRoute(destinationOf(number), kMask));
  RouteEntry route = routeNamed(30);
  expectSound([&] { return replaceUserRoute(destinationOf(21), kMask, &route, 0, "--"); });
}

// Each route in turn becomes active; none is ever missing.
TEST_F(DeathInRoutesTest, Freshening) {
  debugMode();
  std::string active = Tables(*shm).routes;
  constexpr size_t kSize = 16, kStatus = 12;
  for (size_t at = kStatus; at < active.size(); at += kSize) active[at] = 3;
  std::string before = Tables(*shm).routes;
  auto someActive = [&](const Tables& tables) {
    for (size_t at = 0; at < active.size(); at += kSize) {
      std::string route = tables.routes.substr(at, kSize);
      if (route != active.substr(at, kSize) && route != before.substr(at, kSize)) return false;
    }
    return tables.routes.size() == active.size();
  };
  expectSound([] { return freshenRouteTable(0, "--"); }, 0, {}, someActive);
  EXPECT_EQ(active, Tables(*shm).routes);
}

TEST_F(DeathInRoutesTest, ASlotThatIsInUseBeforeItIsLinkedIsFound) {
  expectFault(
      [] {
        RouteEntry& slot = shm->routes.slot[3];
        slot = {destinationOf(10), kMask, 1, 2, 1, SHM_NO_SLOT};
        shm->routes.slot[0].next = 3;
      },
      "reached from the head");
}

TEST_F(DeathInRoutesTest, ARouteThatIsMissingBetweenLeavingAndComingBackIsFound) {
  debugMode();
  expectFault(
      [] {
        RouteEntry route = routeNamed(21);
        deleteUserRoute(route.destination, kMask);
        route.gateway = 99;
        addUserRoute(&route);
      },
      "in between");
}

TEST_F(DeathInRoutes6Test, Adding) {
  for (uint8_t number : Numbers{30, 10}) {
    Route6Entry route = routeNamed6(number);
    expectSound([&] { return addUserRoute6(&route); });
  }
}

TEST_F(DeathInRoutes6Test, Deleting) {
  debugMode();
  for (uint8_t number : Numbers{20, 22, 21}) {
    Route6Entry route = routeNamed6(number);
    expectSound([&] { return deleteUserRoute6(route.destination, route.prefixLength); });
  }
  Route6Entry route = routeNamed6(9);
  expectSound([&] { return addUserRoute6(&route); });
}

TEST_F(DeathInRoutes6Test, Replacing) {
  debugMode();
  Route6Entry old = routeNamed6(20);
  for (uint8_t number : Numbers{20, 30}) {
    Route6Entry route = routeNamed6(number);
    memset(route.gateway, 7, sizeof route.gateway);
    expectSound([&] { return replaceUserRoute6(old.destination, old.prefixLength, &route, 0, "--"); });
  }
}

TEST_F(DeathInRoutes6Test, FresheningOneRoute) {
  debugMode();
  for (uint8_t number : Numbers{20, 22}) {
    Route6Entry route = routeNamed6(number);
    ASSERT_EQ(0, deleteUserRoute6(route.destination, route.prefixLength));
  }
  expectSound([] { return freshenRoute6Table(0, "--"); });
}

// A log of which readIndex is what full tells, as it stands after so many events.
void fillEvents(uint32_t full, uint32_t writeIndex) {
  for (int32_t i = 0; i < SHM_EVENTS; ++i) shm->eventLog.record[i] = {1000 + i, 3, 2, "a user"};
  shm->eventLog.eventLogFull = full;
  shm->eventLog.readIndex = full ? writeIndex : 0;
  shm->eventLog.writeIndex = writeIndex;
}

Stretch lastEvents() { return stretchOf(&shm->eventLog.record[SHM_EVENTS - 8], 8); }
int logOne() { return logEvent(4, 1, "somebody"); }

TEST_F(DeathInEventsTest, LoggingInAFreshLog) {
  wipeEventLog();
  expectSound(logOne);
}

TEST_F(DeathInEventsTest, LoggingTheEventThatFillsTheRing) {
  fillEvents(0, SHM_EVENTS - 1);
  expectSound(logOne, 0, {lastEvents()});
  EXPECT_EQ(1u, shm->eventLog.eventLogFull);
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
}

TEST_F(DeathInEventsTest, LoggingInAFullRing) {
  fillEvents(1, 3);
  Proof proof = expectSound(logOne);
  EXPECT_GT(proof.finished, 0);
  EXPECT_EQ(4u, shm->eventLog.readIndex);
}

TEST_F(DeathInEventsTest, LoggingInTheLastSlotOfAFullRing) {
  fillEvents(1, SHM_EVENTS - 1);
  expectSound(logOne, 0, {lastEvents()});
  EXPECT_EQ(0u, shm->eventLog.readIndex);
}

TEST_F(DeathInEventsTest, Wiping) {
  for (uint32_t full : {0u, 1u}) {
    fillEvents(full, 5);
    Proof proof = expectSound(wipeEventLog);
    EXPECT_GT(proof.finished, 0);
  }
}

// Empty, and then with the event that tells of it.
TEST_F(DeathInEventsTest, Clearing) {
  fillEvents(1, 5);
  auto empty = [](const Tables& tables) { return tables.events.empty(); };
  expectSound([] { return clearEventLog(1, "somebody"); }, 0, {}, empty);
}

TEST_F(DeathInEventsTest, TheOldestEventOverwrittenInPlaceIsFound) {
  fillEvents(1, 3);
  expectFault([] { shm->eventLog.record[3] = {9, 9, 9, "somebody else"}; }, "in between");
}

TEST_F(DeathInEventsTest, IndicesThatGoOnOneByOneAreFound) {
  fillEvents(1, 3);
  expectFault(
      [] {
        ++shm->eventLog.readIndex;
        keepOrder();
        ++shm->eventLog.writeIndex;
        keepOrder();
      },
      "event:");
}

}  // namespace
}  // namespace kestrove::testing
