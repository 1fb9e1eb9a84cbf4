// SPDX-License-Identifier: Apache-2.0
#include "store/layout_table.h"

#include <stddef.h>

#include "kestrove/layout.h"
#include "kestrove/library.h"

namespace kestrove {
namespace {

#define RECORD(record, bytes) \
  static_assert(sizeof(record) == (bytes), #record " changed its size: programs built before read garbage");
#define FIELD(record, member, offset, bytes)                                               \
  static_assert(offsetof(record, member) == (offset) && sizeof(record::member) == (bytes), \
                #record "." #member                                                        \
                        " moved or changed its width: restore the order of the "           \
                        "members, widen nothing, take new ones from reserved bytes");
#define TABLE(record, member, offset, bytes, entry) \
  FIELD(record, member, offset, bytes)              \
  static_assert(sizeof(record::member) % sizeof(entry) == 0);
#define END(record)
#include "store/layout.def"
#undef RECORD
#undef FIELD
#undef TABLE
#undef END

// The members of a record fill it, so no compiler adds bytes of its own.
#define RECORD(record, bytes) static_assert((bytes) == 0
#define FIELD(record, member, offset, bytes) +(bytes)
#define TABLE(record, member, offset, bytes, entry) +(bytes)
#define END(record) , #record " has a gap: write the reserved bytes out");
#include "store/layout.def"
#undef RECORD
#undef FIELD
#undef TABLE
#undef END

constexpr LayoutRow kRows[] = {
#define RECORD(record, bytes) {#record, nullptr, 0, bytes},
#define FIELD(record, member, offset, bytes) {#record, #member, offset, bytes},
#define TABLE(record, member, offset, bytes, entry) FIELD(record, member, offset, bytes)
#define END(record)
#include "store/layout.def"
#undef RECORD
#undef FIELD
#undef TABLE
#undef END
};

// FNV-1a.
class Hash {
 public:
  constexpr void add(uint8_t byte) { value_ = (value_ ^ byte) * 0x100000001B3u; }
  constexpr void add(const char* text) {
    for (; text && *text; ++text) add(static_cast<uint8_t>(*text));
    add(uint8_t{0});
  }
  constexpr void add(uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) add(static_cast<uint8_t>(number >> shift));
  }
  constexpr uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325u;
};

constexpr uint64_t hashOfRows() {
  Hash hash;
  for (const LayoutRow& row : kRows) {
    hash.add(row.record);
    hash.add(row.member);
    hash.add(row.offset);
    hash.add(row.bytes);
  }
  return hash.value();
}

constexpr uint64_t kLayoutHash = hashOfRows();

}  // namespace

std::span<const LayoutRow> layoutRows() { return kRows; }

}  // namespace kestrove

const char* kestrove_version(void) { return KESTROVE_VERSION; }

uint64_t kestrove_layout_hash(void) { return kestrove::kLayoutHash; }
