// SPDX-License-Identifier: Apache-2.0
// A table of slots threaded into one sorted list.
//
// Order names the record and the order:
//   using Record             a plain record with the words inUse and next
//   kSlots                   how many slots the table has
//   kEmptyHead               what head becomes when the last record leaves
//   before(a, b), same(a, b) list order and equality of the keys
//   Notes                    told which slots change before they do: linking, unlinking, swapping, done
//
// A record is whole before the chain leads to it, and stays in its slot until the chain has left it: a death between
// two stores is made good by asking which of the slots named last the chain reaches.
//
// The table is shared with other programs, so no slot number in it is trusted: one outside the table ends the list, and
// no walk takes more steps than there are slots.
#pragma once

#include <stdint.h>

#include "kestrove/layout.h"
#include "net/routes/list_memory.h"
#include "store/fail.h"
#include "store/journal.h"

namespace kestrove {

template <typename Order>
class SortedList {
 public:
  using Record = typename Order::Record;
  using Notes = typename Order::Notes;

  using Memory = ListMemory<Order::kSlots>;

  // The memory is what the process keeps between calls, empty at first.
  SortedList(uint32_t& head, Record* slots, Memory& memory, Notes notes)
      : head_(head), slots_(slots), memory_(memory), notes_(notes) {}

  // Null when the list is empty.
  Record* first() { return at(firstSlot()); }

  // The record with that key, null when there is none.
  Record* find(const Record& key) {
    return walk(key, [&](const Record& slot) { return used(slot) && Order::same(slot, key); });
  }

  // The successor of the first record that stands at or after the key, null at the end. The key need not exist.
  Record* next(const Record& key) {
    Record* place =
        walk(key, [&](const Record& slot) { return used(slot) && !Order::before(slot, key) && usedSlot(slot.next); });
    return place ? at(place->next) : nullptr;
  }

  // Takes the lowest free slot for the record. Null with the code when there is none or the key exists.
  Record* insert(const Record& record) {
    Record* place = placeOf(record, nullptr);
    uint32_t free = lowestFree();  // behind the walk, for whose answers a processor need not wait here
    if (free == Order::kSlots) return refuse(SHM_EFULL);
    if (firstSlot() == kNone) return start(record, free);
    if (endless_) return refuse(SHM_ESYSTEM);
    if (taken(place, record)) return refuse(SHM_EEXIST);
    notes_.linking(free);
    link(free, record, place);
    notes_.done();
    return &slots_[free];
  }

  // Unlinks the record with that key and inserts another one, which is refused as by an insert of its own; then the old
  // one is gone all the same. At every instant one of the two is on the list: the new one takes another free slot
  // first, and moves where an insert would have put it. A full table has no such slot: there the record of a key is
  // written over, and a death can tear it, or lose the one that makes place for another key.
  Record* replace(const Record& key, const Record& record) {
    Record* old = walk(key, [&](const Record& slot) { return Order::same(slot, key); });
    uint32_t free = lowestFree();
    if (free == Order::kSlots && old && taken(old, record)) return writeOver(*old, record);
    Record* place = old && free != Order::kSlots ? placeOf(record, old) : nullptr;
    if (!old || free == Order::kSlots || endless_ || taken(place, record)) {
      unlink(key);
      return insert(record);
    }
    uint32_t left = slotOf(*old);
    swap(free, left, record, place);
    if (left < free) swap(left, free, slots_[free], placeOf(slots_[free], nullptr));
    return &slots_[left < free ? left : free];
  }

  // Takes the record with that key off the list. False with the code when there is none.
  bool unlink(const Record& key) {
    Record* record = walk(key, [&](const Record& slot) { return Order::same(slot, key); });
    if (!record) return refuse(SHM_ENOENT) != nullptr;
    notes_.unlinking(slotOf(*record));
    leave(*record);
    notes_.done();
    return true;
  }

 private:
  static constexpr uint32_t kNone = SHM_NO_SLOT;
  static constexpr uint32_t kUsed = 1;
  // A walk this short costs less than looking at the whole list anew.
  static constexpr uint32_t kShortWalk = 16;
  static constexpr int kBlock = 16;

  static bool used(const Record& slot) { return slot.inUse == kUsed; }
  bool usedSlot(uint32_t number) const { return number < Order::kSlots && used(slots_[number]); }
  uint32_t firstSlot() const { return usedSlot(head_) ? head_ : kNone; }
  Record* at(uint32_t number) { return number < Order::kSlots ? &slots_[number] : nullptr; }
  uint32_t slotOf(const Record& slot) const { return static_cast<uint32_t>(&slot - slots_); }
  uint32_t& previousLink() { return previous_ == kNone ? head_ : slots_[previous_].next; }

  static Record* refuse(int code) {
    fail(code);
    return nullptr;
  }

  static void fill(Record& slot, const Record& record, uint32_t next) {
    Record filled = record;
    filled.inUse = SHM_NO_SLOT;
    filled.next = next;
    slot = filled;
    keepOrder();
    slot.inUse = kUsed;
    keepOrder();
  }

  static Record* writeOver(Record& slot, const Record& record) {
    Record written = record;
    written.inUse = kUsed;
    written.next = slot.next;
    slot = written;
    return &slot;
  }

  // Where a record is to stand; behind the passed one when it has the same key. The list stays in order.
  Record* placeOf(const Record& record, const Record* passed) {
    return walk(record, [&](const Record& slot) {
      if (&slot == passed) return Order::before(record, slot);
      return !used(slot) || !Order::before(slot, record);
    });
  }

  bool taken(const Record* place, const Record& record) const {
    return place && used(*place) && Order::same(*place, record);
  }

  // Behind a walk to the place.
  void swap(uint32_t slot, uint32_t old, const Record& record, const Record* place) {
    notes_.swapping(slot, old);
    link(slot, record, place);
    if (place == &slots_[old]) {
      previous_ = slot;
    } else {
      walk(slots_[old], [&](const Record& candidate) { return &candidate == &slots_[old]; });
    }
    leave(slots_[old]);
    notes_.done();
  }

  // Both behind a walk, which knows the link.
  void link(uint32_t slot, const Record& record, const Record* place) {
    fill(slots_[slot], record, place && used(*place) ? slotOf(*place) : kNone);
    previousLink() = slot;
    keepOrder();
    memory_.linked(slot);
  }

  void leave(Record& record) {
    bool becomesEmpty = previous_ == kNone && record.next == kNone;
    previousLink() = becomesEmpty ? Order::kEmptyHead : record.next;
    keepOrder();
    record.inUse = SHM_NO_SLOT;
    memory_.unlinked(slotOf(record));
  }

  // The guess is nearly always right, and whether it is can be told without waiting for a slot before looking at the
  // next.
  uint32_t lowestFree() const {
    uint32_t guess = memory_.free();
    if (guess < Order::kSlots && isFree(guess) && noneFree(slots_, guess)) return guess;
    uint32_t slot = 0;
    while (slot < Order::kSlots && !isFree(slot)) ++slot;
    return slot;
  }
  bool isFree(uint32_t slot) const { return slots_[slot].inUse == SHM_NO_SLOT; }

  // The word of a used slot has one bit, so many without a free one do not show them all. A function of its own, which
  // needs its registers for itself; the last block overlaps the one before.
  [[gnu::noinline]] static bool noneFree(const Record* slot, uint32_t count) {
    const Record* end = slot + count;
    uint32_t seen = 0;
    if (count < kBlock) {
      while (slot != end) seen |= slot++->inUse;
      return seen != SHM_NO_SLOT;
    }
    for (; end - slot > kBlock; slot += kBlock) {
      if (seenIn(slot) == SHM_NO_SLOT) return false;
    }
    return seenIn(end - kBlock) != SHM_NO_SLOT;
  }
  static uint32_t seenIn(const Record* block) { return seenInHalf(block) | seenInHalf(block + kBlock / 2); }
  static uint32_t seenInHalf(const Record* half) {
    return half[0].inUse | half[1].inUse | half[2].inUse | half[3].inUse | half[4].inUse | half[5].inUse |
           half[6].inUse | half[7].inUse;
  }

  // The first record of an empty list goes where head points, not into the lowest free slot: kept on purpose.
  Record* start(const Record& record, uint32_t free) {
    if (head_ >= Order::kSlots) head_ = free;
    fill(slots_[head_], record, kNone);
    return &slots_[head_];
  }

  // Where a walk to the key may begin: the slot before it that the process remembers, none for the beginning. In a list
  // that only these operations write every used slot is on the list; that the one before still leads to it confirms it.
  // Of slots that others have used again meanwhile the memory is in no order, and the search finds anything.
  uint32_t nearest(const Record& key) {
    uint32_t place = memory_.search([&](uint32_t slot) { return Order::before(slots_[slot], key); });
    if (place == 0) return kNone;
    uint32_t slot = memory_.at(place - 1);
    uint32_t link = place == 1 ? head_ : nextOf(memory_.at(place - 2));
    if (link == slot && used(slots_[slot]) && Order::before(slots_[slot], key)) return slot;
    memory_.clear();
    return kNone;
  }
  uint32_t nextOf(uint32_t slot) const { return used(slots_[slot]) ? slots_[slot].next : kNone; }

  // The first slot from the head on at which stop holds, null when there is none. Leaves its predecessor in previous_,
  // and whether a loop in the chain used up the steps in endless_. No slot that stands before the key may stop.
  template <typename Stop>
  Record* walk(const Record& key, Stop stop) {
    previous_ = nearest(key);
    uint32_t current = previous_ == kNone ? firstSlot() : slots_[previous_].next;
    uint32_t steps = 0;
    for (; steps < Order::kSlots && current < Order::kSlots && !stop(slots_[current]); ++steps) {
      memory_.pass(current);
      previous_ = current;
      current = slots_[current].next;
    }
    endless_ = steps == Order::kSlots && current < Order::kSlots;
    if (steps > kShortWalk) remember();
    return endless_ ? nullptr : at(current);
  }

  // The whole list, for walks to come.
  void remember() {
    memory_.clear();
    uint32_t slot = firstSlot();
    for (uint32_t steps = 0; steps < Order::kSlots && usedSlot(slot); ++steps) {
      memory_.append(slot, slot == previous_);
      slot = slots_[slot].next;
    }
  }

  uint32_t& head_;
  Record* slots_;
  Memory& memory_;
  Notes notes_;
  uint32_t previous_ = kNone;
  bool endless_ = false;
};

}  // namespace kestrove
