// SPDX-License-Identifier: Apache-2.0
// The invariants of every table in the store. Reads only; no value of the store is trusted.
#pragma once

#include <string>
#include <vector>

#include "kestrove/layout.h"

namespace ctl {

struct Finding {
  std::string table;
  std::string text;
};

std::vector<Finding> checkStore(const ShmData& store);

// Users of the table that /etc/passwd lacks.
std::vector<Finding> checkPasswordFile(const ShmData& store);

}  // namespace ctl
