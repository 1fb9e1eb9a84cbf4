// SPDX-License-Identifier: Apache-2.0
// State, files, users and configuration.
#include <stddef.h>

#include "dump/fields.h"
#include "dump/print.h"
#include "dump/sections.h"
#include "kestrove/codes.h"
#include "kestrove/unit.h"
#include "store/codes.h"
#include "store/text.h"
#include "sys/calendar.h"

namespace kestrove {
namespace {

constexpr size_t kColumn = 32;
constexpr uint32_t kPlatformWithManagementPort = 14;

#define CONFIG_FIELD(name, kind) \
  { #name, DumpKind::kind, offsetof(ShmData, config.name), sizeof(ConfigRecord::name) }
#define STORE_FIELD(name, kind) \
  { #name, DumpKind::kind, offsetof(ShmData, name), sizeof(ShmData::name) }

constexpr DumpField kConfigFields[] = {
    CONFIG_FIELD(hardwarePlatform, kSigned),
    CONFIG_FIELD(unitId, kText),
    CONFIG_FIELD(compression, kSwitch),
    CONFIG_FIELD(failToWireAvailable, kSwitch),
    CONFIG_FIELD(failToWireStatus, kHex),
    CONFIG_FIELD(snmpOperState, kSwitch),
    CONFIG_FIELD(httpOperState, kSwitch),
    CONFIG_FIELD(httpEncryptedId, kText),
    CONFIG_FIELD(httpSessionTimeout, kSigned),
    CONFIG_FIELD(cliOperState, kSwitch),
    CONFIG_FIELD(kestroveOperState, kSwitch),
    CONFIG_FIELD(loggingOperState, kSwitch),
    CONFIG_FIELD(sshdOperState, kSwitch),
    CONFIG_FIELD(bannerOperState, kSwitch),
    CONFIG_FIELD(cifsOperState, kSwitch),
    CONFIG_FIELD(webCacheOperState, kSwitch),
    CONFIG_FIELD(ddupOperState, kCompression),
    STORE_FIELD(ddupStartupOptions, kText),
    CONFIG_FIELD(singleInterfaceMode, kSwitch),
    CONFIG_FIELD(pbrOperState, kSwitch),
    CONFIG_FIELD(ipv6Support, kState),
    CONFIG_FIELD(wanOptSupport, kSwitch),
    CONFIG_FIELD(minRate, kUnsigned),
    CONFIG_FIELD(minMtu, kUnsigned),
    CONFIG_FIELD(idleTimeout, kUnsigned),
    CONFIG_FIELD(transparentBridgeOperState, kSwitch),

    CONFIG_FIELD(lanCongestionControl, kCongestion),
    CONFIG_FIELD(lanLinkRate, kUnsigned),
    CONFIG_FIELD(lanSendBufferSize, kUnsigned),
    CONFIG_FIELD(lanReceiveBufferSize, kUnsigned),
    CONFIG_FIELD(lanMaximumTransferUnit, kUnsigned),
    CONFIG_FIELD(lanIpAddress, kAddress),
    CONFIG_FIELD(lanIpAddressMask, kAddress),
    CONFIG_FIELD(lanBroadcastAddress, kAddress),
    CONFIG_FIELD(lanVlanId, kUnsigned),
    CONFIG_FIELD(physicalLanInterfaceName, kText),
    CONFIG_FIELD(lanInterfaceName, kText),
    STORE_FIELD(lanHardwareAddress, kMac),
    CONFIG_FIELD(lanLinkSetting, kLink),

    CONFIG_FIELD(wanCongestionControl, kCongestion),
    CONFIG_FIELD(wanLinkRate, kUnsigned),
    CONFIG_FIELD(wanSendBufferSize, kUnsigned),
    CONFIG_FIELD(wanReceiveBufferSize, kUnsigned),
    CONFIG_FIELD(wanMaximumTransferUnit, kUnsigned),
    CONFIG_FIELD(wanIpDefaultRtt, kUnsigned),
    CONFIG_FIELD(wanIpAddress, kAddress),
    CONFIG_FIELD(wanIpAddressMask, kAddress),
    CONFIG_FIELD(wanBroadcastAddress, kAddress),
    CONFIG_FIELD(wanVlanId, kUnsigned),
    CONFIG_FIELD(physicalWanInterfaceName, kText),
    CONFIG_FIELD(wanInterfaceName, kText),
    STORE_FIELD(wanHardwareAddress, kMac),
    CONFIG_FIELD(wanLinkSetting, kLink),

    CONFIG_FIELD(gatewayId, kGatewayId),
};

constexpr DumpField kManagementFields[] = {
    CONFIG_FIELD(managementAddress, kAddress),
    CONFIG_FIELD(managementAddressMask, kAddress),
    CONFIG_FIELD(managementBroadcastAddress, kAddress),
    STORE_FIELD(managementHardwareAddress, kMac),
};

constexpr DumpField kSystemFields[] = {
    CONFIG_FIELD(sysName, kText),
    CONFIG_FIELD(sysLocation, kText),
    CONFIG_FIELD(sysContact, kText),
    CONFIG_FIELD(sysDescription, kText),
};

#undef CONFIG_FIELD
#undef STORE_FIELD

template <size_t Full, size_t Short>
void dumpVersion(sys::TextWriter& out, std::string_view label, const char (&full)[Full], const char (&brief)[Short]) {
  dumpLabel(out, label, kColumn);
  out.text(fieldView(full));
  out.text(" (");
  out.text(fieldView(brief));
  out.text(")\n");
}

void dumpProduct(sys::TextWriter& out) {
  uint32_t code = shm->config.productId;
  dumpLabel(out, "productId", kColumn);
  print(out, "%d (%s)\n", static_cast<int>(code), getProductName(code));
}

const char* loginName(uint32_t from) {
  if (from == SHM_LOGIN_SERIAL) return "serial port";
  return from == SHM_LOGIN_SSH ? "ssh" : "unknown";
}

template <size_t N>
void dumpPath(sys::TextWriter& out, std::string_view label, const char (&path)[N]) {
  out.text(label);
  out.text(fieldView(path));
  out.text("\n");
}

void dumpUser(sys::TextWriter& out, const UserAccount& user) {
  char login[sys::kLongestDate];
  const char* end = sys::putDate(login, user.lastLoginSeconds, sys::DateStyle::kMonthName, ' ');
  print(out, "%-31.*s  %-9d  %-9.*s  %d\n", static_cast<int>(fieldLength(user.username)), user.username, user.superUser,
        end ? static_cast<int>(end - login) : 0, login, user.lastPasswdChange);
}

}  // namespace

void dumpState(sys::TextWriter& out) {
  out.text("Kestrove shared memory:\n\n");
  print(out, "SHM Operational state: %s\n",
        shm_getMessage(&kOperationalStateNames, static_cast<int>(shm->operationalState)));
}

void dumpFiles(sys::TextWriter& out) {
  dumpPath(out, "Config file: \t\t\t", shm->config.configFileName);
  dumpPath(out, "Event log file: \t\t", shm->config.eventLogFileName);
}

void dumpUsers(sys::TextWriter& out) {
  print(out, "  userCount: \t\t\t%d\n", shm->config.userCount);
  print(out, "  adminUserCount: \t\t%d\n", shm->config.adminUserCount);
  out.text("  User Accounts:\n");
  print(out, "%-31s  %s  %s  %s\n", "Username", "superUser", "lastLogin", "lastPasswdChange");
  out.text("-------------------------------  ---------  ---------  ----------------\n");
  for (const UserAccount& user : shm->config.users) {
    if (user.username[0] != '\0') dumpUser(out, user);
  }
}

void dumpConfig(sys::TextWriter& out) {
  const ConfigRecord& config = shm->config;
  dumpVersion(out, "kestroveVersion", config.kestroveFullVersion, config.kestroveVersion);
  dumpVersion(out, "drelmVersion", config.drelmFullVersion, config.drelmVersion);
  dumpProduct(out);
  dumpFields(out, kConfigFields, kColumn);
  if (config.hardwarePlatform == kPlatformWithManagementPort) dumpFields(out, kManagementFields, kColumn);
  dumpFields(out, kSystemFields, kColumn);
  print(out, "  user logged in from: \t\t\t%s\n", loginName(shm->loginFrom));
}

}  // namespace kestrove
