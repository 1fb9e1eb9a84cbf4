// SPDX-License-Identifier: Apache-2.0
// What the IPv4 and the IPv6 route table share: each test runs on both.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/net/routes/routes_fixture.h"
#include "tests/support/save_counter.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <typename Family>
class RouteTable : public StoreTest {
 protected:
  using Record = typename Family::Record;

  void SetUp() override {
    StoreTest::SetUp();
    unlink(kConfigFile);
  }
  void inState(uint32_t state) { shm->operationalState = state; }
  static int add(uint32_t rank, uint32_t status = kDisabled) {
    Record route = Family::route(rank, status);
    return Family::add(&route);
  }
  static int remove(uint32_t rank) { return Family::remove(Family::route(rank)); }
  static int replace(uint32_t oldRank, uint32_t rank, uint32_t status = kDisabled) {
    Record route = Family::route(rank, status);
    return Family::replace(Family::route(oldRank), &route);
  }
  static Record get(uint32_t rank) {
    Record out = {};
    EXPECT_EQ(0, Family::get(Family::route(rank), &out));
    return out;
  }
  static int nextRank(uint32_t rank) {
    Record out = {};
    return Family::next(Family::route(rank), &out) == 0 ? static_cast<int>(Family::rank(out)) : -1;
  }
  // Ranks by slot, of the first few slots.
  static std::vector<int> slots(size_t count) {
    std::vector<int> ranks;
    for (size_t i = 0; i < count; ++i) {
      const Record& slot = Family::slots()[i];
      ranks.push_back(slot.inUse == 1 ? static_cast<int>(Family::rank(slot)) : -1);
    }
    return ranks;
  }
  bool saved() { return fileExists(kConfigFile); }
  bool locked() { return shm_lock_count != 0; }
};

using Families = ::testing::Types<Family4, Family6>;
TYPED_TEST_SUITE(RouteTable, Families);

TYPED_TEST(RouteTable, RoutesAddedInAnyOrderWalkInOrder) {
  this->inState(SHM_STATE_CONFIGURATION);
  for (uint32_t rank : {3u, 1u, 4u, 0u, 2u}) EXPECT_EQ(0, this->add(rank));
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(this->slots(6), ElementsAre(3, 1, 4, 0, 2, -1));
}

TYPED_TEST(RouteTable, TheStoredRouteIsTheCallers) {
  this->inState(SHM_STATE_CONFIGURATION);
  typename TypeParam::Record route = TypeParam::route(7, kActive);
  route.inUse = 55;
  route.next = 66;
  EXPECT_EQ(0, TypeParam::add(&route));
  typename TypeParam::Record expected = route;
  expected.inUse = 1;
  expected.next = SHM_NO_SLOT;
  EXPECT_EQ(0, memcmp(&expected, &TypeParam::slots()[0], sizeof expected));
}

TYPED_TEST(RouteTable, CallersGetTheRouteWithoutItsLinks) {
  this->inState(SHM_STATE_CONFIGURATION);
  this->add(1, kActive);
  this->add(2, kDisabled);
  typename TypeParam::Record out = {};
  const auto reset = [&] { memset(&out, 0xAB, sizeof out); };
  reset();
  EXPECT_EQ(0, TypeParam::first(&out));
  EXPECT_EQ(1u, TypeParam::rank(out));
  EXPECT_EQ(kActive, out.status);
  EXPECT_EQ(0xABABABABu, out.inUse);
  EXPECT_EQ(0xABABABABu, out.next);
  reset();
  EXPECT_EQ(0, TypeParam::next(TypeParam::route(1), &out));
  EXPECT_EQ(2u, TypeParam::rank(out));
  EXPECT_EQ(0xABABABABu, out.inUse);
  reset();
  EXPECT_EQ(0, TypeParam::get(TypeParam::route(2), &out));
  EXPECT_EQ(kDisabled, out.status);
  EXPECT_EQ(0xABABABABu, out.next);
}

TYPED_TEST(RouteTable, AnEmptyTableHasNoRoutes) {
  typename TypeParam::Record out = {};
  EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::first(&out));
  EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::get(TypeParam::route(1), &out));
  EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::next(TypeParam::route(1), &out));
  EXPECT_FAILS_WITH(SHM_ENOENT, this->remove(1));
  EXPECT_FAILS_WITH(SHM_ENOENT, this->replace(1, 2));
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, WhatIsMissingIsNotFound) {
  this->inState(SHM_STATE_DEBUG);
  this->add(1);
  this->add(3);
  typename TypeParam::Record out = {};
  for (uint32_t rank : {0u, 2u, 4u}) {
    EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::get(TypeParam::route(rank), &out));
    EXPECT_FAILS_WITH(SHM_ENOENT, this->remove(rank));
    EXPECT_FAILS_WITH(SHM_ENOENT, this->replace(rank, 9));
  }
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(1, 3));
}

TYPED_TEST(RouteTable, NextFollowsTheFirstRouteAtOrAfterTheKey) {
  this->inState(SHM_STATE_CONFIGURATION);
  for (uint32_t rank : {10u, 20u, 30u}) this->add(rank);
  EXPECT_EQ(20, this->nextRank(10));
  EXPECT_EQ(30, this->nextRank(20));
  EXPECT_EQ(20, this->nextRank(5)) << "10 stands at the place of 5, 20 follows it";
  EXPECT_EQ(30, this->nextRank(15));
  typename TypeParam::Record out = {};
  for (uint32_t rank : {25u, 30u, 35u}) EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::next(TypeParam::route(rank), &out));
}

TYPED_TEST(RouteTable, AKeyIsInTheTableOnce) {
  this->inState(SHM_STATE_CONFIGURATION);
  for (uint32_t rank : {1u, 2u, 3u}) this->add(rank);
  for (uint32_t rank : {1u, 2u, 3u}) EXPECT_FAILS_WITH(SHM_EEXIST, this->add(rank, kActive));
  EXPECT_EQ(kDisabled, this->get(2).status);
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, HoldsAsManyRoutesAsItHasSlots) {
  this->inState(SHM_STATE_CONFIGURATION);
  for (uint32_t rank = 0; rank < SHM_ROUTES; ++rank) ASSERT_EQ(0, this->add(rank));
  EXPECT_FAILS_WITH(SHM_EFULL, this->add(SHM_ROUTES));
  EXPECT_FAILS_WITH(SHM_EFULL, this->add(5));
  std::vector<uint32_t> ranks = walk<TypeParam>();
  ASSERT_EQ(size_t{SHM_ROUTES}, ranks.size());
  EXPECT_TRUE(std::is_sorted(ranks.begin(), ranks.end()));
  EXPECT_EQ(SHM_ROUTES - 1u, ranks.back());
}

TYPED_TEST(RouteTable, AFreedSlotIsTakenAgainTheLowestFirst) {
  this->inState(SHM_STATE_DEBUG);
  for (uint32_t rank : {0u, 1u, 2u, 3u}) this->add(rank);
  this->remove(2);
  this->remove(0);
  this->add(9);
  EXPECT_THAT(this->slots(4), ElementsAre(9, 1, -1, 3));
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(1, 3, 9));
}

TYPED_TEST(RouteTable, DeletingTheOnlyRouteLeavesAnEmptyTable) {
  this->inState(SHM_STATE_DEBUG);
  this->add(1);
  EXPECT_EQ(0, this->remove(1));
  EXPECT_EQ(TypeParam::kEmptyHead, TypeParam::head());
  typename TypeParam::Record out = {};
  EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::first(&out));
  EXPECT_EQ(0, this->add(2));
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(2));
  EXPECT_EQ(0u, TypeParam::head());
}

TYPED_TEST(RouteTable, AnEmptyTableStartsInItsHeadSlot) {
  this->inState(SHM_STATE_CONFIGURATION);
  TypeParam::head() = 5;
  EXPECT_EQ(0, this->add(1));
  EXPECT_EQ(5u, TypeParam::head());
  EXPECT_EQ(1u, TypeParam::slots()[5].inUse);
  EXPECT_EQ(SHM_NO_SLOT, TypeParam::slots()[0].inUse);
}

TYPED_TEST(RouteTable, AHeadOutsideTheTableMeansAnEmptyOne) {
  this->inState(SHM_STATE_CONFIGURATION);
  for (uint32_t head : {uint32_t{SHM_ROUTES}, 0x80000000u, SHM_NO_SLOT}) {
    TypeParam::head() = head;
    typename TypeParam::Record out = {};
    EXPECT_FAILS_WITH(SHM_ENOENT, TypeParam::first(&out));
  }
  EXPECT_EQ(0, this->add(1));
  EXPECT_EQ(0u, TypeParam::head());
}

TYPED_TEST(RouteTable, AFullTableWithADamagedHeadIsStillFull) {
  this->inState(SHM_STATE_CONFIGURATION);
  for (uint32_t rank = 0; rank < SHM_ROUTES; ++rank) this->add(rank);
  TypeParam::head() = 5000;
  EXPECT_FAILS_WITH(SHM_EFULL, this->add(SHM_ROUTES));
}

TYPED_TEST(RouteTable, ConfigurationModeStoresAndNothingElse) {
  this->inState(SHM_STATE_CONFIGURATION);
  EXPECT_EQ(0, this->add(1, kActive));
  EXPECT_EQ(kActive, this->get(1).status) << "no local gateway is asked for";
  EXPECT_FALSE(this->saved());
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, ConfigurationModeRefusesToDeleteOrReplaceWithoutACode) {
  this->inState(SHM_STATE_CONFIGURATION);
  this->add(1);
  EXPECT_FAILS_WITH(99, this->remove(1));
  EXPECT_FAILS_WITH(99, this->replace(1, 2));
  EXPECT_FALSE(this->locked());
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(1));
}

TYPED_TEST(RouteTable, ConfigurationModeFreshensNothing) {
  this->inState(SHM_STATE_CONFIGURATION);
  this->add(1, kDisabled);
  shm_errno = 99;
  EXPECT_EQ(0, TypeParam::freshen());
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_EQ(kDisabled, this->get(1).status);
  EXPECT_FALSE(this->saved());
}

TYPED_TEST(RouteTable, DebugModeSavesAndLeavesTheKernelAlone) {
  this->inState(SHM_STATE_DEBUG);
  EXPECT_EQ(0, this->add(1, kActive));
  EXPECT_EQ(kActive, this->get(1).status);
  EXPECT_TRUE(this->saved());
  EXPECT_EQ(0, this->replace(1, 2, kActive));
  EXPECT_EQ(kActive, this->get(2).status);
  EXPECT_EQ(0, this->remove(2));
  EXPECT_THAT(walk<TypeParam>(), IsEmpty());
}

TYPED_TEST(RouteTable, ADisabledRouteIsStoredAndSaved) {
  EXPECT_EQ(0, this->add(1, kDisabled));
  EXPECT_EQ(kDisabled, this->get(1).status);
  EXPECT_TRUE(this->saved());
  EXPECT_EQ(0, this->remove(1));
}

TYPED_TEST(RouteTable, ARouteWithoutALocalGatewayIsKeptAsInactive) {
  EXPECT_EQ(0, this->add(1, kActive));
  EXPECT_EQ(kInactive, this->get(1).status);
  EXPECT_TRUE(this->saved());
}

TYPED_TEST(RouteTable, OtherStatusWordsAreStoredAsTheyAre) {
  for (uint32_t status : {0u, 1u, 4u, 0xFFFFFFFFu}) {
    EXPECT_EQ(0, this->add(status & 0xFF, status));
    EXPECT_EQ(status, this->get(status & 0xFF).status);
  }
}

TYPED_TEST(RouteTable, AnInactiveRouteLeavesWithoutTheKernel) {
  this->add(1, kActive);
  EXPECT_EQ(0, this->remove(1));
}

TYPED_TEST(RouteTable, ARouteThatTheKernelDoesNotHaveCannotBeDeleted) {
  this->inState(SHM_STATE_DEBUG);
  this->add(1, kActive);
  this->inState(SHM_STATE_OPERATIONAL);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, this->remove(1));
  EXPECT_EQ(kInactive, this->get(1).status);
  EXPECT_FALSE(this->locked());
  EXPECT_EQ(0, this->remove(1)) << "inactive now, so the kernel is not asked";
}

TYPED_TEST(RouteTable, ARouteThatTheKernelDoesNotHaveCannotBeReplaced) {
  this->inState(SHM_STATE_DEBUG);
  this->add(1, kActive);
  this->inState(SHM_STATE_OPERATIONAL);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, this->replace(1, 2));
  EXPECT_EQ(kInactive, this->get(1).status);
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(1));
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, ReplacingPutsTheNewRouteInItsPlace) {
  for (uint32_t rank : {1u, 2u, 3u}) this->add(rank);
  EXPECT_EQ(0, this->replace(2, 5));
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(1, 3, 5));
  EXPECT_THAT(this->slots(3), ElementsAre(1, 5, 3));
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, ReplacingByAKnownKeyLosesTheOldRoute) {
  this->add(1);
  this->add(2);
  EXPECT_FAILS_WITH(SHM_EEXIST, this->replace(1, 2));
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(2));
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, ReplacingByItselfChangesTheRoute) {
  this->add(1, kDisabled);
  EXPECT_EQ(0, this->replace(1, 1, kInactive));
  EXPECT_EQ(kInactive, this->get(1).status);
}

TYPED_TEST(RouteTable, FresheningAnEmptyTableSavesNothing) {
  shm_errno = 99;
  EXPECT_EQ(0, TypeParam::freshen());
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_FALSE(this->saved());
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, FresheningReenablesDisabledRoutes) {
  for (uint32_t rank : {1u, 2u, 3u}) this->add(rank, kDisabled);
  this->inState(SHM_STATE_DEBUG);
  shm_errno = 99;
  EXPECT_EQ(0, TypeParam::freshen());
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_EQ(kActive, this->get(1).status);
  EXPECT_EQ(kActive, this->get(3).status);
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(1, 2, 3));
  EXPECT_FALSE(this->locked());
}

TYPED_TEST(RouteTable, FresheningMovesEachRouteToTheLowestFreeSlot) {
  this->inState(SHM_STATE_DEBUG);
  for (uint32_t rank = 0; rank < 6; ++rank) this->add(rank);
  for (uint32_t rank : {0u, 1u, 2u}) this->remove(rank);
  EXPECT_THAT(this->slots(6), ElementsAre(-1, -1, -1, 3, 4, 5));
  TypeParam::freshen();
  EXPECT_THAT(this->slots(6), ElementsAre(3, 4, 5, -1, -1, -1));
  EXPECT_THAT(walk<TypeParam>(), ElementsAre(3, 4, 5));
}

TYPED_TEST(RouteTable, EachOperationSavesOnce) {
  this->inState(SHM_STATE_DEBUG);
  SaveCounter saves;
  for (uint32_t rank = 0; rank < 5; ++rank) this->add(rank);
  EXPECT_EQ(5, saves.count());
  this->replace(0, 9);
  EXPECT_EQ(1, saves.count());
  this->replace(1, 9);
  EXPECT_EQ(1, saves.count()) << "the old route is gone although the new one is refused";
  this->remove(2);
  EXPECT_EQ(1, saves.count());
  TypeParam::freshen();
  EXPECT_EQ(1, saves.count());
}

TYPED_TEST(RouteTable, RefusalsSaveNothing) {
  this->inState(SHM_STATE_DEBUG);
  this->add(1, kActive);
  SaveCounter saves;
  this->add(1);
  this->remove(2);
  this->replace(2, 3);
  this->inState(SHM_STATE_OPERATIONAL);
  this->remove(1);
  EXPECT_EQ(0, saves.count());
  EXPECT_EQ(kInactive, this->get(1).status) << "the kernel's refusal is noted in the store alone";
}

// What the file holds is the state of the last save by the letter: a route that the kernel refuses afterwards is
// inactive in the store alone.
TYPED_TEST(RouteTable, FresheningSavesWhereItsLastSaveWouldStand) {
  this->inState(SHM_STATE_DEBUG);
  this->add(0, kDisabled);
  this->add(1, kActive);
  this->inState(SHM_STATE_OPERATIONAL);
  SaveCounter saves;
  TypeParam::freshen();
  EXPECT_EQ(1, saves.count());
  EXPECT_EQ(kInactive, this->get(0).status) << "no local gateway";
  EXPECT_EQ(kInactive, this->get(1).status) << "not in the kernel";
  dropStore();
  makeStore();
  ASSERT_EQ(0, load_shared_memory(kConfigFile));
  EXPECT_EQ(kInactive, this->get(0).status);
  EXPECT_EQ(kActive, this->get(1).status);
}

TYPED_TEST(RouteTable, AFailedSaveLeavesTheResult) {
  strcpy(shm->config.configFileName, "/no/such/folder/file");
  shm_errno = 99;
  EXPECT_EQ(0, this->add(1));
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
  shm_errno = 99;
  EXPECT_EQ(0, this->replace(1, 2));
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
  this->add(3);
  EXPECT_FAILS_WITH(SHM_EEXIST, this->replace(3, 2));
  EXPECT_EQ(0, TypeParam::freshen());
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno) << "outlives the code of the walk";
  shm_errno = 99;
  EXPECT_EQ(0, this->remove(2));
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
}

TYPED_TEST(RouteTable, WithoutAStoreNothingWorksButFreshening) {
  dropStore();
  typename TypeParam::Record out = {};
  EXPECT_FAILS_WITH(SHM_EATTACH, this->add(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, this->remove(1));
  EXPECT_FAILS_WITH(SHM_EATTACH, this->replace(1, 2));
  EXPECT_FAILS_WITH(SHM_EATTACH, TypeParam::first(&out));
  EXPECT_FAILS_WITH(SHM_EATTACH, TypeParam::get(TypeParam::route(1), &out));
  EXPECT_FAILS_WITH(SHM_EATTACH, TypeParam::next(TypeParam::route(1), &out));
  EXPECT_EQ(0, TypeParam::freshen());
}

TYPED_TEST(RouteTable, NullIsRefused) {
  typename TypeParam::Record out = {};
  EXPECT_FAILS_WITH(SHM_EINVAL, TypeParam::add(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, TypeParam::replace(out, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, TypeParam::first(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, TypeParam::get(out, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, TypeParam::next(out, nullptr));
  EXPECT_FALSE(this->locked());
}

}  // namespace
}  // namespace kestrove::testing
