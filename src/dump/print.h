// SPDX-License-Identifier: Apache-2.0
// The dump's formatted lines.
#pragma once

#include "sys/text_writer.h"

namespace kestrove {

// printf to a writer; at most kLongestLine - 1 characters.
constexpr size_t kLongestLine = 1024;
__attribute__((format(printf, 2, 3))) void print(sys::TextWriter& out, const char* format, ...);

}  // namespace kestrove
