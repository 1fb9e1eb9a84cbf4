// SPDX-License-Identifier: Apache-2.0
// What an engine would make of the traffic that a stand-in only sees pass: for an appliance that is looked at. The
// numbers have no other meaning than that they move together as an engine's do.
#pragma once

#include "kestrove/engine.h"
#include "tools/sim/interval.h"

namespace sim {

// Compression while it is on, queues for the classes of the WAN, sessions, and drops where the WAN is full.
void act(IntervalRecord& record, const EngineConfiguration& settings);

// The session engine's record: what each port passed, and the sessions of the interval.
SessionEngineStats sessionRecord(const InterfaceCounters& lan, const InterfaceCounters& wan,
                                 const IntervalRecord& record);

}  // namespace sim
