// SPDX-License-Identifier: Apache-2.0
// The engine's snapshot of the settings and rules, a block of its own memory.
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <charconv>

#include "kestrove/codes.h"
#include "kestrove/engine.h"
#include "store/bounds.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/text.h"

namespace kestrove {
namespace {

// The engine is built by itself: the block crosses to its process by positions.
static_assert(sizeof(EngineLink) == 128);
static_assert(offsetof(EngineLink, congestionFlagA) == 60);
static_assert(offsetof(EngineLink, hardwareAddress) == 108);
static_assert(offsetof(EngineConfiguration, wanIpDefaultRtt) == 256);
static_assert(offsetof(EngineConfiguration, ruleCount) == 300);
static_assert(offsetof(EngineConfiguration, rule) == 304);
static_assert(offsetof(EngineConfiguration, singleInterfaceMode) == 852276);
static_assert(offsetof(EngineConfiguration, ddupStartupOptions) == 852284);
static_assert(sizeof(EngineConfiguration) == 852544);

// One side of the block is the other with these exchanged.
struct LinkFields {
  uint32_t side;
  char (ConfigRecord::*name)[16];
  uint32_t ConfigRecord::*sendBufferSize;
  uint32_t ConfigRecord::*receiveBufferSize;
  uint32_t ConfigRecord::*linkRate;
  uint8_t ConfigRecord::*congestionControl;
  uint8_t (ShmData::*hardwareAddress)[6];
};

constexpr LinkFields kLan = {0,
                             &ConfigRecord::lanInterfaceName,
                             &ConfigRecord::lanSendBufferSize,
                             &ConfigRecord::lanReceiveBufferSize,
                             &ConfigRecord::lanLinkRate,
                             &ConfigRecord::lanCongestionControl,
                             &ShmData::lanHardwareAddress};
constexpr LinkFields kWan = {1,
                             &ConfigRecord::wanInterfaceName,
                             &ConfigRecord::wanSendBufferSize,
                             &ConfigRecord::wanReceiveBufferSize,
                             &ConfigRecord::wanLinkRate,
                             &ConfigRecord::wanCongestionControl,
                             &ShmData::wanHardwareAddress};

struct Congestion {
  uint8_t code;
  uint8_t mode;
  uint8_t flagA;
  uint8_t flagB;
};

// A code without a row leaves all three zero.
constexpr Congestion kCongestion[] = {{SHM_CONGESTION_PER_CONNECTION, 2, 0, 0},
                                      {SHM_CONGESTION_TCP, 2, 1, 0},
                                      {SHM_CONGESTION_ERROR_TOLERANCE, 2, 0, 1},
                                      {SHM_CONGESTION_NONE, 0, 0, 0}};

// The rules of a snapshot, one line each, gathered so that the stream is entered once for many.
class RuleLines {
 public:
  ~RuleLines() { flush(); }
  void add(uint32_t ruleAction) {
    if (static_cast<size_t>(buffer_ + sizeof buffer_ - end_) < kLongestLine) flush();
    append(kHead);
    end_ = std::to_chars(end_, buffer_ + sizeof buffer_, static_cast<int32_t>(ruleAction)).ptr;
    append(kTail);
  }

 private:
  static constexpr std::string_view kHead = "shm->filterTable.rule[rule].ruleAction: ";
  static constexpr std::string_view kTail = " ACTIVE: 3\n";
  static constexpr size_t kLongestLine = kHead.size() + 11 + kTail.size();

  void append(std::string_view text) {
    memcpy(end_, text.data(), text.size());
    end_ += text.size();
  }
  void flush() {
    fwrite(buffer_, 1, static_cast<size_t>(end_ - buffer_), stdout);
    end_ = buffer_;
  }

  char buffer_[32768];
  char* end_ = buffer_;
};

void setCongestion(EngineLink& link, uint8_t code) {
  for (const Congestion& row : kCongestion) {
    if (row.code != code) continue;
    link.congestionMode = row.mode;
    link.congestionFlagA = row.flagA;
    link.congestionFlagB = row.flagB;
  }
}

void fillLink(EngineLink& link, const LinkFields& fields) {
  const ConfigRecord& config = shm->config;
  link.side = fields.side;
  memcpy(link.interfaceName, config.*fields.name, fieldLength(config.*fields.name));
  link.sendBufferSize = config.*fields.sendBufferSize;
  link.receiveBufferSize = config.*fields.receiveBufferSize;
  link.linkRate = config.*fields.linkRate;
  // What comes in on one side goes out on the other, so both have the smaller MTU.
  link.mtu = std::min<uint32_t>(config.lanMaximumTransferUnit, config.wanMaximumTransferUnit);
  setCongestion(link, config.*fields.congestionControl);
  memcpy(link.hardwareAddress, shm->*fields.hardwareAddress, sizeof link.hardwareAddress);
}

void fillSettings(EngineConfiguration& block, const ConfigRecord& config) {
  block.wanIpDefaultRtt = config.wanIpDefaultRtt;
  block.bridging = config.transparentBridgeOperState == SHM_ON;
  block.ipv6Support = config.ipv6Support == SHM_ON;
  block.item38Value = config.item38Value;
  block.managementAddress = config.managementAddress;
  block.managementAddressMask = config.managementAddressMask;
  memcpy(block.gatewayId, config.gatewayId, sizeof block.gatewayId);
  block.compression = config.compression == SHM_ON;
  block.globalCongestion = config.wanCongestionControl == SHM_CONGESTION_GLOBAL;
  block.accumulationInterval = shm->statistics.accumulationInterval;
  block.constant8 = 8;  // of no meaning here; the engine expects it
  block.singleInterfaceMode = config.singleInterfaceMode;
  block.ddupOperState = config.ddupOperState;
  memcpy(block.ddupStartupOptions, shm->ddupStartupOptions, fieldLength(shm->ddupStartupOptions));
}

// The rules in use are overwritten whole, so only what lies around them is cleared.
void clearAroundRules(EngineConfiguration& block, int rules) {
  memset(static_cast<void*>(&block), 0, offsetof(EngineConfiguration, rule));
  auto* unused = reinterpret_cast<char*>(block.rule + rules);
  memset(unused, 0, static_cast<size_t>(reinterpret_cast<char*>(&block + 1) - unused));
}

// The engine numbers its rules by their place, whatever they carry in the store.
void number(FilterRule& rule, int place) {
  rule.order = static_cast<uint32_t>(place);
  if (rule.target > 0) rule.target = place;
}

// Copied in pieces that are still at hand when they are gone through.
void fillRules(EngineConfiguration& block, int rules) {
  constexpr int kPiece = 64;
  RuleLines lines;
  block.ruleCount = rules;
  for (int begin = 0; begin < rules; begin += kPiece) {
    int end = std::min(begin + kPiece, rules);
    memcpy(block.rule + begin, shm->filterTable.rule + begin, static_cast<size_t>(end - begin) * sizeof(FilterRule));
    for (int i = begin; i < end; ++i) {
      lines.add(block.rule[i].ruleAction);
      number(block.rule[i], i + 1);
    }
  }
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int setConfiguration(void* block) {
  if (!block) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  EngineConfiguration& snapshot = *static_cast<EngineConfiguration*>(block);
  int rules = ruleEntries(*shm);
  clearAroundRules(snapshot, rules);
  fillLink(snapshot.lan, kLan);
  fillLink(snapshot.wan, kWan);
  fillSettings(snapshot, shm->config);
  fillRules(snapshot, rules);
  return 0;
}
