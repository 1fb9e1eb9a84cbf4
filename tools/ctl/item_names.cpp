#include "tools/ctl/item_names.h"

#include "kestrove/segment.h"

namespace ctl {
namespace {

constexpr char kOnOff[] = "on, off";
constexpr char kLink[] = "1 (auto), 20, 40, 80, 100, 120, 140";
constexpr char kAddress[] = "an IPv4 address";
constexpr char kMask[] = "a netmask or prefix length";
constexpr char kAny[] = "0..4294967295";
constexpr char kText256[] = "up to 256 characters";

constexpr auto kSaved = Keeping::kSaved;
constexpr auto kSavedLater = Keeping::kSavedLater;
constexpr auto kConfig = ItemFamily::kConfig;
constexpr auto kNetwork = ItemFamily::kNetwork;
constexpr auto kString = ItemFamily::kText;

constexpr ItemRow kRows[] = {
    {"lanLinkRate", kConfig, 1, ItemForm::kNumber, "bit/s", "10000..100000000", kSaved},
    {"wanLinkRate", kConfig, 2, ItemForm::kNumber, "bit/s", "minRate..2147483647", kSaved},
    {"wanIpDefaultRtt", kConfig, 3, ItemForm::kNumber, "", ""},
    {"wanMaximumTransferUnit", kConfig, 4, ItemForm::kNumber, "bytes", "minMtu..1500", kSaved},
    {"lanMaximumTransferUnit", kConfig, 5, ItemForm::kNumber, "bytes", "minMtu..1500", kSaved},
    {"lanLinkSetting", kConfig, 6, ItemForm::kNumber, "", kLink, kSaved},
    {"wanLinkSetting", kConfig, 7, ItemForm::kNumber, "", kLink, kSaved},
    {"managementLinkSetting", kConfig, 8, ItemForm::kNumber, "", kLink, kSaved},
    {"compression", kConfig, 9, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"transparentBridgeOperState", kConfig, 10, ItemForm::kSwitch, "", ""},
    {"snmpOperState", kConfig, 11, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"snmpVersion", kConfig, 12, ItemForm::kNumber, "", "1..3", kSavedLater},
    {"httpOperState", kConfig, 13, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"cliOperState", kConfig, 14, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"kestroveOperState", kConfig, 15, ItemForm::kSwitch, "", kOnOff, kSavedLater},
    {"spareFlag", kConfig, 16, ItemForm::kNumber, "", "0..255"},
    {"sshdOperState", kConfig, 17, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"bannerOperState", kConfig, 18, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"singleInterfaceMode", kConfig, 19, ItemForm::kSwitch, "", ""},
    {"pbrOperState", kConfig, 20, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"lanPbrRouteSet", kConfig, 25, ItemForm::kNumber, "", kAny},
    {"wanPbrRouteSet", kConfig, 26, ItemForm::kNumber, "", kAny},
    {"wanCongestionControl", kConfig, 35, ItemForm::kNumber, "", "2..5", kSaved},
    {"loggingOperState", kConfig, 36, ItemForm::kSwitch, "", kOnOff, kSaved},
    {"fileBuffering", kConfig, 37, ItemForm::kSwitch, "", kOnOff},
    {"item38Value", kConfig, 38, ItemForm::kNumber, "", kAny},
    {"failToWireAvailable", kConfig, 39, ItemForm::kSwitch, "", kOnOff},
    {"failToWireStatus", kConfig, 40, ItemForm::kNumber, "", kAny},
    {"failToWireConfig", kConfig, 41, ItemForm::kNumber, "", "1 (bypass), 2 (normal)", kSavedLater},
    {"opModeState", kConfig, 43, ItemForm::kNumber, "", ""},
    {"hardwarePlatform", kConfig, 44, ItemForm::kNumber, "", "0..15"},
    {"ipv6Support", kConfig, 47, ItemForm::kSwitch, "", ""},
    {"wanOptSupport", kConfig, 48, ItemForm::kSwitch, "", ""},
    {"minRate", kConfig, 52, ItemForm::kNumber, "bit/s", ""},
    {"minMtu", kConfig, 53, ItemForm::kNumber, "bytes", ""},
    {"httpSessionTimeout", kConfig, 54, ItemForm::kNumber, "", kAny},
    {"flag55", kConfig, 55, ItemForm::kNumber, "", "0, 1"},
    {"flag56", kConfig, 56, ItemForm::kNumber, "", "0, 1"},
    {"flag57", kConfig, 57, ItemForm::kNumber, "", "0, 1"},
    {"flag58", kConfig, 58, ItemForm::kNumber, "", "0, 1"},
    {"managementAddress", kNetwork, 1, ItemForm::kAddress, "", kAddress},
    {"managementAddressMask", kNetwork, 2, ItemForm::kAddress, "", kMask, kSaved},
    {"managementBroadcastAddress", kNetwork, 3, ItemForm::kAddress, "", kAddress},
    {"lanIpAddress", kNetwork, 4, ItemForm::kAddress, "", kAddress, kSaved},
    {"lanIpAddressMask", kNetwork, 5, ItemForm::kAddress, "", kMask, kSaved},
    {"lanBroadcastAddress", kNetwork, 6, ItemForm::kAddress, "", kAddress},
    {"wanIpAddress", kNetwork, 7, ItemForm::kAddress, "", kAddress, kSaved},
    {"wanIpAddressMask", kNetwork, 8, ItemForm::kAddress, "", kMask, kSaved},
    {"wanBroadcastAddress", kNetwork, 9, ItemForm::kAddress, "", kAddress},
    {"lanGateway", kNetwork, 14, ItemForm::kAddress, "", kAddress, kSaved},
    {"wanGateway", kNetwork, 15, ItemForm::kAddress, "", kAddress, kSaved},
    {"sysName", kString, 1, ItemForm::kText, "", kText256, kSaved},
    {"sysLocation", kString, 2, ItemForm::kText, "", kText256, kSaved},
    {"sysContact", kString, 3, ItemForm::kText, "", kText256, kSaved},
    {"sysDescription", kString, 4, ItemForm::kText, "", ""},
    {"httpEncryptedId", kString, 8, ItemForm::kText, "", kText256},
};

void resolve(std::string& range, const std::string& name, uint32_t value) {
  const size_t at = range.find(name);
  if (at != std::string::npos) range.replace(at, name.size(), std::to_string(value));
}

}  // namespace

std::span<const ItemRow> itemRows() { return kRows; }

const ItemRow* findItem(const std::string& name) {
  for (const ItemRow& row : kRows) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

std::string rangeText(const ItemRow& row) {
  std::string range = row.range;
  resolve(range, "minRate", shm->config.minRate);
  resolve(range, "minMtu", shm->config.minMtu);
  return range;
}

}  // namespace ctl
