// SPDX-License-Identifier: Apache-2.0
// The store's lock over several operations.
#pragma once

#include "kestrove/segment.h"

namespace tools {

class Hold {
 public:
  Hold() : held_(kestrove_hold() == 0) {}
  ~Hold() {
    if (held_) kestrove_release();
  }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
  explicit operator bool() const { return held_; }

 private:
  bool held_;
};

}  // namespace tools
