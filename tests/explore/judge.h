// SPDX-License-Identifier: Apache-2.0
// Whether every order of some operations ends as one of the serial orders does.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/explore/search.h"

namespace kestrove::explore {

class Judge {
 public:
  explicit Judge(Search& search) : search_(search) {}

  // Every order, up to the first that ends as no serial order does, which is put into words. False then.
  bool check(const Combination& combination) { return check(combination, {}); }
  // The same with each process killed at each of its places.
  bool checkKills(const Combination& combination);
  // A finding is only counted.
  void quiet(bool quiet) { quiet_ = quiet; }

  uint64_t combinations() const { return combinations_; }
  uint64_t orders() const { return orders_; }
  uint64_t kills() const { return kills_; }
  uint64_t findings() const { return findings_; }

 private:
  using Serial = std::vector<Ending>;

  bool check(const Combination& combination, Victim victim);
  Serial serialEndings(const Combination& combination, Victim victim);
  void tell(const Combination& combination, Victim victim, const Ending& ending);
  void tellDifference(const Outcome& outcome, const Serial& serial) const;
  std::string title(const Combination& combination) const;

  Search& search_;
  bool quiet_ = false;
  uint64_t combinations_ = 0;
  uint64_t orders_ = 0;
  uint64_t kills_ = 0;
  uint64_t findings_ = 0;
};

}  // namespace kestrove::explore
