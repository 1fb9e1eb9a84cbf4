// SPDX-License-Identifier: Apache-2.0
// route, route6.
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

struct RouteLine {
  Prefix destination;
  Prefix newDestination;
  Address gateway;
  bool disabled = false;
};

// The two tables differ in their records and keys; the commands are the same.
struct Table4 {
  using Entry = RouteEntry;
  static constexpr const char* kCommand = "route";
  static constexpr Family kFamily = Family::kIpv4;
  static constexpr Completion kRows = Completion::kRoutes;

  static Entry entry(const Prefix& destination) {
    Entry route = {};
    route.destination = destination.host.address;
    route.netmask = destination.mask;
    return route;
  }
  static void setGateway(Entry& route, const Address& gateway) { route.gateway = gateway.address; }
  static bool same(const Entry& one, const Entry& other) {
    return one.destination == other.destination && one.netmask == other.netmask && one.gateway == other.gateway;
  }
  static int first(Entry* out) { return getFirstRouteTableEntry(out); }
  static int next(const Entry& route, Entry* out) {
    return getNextRouteTableEntry(route.destination, route.netmask, out);
  }
  static int find(const Entry& key, Entry* out) { return getRouteTableEntry(key.destination, key.netmask, out); }
  static int add(Entry& route) { return addUserRoute(&route); }
  static int remove(const Entry& route) { return deleteUserRoute(route.destination, route.netmask); }
  static int replace(const Entry& key, Entry& route, const Session& session) {
    return replaceUserRoute(key.destination, key.netmask, &route, session.source, session.userName());
  }
  static int freshen(const Session& session) { return freshenRouteTable(session.source, session.userName()); }
  static Json show(const Entry& route) { return routeRow(route); }
};

struct Table6 {
  using Entry = Route6Entry;
  static constexpr const char* kCommand = "route6";
  static constexpr Family kFamily = Family::kIpv6;
  static constexpr Completion kRows = Completion::kRoutes6;

  static Entry entry(const Prefix& destination) {
    Entry route = {};
    memcpy(route.destination, destination.host.address6, sizeof route.destination);
    route.prefixLength = destination.length6;
    return route;
  }
  static void setGateway(Entry& route, const Address& gateway) {
    memcpy(route.gateway, gateway.address6, sizeof route.gateway);
  }
  static bool same(const Entry& one, const Entry& other) {
    return memcmp(one.destination, other.destination, sizeof one.destination) == 0 &&
           one.prefixLength == other.prefixLength && memcmp(one.gateway, other.gateway, sizeof one.gateway) == 0;
  }
  static int first(Entry* out) { return getFirstRoute6TableEntry(out); }
  static int next(const Entry& route, Entry* out) {
    return getNextRoute6TableEntry(route.destination, route.prefixLength, out);
  }
  static int find(const Entry& key, Entry* out) { return getRoute6TableEntry(key.destination, key.prefixLength, out); }
  static int add(Entry& route) { return addUserRoute6(&route); }
  static int remove(const Entry& route) { return deleteUserRoute6(route.destination, route.prefixLength); }
  static int replace(const Entry& key, Entry& route, const Session& session) {
    return replaceUserRoute6(key.destination, key.prefixLength, &route, session.source, session.userName());
  }
  static int freshen(const Session& session) { return freshenRoute6Table(session.source, session.userName()); }
  static Json show(const Entry& route) { return route6Row(route); }
};

template <typename Table>
Json listed() {
  Json rows = Json::array();
  typename Table::Entry route;
  int result = Table::first(&route);
  for (int i = 0; result == 0 && i < SHM_ROUTES; ++i) {
    rows.push_back(Table::show(route));
    typename Table::Entry previous = route;
    result = Table::next(previous, &route);
  }
  return rows;
}

// What the table holds after a change: it may be less than was asked for.
template <typename Table>
void showStored(Change& change, const typename Table::Entry& key) {
  typename Table::Entry stored;
  accept(Table::find(key, &stored), "route");
  change.show(Table::show(stored));
}

template <typename Table>
typename Table::Entry wanted(const Prefix& destination, const RouteLine& line) {
  typename Table::Entry route = Table::entry(destination);
  Table::setGateway(route, line.gateway);
  route.status = line.disabled ? SHM_ROUTE_DISABLED : SHM_ROUTE_ACTIVE;
  return route;
}

// The library refuses it without a code.
void refuseInConfigurationMode(const std::string& what) {
  if (shm->operationalState != SHM_STATE_CONFIGURATION) return;
  throw Refusal(kRefused, what + ": in Configuration Mode no route is removed");
}

template <typename Table>
void add(const Session& session, const RouteLine& line) {
  requireStore(session);
  typename Table::Entry route = wanted<Table>(line.destination, line);
  Change change(session);
  change.made(Table::add(route), line.destination.text);
  showStored<Table>(change, route);
}

template <typename Table>
Wish wish(const RouteLine& line) {
  return wanted<Table>(line.destination, line);
}

// Of a saved script, which has the destination in two words.
struct ScriptLine {
  std::string network, length;
  Address gateway;
  bool disabled = false;
};

template <typename Table>
RouteLine lineOf(const ScriptLine& line) {
  return {.destination = parsePrefix(line.network + "/" + line.length, Table::kFamily),
          .newDestination = {},
          .gateway = line.gateway,
          .disabled = line.disabled};
}

template <typename Table>
void addOfScript(const Session& session, const ScriptLine& line) {
  add<Table>(session, lineOf<Table>(line));
}

template <typename Table>
Wish wishOfScript(const ScriptLine& line) {
  return wish<Table>(lineOf<Table>(line));
}

template <typename Table>
Command scriptRow() {
  const bool six = Table::kFamily == Family::kIpv6;
  return ofScripts(setting(
      std::string(Table::kCommand) + " add", "Add a route in the words of a saved script", addOfScript<Table>,
      wishOfScript<Table>,
      {needed("NETWORK", &ScriptLine::network, takes::text(), "Where it leads"),
       needed(six ? "LENGTH" : "MASK", &ScriptLine::length, takes::text(), six ? "Its prefix length" : "Its netmask"),
       needed("GATEWAY", &ScriptLine::gateway, takes::address(Table::kFamily), "Next hop"),
       flag("-n", &ScriptLine::disabled, "Keep it out of the kernel")}));
}

template <typename Table>
void remove(const Session& session, const RouteLine& line) {
  requireStore(session);
  const std::string& destination = line.destination.text;
  const typename Table::Entry key = Table::entry(line.destination);
  Change change(session);
  refuseInConfigurationMode(destination);
  change.made(Table::remove(key), destination);
  change.done(destination + " removed");
}

template <typename Table>
bool holds(const typename Table::Entry& key, const typename Table::Entry& route) {
  typename Table::Entry stored;
  if (Table::find(key, &stored) != 0) return false;
  return Table::same(stored, route) && (stored.status == SHM_ROUTE_DISABLED) == (route.status == SHM_ROUTE_DISABLED);
}

template <typename Table>
void replace(const Session& session, const RouteLine& line) {
  requireStore(session);
  typename Table::Entry key = Table::entry(line.destination);
  typename Table::Entry route = wanted<Table>(line.newDestination, line);
  Change change(session);
  refuseInConfigurationMode(line.destination.text);
  if (!session.leavesEqual || !holds<Table>(key, route)) {
    change.made(Table::replace(key, route, session), line.destination.text);
  }
  showStored<Table>(change, route);
}

template <typename Table>
void freshen(const Session& session) {
  requireStore(session);
  Change change(session);
  change.made(Table::freshen(session), "routes");
  change.show(listed<Table>());
}

template <typename Table>
std::vector<Command> commandsOf(const char* description) {
  const Type network = takes::prefix(Table::kFamily);
  const auto known = needed("DESTINATION", &RouteLine::destination, network.from(Table::kRows), "Its destination");
  const auto gateway = needed("GATEWAY", &RouteLine::gateway, takes::address(Table::kFamily), "Next hop");
  const auto disabled = flag("--disabled", &RouteLine::disabled, "Keep it out of the kernel");
  const std::string own = Table::kCommand;
  return {group(own, description),
          command(own + " list", "All routes, in list order", showing<listed<Table>>),
          changing(own + " freshen", "Apply every route anew, disabled ones too", freshen<Table>),
          setting(own + " add", "Add a route", add<Table>, wish<Table>,
                  {needed("DESTINATION", &RouteLine::destination, network, "Where it leads"), gateway, disabled}),
          scriptRow<Table>(),
          changing(own + " remove", "Remove a route", remove<Table>, {known}),
          changing(own + " replace", "Remove a route and add another", replace<Table>,
                   {known, needed("NEW", &RouteLine::newDestination, network, "Destination of the other"), gateway,
                    disabled})};
}

}  // namespace

std::vector<Command> routeCommands() {
  std::vector<Command> rows = commandsOf<Table4>("Static IPv4 routes");
  for (Command& row : commandsOf<Table6>("Static IPv6 routes")) rows.push_back(std::move(row));
  return rows;
}

}  // namespace ctl
