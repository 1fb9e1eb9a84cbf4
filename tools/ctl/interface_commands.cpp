// SPDX-License-Identifier: Apache-2.0
// interface, mode.
#include <cstring>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/history/carry_recorded.h"
#include "tools/ctl/mode_setting.h"
#include "tools/ctl/reading.h"

namespace ctl {
namespace {

struct LinkLine {
  uint32_t port = 0;
};

struct ModeLine {
  std::string mode, lanVlan, wanVlan;
  bool asIs = false;
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

Json portRows() {
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
  awaitLock(session);
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

constexpr uint32_t kLastVlan = 4094;

uint32_t numberOf(const std::string& word) {
  const std::optional<uint64_t> number = readDigits(word);
  if (!number || *number > UINT32_MAX) throw Refusal(kUsage, word + ": no number");
  return static_cast<uint32_t>(*number);
}

uint32_t vlanOf(const ModeLine& line, const std::string& word) {
  const uint32_t id = numberOf(word);
  if (line.asIs || (id >= 1 && id <= kLastVlan)) return id;
  throw Refusal(kUsage, word + ": no VLAN id (1 to 4094)");
}

ModeWish modeOf(const ModeLine& line, uint32_t mode) {
  if (line.lanVlan.empty()) return {.mode = mode};
  if (line.wanVlan.empty()) throw Refusal(kUsage, "the VLAN id of the WAN side is missing");
  return {mode, vlanOf(line, line.lanVlan), vlanOf(line, line.wanVlan), mode != SHM_ON};
}

ModeWish singleOf(const ModeLine& line) { return modeOf(line, SHM_ON); }

ModeWish doubleOf(const ModeLine& line) { return modeOf(line, SHM_OFF); }

ModeWish unsetOf(const ModeLine& line) { return modeOf(line, 0); }

ModeWish otherOf(const ModeLine& line) { return modeOf(line, numberOf(line.mode)); }

template <ModeWish (*of)(const ModeLine&)>
void takeMode(const Session& session, const ModeLine& line) {
  setMode(session, of(line));
}

template <ModeWish (*of)(const ModeLine&)>
Wish wishMode(const ModeLine& line) {
  return of(line);
}

// As the operation does, the mode of two interfaces switches policy routing off.
Image imageWith(const ModeWish& wish) {
  Image target(*shm);
  refuseUnsetting(target->config, wish);
  if (wish.mode == SHM_OFF && target->config.singleInterfaceMode != SHM_OFF) target->config.pbrOperState = SHM_OFF;
  putMode(target->config, wish);
  return target;
}

[[noreturn]] void refuseSteps(const CarriedOut& done) {
  for (const Step& step : done.outcome.steps) {
    if (!step.done) throw Refusal(done.exit(), step.line + ": " + step.reason);
  }
  throw Refusal(done.exit(), "not all of it could be made");
}

// Ids that no mode uses have no operation of their own: the way there is that of apply and rollback.
void carryMode(const Session& session, const ModeWish& wish) {
  const CarriedOut done = carryOutRecorded(session, [&wish] { return imageWith(wish); }, {});
  const Exit exit = done.exit();
  if (exit == kRefused || exit == kPartly) refuseSteps(done);
  Json result = modeFacts();
  if (!done.outcome.unsavedReason.empty()) {
    result["saved"] = false;
    result["reason"] = done.outcome.unsavedReason;
  }
  if (session.json) done.recorded.addTo(result);
  session.show(result);
  if (!session.json) done.recorded.warn();
  if (session.forPeople()) session.print(done.recorded.text());
  const bool onlyStored = shm->operationalState == SHM_STATE_CONFIGURATION && done.recorded.missing.empty();
  if (exit != kDone && !onlyStored) throw Refusal(exit, "");
}

constexpr NamedNumber kNamedPorts[] = {
    {"lan", SHM_IF_LAN}, {"wan", SHM_IF_WAN}, {"management", SHM_IF_MANAGEMENT}, {"router", SHM_IF_BASE}};

constexpr size_t kLongestName = 15;

struct NameLine {
  int port = 0;
  std::string name;
};

NameWish nameWish(const NameLine& line) {
  if (line.name.size() <= kLongestName) return {line.port, line.name};
  throw Refusal(kRefused, line.name + ": a name of an interface has 15 characters at most", SHM_ERANGE);
}

Wish wishName(const NameLine& line) { return nameWish(line); }

// Of the four the file has all but the one of the bridge's base.
const char* unsavedBecause(int port) {
  return port == SHM_IF_BASE ? "the configuration file has no line for it" : "the next save of anything writes it";
}

void setName(const Session& session, const NameLine& line) {
  const NameWish wish = nameWish(line);
  const std::string port = nameOf(kNamedPorts, static_cast<uint32_t>(line.port));
  requireStore(session);
  Change change(session);
  const bool same = deviceOf(line.port, false) == wish.name;
  change.made(setInterfaceName(wish.number, wish.name.c_str(), kLongestName + 1), "name of " + port);
  if (!same) change.leavesUnsaved(unsavedBecause(line.port));
  change.show({{"interface", port}, {"name", wish.name}});
}

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

void putMode(ConfigRecord& config, const ModeWish& wish) {
  config.singleInterfaceMode = static_cast<uint8_t>(wish.mode);
  if (wish.mode != SHM_ON && !wish.keepsIds) return;
  config.lanVlanId = wish.lanVlan;
  config.wanVlanId = wish.wanVlan;
}

void refuseUnsetting(const ConfigRecord& config, const ModeWish& wish) {
  if (wish.mode == 0 && config.singleInterfaceMode != 0) throw Refusal(kRefused, "a mode is set, and none unsets it");
}

void setMode(const Session& session, const ModeWish& wish) {
  requireStore(session);
  if (wish.keepsIds) return carryMode(session, wish);
  Change change(session);
  change.made(setSingleInterfaceMode(wish.mode, wish.lanVlan, wish.wanVlan),
              wish.mode == SHM_ON ? "single-interface mode" : "two-interface mode");
  change.show(modeFacts());
}

namespace {

std::vector<Command> modeCommands() {
  const Type vlan = {.shown = "1..4094"};
  const auto lan = needed("LAN", &ModeLine::lanVlan, vlan, "VLAN id of the LAN side");
  const auto wan = needed("WAN", &ModeLine::wanVlan, vlan, "VLAN id of the WAN side");
  const auto keptLan =
      option("LAN", &ModeLine::lanVlan, vlan, "VLAN id of the LAN side for the other mode's next time");
  const auto keptWan = option("WAN", &ModeLine::wanVlan, vlan, "VLAN id of the WAN side, as well");
  const auto asIs = flag("--as-is", &ModeLine::asIs, "Take ids that no VLAN has, as a store may hold them");
  const auto number = needed("MODE", &ModeLine::mode, {.shown = "NUMBER"}, "The number");
  return {group("mode", "The operating mode"),
          command("mode show", "The present mode", showing<modeFacts>),
          setting("mode single", "One interface that carries LAN and WAN as two VLANs", takeMode<singleOf>,
                  wishMode<singleOf>, {lan, wan, asIs}),
          setting("mode double", "Two interfaces, bridged", takeMode<doubleOf>, wishMode<doubleOf>,
                  {keptLan, keptWan, asIs}),
          setting("mode unset", "VLAN ids where nobody has set a mode", takeMode<unsetOf>, wishMode<unsetOf>,
                  {lan, wan, asIs}),
          setting("mode other", "A number that is no mode, as a configuration file may have left it", takeMode<otherOf>,
                  wishMode<otherOf>, {number, lan, wan, asIs}),
          setting("mode pbr", "Policy routing on the single interface", policyRouting, wishPolicyRouting,
                  {option("SWITCH", &RoutingLine::position, takes::onOrOff(), "Whether it is used")})};
}

}  // namespace

std::vector<Command> interfaceCommands() {
  std::vector<Command> rows = {group("interface", "The ports"),
                               command("interface list", "Names, hardware addresses, addresses", showing<portRows>),
                               command("interface link", "Link status of a port", link,
                                       {needed("PORT", &LinkLine::port, takes::word(kPorts), "Which of them")}),
                               setting("interface name", "The name that the store has for a port", setName, wishName,
                                       {needed("PORT", &NameLine::port, takes::word(kNamedPorts), "Which of them"),
                                        needed("NAME", &NameLine::name, takes::interface(), "Up to 15 characters")})};
  for (Command& row : modeCommands()) rows.push_back(std::move(row));
  return rows;
}

}  // namespace ctl
