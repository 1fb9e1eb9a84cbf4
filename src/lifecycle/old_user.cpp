// SPDX-License-Identifier: Apache-2.0
// One-time move of an administrator account named by old configuration keys.
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <syslog.h>
#include <unistd.h>

#include "kestrove/persistence.h"
#include "kestrove/users.h"
#include "store/accounts.h"
#include "store/lock.h"
#include "store/text.h"
#include "sys/descriptor.h"
#include "sys/repeated.h"

namespace kestrove {
namespace {

constexpr char kConfigFile[] = "/etc/config/kestrove.conf";
constexpr mode_t kFileMode = 0666;
constexpr char kRows[] = "%s%-25s %.*s\n%-25s %.*s\n";
constexpr size_t kLongestRows = 160;

// The account as the keys name it. The password is plain text and leaves no trace on the stack.
struct OldUser {
  OldUser() {
    copyField(name, sizeof name, shm->oldAdminUsername);
    copyField(password, sizeof password, shm->oldAdminPassword);
  }
  ~OldUser() { explicit_bzero(password, sizeof password); }
  OldUser(const OldUser&) = delete;
  OldUser& operator=(const OldUser&) = delete;

  char name[sizeof(ShmData::oldAdminUsername) + 1];
  char password[sizeof(ShmData::oldAdminPassword) + 1];
};

int addToTable(const OldUser& user) {
  UserAccount account = {};
  setField(account.username, user.name);
  account.superUser = 1;
  return shm_addUser(&account);
}

// A name that the table refuses is removed all the same, an account of that name too: kept on purpose, the next start
// then finds room for it. The code that counts is that of the first failure.
int createAccount(const OldUser& user) {
  int added = addToTable(user);
  int result = added < 0 ? added : addPassword(user.name, user.password);
  if (result >= 0) return result;
  uint32_t code = shm_errno;
  int error = errno;
  if (added < 0) {
    removeUser(user.name);
  } else if (takeBackAccount(user.name)) {
    save_shared_memory();
  }
  errno = error;
  shm_errno = code;
  return result;
}

bool unfinished(int file) {
  off_t size = lseek(file, 0, SEEK_END);
  char last = '\n';
  return size > 0 && pread(file, &last, 1, size - 1) == 1 && last != '\n';
}

// What a line can hold of a text.
int lineLength(const char* text) { return static_cast<int>(strcspn(text, "\n")); }

// The next start finds the keys again, on lines of their own. Through no stream, whose buffer would keep the password.
void keepForNextStart(const OldUser& user) {
  sys::Descriptor file(open(kConfigFile, O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, kFileMode));
  if (!file) return;
  char rows[kLongestRows];
  int length = snprintf(rows, sizeof rows, kRows, unfinished(file.get()) ? "\n" : "", "ADMIN_USERNAME",
                        lineLength(user.name), user.name, "ADMIN_PASSWORD", lineLength(user.password), user.password);
  auto size = static_cast<size_t>(length);
  if (sys::repeated([&] { return write(file.get(), rows, size); }) != length) {
    syslog(LOG_ERR, "Error writing %s: %m", kConfigFile);
  }
  explicit_bzero(rows, sizeof rows);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// Once the account exists, its plain password has no place in the store any more; until then the store keeps it.
int addOldUser(void) {
  StoreLock lock;
  if (!lock) return -1;
  OldUser user;
  if (!*user.name || !*user.password) return 0;
  int result = createAccount(user);
  if (result < 0) {
    keepForNextStart(user);
  } else {
    explicit_bzero(shm->oldAdminPassword, sizeof shm->oldAdminPassword);
  }
  return result;
}
