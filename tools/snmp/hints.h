// SPDX-License-Identifier: Apache-2.0
// Hears what the module in snmpd tells.
#pragma once

#include <optional>
#include <string>

#include "kestrove/codes.h"
#include "sys/descriptor.h"
#include "tools/monitor/clock.h"
#include "tools/snmp/hint.h"

namespace snmp {

// One of the two events, at most once a minute: whoever tries communities does not fill the event log.
class Refusals {
 public:
  explicit Refusals(uint32_t event) : event_(event) {}
  void heard(uint32_t source) { source_ = source; }
  bool due(monitor::Milliseconds now) const { return source_ && now >= notBefore_; }
  // For whoever has the store's lock.
  void log(monitor::Milliseconds now);

 private:
  uint32_t event_;
  std::optional<uint32_t> source_;
  monitor::Milliseconds notBefore_ = 0;
};

class Hints {
 public:
  // Root alone and that group may tell. Where the socket cannot be made nothing is heard, and the system log has why.
  Hints(const std::string& path, const std::string& group);
  // Takes in all that came since.
  void hear();
  // By which source the latest write was asked for.
  std::optional<uint32_t> writer() const { return writer_; }
  bool due(monitor::Milliseconds now) const { return reads_.due(now) || writes_.due(now); }
  void log(monitor::Milliseconds now);

 private:
  void take(char hint, uint32_t source);

  kestrove::sys::Descriptor socket_;
  std::optional<uint32_t> writer_;
  Refusals reads_{SHM_EVENT_SNMP_BAD_READ_COMMUNITY};
  Refusals writes_{SHM_EVENT_SNMP_BAD_WRITE_COMMUNITY};
};

}  // namespace snmp
