// SPDX-License-Identifier: Apache-2.0
// The sorted list by itself, on a table that can be drawn on a napkin.
#include "net/routes/sorted_list.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Toy {
  int key;
  char colour;
  uint32_t inUse;
  uint32_t next;
};

struct NoNotes {
  void linking(uint32_t) {}
  void unlinking(uint32_t) {}
  void swapping(uint32_t, uint32_t) {}
  void done() {}
};

// Ascending keys.
template <uint32_t Slots, uint32_t EmptyHead>
struct ToyOrder {
  using Record = Toy;
  using Notes = NoNotes;
  static constexpr uint32_t kSlots = Slots;
  static constexpr uint32_t kEmptyHead = EmptyHead;
  static bool before(const Toy& a, const Toy& b) { return a.key < b.key; }
  static bool same(const Toy& a, const Toy& b) { return a.key == b.key; }
};

constexpr uint32_t kNone = SHM_NO_SLOT;

template <uint32_t Slots, uint32_t EmptyHead>
struct ToyTable {
  ToyTable() {
    for (Toy& toy : slot) toy = {0, ' ', kNone, kNone};
  }
  using List = SortedList<ToyOrder<Slots, EmptyHead>>;
  List list() { return {head, slot, memory, {}}; }

  bool add(int key, char colour = 'w') { return list().insert({key, colour, 77, 77}) != nullptr; }
  bool remove(int key) { return list().unlink({key, ' ', 0, 0}); }
  const Toy* find(int key) { return list().find({key, ' ', 0, 0}); }
  const Toy* after(int key) { return list().next({key, ' ', 0, 0}); }
  int keyAfter(int key) {
    const Toy* toy = after(key);
    return toy ? toy->key : -1;
  }
  std::vector<int> keys() {
    std::vector<int> keys;
    for (const Toy* toy = list().first(); toy && keys.size() <= Slots; toy = list().next(*toy))
      keys.push_back(toy->key);
    return keys;
  }
  std::vector<int> slotKeys() {
    std::vector<int> keys;
    for (const Toy& toy : slot) keys.push_back(toy.inUse == 1 ? toy.key : -1);
    return keys;
  }

  uint32_t head = 0;
  Toy slot[Slots];
  typename List::Memory memory;
};

using ZeroTable = ToyTable<4, 0>;
using OnesTable = ToyTable<4, kNone>;

TEST(SortedList, AnyOrderOfAddingGivesTheOrderOfKeys) {
  int keys[] = {1, 2, 3, 4};
  do {
    ZeroTable table;
    for (int key : keys) EXPECT_TRUE(table.add(key));
    EXPECT_THAT(table.keys(), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(table.slotKeys(), ElementsAre(keys[0], keys[1], keys[2], keys[3]));
  } while (std::next_permutation(std::begin(keys), std::end(keys)));
}

TEST(SortedList, TheRecordIsCopiedAndThreaded) {
  ZeroTable table;
  table.add(5, 'r');
  EXPECT_EQ('r', table.slot[0].colour);
  EXPECT_EQ(1u, table.slot[0].inUse);
  EXPECT_EQ(kNone, table.slot[0].next);
  table.add(4, 'g');
  EXPECT_EQ('g', table.slot[1].colour);
  EXPECT_EQ(1u, table.head);
  EXPECT_EQ(0u, table.slot[1].next);
}

TEST(SortedList, AnEmptyListStartsWhereTheHeadPoints) {
  ZeroTable table;
  table.head = 2;
  EXPECT_TRUE(table.add(1));
  EXPECT_EQ(2u, table.head);
  EXPECT_THAT(table.slotKeys(), ElementsAre(-1, -1, 1, -1));
  EXPECT_TRUE(table.add(2));
  EXPECT_THAT(table.slotKeys(), ElementsAre(2, -1, 1, -1));
}

TEST(SortedList, AHeadOutsideTheTableIsAnEmptyList) {
  for (uint32_t head : {4u, 1000u, kNone}) {
    OnesTable table;
    table.head = head;
    EXPECT_THAT(table.keys(), IsEmpty());
    EXPECT_TRUE(table.add(7));
    EXPECT_EQ(0u, table.head);
    EXPECT_THAT(table.keys(), ElementsAre(7));
  }
}

TEST(SortedList, AHeadSlotThatIsNotInUseIsAnEmptyList) {
  ZeroTable table;
  table.add(1);
  table.add(2);
  table.slot[0].inUse = 0;
  EXPECT_THAT(table.keys(), IsEmpty());
  EXPECT_EQ(nullptr, table.find(2));
}

TEST(SortedList, TheLowestFreeSlotIsTaken) {
  ZeroTable table;
  for (int key : {1, 2, 3, 4}) table.add(key);
  table.remove(3);
  table.remove(2);
  EXPECT_TRUE(table.add(9));
  EXPECT_THAT(table.slotKeys(), ElementsAre(1, 9, -1, 4));
  EXPECT_THAT(table.keys(), ElementsAre(1, 4, 9));
}

TEST(SortedList, AFullTableIsFullForAKnownKeyToo) {
  ZeroTable table;
  for (int key : {1, 2, 3, 4}) table.add(key);
  for (int key : {5, 1}) {
    shm_errno = 0;
    EXPECT_FALSE(table.add(key));
    EXPECT_EQ(uint32_t{SHM_EFULL}, shm_errno);
  }
}

TEST(SortedList, AKnownKeyIsRefusedWhereverItStands) {
  ZeroTable table;
  for (int key : {1, 2, 3}) table.add(key);
  for (int key : {1, 2, 3}) {
    shm_errno = 0;
    EXPECT_FALSE(table.add(key));
    EXPECT_EQ(uint32_t{SHM_EEXIST}, shm_errno);
  }
  EXPECT_THAT(table.slotKeys(), ElementsAre(1, 2, 3, -1));
}

TEST(SortedList, FirstMiddleAndLastCanLeave) {
  for (int key : {1, 2, 3}) {
    ZeroTable table;
    for (int each : {1, 2, 3}) table.add(each);
    EXPECT_TRUE(table.remove(key));
    EXPECT_EQ(2u, table.keys().size());
    EXPECT_EQ(nullptr, table.find(key));
    Toy& left = table.slot[key - 1];
    EXPECT_EQ(kNone, left.inUse);
    EXPECT_EQ(key, left.key) << "only the in-use word changes";
  }
}

TEST(SortedList, WhatIsNotThereCannotLeave) {
  ZeroTable table;
  table.add(2);
  for (int key : {1, 3}) {
    shm_errno = 0;
    EXPECT_FALSE(table.remove(key));
    EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  }
}

// Whatever slots are free, and in whatever order the records came.
template <uint32_t EmptyHead>
void expectReplacingIsUnlinkingAndInserting() {
  constexpr uint32_t kSlots = 4;
  std::mt19937 random(7);
  auto draw = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  for (int round = 0; round < 20000; ++round) {
    ToyTable<kSlots, EmptyHead> one;
    for (int step = draw(12); step > 0; --step) draw(3) ? one.add(draw(6)) : one.remove(draw(6));
    ToyTable<kSlots, EmptyHead> other = one;
    int old = draw(6);
    Toy record = {draw(6), 'n', 55, 55};
    if (!one.find(old)) continue;
    shm_errno = 99;
    const Toy* replaced = one.list().replace({old, ' ', 0, 0}, record);
    uint32_t code = shm_errno;
    shm_errno = 99;
    other.remove(old);
    const Toy* inserted = other.list().insert(record);
    ASSERT_EQ(shm_errno, code);
    ASSERT_EQ(inserted == nullptr, replaced == nullptr);
    if (inserted) {
      ASSERT_EQ(inserted - other.slot, replaced - one.slot);
    }
    ASSERT_EQ(other.head, one.head);
    ASSERT_EQ(other.slotKeys(), one.slotKeys());
    ASSERT_EQ(other.keys(), one.keys());
    for (uint32_t i = 0; i < kSlots; ++i) {
      if (other.slot[i].inUse != 1) continue;
      ASSERT_EQ(other.slot[i].next, one.slot[i].next) << round;
      ASSERT_EQ(other.slot[i].colour, one.slot[i].colour) << round;
    }
  }
}

TEST(SortedList, ReplacingEndsAsUnlinkingAndInserting) {
  expectReplacingIsUnlinkingAndInserting<0>();
  expectReplacingIsUnlinkingAndInserting<kNone>();
}

TEST(SortedList, TheLastToLeaveLeavesTheMarkOfTheOrder) {
  ZeroTable zero;
  zero.head = 3;
  zero.add(1);
  zero.remove(1);
  EXPECT_EQ(0u, zero.head);
  OnesTable ones;
  ones.add(1);
  ones.remove(1);
  EXPECT_EQ(kNone, ones.head);
}

TEST(SortedList, NextFollowsTheFirstAtOrAfterTheKey) {
  ZeroTable table;
  for (int key : {10, 20, 30}) table.add(key);
  EXPECT_EQ(20, table.keyAfter(10));
  EXPECT_EQ(30, table.keyAfter(20));
  EXPECT_EQ(-1, table.keyAfter(30));
  EXPECT_EQ(20, table.keyAfter(5)) << "10 stands where 5 would, 20 follows it";
  EXPECT_EQ(30, table.keyAfter(15));
  EXPECT_EQ(-1, table.keyAfter(25));
  EXPECT_EQ(-1, table.keyAfter(35));
}

TEST(SortedList, NextPassesASlotWhoseSuccessorIsNotInUse) {
  ZeroTable table;
  for (int key : {10, 20, 30}) table.add(key);
  table.slot[2].inUse = 0;
  EXPECT_EQ(20, table.keyAfter(10));
  EXPECT_EQ(-1, table.keyAfter(20));
}

// Every walk over every table whose links are any of: a slot, none, out of range. Only that they end is asked here,
// and that nothing outside the table is written.
TEST(SortedList, DamagedLinksEndEveryWalk) {
  const uint32_t links[] = {0, 1, 2, 3, 4, 0x80000000u, kNone};
  for (uint32_t a : links)
    for (uint32_t b : links)
      for (uint32_t c : links)
        for (uint32_t head : links) {
          ZeroTable damaged;
          for (int key : {10, 20, 30}) damaged.add(key);
          damaged.slot[0].next = a;
          damaged.slot[1].next = b;
          damaged.slot[2].next = c;
          damaged.head = head;
          for (int key : {5, 10, 15, 20, 30, 40}) {
            ZeroTable table = damaged;
            table.find(key);
            table.after(key);
            table.add(key);
            table.remove(key);
            EXPECT_LE(table.keys().size(), 5u);
          }
        }
}

TEST(SortedList, ALoopRefusesWhatItHasNoPlaceFor) {
  ZeroTable table;
  for (int key : {10, 20, 30}) table.add(key);
  table.slot[2].next = 0;
  shm_errno = 0;
  EXPECT_FALSE(table.add(40));
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
  EXPECT_TRUE(table.add(15)) << "before the loop closes there is a place";
}

TEST(SortedList, ABrokenLinkIsMendedByAdding) {
  ZeroTable table;
  for (int key : {10, 20, 30}) table.add(key);
  table.slot[0].next = 99;
  EXPECT_TRUE(table.add(40));
  EXPECT_THAT(table.keys(), ElementsAre(10, 40));
}

TEST(SortedList, AFreeSlotInTheChainEndsIt) {
  ZeroTable table;
  for (int key : {10, 20, 30}) table.add(key);
  table.slot[1].inUse = kNone;
  EXPECT_TRUE(table.add(40));
  EXPECT_THAT(table.keys(), ElementsAre(10, 40));
  EXPECT_EQ(1, table.slot[1].next == kNone);
}

using LongTable = ToyTable<200, 0>;

std::vector<int> shuffled(int count) {
  std::vector<int> keys(static_cast<size_t>(count));
  std::iota(keys.begin(), keys.end(), 0);
  std::shuffle(keys.begin(), keys.end(), std::minstd_rand());
  return keys;
}

TEST(SortedList, ALongListIsInOrderWhateverTheOrderOfAdding) {
  LongTable table;
  for (int key : shuffled(200)) EXPECT_TRUE(table.add(key));
  std::vector<int> keys = table.keys();
  EXPECT_EQ(200u, keys.size());
  EXPECT_TRUE(std::ranges::is_sorted(keys));
  EXPECT_EQ(shuffled(200), table.slotKeys()) << "each took the lowest free slot";
}

TEST(SortedList, EveryKeyOfALongListIsFoundAndLeavesFromWhereverItStands) {
  LongTable table;
  for (int key : shuffled(200)) table.add(2 * key);
  for (int key = 0; key < 199; ++key) EXPECT_EQ(2 * key + 2, table.keyAfter(2 * key));
  for (int key : shuffled(200)) {
    EXPECT_EQ(nullptr, table.find(2 * key + 1));
    EXPECT_NE(nullptr, table.find(2 * key));
    EXPECT_TRUE(table.remove(2 * key));
    EXPECT_EQ(nullptr, table.find(2 * key));
  }
  EXPECT_THAT(table.keys(), IsEmpty());
}

// Two processes at one table: each remembers only what itself has seen.
struct TwoProcesses {
  LongTable table;
  LongTable::List::Memory other;
  void changeOver() { std::swap(table.memory, other); }
};

TEST(SortedList, WhatAnotherProcessAddedAndTookIsNoticed) {
  TwoProcesses both;
  LongTable& table = both.table;
  for (int key : shuffled(100)) table.add(2 * key);
  both.changeOver();
  for (int key : shuffled(50)) {
    EXPECT_TRUE(table.remove(4 * key));
    EXPECT_TRUE(table.add(4 * key + 1));
    both.changeOver();
    EXPECT_EQ(nullptr, table.find(4 * key));
    EXPECT_NE(nullptr, table.find(4 * key + 1));
    EXPECT_EQ(4 * key + 2, table.keyAfter(4 * key + 1));
  }
  EXPECT_EQ(100u, table.keys().size());
}

TEST(SortedList, ASlotThatAnotherProcessFreedIsTheLowestAgain) {
  TwoProcesses both;
  LongTable& table = both.table;
  for (int key = 0; key < 150; ++key) table.add(key);
  for (int freed : {140, 77, 16, 15, 0, 149}) {
    both.changeOver();
    EXPECT_TRUE(table.remove(freed));
    both.changeOver();
    EXPECT_TRUE(table.add(freed));
    EXPECT_EQ(freed, table.slot[freed].key);
  }
  EXPECT_EQ(150u, table.keys().size());
}

TEST(SortedList, ASlotThatAnotherProcessUsedAgainIsNoPlaceToStartFrom) {
  TwoProcesses both;
  LongTable& table = both.table;
  for (int key = 0; key < 100; ++key) table.add(10 * key);
  both.changeOver();
  for (int key = 30; key < 60; ++key) table.remove(10 * key);
  for (int key = 30; key < 60; ++key) table.add(10 * (key - 30) + 5);
  both.changeOver();
  EXPECT_TRUE(table.add(502));
  EXPECT_TRUE(table.add(17));
  EXPECT_EQ(600, table.keyAfter(502));
  EXPECT_EQ(20, table.keyAfter(17));
  EXPECT_TRUE(std::ranges::is_sorted(table.keys()));
}

TEST(SortedList, ManyTurnsOfTwoProcessesLeaveAListInOrder) {
  TwoProcesses both;
  LongTable& table = both.table;
  std::minstd_rand random;
  std::set<int> model;
  for (int i = 0; i < 20000; ++i) {
    int key = static_cast<int>(random() % 300);
    bool remove = random() % 2 == 0;
    if (remove) {
      ASSERT_EQ(model.erase(key) != 0, table.remove(key)) << "operation " << i;
    } else if (model.size() < 190) {
      ASSERT_EQ(model.insert(key).second, table.add(key)) << "operation " << i;
    }
    if (i % 500 == 0) {
      ASSERT_EQ(std::vector<int>(model.begin(), model.end()), table.keys());
    }
    if (random() % 10 == 0) both.changeOver();
  }
}

TEST(SortedList, AWholeTableIsWalkedToItsEnd) {
  LongTable table;
  for (int key = 0; key < 200; ++key) EXPECT_TRUE(table.add(key));
  table.memory = {};
  EXPECT_EQ(199, table.find(199)->key);
  EXPECT_EQ(-1, table.keyAfter(199));
  EXPECT_EQ(200u, table.keys().size());
}

}  // namespace
}  // namespace kestrove::testing
