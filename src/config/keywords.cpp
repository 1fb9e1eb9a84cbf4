#include "config/keywords.h"

#include <array>

#include "config/actions.h"
#include "config/row_reader.h"
#include "config/row_writer.h"
#include "kestrove/layout.h"

namespace kestrove {
namespace {

#define PLACE(field) \
  Place { offsetof(ShmData, field), sizeof(ShmData::field) }
#define CONFIG(field) \
  Place { offsetof(ShmData, config) + offsetof(ConfigRecord, field), sizeof(ConfigRecord::field) }

constexpr Keyword number(std::string_view name, Place place, uint8_t position = kNeverWritten) {
  return {name, Kind::kNumber, position, 0, place, nullptr, nullptr, nullptr};
}
constexpr Keyword onOff(std::string_view name, Place place, uint8_t position = kNeverWritten,
                        void (*then)() = nullptr) {
  return {name, Kind::kSwitch, position, 0, place, nullptr, then, nullptr};
}
constexpr Keyword text(std::string_view name, uint16_t limit, Place place, uint8_t position = kNeverWritten) {
  return {name, Kind::kText, position, limit, place, nullptr, nullptr, nullptr};
}
constexpr Keyword address(std::string_view name, Place place, uint8_t position = kNeverWritten,
                          void (*then)() = nullptr) {
  return {name, Kind::kAddress, position, 0, place, nullptr, then, nullptr};
}
constexpr Keyword row(std::string_view name, void (*read)(const ConfigLine&), uint8_t position = kNeverWritten,
                      RowsWriter rows = nullptr) {
  return {name, Kind::kRow, position, 0, {}, read, nullptr, rows};
}
// Read by a function of its own, written as an address.
constexpr Keyword bridgeAddress(std::string_view name, void (*read)(const ConfigLine&), Place place,
                                uint8_t position = kNeverWritten) {
  return {name, Kind::kAddress, position, 0, place, read, nullptr, nullptr};
}

constexpr Keyword kKeywords[] = {
    row("MANAGEMENT_ADDR_6", readIp6Address, 36, writeIp6Addresses),
    number("MANAGEMENT_LINK_SETTING", CONFIG(managementLinkSetting), 7),
    row("MANAGEMENT_ADDR", readManagementAddress, 37, writeManagementAddresses),
    address("LAN_ADDR", CONFIG(lanIpAddress), 3),
    address("LAN_MASK", CONFIG(lanIpAddressMask), 4),
    address("LAN_GATEWAY", CONFIG(lanGateway), 5),
    number("LAN_LINK_SETTING", CONFIG(lanLinkSetting), 6),
    number("LAN_MTU", CONFIG(lanMaximumTransferUnit), 8),
    text("LAN_NAME", 14, CONFIG(lanInterfaceName), 1),
    text("PHYSICAL_LAN_NAME", 14, CONFIG(physicalLanInterfaceName)),
    text("REAL_LAN_NAME", 14, CONFIG(bridgeRouterPhysicalName)),
    number("LAN_VLAN_ID", CONFIG(lanVlanId), 9),
    number("LAN_BUF", CONFIG(lanSendBufferSize)),
    number("LAN_RBUF", CONFIG(lanReceiveBufferSize)),
    number("LAN_RATE", CONFIG(lanLinkRate), 2),
    number("LAN_CONGESTION", CONFIG(lanCongestionControl)),
    row("LAN_CC", readLanCongestionFlag),
    address("INTERNET_ADDR", CONFIG(wanIpAddress), 15),
    address("INTERNET_MASK", CONFIG(wanIpAddressMask), 16),
    address("INTERNET_GATEWAY", CONFIG(wanGateway), 17),
    number("REBOOT_COUNT", CONFIG(kestroveRebootCount), 38),
    onOff("SSHD", CONFIG(sshdOperState), 28),
    onOff("CIFS", CONFIG(cifsOperState), kNeverWritten, applyCifs),
    onOff("WEB_CACHE", CONFIG(webCacheOperState), kNeverWritten, applyWebCache),
    address("DNS_ADDR", CONFIG(dnsAddress), kNeverWritten, applyResolver),
    row("DDUP", readDdupMode),
    text("DDUP_OPTIONS", 256, PLACE(ddupStartupOptions)),
    onOff("BANNER", CONFIG(bannerOperState), 29),
    onOff("SINGLE_INTERFACE", CONFIG(singleInterfaceMode), 30),
    onOff("PBR", CONFIG(pbrOperState), 31),
    text("INTERNET_NAME", 14, CONFIG(wanInterfaceName), 10),
    text("PHYSICAL_WAN_NAME", 14, CONFIG(physicalWanInterfaceName)),
    number("WAN_VLAN_ID", CONFIG(wanVlanId), 14),
    number("INTERNET_BUF", CONFIG(wanSendBufferSize)),
    number("INTERNET_RBUF", CONFIG(wanReceiveBufferSize)),
    number("INTERNET_RATE", CONFIG(wanLinkRate), 11),
    number("INTERNET_LINK_SETTING", CONFIG(wanLinkSetting), 18),
    number("INTERNET_MTU", CONFIG(wanMaximumTransferUnit), 13),
    number("INTERNET_DELAY", CONFIG(wanIpDefaultRtt)),
    onOff("BRIDGING", CONFIG(transparentBridgeOperState)),
    number("FTW_CONFIG", CONFIG(failToWireConfig), 20),
    onOff("COMPRESSION", CONFIG(compression), 21),
    onOff("EVENT_LOGGING", CONFIG(loggingOperState), 22),
    onOff("CONFIG_BY_SNMP", CONFIG(snmpOperState), 23),
    number("SNMP_VERSION", CONFIG(snmpVersion), 27),
    onOff("CONFIG_BY_WEB", CONFIG(httpOperState), 24),
    onOff("CONFIG_BY_SERIAL", CONFIG(cliOperState), 25),
    onOff("KESTROVE_OP_STATE", CONFIG(kestroveOperState), 26),
    text("ADMIN_USERNAME", 30, PLACE(oldAdminUsername)),
    text("ADMIN_PASSWORD", 30, PLACE(oldAdminPassword)),
    text("KESTROVE_VERSION", 63, CONFIG(kestroveFullVersion)),
    text("DRELM_VERSION", 63, CONFIG(drelmFullVersion)),
    row("ROUTE", readRoute, 39, writeRoutes),
    row("ROUTE6", readRoute6, 40, writeRoutes6),
    row("SELEC_ACCEL", readRule, 41, writeRules),  // writes the rows of the next two as well, in table order
    row("SELEC_ACCEL_V6", readRule6),
    row("SELEC_ACCEL_ANY", readRuleAny),
    row("USER_ACCOUNT", readUserAccount, 35, writeUserAccounts),
    text("SYS_NAME", 256, CONFIG(sysName), 32),
    text("SYS_LOCATION", 256, CONFIG(sysLocation), 33),
    text("SYS_CONTACT", 256, CONFIG(sysContact), 34),
    text("SYS_DESCRIPTION", 256, CONFIG(sysDescription)),  // the one system text that is not saved
    row("PRODUCT_ID", readProductId),
    number("GLOBAL_CONGESTION_CONTROL", CONFIG(wanCongestionControl)),
    number("INTERNET_CONGESTION", CONFIG(wanCongestionControl), 12),
    bridgeAddress("BRIDGE_ADDR", readBridgeAddress, CONFIG(managementAddress)),
    bridgeAddress("BRIDGE_MASK", readBridgeMask, CONFIG(managementAddressMask), 19),
    text("MANAGEMENT_NAME", 14, CONFIG(managementInterfaceName)),
    text("KESTROVE_CONFIG", 127, CONFIG(configFileName)),
};

constexpr size_t kCount = sizeof kKeywords / sizeof kKeywords[0];
constexpr size_t kWrittenCount = 41;

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

constexpr auto kWritten = [] {
  std::array<const Keyword*, kWrittenCount> written{};
  for (const Keyword& keyword : kKeywords) {
    if (keyword.position != kNeverWritten) written[keyword.position - 1u] = &keyword;
  }
  return written;
}();

constexpr bool positionsAreWhole() {
  size_t positions = 0;
  for (const Keyword& keyword : kKeywords) positions += keyword.position != kNeverWritten;
  for (const Keyword* keyword : kWritten) {
    if (!keyword) return false;
  }
  return positions == kWrittenCount;
}
static_assert(positionsAreWhole(), "every position of the written file has one keyword");

// Open addressing over a table twice as large as needed.
constexpr size_t kSlots = 256;
static_assert(kCount * 2 < kSlots);

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
std::span<const Keyword* const> writtenKeywords() { return kWritten; }

}  // namespace kestrove
