// SPDX-License-Identifier: Apache-2.0
// The keywords of the configuration file: one row each, for the reader and the writer, in the order of writing.
#pragma once

#include <stdint.h>

#include <span>
#include <string_view>

#include "sys/text_writer.h"

namespace kestrove {

// Where a line stands, for messages, and what it says.
struct ConfigLine {
  const char* path;
  int32_t number;
  std::string_view keyword;
  char* value;  // terminated, at worst empty; parsers may write to it
};

// A field of the store.
struct Place {
  uint32_t offset = 0;
  uint32_t width = 0;
};

enum class Kind : uint8_t {
  kNumber,   // decimal text; a field of 32 bits or of 8, which takes the low ones
  kSwitch,   // 1, 0, anything else in the file; 1, 2, 3 in the store
  kText,     // at most limit characters
  kAddress,  // dotted quad; network byte order
  kRow,      // no single field: read and written by functions of its own
};

// False when a row could not be written.
using RowsWriter = bool (*)(std::string_view keyword, sys::TextWriter& out);

struct Keyword {
  std::string_view name;
  Kind kind;
  uint16_t limit;  // of a text
  Place place;
  void (*read)(const ConfigLine& line);  // instead of the reading by kind
  void (*then)();                        // after the reading by kind
  RowsWriter write;                      // instead of the writing by kind
};

// Null for a word that is no keyword.
const Keyword* findKeyword(std::string_view name);

// Every keyword: those that are written, in the order of their lines, then those that are only read.
std::span<const Keyword> keywords();
std::span<const Keyword> writtenKeywords();

}  // namespace kestrove
