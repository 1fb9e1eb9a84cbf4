#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The project's scripts, with stand-ins for what they call: scripts_test.sh SOURCE CASE
set -u
source=$1
case=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

equal() { [ "$1" = "$2" ] || fail "expected <$1>, found <$2>"; }

# A reader that goes away before its writer has ended breaks the pipe, and with pipefail the script. To /dev/null, grep
# reads no further than to its first match.
ends_early='[^|]\| *(head|grep( [^|]*)? -[A-Za-z]*[qm]|grep [^|]*> ?/dev/null|sed [^|]*[0-9/;{]q([^A-Za-z0-9_]|$))'

NoPipelineEndsEarly() {
  found=$(grep -rnE "$ends_early" "$source"/{Makefile,.ci,scripts,sandbox/image,tests} | grep -v tests/scripts/scripts_test.sh)
  equal "" "$found"
}

EarlyEndsAreSeen() {
  while IFS= read -r line; do
    [[ $(grep -E "$ends_early" <<< "$line") ]] || fail "not seen: $line"
  done <<- 'END'
		ip route show | grep -q '^172' || broken
		readelf -dW "$library" |grep -x -q NOW
		ls | head -n 1
		ls | grep x >/dev/null
		dmesg | sed 5q
	END
  equal "" "$(grep -E "$ends_early" <<< 'a || grep -q b file; tail -n 1 file | grep b | sort')"
}

# Stand-ins for the package tools: what is called is noted, dpkg-query has the packages given.
with_packages() {
  mkdir "$scratch/bin"
  printf '#!/bin/sh\nfor last; do :; done\ncase " %s " in *" $last "*) echo installed ;; *) exit 1 ;; esac\n' "$*" \
    > "$scratch/bin/dpkg-query"
  printf '#!/bin/sh\n[ "$*" != --print-foreign-architectures ] || exit 0\necho "dpkg $*" >> %s/calls\n' "$scratch" \
    > "$scratch/bin/dpkg"
  printf '#!/bin/sh\necho "apt-get $*" >> %s/calls\n' "$scratch" > "$scratch/bin/apt-get"
  printf '#!/bin/sh\nexec "$@"\n' > "$scratch/bin/sudo"
  chmod +x "$scratch"/bin/*
  touch "$scratch/calls"
  PATH=$scratch/bin:$PATH
}

MissingPackagesAreNamedAndNotInstalled() {
  with_packages cmake g++
  text=$("$source/scripts/setup" --check build 2>&1) && fail "nothing was missing"
  [[ $text == *"apt-get install --no-install-recommends libcrypt-dev make ninja-build"* ]] || fail "$text"
  equal "" "$(cat "$scratch/calls")"
}

WhatIsThereNeedsNoInstallation() {
  with_packages cmake ninja-build g++ make libcrypt-dev
  equal "" "$("$source/scripts/setup" build)"
  equal "" "$(cat "$scratch/calls")"
}

ForeignArchitectureOnlyFor32Bits() {
  with_packages
  "$source/scripts/setup" build tools sandbox >/dev/null
  equal 0 "$(grep -c add-architecture "$scratch/calls")"
  equal 3 "$(grep -c ^apt-get "$scratch/calls")"
  "$source/scripts/setup" m32 >/dev/null
  equal 1 "$(grep -c add-architecture "$scratch/calls")"
}

ArchiveOutOfReachIsToldWithWhatIsMissing() {
  with_packages cmake g++
  printf '#!/bin/sh\ncase "$*" in *update*) exit 0 ;; esac\necho "E: Unable to fetch some archives" >&2\nexit 100\n' > "$scratch/bin/apt-get"
  text=$("$source/scripts/setup" build 2>&1) && fail "nothing was missing"
  for words in 'E: Unable to fetch' 'could not be downloaded' 'installed: libcrypt-dev make ninja-build'; do
    [[ $text == *"$words"* ]] || fail "no <$words> in $text"
  done
  [[ $text != *'Installing them'* ]] || fail "$text"
}

ProgressIsALineEachTenPercent() {
  text=$(for step in $(seq 200); do echo "[$step/200] Building"; done | "$source/scripts/progress")
  equal "10 % 20 % 30 % 40 % 50 % 60 % 70 % 80 % 90 % 100 %" "$(echo $text)"
  equal "50 %" "$(printf 'dlstatus:1:7.5:x\npmstatus:cmake:50.1:x\n' | "$source/scripts/progress" | xargs)"
}

ProgressPassesComplaintsOn() {
  equal "FAILED: a.o" "$(printf 'FAILED: a.o\nninja: no work to do.\n' | "$source/scripts/progress")"
}

until_said() { # WORDS FILE
  for _ in $(seq 600); do
    ! grep -q "$1" "$2" 2>/dev/null || return 0
    sleep 0.05
  done
  fail "never said: $1"
}

SecondBuildInAFolderWaitsForTheFirst() {
  mkdir -p "$scratch"/{bin,scripts}
  cp "$source"/scripts/{build,progress} "$scratch/scripts"
  cat > "$scratch/bin/cmake" <<- 'END'
		#!/bin/sh
		[ "$1" = --build ] || exit 0
		echo begun >> calls
		for _ in $(seq 600); do [ ! -e go ] || break; sleep 0.05; done
		echo ended >> calls
	END
  chmod +x "$scratch/bin/cmake"
  PATH=$scratch/bin:$PATH
  "$scratch/scripts/build" one & first=$!
  until_said begun "$scratch/calls"
  "$scratch/scripts/build" one > "$scratch/said" & second=$!
  until_said 'one is being built already' "$scratch/said"
  "$scratch/scripts/build" other & other=$!
  for _ in $(seq 600); do [ "$(grep -c begun "$scratch/calls")" != 2 ] || break; sleep 0.05; done
  equal "begun begun" "$(echo $(cat "$scratch/calls"))"
  touch "$scratch/go"
  wait "$first" && wait "$second" && wait "$other" || fail "a build failed"
  equal 3 "$(grep -c ended "$scratch/calls")"
}

# The story itself runs in the sandbox alone; here only its first lines.
StoryIsColouredOnlyOnATerminal() {
  sed '/^scene "1/,$d; /inside/d' "$source/scripts/story" > "$scratch/story"
  echo 'scene title' >> "$scratch/story"
  on_terminal() { script -qec "bash $scratch/story / /" /dev/null </dev/null | tr -d '\r\n'; }
  equal title "$(bash "$scratch/story" / / | tr -d '\n')"
  equal $'\033[1mtitle\033[0m' "$(NO_COLOR='' on_terminal)"
  equal title "$(NO_COLOR=1 on_terminal)"
}

EveryFileSaysItsLicence() { "$source/scripts/spdx" || fail "some do not"; }

FilesWithoutALicenceAreFoundAndGivenOne() {
  mkdir -p "$scratch/src" "$scratch/scripts"
  printf '// What it holds.\nint x;\n' > "$scratch/src/a.cpp"
  printf '#!/bin/sh\necho done\n' > "$scratch/scripts/b" && chmod 755 "$scratch/scripts/b"
  "$source/scripts/spdx" "$scratch" 2> "$scratch/found" && fail "nothing was found"
  equal 2 "$(grep -c 'does not say its licence' "$scratch/found")"
  "$source/scripts/spdx" --add "$scratch"
  "$source/scripts/spdx" --add "$scratch"
  equal $'// SPDX-License-Identifier: Apache-2.0\n// What it holds.\nint x;' "$(cat "$scratch/src/a.cpp")"
  equal $'#!/bin/sh\n# SPDX-License-Identifier: Apache-2.0\necho done' "$(cat "$scratch/scripts/b")"
  equal 755 "$(stat -c %a "$scratch/scripts/b")"
  "$source/scripts/spdx" "$scratch" || fail "something is missing still"
}

# A name that is exported and not in the list stops the build of the packages, long after it was merged.
PackagesNameEveryExport() {
  exported=$(sed -n 's/^    \([A-Za-z_0-9]*\);.*/\1/p' "$source/cmake/kestrove.map" | LC_ALL=C sort)
  listed=$(sed -n 's/^ \([A-Za-z_0-9]*\)@KESTROVE_1 .*/\1/p' "$source/debian/libkestrove1.symbols" | sed '/^KESTROVE_1$/d')
  [ "$(wc -l <<< "$exported")" -gt 250 ] || fail "next to nothing is exported"
  equal "" "$(diff <(echo "$exported") <(LC_ALL=C sort <<< "$listed"))"
}

# What each place says of the version in the making, below SOURCE; a package of it is 1.2.3~1 until it is released.
versions() {
  sed -n 's/^project(kestrove VERSION \([0-9.]*\) .*/CMake \1/p' "$1/CMakeLists.txt"
  sed -n 's/^#define KESTROVE_HEADER_VERSION "\(.*\)"$/header \1/p' "$1/include/kestrove/library.h"
  sed -n 's/^VERSION = "\(.*\)"$/Python \1/p' "$1/python/kestrove/_abi.py"
  sed -n '1s/^libkestrove (\([0-9.]*\)[~)].*/packages \1/p' "$1/debian/changelog"
  sed -n 's/^## \([0-9.]*\).*/changelog \1/p; T; q' "$1/CHANGELOG.md"
}

oneVersion() {
  found=$(versions "$1")
  equal 'CMake header Python packages changelog' "$(echo $(cut -d ' ' -f 1 <<< "$found"))"
  [ "$(cut -d ' ' -f 2 <<< "$found" | sort -u | wc -l)" = 1 ] || fail "versions differ:"$'\n'"$found"
}

EveryPlaceSaysTheSameVersion() { oneVersion "$source"; }

APlaceLeftBehindIsFound() {
  for place in CMakeLists.txt include/kestrove/library.h python/kestrove/_abi.py debian/changelog CHANGELOG.md; do
    rm -rf "$scratch/copy"
    for file in CMakeLists.txt include/kestrove/library.h python/kestrove/_abi.py debian/changelog CHANGELOG.md; do
      mkdir -p "$(dirname "$scratch/copy/$file")"
      cp "$source/$file" "$scratch/copy/$file"
    done
    (oneVersion "$scratch/copy") || fail "the copy itself differs"
    sed -Ei '/VERSION|^libkestrove|^## /s/[0-9]+\.[0-9]+\.[0-9]+/7.8.9/' "$scratch/copy/$place"
    (oneVersion "$scratch/copy" 2> "$scratch/said") && fail "$place may say 7.8.9"
    [[ $(cat "$scratch/said") == *7.8.9* ]] || fail "$(cat "$scratch/said")"
  done
}

# The trial of packages in a folder of its own, as user USER, with a registry at PLACE and with unshare, by which a root is
# made, as lines of a script.
try_packages() { # USER PLACE LINES
  mkdir -p "$scratch"/{bin,scripts,debian}
  cp "$source/scripts/test-packages" "$scratch/scripts"
  cp "$source/debian/control" "$scratch/debian"
  printf '#!/bin/sh\necho "%s"\n' "$1" > "$scratch/bin/id"
  printf '#!/bin/sh\necho "%s"\n' "$2" > "$scratch/bin/apt-get"
  printf '#!/bin/sh\ncase $* in *mmdebstrap*) made=yes ;; esac\n%s\n' "$3" > "$scratch/bin/unshare"
  printf '#!/bin/sh\n' > "$scratch/scripts/deb"
  chmod +x "$scratch"/bin/* "$scratch/scripts/deb"
  (PATH=$scratch/bin:$PATH && "$scratch/scripts/test-packages" --of dev 2>&1; echo "ends with $?")
}
untried() { # REASON
  printf 'test-packages: %s; nothing was tried\nends with 77' "$1"
}

PackagesSayWhyNothingIsTried() {
  begun='Making a root from scratch; that takes a minute or more, once.'
  equal "$(untried 'only root can make a root')" "$(try_packages 1000 somewhere true)"
  equal "$(untried 'this machine lets nobody make a root')" "$(try_packages 0 somewhere 'exit 1')"
  equal "$(untried 'this machine knows no package registry of Debian 12')" "$(try_packages 0 '' true)"
  equal "$begun"$'\n'"$(untried 'the package registry cannot be reached')" \
    "$(try_packages 0 somewhere '[ ! "$made" ] || { echo "E: Failed to fetch it"; exit 25; }')"
}

ARootThatBreaksIsAFailure() {
  equal $'Making a root from scratch; that takes a minute or more, once.\nbroken\nends with 1' \
    "$(try_packages 0 somewhere '[ ! "$made" ] || { echo broken; exit 25; }')"
}

# The trial of the units in a root of this machine, whose systemd-nspawn is a script of that line, or is missing.
try_units() { # LINE
  mkdir -p "$scratch"/{bin,root/packages}
  touch "$scratch/root/packages/throw-away-root"
  ln -sf "$(command -v timeout)" "$scratch/bin"
  [ ! "$1" ] || { printf '#!/bin/sh\n%s\n' "$1" > "$scratch/bin/systemd-nspawn" && chmod +x "$scratch/bin/systemd-nspawn"; }
  (PATH=$scratch/bin && "$source/tests/packages/booted" "$scratch/root" 2>&1; echo "ends with $?")
}

UnitsThatCannotBeBootedAreTriedInTheSandboxAlone() {
  said=$'The units were tried in the sandbox alone: systemd-nspawn cannot boot a system here.\nends with 0'
  equal "$said" "$(try_units '')"
  equal "$said" "$(try_units 'echo "no cgroups here"; exit 1')"
}

OnlyAThrowAwayRootIsTouched() {
  mkdir "$scratch/root"
  equal $'booted: only in a root made from scratch\nends with 1' \
    "$("$source/tests/packages/booted" "$scratch/root" 2>&1; echo "ends with $?")"
  equal $'in_root: only in a root made from scratch\nends with 1' \
    "$("$source/tests/packages/in_root" "$scratch/root" 2>&1; echo "ends with $?")"
}

"$case" || fail "$case"
