# SPDX-License-Identifier: Apache-2.0
# The one entry. Every target sets up what it needs, except install, which only says what is missing.
.DEFAULT_GOAL := help
.PHONY: help demo doc test test-sanitized test-all test-install abi explore bench fuzz shell fleet format format-check lint clang setup install

SECONDS ?= 60
PREFIX ?= /usr/local
OF ?= release
TIDY ?=
LINT ?= src tools
SOURCES = find . -name build -prune -o \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) -print0

help: ## what can be made
	@awk -F ':.*## ' '/^[a-z0-9-]+:.*## / {printf "make %-14s %s\n", $$1, $$2}' Makefile

demo: ## the appliance's story, told in a sandbox in seconds; the first time some minutes of building come before
	@scripts/setup build tools sandbox
	@[ -d /run/systemd/system ] || scripts/setup web snmp python # there Debian would start the machine's own agent
	@scripts/demo

.PHONY: appliance
appliance: ## an appliance with all its programs, for this machine's browser; CHECK=1 looks at each part and ends
	@[ ! -d /run/systemd/system ] || scripts/setup --check web snmp
	@scripts/setup build tools sandbox web snmp python
	@scripts/appliance $(if $(CHECK),--check)

test: ## every test, 64-bit, and 32-bit where its packages are or can be installed
	@scripts/setup build tools sandbox probes trace zsh test model manual doc python web snmp
	@if scripts/setup m32; then \
	  scripts/setup web32 || echo "test: no libmicrohttpd in 32-bit; kestrove-api in 64-bit only"; \
	  scripts/test dev m32; else echo "test: no 32-bit packages; 64-bit only"; scripts/test dev; fi

test-sanitized: ## every test under ASan and UBSan; in 32-bit the tests of the library
	@scripts/setup build tools sandbox test m32 python
	@scripts/test asan m32-asan

test-all: test test-sanitized ## the two together

.PHONY: test-snmp
test-snmp: ## the SNMP subagent with limits of time, behind an agent that is killed 100 times; the rest is in make test
	@scripts/setup build tools sandbox test snmp
	@scripts/build dev snmp_test
	@KESTROVE_MASTER_KILLS=100 ctest --test-dir build/dev -R '^SnmpReadTest.(AMaster|FullTables)' --no-tests=error --verbose

.PHONY: test-monitor
test-monitor: ## the engine killed 1000 times under the monitor: up again within 2 s each; the rest is in make test
	@scripts/setup build tools sandbox test
	@scripts/build dev monitor_test
	@KESTROVE_MONITOR_KILLS=1000 build/dev/sandbox/kestrove-sandbox --real --no-ports -- \
	  build/dev/tests/monitor/monitor_test --gtest_filter=EngineWatchTest.IsUpAgainAfterEachKillAndNeverTwice

.PHONY: test-web
test-web: ## the page in Chromium and Firefox, at two widths, on sandbox appliances; pictures in build/web
	@scripts/setup build tools sandbox web browser
	@scripts/build dev kestrove-api kestrovectl kestrove-sandbox shm-init
	@scripts/test-web

.PHONY: test-web-quick
test-web-quick: ## each of its scenarios once, dealt out over both browsers and widths; TURN=1 to 3 deals otherwise
	@scripts/setup build tools sandbox web browser
	@scripts/build dev kestrove-api kestrovectl kestrove-sandbox shm-init
	@scripts/test-web --deal $(or $(TURN),0)

test-install: ## an installation, and front ends built against it: C, C++ and Python, by pkg-config, CMake and Meson
	@scripts/setup build tools sandbox frontend consumers manual
	@scripts/test-install $(OF)

abi: ## the interface of both widths against the record in abi/
	@scripts/setup build m32 abi
	@scripts/abi

.PHONY: deb test-packages
deb: ## Debian packages for amd64 and i386 in build/deb, looked through by lintian; again=--again compares a second build
	@scripts/setup build tools manual m32 doc probes deb debcheck
	@scripts/deb $(again)

test-packages: deb ## the packages installed, used, upgraded and purged in a root made from scratch; as root, with the registry
	@scripts/setup roots sandbox
	@scripts/test-packages

.PHONY: test-packages-quick
test-packages-quick: ## the same with packages of this width alone, made of the release (or OF=PRESET) while the root is
	@scripts/setup build tools manual doc probes deb roots sandbox
	@scripts/test-packages --of $(OF)

doc: ## the documents and manual pages as one tree of HTML, in build/dev/doc/html
	@scripts/setup build tools doc
	@scripts/build dev doc
	@echo "Open build/dev/doc/html/index.html."

explore: ## every order of the operations of two and three processes; a share of it is in make test
	@scripts/setup build tools sandbox test model
	@scripts/setup m32 || echo "explore: no 32-bit packages; all processes are 64-bit"
	@scripts/explore

bench: ## speed beside its floors in both widths; regenerates doc/benchmarks.md, fails on a missed aim
	@scripts/setup build tools sandbox bench m32 bench32 frontend
	@scripts/bench
	@scripts/bench-python

.PHONY: bench-web
bench-web: ## kestrove-api on the release build: requests a second, waits behind others, memory; fails on a missed aim
	@scripts/setup build tools sandbox web
	@scripts/bench-web

fuzz: ## each libFuzzer target for SECONDS=60
	@scripts/setup build tools sandbox fuzz
	@scripts/fuzz $(SECONDS)

shell: ## a shell on a throw-away appliance
	@scripts/setup build tools sandbox
	@scripts/shell

# Where systemd runs, Debian would start the machine's own sshd with the package: there it is only named.
fleet: ## a roll-out over 20 sandbox appliances by Ansible, played as root
	@[ ! -d /run/systemd/system ] || scripts/setup --check fleet
	@scripts/setup build tools sandbox fleet
	@scripts/fleet 20 ansible/play/story

format: ## formats every source with clang-format
	@scripts/setup format
	@$(SOURCES) | xargs -0 clang-format -i

format-check: ## fails when a source is not formatted
	@scripts/setup format
	@$(SOURCES) | xargs -0 clang-format --dry-run -Werror

lint: ## runs clang-tidy over the library and the programs; its messages are errors
	@scripts/setup build tools web snmp lint
	@cmake --preset dev -B build/lint -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null # another compiler's are no use
	@find $(LINT) -name '*.cpp' -print0 | xargs -0 -P "$$(nproc)" -n 4 scripts/tidy build/lint $(TIDY)

clang: ## builds the library and the programs with clang, the library in 32-bit, too, where the packages are there
	@scripts/setup build tools clang
	@scripts/build clang
	@if scripts/setup --check m32 2>/dev/null; then scripts/build m32-clang kestrove; fi

setup: ## installs the Debian packages that a build needs
	@scripts/setup build tools

install: ## builds the release (or OF=PRESET) and installs it (PREFIX=/usr/local, DESTDIR); installs no packages
	@DESTDIR="$(DESTDIR)" scripts/install "$(PREFIX)" $(OF)
