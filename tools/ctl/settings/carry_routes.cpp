// SPDX-License-Identifier: Apache-2.0
// The routes: removed outside Configuration Mode, in which the library refuses it, added in it, and brought into the
// kernel afterwards.
#include <cerrno>
#include <unordered_map>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/carrying.h"
#include "tools/ctl/settings/route_walk.h"

namespace ctl {
namespace {

struct Table4 {
  using Entry = RouteEntry;
  static constexpr const char* kSection = "routes";
  static std::vector<const Entry*> inOrder(const ShmData& store) { return routesOf(store); }
  static int add(Entry& route) { return addUserRoute(&route); }
  static int remove(const Entry& route) { return deleteUserRoute(route.destination, route.netmask); }
  static bool install(const Entry& route) {
    return v4AddressIsLocal(route.gateway) >= 0 && addKernelRoute(&route) >= 0;
  }
};

struct Table6 {
  using Entry = Route6Entry;
  static constexpr const char* kSection = "routes6";
  static std::vector<const Entry*> inOrder(const ShmData& store) { return routes6Of(store); }
  static int add(Entry& route) { return addUserRoute6(&route); }
  static int remove(const Entry& route) { return deleteUserRoute6(route.destination, route.prefixLength); }
  static bool install(const Entry& route) {
    Entry own = route;
    return gatewayIsLocal6(&own) == 1 && addKernelRoute6(&own) >= 0;
  }
};

template <typename Table>
using Routes = std::unordered_map<std::string, typename Table::Entry>;

// Nothing is looked up where nothing changes.
template <typename Table>
Routes<Table> routesIn(const Carrying& carrying, const ShmData& store) {
  Routes<Table> routes;
  if (!carrying.any(Table::kSection)) return routes;
  for (const typename Table::Entry* route : Table::inOrder(store)) routes.emplace(keyOf(*route), *route);
  return routes;
}

// The kernel may have lost the route: the first refusal only marks it as inactive, and then it goes.
template <typename Table>
int removeRoute(const typename Table::Entry& route) {
  return Table::remove(route) == 0 ? 0 : Table::remove(route);
}

template <typename Table>
void removeChanged(Carrying& carrying) {
  const Routes<Table> routes = routesIn<Table>(carrying, carrying.before);
  for (const SettingChange* change : carrying.changesOf(Table::kSection)) {
    if (!change->before) continue;
    const SettingChange removal = {change->section, change->key, change->before, {}};
    if (!carrying.follows()) {
      carrying.cannot(removal, "in Configuration Mode no route is removed");
    } else {
      carrying.attempt(removal, [&] { return removeRoute<Table>(routes.at(change->key)); });
    }
  }
}

// What is stored as active is brought into the kernel later.
template <typename Table>
void addChanged(Carrying& carrying) {
  const Routes<Table> routes = routesIn<Table>(carrying, carrying.target);
  for (const SettingChange* change : carrying.changesOf(Table::kSection)) {
    if (!change->after || (change->before && !carrying.made(change->section, change->key))) continue;
    typename Table::Entry route = routes.at(change->key);
    if (route.status != SHM_ROUTE_DISABLED) route.status = SHM_ROUTE_ACTIVE;
    carrying.attempt(*change, [&route] { return Table::add(route); });
  }
}

// One that the kernel does not take stays as inactive: removing it from the kernel, which fails, marks it so.
template <typename Table>
void installAdded(Carrying& carrying) {
  const Routes<Table> routes = routesIn<Table>(carrying, *shm);
  for (const SettingChange* change : carrying.changesOf(Table::kSection)) {
    auto route = routes.find(change->key);
    if (!change->after || route == routes.end() || !carrying.made(change->section, change->key)) continue;
    if (route->second.status != SHM_ROUTE_ACTIVE) continue;
    errno = 0;
    if (!Table::install(route->second) && errno != EEXIST) Table::remove(route->second);
  }
}

}  // namespace

void removeRoutes(Carrying& carrying) {
  removeChanged<Table4>(carrying);
  removeChanged<Table6>(carrying);
}

void addRoutes(Carrying& carrying) {
  addChanged<Table4>(carrying);
  addChanged<Table6>(carrying);
}

// A transition has brought all routes into the kernel; other addresses may have made gateways near or far.
void applyRoutes(Carrying& carrying) {
  if (carrying.modeChanged || carrying.debugging()) return;
  if (carrying.addressesChanged) {
    addAllRoutes();
  } else {
    installAdded<Table4>(carrying);
  }
  installAdded<Table6>(carrying);
}

}  // namespace ctl
