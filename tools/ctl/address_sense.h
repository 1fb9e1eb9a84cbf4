// SPDX-License-Identifier: Apache-2.0
// Which management addresses make sense; the tables hold others, too.
#pragma once

#include <arpa/inet.h>

#include "kestrove/layout.h"
#include "tools/ctl/vocabulary.h"

namespace ctl {

inline bool isUnicast(uint32_t address) {
  const uint32_t host = ntohl(address);
  return host != 0 && host >> 24 != 127 && host >> 24 < 224;
}

inline bool hasHoles(uint32_t mask) {
  const uint32_t rest = ~ntohl(mask);
  return (rest & (rest + 1)) != 0;
}

inline bool isInterfaceKind(int32_t kind) {
  for (const NamedNumber& word : kInterfaceKinds) {
    if (word.number == kind) return true;
  }
  return false;
}

// What address add takes without --as-is.
inline bool isUsable(const ManagementAddress& entry) {
  if (!isInterfaceKind(entry.interfaceKind)) return false;
  if (entry.ipVersion == SHM_FAMILY_IPV6) return true;
  return entry.ipVersion == SHM_FAMILY_IPV4 && isUnicast(entry.address) && !hasHoles(entry.mask);
}

}  // namespace ctl
