// SPDX-License-Identifier: Apache-2.0
// The exported operations on the event log; each change is in the file before the lock goes.
#include <errno.h>
#include <string.h>
#include <syslog.h>
#include <time.h>

#include "events/catalogue.h"
#include "events/format.h"
#include "events/ring.h"
#include "kestrove/codes.h"
#include "kestrove/events.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/user_name.h"
#include "sys/command.h"

namespace kestrove {
namespace {

constexpr char kEventLogFile[] = "/var/log/kestrove/event.log";
constexpr char kNullDevice[] = "/dev/null";

// A bogus event is told apart here only: it is logged like any other.
void tellSyslog(uint32_t id, uint32_t source) {
  if (id >= kEventKinds) {
    syslog(LOG_WARNING, "Bogus Event: %d", static_cast<int>(id));
    return;
  }
  const EventKind& kind = eventKind(id);
  syslog(LOG_INFO, "Event logged: %s, %s, %s", kind.type, eventSourceText(source), kind.description);
}

[[nodiscard]] int saveEvents() { return write_event_log(kEventLogFile, &shm->eventLog); }

[[nodiscard]] int copyForNewSystem() {
  char program[] = "cp", keepAll[] = "-a", to[] = "/old_dir/var/log/kestrove/";
  char from[sizeof kEventLogFile];
  memcpy(from, kEventLogFile, sizeof from);
  char* const command[] = {program, keepAll, from, to, nullptr};
  return sys::runVector(command, kNullDevice, kNullDevice);
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

// The change in the store stands even when the file cannot be written.
int logEvent(uint32_t id, uint32_t source, const char* user) {
  time_t now = time(nullptr);
  tellSyslog(id, source);
  if (now == static_cast<time_t>(-1)) return fail(SHM_ESYSTEM);
  StoreLock lock;
  if (!lock) return -1;
  if (shm->config.loggingOperState == SHM_OFF) return fail(SHM_ELOGOFF);
  appendEvent(*shm, static_cast<int32_t>(now), id, source, UserName(user).text());
  return saveEvents();
}

// The record is rendered after the lock is released: a listing never keeps a writer waiting, and may show a record that
// is being overwritten.
int getEventString(uint32_t index, char* buffer, int size, int layout) {
  if (!buffer && size != 0) return fail(SHM_EINVAL);
  if (index >= SHM_EVENTS) return 0;
  StoreLock lock;
  if (!lock) return -1;
  const EventRecord* record = findEvent(shm->eventLog, index);
  lock.release();
  return record ? formatEventRecord(*record, buffer, size, layout) : 0;
}

int getEventCount(void) {
  StoreLock lock;
  if (!lock) return -1;
  return shm->eventLog.eventLogFull ? SHM_EVENTS : static_cast<int>(shm->eventLog.writeIndex);
}

// Result, code and errno are those of the file; what its own event leaves does not matter.
int clearEventLog(uint32_t source, const char* user) {
  StoreLock lock;
  if (!lock) return -1;
  emptyEvents(*shm);
  int result = saveEvents();
  uint32_t code = shm_errno;
  int error = errno;
  logEvent(SHM_EVENT_EVENT_LOG_CLEARED, source, user);
  if (result == 0) return 0;
  errno = error;
  return fail(static_cast<int>(code));
}

int wipeEventLog(void) {
  StoreLock lock;
  if (!lock) return -1;
  emptyEvents(*shm);
  return saveEvents();
}

// Goes on without the lock: each step then fails by itself, and the file is copied as it is.
int logSystemUpdateEvent(uint32_t id, uint32_t source, const char* user) {
  UserName name(user);
  StoreLock lock;
  wipeEventLog();
  logEvent(id, source, name.text());
  logEvent(SHM_EVENT_SYSTEM_REBOOTED, source, name.text());
  return copyForNewSystem();
}
