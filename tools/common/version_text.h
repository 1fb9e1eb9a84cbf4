// SPDX-License-Identifier: Apache-2.0
// What a program says of itself and of the library that was loaded.
#pragma once

#include <string>

#include "kestrove/library.h"

namespace tools {

inline std::string versionText(const char* program) {
  char text[96];
  snprintf(text, sizeof text, "%s %s, layout %016llx", program, kestrove_version(),
           static_cast<unsigned long long>(kestrove_layout_hash()));
  return text;
}

// Why the library that was loaded does not serve this program, a sentence; empty when it does.
inline std::string libraryRefusal() {
  char message[KESTROVE_CHECK_BYTES];
  return kestrove_check_headers(message, sizeof message) == 0 ? "" : message;
}

}  // namespace tools
