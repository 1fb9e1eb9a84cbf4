// SPDX-License-Identifier: Apache-2.0
// Walking the lists that are threaded through the slots of a table.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace kestrove {

// Calls visit with every record in list order until it gives false. A damaged chain ends the walk: at a slot that is
// not in use, at a number beyond the table, and after as many steps as there are slots. False when visit ended it.
template <typename Record, size_t N, typename Visit>
bool eachInOrder(const Record (&slot)[N], uint32_t head, Visit visit) {
  constexpr uint32_t kInUse = 1;
  for (size_t steps = 0; steps < N && head < N && slot[head].inUse == kInUse; ++steps) {
    if (!visit(slot[head])) return false;
    head = slot[head].next;
  }
  return true;
}

}  // namespace kestrove
