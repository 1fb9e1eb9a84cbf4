// SPDX-License-Identifier: Apache-2.0
// The routes of a store in the order of their lists, which may be damaged.
#pragma once

#include <cstddef>
#include <vector>

#include "kestrove/layout.h"

namespace ctl {

template <typename Entry, size_t N>
std::vector<const Entry*> walk(const Entry (&slots)[N], uint32_t at) {
  std::vector<const Entry*> routes;
  while (routes.size() < N && at < N && slots[at].inUse == 1) {
    routes.push_back(&slots[at]);
    at = slots[at].next;
  }
  return routes;
}

inline std::vector<const RouteEntry*> routesOf(const ShmData& store) {
  return walk(store.routes.slot, store.routes.head);
}

inline std::vector<const Route6Entry*> routes6Of(const ShmData& store) {
  return walk(store.routes6.slot, store.routes6.head6);
}

}  // namespace ctl
