// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/agent.h"

#include <syslog.h>

#include <algorithm>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/watch/event_news.h"
#include "tools/snmp/notify.h"
#include "tools/snmp/wire.h"

namespace snmp {
namespace {

constexpr uint32_t kMostAtOnce = 100;  // notifications of one look: a cleared log is no storm
constexpr size_t kHeader = offsetof(EventLog, record);
constexpr size_t kWord = sizeof(uint32_t);  // which is whole without the lock

// A copy in whose time nothing was added; none where the log is being written.
std::unique_ptr<EventLog> copyOf(const EventLog& log) {
  auto copy = std::make_unique_for_overwrite<EventLog>();
  memcpy(copy.get(), &log, sizeof log);
  if (memcmp(copy.get(), &log, kHeader) != 0) copy.reset();
  return copy;
}

}  // namespace

void Agent::look() {
  if (store_.look() != monitor::Store::Change::kNone) {
    seen_.reset();
    startDue_ = startDue_ || data();
  }
  if (const std::string why = store_.absence(); !why.empty()) {
    syslog(LOG_WARNING, "%s: managers are shown nothing", why.c_str());
  }
  if (!data()) return;
  if (startDue_) logStart();
  logRefusals();
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

// By the module in snmpd; without it by the item that says which version is in use.
uint32_t Agent::source() const {
  if (hints_.writer()) return *hints_.writer();
  const uint32_t version = std::clamp<uint32_t>(data()->config.snmpVersion, 1, 3);
  return SHM_SOURCE_SNMP_V1 + version - 1;
}

void Agent::logRefusals() {
  hints_.hear();
  const monitor::Milliseconds now = monitor::clockNow();
  if (!hints_.due(now)) return;
  const monitor::Visit visit(store_);
  if (visit) hints_.log(now);
}

std::vector<uint8_t> Agent::read(const Found& found) {
  std::optional<monitor::Visit> visit;
  if (found.leaf->field->width > kWord) visit.emplace(store_);
  const std::span<const uint8_t> bytes = bytesOf(found, *data());
  return {bytes.begin(), bytes.end()};
}

// A switch that was turned off meanwhile counts.
Refused Agent::set(const Found& found, std::span<const uint8_t> value) {
  hints_.hear();
  const monitor::Visit visit(store_);
  if (!visit) return kResourceUnavailable;
  return data()->config.snmpOperState == SHM_ON ? snmp::set(found, value, source()) : kNoAccess;
}

}  // namespace snmp
