// SPDX-License-Identifier: Apache-2.0
// Deaths inside an operation, at every instant that changes the store.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kestrove/kestrove.h"

namespace kestrove::testing {

// What the tables hold for whoever reads them: lists in their order, whatever their slots.
struct Tables {
  explicit Tables(const ShmData& store);
  bool operator==(const Tables&) const = default;

  std::string users;
  std::string addresses;
  std::string addresses6;
  std::string routes;
  std::string routes6;
  std::string rules;
  std::string events;
};

// A stretch of the store.
struct Stretch {
  size_t at;
  size_t size;
};

template <typename Record>
Stretch stretchOf(const Record* first, size_t count) {
  return {static_cast<size_t>(reinterpret_cast<const char*>(first) - reinterpret_cast<const char*>(shm)),
          count * sizeof(Record)};
}

struct Proof {
  std::vector<std::string> faults;  // none: no death at any instant leaves anything torn, lost or in between
  long instructions = 0;
  int instants = 0;   // at which the store had changed
  int finished = 0;   // of them: the next holder finished the change,
  int takenBack = 0;  // or took it back
};

// Follows the operation and asks at each instant at which the store changes what the next holder of the lock makes of
// it: the invariants of kestrovectl check hold, no word of a change is left, and the tables are those from before or
// those from after; once they are those from after they stay so. What a step in between may leave is named by between.
// Stretches are watched beside the beginning of each table; whatever changes must be watched.
class DeathProof {
 public:
  using Tell = std::function<bool(const Tables&)>;

  explicit DeathProof(std::function<void()> operation, std::vector<Stretch> stretches = {}, Tell between = nullptr);
  Proof run();

  // Kills the operation at the given instant, from 1, and leaves the store as it was then. False when it came to its
  // end before.
  bool dieAt(int instant);

 private:
  bool changed();
  void askNextHolder();
  void judge(const Tables& tables);
  void fault(const std::string& text);
  bool watched(size_t at) const;
  void endOfWork();

  std::function<void()> operation_;
  Tell between_;
  std::vector<Stretch> stretches_;
  std::unique_ptr<ShmData> start_;   // the store before
  std::unique_ptr<ShmData> last_;    // as it was seen last
  std::unique_ptr<ShmData> holder_;  // as the next holder sees it
  Tables before_;
  std::unique_ptr<Tables> after_;
  Proof proof_;
};

// The store of these tests: Configuration Mode, three rules before the default rule, three users (two administrators),
// three addresses of each kind, three routes of each family, three events.
void makeSmallTables();

FilterRule ruleNamed(int32_t port);
UserAccount userNamed(const char* name, int32_t superUser);
RouteEntry routeNamed(uint8_t number);
Route6Entry routeNamed6(uint8_t number);
Ip6Address addressNamed6(uint8_t number);
ManagementAddress managementNamed(uint8_t number);

}  // namespace kestrove::testing
