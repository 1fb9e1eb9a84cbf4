// SPDX-License-Identifier: Apache-2.0
// One line of the dump for one field of the store.
#pragma once

#include <stdint.h>

#include <string_view>

#include "sys/text_writer.h"

namespace kestrove {

enum class DumpKind : uint8_t {
  kText,         // up to its width, with or without terminator
  kSigned,       // 32 bits
  kUnsigned,     // 32 bits
  kWide,         // 64 bits
  kHex,          // 32 bits, "0x%.2x"
  kSwitch,       // 8 bits, through the state table
  kState,        // 32 bits, through the state table
  kCompression,  // 32 bits, through the table of methods
  kCongestion,   // 8 bits
  kLink,         // 32 bits, the word of the command line
  kAddress,      // IPv4
  kMac,          // 6 bytes
  kGatewayId,    // 4 bytes
};

struct DumpField {
  std::string_view label;
  DumpKind kind;
  uint32_t offset;  // in ShmData
  uint32_t width;   // of a text
};

// Every label is followed by the tabs that bring its value to the column, at least one.
void dumpLabel(sys::TextWriter& out, std::string_view label, size_t column);
void dumpField(sys::TextWriter& out, const DumpField& field, size_t column);

template <size_t N>
void dumpFields(sys::TextWriter& out, const DumpField (&fields)[N], size_t column) {
  for (const DumpField& field : fields) dumpField(out, field, column);
}

}  // namespace kestrove
