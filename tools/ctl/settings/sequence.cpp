// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/sequence.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace ctl {
namespace {

using Texts = std::vector<std::string_view>;

constexpr size_t kMostMatches = 1000000;  // a tenth of a second
constexpr size_t kNone = SIZE_MAX;

struct Match {
  size_t before;
  size_t after;
  size_t previous;  // the match in front of it in the subsequence
};

// What stands between the common beginning and the common end.
struct Middle {
  size_t begin = 0;
  size_t beforeEnd;
  size_t afterEnd;

  Middle(const Texts& before, const Texts& after) : beforeEnd(before.size()), afterEnd(after.size()) {
    while (begin < beforeEnd && begin < afterEnd && before[begin] == after[begin]) ++begin;
    while (beforeEnd > begin && afterEnd > begin && before[beforeEnd - 1] == after[afterEnd - 1]) {
      --beforeEnd;
      --afterEnd;
    }
  }
};

// The longest chain of matches that rise in both sequences: they come by their place in the first one, those of one
// place with falling places in the second.
class Chain {
 public:
  void offer(size_t before, size_t after) {
    auto at = std::lower_bound(ends_.begin(), ends_.end(), after,
                               [this](size_t match, size_t place) { return matches_[match].after < place; });
    const size_t previous = at == ends_.begin() ? kNone : *std::prev(at);
    matches_.push_back({before, after, previous});
    if (at == ends_.end()) {
      ends_.push_back(matches_.size() - 1);
    } else {
      *at = matches_.size() - 1;
    }
  }

  std::vector<Match> longest() const {
    std::vector<Match> chain;
    for (size_t at = ends_.empty() ? kNone : ends_.back(); at != kNone; at = matches_[at].previous) {
      chain.push_back(matches_[at]);
    }
    std::reverse(chain.begin(), chain.end());
    return chain;
  }

 private:
  std::vector<Match> matches_;
  std::vector<size_t> ends_;  // the match that ends the chain of each length with the least place
};

using Places = std::unordered_map<std::string_view, std::vector<size_t>>;

Places placesOf(const Texts& texts, size_t begin, size_t end) {
  Places places;
  for (size_t i = begin; i < end; ++i) places[texts[i]].push_back(i);
  return places;
}

size_t matchesOf(const Texts& before, const Middle& middle, const Places& places) {
  size_t matches = 0;
  for (size_t i = middle.begin; i < middle.beforeEnd; ++i) {
    auto found = places.find(before[i]);
    if (found != places.end()) matches += found->second.size();
  }
  return matches;
}

std::vector<Match> common(const Texts& before, const Texts& after, const Middle& middle) {
  const Places places = placesOf(after, middle.begin, middle.afterEnd);
  const bool few = matchesOf(before, middle, places) <= kMostMatches;
  std::unordered_map<std::string_view, size_t> seen;
  Chain chain;
  for (size_t i = middle.begin; i < middle.beforeEnd; ++i) {
    auto found = places.find(before[i]);
    if (found == places.end()) continue;
    const std::vector<size_t>& there = found->second;
    if (few) {
      for (auto place = there.rbegin(); place != there.rend(); ++place) chain.offer(i, *place);
    } else if (const size_t number = seen[before[i]]++; number < there.size()) {
      chain.offer(i, there[number]);
    }
  }
  return chain.longest();
}

}  // namespace

std::vector<Gap> gapsBetween(const Texts& before, const Texts& after) {
  const Middle middle(before, after);
  std::vector<Match> matches = common(before, after, middle);
  matches.push_back({middle.beforeEnd, middle.afterEnd, kNone});
  std::vector<Gap> gaps;
  size_t nextBefore = middle.begin;
  size_t nextAfter = middle.begin;
  for (const Match& match : matches) {
    const Gap gap = {nextBefore, match.before - nextBefore, nextAfter, match.after - nextAfter};
    if (gap.removed != 0 || gap.added != 0) gaps.push_back(gap);
    nextBefore = match.before + 1;
    nextAfter = match.after + 1;
  }
  return gaps;
}

}  // namespace ctl
