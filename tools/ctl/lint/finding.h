// SPDX-License-Identifier: Apache-2.0
// What is said of a place in a configuration file.
#pragma once

#include <cstddef>
#include <string>

namespace ctl::lint {

// Kinds, as JSON has them.
inline constexpr char kUnknown[] = "unknown";      // no keyword
inline constexpr char kUnsaved[] = "unsaved";      // a keyword that a save does not write
inline constexpr char kCut[] = "cut";              // something is not read
inline constexpr char kChanged[] = "changed";      // stored as something else
inline constexpr char kDropped[] = "dropped";      // not stored
inline constexpr char kDuplicate[] = "duplicate";  // said before
inline constexpr char kFull[] = "full";            // its table has no room
inline constexpr char kControl[] = "control";      // a control character is stored
inline constexpr char kEnd[] = "end";              // the rest of the file was not looked at

struct Finding {
  size_t line;    // from 1
  size_t column;  // from 1, in bytes
  std::string kind;
  std::string text;
};

}  // namespace ctl::lint
