// SPDX-License-Identifier: Apache-2.0
// The rules of a script among those of a copied store, which is attached and only stores.
#pragma once

#include <cstddef>
#include <vector>

#include "kestrove/layout.h"

namespace ctl {

struct PlacedRule {
  size_t line = 0;   // of the script, from 0
  int position = 0;  // from 0
  FilterRule rule;
};

// As the library would store it. Throws its refusal.
FilterRule normalised(const FilterRule& rule);

// Those that the table does not have, a rule of the table standing for one of them alone.
std::vector<PlacedRule> missingIn(const FilterTable& table, const std::vector<PlacedRule>& placed);

// Whether inserting them one after the other could have led to this table.
bool standAsPlaced(const FilterTable& table, const std::vector<PlacedRule>& placed);

// Takes those that are there out of the attached store's table.
void takeOut(const std::vector<PlacedRule>& placed);

// Throws the library's refusal.
void insertPlaced(const PlacedRule& placed);

}  // namespace ctl
