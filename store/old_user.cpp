// One-time move of an administrator account named by old configuration keys.
#include <stdio.h>
#include <string.h>

#include "kestrove/persistence.h"
#include "kestrove/users.h"
#include "store/lock.h"
#include "store/text.h"
#include "store/undo_account.h"
#include "sys/stream.h"

namespace kestrove {
namespace {

constexpr char kConfigFile[] = "/etc/config/kestrove.conf";
constexpr char kRowFormat[] = "%-25s %s\n";

struct OldUser {
  char name[sizeof(ShmData::oldAdminUsername) + 1];
  char password[sizeof(ShmData::oldAdminPassword) + 1];
};

int addToTable(const OldUser& user) {
  UserAccount account = {};
  setField(account.username, user.name);
  account.superUser = 1;
  return shm_addUser(&account);
}

// A name that the table refuses is removed all the same, somebody else's account too: kept on purpose, the next start
// then finds room for it. The code that counts is that of the first failure.
int createAccount(const OldUser& user) {
  int added = addToTable(user);
  int result = added < 0 ? added : addPassword(user.name, user.password);
  if (result >= 0) return result;
  uint32_t code = shm_errno;
  if (added < 0) {
    removeUser(user.name);
  } else {
    undoAccount(user.name);
  }
  shm_errno = code;
  return result;
}

// The next start finds the keys again.
void keepForNextStart(const OldUser& user) {
  sys::Stream file(fopen(kConfigFile, "ae"));
  if (!file) return;
  fprintf(file.get(), kRowFormat, "ADMIN_USERNAME", user.name);
  fprintf(file.get(), kRowFormat, "ADMIN_PASSWORD", user.password);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int addOldUser(void) {
  OldUser user;
  {
    StoreLock lock;
    if (!lock) return -1;
    copyField(user.name, sizeof user.name, shm->oldAdminUsername);
    copyField(user.password, sizeof user.password, shm->oldAdminPassword);
  }
  if (!*user.name || !*user.password) return 0;
  int result = createAccount(user);
  if (result < 0) keepForNextStart(user);
  return result;
}
