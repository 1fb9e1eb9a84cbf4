// SPDX-License-Identifier: Apache-2.0
// What a program says of itself.
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

}  // namespace tools
