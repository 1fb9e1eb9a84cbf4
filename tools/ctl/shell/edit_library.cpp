// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/edit_library.h"

#include <dlfcn.h>

namespace ctl {

#ifdef KESTROVE_EDITS_LINES
namespace {

template <typename Function>
bool find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

bool findAll(void* library, EditLibrary& found) {
  return find(library, "el_init", found.init) && find(library, "el_end", found.end) &&
         find(library, "el_set", found.set) && find(library, "el_get", found.get) &&
         find(library, "el_gets", found.gets) && find(library, "el_line", found.line) &&
         find(library, "el_resize", found.resize) && find(library, "el_insertstr", found.insert) &&
         find(library, "el_deletestr", found.erase) && find(library, "history_init", found.historyInit) &&
         find(library, "history_end", found.historyEnd) && find(library, "history", found.history);
}

}  // namespace

const EditLibrary* editLibrary() {
  static EditLibrary found;
  static const bool there = [] {
    void* library = dlopen("libedit.so.2", RTLD_NOW);
    return library && findAll(library, found);
  }();
  return there ? &found : nullptr;
}
#endif

}  // namespace ctl
