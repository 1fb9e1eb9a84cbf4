// SPDX-License-Identifier: Apache-2.0
// Word of a change in progress, so that a process that dies inside one leaves no torn table.
//
// A table that cannot be changed by a single store is changed under a note: two words in the reserved bytes of member
// 32 that are zero at all other times. The first names the change and how far it has come, the second a number that
// the change needs. Every step is one that can be done again, so whoever takes the store lock next can finish the
// change or take it back, and dies over it without harm. The process that changes goes through the same code.
//
// The place behind the rules in use is a spare record: what cannot be made again from the tables waits there while it
// is copied to its place. Only a table of 8192 rules leaves none.
#pragma once

#include <atomic>

#include "kestrove/layout.h"

namespace kestrove {

// For each: what its note says. "In place" is the number of records before the change; of two numbers in a value the
// first is the lower half.
enum class Work : uint32_t {
  kNone,
  kRuleClosing,     // the hole goes up to the last place and leaves with it; value: rules in place
  kRuleOpening,     // the hole comes down from behind the last place; value: rules in place
  kRuleMoving,      // the hole goes to a place and takes the spare record; value: rules in place, the place
  kRuleMovingFull,  // the same in a full table: the default rule, which is for any family, lends its slot
  kRuleMovingFull4,
  kDefaultRule,  // the default rule is made anew in its slot; value: 1 behind a move, 0 before
  kDefaultRule4,
  kUserClosing,  // small: accounts in place; value: administrators afterwards
  kUserAdding,
  kAddressClosing,  // a management address leaves; value: entries in place
  kAddress6Closing,
  kAddress6Changing,  // the spare record goes to entry small; value: rules in place
  kEventChanging,     // the spare record takes the oldest event's place; hole: write slot; value: rules, read slot
  kEventCounting,     // both indices go on; hole: write slot; small: 1 in a full ring; value: 0, read slot
  kEventEmptying,
  kRouteLinking,    // hole: the slot that comes into use
  kRouteUnlinking,  // hole: the slot that goes out of use
  kRouteSwapping,   // hole: the slot that comes into use; value: the one that it replaces
  kRoute6Linking,
  kRoute6Unlinking,
  kRoute6Swapping,
};

struct Note {
  Work work;
  uint32_t hole;  // where a shift stands, in words from the table's start; else a slot
  uint32_t small;
  uint32_t value;
};

constexpr uint32_t twoNumbers(uint32_t lower, uint32_t upper) { return upper << 16 | lower; }
constexpr uint32_t lowerOf(uint32_t value) { return value & 0xFFFF; }
constexpr uint32_t upperOf(uint32_t value) { return value >> 16; }

// A kill stops a process between two instructions, and each of them is seen whole: it is enough that the compiler
// leaves the stores on both sides in their order.
inline void keepOrder() { std::atomic_signal_fence(std::memory_order_seq_cst); }

class Journal {
 public:
  explicit Journal(ShmData& store) : word_(reinterpret_cast<Word*>(store.reserved32)) {}

  void begin(const Note& note) {
    word_[1] = note.value;
    progress(note);
  }
  // By a single store; the value stays.
  void progress(const Note& note) {
    keepOrder();
    word_[0] = static_cast<uint32_t>(note.work) << kWorkShift | note.small << kSmallShift | note.hole;
    keepOrder();
  }
  void end() {
    keepOrder();
    word_[0] = 0;
    keepOrder();
    word_[1] = 0;
  }
  Note read() const {
    uint32_t first = word_[0];
    return {static_cast<Work>(first >> kWorkShift), first & kHoleMask, first >> kSmallShift & kSmallMask, word_[1]};
  }

 private:
  using Word = volatile uint32_t __attribute__((may_alias));
  static constexpr int kSmallShift = 18;
  static constexpr int kWorkShift = 26;
  static constexpr uint32_t kHoleMask = (1u << kSmallShift) - 1;
  static constexpr uint32_t kSmallMask = (1u << (kWorkShift - kSmallShift)) - 1;
  static_assert(SHM_RULES * sizeof(FilterRule) / 4 <= kHoleMask, "every word of the largest table");

  Word* word_;
};

enum class Outcome {
  kNothing,    // no note
  kNonsense,   // a note that no change of ours leaves: cleared
  kFinished,   // the table is as the change would have left it
  kTakenBack,  // the table is as before the change
};

// Leaves the note and does the whole change.
void carryOut(ShmData& store, const Note& note);

// What the next holder of the lock does with a store.
[[nodiscard]] Outcome finishWork(ShmData& store);

// The same with *shm, with a line in the system log where there was a note. For the moment at which the store lock was
// really had and shm points to the segment.
void finishAbandonedWork();

}  // namespace kestrove
