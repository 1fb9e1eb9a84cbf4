// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/tree.h"

#include <algorithm>
#include <cstring>

namespace snmp {
namespace {

constexpr uint32_t kEntry = 1;
constexpr uint32_t kUsed = 1;

const uint8_t* bytes(const ShmData& store, size_t place) { return reinterpret_cast<const uint8_t*>(&store) + place; }

uint32_t word(const ShmData& store, size_t place) {
  uint32_t value;
  memcpy(&value, bytes(store, place), sizeof value);
  return value;
}

// Rows that there may be: numbers of the store are bounded.
uint32_t rowsOf(const Table& table, const ShmData& store) {
  if (table.rows != Rows::kCounted) return table.most;
  const auto count = static_cast<int32_t>(word(store, table.marks));
  return static_cast<uint32_t>(std::clamp<int32_t>(count, 0, static_cast<int32_t>(table.most)));
}

bool isThere(const Table& table, uint32_t row, const ShmData& store) {
  if (row < 1 || row > rowsOf(table, store)) return false;
  return table.rows != Rows::kMarked || word(store, table.place + (row - 1) * table.stride + table.marks) == kUsed;
}

// The first row behind that one; 0 when there is none.
uint32_t rowBehind(const Table& table, uint32_t row, const ShmData& store) {
  const uint32_t rows = rowsOf(table, store);
  if (row >= rows) return 0;
  for (uint32_t next = row + 1; next <= rows; ++next) {
    if (isThere(table, next, store)) return next;
  }
  return 0;
}

bool begins(std::span<const uint32_t> place, const Place& prefix) {
  return place.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), place.begin());
}

// Of a leaf, behind a place that begins with it or stands in front of it.
std::optional<Found> firstIn(const Leaf& leaf, std::span<const uint32_t> place, const ShmData& store) {
  const bool inside = begins(place, leaf.prefix) && place.size() > leaf.prefix.size();
  if (leaf.scalar) return inside ? std::nullopt : std::optional<Found>({&leaf, 0});
  const uint32_t row = rowBehind(*leaf.table, inside ? place[leaf.prefix.size()] : 0, store);
  return row == 0 ? std::nullopt : std::optional<Found>({&leaf, row});
}

}  // namespace

Place Found::place() const {
  Place place = leaf->prefix;
  place.push_back(row);
  return place;
}

Tree::Tree() {
  for (const Scalar& scalar : scalars())
    leaves_.push_back({{scalar.group, scalar.arc}, &scalar.field, &scalar, nullptr});
  for (const Table& table : tables()) {
    uint32_t column = 1;  // is the index, which cannot be read
    for (const Field& field : table.columns)
      leaves_.push_back({{table.arc, kEntry, ++column}, &field, nullptr, &table});
  }
  std::ranges::sort(leaves_, {}, &Leaf::prefix);
}

// The first leaf behind the place; the one in front of it may hold the place.
size_t Tree::behindLeaf(std::span<const uint32_t> place) const {
  const auto found = std::ranges::upper_bound(leaves_, place, std::ranges::lexicographical_compare, &Leaf::prefix);
  return static_cast<size_t>(found - leaves_.begin());
}

const Leaf* Tree::around(std::span<const uint32_t> place) const {
  const size_t next = behindLeaf(place);
  return next > 0 && begins(place, leaves_[next - 1].prefix) ? &leaves_[next - 1] : nullptr;
}

std::optional<Found> Tree::at(std::span<const uint32_t> place, const ShmData& store) const {
  const Leaf* leaf = around(place);
  if (!leaf || place.size() != leaf->prefix.size() + 1) return std::nullopt;
  const uint32_t row = place.back();
  const bool there = leaf->scalar ? row == 0 : isThere(*leaf->table, row, store);
  return there ? std::optional<Found>({leaf, row}) : std::nullopt;
}

std::optional<Found> Tree::behind(std::span<const uint32_t> place, const ShmData& store) const {
  const size_t next = behindLeaf(place);
  for (size_t i = around(place) ? next - 1 : next; i < leaves_.size(); ++i) {
    if (std::optional<Found> found = firstIn(leaves_[i], place, store)) return found;
  }
  return std::nullopt;
}

std::span<const uint8_t> bytesOf(const Found& found, const ShmData& store) {
  const Field& field = *found.leaf->field;
  const Table* table = found.leaf->table;
  const size_t place = table ? table->place + (found.row - 1) * table->stride + field.place : field.place;
  const uint8_t* begin = bytes(store, place);
  const size_t length =
      field.kind == Kind::kText ? strnlen(reinterpret_cast<const char*>(begin), field.width) : field.width;
  return {begin, length};
}

}  // namespace snmp
