#include "store/undo_account.h"

#include "kestrove/persistence.h"
#include "kestrove/users.h"
#include "store/accounts.h"
#include "store/lock.h"

namespace kestrove {

void undoAccount(const char* name) {
  if (removeUser(name) != 0) return;
  StoreLock lock;
  int slot = lock ? findLastAccount(name) : -1;
  if (slot < 0) return;
  dropAccount(slot);
  save_shared_memory();
}

}  // namespace kestrove
