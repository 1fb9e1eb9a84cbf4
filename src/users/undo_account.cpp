#include "users/undo_account.h"

#include "kestrove/persistence.h"
#include "store/accounts.h"

namespace kestrove {

void undoAccount(std::string_view name) {
  int slot = findLastAccount(name);
  if (slot < 0) return;
  dropAccount(slot);
  save_shared_memory();
}

}  // namespace kestrove
