// route, route6.
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

constexpr uint32_t kDisabled = 2;
constexpr uint32_t kActive = 3;

// Destination with its length, gateway, and for a replacement the new ones.
struct Given {
  std::string destination, gateway, newDestination;
  bool disabled = false;
};
Given given;

void split(const std::string& text, std::string& host, std::string& length, const char* whole) {
  size_t slash = text.find('/');
  host = text.substr(0, slash);
  length = slash == std::string::npos ? whole : text.substr(slash + 1);
}

// The two tables differ in their records and keys; the commands are the same.
struct Family4 {
  using Entry = RouteEntry;
  static constexpr const char* kCommand = "route";

  static Entry entry(const std::string& destination) {
    std::string host;
    std::string length;
    split(destination, host, length, "32");
    Entry route = {};
    route.destination = parseAddress(host);
    route.netmask = parseMask(length);
    return route;
  }
  static void setGateway(Entry& route, const std::string& gateway) { route.gateway = parseAddress(gateway); }
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

struct Family6 {
  using Entry = Route6Entry;
  static constexpr const char* kCommand = "route6";

  static Entry entry(const std::string& destination) {
    std::string host;
    std::string length;
    split(destination, host, length, "128");
    Entry route = {};
    parseAddress6(host, route.destination);
    if (length.empty() || length.size() > 3 || length.find_first_not_of("0123456789") != std::string::npos ||
        std::stoul(length) > 128) {
      throw Refusal(kUsage, destination + ": no prefix length (0 to 128)");
    }
    route.prefixLength = static_cast<uint32_t>(std::stoul(length));
    return route;
  }
  static void setGateway(Entry& route, const std::string& gateway) { parseAddress6(gateway, route.gateway); }
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

template <typename Family>
Json listed() {
  Json rows = Json::array();
  typename Family::Entry route;
  int result = Family::first(&route);
  for (int i = 0; result == 0 && i < SHM_ROUTES; ++i) {
    rows.push_back(Family::show(route));
    typename Family::Entry previous = route;
    result = Family::next(previous, &route);
  }
  return rows;
}

// What the table holds after a change: it may be less than was asked for.
template <typename Family>
void showStored(Change& change, const typename Family::Entry& key) {
  typename Family::Entry stored;
  accept(Family::find(key, &stored), "route");
  change.show(Family::show(stored));
}

template <typename Family>
typename Family::Entry wanted(const std::string& destination) {
  typename Family::Entry route = Family::entry(destination);
  Family::setGateway(route, given.gateway);
  route.status = given.disabled ? kDisabled : kActive;
  return route;
}

// The library refuses it without a code.
void refuseInConfigurationMode(const std::string& what) {
  if (shm->operationalState != SHM_STATE_CONFIGURATION) return;
  throw Refusal(kRefused, what + ": in Configuration Mode no route is removed");
}

template <typename Family>
void add(const Session& session) {
  requireStore(session);
  typename Family::Entry route = wanted<Family>(given.destination);
  Change change(session);
  change.made(Family::add(route), given.destination);
  showStored<Family>(change, route);
}

template <typename Family>
void replace(const Session& session) {
  requireStore(session);
  typename Family::Entry key = Family::entry(given.destination);
  typename Family::Entry route = wanted<Family>(given.newDestination);
  Change change(session);
  refuseInConfigurationMode(given.destination);
  change.made(Family::replace(key, route, session), given.destination);
  showStored<Family>(change, route);
}

template <typename Family>
void addFamily(CLI::App& app, Session& session, const char* description) {
  CLI::App* group = app.add_subcommand(Family::kCommand, description);
  group->require_subcommand(1);
  group->add_subcommand("list", "All routes, in list order")->callback([&session] {
    showRead(session, listed<Family>);
  });
  group->add_subcommand("freshen", "Apply every route anew, disabled ones too")->callback([&session] {
    requireStore(session);
    Change change(session);
    change.made(Family::freshen(session), "routes");
    change.show(listed<Family>());
  });
  auto command = [group](const char* name, const char* text) {
    CLI::App* sub = group->add_subcommand(name, text);
    sub->add_option("DESTINATION", given.destination, "NETWORK/LENGTH")->required();
    return sub;
  };
  CLI::App* adding = command("add", "Add a route");
  adding->add_option("GATEWAY", given.gateway, "Next hop")->required();
  adding->add_flag("--disabled", given.disabled, "Keep it out of the kernel");
  adding->callback([&session] { add<Family>(session); });
  command("remove", "Remove a route")->callback([&session] {
    requireStore(session);
    const typename Family::Entry key = Family::entry(given.destination);
    Change change(session);
    refuseInConfigurationMode(given.destination);
    change.made(Family::remove(key), given.destination);
    change.done(given.destination + " removed");
  });
  CLI::App* replacing = command("replace", "Remove a route and add another");
  replacing->add_option("NEW", given.newDestination, "NETWORK/LENGTH")->required();
  replacing->add_option("GATEWAY", given.gateway, "Next hop")->required();
  replacing->add_flag("--disabled", given.disabled, "Keep it out of the kernel");
  replacing->callback([&session] { replace<Family>(session); });
}

}  // namespace

void addRouteCommands(CLI::App& app, Session& session) {
  addFamily<Family4>(app, session, "Static IPv4 routes");
  addFamily<Family6>(app, session, "Static IPv6 routes");
}

}  // namespace ctl
