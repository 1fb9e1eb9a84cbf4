// SPDX-License-Identifier: Apache-2.0
// The objects in the order of SNMP: what stands at a place, and what comes behind it. Places are numbers behind the
// module's own: group, arc, 0 of a scalar; table, 1, column, row of a table.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "kestrove/layout.h"
#include "tools/snmp/objects.h"

namespace snmp {

using Place = std::vector<uint32_t>;

struct Leaf {
  Place prefix;
  const Field* field = nullptr;
  const Scalar* scalar = nullptr;  // or
  const Table* table = nullptr;
};

struct Found {
  const Leaf* leaf = nullptr;
  uint32_t row = 0;  // from 1 on; 0 of a scalar
  Place place() const;
};

class Tree {
 public:
  Tree();
  std::optional<Found> at(std::span<const uint32_t> place, const ShmData& store) const;
  std::optional<Found> behind(std::span<const uint32_t> place, const ShmData& store) const;

 private:
  size_t behindLeaf(std::span<const uint32_t> place) const;
  const Leaf* around(std::span<const uint32_t> place) const;

  std::vector<Leaf> leaves_;  // in the order of their prefixes, none of which begins another
};

// The bytes of the field, as the store has them; a text up to its end.
std::span<const uint8_t> bytesOf(const Found& found, const ShmData& store);

}  // namespace snmp
