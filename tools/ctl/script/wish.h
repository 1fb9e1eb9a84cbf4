// SPDX-License-Identifier: Apache-2.0
// What a line asks the store to hold, without the way to it: what a script is checked and carried out by.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "kestrove/layout.h"
#include "tools/ctl/item_names.h"

namespace ctl {

// A line that says nothing, as a script has it where the store holds what its words cannot name.
struct NoWish {};

struct ItemWish {
  const ItemRow* row = nullptr;
  uint32_t word = 0;  // network byte order for addresses
  std::string text;   // of texts
};

struct ModeWish {
  uint32_t mode = 0;
  uint32_t lanVlan = 0;
  uint32_t wanVlan = 0;
  bool keepsIds = false;  // of a mode that does not use them, for its next time
};

// The name that the store has for a port.
struct NameWish {
  int number = 0;
  std::string name;
};

// In front of the default rule, however many there are.
inline constexpr int kLastPlace = INT32_MAX;

// At a position that counts from 0.
struct RuleWish {
  int position = 0;
  FilterRule rule = {};
};

using Wish = std::variant<NoWish, ItemWish, ModeWish, NameWish, RuleWish, RouteEntry, Route6Entry, ManagementAddress,
                          Ip6Address>;

}  // namespace ctl
