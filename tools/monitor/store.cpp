// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/store.h"

#include <sys/shm.h>
#include <syslog.h>

#include "kestrove/kestrove.h"
#include "tools/common/lock_wait.h"
#include "tools/ctl/shell/glance.h"

namespace monitor {
namespace {

constexpr double kPatience = 0.2;          // seconds in the queue for the lock
constexpr Milliseconds kAnotherTry = 500;  // so that a holder which is stopped costs less than it leaves

int presentSegment() { return shmget(SHM_KEY, SHM_SIZE, 0); }

void forgetAttachment() {
  if (shm) shm_detach();
  shm = nullptr;
}

}  // namespace

Store::Change Store::look() {
  if (const int present = presentSegment(); present != segment_) {
    forgetAttachment();
    segment_ = present;
    built_ = false;
    if (!ctl::glance()) return Change::kWent;
  }
  if (built_ || !shm) return Change::kNone;
  built_ = static_cast<bool>(Visit(*this));
  return built_ ? Change::kCame : Change::kNone;
}

const ShmData* Store::data() const { return built_ ? shm : nullptr; }

bool Store::lock() {
  if (!shm || clockNow() < notBefore_) return false;
  const tools::LockAnswer answer = tools::waitForLock(kPatience);
  if (answer.state == tools::LockState::kFree && kestrove_hold() == 0) {
    toldOfHolder_ = false;
    return true;
  }
  if (answer.state == tools::LockState::kFree) tools::giveLockBack();
  waited(answer.state == tools::LockState::kHeld ? tools::describe(answer.holder).c_str() : nullptr);
  return false;
}

void Store::waited(const char* holder) {
  notBefore_ = clockNow() + kAnotherTry;
  if (toldOfHolder_) return;
  toldOfHolder_ = true;
  if (holder) {
    syslog(LOG_WARNING, "the store is locked by %s; what needs it waits", holder);
  } else {
    syslog(LOG_WARNING, "the store cannot be locked; what needs it waits");
  }
}

Visit::~Visit() {
  if (held_) kestrove_release();
}

}  // namespace monitor
