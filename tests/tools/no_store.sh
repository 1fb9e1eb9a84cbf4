#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What the programs say where there is no store that they can use: no_store.sh FOLDER. One sentence for each cause, and nothing is
# changed.
set -euo pipefail
[ -e /run/kestrove/inside ] || { echo "no_store: only inside the sandbox" >&2; exit 1; }
folder=$1
foreign="the segment under the store's key is no store"

# says STATUS SENTENCE PROGRAM [WORD...], run by the command in as.
as=()
says() {
  local status=$1 sentence=$2 got=0 said
  shift 2
  said=$("${as[@]}" "$folder/$@" 2>&1) || got=$?
  [ "$got $said" = "$status $1: $sentence" ] || { echo "FAILED: $* ends with $got: $said" && exit 1; }
}

everyFrontEnd() { # STATUS SENTENCE
  for words in show "set wanLinkRate 3072000" "rule list" save; do
    # shellcheck disable=SC2086 # words
    says "$1" "$2" kestrovectl $words
  done
  says 3 "${3:-$2}" kestrove-sim --changes 1
}

everyFrontEnd 3 "there is no store (shm-init builds it)"
perl -e 'defined shmget(6001, 4096, 01666) or die "no segment: $!\n"'
before=$(ipcs -m)
everyFrontEnd 3 "$foreign"
says 1 "there is a store already (--replace builds a new one)" shm-init
[ "$before" = "$(ipcs -m)" ]
ipcrm -M 6001

cp /usr/share/kestrove/examples/* /etc/config
"$folder/shm-init"
before=$(sha1sum /etc/config/kestrove.conf)
# Nobody has the lock, then the lock alone.
as=(setpriv --reuid 65534 --regid 65534 --clear-groups)
chmod 600 /var/lock/shm
everyFrontEnd 7 "not permitted: /var/lock/shm: Permission denied" "System error: Permission denied"
says 7 "not permitted: /var/lock/shm: Permission denied" shm-init --replace
chmod 666 /var/lock/shm
# IPC_STAT and IPC_SET; the mode stands behind a key and four numbers.
perl -e '$id = shmget(6001, 0, 0); $facts = ""; shmctl($id, 2, $facts) or die "$!\n";
  substr($facts, 20, 2) = pack("S", 0600); shmctl($id, 1, $facts) or die "$!\n"'
everyFrontEnd 7 "not permitted: the store: Permission denied" "the store: Permission denied"
[ "$before" = "$(sha1sum /etc/config/kestrove.conf)" ]
