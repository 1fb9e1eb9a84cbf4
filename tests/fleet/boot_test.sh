#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Two appliances at one bridge, each by itself: run by scripts/fleet, which gives $FLEET.
set -euo pipefail
fail() { echo "FAILED: $*" >&2; exit 1; }
on() { ssh -F "$FLEET/ssh_config" "appliance-$1" "$2"; }
equal() { [ "$1" = "$2" ] || fail "expected <$1>, found <$2>"; }
rate() { on "$1" "kestrovectl --json show wanLinkRate" | grep '"value"' | tr -cd 0-9; }

for number in 01 02; do
  [[ $(on $number "kestrovectl show sysName") == *"appliance-$number"* ]] || fail "appliance-$number has another's name"
  ping -c 1 -W 10 "192.168.30.1$number" >/dev/null || fail "the management port of appliance-$number is not in the bridge"
  ! on $number "python3 -V" 2>/dev/null || fail "appliance-$number has a Python"
done
on 01 "kestrovectl set wanLinkRate 4096000"
equal 4096000 "$(rate 01)"
equal 2048000 "$(rate 02)"
equal "fleet lo mgmt1 mgmt2" "$(ip -o link | awk -F"[:@] *" "{print \$2}" | sort | xargs)"
