// SPDX-License-Identifier: Apache-2.0
// Answers for the module's objects, and tells what the event log has got.
#pragma once

#include <memory>

#include "tools/monitor/store.h"
#include "tools/snmp/tree.h"

namespace snmp {

// A refusal of a set, as the protocol numbers it; 0 for none.
using Refused = int;

class Agent {
 public:
  // The store that is there, and what is new in it.
  void look();

  const ShmData* data() const { return store_.data(); }
  const Tree& tree() const { return tree_; }
  // The field as it stands under the lock; without it where somebody else keeps that.
  std::vector<uint8_t> read(const Found& found);
  // Whether the item may be set at all, and to a value of this kind.
  Refused check(const Found& found, int type, size_t length) const;
  Refused set(const Found& found, std::span<const uint8_t> value);

 private:
  void tellEvents();
  void tellNotifications();
  void logStart();
  Refused setUnderLock(const ctl::ItemRow& row, std::span<const uint8_t> value);

  monitor::Store store_;
  Tree tree_;
  std::unique_ptr<EventLog> seen_;
  bool startDue_ = true;
};

// Makes the agent answer for the module. Once.
void registerModule(Agent& agent);

}  // namespace snmp
