// The library prints on standard output in places; only a program's own output belongs there.
#pragma once

#include <cstdio>

namespace tools {

// Turns standard output to standard error and gives a stream on what it was.
FILE* takeStandardOutput();

}  // namespace tools
