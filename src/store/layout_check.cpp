// SPDX-License-Identifier: Apache-2.0
// Whether a program that was built for other headers can use this library.
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include <array>
#include <charconv>

#include "kestrove/library.h"
#include "store/fail.h"

namespace kestrove {
namespace {

constexpr char kNoVersion[] = "no version";

using Version = std::array<uint16_t, 3>;

// Three numbers with a point after each, the terminator counting as the last one's.
bool parse(const char* text, Version& version) {
  const char* end = text + (text ? strlen(text) : 0);
  for (size_t i = 0; i < version.size(); ++i, ++text) {
    auto [behind, error] = std::from_chars(text, end, version[i]);
    if (error != std::errc{} || *behind != (i + 1 < version.size() ? '.' : '\0')) return false;
    text = behind;
  }
  return true;
}

// Null when the program can use the library.
const char* reasonAgainst(const char* version, uint64_t layoutHash) {
  Version program{}, library{};
  if (!parse(version, program)) return "the program does not name the version of its headers";
  parse(kestrove_version(), library);
  if (program[0] != library[0]) return "the major versions differ";
  if (layoutHash != kestrove_layout_hash()) return "the layouts of the store differ";
  return program[1] > library[1] ? "the library is older than the headers" : nullptr;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int kestrove_check_layout(const char* version, uint64_t layoutHash, char* message, int size) {
  const char* reason = reasonAgainst(version, layoutHash);
  size_t room = message && size > 0 ? static_cast<size_t>(size) : 0;
  if (!reason) {
    if (room > 0) message[0] = '\0';
    return 0;
  }
  snprintf(message, room,
           "libkestrove %s with layout %016" PRIx64 " does not serve a program built for %.31s with layout %016" PRIx64
           ": %s.",
           kestrove_version(), kestrove_layout_hash(), version ? version : kNoVersion, layoutHash, reason);
  return fail(SHM_EINVAL);
}
