// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/carry_recorded.h"

#include "kestrove/segment.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/held_look.h"

namespace ctl {
namespace {

void warnOf(const CarriedOut& done) {
  for (const Step& step : done.outcome.steps) {
    if (!step.done || !step.reason.empty()) warn(step.line + ": " + step.reason);
  }
  for (const std::string& note : done.outcome.notes) warn(note);
  if (done.outcome.changed && !done.outcome.saved) warn("applied, not saved: " + done.outcome.unsavedReason);
  done.recorded.warn();
}

}  // namespace

Exit CarriedOut::exit() const {
  return outcome.exit() == kDone && !recorded.missing.empty() ? kNotSaved : outcome.exit();
}

CarriedOut carryOutRecorded(const Session& session, const std::function<Image()>& target, const CarryOptions& options) {
  std::optional<tools::Hold> hold;
  Recording recording(session);  // ends with the store still held
  awaitLock(session);
  if (!hold.emplace()) throw refusal("the store cannot be locked");
  const Image wanted = target();
  HeldLook::call(false);
  if (compare(*shm, *wanted).empty()) {
    HeldLook::call(true);
    return {};
  }
  recording.begin();
  recording.aim(wanted);
  CarriedOut done;
  done.outcome = carryOut(session, *wanted, options);
  HeldLook::call(true);
  done.recorded = recording.finish();
  return done;
}

void showCarriedOut(const Session& session, const CarriedOut& done, const std::string& title) {
  if (session.json) {
    Json result = {{"done", title}};
    const Json outcome = outcomeJson(done.outcome);
    for (const auto& [name, value] : outcome.items()) result[name] = value;
    done.recorded.addTo(result);
    session.show(result);
  } else {
    warnOf(done);
    session.print(differenceText(done.outcome.made, false) + tools::escaped(title) + "\n" + done.recorded.text());
  }
  if (done.exit() != kDone) throw Refusal(done.exit(), "");
}

}  // namespace ctl
