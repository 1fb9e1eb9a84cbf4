// SPDX-License-Identifier: Apache-2.0
// The library prints on standard output in places; only a program's own output belongs there.
#pragma once

#include <cstdio>
#include <string>

namespace tools {

// Turns standard output to standard error and gives a stream on what it was. Descriptors 0 to 2 that are closed are
// opened first, so that no file of the library gets their numbers: what is then written to the stream fails. A reader
// that goes away is a failed write, not the end of the program; programs that it starts have the signal as ever.
FILE* takeStandardOutput();

// Writes and hands on to the system. Empty, or why standard output could not be written.
std::string writeOut(FILE* stream, const std::string& text);

}  // namespace tools
