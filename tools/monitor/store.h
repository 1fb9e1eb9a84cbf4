// SPDX-License-Identifier: Apache-2.0
// The store as a program sees it that outlives stores and never waits long for any.
#pragma once

#include <string>

#include "kestrove/layout.h"
#include "tools/monitor/clock.h"

namespace monitor {

class Store {
 public:
  enum class Change { kNone, kCame, kWent };

  // Whether the store that is there is still the one seen last; one that was built anew has come. Attaches it. Whoever
  // builds a store holds the lock meanwhile: it has come when the lock was had once.
  Change look();
  // Why none can be attached, in a sentence, once for each reason; empty where one is attached, or that was told.
  std::string absence();
  // To be read without the lock, word by word. Null where there is no store yet.
  const ShmData* data() const;

 private:
  friend class Visit;
  bool lock();
  void waited(const std::string& why);

  int segment_ = -1;
  bool built_ = false;
  Milliseconds notBefore_ = 0;  // after a wait in vain
  bool toldOfHolder_ = false;
  std::string toldOfAbsence_;
};

// The store's lock for one step. It is not had where another process keeps it longer than a moment: what was to be done
// is tried again later.
class Visit {
 public:
  explicit Visit(Store& store) : held_(store.lock()) {}
  ~Visit();
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;
  explicit operator bool() const { return held_; }

 private:
  bool held_;
};

}  // namespace monitor
