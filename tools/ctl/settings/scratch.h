// SPDX-License-Identifier: Apache-2.0
// Copies in memory of the folders that the library writes in: for a process with mounts of its own.
#pragma once

namespace ctl {

// What is small is copied, what is large or deep is a link to the original, which is read-only. Throws kSystem.
void layScratch();

}  // namespace ctl
