// SPDX-License-Identifier: Apache-2.0
// The fixed tables of the event log: kinds of events and their sources.
#pragma once

#include <stdint.h>

namespace kestrove {

constexpr uint32_t kEventKinds = 49;

struct EventKind {
  uint32_t id;
  const char* type;
  const char* description;
};

// The kind of an event; an id outside the catalogue counts as id 0.
const EventKind& eventKind(uint32_t id);

// The name of a source; for the unnamed ones and every number beyond the table what printf makes of a null text.
const char* eventSourceText(uint32_t source);

}  // namespace kestrove
