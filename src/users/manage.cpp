// SPDX-License-Identifier: Apache-2.0
// Adding and removing users, in the table and in the password file.
#include <errno.h>

#include "kestrove/persistence.h"
#include "kestrove/users.h"
#include "store/accounts.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/mode.h"
#include "users/login.h"
#include "users/password_file.h"
#include "users/password_hash.h"

namespace kestrove {
namespace {

constexpr size_t kShortestName = 5;

bool letterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

[[nodiscard]] int checkName(std::string_view name) {
  for (char c : name) {
    if (!letterOrDigit(c)) return fail(SHM_EINVAL);
  }
  return name.size() < kShortestName || name.size() == sizeof(UserAccount::username) ? fail(SHM_ERANGE) : 0;
}

// A failed save leaves the account where it is.
void persist() {
  if (!configurationMode()) save_shared_memory();
}

bool tableFull() { return static_cast<uint32_t>(shm->config.userCount) >= SHM_USERS; }

struct AccountName {
  explicit AccountName(const UserAccount& account) { copyField(text, sizeof text, account.username); }
  char text[sizeof(UserAccount::username) + 1];
};

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int shm_addUser(const UserAccount* account) {
  if (!account) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  if (tableFull()) return fail(SHM_EFULL);
  if (checkLogin(AccountName(*account).text, nullptr) == 1) return fail(SHM_EEXIST);
  appendAccount(*account);
  persist();
  return 0;
}

// The account is copied first: it may be one of the table itself.
int addUser(const UserAccount* given, const char* password) {
  if (!given) return fail(SHM_EINVAL);
  UserAccount account = *given;
  if (checkName(accountName(account)) != 0) return -1;
  StoreLock lock;
  if (!lock || shm_addUser(&account) != 0) return -1;
  AccountName name(account);
  if (!password) return 0;
  if (validatePasswordComplexity(password, nullptr) == 0 && addPassword(name.text, password) == 0) return 0;
  uint32_t code = shm_errno;
  int error = errno;
  if (takeBackAccount(name.text)) save_shared_memory();  // the first failure is the one to tell
  errno = error;
  return fail(static_cast<int>(code));
}

int addPassword(const char* name, const char* password) {
  if (!name || !password) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  PasswordHash hash(password);
  return hash ? appendPasswordLine(name, hash.text()) : fail(SHM_ESYSTEM);
}

int removeUser(const char* name) {
  if (!name) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  int known = checkLogin(name, nullptr);
  if (known != 1) return known;
  int slot = findAccount(name);
  if (slot < 0) {
    shm_errno = SHM_ENOUSER;
    return 0;
  }
  AccountName own(shm->config.users[slot]);  // the name given may stand in the table, which moves up now
  dropAccount(slot);
  if (removePasswordLines(own.text) != 0) return -1;
  persist();
  return 1;
}
