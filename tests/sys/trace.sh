#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The scripts for bpftrace: trace.sh LIBRARY SCRIPTS SANDBOX KESTROVECTL. Each is read, and refused with a mistake planted in it; where
# the kernel lets this user trace, they watch a change that kestrovectl makes in the sandbox. Ends with 77, and says so, where
# bpftrace runs for root alone.
set -euo pipefail
library=$1 scripts=$2 sandbox=$3 kestrovectl=$4
[ "$(id -u)" = 0 ] || { echo "trace: bpftrace runs for root alone; nothing was tried"; exit 77; }
if [ ! "${TRACE_INSIDE:-}" ]; then
  exec env TRACE_INSIDE=yes unshare --mount "$0" "$@"
fi
# A look of its own at what the kernel has to trace, where the machine has none.
events=/sys/kernel/tracing
[ -e $events/events ] || mount -t tracefs tracefs $events || events=
work=$(mktemp -d)
tracers=()
trap 'for tracer in "${tracers[@]}"; do kill -KILL "$tracer"; wait "$tracer" || true; done 2>/dev/null; rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $*"
  exit 1
}

for script in "$scripts"/*.bt; do
  sed "s|/usr/lib/\*/libkestrove.so.1|$library|" "$script" >"$work/${script##*/}"
  # A kernel without that list cannot look its names up.
  [ "$events" ] || sed -i 's/^tracepoint:sched:sched_process_exit/interval:hz:1/' "$work/${script##*/}"
done
reads() { timeout 60 bpftrace -d "$1" >"$work/said" 2>&1; }
for script in "$work"/*.bt; do
  reads "$script" || fail "$script: $(grep -a ERROR "$work/said")"
  sed 's/nsecs/nseconds/' "$script" >"$work/planted"
  ! reads "$work/planted" || fail "a mistake in $script is not found"
done

# Whether anything at all can be traced here.
timeout 60 bpftrace -e 'BEGIN { exit(); }' >"$work/said" 2>&1 || {
  echo "The scripts are read; this kernel lets nobody trace: $(tail -n 1 "$work/said")"
  exit 0
}

# Output is written at once, and in the end; what bpftrace says when it is attached comes first.
for name in commands lock-holders slow-saves; do
  sed -i 's/> 50000000/> 0/; s/> 100 />= 0 /' "$work/$name.bt" # every hold and every save
  bpftrace -B line "$work/$name.bt" >"$work/$name" 2>&1 &
  tracers+=($!)
done
attached() { grep -l '^Attaching' "$work/commands" "$work/lock-holders" "$work/slow-saves" 2>/dev/null | wc -l; }
says() { # FILE PATTERN
  grep -qaE "$2" "$work/$1"
}
saw_all() {
  says commands ' ms, status 0: .' && says lock-holders 'kestrovectl \([0-9]+\) held the store' &&
    says slow-saves 'kestrovectl \([0-9]+\) saved /etc/config/kestrove.conf in [0-9]+ ms, result 0'
}
for _ in $(seq 1200); do [ "$(attached)" = 3 ] && break; sleep 0.1; done
[ "$(attached)" = 3 ] || fail "not attached: $(cat "$work/commands")"
# Attached is said before it is done: changes are made until they are seen.
"$sandbox" --no-ports -- sh -euc 'cp /usr/share/kestrove/examples/* /etc/config; shm-init
  for rate in $(seq 2000000 2000999); do "$1" set wanLinkRate $rate; done' - "$kestrovectl" >"$work/changes" 2>&1 &
changes=$!
for _ in $(seq 1200); do saw_all && break; sleep 0.1; done
kill -TERM $changes 2>/dev/null || true
saw_all || fail "$(tail -n 3 "$work/changes" "$work/commands" "$work/lock-holders" "$work/slow-saves")"
echo "The scripts are read, and see locks, saves and programs."
