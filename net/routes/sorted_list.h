// A table of slots threaded into one sorted list.
//
// Order names the record and the order:
//   using Record             a plain record with the words inUse and next
//   kSlots                   how many slots the table has
//   kEmptyHead               what head becomes when the last record leaves
//   before(a, b), same(a, b) list order and equality of the keys
//
// The table is shared with other programs, so no slot number in it is trusted: one outside the table ends the list, and
// no walk takes more steps than there are slots.
#pragma once

#include <stdint.h>

#include "kestrove/layout.h"
#include "store/fail.h"

namespace kestrove {

template <typename Order>
class SortedList {
 public:
  using Record = typename Order::Record;

  // The hint is a slot number that the process keeps between calls, any at first. Walks leave in it the slot before
  // the place they found, and long ones start there when it still stands before the place they look for.
  SortedList(uint32_t& head, Record* slots, uint32_t& hint) : head_(head), slots_(slots), hint_(hint) {}

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
    uint32_t free = lowestFree();
    if (free == Order::kSlots) return refuse(SHM_EFULL);
    if (firstSlot() == kNone) return start(record, free);
    Record* place = walk(record, [&](const Record& slot) { return !used(slot) || !Order::before(slot, record); });
    if (endless_) return refuse(SHM_ESYSTEM);
    if (place && used(*place) && Order::same(*place, record)) return refuse(SHM_EEXIST);
    fill(slots_[free], record, place && used(*place) ? slotOf(*place) : kNone);
    previousLink() = free;
    return &slots_[free];
  }

  // Takes the record with that key off the list. False with the code when there is none.
  bool unlink(const Record& key) {
    Record* record = walk(key, [&](const Record& slot) { return Order::same(slot, key); });
    if (!record) return refuse(SHM_ENOENT) != nullptr;
    bool becomesEmpty = previous_ == kNone && record->next == kNone;
    previousLink() = becomesEmpty ? Order::kEmptyHead : record->next;
    record->inUse = SHM_NO_SLOT;
    return true;
  }

 private:
  static constexpr uint32_t kNone = SHM_NO_SLOT;
  static constexpr uint32_t kUsed = 1;
  // A walk this short costs less than asking whether the hint is good.
  static constexpr uint32_t kShortWalk = 16;

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
    slot = record;
    slot.inUse = kUsed;
    slot.next = next;
  }

  uint32_t lowestFree() const {
    uint32_t slot = 0;
    while (slot < Order::kSlots && slots_[slot].inUse != SHM_NO_SLOT) ++slot;
    return slot;
  }

  // The first record of an empty list goes where head points, not into the lowest free slot: kept on purpose.
  Record* start(const Record& record, uint32_t free) {
    if (head_ >= Order::kSlots) head_ = free;
    fill(slots_[head_], record, kNone);
    return &slots_[head_];
  }

  // In a list that only these operations write, every used slot is on the list: one that stands before the key, and
  // further on than the walk has come, is a place to go on from.
  bool hintHelps(const Record& slot, const Record& key) const {
    return usedSlot(hint_) && Order::before(slot, slots_[hint_]) && Order::before(slots_[hint_], key);
  }

  // The first slot from the head on at which stop holds, null when there is none. Leaves its predecessor in previous_,
  // and whether a loop in the chain used up the steps in endless_.
  template <typename Stop>
  Record* walk(const Record& key, Stop stop) {
    previous_ = kNone;
    endless_ = false;
    uint32_t current = firstSlot();
    for (uint32_t steps = 0; steps < Order::kSlots && current < Order::kSlots; ++steps) {
      if (stop(slots_[current])) return arrive(current);
      if (steps == kShortWalk && hintHelps(slots_[current], key)) current = hint_;
      previous_ = current;
      current = slots_[current].next;
    }
    endless_ = current < Order::kSlots;
    return arrive(kNone);
  }

  Record* arrive(uint32_t slot) {
    if (previous_ != kNone) hint_ = previous_;
    return at(slot);
  }

  uint32_t& head_;
  Record* slots_;
  uint32_t& hint_;
  uint32_t previous_ = kNone;
  bool endless_ = false;
};

}  // namespace kestrove
