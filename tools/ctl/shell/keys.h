// SPDX-License-Identifier: Apache-2.0
// What Tab and "?" answer to a line.
#pragma once

#include <cstdio>

#include "tools/ctl/shell/editor.h"

namespace ctl {

// Completes the word as far as it is clear, or lists what it may become.
KeyAnswer completed(const std::string& line, FILE* terminal, bool files);

// Lists what may follow, each with its help.
std::string whatFollows(const std::string& line, FILE* terminal);

}  // namespace ctl
