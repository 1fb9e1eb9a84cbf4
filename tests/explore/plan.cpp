// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/plan.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "tests/explore/operations.h"

namespace kestrove::explore {
namespace {

struct Meeting {
  Combination combination;
  bool kills;
};

int count(const Search& search) { return static_cast<int>(search.operations()); }

bool has(const Search& search, int number, unsigned flag) { return (search.operation(number).flags & flag) != 0; }

int numberOf(const Search& search, const std::string& name) {
  for (int number = 0; number < count(search); ++number) {
    if (search.operation(number).name == name) return number;
  }
  fprintf(stderr, "explore: no operation %s\n", name.c_str());
  exit(2);
}

// What takes no lock meets what it is meant for.
constexpr const char* kApartPairs[][2] = {{"unlocked-name", "unlocked-place"}, {"state-word", "load-fields"}};

void addApart(const Search& search, std::vector<Meeting>& meetings) {
  for (const auto& pair : kApartPairs) {
    meetings.push_back({{numberOf(search, pair[0]), numberOf(search, pair[1])}, false});
    meetings.push_back({{numberOf(search, pair[1]), numberOf(search, pair[0])}, false});
  }
}

// A brief one meets itself and the most used.
bool meet(const Search& search, int a, int b) {
  if (has(search, a, kApart) || has(search, b, kApart)) return false;
  bool brief = has(search, a, kBrief) || has(search, b, kBrief);
  return !brief || a == b || has(search, a, kOften) || has(search, b, kOften);
}

// Each on either width; a kill on one arrangement of each pair.
void addPairs(const Search& search, std::vector<Meeting>& meetings) {
  for (int a = 0; a < count(search); ++a) {
    for (int b = 0; b < count(search); ++b) {
      bool brief = has(search, a, kBrief) || has(search, b, kBrief);
      if (meet(search, a, b)) meetings.push_back({{a, b}, a <= b && !brief});
    }
  }
}

void addThrees(const Search& search, std::vector<Meeting>& meetings) {
  for (int a = 0; a < count(search); ++a) {
    for (int b = a; b < count(search); ++b) {
      for (int c = b; c < count(search); ++c) {
        if (has(search, a, kOften) && has(search, b, kOften) && has(search, c, kOften)) {
          meetings.push_back({{a, b, c}, false});
        }
      }
    }
  }
}

// Every operation with itself and with another one that is far away in the table; the most used with each other.
void addShare(const Search& search, std::vector<Meeting>& meetings) {
  int all = count(search);
  for (int a = 0; a < all; ++a) {
    if (!has(search, a, kApart)) meetings.push_back({{a, a}, false});
    int other = (a * 7 + 3) % all;
    if (meet(search, a, other)) meetings.push_back({{a, other}, a % 8 == 0 && !has(search, a, kBrief)});
  }
  for (int a = 0; a < all; ++a) {
    for (int b = 0; b < all; ++b) {
      if (has(search, a, kOften) && has(search, b, kOften)) meetings.push_back({{a, b}, a < b && (a + b) % 8 == 0});
    }
  }
}

// Says once a minute how far it is.
class Progress {
 public:
  Progress(Part part, size_t all) : part_(part), all_(all) {}
  void tell(size_t done) {
    if (time(nullptr) < next_) return;
    fprintf(stderr, "explore: part %u, %zu of %zu combinations\n", part_.number, done / part_.of, all_ / part_.of);
    next_ = time(nullptr) + kMinute;
  }

 private:
  static constexpr time_t kMinute = 60;
  Part part_;
  size_t all_;
  time_t next_ = time(nullptr) + kMinute;
};

bool checkAll(Judge& judge, const std::vector<Meeting>& meetings, Part part) {
  bool good = true;
  Progress progress(part, meetings.size());
  for (size_t i = part.number - 1; i < meetings.size(); i += part.of) {
    progress.tell(i);
    bool serial = judge.check(meetings[i].combination);
    if (serial && meetings[i].kills) serial = judge.checkKills(meetings[i].combination);
    good = good && serial;
  }
  return good;
}

bool tryThese(const Search& search, Judge& judge, const std::vector<std::string>& names) {
  Combination combination;
  for (const std::string& name : names) combination.push_back(numberOf(search, name));
  if (combination.size() < 2 || combination.size() > 3) return false;
  return checkAll(judge, {{combination, true}}, {});
}

std::vector<Meeting> pairsOf(const Search& search, const std::vector<std::string>& names) {
  std::vector<Meeting> pairs;
  for (size_t i = 0; i + 1 < names.size(); i += 2) {
    pairs.push_back({{numberOf(search, names[i]), numberOf(search, names[i + 1])}, false});
  }
  return pairs;
}

bool findInPairs(const Search& search, Judge& judge, const std::vector<std::string>& names) {
  judge.quiet(true);
  for (const Meeting& pair : pairsOf(search, names)) {
    if (judge.check(pair.combination)) continue;
    puts("found");
    return true;
  }
  puts("not found");
  return false;
}

}  // namespace

bool runPlan(Search& search, Judge& judge, const std::string& command, const std::vector<std::string>& names,
             Part part) {
  if (command == "try") return tryThese(search, judge, names);
  if (command == "pairs") return checkAll(judge, pairsOf(search, names), part);
  if (command == "find") return findInPairs(search, judge, names);
  std::vector<Meeting> meetings;
  if (command == "share") {
    search.mostPreemptions(1);
    addShare(search, meetings);
  }
  if (command == "whole") addPairs(search, meetings);
  if (command == "whole") addThrees(search, meetings);
  addApart(search, meetings);
  return checkAll(judge, meetings, part);
}

}  // namespace kestrove::explore
