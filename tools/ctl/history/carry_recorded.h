// SPDX-License-Identifier: Apache-2.0
// Many settings at once as one recorded change: what apply and rollback do.
#pragma once

#include <functional>

#include "tools/ctl/history/recording.h"
#include "tools/ctl/settings/carry_out.h"

namespace ctl {

struct CarriedOut {
  Outcome outcome;
  Recorded recorded;

  // That of the outcome; kNotSaved, too, where there is no revision.
  Exit exit() const;
};

// The target is made with the store held. Journal first, then the change, then its revision; where nothing differs
// there is none of them.
CarriedOut carryOutRecorded(const Session& session, const std::function<Image()>& target, const CarryOptions& options);

// What came of it, and what it changed; throws where the command is to end with another status than kDone.
void showCarriedOut(const Session& session, const CarriedOut& done, const std::string& title);

}  // namespace ctl
