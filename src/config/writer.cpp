// SPDX-License-Identifier: Apache-2.0
#include "config/writer.h"

#include <string.h>
#include <syslog.h>

#include "config/keywords.h"
#include "config/line_text.h"
#include "config/line_writer.h"
#include "config/values.h"
#include "kestrove/segment.h"
#include "store/bounds.h"
#include "store/text.h"

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
    case Kind::kText: return LineWriter(out, keyword.name).text(lineText(textAt(keyword.place))).end();
    case Kind::kAddress: return LineWriter(out, keyword.name).quad(numberAt(keyword.place)).end();
    case Kind::kRow: return;
  }
}

[[nodiscard]] bool writeKeyword(const Keyword& keyword, sys::TextWriter& out) {
  if (keyword.write) return keyword.write(keyword.name, out);
  writeByKind(keyword, out);
  return true;
}

bool cut(const Keyword& keyword) {
  if (keyword.kind != Kind::kText) return false;
  std::string_view text = textAt(keyword.place);
  return lineText(text).size() < text.size();
}

bool cut(const UserAccount& account) {
  std::string_view name = fieldView(account.username);
  return columnText(name).size() < name.size();
}

bool anyCut() {
  for (const Keyword& keyword : writtenKeywords()) {
    if (cut(keyword)) return true;
  }
  for (int i = 0; i < userEntries(*shm); ++i) {
    if (cut(shm->config.users[i])) return true;
  }
  return false;
}

}  // namespace

int writeConfigFile(sys::TextWriter& out) {
  int result = 0;
  for (const Keyword& keyword : writtenKeywords()) {
    if (!writeKeyword(keyword, out)) result = -1;
  }
  if (anyCut()) {
    syslog(LOG_WARNING, "The configuration file holds texts up to their first line feed, user names up to a blank");
  }
  return result;
}

}  // namespace kestrove
