// SPDX-License-Identifier: Apache-2.0
// What a process remembers of a sorted list: its slots in list order, as they were at its last look.
#pragma once

#include <stdint.h>
#include <string.h>

namespace kestrove {

// Lets walks begin close to the place they look for. Other processes change the list without telling, so nothing here
// is more than a guess that the list itself must confirm.
template <uint32_t Slots>
class ListMemory {
 public:
  // An empty memory stays empty until it is told of a whole list.
  void clear() { count_ = 0; }
  void append(uint32_t slot, bool placeBehind) {
    slots_[count_++] = static_cast<uint16_t>(slot);
    if (placeBehind) place_ = count_;
  }

  // Finds the place behind all slots that stand before something, and how many those are.
  template <typename Before>
  [[gnu::noinline]] uint32_t search(Before before) {
    const uint16_t* base = slots_;
    uint32_t left = count_;
    while (left >= kParts) {
      uint32_t part = left / kParts, passed = 0;
      for (uint32_t i = 1; i < kParts; ++i) passed += before(base[i * part - 1]);
      base += passed * part;
      left = passed == kParts - 1 ? left - passed * part : part;
    }
    uint32_t last = left - uint32_t{left != 0}, passed = 0;
    for (uint32_t i = 0; i < kParts - 1; ++i) passed += before(base[i < last ? i : last]);  // the last may answer often
    base += passed < left ? passed : left;
    place_ = static_cast<uint32_t>(base - slots_);
    return place_;
  }
  uint32_t at(uint32_t place) const { return slots_[place]; }

  // A walk went on over a slot.
  void pass(uint32_t slot) { place_ = knows(slot) ? place_ + 1 : kLost; }
  // The slot that should be the lowest free one.
  uint32_t free() const { return free_; }

  // A slot was linked or unlinked at the place.
  void linked(uint32_t slot) {
    free_ = slot + 1;
    if (count_ == 0) return;
    if (place_ > count_ || count_ == Slots) return clear();
    memmove(slots_ + place_ + 1, slots_ + place_, (count_ - place_) * sizeof slots_[0]);
    slots_[place_++] = static_cast<uint16_t>(slot);
    ++count_;
  }
  void unlinked(uint32_t slot) {
    if (slot < free_) free_ = slot;
    if (!knows(slot)) return clear();
    --count_;
    memmove(slots_ + place_, slots_ + place_ + 1, (count_ - place_) * sizeof slots_[0]);
  }

 private:
  static constexpr uint32_t kLost = UINT32_MAX;
  static_assert(Slots <= UINT16_MAX);
  // The answers about so many places are waited for together, and none of them takes a branch: half would be foretold
  // wrongly.
  static constexpr uint32_t kParts = 8;

  bool knows(uint32_t slot) const { return place_ < count_ && slots_[place_] == slot; }

  uint32_t free_ = 0;
  uint32_t count_ = 0;
  uint32_t place_ = 0;
  uint16_t slots_[Slots + 1] = {};  // one more may be asked about
};

}  // namespace kestrove
