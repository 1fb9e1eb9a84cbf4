// SPDX-License-Identifier: Apache-2.0
// Factory resets, and the store built anew.
#include <errno.h>
#include <unistd.h>

#include "kestrove/codes.h"
#include "kestrove/events.h"
#include "kestrove/items.h"
#include "kestrove/persistence.h"
#include "kestrove/system.h"
#include "kestrove/users.h"
#include "store/accounts.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/text.h"
#include "sys/command.h"

namespace kestrove {
namespace {

constexpr char kConfiguredMarker[] = "/var/etc/config/configured";
constexpr char kNull[] = "/dev/null";
constexpr const char* kAgentFiles[] = {"/var/config/snmpd.conf", "/var/net-snmp/snmpd.conf"};

enum class Accounts { kRemove, kKeep };

// An account without a password line, which removeUser does not know, leaves the table by itself.
bool removeFirstUser() {
  UserAccount account;
  if (getUserTableEntry(0, &account) != 0) return false;
  char name[sizeof account.username + 1];
  copyField(name, sizeof name, account.username);
  int removed = removeUser(name);
  if (removed == 0) dropAccount(0);
  return removed >= 0;
}

// A count beyond the table is damage; it does not keep the reset busy.
bool removeUsers() {
  for (int i = 0; i < SHM_USERS && shm->config.userCount > 0; ++i) {
    if (!removeFirstUser()) return false;
  }
  return shm->config.userCount <= 0;
}

bool removeAgentFiles() {
  for (const char* path : kAgentFiles) {
    if (unlink(path) != 0 && errno != ENOENT) return false;
  }
  return true;
}

// A file that is not there fails the reset: kept on purpose.
template <size_t N>
bool removeNamedFile(const char (&field)[N]) {
  char path[N + 1];
  copyField(path, sizeof path, field);
  return unlink(path) == 0;
}

void copyBackup() {
  char path[sizeof shm->config.configFileName + 1];
  copyField(path, sizeof path, shm->config.configFileName);
  // An appliance that never made a backup starts from the factory defaults alone.
  sys::tryLine("cp %s.bak %s", {sys::Word::path(path), sys::Word::path(path)});
}

int resetToFactory(uint32_t source, const char* user, Accounts accounts) {
  StoreLock lock;
  if (!lock) return -1;
  // Logging goes first, so that neither the clearing nor what follows leaves an event.
  setKestroveConfigItem(SHM_ITEM_LOGGING, SHM_OFF, source, user);
  clearEventLog(source, user);
  // From here on no save brings back the files that go.
  shm->operationalState = SHM_STATE_CONFIGURATION;
  if (accounts == Accounts::kRemove && !removeUsers()) return fail(SHM_ESYSTEM);
  if (!removeAgentFiles()) return fail(SHM_ESYSTEM);
  if (accounts == Accounts::kRemove) unlink(kConfiguredMarker);
  if (!removeNamedFile(shm->config.eventLogFileName)) return fail(SHM_ESYSTEM);
  if (!removeNamedFile(shm->config.configFileName)) return fail(SHM_ESYSTEM);
  copyBackup();
  lock.leaveHeld();  // on purpose: the caller restarts the appliance next
  return 0;
}

int runProgram(const char* path) {
  char* argv[] = {const_cast<char*>(path), nullptr};
  return runCommand(argv, kNull, kNull);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int restoreFactoryDefaults(uint32_t source, const char* user) {
  return resetToFactory(source, user, Accounts::kRemove);
}

int restoreZELFactoryDefaults(uint32_t source, const char* user) {
  return resetToFactory(source, user, Accounts::kKeep);
}

int ZELrestore(void) {
  // A store that cannot be removed is met by the start-up program, which says so.
  shm_detach();
  delete_shared_memory();
  LockPause pause;  // both programs use the store
  runProgram(KESTROVE_SHM_INIT);
  return runProgram("/bin/restartKestrove");
}
