// SPDX-License-Identifier: Apache-2.0
// A process that reads the store for the first time and tells how long that took.
#pragma once

namespace bench {

inline constexpr char kFreshProcess[] = "--fresh-process";

// The main function of such a process: "library" reads through the library, "floor" by bare system calls. Prints
// nanoseconds.
int beFreshProcess(const char* kind);

}  // namespace bench
