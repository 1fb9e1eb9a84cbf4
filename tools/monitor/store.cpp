// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/store.h"

#include <sys/shm.h>
#include <syslog.h>

#include "kestrove/kestrove.h"
#include "tools/common/lock_wait.h"
#include "tools/common/store_refusal.h"
#include "tools/ctl/shell/glance.h"

namespace monitor {
namespace {

constexpr double kPatience = 0.2;          // seconds in the queue for the lock
constexpr Milliseconds kAnotherTry = 500;  // so that a holder which is stopped costs less than it leaves

int presentSegment() { return shmget(SHM_KEY, SHM_SIZE, 0); }

std::string reasonOf(const tools::LockAnswer& answer) {
  if (answer.state == tools::LockState::kHeld) return "is locked by " + tools::describe(answer.holder);
  const std::string cannot = "cannot be locked";
  return answer.error ? cannot + ": " + strerror(answer.error) : cannot;
}

void forgetAttachment() {
  if (shm) shm_detach();
  shm = nullptr;
}

}  // namespace

Store::Change Store::look() {
  const int present = presentSegment();
  const bool another = present != segment_;
  if (another) {
    forgetAttachment();
    segment_ = present;
    built_ = false;
  }
  if (!ctl::glance()) return another ? Change::kWent : Change::kNone;
  if (built_) return Change::kNone;
  built_ = static_cast<bool>(Visit(*this));
  return built_ ? Change::kCame : Change::kNone;
}

std::string Store::absence() {
  std::string now = shm ? "" : tools::segmentRefusal(tools::segmentError());
  if (now == toldOfAbsence_) return "";
  return toldOfAbsence_ = std::move(now);
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
  waited(reasonOf(answer));
  return false;
}

void Store::waited(const std::string& why) {
  notBefore_ = clockNow() + kAnotherTry;
  if (toldOfHolder_) return;
  toldOfHolder_ = true;
  syslog(LOG_WARNING, "the store %s; what needs it waits", why.c_str());
}

Visit::~Visit() {
  if (held_) kestrove_release();
}

}  // namespace monitor
