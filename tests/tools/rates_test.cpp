// SPDX-License-Identifier: Apache-2.0
// Rates of counters, and how they are drawn.
#include "tools/ctl/watch/rates.h"

#include <gmock/gmock.h>

#include <string_view>

#include "tools/ctl/watch/spark.h"

namespace ctl {
namespace {

using ::testing::Optional;

constexpr int kInterval = 10;

size_t rowNamed(std::string_view name) {
  for (size_t i = 0; i < counterRows().size(); ++i) {
    if (name == counterRows()[i].name) return i;
  }
  ADD_FAILURE() << name;
  return 0;
}

// A store whose engine reports, looked at when the test says so.
class RatesTest : public ::testing::Test {
 protected:
  RatesTest() {
    now_.at = 1000;
    now_.statistics.accumulationInterval = kInterval;
  }
  void report(uint64_t bytes) {
    now_.statistics.accumulatedIntervals += 1;
    now_.qos[0].bytesSent += bytes;
  }
  void reset(uint32_t uptime) {
    now_.statistics.accumulatedIntervals = 0;
    now_.statistics.counterLastResetTime = uptime;
    now_.qos[0].bytesSent = 0;
  }
  void look(double seconds) {
    now_.at += seconds;
    if (!rates_) rates_.emplace(now_);
    rates_->take(now_);
  }
  std::optional<double> wan() const { return rates_->of(rowNamed("wanBytes")); }

  Counters now_;
  std::optional<Rates> rates_;
};

TEST_F(RatesTest, GrowthIsNeverNegative) {
  EXPECT_THAT(growth(5, 5), Optional(uint64_t{0}));
  EXPECT_THAT(growth(5, 12), Optional(uint64_t{7}));
  EXPECT_THAT(growth(UINT64_MAX - 2, 4), Optional(uint64_t{7})) << "went round";
  EXPECT_EQ(std::nullopt, growth(12, 5)) << "was reset";
  EXPECT_EQ(std::nullopt, growth(0, UINT64_MAX)) << "a total that lost one";
}

TEST_F(RatesTest, AReportIsDividedByWhatItSpans) {
  look(0);
  EXPECT_EQ(std::nullopt, wan());
  report(1000);
  look(0.3);
  EXPECT_THAT(wan(), Optional(100.0));
  report(1000);
  report(3000);
  look(0.3);
  EXPECT_THAT(wan(), Optional(200.0));
}

TEST_F(RatesTest, BetweenTwoReportsTheLastRateStands) {
  look(0);
  report(1000);
  for (int i = 0; i < 30; ++i) look(1);
  EXPECT_THAT(wan(), Optional(100.0));
  EXPECT_FALSE(rates_->silent());
  for (int i = 0; i < 2; ++i) look(1);
  EXPECT_TRUE(rates_->silent());
  EXPECT_THAT(wan(), Optional(0.0)) << "an engine that stopped moves nothing";
  report(500);
  look(1);
  EXPECT_THAT(wan(), Optional(50.0));
}

TEST_F(RatesTest, AfterAResetThereIsNoRateUntilTheNextReport) {
  look(0);
  report(1000);
  look(1);
  reset(77);
  look(1);
  EXPECT_EQ(std::nullopt, wan());
  look(1);
  EXPECT_EQ(std::nullopt, wan());
  report(400);
  look(1);
  EXPECT_THAT(wan(), Optional(40.0));
}

TEST_F(RatesTest, AResetThatTheCounterHasOutgrownIsSeenToo) {
  look(0);
  report(1000);
  look(1);
  reset(77);
  for (int i = 0; i < 5; ++i) report(1000);
  look(1);
  EXPECT_EQ(std::nullopt, wan());
}

TEST_F(RatesTest, OneCounterThatWasResetLeavesTheOthers) {
  now_.statistics.filter_total_bytes_in = 5000;
  look(0);
  report(1000);
  now_.statistics.filter_total_bytes_in = 0;
  look(1);
  EXPECT_EQ(std::nullopt, rates_->of(rowNamed("filterBytesIn")));
  EXPECT_THAT(wan(), Optional(100.0));
}

TEST_F(RatesTest, PortsGoByTheClock) {
  look(0);
  now_.statistics.interfaceRow[1].bytesSent = 600;
  look(2);
  EXPECT_THAT(rates_->of(rowNamed("wanPortBytesSent")), Optional(300.0));
  look(2);
  EXPECT_THAT(rates_->of(rowNamed("wanPortBytesSent")), Optional(0.0));
  EXPECT_EQ(std::nullopt, wan());
}

TEST_F(RatesTest, WithoutAnIntervalTheClockHasToDo) {
  now_.statistics.accumulationInterval = 0;
  look(0);
  report(1000);
  look(2);
  EXPECT_THAT(wan(), Optional(500.0));
}

TEST(SparkLine, TheLargestIsTheHighest) {
  EXPECT_EQ("▁▄█", sparkLine({0, 4, 9}, 10, true));
  EXPECT_EQ("_-#", sparkLine({0, 4, 9}, 10, false));
  EXPECT_EQ("-#", sparkLine({100, 4, 9}, 2, false)) << "the newest stay";
  EXPECT_EQ("# _", sparkLine({3, std::nullopt, 0}, 10, false));
  EXPECT_EQ("___", sparkLine({0, 0, 0}, 10, false));
  EXPECT_EQ("", sparkLine({}, 10, false));
}

TEST(ShortNumber, ThreeDigitsAndALetter) {
  EXPECT_EQ("0 ", shortNumber(0));
  EXPECT_EQ("0.25 ", shortNumber(0.25));
  EXPECT_EQ("999 ", shortNumber(999.4));
  EXPECT_EQ("1.00 k", shortNumber(999.6));
  EXPECT_EQ("12.3 M", shortNumber(12345678));
  EXPECT_EQ("18.4 E", shortNumber(18.4e18));
}

}  // namespace
}  // namespace ctl
