// The sorted list by itself, on a table that can be drawn on a napkin.
#include "net/routes/sorted_list.h"

#include <gmock/gmock.h>

#include <algorithm>
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
  SortedList<ToyOrder<Slots, EmptyHead>> list() { return {head, slot, hint, {}}; }

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
  uint32_t hint = kNone;
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

TEST(SortedList, LongWalksGoOnFromTheHintWithTheSameAnswers) {
  LongTable table;
  for (int key = 0; key < 190; ++key) EXPECT_TRUE(table.add(2 * key));
  EXPECT_EQ(188u, table.hint);
  for (int key = 0; key < 189; ++key) EXPECT_EQ(2 * key + 2, table.keyAfter(2 * key));
  for (int key = 189; key > 0; --key) EXPECT_NE(nullptr, table.find(2 * key));
  EXPECT_EQ(nullptr, table.find(151));
}

TEST(SortedList, AHintThatIsNoGoodIsNotFollowed) {
  LongTable table;
  for (int key = 0; key < 190; ++key) table.add(key);
  for (uint32_t hint : {0u, 5u, 120u, 199u, 200u, 0x80000000u, kNone}) {
    table.hint = hint;
    EXPECT_EQ(101, table.keyAfter(100));
    table.hint = hint;
    EXPECT_EQ(100, table.find(100)->key);
  }
}

TEST(SortedList, AWholeTableIsWalkedToItsEnd) {
  LongTable table;
  for (int key = 0; key < 200; ++key) EXPECT_TRUE(table.add(key));
  table.hint = 1;
  EXPECT_EQ(199, table.find(199)->key);
  EXPECT_EQ(-1, table.keyAfter(199));
  EXPECT_EQ(200u, table.keys().size());
}

}  // namespace
}  // namespace kestrove::testing
