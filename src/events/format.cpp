// SPDX-License-Identifier: Apache-2.0
#include "events/format.h"

#include "events/catalogue.h"
#include "store/fail.h"
#include "store/text.h"
#include "sys/calendar.h"
#include "sys/format.h"

namespace kestrove {
namespace {

using sys::DateStyle;
using sys::putText;

constexpr size_t kNoLimit = std::string_view::npos;
constexpr size_t kLongestLine = 256;  // a user name of 32 characters and under 100 others

struct Column {
  size_t width;
  size_t limit;
};

// The shape of a layout. Time and description are never padded.
struct Shape {
  DateStyle dateStyle;
  char timeSeparator;
  std::string_view separator;
  Column type;
  Column source;
  Column user;
};

constexpr Shape kList = {DateStyle::kMonthName, ' ', "  ", {11, kNoLimit}, {8, kNoLimit}, {10, kNoLimit}};
constexpr Shape kNarrow = {DateStyle::kMonthName, ' ', "  ", {4, 4}, {8, kNoLimit}, {8, 8}};
constexpr Shape kComma = {DateStyle::kMonthNumber, ',', ",", {0, kNoLimit}, {0, kNoLimit}, {0, kNoLimit}};

const Shape& shapeOf(int layout) {
  switch (layout) {
    case kCommaLayout: return kComma;
    case kNarrowLayout: return kNarrow;
    default: return kList;
  }
}

char* putColumn(char* at, std::string_view text, const Column& column) {
  text = text.substr(0, column.limit);
  at = putText(at, text);
  if (text.size() >= column.width) return at;
  size_t blanks = column.width - text.size();
  memset(at, ' ', blanks);
  return at + blanks;
}

[[nodiscard]] char* putRecord(char* at, const EventRecord& record, const Shape& shape) {
  at = sys::putDate(at, record.timestamp, shape.dateStyle, shape.timeSeparator);
  if (!at) return nullptr;
  const EventKind& kind = eventKind(record.eventId);
  at = putColumn(putText(at, shape.separator), kind.type, shape.type);
  at = putColumn(putText(at, shape.separator), eventSourceText(record.source), shape.source);
  at = putColumn(putText(at, shape.separator), fieldView(record.userName), shape.user);
  return putText(putText(at, shape.separator), kind.description);
}

// Terminated and cut as snprintf does it.
int copyLine(std::string_view line, char* buffer, size_t size) {
  if (size == 0) return 0;
  size_t length = line.size() < size ? line.size() : size - 1;
  *putText(buffer, line.substr(0, length)) = '\0';
  return static_cast<int>(length);
}

}  // namespace

int formatEventRecord(const EventRecord& record, char* buffer, int size, int layout) {
  if (size < 0 || (!buffer && size > 0)) return fail(SHM_EINVAL);
  char line[kLongestLine];
  const char* end = putRecord(line, record, shapeOf(layout));
  if (!end) return fail(SHM_ESYSTEM);
  return copyLine({line, static_cast<size_t>(end - line)}, buffer, static_cast<size_t>(size));
}

}  // namespace kestrove
