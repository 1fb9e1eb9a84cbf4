// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/output/terse.h"

#include "tools/common/plain_text.h"
#include "tools/ctl/output/cells.h"
#include "tools/ctl/output/fields.h"

namespace ctl {
namespace {

std::string valueText(const Json& value) {
  if (value.is_null()) return {};
  if (value.is_string()) return value.get<std::string>();
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (!value.is_array() || isTable(value)) return jsonText(value, -1);
  std::string list;
  for (const Json& element : value) list += (list.empty() ? "" : ",") + valueText(element);
  return list;
}

std::string guarded(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == ':' || c == '\\') out += '\\';
    out += c;
  }
  return tools::escaped(out);
}

std::string lineOf(const Json& record, const std::vector<std::string>& names) {
  std::string line;
  for (const std::string& name : names) {
    const auto value = record.find(name);
    if (&name != &names.front()) line += ':';
    if (value != record.end()) line += guarded(valueText(*value));
  }
  return line + "\n";
}

}  // namespace

std::string terseText(const Json& result) {
  const Json records = recordsOf(result);
  if (records.is_object()) return lineOf(records, columnNames(Json::array({records})));
  if (!records.is_array()) return guarded(valueText(records)) + "\n";
  std::string text;
  const std::vector<std::string> names = isTable(records) ? columnNames(records) : std::vector<std::string>();
  for (const Json& record : records)
    text += record.is_object() ? lineOf(record, names) : guarded(valueText(record)) + "\n";
  return text;
}

}  // namespace ctl
