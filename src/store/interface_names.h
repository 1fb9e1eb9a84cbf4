// SPDX-License-Identifier: Apache-2.0
// The names that the store holds for the interface numbers, for callers under the lock.
#pragma once

#include "kestrove/codes.h"
#include "kestrove/segment.h"
#include "store/text.h"

namespace kestrove {

constexpr char kBridge[] = "br0";

struct InterfaceName {
  char text[16] = "";
};

namespace interface_names {

using Field = char (ConfigRecord::*)[16];

struct Row {
  Field current;
  Field physical;
};

// By interface number: LAN, WAN, none, management port, bridge (fixed), bridge/router port.
constexpr Row kRows[] = {{&ConfigRecord::lanInterfaceName, &ConfigRecord::physicalLanInterfaceName},
                         {&ConfigRecord::wanInterfaceName, &ConfigRecord::physicalWanInterfaceName},
                         {nullptr, nullptr},
                         {&ConfigRecord::managementInterfaceName, &ConfigRecord::managementInterfaceName},
                         {nullptr, nullptr},
                         {&ConfigRecord::bridgeRouterPhysicalName, &ConfigRecord::bridgeRouterPhysicalName}};

// Null for a number without a stored name.
inline Field fieldOf(int number, Field Row::*column) {
  return static_cast<unsigned>(number) < sizeof kRows / sizeof kRows[0] ? kRows[number].*column : nullptr;
}
inline Field currentField(int number) { return fieldOf(number, &Row::current); }

inline bool copy(int number, Field Row::*column, InterfaceName& name) {
  if (number == SHM_IF_BRIDGE) {
    memcpy(name.text, kBridge, sizeof kBridge);
    return true;
  }
  Field field = fieldOf(number, column);
  if (!field) return false;
  copyField(name.text, sizeof name.text, shm->config.*field);
  return true;
}

}  // namespace interface_names

// The name in use now; in some modes LAN and WAN are not their physical ports. False for a number without a name.
[[nodiscard]] inline bool interfaceName(int number, InterfaceName& name) {
  return interface_names::copy(number, &interface_names::Row::current, name);
}
[[nodiscard]] inline bool physicalInterfaceName(int number, InterfaceName& name) {
  return interface_names::copy(number, &interface_names::Row::physical, name);
}

}  // namespace kestrove
