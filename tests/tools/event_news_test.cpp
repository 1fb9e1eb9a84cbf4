// SPDX-License-Identifier: Apache-2.0
// What a follower takes for new in the event log.
#include "tools/ctl/watch/event_news.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace ctl {
namespace {

// A log as the library keeps it.
class Ring {
 public:
  void append(uint32_t id) {
    if (log_->eventLogFull) log_->readIndex = (log_->readIndex + 1) % SHM_EVENTS;
    log_->record[log_->writeIndex] = {1000, id, 2, "admin"};
    log_->writeIndex = (log_->writeIndex + 1) % SHM_EVENTS;
    if (log_->writeIndex == log_->readIndex) log_->eventLogFull = 1;
  }
  void append(uint32_t first, int count) {
    for (int i = 0; i < count; ++i) append(first + static_cast<uint32_t>(i));
  }
  void clear() { log_->eventLogFull = log_->readIndex = log_->writeIndex = 0; }
  const EventLog& log() const { return *log_; }
  Ring copy() const {
    Ring other;
    *other.log_ = *log_;
    return other;
  }

 private:
  std::unique_ptr<EventLog> log_ = std::make_unique<EventLog>();
};

void expectNews(const Ring& before, const Ring& now, uint32_t count, bool emptied = false, bool missed = false) {
  const EventNews news = newsSince(before.log(), now.log());
  EXPECT_EQ(count, news.count);
  EXPECT_EQ(emptied, news.emptied);
  EXPECT_EQ(missed, news.missed);
}

TEST(EventNews, WhatIsAddedIsNew) {
  Ring ring;
  expectNews(ring, ring, 0);
  Ring before = ring.copy();
  ring.append(1, 3);
  expectNews(before, ring, 3);
  expectNews(ring, ring, 0);
}

TEST(EventNews, AlsoAcrossTheEndOfTheRing) {
  Ring ring;
  ring.append(1, SHM_EVENTS - 2);
  Ring before = ring.copy();
  ring.append(50000, 5);
  expectNews(before, ring, 5);
  before = ring.copy();
  ring.append(60000, SHM_EVENTS - 1);
  expectNews(before, ring, SHM_EVENTS - 1);
}

TEST(EventNews, AWholeRoundMayHaveLostSome) {
  Ring ring;
  ring.append(1, 10);
  Ring before = ring.copy();
  ring.append(50000, SHM_EVENTS);
  expectNews(before, ring, SHM_EVENTS, false, true);
  ring.append(90000, 3);
  expectNews(before, ring, SHM_EVENTS, false, true);
}

TEST(EventNews, AfterAClearAllIsNew) {
  Ring ring;
  ring.append(1, 10);
  const Ring before = ring.copy();
  ring.clear();
  expectNews(before, ring, 0, true);
  ring.append(17);
  expectNews(before, ring, 1, true);
  ring.append(100, 9);
  expectNews(before, ring, 10, true);
  ring.append(200, 5);
  expectNews(before, ring, 15, true);
}

TEST(EventNews, AFullLogThatWasClearedToo) {
  Ring ring;
  ring.append(1, SHM_EVENTS + 7);
  const Ring before = ring.copy();
  ring.clear();
  ring.append(17);
  expectNews(before, ring, 1, true);
}

TEST(EventNews, AnyHistoryIsToldWhole) {
  std::mt19937 random(10);
  Ring ring;
  uint32_t id = 0;
  for (int look = 0; look < 300; ++look) {
    const Ring before = ring.copy();
    const bool cleared = random() % 4 == 0 && ring.log().writeIndex != 0;
    if (cleared) ring.clear();
    const auto added = static_cast<uint32_t>(random() % (random() % 8 == 0 ? 9000 : 40));
    for (uint32_t i = 0; i < added; ++i) ring.append(++id);
    if (cleared) {
      expectNews(before, ring, std::min(added, uint32_t{SHM_EVENTS}), added < SHM_EVENTS, added >= SHM_EVENTS);
    } else {
      expectNews(before, ring, std::min(added, uint32_t{SHM_EVENTS}), false,
                 added > SHM_EVENTS || (added == SHM_EVENTS && before.log().writeIndex != 0));
    }
    if (HasFailure()) FAIL() << "look " << look << ", " << added << " added, " << (cleared ? "cleared" : "went on");
  }
}

TEST(EventNews, ADamagedIndexEndsAll) {
  Ring ring;
  ring.append(1, 3);
  Ring wrong = ring.copy();
  const_cast<EventLog&>(wrong.log()).writeIndex = 0xFFFFFFFF;
  EXPECT_LE(newsSince(ring.log(), wrong.log()).count, uint32_t{SHM_EVENTS});
  EXPECT_LE(newsSince(wrong.log(), ring.log()).count, uint32_t{SHM_EVENTS});
}

}  // namespace
}  // namespace ctl
