#include "store/accounts.h"

#include <string.h>

#include "kestrove/segment.h"
#include "store/bounds.h"

namespace kestrove {
namespace {

constexpr int kAdministrator = 1;

UserAccount* accounts() { return shm->config.users; }

void countAdministrator(const UserAccount& account, int step) {
  if (account.superUser != kAdministrator) return;
  int64_t count = int64_t{shm->config.adminUserCount} + step;
  shm->config.adminUserCount = count < 0 ? 0 : static_cast<int32_t>(count);
}

}  // namespace

int findAccount(std::string_view name) {
  for (int slot = 0; slot < SHM_USERS; ++slot) {
    if (accountName(accounts()[slot]) == name) return slot;
  }
  return -1;
}

int findLastAccount(std::string_view name) {
  int slot = SHM_USERS - 1;
  while (slot >= 0 && accountName(accounts()[slot]) != name) --slot;
  return slot;
}

void appendAccount(const UserAccount& account) {
  accounts()[userEntries(*shm)] = account;
  shm->config.userCount = userEntries(*shm) + 1;
  countAdministrator(account, 1);
}

// The slot just past the accounts moves down with them; past a full table that is an empty one. A slot that is left
// over behind the accounts in use is emptied alone.
void dropAccount(int slot) {
  int used = userEntries(*shm);
  if (slot >= used) {
    accounts()[slot] = {};
    return;
  }
  countAdministrator(accounts()[slot], -1);
  int moved = (used < SHM_USERS ? used : SHM_USERS - 1) - slot;
  memmove(accounts() + slot, accounts() + slot + 1, static_cast<size_t>(moved) * sizeof(UserAccount));
  if (used == SHM_USERS) accounts()[SHM_USERS - 1] = {};
  shm->config.userCount = used - 1;
}

}  // namespace kestrove
