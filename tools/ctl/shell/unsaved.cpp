// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/unsaved.h"

#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <string_view>

#include "tools/ctl/item_names.h"
#include "tools/ctl/session.h"
#include "tools/ctl/settings/difference.h"
#include "tools/ctl/settings/image.h"

namespace ctl {
namespace {

bool fitsTheFile(const SettingChange& change) {
  const ItemRow* item = findItemRow(change.key);
  return !item || item->keeping != Keeping::kUntilRebuilt;
}

}  // namespace

// The settings stand together, in front of what is counted.
std::string settingsMark(const ShmData& store) {
  const char* begin = reinterpret_cast<const char*>(&store.config);
  const char* end = reinterpret_cast<const char*>(&store.qos);
  const std::string_view settings(begin, static_cast<size_t>(end - begin));
  struct stat facts = {};
  stat(text(store.config.configFileName).c_str(), &facts);
  return std::to_string(std::hash<std::string_view>()(settings)) + "." + std::to_string(facts.st_size) + "." +
         std::to_string(facts.st_mtim.tv_sec) + "." + std::to_string(facts.st_mtim.tv_nsec);
}

bool unsavedChanges() {
  Session session;
  session.waitSeconds = 0;
  try {
    const Image saved = savedImage(session);
    return std::ranges::any_of(compare(*saved, *runningImage(session)).changes, fitsTheFile);
  } catch (const Refusal&) {
    return false;
  }
}

}  // namespace ctl
