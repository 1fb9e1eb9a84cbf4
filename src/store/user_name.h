// SPDX-License-Identifier: Apache-2.0
// The name of the user behind an event.
#pragma once

#include "kestrove/layout.h"
#include "store/text.h"

namespace kestrove {

// As an event keeps it, null as an empty one, apart from the caller's text: that may be a record of the log itself,
// which the event overwrites.
class UserName {
 public:
  explicit UserName(const char* user) { setField(text_, user ? user : "", sizeof text_ - 1); }
  const char* text() const { return text_; }

 private:
  char text_[sizeof(EventRecord::userName) + 1] = {};
};

}  // namespace kestrove
