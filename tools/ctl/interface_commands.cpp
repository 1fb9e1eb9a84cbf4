// SPDX-License-Identifier: Apache-2.0
// interface, mode.
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/mode_setting.h"
#include "tools/ctl/reading.h"

namespace ctl {
namespace {

struct LinkLine {
  uint32_t port = 0;
};

struct SingleLine {
  uint32_t lanVlan = 0;
  uint32_t wanVlan = 0;
};

struct RoutingLine {
  uint32_t position = SHM_ON;
};

std::string deviceOf(int number, bool physical) {
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

Json row(const char* role, int number, uint32_t address, uint32_t mask) {
  return {{"interface", role},
          {"inUse", deviceOf(number, false)},
          {"physical", deviceOf(number, true)},
          {"hardware", hardwareOf(number)},
          {"address", addressText(address)},
          {"mask", addressText(mask)}};
}

Json rows() {
  const ConfigRecord& config = shm->config;
  return Json::array({row("LAN", SHM_IF_LAN, config.lanIpAddress, config.lanIpAddressMask),
                      row("WAN", SHM_IF_WAN, config.wanIpAddress, config.wanIpAddressMask),
                      row("management", SHM_IF_MANAGEMENT, config.managementAddress, config.managementAddressMask),
                      {{"interface", "bridge/router port"},
                       {"inUse", deviceOf(SHM_IF_BASE, false)},
                       {"physical", deviceOf(SHM_IF_BASE, true)}}});
}

void link(const Session& session, const LinkLine& line) {
  const std::string portName = nameOf(kPorts, line.port);
  requireStore(session);
  char first[256] = {};
  char second[256] = {};
  char third[256] = {};
  if (getLinkStatus(static_cast<int>(line.port), first, second, third) != 0) {
    throw Refusal(kSystem, portName + ": the link tool gave no status");
  }
  session.show({{"interface", portName}, {"first", first}, {"second", second}, {"third", third}});
}

Json modeFacts() {
  uint32_t mode = 0;
  uint32_t single = 0;
  uint32_t lan = 0;
  uint32_t wan = 0;
  accept(getKestroveConfigItem(SHM_ITEM_OPERATING_MODE, &mode), "mode");
  accept(getSingleInterfaceMode(&single, &lan, &wan), "mode");
  uint32_t pbr = 0;
  accept(getKestroveConfigItem(SHM_ITEM_POLICY_ROUTING, &pbr), "mode");
  return {{"mode", mode <= SHM_MODE_POLICY_ROUTING ? oprmode_str[mode] : "invalid"},
          {"singleInterface", switchText(single)},
          {"policyRouting", switchText(pbr)},
          {"lanVlan", lan},
          {"wanVlan", wan}};
}

ModeWish modeOf(const SingleLine& line) { return {SHM_ON, line.lanVlan, line.wanVlan}; }

void single(const Session& session, const SingleLine& line) { setMode(session, modeOf(line)); }

Wish wishSingle(const SingleLine& line) { return modeOf(line); }

struct DoubleLine {};

void twoInterfaces(const Session& session, const DoubleLine&) { setMode(session, {.mode = SHM_OFF}); }

Wish wishDouble(const DoubleLine&) { return ModeWish{.mode = SHM_OFF}; }

Wish wishPolicyRouting(const RoutingLine& line) {
  return ItemWish{.row = findItemRow("pbrOperState"), .word = line.position, .text = {}};
}

void policyRouting(const Session& session, const RoutingLine& line) {
  requireStore(session);
  Change change(session);
  change.made(setKestroveConfigItem(SHM_ITEM_POLICY_ROUTING, line.position, session.source, session.userName()),
              "policy routing");
  change.show(modeFacts());
}

}  // namespace

void setMode(const Session& session, const ModeWish& wish) {
  requireStore(session);
  Change change(session);
  change.made(setSingleInterfaceMode(wish.mode, wish.lanVlan, wish.wanVlan),
              wish.mode == SHM_ON ? "single-interface mode" : "two-interface mode");
  change.show(modeFacts());
}

std::vector<Command> interfaceCommands() {
  const Type vlan = takes::number(1, 4094);
  return {group("interface", "The ports"),
          command("interface list", "Names, hardware addresses, addresses", showing<rows>),
          command("interface link", "Link status of a port", link,
                  {needed("PORT", &LinkLine::port, takes::word(kPorts), "Which of them")}),
          group("mode", "The operating mode"),
          command("mode show", "The present mode", showing<modeFacts>),
          setting("mode single", "One interface that carries LAN and WAN as two VLANs", single, wishSingle,
                  {needed("LAN", &SingleLine::lanVlan, vlan, "VLAN id of the LAN side"),
                   needed("WAN", &SingleLine::wanVlan, vlan, "VLAN id of the WAN side")}),
          setting<DoubleLine>("mode double", "Two interfaces, bridged", twoInterfaces, wishDouble, {}),
          setting("mode pbr", "Policy routing on the single interface", policyRouting, wishPolicyRouting,
                  {option("SWITCH", &RoutingLine::position, takes::onOrOff(), "Whether it is used")})};
}

}  // namespace ctl
