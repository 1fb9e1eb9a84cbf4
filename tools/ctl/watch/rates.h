// SPDX-License-Identifier: Apache-2.0
// Rates from counters that may be reset, go round or stand still meanwhile.
#pragma once

#include <optional>
#include <vector>

#include "tools/ctl/watch/counters.h"

namespace ctl {

// None where the counter went back: it was reset, and how far it had come until then is not known. A counter that went
// round its 64 bits has grown.
std::optional<uint64_t> growth(uint64_t before, uint64_t now);

// What the engine counts is divided by the time that its reports span, so that a rate does not depend on how often it
// is looked at. Between two reports the last rate stands; it falls to 0 when the engine misses some.
class Rates {
 public:
  explicit Rates(const Counters& first);

  void take(const Counters& now);

  // Of a row of counterRows(), per second, never negative; none after a reset and before a first report.
  std::optional<double> of(size_t row) const { return rates_[row]; }

  // Seconds since the engine was last seen to report; the beginning counts as a report.
  double silence() const { return before_.at - reported_; }
  bool silent() const;

 private:
  bool wasReset(const Counters& now) const;
  double engineSpan(const Counters& now) const;
  void takeRow(size_t row, const Counters& now, bool reset, double span);

  Counters before_;
  double reported_;
  std::vector<std::optional<double>> rates_;
};

}  // namespace ctl
