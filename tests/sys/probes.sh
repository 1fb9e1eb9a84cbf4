#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The places where a tracer may look in, as the library's notes tell them: probes.sh LIBRARY BITS DOC. The same in both
# widths: an int is an int, and a text an address. The scripts and the table in the documents name each of them.
set -euo pipefail
library=$1 address=$(($2 / 8))
expected="command_begin text
command_end int
engine_notified int
lock_granted
lock_released
lock_wait
save_begin text
save_end int"
found=$(readelf -nW "$library" | sed -n '/stapsdt/,$p' |
  awk -v address="$address" '
    /Provider:/ { provider = $NF }
    $1 == "Name:" { name = $2 }
    $1 == "Arguments:" {
      line = name
      for (i = 2; i <= NF; ++i) {
        split($i, part, "@")
        line = line (part[1] == address ? " text" : part[1] == -4 ? " int" : " " $i)
      }
      if (provider == "kestrove") print line  # the runtime of C++ has some of its own
    }' | sort -u)
[ "$found" = "$expected" ] || { diff <(echo "$expected") <(echo "$found"); exit 1; }

names=$(cut -d ' ' -f 1 <<<"$expected")
traced=$(grep -ho 'kestrove:[a-z_]*' "$3"/trace/*.bt | sed 's/.*://' | sort -u)
told=$(sed -n 's/^| `\([a-z_]*\)` .*/\1/p' "$3/locking.md" | sort -u)
[ "$traced" = "$names" ] || { echo "the scripts trace other probes: $traced" && exit 1; }
for name in $names; do
  [[ $'\n'$told$'\n' == *$'\n'"$name"$'\n'* ]] || { echo "locking.md does not tell of $name" && exit 1; }
done
