// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/rates.h"

#include <algorithm>

namespace ctl {
namespace {

constexpr uint64_t kHalf = uint64_t{1} << 63;
constexpr int kMissedReports = 3;

}  // namespace

std::optional<uint64_t> growth(uint64_t before, uint64_t now) {
  const uint64_t grown = now - before;
  if (grown < kHalf) return grown;
  return std::nullopt;
}

Rates::Rates(const Counters& first) : before_(first), reported_(first.at), rates_(counterRows().size()) {}

bool Rates::silent() const {
  return silence() > kMissedReports * std::max(1, int{before_.statistics.accumulationInterval});
}

bool Rates::wasReset(const Counters& now) const {
  return now.statistics.counterLastResetTime != before_.statistics.counterLastResetTime ||
         now.statistics.accumulatedIntervals < before_.statistics.accumulatedIntervals;
}

// 0 where no report came. Without a length of the interval the clock has to do.
double Rates::engineSpan(const Counters& now) const {
  const uint64_t reports = now.statistics.accumulatedIntervals - before_.statistics.accumulatedIntervals;
  if (reports == 0) return 0;
  const int32_t interval = now.statistics.accumulationInterval;
  return interval > 0 ? static_cast<double>(reports) * interval : now.at - reported_;
}

void Rates::takeRow(size_t row, const Counters& now, bool reset, double span) {
  const CounterRow& counter = counterRows()[row];
  const std::optional<uint64_t> grown = growth(counter.read(before_), counter.read(now));
  if (reset || !grown) {
    rates_[row].reset();
  } else if (span > 0) {
    rates_[row] = static_cast<double>(*grown) / span;
  }
}

void Rates::take(const Counters& now) {
  const bool reset = wasReset(now);
  const double span = reset ? 0 : engineSpan(now);
  const double passed = now.at - before_.at;
  for (size_t row = 0; row < rates_.size(); ++row) {
    takeRow(row, now, reset, counterRows()[row].pace == Pace::kEngine ? span : passed);
  }
  if (reset || span > 0) reported_ = now.at;
  before_ = now;
  if (!silent()) return;
  for (size_t row = 0; row < rates_.size(); ++row) {
    if (counterRows()[row].pace == Pace::kEngine) rates_[row] = 0;
  }
}

}  // namespace ctl
