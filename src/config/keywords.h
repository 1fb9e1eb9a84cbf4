// The keywords of the configuration file: one row each, for the reader and the writer.
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
  uint8_t position;  // among the written lines, from 1; kNeverWritten for what only a hand or the factory sets
  uint16_t limit;    // of a text
  Place place;
  void (*read)(const ConfigLine& line);  // instead of the reading by kind
  void (*then)();                        // after the reading by kind
  RowsWriter rows;                       // instead of the writing by kind
};

constexpr uint8_t kNeverWritten = 0;

// Null for a word that is no keyword.
const Keyword* findKeyword(std::string_view name);

// Every keyword, and those that are written in the order of writing.
std::span<const Keyword> keywords();
std::span<const Keyword* const> writtenKeywords();

}  // namespace kestrove
