// SPDX-License-Identifier: Apache-2.0
// The layout of the segment as data.
#pragma once

#include <stdint.h>

#include <span>

namespace kestrove {

struct LayoutRow {
  const char* record;
  const char* member;  // null in the row of the record itself
  uint32_t offset;
  uint32_t bytes;
};

// Every record, each followed by its members in order; entries of tables stand before what holds them.
std::span<const LayoutRow> layoutRows();

}  // namespace kestrove
