// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/password_lines.h"

#include <algorithm>
#include <fstream>
#include <set>

namespace ctl {
namespace {

constexpr char kPasswordFile[] = "/etc/passwd";

std::set<std::string> namesIn(const ShmData& store) {
  std::set<std::string> names;
  const int count = std::clamp<int>(store.config.userCount, 0, SHM_USERS);
  for (int i = 0; i < count; ++i) names.insert(text(store.config.users[i].username));
  return names;
}

}  // namespace

Json passwordLines(const ShmData& store) {
  const std::set<std::string> names = namesIn(store);
  Json found = Json::object();
  std::ifstream file(kPasswordFile);
  for (std::string line; std::getline(file, line);) {
    const std::string name = line.substr(0, line.find(':'));
    if (names.contains(name)) found[name] = line;
  }
  return found;
}

}  // namespace ctl
