// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/output/fields.h"

#include <sstream>

#include "tools/ctl/output/cells.h"

namespace ctl {
namespace {

Json chosen(const Json& record, const std::vector<std::string>& names) {
  if (!record.is_object()) return record;
  Json out = Json::object();
  for (const std::string& name : names) {
    const auto member = record.find(name);
    out[name] = member == record.end() ? Json("") : *member;
  }
  return out;
}

}  // namespace

std::vector<std::string> fieldNames(const std::string& list) {
  std::vector<std::string> names;
  std::istringstream rest(list);
  for (std::string name; std::getline(rest, name, ',');) {
    if (!name.empty()) names.push_back(name);
  }
  return names;
}

Json recordsOf(const Json& result) {
  if (!result.is_object() || result.size() != 1) return result;
  const Json& only = *result.begin();
  return isTable(only) || (only.is_array() && only.empty()) ? only : result;
}

Json fieldsOf(const Json& result, const std::vector<std::string>& names) {
  const Json records = recordsOf(result);
  if (!records.is_array()) return chosen(records, names);
  Json out = Json::array();
  for (const Json& record : records) out.push_back(chosen(record, names));
  return out;
}

}  // namespace ctl
