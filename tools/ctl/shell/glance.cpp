// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/glance.h"

#include <sys/shm.h>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

constexpr size_t kLongestName = 24;

std::string gatewayText(const uint8_t (&id)[4]) {
  char digits[9];
  snprintf(digits, sizeof digits, "%02X%02X%02X%02X", id[0], id[1], id[2], id[3]);
  return digits;
}

}  // namespace

// Reading the buffering is what attaches without the lock.
const ShmData* glance() {
  if (!shm && shmget(SHM_KEY, SHM_SIZE, 0) != -1) getShmFileBuffering();
  return shm;
}

std::optional<UserAccount> accountAt(const ShmData& store, const std::string& user) {
  for (size_t i = 0; i < bounded(store.config.userCount, SHM_USERS); ++i) {
    const UserAccount account = store.config.users[i];
    if (text(account.username) == user) return account;
  }
  return std::nullopt;
}

std::string unitName(const ShmData& store) {
  const std::string name = text(store.config.sysName);
  if (name.empty()) return gatewayText(store.config.gatewayId);
  return tools::escaped(name.substr(0, kLongestName)) + (name.size() > kLongestName ? ".." : "");
}

}  // namespace ctl
