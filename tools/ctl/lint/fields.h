// SPDX-License-Identifier: Apache-2.0
// A value of a configuration file beside what the library made of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/common/config_lint.h"
#include "tools/ctl/lint/finding.h"

namespace ctl::lint {

struct Fault {
  size_t offset;  // in the value
  const char* kind;
  std::string text;
};

// Of a keyword that sets a field whose bytes are these now. An address that was not taken left zeros there.
std::optional<Fault> fieldFault(const tools::ConfigKeyword& keyword, std::string_view value, const std::string& bytes);

// "1400x" in double quotes, shortened, without control characters.
std::string quotedValue(std::string_view value);

}  // namespace ctl::lint
