// SPDX-License-Identifier: Apache-2.0
// Fixed text fields. A field of the store may fill its width without a terminator, so every reader knows the width.
#pragma once

#include <string.h>

#include <string_view>

namespace kestrove {

template <size_t N>
size_t fieldLength(const char (&field)[N]) {
  return strnlen(field, N);
}

template <size_t N>
std::string_view fieldView(const char (&field)[N]) {
  return {field, fieldLength(field)};
}

// Copies a field into a buffer, which may lie over it, and terminates it, cutting what does not fit.
template <size_t N>
void copyField(char* buffer, size_t size, const char (&field)[N]) {
  if (size == 0) return;
  size_t length = fieldLength(field);
  if (length > size - 1) length = size - 1;
  memmove(buffer, field, length);
  buffer[length] = '\0';
}

// Fills a field from a text, which may stand in the field itself: cut to at most limit characters, the rest of the
// limit zeroed (as strncpy does).
template <size_t N>
void setField(char (&field)[N], const char* text, size_t limit = N) {
  size_t width = limit < N ? limit : N;
  size_t length = strnlen(text, width);
  memmove(field, text, length);
  memset(field + length, 0, width - length);
}

}  // namespace kestrove
