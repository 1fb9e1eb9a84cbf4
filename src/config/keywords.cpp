// SPDX-License-Identifier: Apache-2.0
#include "config/keywords.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "config/row_reader.h"
#include "config/row_writer.h"
#include "config/special_keywords.h"
#include "kestrove/layout.h"

namespace kestrove {
namespace {

#define PLACE(field) \
  Place { offsetof(ShmData, field), sizeof(ShmData::field) }
#define CONFIG(field) \
  Place { offsetof(ShmData, config) + offsetof(ConfigRecord, field), sizeof(ConfigRecord::field) }

constexpr Keyword number(std::string_view name, Place place) {
  return {name, Kind::kNumber, 0, place, nullptr, nullptr, nullptr};
}
constexpr Keyword onOff(std::string_view name, Place place, void (*then)() = nullptr) {
  return {name, Kind::kSwitch, 0, place, nullptr, then, nullptr};
}
constexpr Keyword text(std::string_view name, uint16_t limit, Place place) {
  return {name, Kind::kText, limit, place, nullptr, nullptr, nullptr};
}
constexpr Keyword address(std::string_view name, Place place, void (*then)() = nullptr) {
  return {name, Kind::kAddress, 0, place, nullptr, then, nullptr};
}
constexpr Keyword row(std::string_view name, void (*read)(const ConfigLine&), RowsWriter write = nullptr) {
  return {name, Kind::kRow, 0, {}, read, nullptr, write};
}
// Read by a function of its own, written as an address.
constexpr Keyword bridgeAddress(std::string_view name, void (*read)(const ConfigLine&), Place place) {
  return {name, Kind::kAddress, 0, place, read, nullptr, nullptr};
}

// A saved file has its lines in this order.
constexpr Keyword kWritten[] = {
    text("LAN_NAME", 14, CONFIG(lanInterfaceName)),
    number("LAN_RATE", CONFIG(lanLinkRate)),
    address("LAN_ADDR", CONFIG(lanIpAddress)),
    address("LAN_MASK", CONFIG(lanIpAddressMask)),
    address("LAN_GATEWAY", CONFIG(lanGateway)),
    number("LAN_LINK_SETTING", CONFIG(lanLinkSetting)),
    number("MANAGEMENT_LINK_SETTING", CONFIG(managementLinkSetting)),
    number("LAN_MTU", CONFIG(lanMaximumTransferUnit)),
    number("LAN_VLAN_ID", CONFIG(lanVlanId)),
    text("INTERNET_NAME", 14, CONFIG(wanInterfaceName)),
    number("INTERNET_RATE", CONFIG(wanLinkRate)),
    number("INTERNET_CONGESTION", CONFIG(wanCongestionControl)),
    number("INTERNET_MTU", CONFIG(wanMaximumTransferUnit)),
    number("WAN_VLAN_ID", CONFIG(wanVlanId)),
    address("INTERNET_ADDR", CONFIG(wanIpAddress)),
    address("INTERNET_MASK", CONFIG(wanIpAddressMask)),
    address("INTERNET_GATEWAY", CONFIG(wanGateway)),
    number("INTERNET_LINK_SETTING", CONFIG(wanLinkSetting)),
    bridgeAddress("BRIDGE_MASK", readBridgeMask, CONFIG(managementAddressMask)),
    number("FTW_CONFIG", CONFIG(failToWireConfig)),
    onOff("COMPRESSION", CONFIG(compression)),
    onOff("EVENT_LOGGING", CONFIG(loggingOperState)),
    onOff("CONFIG_BY_SNMP", CONFIG(snmpOperState)),
    onOff("CONFIG_BY_WEB", CONFIG(httpOperState)),
    onOff("CONFIG_BY_SERIAL", CONFIG(cliOperState)),
    onOff("KESTROVE_OP_STATE", CONFIG(kestroveOperState)),
    number("SNMP_VERSION", CONFIG(snmpVersion)),
    onOff("SSHD", CONFIG(sshdOperState)),
    onOff("BANNER", CONFIG(bannerOperState)),
    onOff("SINGLE_INTERFACE", CONFIG(singleInterfaceMode)),
    onOff("PBR", CONFIG(pbrOperState)),
    text("SYS_NAME", 256, CONFIG(sysName)),
    text("SYS_LOCATION", 256, CONFIG(sysLocation)),
    text("SYS_CONTACT", 256, CONFIG(sysContact)),
    row("USER_ACCOUNT", readUserAccount, writeUserRows),
    row("MANAGEMENT_ADDR_6", readIp6Address, writeIp6AddressRows),
    row("MANAGEMENT_ADDR", readManagementAddress, writeManagementRows),
    number("REBOOT_COUNT", CONFIG(kestroveRebootCount)),
    row("ROUTE", readRoute, writeRouteRows),
    row("ROUTE6", readRoute6, writeRoute6Rows),
    row("SELEC_ACCEL", readRule, writeRuleRows),  // with the rows of the next two, in table order
    row("SELEC_ACCEL_V6", readRule6),
    row("SELEC_ACCEL_ANY", readRuleAny),
};

// What only a hand or the factory sets.
constexpr Keyword kOnlyRead[] = {
    text("PHYSICAL_LAN_NAME", 14, CONFIG(physicalLanInterfaceName)),
    text("REAL_LAN_NAME", 14, CONFIG(bridgeRouterPhysicalName)),
    number("LAN_BUF", CONFIG(lanSendBufferSize)),
    number("LAN_RBUF", CONFIG(lanReceiveBufferSize)),
    number("LAN_CONGESTION", CONFIG(lanCongestionControl)),
    row("LAN_CC", readLanCongestionFlag),
    onOff("CIFS", CONFIG(cifsOperState), applyCifs),
    onOff("WEB_CACHE", CONFIG(webCacheOperState), applyWebCache),
    address("DNS_ADDR", CONFIG(dnsAddress), applyResolver),
    row("DDUP", readDdupMode),
    text("DDUP_OPTIONS", 256, PLACE(ddupStartupOptions)),
    text("PHYSICAL_WAN_NAME", 14, CONFIG(physicalWanInterfaceName)),
    number("INTERNET_BUF", CONFIG(wanSendBufferSize)),
    number("INTERNET_RBUF", CONFIG(wanReceiveBufferSize)),
    number("INTERNET_DELAY", CONFIG(wanIpDefaultRtt)),
    onOff("BRIDGING", CONFIG(transparentBridgeOperState)),
    text("ADMIN_USERNAME", 30, PLACE(oldAdminUsername)),
    text("ADMIN_PASSWORD", 30, PLACE(oldAdminPassword)),
    text("KESTROVE_VERSION", 63, CONFIG(kestroveFullVersion)),
    text("DRELM_VERSION", 63, CONFIG(drelmFullVersion)),
    text("SYS_DESCRIPTION", 256, CONFIG(sysDescription)),  // the one system text that is not saved
    row("PRODUCT_ID", readProductId),
    number("GLOBAL_CONGESTION_CONTROL", CONFIG(wanCongestionControl)),
    bridgeAddress("BRIDGE_ADDR", readBridgeAddress, CONFIG(managementAddress)),
    text("MANAGEMENT_NAME", 14, CONFIG(managementInterfaceName)),
    text("KESTROVE_CONFIG", 127, CONFIG(configFileName)),
};

constexpr auto kKeywords = [] {
  std::array<Keyword, std::size(kWritten) + std::size(kOnlyRead)> keywords{};
  std::ranges::copy(kOnlyRead, std::ranges::copy(kWritten, keywords.begin()).out);
  return keywords;
}();

constexpr bool widthFits(const Keyword& keyword) {
  uint32_t width = keyword.place.width;
  switch (keyword.kind) {
    case Kind::kNumber: return width == 1 || width == 4;
    case Kind::kSwitch: return width == 1;
    case Kind::kText: return keyword.limit > 0 && keyword.limit <= width;
    case Kind::kAddress: return width == 4;
    case Kind::kRow: return width == 0;  // its functions are no constants to a compiler that looks for null pointers
  }
  return false;
}

constexpr bool widthsFit() {
  for (const Keyword& keyword : kKeywords) {
    if (!widthFits(keyword)) return false;
  }
  return true;
}
static_assert(widthsFit(), "a keyword's field does not have the width of its kind");

// Open addressing over a table twice as large as needed.
constexpr size_t kSlots = 256;
static_assert(kKeywords.size() * 2 < kSlots);

constexpr size_t firstSlot(std::string_view name) {
  uint32_t hash = 0;
  for (char c : name) hash = hash * 33 + static_cast<unsigned char>(c);
  return (hash ^ hash >> 8) % kSlots;
}

constexpr auto kTable = [] {
  std::array<const Keyword*, kSlots> table{};
  for (const Keyword& keyword : kKeywords) {
    size_t slot = firstSlot(keyword.name);
    while (table[slot]) slot = (slot + 1) % kSlots;
    table[slot] = &keyword;
  }
  return table;
}();

}  // namespace

const Keyword* findKeyword(std::string_view name) {
  for (size_t slot = firstSlot(name); kTable[slot]; slot = (slot + 1) % kSlots) {
    if (kTable[slot]->name == name) return kTable[slot];
  }
  return nullptr;
}

std::span<const Keyword> keywords() { return kKeywords; }
std::span<const Keyword> writtenKeywords() { return keywords().first(std::size(kWritten)); }

}  // namespace kestrove
