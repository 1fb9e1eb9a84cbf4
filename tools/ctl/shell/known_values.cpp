// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/known_values.h"

#include <dirent.h>
#include <net/if.h>
#include <sys/stat.h>

#include <algorithm>
#include <bit>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/item_names.h"
#include "tools/ctl/session.h"
#include "tools/ctl/shell/glance.h"

namespace ctl {
namespace {

Words words(const ValuePlace& at) {
  Words names;
  for (const NamedNumber& word : at.type.words) names.push_back(word.name);
  return names;
}

Words items(const ValuePlace& at) {
  Words names;
  for (const ItemRow& row : itemRows()) {
    if (!at.settable || *row.range) names.push_back(row.name);
  }
  return names;
}

// "1 (auto), 20, 40" as its numbers. Nothing of a range.
Words choices(const std::string& range) {
  Words found;
  if (range.find(", ") == std::string::npos) return found;
  for (size_t at = 0; at < range.size();) {
    const size_t comma = std::min(range.find(", ", at), range.size());
    found.push_back(range.substr(at, std::min(range.find(' ', at), comma) - at));
    at = comma + 2;
  }
  return found;
}

Words itemValues(const ValuePlace& at) {
  const ItemRow* row = at.before.empty() ? nullptr : findItemRow(at.before.back());
  return row ? choices(std::string(row->range)) : Words{};
}

Words users(const ValuePlace&) {
  Words names;
  if (!glance()) return names;
  for (size_t i = 0; i < bounded(shm->config.userCount, SHM_USERS); ++i) {
    names.push_back(text(shm->config.users[i].username));
  }
  return names;
}

Words rules(const ValuePlace& at) {
  Words numbers = words(at);
  if (!glance()) return numbers;
  for (size_t i = 0; i < bounded(shm->filterTable.ruleCount, SHM_RULES); ++i) numbers.push_back(std::to_string(i));
  return numbers;
}

std::string withLength(const std::string& address, uint32_t length) { return address + "/" + std::to_string(length); }

uint32_t lengthOf(uint32_t mask) { return static_cast<uint32_t>(std::popcount(mask)); }

Words routes(const ValuePlace&) {
  Words found;
  if (!glance()) return found;
  for (const RouteEntry& route : shm->routes.slot) {
    if (route.inUse == 1) found.push_back(withLength(addressText(route.destination), lengthOf(route.netmask)));
  }
  return found;
}

Words routes6(const ValuePlace&) {
  Words found;
  if (!glance()) return found;
  for (const Route6Entry& route : shm->routes6.slot) {
    if (route.inUse == 1) found.push_back(withLength(address6Text(route.destination), route.prefixLength));
  }
  return found;
}

Words addresses(const ValuePlace&) {
  Words found;
  if (!glance()) return found;
  for (size_t i = 0; i < bounded(shm->managementAddressCount, SHM_MANAGEMENT_ADDRESSES); ++i) {
    const ManagementAddress& entry = shm->managementAddress[i];
    const bool six = entry.ipVersion == SHM_FAMILY_IPV6;
    found.push_back(six ? withLength(address6Text(entry.address6), entry.prefixLength6)
                        : withLength(addressText(entry.address), lengthOf(entry.mask)));
  }
  for (size_t i = 0; i < bounded(shm->ip6Count, SHM_IP6_ADDRESSES); ++i) {
    found.push_back(withLength(address6Text(shm->ip6Address[i].address), shm->ip6Address[i].prefixLength));
  }
  return found;
}

Words interfaces(const ValuePlace&) {
  Words names;
  struct if_nameindex* all = if_nameindex();
  for (struct if_nameindex* one = all; one && one->if_name; ++one) names.push_back(one->if_name);
  if (all) if_freenameindex(all);
  return names;
}

bool isFolder(const std::string& path) {
  struct stat facts;
  return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

// Hidden ones when their point is typed; names that would make a mess of the line never.
Words files(const ValuePlace& at) {
  Words found;
  const size_t slash = at.begun.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : at.begun.substr(0, slash + 1);
  const bool hidden = at.begun.substr(folder.size()).starts_with(".");
  DIR* open = opendir(folder.empty() ? "." : folder.c_str());
  if (!open) return found;
  while (const dirent* entry = readdir(open)) {
    const std::string name = entry->d_name;
    if (name == "." || name == ".." || name.starts_with(".") != hidden || tools::hasControlCharacter(name)) continue;
    found.push_back(folder + name + (isFolder(folder + name) ? "/" : ""));
  }
  closedir(open);
  std::sort(found.begin(), found.end());
  return found;
}

struct Source {
  Completion completion;
  Words (*values)(const ValuePlace&);
};

constexpr Source kSources[] = {{Completion::kWords, words},           {Completion::kItems, items},
                               {Completion::kItemValues, itemValues}, {Completion::kUsers, users},
                               {Completion::kRules, rules},           {Completion::kRoutes, routes},
                               {Completion::kRoutes6, routes6},       {Completion::kAddresses, addresses},
                               {Completion::kInterfaces, interfaces}, {Completion::kFiles, files}};

}  // namespace

Words knownValues(const ValuePlace& at) {
  for (const Source& source : kSources) {
    if (source.completion == at.type.completion) return source.values(at);
  }
  return {};
}

}  // namespace ctl
