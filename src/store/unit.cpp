// SPDX-License-Identifier: Apache-2.0
// Identity of the unit: product, platform, hardware addresses, log-in origin.
#include "kestrove/unit.h"

#include <netinet/in.h>
#include <stdio.h>
#include <string.h>

#include "kestrove/codes.h"
#include "store/fail.h"
#include "store/interface_names.h"
#include "store/lock.h"
#include "sys/interface_request.h"

namespace kestrove {
namespace {

// By product code; several codes have one name.
constexpr const char* kProducts[] = {
    "Unknown Product", "Ostrel",    "Ostrel",          "Wendar box", "Ostrel V6", "DRELM",
    "Kestrove",        "Ostrel-G2", "Pellam-Kestrove", "Kestrove",   "Kestrove",  "Kestrove ZEL",
};
constexpr uint32_t kProductCount = sizeof kProducts / sizeof kProducts[0];
static_assert(kProductCount == 12);

constexpr size_t kHardwareAddress = 6;

struct Vendor {
  uint8_t prefix[3];
  uint8_t identifier;
};
// By the first half of the address, which is its vendor's.
constexpr Vendor kVendors[] = {
    {{0x00, 0x06, 0xB0}, 255}, {{0x00, 0x0C, 0xBD}, 1}, {{0x00, 0xD0, 0xC9}, 2}, {{0x00, 0x04, 0x5F}, 3}};

uint8_t vendorIdentifier(const uint8_t* hardwareAddress) {
  for (const Vendor& vendor : kVendors) {
    if (memcmp(vendor.prefix, hardwareAddress, sizeof vendor.prefix) == 0) return vendor.identifier;
  }
  return 0;
}

int storeWord(uint32_t ConfigRecord::*member, uint32_t value) {
  StoreLock lock;
  if (!lock) return -1;
  shm->config.*member = value;
  return 0;
}

int fetchWord(uint32_t ConfigRecord::*member, uint32_t* out) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  *out = shm->config.*member;
  return 0;
}

bool askHardwareAddress(const char* name, uint8_t* out) {
  sys::Descriptor socket = sys::openSocket(AF_INET, SOCK_RAW, IPPROTO_TCP);
  sys::InterfaceRequest request(name);
  if (!socket || request.issue(socket.get(), SIOCGIFHWADDR) == -1) return false;
  memcpy(out, request.ifr_hwaddr.sa_data, kHardwareAddress);
  return true;
}

// Null for a number that has no hardware address in the store.
const uint8_t* storedHardwareAddress(int iface) {
  switch (iface) {
    case SHM_IF_LAN: return shm->lanHardwareAddress;
    case SHM_IF_WAN: return shm->wanHardwareAddress;
    case SHM_IF_MANAGEMENT: return shm->managementHardwareAddress;
    default: return nullptr;
  }
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getKestroveProduct(uint32_t* out) { return fetchWord(&ConfigRecord::productId, out); }

const char* getProductName(uint32_t code) { return kProducts[code < kProductCount ? code : 0]; }

const char* getKestroveProductName(void) {
  uint32_t product;
  return getKestroveProduct(&product) == 0 ? getProductName(product) : nullptr;
}

int setHardwarePlatform(uint32_t v) { return storeWord(&ConfigRecord::hardwarePlatform, v); }

int getHardwarePlatform(uint32_t* out) { return fetchWord(&ConfigRecord::hardwarePlatform, out); }

int setZipType(uint32_t v) { return storeWord(&ConfigRecord::zipType, v); }

int getZipType(uint32_t* out) { return fetchWord(&ConfigRecord::zipType, out); }

int setLoginFrom(uint32_t v) {
  if (v != SHM_LOGIN_SERIAL && v != SHM_LOGIN_SSH) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  shm->loginFrom = v;
  return 0;
}

int getLoginFrom(void) {
  StoreLock lock;
  return lock ? static_cast<int>(shm->loginFrom) : -1;
}

int writeMacAddr(int iface, uint8_t out[6]) {
  if (!out) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  InterfaceName name;
  bool named = physicalInterfaceName(iface, name);
  if (named && askHardwareAddress(name.text, out)) return 0;
  memset(out, 0, kHardwareAddress);
  return named ? -1 : fail(SHM_EINVAL);
}

int readMacAddr(int iface, char* dst) {
  if (!dst) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  constexpr uint8_t kNone[kHardwareAddress] = {};
  const uint8_t* stored = storedHardwareAddress(iface);
  const uint8_t* a = stored ? stored : kNone;
  sprintf(dst, "%02X:%02X:%02X:%02X:%02X:%02X", a[0], a[1], a[2], a[3], a[4], a[5]);
  return 0;
}

// The identifier is stored in any case; one that holds a zero byte, as that of an unknown vendor does, is a failure.
int setGatewayId(void) {
  StoreLock lock;
  if (!lock) return -1;
  uint8_t* id = shm->config.gatewayId;
  const uint8_t* wan = shm->wanHardwareAddress;
  id[0] = vendorIdentifier(wan);
  memcpy(id + 1, wan + 3, 3);
  return memchr(id, 0, sizeof shm->config.gatewayId) ? -1 : 0;
}

// No terminator is written: kept on purpose.
int getGatewayId(char* dst) {
  if (!dst) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const char* id = reinterpret_cast<const char*>(shm->config.gatewayId);
  memmove(dst, id, strnlen(id, sizeof shm->config.gatewayId));
  return 0;
}
