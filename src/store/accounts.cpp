// SPDX-License-Identifier: Apache-2.0
#include "store/accounts.h"

#include "kestrove/segment.h"
#include "store/bounds.h"
#include "store/hole.h"

namespace kestrove {
namespace {

constexpr int kAdministrator = 1;

using UserHole = Hole<UserAccount>;

UserAccount* accounts() { return shm->config.users; }

int32_t administratorsAfter(const UserAccount& account, int step) {
  if (account.superUser != kAdministrator) return shm->config.adminUserCount;
  int64_t count = int64_t{shm->config.adminUserCount} + step;
  return count < 0 ? 0 : static_cast<int32_t>(count);
}

Outcome count(ShmData& store, uint32_t users, const Note& note) {
  store.config.userCount = static_cast<int32_t>(users);
  keepOrder();
  store.config.adminUserCount = static_cast<int32_t>(note.value);
  Journal(store).end();
  return Outcome::kFinished;
}

}  // namespace

int findAccount(std::string_view name) {
  for (int slot = 0; slot < SHM_USERS; ++slot) {
    if (accountName(accounts()[slot]) == name) return slot;
  }
  return -1;
}

void appendAccount(const UserAccount& account) {
  auto used = static_cast<uint32_t>(userEntries(*shm));
  Note note = {Work::kUserAdding, 0, used, static_cast<uint32_t>(administratorsAfter(account, 1))};
  UserAccount stored = account;
  Journal(*shm).begin(note);
  accounts()[used] = stored;
  keepOrder();
  static_cast<void>(count(*shm, used + 1, note));  // the outcome is for whoever finishes for others
}

// The slot just past the accounts moves down with them; past a full table that is an empty one. A slot that is left
// over behind the accounts in use is emptied alone.
void dropAccount(int slot) {
  int used = userEntries(*shm);
  if (slot >= used) {
    accounts()[slot] = {};
    return;
  }
  carryOut(*shm, {Work::kUserClosing, UserHole::wordOf(static_cast<uint32_t>(slot)), static_cast<uint32_t>(used),
                  static_cast<uint32_t>(administratorsAfter(accounts()[slot], -1))});
}

bool takeBackAccount(std::string_view name) {
  int slot = SHM_USERS - 1;
  while (slot >= 0 && accountName(accounts()[slot]) != name) --slot;
  if (slot < 0) return false;
  dropAccount(slot);
  return true;
}

Outcome finishUserClosing(ShmData& store, const Note& note) {
  constexpr uint32_t kLast = SHM_USERS - 1;
  uint32_t end = note.small < kLast ? note.small : kLast;
  if (note.small == 0 || note.small > SHM_USERS || note.hole > UserHole::wordOf(end)) return Outcome::kNonsense;
  if (!countedAs(store.config.userCount, SHM_USERS, note.small, note.small - 1)) return Outcome::kNonsense;
  UserHole(store, note, store.config.users).moveTo(end);
  if (note.small == SHM_USERS) store.config.users[kLast] = {};
  keepOrder();
  return count(store, note.small - 1, note);
}

// An account that does not count yet died with its process; nothing is left of its name.
Outcome finishUserAdding(ShmData& store, const Note& note) {
  if (note.hole != 0 || note.small >= SHM_USERS) return Outcome::kNonsense;
  if (!countedAs(store.config.userCount, SHM_USERS, note.small, note.small + 1)) return Outcome::kNonsense;
  if (static_cast<uint32_t>(userEntries(store)) > note.small) return count(store, note.small + 1, note);
  store.config.users[note.small] = {};
  Journal(store).end();
  return Outcome::kTakenBack;
}

}  // namespace kestrove
