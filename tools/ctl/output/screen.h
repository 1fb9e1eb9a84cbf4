// SPDX-License-Identifier: Apache-2.0
// The terminal that shows the output.
#pragma once

#include <cstddef>
#include <cstdio>

namespace ctl {

// How many columns it has: as COLUMNS says, else as the terminal does, else 80. 0, which is no limit, where the stream
// is no terminal: what a program reads does not depend on who started it from where.
size_t screenColumns(FILE* stream);

// What stands for the end of a text that is cut: one column wide, and a character that the locale can show.
const char* cutMark();

}  // namespace ctl
