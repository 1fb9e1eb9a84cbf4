// SPDX-License-Identifier: Apache-2.0
// Rows of the store's tables as the columns of a configuration file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kestrove/layout.h"

namespace ctl::lint {

using Columns = std::vector<std::string>;

// What the tables of the attached store had when they were looked at last.
class Tables {
 public:
  Tables();

  // The columns of the row that a line of this keyword has added since; none where none came.
  Columns added(std::string_view keyword);

 private:
  Columns addedRule(std::string_view keyword);

  int32_t users_, addresses6_, addresses_, rules_;
  std::vector<bool> routes_, routes6_;
};

// Whether the keyword's lines are rows of a table.
bool hasTable(std::string_view keyword);

// Whether a column of a file says what was stored.
bool sameColumn(std::string_view given, std::string_view stored);

}  // namespace ctl::lint
