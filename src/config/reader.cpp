// SPDX-License-Identifier: Apache-2.0
#include "config/reader.h"

#include <limits.h>
#include <stdio.h>
#include <string.h>

#include "config/keywords.h"
#include "config/line_source.h"
#include "config/messages.h"
#include "config/values.h"
#include "kestrove/segment.h"

namespace kestrove {
namespace {

char* fieldAt(const Place& place) { return reinterpret_cast<char*>(shm) + place.offset; }

// An 8-bit field takes the low byte: the store is little-endian.
void storeNumber(const Keyword& keyword, const ConfigLine& line) {
  int32_t value = numberOf(line.value);
  memcpy(fieldAt(keyword.place), &value, keyword.place.width);
}

void storeSwitch(const Keyword& keyword, const ConfigLine& line) {
  uint8_t value = storedSwitch(numberOf(line.value));
  memcpy(fieldAt(keyword.place), &value, sizeof value);
}

// A value that fills its limit ends without a terminator, and what is behind the limit stays as it was.
void storeText(const Keyword& keyword, const ConfigLine& line) {
  size_t length = strlen(line.value);
  if (length > keyword.limit) warnTruncated(line, keyword.limit);
  size_t copied = length < keyword.limit ? length : keyword.limit;
  char* field = fieldAt(keyword.place);
  memcpy(field, line.value, copied);
  memset(field + copied, 0, keyword.limit - copied);
}

void storeAddress(const Keyword& keyword, const ConfigLine& line) {
  uint32_t address;
  if (readAddress(line.value, &address)) memcpy(fieldAt(keyword.place), &address, sizeof address);
}

void storeByKind(const Keyword& keyword, const ConfigLine& line) {
  switch (keyword.kind) {
    case Kind::kNumber: return storeNumber(keyword, line);
    case Kind::kSwitch: return storeSwitch(keyword, line);
    case Kind::kText: return storeText(keyword, line);
    case Kind::kAddress: return storeAddress(keyword, line);
    case Kind::kRow: return;
  }
}

// A keyword always has a value, at worst an empty text: numbers become 0, switches off, texts empty, and addresses and
// rows store nothing.
void apply(const Keyword& keyword, const ConfigLine& line) {
  if (keyword.read) {
    keyword.read(line);
    return;
  }
  storeByKind(keyword, line);
  if (keyword.then) keyword.then();
}

char* skipSeparators(char* at) {
  while (separates(*at)) ++at;
  return at;
}

char* skipWord(char* at) {
  while (*at != '\0' && !separates(*at)) ++at;
  return at;
}

// One separator at the end is taken off, not more.
void trimOne(char* value) {
  size_t length = strlen(value);
  if (length > 0 && separates(value[length - 1])) value[length - 1] = '\0';
}

}  // namespace

void parseConfigLine(char* text, const char* path, int number) {
  char* word = skipSeparators(text);
  if (*word == '\0' || *word == '#') return;
  char* end = skipWord(word);
  ConfigLine line = {path, number, {word, static_cast<size_t>(end - word)}, skipSeparators(end)};
  trimOne(line.value);
  const Keyword* keyword = findKeyword(line.keyword);
  if (keyword) {
    apply(*keyword, line);
  } else {
    warnUndefined(line);
  }
}

bool readConfigFile(const char* given, int fd) {
  char path[PATH_MAX];  // of its own: the one given may be the name in the store, which a line of the file can change
  snprintf(path, sizeof path, "%s", given);
  LineSource lines(fd);
  int number = 0;
  while (char* line = lines.next()) parseConfigLine(line, path, ++number);
  return !lines.failed();
}

}  // namespace kestrove
