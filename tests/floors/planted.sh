#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# floors.py finds what it is there for: an include and a call that go upward, each in a tree of two files.
set -euo pipefail
compiler=$1 here=$(dirname "$0")
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/src/{store,items,net/routes}
printf '    above;\n' >"$tree/exports"

offences() {
  local file
  for file in store/low items/high net/routes/route; do
    "$compiler" -x c -I"$tree/src" -c "$tree/src/$file.cpp" -o "$tree/src/$file.cpp.o"
  done
  "$here/floors.py" "$tree/src" "$tree/exports" "$tree"/src/*/*.o "$tree"/src/*/*/*.o
}
# Sound: upper floors call lower ones, and one another through exported functions.
sound() {
  echo 'int low(void) { return 0; }' >"$tree/src/store/low.cpp"
  echo 'int low(void); int above(void) { return low(); } int hidden(void) { return 0; }' >"$tree/src/items/high.cpp"
  echo 'int above(void); int route(void) { return above(); }' >"$tree/src/net/routes/route.cpp"
  : >"$tree/src/items/high.h"
}
# The line that must be printed; and the run must fail.
found() { if offences >"$tree/out"; then cat "$tree/out"; exit 1; fi; grep -F -e "$1" "$tree/out"; }

sound
offences
echo '#include "items/high.h"' >>"$tree/src/store/low.cpp"
found 'src/store/low.cpp:2: #include "items/high.h"'
sound
echo '#include "items/high.h"' >>"$tree/src/net/routes/route.cpp"
found 'src/net/routes/route.cpp:2: #include "items/high.h"'
sound
echo 'int above(void); int low(void) { return above(); }' >"$tree/src/store/low.cpp"
found 'src/store/low.cpp calls above'
sound
echo 'int hidden(void); int route(void) { return hidden(); }' >"$tree/src/net/routes/route.cpp"
found 'src/net/routes/route.cpp calls hidden'
