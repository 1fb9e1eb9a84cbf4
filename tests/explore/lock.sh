#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Checks the model of the lock: lock.sh MODEL holds|refuted [-DNAME...]
set -eu
model=$1 expected=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

spin "$@" -a "$model"
gcc -O2 -w -DSAFETY -o pan pan.c
./pan -m100000 >result
cat result

# A search that was cut short does not count.
if [ "$expected" = refuted ]; then
  grep -q 'assertion violated' result
else
  grep -q 'errors: 0$' result
  if grep -qE 'Search not completed|search depth too small' result; then exit 1; fi
fi
