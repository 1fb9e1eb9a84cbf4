// SPDX-License-Identifier: Apache-2.0
// What who has logged in may do, asked before each command: it may change meanwhile.
#pragma once

#include <string>

namespace ctl {

struct Rights {
  bool gone = false;      // no such account any more
  std::string readsOnly;  // why nothing may be changed; empty where it may
};

// In a process of its own.
Rights rightsOf(const std::string& user);

}  // namespace ctl
