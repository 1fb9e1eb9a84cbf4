// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/agent.h"

#include <algorithm>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/watch/event_news.h"
#include "tools/snmp/notify.h"
#include "tools/snmp/wire.h"

namespace snmp {
namespace {

constexpr char kUser[] = "snmp";
constexpr uint32_t kMostAtOnce = 100;  // notifications of one look: a cleared log is no storm
constexpr size_t kHeader = offsetof(EventLog, record);
constexpr size_t kLongestText = 256;

// The subagent is not told by which version of the protocol it was asked: the store says which one is in use.
uint32_t source() {
  const uint32_t version = std::clamp<uint32_t>(shm->config.snmpVersion, 1, 3);
  return SHM_SOURCE_SNMP_V1 + version - 1;
}

// A copy in whose time nothing was added; none where the log is being written.
std::unique_ptr<EventLog> copyOf(const EventLog& log) {
  auto copy = std::make_unique_for_overwrite<EventLog>();
  memcpy(copy.get(), &log, sizeof log);
  return memcmp(copy.get(), &log, kHeader) == 0 ? std::move(copy) : nullptr;
}

bool allowed(const ShmData& store) { return store.config.snmpOperState == SHM_ON; }

}  // namespace

void Agent::look() {
  if (store_.look() != monitor::Store::Change::kNone) {
    seen_.reset();
    startDue_ = startDue_ || data();
  }
  if (!data()) return;
  if (startDue_) logStart();
  tellEvents();
  tellNotifications();
}

void Agent::logStart() {
  monitor::Visit visit(store_);
  if (!visit) return;
  startDue_ = false;
  logEvent(SHM_EVENT_SNMP_AGENT_STARTED, source(), kUser);
}

// Without the lock: what is half written is told at the next look.
void Agent::tellEvents() {
  const EventLog& log = data()->eventLog;
  if (seen_ && memcmp(seen_.get(), &log, kHeader) == 0) return;
  std::unique_ptr<EventLog> now = copyOf(log);
  if (!now) return;
  const uint32_t added = seen_ ? std::min(ctl::newsSince(*seen_, *now).count, kMostAtOnce) : 0;
  for (uint32_t back = added; back > 0; --back) {
    notifyEvent(now->record[(now->writeIndex + SHM_EVENTS - back) % SHM_EVENTS]);
  }
  seen_ = std::move(now);
}

// Reading a notification clears it: the lock is asked for only where one is set.
void Agent::tellNotifications() {
  for (int number = 1; number <= 3; ++number) {
    if (!(data()->notificationStatus & (1 << (number - 1)))) continue;
    monitor::Visit visit(store_);
    if (visit && getNotificationStatus(number) == 1) notifyFlag(static_cast<uint32_t>(number));
  }
}

std::vector<uint8_t> Agent::read(const Found& found) {
  const monitor::Visit visit(store_);
  const std::span<const uint8_t> bytes = bytesOf(found, *data());
  return {bytes.begin(), bytes.end()};
}

Refused Agent::check(const Found& found, int type, size_t length) const {
  if (!found.leaf->scalar || !found.leaf->scalar->settable) return kNotWritable;
  if (type != typeOf(found.leaf->field->kind)) return kWrongType;
  const bool isText = found.leaf->field->kind == Kind::kText;
  if (isText ? length > kLongestText : length != sizeof(long)) return kWrongLength;
  return allowed(*data()) ? kNoError : kNoAccess;
}

Refused Agent::set(const Found& found, std::span<const uint8_t> value) {
  const monitor::Visit visit(store_);
  if (!visit) return kResourceUnavailable;
  if (!allowed(*data())) return kNoAccess;
  return setUnderLock(*found.leaf->scalar->settable, value);
}

// The library names its reason; a value that is in the store and not in the file is a failure, too.
Refused Agent::setUnderLock(const ctl::ItemRow& row, std::span<const uint8_t> value) {
  shm_errno = SHM_OK;
  int result;
  if (row.family == ctl::ItemFamily::kText) {
    result = setShmString(row.id, std::string(value.begin(), value.end()).c_str());
  } else {
    long number;
    memcpy(&number, value.data(), sizeof number);
    result = setKestroveConfigItem(row.id, static_cast<uint32_t>(number), source(), kUser);
  }
  if (result == 0 && shm_errno != SHM_EIO) return kNoError;
  return shm_errno == SHM_EINVAL || shm_errno == SHM_ERANGE ? kWrongValue : kGenErr;
}

}  // namespace snmp
