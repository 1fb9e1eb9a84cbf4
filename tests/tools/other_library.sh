#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The programs with a library that another system left behind: other_library.sh LIBRARY PROGRAM... Each says so in one sentence,
# ends with 3, and touches nothing.
set -euo pipefail
[ -e /run/kestrove/inside ] || { echo "other_library: only inside the sandbox" >&2; exit 1; }
library=$1
shift
old=$(mktemp -d)
trap 'rm -rf "$old"' EXIT
perl -0777 -pe '$found = s/\x001\.1\.0\x00/\x000.9.0\x00/g; END { $found == 1 or die "found $found versions\n" }' \
  "$library" >"$old/libkestrove.so.1"
sentence=': libkestrove 0.9.0 with layout 58a2cb6260745e64 does not serve a program built for 1.1.0 with layout '
sentence+='58a2cb6260745e64: the major versions differ.'
for program in "$@"; do
  for words in "" --version show; do
    status=0
    # shellcheck disable=SC2086 # none or one
    said=$(LD_LIBRARY_PATH=$old "$program" $words 2>&1) || status=$?
    [ "$status $said" = "3 ${program##*/}$sentence" ] || { echo "FAILED: $program $words ends with $status: $said" && exit 1; }
  done
  [[ $("$program" --version) == *' 1.1.0, layout 58a2cb6260745e64' ]]
done
[ -z "$(ipcs -m | grep 0x00001771)" ] || { echo "FAILED: a store is there" && exit 1; }
