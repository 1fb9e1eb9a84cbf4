// SPDX-License-Identifier: Apache-2.0
// The numbered items: one row each, walked by the getter and the setter.
#pragma once

#include "kestrove/layout.h"

namespace kestrove {

struct Item {
  uint8_t id = 0;
  uint8_t width = 0;                    // of the field, 1 or 4 bytes
  uint16_t place = 0;                   // of the field in the configuration record
  bool (*present)() = nullptr;          // null: always; an absent item reads 0
  bool (*accepts)(uint32_t) = nullptr;  // null: cannot be set; sets the code of a refusal
  // What a change does outside Configuration Mode, in this order.
  uint8_t onEvent = 0;
  uint8_t offEvent = 0;
  bool save = false;
  uint32_t pending = 0;               // change bit, with a signal to the engine
  int (*action)(uint32_t) = nullptr;  // its result is the setter's
};

// Null for an id without a row.
[[nodiscard]] const Item* findItem(int id);

uint32_t fetchItem(const Item& item);
void storeItem(const Item& item, uint32_t value);

}  // namespace kestrove
