// SPDX-License-Identifier: Apache-2.0
// dhcp.
#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"

namespace ctl {
namespace {

// The library's callback carries no context: the kind comes through its first argument, the rows through here.
Json leased;

int takeSetting(uint32_t* kind, const char* value) {
  constexpr const char* kKinds[] = {"address", "netmask", "gateways", "server", "nameServers", "domain", "other"};
  if (*kind < 6) leased[kKinds[*kind]] = value;
  return 0;
}

struct LeaseLine {
  std::string interface;
  int timeoutSeconds = 30;
};

void dhcp(const Session& session, const LeaseLine& line) {
  const std::string& interface = line.interface;
  uint32_t kind = 0;
  leased = Json{{"interface", interface}};
  if (dhcp_start(interface.c_str(), line.timeoutSeconds, takeSetting, &kind) != 0) {
    throw Refusal(kSystem, interface + ": no lease within " + std::to_string(line.timeoutSeconds) + " seconds");
  }
  session.show(leased);
}

}  // namespace

std::vector<Command> dhcpCommands() {
  return {changing("dhcp", "Obtain an address for an interface", dhcp,
                   {needed("INTERFACE", &LeaseLine::interface, takes::interface(), "Name of the interface"),
                    option("--timeout", &LeaseLine::timeoutSeconds, takes::number(1, 3600).in("seconds"),
                           "A lease that comes only then is none")})};
}

}  // namespace ctl
