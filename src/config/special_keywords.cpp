// SPDX-License-Identifier: Apache-2.0
#include "config/special_keywords.h"

#include <string.h>

#include "config/values.h"
#include "kestrove/codes.h"
#include "kestrove/management.h"
#include "kestrove/segment.h"
#include "kestrove/text.h"

namespace kestrove {
namespace {

constexpr int32_t kHighestProduct = 10;

constexpr char kDdupSeparators[] = " \t+,-";
constexpr uint32_t kDdupDisabled = 255;

struct DdupWord {
  std::string_view word;
  uint32_t set;
  uint32_t clear;
};

// The two LZ methods exclude each other, the last one named wins.
constexpr DdupWord kDdupWords[] = {{"LZ", 1, 2}, {"LZP", 2, 1}, {"DDUP", 4, 0}, {"XHDR", 8, 0}};

const DdupWord* findDdupWord(std::string_view word) {
  for (const DdupWord& row : kDdupWords) {
    if (row.word == word) return &row;
  }
  return nullptr;
}

// A first word NULL or DISABLED decides as soon as a word is met that is no method: at once, as it is none itself.
uint32_t ddupMode(char* value) {
  uint32_t mode = 0;
  char* rest = nullptr;
  const char* first = strtok_r(value, kDdupSeparators, &rest);
  for (const char* word = first; word; word = strtok_r(nullptr, kDdupSeparators, &rest)) {
    const DdupWord* row = findDdupWord(word);
    if (row) {
      mode = (mode | row->set) & ~row->clear;
    } else if (strcmp(first, "NULL") == 0) {
      return 0;
    } else if (strcmp(first, "DISABLED") == 0) {
      return kDdupDisabled;
    }
  }
  return mode;
}

// Fills one half of the management entry that the two bridge keywords share. Once both halves are there every further
// line of either adds the entry again, and the table refuses what it has. A value that is no address, and what the
// table refuses, is no reason to stop: both only leave their code.
void readBridgeHalf(char* value, uint32_t* half, uint32_t* field) {
  static_cast<void>(readAddress(value, half));  // the half that was there stays
  if (manAddrEnt.address != 0 && manAddrEnt.mask != 0) {
    manAddrEnt.ipVersion = SHM_FAMILY_IPV4;
    manAddrEnt.interfaceKind = SHM_IF_BRIDGE;
    addManagementAddr(&manAddrEnt);
  }
  static_cast<void>(readAddress(value, field));  // and so does the field
}

}  // namespace

void readLanCongestionFlag(const ConfigLine&) { shm->config.lanCongestionControl = SHM_CONGESTION_TCP; }

void readDdupMode(const ConfigLine& line) { shm->config.ddupOperState = ddupMode(line.value); }

void readProductId(const ConfigLine& line) {
  int32_t product = numberOf(line.value);
  shm->config.productId = product >= 1 && product <= kHighestProduct ? static_cast<uint32_t>(product) : 0;
}

void readBridgeAddress(const ConfigLine& line) {
  readBridgeHalf(line.value, &manAddrEnt.address, &shm->config.managementAddress);
}

void readBridgeMask(const ConfigLine& line) {
  readBridgeHalf(line.value, &manAddrEnt.mask, &shm->config.managementAddressMask);
}

void applyCifs() {
  if (shm->config.cifsOperState == SHM_ON) shm->config.cifsConfigured = 1;
}

void applyWebCache() {
  if (shm->config.webCacheOperState == SHM_ON) shm->config.cifsConfigured = 1;
  applyResolver();
}

// A resolver file that cannot be changed ends no reading: it leaves its code.
void applyResolver() {
  if (shm->config.webCacheOperState == SHM_ON) {
    changeDnsServerIp(shm->config.dnsAddress);
  } else {
    removeResolvConf();
  }
}

}  // namespace kestrove
