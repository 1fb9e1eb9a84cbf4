// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/output/cells.h"

#include <unordered_set>

#include "tools/common/plain_text.h"

namespace ctl {
namespace {

std::string scalarText(const Json& value) {
  if (value.is_string()) return tools::escaped(value.get_ref<const std::string&>());
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_null()) return "-";
  return jsonText(value, -1);
}

}  // namespace

bool isTable(const Json& value) { return value.is_array() && !value.empty() && value.front().is_object(); }

bool isNested(const Json& value) { return value.is_object() || isTable(value); }

std::string cellText(const Json& value) {
  if (!value.is_array()) return scalarText(value);
  std::string line;
  for (const Json& element : value) line += (line.empty() ? "" : ", ") + scalarText(element);
  return line.empty() ? "none" : line;
}

std::vector<std::string> columnNames(const Json& table) {
  std::vector<std::string> names;
  std::unordered_set<std::string> known;
  for (const Json& row : table) {
    for (const auto& [name, value] : row.items()) {
      if (known.insert(name).second) names.push_back(name);
    }
  }
  return names;
}

}  // namespace ctl
