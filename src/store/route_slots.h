// SPDX-License-Identifier: Apache-2.0
// What the route lists leave word of, and how the next holder makes a list whole: a slot is in use exactly when the
// chain leads to it.
#pragma once

#include "store/journal.h"

namespace kestrove {

// The notes of one of the two lists; first is its linking.
class RouteNotes {
 public:
  RouteNotes(ShmData& store, Work first) : journal_(store), first_(static_cast<uint32_t>(first)) {}

  void linking(uint32_t slot) { begin(0, slot, 0); }
  void unlinking(uint32_t slot) { begin(1, slot, 0); }
  void swapping(uint32_t slot, uint32_t old) { begin(2, slot, old); }
  void done() { journal_.end(); }

 private:
  void begin(uint32_t step, uint32_t slot, uint32_t old) {
    keepOrder();
    journal_.begin({static_cast<Work>(first_ + step), slot, 0, old});
  }

  Journal journal_;
  uint32_t first_;
};

Outcome finishRouteLinking(ShmData& store, const Note& note);
Outcome finishRouteUnlinking(ShmData& store, const Note& note);
Outcome finishRouteSwapping(ShmData& store, const Note& note);
Outcome finishRoute6Linking(ShmData& store, const Note& note);
Outcome finishRoute6Unlinking(ShmData& store, const Note& note);
Outcome finishRoute6Swapping(ShmData& store, const Note& note);

}  // namespace kestrove
