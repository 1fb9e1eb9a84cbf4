// SPDX-License-Identifier: Apache-2.0
// Answers for the module's objects, and tells what the event log has got.
#pragma once

#include <memory>

#include "tools/monitor/store.h"
#include "tools/snmp/hints.h"
#include "tools/snmp/setting.h"
#include "tools/snmp/tree.h"

namespace snmp {

class Agent {
 public:
  explicit Agent(Hints& hints) : hints_(hints) {}
  // The store that is there, and what is new in it.
  void look();

  const ShmData* data() const { return store_.data(); }
  const Tree& tree() const { return tree_; }
  // The field, whole. Where somebody keeps the lock, as it stands.
  std::vector<uint8_t> read(const Found& found);
  Refused set(const Found& found, std::span<const uint8_t> value);

 private:
  void tellEvents();
  void tellNotifications();
  void logStart();
  void logRefusals();
  uint32_t source() const;

  Hints& hints_;
  monitor::Store store_;
  Tree tree_;
  std::unique_ptr<EventLog> seen_;
  bool startDue_ = true;
};

// Makes the agent answer for the module. Once.
void registerModule(Agent& agent);

}  // namespace snmp
