// SPDX-License-Identifier: Apache-2.0
// libedit, loaded when a person types: linked, its four libraries would take half of the time that a command takes to
// start. Without it the shell reads plain lines.
#pragma once

#if __has_include(<histedit.h>)
#include <histedit.h>
#define KESTROVE_EDITS_LINES 1
#endif

namespace ctl {

#ifdef KESTROVE_EDITS_LINES
struct EditLibrary {
  decltype(&::el_init) init = nullptr;
  decltype(&::el_end) end = nullptr;
  decltype(&::el_set) set = nullptr;
  decltype(&::el_get) get = nullptr;
  decltype(&::el_gets) gets = nullptr;
  decltype(&::el_line) line = nullptr;
  decltype(&::el_resize) resize = nullptr;
  decltype(&::el_insertstr) insert = nullptr;
  decltype(&::el_deletestr) erase = nullptr;
  decltype(&::history_init) historyInit = nullptr;
  decltype(&::history_end) historyEnd = nullptr;
  decltype(&::history) history = nullptr;
};

// Null where it is missing.
const EditLibrary* editLibrary();
#endif

}  // namespace ctl
