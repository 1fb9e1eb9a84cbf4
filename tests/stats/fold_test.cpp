// SPDX-License-Identifier: Apache-2.0
// Interval records folded into the store, word by word.
#include <random>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

struct Record {
  uint32_t word[SHM_INTERVAL_WORDS] = {};
  Record& set(size_t at, uint32_t value) {
    word[at] = value;
    return *this;
  }
  Record& setPair(size_t at, uint64_t value) {
    word[at] = static_cast<uint32_t>(value);
    word[at + 1] = static_cast<uint32_t>(value >> 32);
    return *this;
  }
};

constexpr uint32_t kMinusOne = UINT32_MAX;
constexpr uint32_t kLowest = 0x80000000u;

class Fold : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->statistics.accumulationInterval = 10;
  }
  void fold(const Record& record) { EXPECT_EQ(0, shm_updateKestroveStats(record.word)); }
  StatisticsBlock& block() { return shm->statistics; }
};

TEST_F(Fold, CountsIntervalsAndKeepsTheLatestRecord) {
  shm->statistics.accumulatedIntervals = UINT32_MAX;
  Record record;
  for (uint32_t i = 0; i < SHM_INTERVAL_WORDS; ++i) record.set(i, i + 1000);
  fold(record);
  EXPECT_EQ(uint64_t{UINT32_MAX} + 1, checkStatsCounter());
  for (uint32_t i = 0; i < SHM_INTERVAL_WORDS; ++i) EXPECT_EQ(i + 1000, block().intervalRecord[i]);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(Fold, PeaksGrowAndNeverFall) {
  fold(Record().set(14, 50).set(42, 60));
  fold(Record().set(14, 40).set(42, 70));
  EXPECT_EQ(50, block().intervalPeak14);
  EXPECT_EQ(70, block().intervalPeak42);
  fold(Record().set(14, kMinusOne).set(42, kLowest));
  EXPECT_EQ(50, block().intervalPeak14);
  EXPECT_EQ(70, block().intervalPeak42);
}

TEST_F(Fold, TotalsTakeTheSignAlong) {
  fold(Record().set(18, 100).set(19, 200).set(22, 300).set(20, 400).set(21, 500).set(23, 600).set(24, 700));
  fold(Record()
           .set(18, kMinusOne)
           .set(19, 1)
           .set(22, kLowest)
           .set(20, 0x7FFFFFFF)
           .set(21, kMinusOne)
           .set(23, 1)
           .set(24, kLowest));
  EXPECT_EQ(99u, +block().intervalTotals[0]);
  EXPECT_EQ(201u, +block().intervalTotals[1]);
  EXPECT_EQ(uint64_t{300} - 0x80000000u, +block().intervalTotals[2]);
  EXPECT_EQ(400u + uint64_t{0x7FFFFFFF}, +block().intervalTotals[3]);
  EXPECT_EQ(499u, +block().totalTcpSessionRequestsFailed);
  EXPECT_EQ(601u, +block().totalTcpSessionsTimedOut);
  EXPECT_EQ(uint64_t{700} - 0x80000000u, +block().totalTcpSegmentsBadChecksum);
}

TEST_F(Fold, RatesAreDividedByTheInterval) {
  fold(Record().set(43, 109).set(44, 99));
  EXPECT_EQ(10, block().maxTcpSessionInitiationsPerSecond);
  EXPECT_EQ(9, block().maxTcpSessionTerminationsPerSecond);
  fold(Record().set(43, kLowest).set(44, 100));
  EXPECT_EQ(10, block().maxTcpSessionInitiationsPerSecond);
  EXPECT_EQ(10, block().maxTcpSessionTerminationsPerSecond);
}

TEST_F(Fold, AnIntervalOfZeroLeavesTheRates) {
  block().accumulationInterval = 0;
  block().maxTcpSessionInitiationsPerSecond = 7;
  block().maxTcpSessionTerminationsPerSecond = 8;
  fold(Record().set(43, 5000).set(44, 5000));
  EXPECT_EQ(7, block().maxTcpSessionInitiationsPerSecond);
  EXPECT_EQ(8, block().maxTcpSessionTerminationsPerSecond);
}

TEST_F(Fold, ANegativeIntervalDividesWithItsSign) {
  block().accumulationInterval = -1;
  fold(Record().set(43, static_cast<uint32_t>(-5)).set(44, kLowest));
  EXPECT_EQ(5, block().maxTcpSessionInitiationsPerSecond);
  EXPECT_EQ(0, block().maxTcpSessionTerminationsPerSecond) << "the quotient does not exist";
}

TEST_F(Fold, CompressionTotalsAreUnsignedAndExact) {
  fold(Record().set(25, UINT32_MAX).set(26, UINT32_MAX / 4));
  fold(Record().set(25, UINT32_MAX).set(26, UINT32_MAX / 4));
  EXPECT_EQ(uint64_t{UINT32_MAX} * 2, +block().totalUncompressedDataSize);
  EXPECT_EQ(uint64_t{UINT32_MAX / 4} * 2, +block().totalCompressedDataSize);
  EXPECT_EQ(24u, block().compressionRatio);
}

TEST_F(Fold, WithNothingCompressedTheRatioStays) {
  block().compressionRatio = 77;
  fold(Record().set(26, 500));
  EXPECT_EQ(77u, block().compressionRatio);
  EXPECT_EQ(500u, +block().totalCompressedDataSize);
}

TEST_F(Fold, RatiosAbove32BitsKeepTheirLowWord) {
  block().totalCompressedDataSize = uint64_t{1} << 32;
  fold(Record().set(25, 3));
  EXPECT_EQ(static_cast<uint32_t>((uint64_t{1} << 32) * 100 / 3), block().compressionRatio);
}

TEST_F(Fold, FilterTotalsAndTheirRatio) {
  fold(Record().set(27, UINT32_MAX).set(28, 0x80000000u).set(29, 4711));
  EXPECT_EQ(uint64_t{UINT32_MAX}, +block().filter_total_bytes_in);
  EXPECT_EQ(uint64_t{0x80000000u}, +block().filter_total_bytes_out);
  EXPECT_EQ(50u, block().filter_compression_ratio);
  EXPECT_EQ(4711u, block().filterLastValue);
  fold(Record().set(29, 3));
  EXPECT_EQ(3u, block().filterLastValue);
}

TEST_F(Fold, WithNothingFilteredTheRatioIs100) {
  block().filter_compression_ratio = 5;
  fold(Record().set(28, 900));
  EXPECT_EQ(100u, block().filter_compression_ratio);
}

TEST_F(Fold, EveryQueueTakesItsRow) {
  Record record;
  for (uint32_t row = 0; row < SHM_QOS_ROWS; ++row) {
    uint32_t at = 30 + 15 * row;
    record.set(at, row + 1).setPair(at + 1, (uint64_t{row} << 32) + 5).setPair(at + 3, row + 100);
    record.setPair(at + 5, row + 200).set(at + 7, row + 300).set(at + 8, row + 400).set(at + 9, row + 500);
    record.set(at + 10, row + 600).set(at + 11, 9999);
  }
  fold(record);
  fold(record);
  for (uint32_t i = 0; i < SHM_QOS_ROWS; ++i) {
    const QosRow& row = shm->qos[i];
    EXPECT_EQ(static_cast<int32_t>(i) + 1, row.priority);
    EXPECT_EQ((uint64_t{i} << 33) + 10, +row.bytesSent);
    EXPECT_EQ(2 * (uint64_t{i} + 100), +row.packetsSent);
    EXPECT_EQ(2 * (uint64_t{i} + 200), +row.packetsDropped);
    EXPECT_EQ(i + 300, row.currentRate);
    EXPECT_EQ(i + 400, row.averageRate);
    EXPECT_EQ(i + 500, row.maximumRate);
    EXPECT_EQ(i + 600, row.sessions);
  }
}

TEST_F(Fold, AQueuesMaximumIsTheLargestSeen) {
  fold(Record().set(39, 0x90000000u).set(37, 8).set(38, 8).set(40, 8));
  fold(Record().set(39, 5));
  EXPECT_EQ(0x90000000u, shm->qos[0].maximumRate);
  EXPECT_EQ(0u, shm->qos[0].currentRate);
  EXPECT_EQ(0u, shm->qos[0].averageRate);
  EXPECT_EQ(0u, shm->qos[0].sessions);
}

TEST_F(Fold, TotalsWrapAt64Bits) {
  shm->qos[0].bytesSent = UINT64_MAX;
  block().totalUncompressedDataSize = UINT64_MAX;
  fold(Record().setPair(31, 2).set(25, 2));
  EXPECT_EQ(1u, +shm->qos[0].bytesSent);
  EXPECT_EQ(1u, +block().totalUncompressedDataSize);
}

TEST_F(Fold, LeavesWhatIsNotItsOwn) {
  const std::string before(reinterpret_cast<char*>(shm), sizeof(ShmData));
  Record record;
  for (uint32_t i = 0; i < SHM_INTERVAL_WORDS; ++i) record.set(i, i * 2654435761u);
  fold(record);
  const std::string after(reinterpret_cast<char*>(shm), sizeof(ShmData));
  size_t statistics = offsetof(ShmData, statistics), qos = offsetof(ShmData, qos);
  for (size_t i = 0; i < sizeof(ShmData); ++i) {
    bool own = (i >= statistics + 4 && i < statistics + 860) || (i >= qos && i < qos + sizeof shm->qos);
    ASSERT_TRUE(own || before[i] == after[i]) << i;
  }
  EXPECT_EQ(10, block().accumulationInterval);
  EXPECT_EQ(0u, block().counterLastResetTime);
}

TEST_F(Fold, ARecordIsNeeded) { EXPECT_FAILS_WITH(SHM_EINVAL, shm_updateKestroveStats(nullptr)); }

TEST_F(Fold, AStoreIsNeeded) {
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, shm_updateKestroveStats(Record().word));
}

// Whatever stands in the block and the record, nothing faults and the totals are those of plain 64-bit arithmetic.
TEST_F(Fold, RandomBytes) {
  std::mt19937 numbers(7);
  auto fill = [&](void* place, size_t size) {
    for (size_t i = 0; i < size; ++i) static_cast<uint8_t*>(place)[i] = static_cast<uint8_t>(numbers());
  };
  for (int round = 0; round < 2000; ++round) {
    Record record;
    fill(&block(), sizeof block());
    fill(shm->qos, sizeof shm->qos);
    fill(record.word, sizeof record.word);
    if (round % 3 == 0) block().accumulationInterval = -1;
    if (round % 3 == 1) record.set(43, kLowest).set(44, kLowest);
    const StatisticsBlock was = block();
    fold(record);
    EXPECT_EQ(was.accumulatedIntervals + 1, +block().accumulatedIntervals);
    EXPECT_EQ(was.totalUncompressedDataSize + record.word[25], +block().totalUncompressedDataSize);
    EXPECT_GE(block().maxTcpSessionInitiationsPerSecond, was.maxTcpSessionInitiationsPerSecond);
  }
}

struct SessionRecord {
  uint32_t word[17] = {};
};

TEST_F(Fold, SessionCountersAreAddedAndTakenFromTheCaller) {
  shm->sessionEngine.counter[0] = UINT32_MAX;
  shm->sessionEngine.resetWord[0] = 77;
  SessionRecord record;
  for (uint32_t i = 0; i < 8; ++i) {
    record.word[2 * i] = UINT32_MAX;
    record.word[2 * i + 1] = i;
  }
  record.word[16] = static_cast<uint32_t>(-3);
  EXPECT_EQ(0, updateDomoStats(&record));
  EXPECT_EQ(uint64_t{UINT32_MAX} * 2, +shm->sessionEngine.counter[0]);
  for (uint64_t i = 1; i < 8; ++i) EXPECT_EQ((i << 32) + UINT32_MAX, +shm->sessionEngine.counter[i]);
  EXPECT_EQ(-3, shm->sessionEngine.sessions);
  EXPECT_EQ(77u, shm->sessionEngine.resetWord[0]);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(0u, record.word[i]);
  EXPECT_EQ(static_cast<uint32_t>(-3), record.word[16]);
  EXPECT_EQ(0, updateDomoStats(&record));
  EXPECT_EQ(uint64_t{UINT32_MAX} * 2, +shm->sessionEngine.counter[0]);
}

TEST_F(Fold, SessionRecordsNeedNoAlignment) {
  char space[70] = {};
  space[1] = 1;
  EXPECT_EQ(0, updateDomoStats(space + 1));
  EXPECT_EQ(1u, +shm->sessionEngine.counter[0]);
}

TEST_F(Fold, WithoutStoreTheSessionRecordStays) {
  dropStore();
  SessionRecord record;
  record.word[0] = 5;
  EXPECT_FAILS_WITH(SHM_EATTACH, updateDomoStats(&record));
  EXPECT_EQ(5u, record.word[0]);
  EXPECT_FAILS_WITH(SHM_EINVAL, updateDomoStats(nullptr));
}

}  // namespace
}  // namespace kestrove::testing
