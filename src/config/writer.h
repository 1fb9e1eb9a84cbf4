// SPDX-License-Identifier: Apache-2.0
// The configuration file of the store.
#pragma once

#include "sys/text_writer.h"

namespace kestrove {

// Writes every line in its fixed order. 0 whatever the writing does, except -1 when it failed among the rules. A text
// that no line can hold is written as far as one can; that is said in the log, once. The store is attached and locked.
[[nodiscard]] int writeConfigFile(sys::TextWriter& out);

}  // namespace kestrove
