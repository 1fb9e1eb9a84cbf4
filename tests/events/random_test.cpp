// SPDX-License-Identifier: Apache-2.0
// A store full of random bytes: every reader and writer of the log gets through it.
#include <stdio.h>

#include <random>

#include "kestrove/dump.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

class EventRandom : public StoreTest {
 protected:
  void scramble(uint32_t seed) {
    std::mt19937 numbers(seed);
    auto* word = reinterpret_cast<uint32_t*>(shm);
    for (size_t i = 0; i < sizeof(ShmData) / sizeof *word; ++i) word[i] = static_cast<uint32_t>(numbers());
    shm->config.loggingOperState = SHM_ON;
  }
};

TEST_F(EventRandom, BytesAreReadAndWrittenWithinTheRing) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    scramble(seed);
    shm->eventLog.eventLogFull = seed % 2;
    const FilterRule behind = shm->filterTable.rule[SHM_RULES - 1];
    for (uint32_t index : {0u, 1u, 4095u, 8191u, 8192u, 0xFFFFFFFFu}) {
      for (int layout : {1, 2, 3}) {
        char line[128];
        int length = getEventString(index, line, sizeof line, layout);
        EXPECT_GE(length, 0);
        EXPECT_LT(length, 128);
      }
    }
    getEventCount();
    EXPECT_EQ(0, logEvent(24, 3, "x"));
    EXPECT_LT(shm->eventLog.writeIndex, static_cast<uint32_t>(SHM_EVENTS));
    EXPECT_EQ(0, memcmp(&behind, &shm->filterTable.rule[SHM_RULES - 1], sizeof behind));
  }
}

TEST_F(EventRandom, BytesAreListedToTheEnd) {
  scramble(99);
  FILE* nowhere = fopen("/dev/null", "w");
  EXPECT_EQ(0, printEventLog(nowhere));
  fclose(nowhere);
}

}  // namespace
}  // namespace kestrove::testing
