// SPDX-License-Identifier: Apache-2.0
// Resets: what is zeroed, what stays, what is logged and run.
#include <sys/mount.h>
#include <unistd.h>

#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

constexpr size_t kBlock = offsetof(ShmData, statistics);
constexpr size_t kQos = offsetof(ShmData, qos);
constexpr size_t kSessions = offsetof(ShmData, sessionEngine);

class Reset : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    memset(&shm->statistics, 0x11, sizeof shm->statistics);
    memset(shm->qos, 0x11, sizeof shm->qos);
    memset(&shm->sessionEngine, 0x11, sizeof shm->sessionEngine);
  }
  // The bytes of the three areas that differ from before, as ranges of places in the store.
  void expectZeroed(const std::vector<std::pair<size_t, size_t>>& ranges) {
    for (size_t i : places()) {
      bool zeroed = false;
      for (auto [from, to] : ranges) zeroed |= i >= from && i < to;
      ASSERT_EQ(zeroed ? 0 : 0x11, reinterpret_cast<uint8_t*>(shm)[i]) << i - kBlock;
    }
  }
  // Words that are checked by themselves.
  void restore(uint32_t& word) { memset(&word, 0x11, sizeof word); }
  std::vector<uint32_t> events() {
    std::vector<uint32_t> ids;
    for (uint32_t i = 0; i < shm->eventLog.writeIndex; ++i) {
      ids.push_back(shm->eventLog.record[i].eventId);
      EXPECT_EQ(2u, shm->eventLog.record[i].source);
      EXPECT_STREQ("admin", shm->eventLog.record[i].userName);
    }
    return ids;
  }

 private:
  static std::vector<size_t> places() {
    std::vector<size_t> all;
    for (auto [from, size] :
         {std::pair{kBlock, sizeof shm->statistics}, {kQos, sizeof shm->qos}, {kSessions, sizeof shm->sessionEngine}}) {
      for (size_t i = 0; i < size; ++i) all.push_back(from + i);
    }
    return all;
  }
};

TEST_F(Reset, OfTheCompressionRatio) {
  EXPECT_EQ(0, resetCompressionRatio(2, "admin"));
  EXPECT_EQ(100u, shm->statistics.compressionRatio);
  restore(shm->statistics.compressionRatio);
  expectZeroed({{kBlock + 744, kBlock + 760}});
  EXPECT_EQ(std::vector<uint32_t>{14}, events());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Reset, UserWhoStandsInTheLogIsTheOneOfBothEvents) {
  for (auto reset : {resetStats, resetOptimizationStats}) {
    strcpy(shm->eventLog.record[0].userName, "an admin");
    shm->eventLog.writeIndex = 0;
    EXPECT_EQ(0, reset(2, shm->eventLog.record[0].userName + 3));
    EXPECT_EQ(2u, events().size());
  }
}

TEST_F(Reset, OfTheFilter) {
  EXPECT_EQ(0, resetFilterStats());
  EXPECT_EQ(100u, shm->statistics.filter_compression_ratio);
  restore(shm->statistics.filter_compression_ratio);
  expectZeroed({{kBlock + 760, kBlock + 776}});
  EXPECT_TRUE(events().empty());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Reset, OfAllCountersKeepsTheRecordAndTheFilter) {
  uint32_t before, after;
  ASSERT_EQ(0, getSystemUptime(&before));
  EXPECT_EQ(0, resetStats(2, "admin"));
  ASSERT_EQ(0, getSystemUptime(&after));
  EXPECT_GE(getLastResetTimeStamp(), before);
  EXPECT_LE(getLastResetTimeStamp(), after);
  EXPECT_EQ(100u, shm->statistics.compressionRatio);
  restore(shm->statistics.counterLastResetTime);
  restore(shm->statistics.compressionRatio);
  std::vector<std::pair<size_t, size_t>> zeroed = {{kBlock + 4, kBlock + 12},
                                                   {kBlock + 744, kBlock + 760},
                                                   {kBlock + 776, kBlock + 848},
                                                   {kBlock + 860, kBlock + 1152}};
  for (size_t row = 0; row < 10; ++row) zeroed.push_back({kQos + 44 * row + 4, kQos + 44 * row + 44});
  expectZeroed(zeroed);
  EXPECT_EQ((std::vector<uint32_t>{16, 14}), events());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Reset, WithoutUptimeStoresZero) {
  writeFile("/tmp/uptime", "rubbish");
  ASSERT_EQ(0, mount("/tmp/uptime", "/proc/uptime", nullptr, MS_BIND, nullptr));
  EXPECT_EQ(0, resetStats(2, "admin"));
  EXPECT_EQ(0u, getLastResetTimeStamp());
}

TEST_F(Reset, OfTheOptimizationCounters) {
  shm->config.ddupOperState = 0;
  shm->config.webCacheOperState = SHM_ON;
  clearRecords();
  EXPECT_EQ(0, resetOptimizationStats(2, "admin"));
  EXPECT_EQ(100u, shm->statistics.compressionRatio);
  EXPECT_EQ(100u, shm->statistics.filter_compression_ratio);
  restore(shm->statistics.compressionRatio);
  restore(shm->statistics.filter_compression_ratio);
  expectZeroed({{kBlock + 744, kBlock + 776}, {kSessions, kSessions + 68}});
  EXPECT_EQ((std::vector<uint32_t>{14, 15}), events());
  EXPECT_EQ(std::vector<std::string>{"/usr/local/squid/sbin/squid -k rotate  > /dev/null 2>& 1"}, shellLines());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Reset, WithTheWebCacheOffItsLogIsEmptied) {
  for (int state : {0, 2, 3}) {
    shm->config.webCacheOperState = static_cast<uint8_t>(state);
    clearRecords();
    EXPECT_EQ(0, resetOptimizationStats(2, "admin"));
    EXPECT_EQ(std::vector<std::string>{"/bin/cat /dev/null > /sda1/squidG2/log/access.log"}, shellLines()) << state;
  }
}

TEST_F(Reset, WithDeduplicationSetTheCachesLogIsSpared) {
  for (uint32_t method : {1u, 255u, 0x10000u}) {
    shm->config.ddupOperState = method;
    clearRecords();
    EXPECT_EQ(0, resetOptimizationStats(2, "admin"));
    EXPECT_TRUE(shellLines().empty()) << method;
  }
  EXPECT_EQ((std::vector<uint32_t>{14, 15, 14, 15, 14, 15}), events());
}

TEST_F(Reset, AFailedCommandDoesNotMatter) {
  shm->config.webCacheOperState = SHM_ON;
  answer("squid", "", 3);
  EXPECT_EQ(0, resetOptimizationStats(2, "admin"));
}

TEST_F(Reset, WithLoggingOffResetsAllTheSame) {
  shm->config.loggingOperState = SHM_OFF;
  EXPECT_EQ(0, resetStats(2, "admin"));
  EXPECT_EQ(0, resetCompressionRatio(2, "admin"));
  EXPECT_EQ(0, resetOptimizationStats(2, "admin"));
  EXPECT_TRUE(events().empty());
  EXPECT_EQ(0u, checkStatsCounter());
}

TEST_F(Reset, ThenAReaderSeesAFreshBlock) {
  shm->statistics.filter_total_bytes_in = 0;
  EXPECT_EQ(0, resetOptimizationStats(2, "admin"));
  EXPECT_EQ(0, resetStats(2, "admin"));
  StatisticsBlock out = {};
  ASSERT_EQ(0, readOperationalStats(&out));
  EXPECT_EQ(0u, +out.accumulatedIntervals);
  EXPECT_EQ(0u, +out.totalUncompressedDataSize);
  EXPECT_EQ(0u, +out.totalTcpSegmentsBadChecksum);
  EXPECT_EQ(100u, out.compressionRatio);
  EXPECT_EQ(100u, out.filter_compression_ratio);
  EXPECT_EQ(0u, checkStatsCounter());
}

TEST_F(Reset, AnEventThatCannotBeWrittenDoesNotMatter) {
  ASSERT_EQ(0, symlink("/dev/full", kEventFile));
  EXPECT_EQ(0, resetStats(2, "admin"));
  EXPECT_EQ(0u, checkStatsCounter());
  EXPECT_EQ((std::vector<uint32_t>{16, 14}), events());
}

TEST_F(Reset, WithoutStoreFailsAndRunsNothing) {
  dropStore();
  clearRecords();
  EXPECT_FAILS_WITH(SHM_EATTACH, resetStats(2, "admin"));
  EXPECT_FAILS_WITH(SHM_EATTACH, resetCompressionRatio(2, "admin"));
  EXPECT_FAILS_WITH(SHM_EATTACH, resetOptimizationStats(2, "admin"));
  EXPECT_FAILS_WITH(SHM_EATTACH, resetFilterStats());
  EXPECT_TRUE(shellLines().empty());
}

}  // namespace
}  // namespace kestrove::testing
