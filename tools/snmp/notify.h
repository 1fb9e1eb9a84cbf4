// SPDX-License-Identifier: Apache-2.0
// Notifications.
#pragma once

#include "kestrove/layout.h"

namespace snmp {

void notifyEvent(const EventRecord& event);
void notifyFlag(uint32_t number);

}  // namespace snmp
