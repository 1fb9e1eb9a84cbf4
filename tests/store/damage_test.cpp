// SPDX-License-Identifier: Apache-2.0
// Items, system control and the hand-off on a store full of random bytes.
#include <string.h>

#include <random>
#include <vector>

#include "tests/support/peer.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

void fillWithNoise(unsigned seed) {
  std::mt19937 noise(seed);
  auto words = reinterpret_cast<uint32_t*>(shm);
  for (size_t i = 0; i < SHM_SIZE / 4; ++i) words[i] = static_cast<uint32_t>(noise());
}

void fillWithOnes(unsigned) { memset(static_cast<void*>(shm), 0xFF, SHM_SIZE); }

// Buffers as long as promised, with a mark behind them.
struct Texts {
  char text[256], mark1 = 'm', name[32], mark2 = 'm', base[16], mark3 = 'm', lan[16], mark4 = 'm';
  bool whole() const { return mark1 == 'm' && mark2 == 'm' && mark3 == 'm' && mark4 == 'm'; }
};

bool readEverything() {
  Texts texts;
  uint32_t a, b, c;
  for (int id = -2; id <= 60; ++id) {
    getKestroveConfigItem(id, &a);
    getNetworkConfigItem(id, &a);
    getShmString(id, texts.text, 256);
    getInterfaceName(id, texts.name, 32);
    getPhysicalInterfaceName(id, texts.base, 16);
    isProcessActive(id);
    shm_getTaskPid(id);
    getNotificationStatus(id);
  }
  getBridgeRouterLanWanPhysName(texts.base, texts.lan, 1);
  getLanWanVlanId(&a, &b, 1);
  getSingleInterfaceMode(&a, &b, &c);
  getEventSourceUsername(texts.name);
  for (auto get : {getFullVersionNumber, getKestroveVersion, getFullDrelmVersionNumber, getDrelmVersion, getUnitId}) {
    get(texts.text, 256);
  }
  getLastLoginTimeStamp("admin");
  checkKestroveRebootCounter();
  return texts.whole();
}

bool fetchSnapshot() {
  std::vector<uint8_t> block(sizeof(EngineConfiguration) + 1, 0xEE);
  uint32_t mask;
  if (setConfiguration(block.data()) != 0 || receiveKestroveEvent(&mask) != 0) return false;
  auto& snapshot = *reinterpret_cast<EngineConfiguration*>(block.data());
  return block.back() == 0xEE && snapshot.ruleCount >= 0 && snapshot.ruleCount <= SHM_RULES &&
         memchr(snapshot.ddupStartupOptions, 0, sizeof snapshot.ddupStartupOptions);
}

// In Configuration Mode: every field can be set and nothing outside its record moves.
bool setEverything() {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  std::vector<uint8_t> tables(reinterpret_cast<uint8_t*>(shm->ip6Address), reinterpret_cast<uint8_t*>(shm->taskPids));
  for (int id = -2; id <= 60; ++id) {
    for (uint32_t value : {0u, 1u, 2u, 100u, 1500u, 0x80000000u, 0xFFFFFFFFu}) {
      setKestroveConfigItem(id, value, 0, "--");
      setNetworkConfigItem(id, &value, 0, "--");
    }
    setShmString(id, std::string(256, 't').c_str());
    setInterfaceName(id, std::string(300, 'n').c_str(), 16);
    shm_setTaskPid(id, 0);
  }
  setSingleInterfaceMode(1, 11, 12);
  setSingleInterfaceMode(2, 0, 0);
  setEventSourceUsername(std::string(100, 'u').c_str());
  setLastLoginTimeStamp("");
  incrKestroveRestartCounter();
  resetKestroveRestartCounter();
  incrKestroveRebootCounter();
  resetKestroveRebootCounter();
  return memcmp(tables.data(), shm->ip6Address, tables.size()) == 0;
}

int survive(void (*fill)(unsigned), unsigned seed) {
  fill(seed);
  bool good = readEverything();
  fill(seed);
  good &= fetchSnapshot();
  fill(seed);
  good &= setEverything();
  return good ? 0 : 1;
}

class DamageTest : public StoreTest {};

TEST_F(DamageTest, RandomBytesAreRead) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    EXPECT_EQ(0, inOtherProcess([seed] {
                if (!freopen("/dev/null", "w", stdout)) return 2;
                return survive(fillWithNoise, seed);
              }))
        << seed;
  }
}

TEST_F(DamageTest, AllOnesAreRead) {
  EXPECT_EQ(0, inOtherProcess([] { return survive(fillWithOnes, 0); }));
}

}  // namespace
}  // namespace kestrove::testing
