// SPDX-License-Identifier: Apache-2.0
// The script lines of the settings.
#include "kestrove/codes.h"
#include "kestrove/segment.h"
#include "state/script.h"
#include "store/bounds.h"

namespace kestrove {
namespace {

using sys::TextWriter;

struct NumberLine {
  const char* words;
  uint32_t ConfigRecord::*field;
  uint32_t divisor;
};
constexpr NumberLine kRateLines[] = {
    {"set rateLimit WAN ", &ConfigRecord::wanLinkRate, 1000},
    {"set mtu WAN ", &ConfigRecord::wanMaximumTransferUnit, 1},
    {"set rateLimit LAN ", &ConfigRecord::lanLinkRate, 1000},
    {"set mtu LAN ", &ConfigRecord::lanMaximumTransferUnit, 1},
};

struct AddressLine {
  const char* words;
  uint32_t ConfigRecord::*field;
  const char* end;
};
constexpr AddressLine kPolicyRoutingLines[] = {
    {"set pbrAddress LAN ", &ConfigRecord::lanIpAddress, "\n"},
    {"set pbrMask LAN ", &ConfigRecord::lanIpAddressMask, "\n"},
    {"set pbrAddress WAN ", &ConfigRecord::wanIpAddress, "\n"},
    {"set pbrMask WAN ", &ConfigRecord::wanIpAddressMask, "\n\n"},
};

struct SwitchLine {
  const char* words;
  uint8_t ConfigRecord::*field;
};
constexpr SwitchLine kPolicySwitch = {"set prb ", &ConfigRecord::pbrOperState};
constexpr SwitchLine kServiceLines[] = {
    {"set sshInterface ", &ConfigRecord::sshdOperState},
    {"set httpInterface ", &ConfigRecord::httpOperState},
    {"set compression ", &ConfigRecord::compression},
    {"set logging ", &ConfigRecord::loggingOperState},
};

// The words carry their own newline, so an empty line follows them: kept on purpose.
struct AccelerationWord {
  uint8_t mode;
  const char* usual;
  const char* onConstantRateUnit;
};
constexpr AccelerationWord kAccelerationWords[] = {
    {2, "perConnection\n", "variable\n"},
    {5, "ratepacing\n", "constant\n"},
    {4, "errors\n", "errors\n"},
};

struct LinkLine {
  int which;
  const char* words;
  uint32_t ConfigRecord::*field;
};
constexpr LinkLine kLinkLines[] = {
    {0, "set linkSetting LAN ", &ConfigRecord::lanLinkSetting},
    {1, "set linkSetting WAN ", &ConfigRecord::wanLinkSetting},
    {3, "set linkSetting MANAGEMENT ", &ConfigRecord::managementLinkSetting},
};

struct LinkWord {
  uint32_t setting;
  const char* word;
};
constexpr LinkWord kLinkWords[] = {
    {1, "auto"}, {40, "10baseT-FD"}, {80, "100baseTx"}, {100, "100baseTx-FD"}, {140, "1000baseTx-FD"},
};
constexpr char kOtherLinkWord[] = "10baseT";

void writeSwitch(TextWriter& out, const SwitchLine& line) {
  out.text(line.words);
  out.text(shm->config.*line.field == SHM_ON ? "on\n" : "off\n");
}

void writeUnsigned(TextWriter& out, uint32_t value) {
  out.advance(sys::putUnsigned(out.room(sys::kLongestNumber), value));
}

const char* linkWord(uint32_t setting) {
  for (const LinkWord& row : kLinkWords) {
    if (row.setting == setting) return row.word;
  }
  return kOtherLinkWord;
}

const char* accelerationWord(uint32_t product) {
  for (const AccelerationWord& row : kAccelerationWords) {
    if (row.mode != shm->config.wanCongestionControl) continue;
    return product == SHM_PRODUCT_DRELM ? row.onConstantRateUnit : row.usual;
  }
  return "";
}

const char* interfaceFlag(int32_t kind) {
  switch (kind) {
    case 4: return "-b\n";
    case 0:
    case 5: return "-v\n";
    default: return "-m\n";
  }
}

[[nodiscard]] bool writeAddress(TextWriter& out, const ManagementAddress& entry) {
  if (entry.ipVersion != 4 && entry.ipVersion != 6) return false;
  out.text("ip add ");
  if (entry.ipVersion == 6) {
    out.advance(sys::putIp6(out.room(sys::kLongestIp6), entry.address6));
    out.text(" ");
    out.number(static_cast<int32_t>(entry.prefixLength6));
  } else {
    out.quad(entry.address);
    out.text(" ");
    out.quad(entry.mask);
  }
  out.text(" ");
  return true;
}

}  // namespace

void writeRates(TextWriter& out) {
  for (const NumberLine& line : kRateLines) {
    out.text(line.words);
    out.number(static_cast<int32_t>(shm->config.*line.field / line.divisor));
    out.text("\n");
  }
}

void writeManagementAddresses(TextWriter& out) {
  for (int i = 0; i < managementEntries(*shm); ++i) {
    const ManagementAddress& entry = shm->managementAddress[i];
    if (writeAddress(out, entry)) out.text(interfaceFlag(entry.interfaceKind));
  }
}

void writeInterfaceMode(TextWriter& out) {
  if (shm->config.singleInterfaceMode == SHM_OFF) {
    out.text("set interfaceMode double\n");
    return;
  }
  out.text("set interfaceMode single ");
  writeUnsigned(out, shm->config.lanVlanId);
  out.text(" ");
  writeUnsigned(out, shm->config.wanVlanId);
  out.text("\n");
}

void writePolicyRouting(TextWriter& out) {
  writeSwitch(out, kPolicySwitch);
  for (const AddressLine& line : kPolicyRoutingLines) {
    out.text(line.words);
    out.quad(shm->config.*line.field);
    out.text(line.end);
  }
}

void writeServices(TextWriter& out) {
  for (const SwitchLine& line : kServiceLines) writeSwitch(out, line);
}

void writeAccelerationMode(TextWriter& out, uint32_t product) {
  out.text("set accelerationMode ");
  out.text(accelerationWord(product));
  out.text("\n");
}

bool writeLink(TextWriter& out, int which) {
  for (const LinkLine& line : kLinkLines) {
    if (line.which != which) continue;
    out.text(line.words);
    out.text(linkWord(shm->config.*line.field));
    out.text("\n");
    return true;
  }
  return false;
}

}  // namespace kestrove
