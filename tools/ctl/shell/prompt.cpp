// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/prompt.h"

#include "kestrove/codes.h"
#include "tools/ctl/history/pending.h"
#include "tools/ctl/shell/editor.h"
#include "tools/ctl/shell/glance.h"
#include "tools/ctl/shell/unsaved.h"

namespace ctl {
namespace {

std::string modeOf(uint32_t state) {
  return state == SHM_STATE_CONFIGURATION ? "config" : state == SHM_STATE_DEBUG ? "debug" : "";
}

// ESC [ NUMBER m, in which no column is taken.
std::string colour(const char* number) { return std::string(1, kUnseen) + "\x1b[" + number + "m" + kUnseen; }

std::string marked(const std::string& text, const char* number, bool colours) {
  return colours && !text.empty() ? colour(number) + text + colour("0") : text;
}

}  // namespace

UnitState unitState(KnownUnsaved& known) {
  const ShmData* store = glance();
  if (!store) return {.name = "no store"};
  const std::string mark = settingsMark(*store);
  if (mark != known.mark) known = {mark, unsavedChanges()};
  return {.name = unitName(*store),
          .mode = modeOf(store->operationalState),
          .unsaved = known.unsaved,
          .unconfirmed = pendingConfirmation().has_value()};
}

std::string promptText(const UnitState& state, bool readsOnly, bool colours) {
  std::string text = marked(state.name, "1", colours);
  if (!state.mode.empty()) text += marked("[" + state.mode + "]", "33", colours);
  text += marked(state.unsaved ? "*" : "", "31", colours);
  text += marked(state.unconfirmed ? "!" : "", "31", colours);
  return text + (readsOnly ? "$ " : "> ");
}

}  // namespace ctl
