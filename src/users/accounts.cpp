// SPDX-License-Identifier: Apache-2.0
// Reading the accounts.
#include <pwd.h>
#include <stdlib.h>
#include <string.h>

#include "kestrove/users.h"
#include "store/accounts.h"
#include "store/bounds.h"
#include "store/fail.h"
#include "store/lock.h"

namespace kestrove {
namespace {

constexpr size_t kHashBuffer = 128;

const UserAccount* firstNamed(std::string_view name) {
  const UserAccount* users = shm->config.users;
  for (int slot = 0; slot < userEntries(*shm); ++slot) {
    if (accountName(users[slot]) == name) return &users[slot];
  }
  return nullptr;
}

const UserAccount* lastNamed(std::string_view name) {
  const UserAccount* users = shm->config.users;
  for (int slot = userEntries(*shm) - 1; slot >= 0; --slot) {
    if (accountName(users[slot]) == name) return &users[slot];
  }
  return nullptr;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getUserAccount(const char* name, UserAccount* out) {
  if (!name || !out) return fail(SHM_EINVAL);
  StoreLock lock;
  const UserAccount* found = lock ? lastNamed(name) : nullptr;
  if (!found) return -1;
  *out = *found;
  return 0;
}

int getUserTableEntry(int index, UserAccount* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (index < 0 || index >= userEntries(*shm)) return fail(SHM_EINVAL);
  *out = shm->config.users[index];
  return 0;
}

int getCurrentUser(UserAccount* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const char* name = getenv("USER");
  const UserAccount* found = name ? firstNamed(name) : nullptr;
  *out = found ? *found : UserAccount{};
  return found ? 0 : 1;
}

int getUserPassword(const char* name, char* hashOut) {
  if (!name || !hashOut) return fail(SHM_EINVAL);
  StoreLock lock;
  const struct passwd* entry = lock ? getpwnam(name) : nullptr;
  if (!entry) return -1;
  size_t length = strnlen(entry->pw_passwd, kHashBuffer - 1);
  memcpy(hashOut, entry->pw_passwd, length);
  hashOut[length] = '\0';
  return 0;
}

int getUserCount(void) {
  StoreLock lock;
  return lock ? shm->config.userCount : -1;
}

int getAdminUserCount(void) {
  StoreLock lock;
  return lock ? shm->config.adminUserCount : -1;
}
