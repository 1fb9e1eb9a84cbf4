// SPDX-License-Identifier: Apache-2.0
// Files of fixed names in folders where anybody may write.
#pragma once

#include "sys/descriptor.h"

namespace kestrove::sys {

// A new, empty file of that name, for reading and writing by root alone. What stood there is removed; what cannot be
// removed, or was put there meanwhile, is neither written to nor followed: then none, with errno.
[[nodiscard]] Descriptor makeScratchFile(const char* path);

}  // namespace kestrove::sys
