// SPDX-License-Identifier: Apache-2.0
// The numbered items, the modes and the names of interfaces, and what their changes do to the system.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/carrying.h"
#include "tools/ctl/settings/setting_items.h"

namespace ctl {
namespace {

// Whose setter, outside Configuration Mode, does all that there is to do, and saves nothing.
bool actsByItself(const ItemRow& row) { return *row.action && !row.saves && row.family == ItemFamily::kConfig; }

bool isGateway(const ItemRow& row) { return row.dropsWanArp; }

int setWord(const Carrying& carrying, const ItemRow& row, uint32_t value) {
  const Session& session = carrying.session;
  if (row.family == ItemFamily::kConfig)
    return setKestroveConfigItem(row.id, value, session.source, session.userName());
  return setNetworkConfigItem(row.id, &value, session.source, session.userName());
}

// Of a switch the file has 1, 0 and 2 for on, off and anything else.
std::string keywordValue(const ItemRow& row, uint32_t value) {
  if (row.form == ItemForm::kAddress) return addressText(value);
  if (row.form == ItemForm::kSwitch) return value == SHM_ON ? "1" : value == SHM_OFF ? "0" : "2";
  return std::to_string(static_cast<int32_t>(value));
}

int setItem(const Carrying& carrying, const SettingItem& item) {
  const ItemRow& row = *item.row;
  if (row.form == ItemForm::kText) return setShmString(row.id, textOf(item, carrying.target.config).c_str());
  const uint32_t value = wordOf(item, carrying.target.config);
  const int result = setWord(carrying, row, value);
  if (result == 0 || wordOf(item, shm->config) == value) return 0;
  const uint32_t code = shm_errno;
  if (*row.keyword && loadKeyword(row.keyword, keywordValue(row, value)) && wordOf(item, shm->config) == value)
    return 0;
  shm_errno = code;
  return result;
}

void setOne(Carrying& carrying, const SettingChange& change) {
  const SettingItem* item = findSettingItem(change.key);
  if (!item) return;
  if (!change.after) return carrying.cannot(change, "a switch cannot be unset");
  if (carrying.follows() && isGateway(*item->row)) delArpEntry(shm->config.wanGateway);
  if (!carrying.attempt(change, [&] { return setItem(carrying, *item); })) return;
  carrying.marks |= item->row->bit;
  if (item->row->pbrBit != 0 && carrying.before.config.pbrOperState == SHM_ON) carrying.marks |= item->row->pbrBit;
  if (item->row->family == ItemFamily::kNetwork) carrying.addressesChanged = true;
}

template <typename Work>
void forEachMade(const Carrying& carrying, const Work& work) {
  for (const SettingItem& item : settingItems()) {
    if (carrying.made("items", item.row->name)) work(item);
  }
}

bool single(const ConfigRecord& config) { return config.singleInterfaceMode == SHM_ON; }

bool sameIds(const ConfigRecord& a, const ConfigRecord& b) {
  return a.lanVlanId == b.lanVlanId && a.wanVlanId == b.wanVlanId;
}

// A mode that no setter takes comes from the configuration file, and drives nothing.
int storeMode(const ConfigRecord& target) {
  const uint32_t mode = target.singleInterfaceMode;
  loadKeyword("LAN_VLAN_ID", std::to_string(static_cast<int32_t>(target.lanVlanId)));
  loadKeyword("WAN_VLAN_ID", std::to_string(static_cast<int32_t>(target.wanVlanId)));
  if (mode != 0) loadKeyword("SINGLE_INTERFACE", mode == SHM_ON ? "1" : mode == SHM_OFF ? "0" : "2");
  return shm->config.singleInterfaceMode == mode && sameIds(shm->config, target) ? 0 : -1;
}

int setMode(const ConfigRecord& target) {
  const uint32_t mode = target.singleInterfaceMode;
  if (mode == SHM_ON) {
    const int result = setSingleInterfaceMode(SHM_ON, target.lanVlanId, target.wanVlanId);
    return result == 0 ? 0 : storeMode(target);
  }
  if (mode == SHM_OFF && setSingleInterfaceMode(SHM_OFF, 0, 0) != 0) return -1;
  return shm->config.singleInterfaceMode == mode && sameIds(shm->config, target) ? 0 : storeMode(target);
}

int setPolicyRouting(const Carrying& carrying) {
  const uint8_t wanted = carrying.target.config.pbrOperState;
  const Session& session = carrying.session;
  if (wanted == SHM_ON || wanted == SHM_OFF)
    return setKestroveConfigItem(SHM_ITEM_POLICY_ROUTING, wanted, session.source, session.userName());
  if (wanted != 0) loadKeyword("PBR", "2");
  return shm->config.pbrOperState == wanted ? 0 : -1;
}

struct Port {
  const char* name;
  int number;
  char (ConfigRecord::*field)[16];
};
constexpr Port kPortNames[] = {{"lan", SHM_IF_LAN, &ConfigRecord::lanInterfaceName},
                               {"wan", SHM_IF_WAN, &ConfigRecord::wanInterfaceName},
                               {"management", SHM_IF_MANAGEMENT, &ConfigRecord::managementInterfaceName},
                               {"router", SHM_IF_BASE, &ConfigRecord::bridgeRouterPhysicalName}};

void readdressWanPort() {
  char name[16] = {};
  getPhysicalInterfaceName(SHM_IF_WAN, name, sizeof name);
  const ConfigRecord& config = shm->config;
  shm_ifconfig(name, config.wanIpAddress, config.wanIpAddressMask, config.wanBroadcastAddress);
}

constexpr Port kLinks[] = {{"lanLinkSetting", SHM_IF_LAN, nullptr},
                           {"wanLinkSetting", SHM_IF_WAN, nullptr},
                           {"managementLinkSetting", SHM_IF_MANAGEMENT, nullptr}};

}  // namespace

bool loadKeyword(const std::string& keyword, const std::string& value) {
  char path[] = "/tmp/kestrovectl-XXXXXX";
  const int fd = mkstemp(path);
  if (fd == -1) return false;
  const std::string line = keyword + " " + value + "\n";
  const bool written = write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
  close(fd);
  const bool loaded = written && load_shared_memory(path) == 0;
  unlink(path);
  return loaded;
}

// Items that act by themselves come when Configuration Mode is over.
void setItems(Carrying& carrying) {
  for (const SettingChange* change : carrying.changesOf("items")) {
    const SettingItem* item = findSettingItem(change->key);
    if (item && !actsByItself(*item->row)) setOne(carrying, *change);
  }
}

bool changesMode(const Carrying& carrying) {
  return carrying.follows() && (carrying.changeOf("interfaces", "mode") || carrying.changeOf("interfaces", "pbr"));
}

// Ids that a mode of two interfaces keeps; the transition to it needs the ones that are in use.
void keepVlanIds(Carrying& carrying) {
  const ConfigRecord& target = carrying.target.config;
  const bool stays = !single(shm->config) && !single(target);
  const bool usual = shm->config.singleInterfaceMode == target.singleInterfaceMode && target.lanVlanId != 0;
  const SettingChange* change = carrying.changeOf("interfaces", "mode");
  if (!change || !stays || !usual || target.singleInterfaceMode != SHM_OFF || target.wanVlanId == 0) return;
  carrying.attempt(*change, [&target] {
    const uint8_t routing = shm->config.pbrOperState;
    const int result = setSingleInterfaceMode(SHM_ON, target.lanVlanId, target.wanVlanId);
    setSingleInterfaceMode(SHM_OFF, 0, 0);
    if (routing == SHM_ON) setKestroveConfigItem(SHM_ITEM_POLICY_ROUTING, routing, 0, "--");
    return result;
  });
}

// One event for each kind of address that changed. In Configuration Mode none of them saves.
void driveAddressEvents(Carrying& carrying) {
  if (!carrying.follows()) return;
  std::set<int> events;
  forEachMade(carrying, [&events](const SettingItem& item) {
    if (item.row->modeEvent != 0) events.insert(item.row->modeEvent);
  });
  for (const int event : events) {
    OpModeContext context = {};
    if (OpModeState(event, &context) != 0) carrying.note("the operating mode refuses event " + std::to_string(event));
  }
}

void changeMode(Carrying& carrying) {
  const SettingChange* mode = carrying.changeOf("interfaces", "mode");
  if (mode && !carrying.made("interfaces", "mode")) {
    carrying.modeChanged |= carrying.attempt(*mode, [&] { return setMode(carrying.target.config); });
  }
  const SettingChange* routing = carrying.changeOf("interfaces", "pbr");
  // A mode that went off took policy routing with it.
  const bool lost = !routing && shm->config.pbrOperState != carrying.target.config.pbrOperState;
  if (routing) carrying.modeChanged |= carrying.attempt(*routing, [&] { return setPolicyRouting(carrying); });
  if (lost && setPolicyRouting(carrying) != 0) carrying.note("policy routing went off with the single interface");
}

// Behind the transitions, which give the LAN and the WAN the names of their ports.
void setNames(Carrying& carrying) {
  for (const Port& port : kPortNames) {
    const std::string wanted = text(carrying.target.config.*port.field);
    const SettingChange* change = carrying.changeOf("interfaces", port.name);
    if (text(shm->config.*port.field) == wanted) {
      if (change) carrying.attempt(*change, [] { return 0; });
      continue;
    }
    const SettingChange again = {"interfaces", port.name, text(shm->config.*port.field), "interface name " + wanted};
    const int number = port.number;
    carrying.attempt(change ? *change : again,
                     [&wanted, number] { return setInterfaceName(number, wanted.c_str(), 16); });
  }
}

void logEvents(Carrying& carrying) {
  forEachMade(carrying, [&carrying](const SettingItem& item) {
    const ItemRow& row = *item.row;
    if (row.onEvent == 0) return;
    const bool on = wordOf(item, shm->config) == SHM_ON;
    logEvent(static_cast<uint32_t>(on ? row.onEvent : row.offEvent), carrying.session.source,
             carrying.session.userName());
  });
}

// Programs run last: some of them are run without the lock.
void actOnSystem(Carrying& carrying) {
  for (const Port& link : kLinks) {
    if (carrying.made("items", link.name)) setSystemLinkSetting(link.number);
  }
  if (carrying.made("items", "wanGateway")) readdressWanPort();
  for (const SettingChange* change : carrying.changesOf("items")) {
    const SettingItem* item = findSettingItem(change->key);
    if (item && actsByItself(*item->row)) setOne(carrying, *change);
  }
  if (carrying.made("items", "managementAddress")) refresh_userinterface_apps();
}

}  // namespace ctl
