// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/unkept.h"

#include <syslog.h>

#include "tools/ctl/history/journal.h"
#include "tools/ctl/shell/unsaved.h"

namespace monitor {
namespace {

bool awaitsConfirmation() {
  try {
    const auto home = ctl::Home::find();
    if (!home) return false;
    const auto entry = ctl::Journal(*home).read();
    return entry && entry->stage == ctl::Stage::kWaiting;
  } catch (const ctl::Refusal&) {
    return false;
  }
}

}  // namespace

void Unkept::tell(bool& told, bool now, const char* came, const char* went) const {
  if (told != now) syslog(LOG_NOTICE, "%s", now ? came : went);
  told = now;
}

// The comparison costs something: it is made again only where the settings or their file have changed.
void Unkept::look(const Store& store) {
  tell(unconfirmed_, awaitsConfirmation(), "a change waits for its confirmation and goes back without it",
       "no change waits for a confirmation any more");
  if (!store.data()) return;
  const std::string mark = ctl::settingsMark(*store.data());
  if (mark == mark_) return;
  mark_ = mark;
  tell(unsaved_, ctl::unsavedChanges(), "the store holds settings that its file does not: a restart takes them back",
       "the file holds all settings of the store again");
}

}  // namespace monitor
