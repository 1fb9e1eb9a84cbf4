// SPDX-License-Identifier: Apache-2.0
#include "tools/api/tokens.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "tools/api/digest.h"
#include "tools/api/folder.h"

namespace api {
namespace {

using ctl::Json;

constexpr char kFile[] = "tokens";
constexpr size_t kLongestName = 24;
constexpr double kPatience = 2;

Folder folder() {
  mkdir("/var/lib/kestrove", 0700);
  return Folder(kTokenFolder);
}

Json load(const Folder& files) {
  Json rows = Json::parse(files.read(kFile).value_or("[]"), nullptr, false);
  if (!rows.is_array()) throw ctl::Refusal(ctl::kSystem, "the file of the tokens is damaged");
  return rows;
}

bool letterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

void requireName(const std::string& name) {
  const bool plain = std::ranges::all_of(name, [](char c) { return letterOrDigit(c) || c == '-'; });
  if (plain && !name.empty() && name[0] != '-' && name.size() <= kLongestName) return;
  throw ctl::Refusal(ctl::kUsage, "a token's name has 1 to 24 letters, digits and dashes");
}

}  // namespace

std::string addToken(const std::string& name, bool changes) {
  requireName(name);
  const Folder files = folder();
  const auto lock = files.lock(kPatience);
  Json rows = load(files);
  for (const Json& row : rows) {
    if (row.value("name", "") == name) throw ctl::Refusal(ctl::kRefused, name + ": there is a token of this name");
  }
  std::string shown = randomName();
  rows.push_back(
      {{"name", name}, {"role", changes ? "admin" : "read"}, {"made", time(nullptr)}, {"digest", digest(shown)}});
  files.write(kFile, ctl::jsonText(rows, 1) + "\n");
  return shown;
}

bool removeToken(const std::string& name) {
  const Folder files = folder();
  const auto lock = files.lock(kPatience);
  const Json rows = load(files);
  Json kept = Json::array();
  for (const Json& row : rows) {
    if (row.value("name", "") != name) kept.push_back(row);
  }
  if (kept.size() == rows.size()) return false;
  files.write(kFile, ctl::jsonText(kept, 1) + "\n");
  return true;
}

std::optional<Token> findToken(const std::string& shown) {
  const std::string asked = digest(shown);
  std::optional<Token> found;
  for (const Json& row : load(folder())) {
    if (sameSecret(row.value("digest", ""), asked))
      found = Token{row.value("name", ""), row.value("role", "") == "admin"};
  }
  return found;
}

Json tokenRows() {
  Json rows = load(folder());
  for (Json& row : rows) {
    row["made"] = ctl::timeJson(static_cast<int32_t>(row.value("made", int64_t{0})));
    row.erase("digest");
  }
  return rows;
}

}  // namespace api
