// SPDX-License-Identifier: Apache-2.0
// kernel: what the kernel holds beside what the tables say.
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/program.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/kernel_tables.h"
#include "tools/ctl/reading.h"

namespace ctl {
namespace {

Json kernelFacts(const char* command) {
  tools::Output output = tools::runForOutput(command);
  if (output.status != 0) throw Refusal(kSystem, std::string(command) + ": failed");
  Json facts = Json::parse(output.text.empty() ? "[]" : output.text, nullptr, false);
  if (facts.is_discarded()) throw Refusal(kSystem, std::string(command) + ": no JSON");
  return facts;
}

std::string member(const Json& object, const char* name) {
  auto found = object.find(name);
  return found == object.end() || !found->is_string() ? "" : found->get<std::string>();
}

// iproute2 leaves out the length of a host route and names 0.0.0.0/0 and ::/0 "default".
std::string destinationText(const std::string& address, uint32_t length, uint32_t most) {
  if (length == 0) return "default";
  return length == most ? address : address + "/" + std::to_string(length);
}

bool holdsRoute(const Json& kernel, const std::string& destination, const std::string& gateway) {
  for (const Json& route : kernel) {
    if (member(route, "dst") == destination && (gateway.empty() || member(route, "gateway") == gateway)) return true;
  }
  return false;
}

std::string reasonFor(uint32_t status, bool local) {
  if (status == SHM_ROUTE_DISABLED) return "disabled";
  if (!local) return "gateway not on a management subnet";
  return "refused by the kernel";
}

Json compared(const std::string& destination, const std::string& gateway, uint32_t status, bool inKernel, bool local) {
  bool wanted = status == SHM_ROUTE_ACTIVE;
  Json row = {{"destination", destination},
              {"gateway", gateway},
              {"table", wanted ? "active" : "not active"},
              {"kernel", inKernel ? "there" : "absent"}};
  row["differs"] = wanted != inKernel;
  row["reason"] = wanted && !inKernel   ? "removed behind the table's back"
                  : !wanted && inKernel ? "added behind the table's back"
                  : wanted              ? ""
                                        : reasonFor(status, local);
  return row;
}

Json routes() {
  Json rows = Json::array();
  Json kernel = kernelFacts("/sbin/ip -json route show table main");
  RouteEntry route;
  int result = getFirstRouteTableEntry(&route);
  for (int i = 0; result == 0 && i < SHM_ROUTES; ++i) {
    uint32_t length = static_cast<uint32_t>(inet_ntocidr(route.netmask));
    std::string destination = destinationText(addressText(route.destination & route.netmask), length, 32);
    std::string gateway = addressText(route.gateway);
    rows.push_back(compared(destination, gateway, route.status, holdsRoute(kernel, destination, gateway),
                            v4AddressIsLocal(route.gateway) >= 0));
    RouteEntry previous = route;
    result = getNextRouteTableEntry(previous.destination, previous.netmask, &route);
  }
  return rows;
}

Json routes6() {
  Json rows = Json::array();
  Json kernel = kernelFacts("/sbin/ip -json -6 route show table main");
  Route6Entry route;
  int result = getFirstRoute6TableEntry(&route);
  for (int i = 0; result == 0 && i < SHM_ROUTES6; ++i) {
    std::string destination = destinationText(address6Text(route.destination), route.prefixLength, 128);
    Route6Entry probe = route;
    // The request carries no gateway flag, so the kernel holds the route as one of the interface.
    rows.push_back(compared(destination, address6Text(route.gateway), route.status, holdsRoute(kernel, destination, ""),
                            gatewayIsLocal6(&probe) == 1));
    Route6Entry previous = route;
    result = getNextRoute6TableEntry(previous.destination, previous.prefixLength, &route);
  }
  return rows;
}

bool holdsAddress(const Json& kernel, const std::string& interface, const std::string& address) {
  for (const Json& link : kernel) {
    if (member(link, "ifname") != interface) continue;
    for (const Json& info : link.value("addr_info", Json::array())) {
      if (member(info, "local") == address) return true;
    }
  }
  return false;
}

Json addressRow(const Json& kernel, const std::string& interface, const std::string& address, bool wanted) {
  bool there = holdsAddress(kernel, interface, address);
  return {{"address", address},
          {"interface", interface},
          {"table", wanted ? "applied" : "not applied"},
          {"kernel", there ? "there" : "absent"},
          {"differs", wanted != there},
          {"reason", wanted && !there ? "taken off, or refused by the kernel"
                     : !wanted        ? "not used in this operating mode, or refused"
                                      : ""}};
}

Json addresses() {
  Json rows = Json::array();
  Json kernel = kernelFacts("/sbin/ip -json address show");
  int count = accept(getManagementAddrCount(), "addresses");
  for (int i = 0; i < count && i < SHM_MANAGEMENT_ADDRESSES; ++i) {
    ManagementAddress entry;
    char interface[16] = {};
    accept(getManagementAddr(i, &entry), "address");
    if (getInterfaceName(entry.interfaceKind, interface, sizeof interface) != 0) interface[0] = '\0';
    std::string address =
        entry.ipVersion == SHM_FAMILY_IPV6 ? address6Text(entry.address6) : addressText(entry.address);
    rows.push_back(addressRow(kernel, text(interface), address, entry.status == SHM_ADDRESS_APPLIED));
  }
  count = accept(getIp6Count(), "IPv6 addresses");
  for (int i = 0; i < count && i < SHM_IP6_ADDRESSES; ++i) {
    Ip6Address entry;
    accept(getIp6TableEntry(i, &entry), "IPv6 address");
    rows.push_back(addressRow(kernel, "br0", address6Text(entry.address), true));
  }
  return rows;
}

bool differs(const Json& rows) {
  for (const Json& row : rows) {
    if (row["differs"].get<bool>()) return true;
  }
  return false;
}

void show(const Session& session) {
  const Json result = gather(session, [] {
    Json tables = kernelTables();
    tables["rules"] = kernelFacts("/sbin/ip -json rule show");
    return tables;
  });
  session.show(result);
  for (const char* table : {"addresses", "routes", "routes6"}) {
    if (differs(result[table])) throw Refusal(kFindings, "");
  }
}

}  // namespace

Json kernelTables() { return {{"addresses", addresses()}, {"routes", routes()}, {"routes6", routes6()}}; }

std::vector<Command> kernelCommands() {
  return {
      group("kernel", "The kernel beside the tables"),
      command("kernel show", "Addresses and routes in the tables and in the kernel, differences with reasons", show)};
}

}  // namespace ctl
