#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# What a linker sees of the built library: library.sh CHECK LIBRARY MAP-FILE|HEADER-FOLDER
set -eu
check=$1 library=$2 list=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

dynamic_symbols() { nm -D --defined-only "$library" | awk '$2 != "A" {sub(/@.*/, "", $3); print $3}' | sort; }
map_names() { sed -n '/global:/,/local:/s/^ *\([A-Za-z0-9_]*\);$/\1/p' "$list" | sort; }
# The name in front of the first parenthesis or bracket, or the last word of a plain variable.
header_names() {
  cat "$list"/*.h | tr '\n' ' ' | grep -o 'KESTROVE_API [^;]*;' |
    grep -v __attribute__ | sed 's/(.*//; s/\[.*//; s/;//; s/ *$//; s/.*[ *]//' | sort
}
needed() { readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'; }
segment() { readelf -lW "$library" | sed -n "/ *$1 /p"; }
dynamic() { readelf -dW "$library" | sed -n "/$1/p"; }

fail() {
  echo "$library: $*"
  exit 1
}

same() {
  diff "$work/expected" "$work/actual" >"$work/diff" && return
  sed -n 's/^</missing:/p; s/^>/too many:/p' "$work/diff"
  exit 1
}

case $check in
  exports)
    map_names >"$work/expected"
    dynamic_symbols >"$work/actual"
    same
    ;;
  headers)
    header_names >"$work/expected"
    dynamic_symbols >"$work/actual"
    same
    ;;
  defined) # nothing exported is a weak stand-in
    nm -D --defined-only "$library" | awk '$2 ~ /[WV]/ {print "weak:", $3; bad = 1} END {exit bad}'
    ;;
  needed)
    for name in $(needed); do
      case $name in
        libc.so.6 | libcrypt.so.1 | ld-linux*.so.2) ;;
        *) fail "needs $name at run time" ;;
      esac
    done
    case " $(needed | tr '\n' ' ')" in
      *' libc.so.6 '*) ;;
      *) fail "does not name the C library" ;;
    esac
    ;;
  stack)
    case $(segment GNU_STACK) in
      *RWE*) fail "executable stack" ;;
      *'RW '*) ;;
      *) fail "no GNU_STACK header" ;;
    esac
    ;;
  relro)
    [ "$(segment GNU_RELRO)" ] || fail "no RELRO segment"
    [ "$(dynamic NOW)" ] || fail "lazy binding"
    [ -z "$(dynamic TEXTREL)" ] || fail "text relocations"
    ;;
  soname)
    [ "$(dynamic 'SONAME.*\[libkestrove.so.1\]')" ] || fail "other soname"
    ;;
  *) fail "no such check: $check" ;;
esac
