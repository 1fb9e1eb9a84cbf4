#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What is made of the binary interface is made of it as it is now: binding_test.sh SOURCE
set -euo pipefail
fresh=$(mktemp -d)
trap 'rm -r "$fresh"' EXIT
/usr/bin/python3 "$1/scripts/python-binding" "$fresh"
[ "$(ls "$fresh" | wc -l)" = 5 ] || { echo "FAILED: $(ls "$fresh")" >&2; exit 1; }
for file in "$fresh"/*; do
  diff -u "$1/python/kestrove/$(basename "$file")" "$file" || { echo "FAILED: run scripts/python-binding" >&2; exit 1; }
done
