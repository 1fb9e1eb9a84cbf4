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

void dhcp(const Session& session, const std::string& interface, int timeoutSeconds) {
  uint32_t kind = 0;
  leased = Json{{"interface", interface}};
  if (dhcp_start(interface.c_str(), timeoutSeconds, takeSetting, &kind) != 0) {
    throw Refusal(kSystem, interface + ": no lease within " + std::to_string(timeoutSeconds) + " seconds");
  }
  session.show(leased);
}

}  // namespace

void addDhcpCommand(CLI::App& app, Session& session) {
  static std::string interface;
  static int timeoutSeconds = 30;
  CLI::App* leasing = app.add_subcommand("dhcp", "Obtain an address for an interface");
  leasing->add_option("INTERFACE", interface, "Name of the interface")->required();
  leasing->add_option("--timeout", timeoutSeconds, "Seconds; a lease that comes only then is none")
      ->check(CLI::Range(1, 3600));
  leasing->callback([&session] { dhcp(session, interface, timeoutSeconds); });
}

}  // namespace ctl
