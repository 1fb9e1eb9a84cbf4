// SPDX-License-Identifier: Apache-2.0
// The values of a type that are known: words, items, and what the store, the kernel and the file system have.
#pragma once

#include "tools/ctl/shell/typed_line.h"
#include "tools/ctl/type.h"

namespace ctl {

struct ValuePlace {
  const Type& type;
  const Words& before;       // the words of the line in front of it
  const std::string& begun;  // what is there of it
  bool settable = false;     // whether a value that cannot be changed is of no use there
};

// In the order in which they are listed; what does not begin with the text may be among them.
Words knownValues(const ValuePlace& at);

}  // namespace ctl
