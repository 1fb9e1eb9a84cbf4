#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The programs with a library that is not theirs: other_library.sh VERSION LIBRARY OTHER PROGRAM... OTHER is a library of the other
# width, or "none". Each says so in one sentence, ends with 3 (127 where the machine's loader finds it out), and touches
# nothing.
set -euo pipefail
[ -e /run/kestrove/inside ] || { echo "other_library: only inside the sandbox" >&2; exit 1; }
version=$1 library=$2 other=$3
shift 3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
layout=58a2cb6260745e64
said_version="\\x00${version//./\\.}\\x00"

fail() {
  echo "FAILED: $*"
  exit 1
}

# A library in whose image the bytes of a pattern are others, at least once.
with() { # PATTERN BYTES
  PATTERN=$1 BYTES=$2 perl -0777 -pe '$found = s/$ENV{PATTERN}/eval "qq($ENV{BYTES})"/ge; END { $found or die "not found\n" }' \
    "$library" >"$folder/libkestrove.so.1"
}

says() { # STATUS SENTENCE, behind the name of each of the programs; a sentence may be a pattern
  local expected=$1 sentence=$2 program words status said
  for program in "${programs[@]}"; do
    for words in "" --version show; do
      status=0
      # shellcheck disable=SC2086 # none or one
      said=$(LD_LIBRARY_PATH=$folder "$program" $words 2>&1) || status=$?
      # shellcheck disable=SC2053
      [[ $status == "$expected" && $said == *${program##*/}$sentence && $said != *$'\n'* ]] ||
        fail "$program $words ends with $status: $said"
    done
  done
}

programs=("$@")
[ ${#programs[@]} -ge 4 ] || fail "only ${programs[*]}"
refused=" does not serve a program built for $version with layout $layout"
with "$said_version" '\x000.9.0\x00'
says 3 ": libkestrove 0.9.0 with layout $layout$refused: the major versions differ."
with "$said_version" '\x001.0.0\x00'
[ "$version" = 1.0.0 ] || says 3 ": libkestrove 1.0.0 with layout $layout$refused: the library is older than the headers."
# The lower half of the number, which stands in the code: programs of old headers, and a library whose store has moved on.
with '\x64\x5e\x74\x60' '\x04\x03\x02\x01'
says 3 ": libkestrove $version with layout 58a2cb6201020304$refused: the layouts of the store differ."
# A newer one of the same layout serves them.
with "$said_version" '\x001.7.0\x00'
for program in "${programs[@]}"; do
  [[ $(LD_LIBRARY_PATH=$folder "$program" --version) == *" 1.7.0, layout $layout" ]] || fail "$program"
  [[ $("$program" --version) == *" $version, layout $layout" ]] || fail "$program"
done
if [ "$other" != none ]; then
  # Copies, which do not look for the library where it was built.
  cp -L "$other" "$folder/libkestrove.so.1"
  mkdir "$folder/bin"
  cp "$@" "$folder/bin"
  BUILT=${library%/*} perl -0777 -pi -e 's/\0[^\0]*\Q$ENV{BUILT}\E[^\0]*(?=\0)/"\0" . "." x (length($&) - 1)/ge' "$folder"/bin/*
  programs=("$folder"/bin/*)
  says 127 ': error while loading shared libraries: *libkestrove.so.1*wrong ELF class: ELFCLASS*'
fi
[ -z "$(ipcs -m | grep 0x00001771)" ] || fail "a store is there"
