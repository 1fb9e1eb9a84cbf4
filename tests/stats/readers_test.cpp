// SPDX-License-Identifier: Apache-2.0
// Copies of the counters.
#include <vector>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

class StatsReaders : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    number(&shm->statistics, sizeof shm->statistics / 4, 1);
    number(shm->qos, sizeof shm->qos / 4, 5000);
    number(&shm->sessionEngine, sizeof shm->sessionEngine / 4, 9000);
  }
  static void number(void* place, size_t words, uint32_t from) {
    for (size_t i = 0; i < words; ++i) static_cast<uint32_t*>(place)[i] = from + static_cast<uint32_t>(i);
  }
  // The reader fills exactly so many words, with numbers from the given one on.
  template <class Read>
  void expectWords(size_t words, uint32_t from, Read read) {
    std::vector<uint32_t> out(words + 2, 0xEEEEEEEE);
    EXPECT_EQ(0, read(out.data() + 1));
    EXPECT_EQ(0xEEEEEEEE, out.front());
    EXPECT_EQ(0xEEEEEEEE, out.back());
    for (uint32_t i = 0; i < words; ++i) ASSERT_EQ(from + i, out[i + 1]) << i;
    EXPECT_EQ(0, shm_lock_count);
  }
};

TEST_F(StatsReaders, OperationalStatsAre239Words) { expectWords(239, 1, readOperationalStats); }

TEST_F(StatsReaders, QosStatsAre110Words) { expectWords(110, 5000, readQosStats); }

TEST_F(StatsReaders, DomoStatsAre17Words) { expectWords(17, 9000, readDomoStats); }

TEST_F(StatsReaders, QueueRowsAre15WordsFromWord30) {
  for (int row = 0; row < 10; ++row) {
    expectWords(15, 1 + 6 + 30 + 15 * static_cast<uint32_t>(row),
                [row](void* out) { return getQueueIntervalStats(row, out); });
  }
}

TEST_F(StatsReaders, InterfaceRowsAre12WordsFromByte1052) {
  for (int row = 0; row < 2; ++row) {
    expectWords(12, 1 + 263 + 12 * static_cast<uint32_t>(row),
                [row](void* out) { return getInterfaceStats(row, out); });
  }
}

TEST_F(StatsReaders, RowsOutsideTheTableAreRefused) {
  uint32_t out[15] = {42};
  for (int row : {-1, 10, INT32_MAX, INT32_MIN}) EXPECT_FAILS_WITH(SHM_EINVAL, getQueueIntervalStats(row, out));
  for (int row : {-1, 2, INT32_MAX, INT32_MIN}) EXPECT_FAILS_WITH(SHM_EINVAL, getInterfaceStats(row, out));
  EXPECT_EQ(42u, out[0]);
}

TEST_F(StatsReaders, AnOutputIsNeeded) {
  EXPECT_FAILS_WITH(SHM_EINVAL, readOperationalStats(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, readQosStats(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, readDomoStats(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getQueueIntervalStats(0, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, getInterfaceStats(0, nullptr));
}

TEST_F(StatsReaders, SingleCounters) {
  EXPECT_EQ((uint64_t{3} << 32) + 2, checkStatsCounter());
  EXPECT_EQ(6u, getLastResetTimeStamp());
}

TEST_F(StatsReaders, WithoutStore) {
  dropStore();
  uint32_t out[239];
  EXPECT_FAILS_WITH(SHM_EATTACH, readOperationalStats(out));
  EXPECT_FAILS_WITH(SHM_EATTACH, readQosStats(out));
  EXPECT_FAILS_WITH(SHM_EATTACH, readDomoStats(out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getQueueIntervalStats(0, out));
  EXPECT_FAILS_WITH(SHM_EATTACH, getInterfaceStats(0, out));
  shm_errno = 0;
  EXPECT_EQ(0u, checkStatsCounter());
  EXPECT_EQ(uint32_t(SHM_EATTACH), shm_errno);
  shm_errno = 0;
  EXPECT_EQ(UINT32_MAX, getLastResetTimeStamp());
  EXPECT_EQ(uint32_t(SHM_EATTACH), shm_errno);
}

}  // namespace
}  // namespace kestrove::testing
