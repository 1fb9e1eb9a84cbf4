// Reading a table of slots threaded into one list, in list order.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

// Calls visit with each record of the list. Other programs write the table too: a slot number outside it or a slot
// not in use ends the walk, and no walk takes more steps than the table has slots.
template <typename Slot, uint32_t N, typename Visit>
void walkChain(uint32_t head, const Slot (&slots)[N], Visit visit) {
  uint32_t slot = head;
  for (uint32_t steps = 0; steps < N && slot < N && slots[slot].inUse == 1; ++steps) {
    visit(slots[slot]);
    slot = slots[slot].next;
  }
}

}  // namespace kestrove
