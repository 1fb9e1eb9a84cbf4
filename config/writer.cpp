#include "config/writer.h"

#include <string.h>

#include "config/keywords.h"
#include "config/line_writer.h"
#include "config/values.h"
#include "kestrove/segment.h"

namespace kestrove {
namespace {

const char* fieldAt(const Place& place) { return reinterpret_cast<const char*>(shm) + place.offset; }

uint32_t numberAt(const Place& place) {
  uint32_t value = 0;
  memcpy(&value, fieldAt(place), place.width);
  return value;
}

// A field that may fill its width without a terminator.
std::string_view textAt(const Place& place) {
  const char* field = fieldAt(place);
  return {field, strnlen(field, place.width)};
}

// A switch that was never set, or holds what the file cannot say, has no line.
void writeSwitch(const Keyword& keyword, sys::TextWriter& out) {
  uint32_t value = numberAt(keyword.place);
  if (value >= 1 && value <= 3) LineWriter(out, keyword.name).number(fileSwitch(static_cast<int32_t>(value))).end();
}

void writeByKind(const Keyword& keyword, sys::TextWriter& out) {
  switch (keyword.kind) {
    case Kind::kNumber: return LineWriter(out, keyword.name).number(numberAt(keyword.place)).end();
    case Kind::kSwitch: return writeSwitch(keyword, out);
    case Kind::kText: return LineWriter(out, keyword.name).text(textAt(keyword.place)).end();
    case Kind::kAddress: return LineWriter(out, keyword.name).quad(numberAt(keyword.place)).end();
    case Kind::kRow: return;
  }
}

bool writeKeyword(const Keyword& keyword, sys::TextWriter& out) {
  if (keyword.rows) return keyword.rows(keyword.name, out);
  writeByKind(keyword, out);
  return true;
}

}  // namespace

int writeConfigFile(sys::TextWriter& out) {
  int result = 0;
  for (const Keyword* keyword : writtenKeywords()) {
    if (!writeKeyword(*keyword, out)) result = -1;
  }
  return result;
}

}  // namespace kestrove
