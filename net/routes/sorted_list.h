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
#include "store/fail.h"
#include "store/journal.h"

namespace kestrove {

template <typename Order>
class SortedList {
 public:
  using Record = typename Order::Record;
  using Notes = typename Order::Notes;

  // The hint is a slot number that the process keeps between calls, any at first. Walks leave in it the slot before
  // the place they found, and long ones start there when it still stands before the place they look for.
  SortedList(uint32_t& head, Record* slots, uint32_t& hint, Notes notes)
      : head_(head), slots_(slots), hint_(hint), notes_(notes) {}

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
    Record* place = placeOf(record, nullptr);
    if (endless_) return refuse(SHM_ESYSTEM);
    if (taken(place, record)) return refuse(SHM_EEXIST);
    notes_.linking(free);
    link(free, record, place);
    notes_.done();
    return &slots_[free];
  }

  // Unlinks the record with that key and inserts another one, which is refused as by an insert of its own; then the old
  // one is gone all the same. At every instant one of the two is on the list: the new one takes another free slot
  // first, and moves where an insert would have put it. A full table has no such slot: a death can lose the record.
  Record* replace(const Record& key, const Record& record) {
    Record* old = walk(key, [&](const Record& slot) { return Order::same(slot, key); });
    uint32_t free = lowestFree();
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
    Record filled = record;
    filled.inUse = SHM_NO_SLOT;
    filled.next = next;
    slot = filled;
    keepOrder();
    slot.inUse = kUsed;
    keepOrder();
  }

  // Where a record is to stand, that it may stand behind or in place of the passed one.
  Record* placeOf(const Record& record, const Record* passed) {
    return walk(record,
                [&](const Record& slot) { return &slot != passed && (!used(slot) || !Order::before(slot, record)); });
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
  }

  void leave(Record& record) {
    bool becomesEmpty = previous_ == kNone && record.next == kNone;
    previousLink() = becomesEmpty ? Order::kEmptyHead : record.next;
    keepOrder();
    record.inUse = SHM_NO_SLOT;
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
  Notes notes_;
  uint32_t previous_ = kNone;
  bool endless_ = false;
};

}  // namespace kestrove
