// SPDX-License-Identifier: Apache-2.0
#include "tests/support/random_store.h"

#include <arpa/inet.h>
#include <stddef.h>
#include <string.h>

#include <random>
#include <span>
#include <string>
#include <vector>

#include "tests/support/addresses.h"
#include "tests/support/config_span.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

// Every field of the configuration that the file carries, by what it can hold.
constexpr ConfigSpan kNumbers[] = {
    CONFIG_SPAN(lanLinkRate),
    CONFIG_SPAN(lanIpAddress),
    CONFIG_SPAN(lanIpAddressMask),
    CONFIG_SPAN(lanGateway),
    CONFIG_SPAN(lanLinkSetting),
    CONFIG_SPAN(managementLinkSetting),
    CONFIG_SPAN(lanMaximumTransferUnit),
    CONFIG_SPAN(lanVlanId),
    CONFIG_SPAN(wanLinkRate),
    CONFIG_SPAN(wanCongestionControl),
    CONFIG_SPAN(wanMaximumTransferUnit),
    CONFIG_SPAN(wanVlanId),
    CONFIG_SPAN(wanIpAddress),
    CONFIG_SPAN(wanIpAddressMask),
    CONFIG_SPAN(wanGateway),
    CONFIG_SPAN(wanLinkSetting),
    CONFIG_SPAN(managementAddressMask),
    CONFIG_SPAN(failToWireConfig),
    CONFIG_SPAN(snmpVersion),
    CONFIG_SPAN(kestroveRebootCount),
};
constexpr ConfigSpan kSwitches[] = {
    CONFIG_SPAN(compression),   CONFIG_SPAN(loggingOperState), CONFIG_SPAN(snmpOperState),
    CONFIG_SPAN(httpOperState), CONFIG_SPAN(cliOperState),     CONFIG_SPAN(kestroveOperState),
    CONFIG_SPAN(sshdOperState), CONFIG_SPAN(bannerOperState),  CONFIG_SPAN(singleInterfaceMode),
    CONFIG_SPAN(pbrOperState),
};
constexpr ConfigSpan kNames[] = {CONFIG_SPAN(lanInterfaceName), CONFIG_SPAN(wanInterfaceName)};
constexpr ConfigSpan kTexts[] = {CONFIG_SPAN(sysName), CONFIG_SPAN(sysLocation), CONFIG_SPAN(sysContact)};

char* fieldAt(const ConfigSpan& span) { return fieldOf(*shm, span); }

class Dice {
 public:
  explicit Dice(unsigned seed) : random_(seed) {}
  uint32_t word() { return static_cast<uint32_t>(random_()); }
  int below(int limit) { return static_cast<int>(word() % static_cast<uint32_t>(limit)); }
  bool odd() { return word() & 1; }
  uint32_t mask() { return maskOf(below(33)); }
  void address6(uint8_t (&address)[16]) {
    for (uint8_t& byte : address) byte = odd() ? 0 : static_cast<uint8_t>(below(256));
  }
  // Characters that a value can hold inside, and no separator at its ends.
  std::string text(int longest) {
    std::string text;
    for (int length = below(longest + 1); length > 0; --length) text += static_cast<char>(' ' + below(95));
    if (!text.empty()) text.front() = text.back() = '#';
    return text;
  }
  std::string userName() {
    constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::string name;
    for (int length = 5 + below(27); length > 0; --length) name += kLetters[below(62)];
    return name;
  }

 private:
  std::mt19937 random_;
};

void drawScalars(Dice& dice) {
  for (const ConfigSpan& span : kNumbers) {
    uint32_t value = dice.word();
    memcpy(fieldAt(span), &value, span.width);
  }
  for (const ConfigSpan& span : kSwitches) *fieldAt(span) = static_cast<char>(dice.below(4));
  for (const ConfigSpan& span : kNames) strcpy(fieldAt(span), dice.text(14).c_str());
  for (const ConfigSpan& span : kTexts) {
    std::string text = dice.text(256);
    memcpy(fieldAt(span), text.data(), text.size());
  }
}

void drawUsers(Dice& dice) {
  for (int i = dice.below(SHM_USERS + 1); i > 0; --i) {
    UserAccount account = {};
    strcpy(account.username, dice.userName().c_str());
    account.superUser = 1 + dice.below(3);
    account.lastLoginSeconds = static_cast<int32_t>(dice.word());
    account.lastPasswdChange = static_cast<int32_t>(dice.word());
    EXPECT_EQ(0, shm_addUser(&account));
  }
}

void drawAddresses(Dice& dice) {
  for (int i = dice.below(SHM_IP6_ADDRESSES + 1); i > 0; --i) {
    Ip6Address entry = {};
    dice.address6(entry.address);
    entry.prefixLength = static_cast<uint32_t>(dice.below(129));
    addIp6(&entry);  // may be there already
  }
  for (int i = dice.below(SHM_MANAGEMENT_ADDRESSES + 1); i > 0; --i) {
    ManagementAddress entry = {};
    entry.ipVersion = dice.odd() ? 4 : 6;
    entry.interfaceKind = dice.below(6);
    if (entry.ipVersion == 4) {
      entry.address = dice.word();
      entry.mask = dice.mask();
    } else {
      dice.address6(entry.address6);
      entry.prefixLength6 = static_cast<uint32_t>(dice.below(129));
    }
    addManagementAddr(&entry);
  }
}

void drawRoutes(Dice& dice) {
  for (int i = dice.below(40); i > 0; --i) {
    RouteEntry route = {dice.word(), dice.mask(), dice.word(), static_cast<uint32_t>(1 + dice.below(3)), 0, 0};
    addUserRoute(&route);
  }
  for (int i = dice.below(40); i > 0; --i) {
    Route6Entry route = {};
    dice.address6(route.destination);
    dice.address6(route.gateway);
    route.prefixLength = static_cast<uint32_t>(dice.below(129));
    route.status = static_cast<uint32_t>(1 + dice.below(3));
    addUserRoute6(&route);
  }
}

// The last port and the priority run together when the port is wider than its column, so ports are ports.
void drawRules(Dice& dice) {
  constexpr uint32_t kFamilies[] = {4, 6, 1};
  for (int i = dice.below(60); i > 0; --i) {
    FilterRule rule = {};
    rule.ipVersion = kFamilies[dice.below(3)];
    rule.srcAddr = dice.word();
    rule.srcMask = dice.mask();
    rule.dstAddr = dice.word();
    rule.dstMask = dice.mask();
    dice.address6(rule.srcAddr6);
    dice.address6(rule.dstAddr6);
    rule.srcPrefixLen6 = static_cast<uint32_t>(dice.below(129));
    rule.dstPrefixLen6 = static_cast<uint32_t>(dice.below(129));
    rule.proto = static_cast<uint32_t>(dice.below(256));
    rule.srcPort = dice.below(65536);
    rule.srcPortEnd = dice.below(65536);
    rule.destPort = dice.below(65536);
    rule.destPortEnd = dice.below(65536);
    rule.target = dice.below(3) - 1;
    rule.priority = static_cast<int32_t>(dice.word());
    rule.bandwidth = static_cast<int32_t>(dice.word());
    rule.accel = dice.word();
    rule.ruleAction = static_cast<uint32_t>(1 + dice.below(3));
    EXPECT_EQ(0, addRule(dice.below(getRuleCount()), &rule, 0, 0));
  }
}

// The lists in their order, without the slots that hold them.
template <typename Table, typename Record, size_t N>
std::vector<std::string> listOf(const Table&, const Record (&slot)[N], uint32_t head) {
  std::vector<std::string> list;
  for (uint32_t at = head; at < N && slot[at].inUse == 1; at = slot[at].next) {
    list.emplace_back(reinterpret_cast<const char*>(&slot[at]), offsetof(Record, inUse));
  }
  return list;
}

void expectSameScalars(const ConfigRecord& saved) {
  const char* bytes = reinterpret_cast<const char*>(&saved);
  auto compare = [bytes](std::span<const ConfigSpan> spans) {
    for (const ConfigSpan& span : spans)
      EXPECT_EQ(0, memcmp(bytes + span.offset, fieldAt(span), span.width)) << span.name;
  };
  compare(kNumbers);
  compare(kSwitches);
  compare(kNames);
  compare(kTexts);
}

void expectSameTables(const ShmData& saved) {
  EXPECT_EQ(saved.config.userCount, shm->config.userCount);
  EXPECT_EQ(saved.config.adminUserCount, shm->config.adminUserCount);
  EXPECT_EQ(0, memcmp(saved.config.users, shm->config.users, sizeof saved.config.users));
  EXPECT_EQ(saved.ip6Count, shm->ip6Count);
  EXPECT_EQ(0, memcmp(saved.ip6Address, shm->ip6Address, sizeof saved.ip6Address));
  EXPECT_EQ(saved.managementAddressCount, shm->managementAddressCount);
  EXPECT_EQ(0, memcmp(saved.managementAddress, shm->managementAddress, sizeof saved.managementAddress));
  EXPECT_EQ(listOf(saved.routes, saved.routes.slot, saved.routes.head),
            listOf(shm->routes, shm->routes.slot, shm->routes.head));
  EXPECT_EQ(listOf(saved.routes6, saved.routes6.slot, saved.routes6.head6),
            listOf(shm->routes6, shm->routes6.slot, shm->routes6.head6));
  ASSERT_EQ(saved.filterTable.ruleCount, shm->filterTable.ruleCount);
  EXPECT_EQ(0, memcmp(saved.filterTable.rule, shm->filterTable.rule,
                      sizeof(FilterRule) * static_cast<size_t>(saved.filterTable.ruleCount)));
}

}  // namespace

void makeFreshStore() {
  dropStore();
  makeStore();
  shm->config.ipv6Support = SHM_ON;
}

void drawStore(unsigned seed) {
  makeFreshStore();
  shm->operationalState = SHM_STATE_CONFIGURATION;
  Dice dice(seed);
  drawScalars(dice);
  drawUsers(dice);
  drawAddresses(dice);
  drawRoutes(dice);
  drawRules(dice);
}

void expectSameStore(const ShmData& saved) {
  expectSameScalars(saved.config);
  expectSameTables(saved);
}

}  // namespace kestrove::testing
