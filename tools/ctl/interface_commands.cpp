// interface, mode.
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"

namespace ctl {
namespace {

const std::map<std::string, int> kPorts = {{"lan", 5}, {"wan", 1}, {"management", 3}};

std::string portName;
uint32_t lanVlan = 0;
uint32_t wanVlan = 0;
std::string pbrSwitch = "on";

std::string nameOf(int number, bool physical) {
  char buffer[16] = {};
  int result = physical ? getPhysicalInterfaceName(number, buffer, sizeof buffer)
                        : getInterfaceName(number, buffer, sizeof buffer);
  return result == 0 ? text(buffer) : "-";
}

std::string hardwareOf(int number) {
  char buffer[32] = {};
  accept(readMacAddr(number, buffer), "hardware address");
  return buffer;
}

Json row(const char* role, int number, int hardwareNumber, uint32_t address, uint32_t mask) {
  return {{"interface", role},
          {"inUse", nameOf(number, false)},
          {"physical", nameOf(number, true)},
          {"hardware", hardwareOf(hardwareNumber)},
          {"address", addressText(address)},
          {"mask", addressText(mask)}};
}

Json rows() {
  const ConfigRecord& config = shm->config;
  return Json::array(
      {row("LAN", 0, 0, config.lanIpAddress, config.lanIpAddressMask),
       row("WAN", 1, 1, config.wanIpAddress, config.wanIpAddressMask),
       row("management", 3, 3, config.managementAddress, config.managementAddressMask),
       {{"interface", "bridge/router port"}, {"inUse", nameOf(5, false)}, {"physical", nameOf(5, true)}}});
}

void link(const Session& session) {
  requireStore(session);
  char first[256] = {};
  char second[256] = {};
  char third[256] = {};
  if (getLinkStatus(kPorts.at(portName), first, second, third) != 0) {
    throw Refusal(kSystem, portName + ": the link tool gave no status");
  }
  session.show({{"interface", portName}, {"first", first}, {"second", second}, {"third", third}});
}

Json modeFacts() {
  uint32_t mode = 0;
  uint32_t single = 0;
  uint32_t lan = 0;
  uint32_t wan = 0;
  accept(getKestroveConfigItem(43, &mode), "mode");
  accept(getSingleInterfaceMode(&single, &lan, &wan), "mode");
  uint32_t pbr = 0;
  accept(getKestroveConfigItem(20, &pbr), "mode");
  return {{"mode", mode <= 2 ? oprmode_str[mode] : "invalid"},
          {"singleInterface", switchText(single)},
          {"policyRouting", switchText(pbr)},
          {"lanVlan", lan},
          {"wanVlan", wan}};
}

void single(const Session& session) {
  requireStore(session);
  Change change(session);
  change.made(setSingleInterfaceMode(SHM_ON, lanVlan, wanVlan), "single-interface mode");
  change.show(modeFacts());
}

// Two interfaces: where policy routing is on, it goes with the single interface.
void twoInterfaces(const Session& session) {
  requireStore(session);
  Change change(session);
  change.made(setSingleInterfaceMode(SHM_OFF, 0, 0), "two-interface mode");
  change.show(modeFacts());
}

void policyRouting(const Session& session) {
  requireStore(session);
  uint32_t value = pbrSwitch == "on" ? SHM_ON : SHM_OFF;
  Change change(session);
  change.made(setKestroveConfigItem(20, value, session.source, session.userName()), "policy routing");
  change.show(modeFacts());
}

}  // namespace

void addInterfaceCommands(CLI::App& app, Session& session) {
  CLI::App* interface = app.add_subcommand("interface", "The ports");
  interface->require_subcommand(1);
  interface->add_subcommand("list", "Names, hardware addresses, addresses")->callback([&session] {
    showRead(session, rows);
  });
  CLI::App* linking = interface->add_subcommand("link", "Link status of a port");
  linking->add_option("PORT", portName, "lan, wan or management")
      ->required()
      ->check(CLI::IsMember({"lan", "wan", "management"}));
  linking->callback([&session] { link(session); });

  CLI::App* mode = app.add_subcommand("mode", "The operating mode");
  mode->require_subcommand(1);
  mode->add_subcommand("show", "The present mode")->callback([&session] { showRead(session, modeFacts); });
  CLI::App* one = mode->add_subcommand("single", "One interface that carries LAN and WAN as two VLANs");
  one->add_option("LAN", lanVlan, "VLAN id of the LAN side")->required()->check(CLI::Range(1, 4094));
  one->add_option("WAN", wanVlan, "VLAN id of the WAN side")->required()->check(CLI::Range(1, 4094));
  one->callback([&session] { single(session); });
  mode->add_subcommand("double", "Two interfaces, bridged")->callback([&session] { twoInterfaces(session); });
  CLI::App* pbr = mode->add_subcommand("pbr", "Policy routing on the single interface");
  pbr->add_option("SWITCH", pbrSwitch, "on or off")->check(CLI::IsMember({"on", "off"}));
  pbr->callback([&session] { policyRouting(session); });
}

}  // namespace ctl
