// SPDX-License-Identifier: Apache-2.0
// The numbers of KESTROVE-MIB, under the enterprise number that is kept for documents.
#pragma once

#include <cstdint>
#include <string>

namespace snmp {

inline constexpr uint32_t kModule[] = {1, 3, 6, 1, 4, 1, 32473, 1};
inline constexpr uint32_t kNotifications = 0;
inline constexpr uint32_t kObjects = 1;
inline constexpr uint32_t kConformance = 2;
inline constexpr uint32_t kEventNotification = 1;
inline constexpr uint32_t kFlagNotification = 2;
// What notifications carry, in a group of its own.
inline constexpr uint32_t kCarried = 20;
enum CarriedArc : uint32_t { kEventId = 1, kEventTime, kEventSource, kEventUser, kEventText, kFlagNumber };

// The text of the module.
std::string moduleText();

}  // namespace snmp
