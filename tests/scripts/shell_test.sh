#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What stands in the greeting of make shell works: shell_test.sh SOURCE, inside the sandbox.
set -euo pipefail
source=$1

# The commands of the greeting, without what they are said to do; the stand-in for the engine runs on.
commands=$(SHELL=/bin/true "$source/scripts/shell" | sed -nE 's/^  ([^ ].*[^ ])   +[^ ].*/\1/p')
ipcrm -M 6001
[[ $commands == *"kestrovectl status"*"ip netns exec lan"* ]] || { echo "FAILED: no commands in the greeting" >&2; exit 1; }
# A sanitizer cannot look for leaks in what explain traces.
export ASAN_OPTIONS=detect_leaks=0
{ echo 'set -eu'; echo "$commands"; echo 'kill %1; echo "all of it works"'; } > /tmp/commands
SHELL=/bin/bash "$source/scripts/shell" < /tmp/commands > /tmp/output 2>&1 || { cat /tmp/output; exit 1; }
grep -x "all of it works" /tmp/output
