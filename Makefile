# The one entry. Every target sets up what it needs.
.DEFAULT_GOAL := help
.PHONY: help demo test test-all bench fuzz shell format lint install

SECONDS ?= 60

help: ## what can be made
	@awk -F ':.*## ' '/^[a-z0-9-]+:.*## / {printf "make %-10s %s\n", $$1, $$2}' Makefile

demo: ## the appliance's story, told in a sandbox in under a minute
	@scripts/setup build tools sandbox
	@scripts/setup m32 || echo "demo: no 32-bit packages; the 32-bit scenes are left out"
	@scripts/demo

test: ## every test, 64-bit, and 32-bit where its packages are or can be installed
	@scripts/setup build tools sandbox test
	@if scripts/setup m32; then scripts/test dev m32; else echo "test: no 32-bit packages; 64-bit only"; scripts/test dev; fi

test-all: ## every test in both widths, plain and under ASan and UBSan
	@scripts/setup build tools sandbox test m32
	@scripts/test dev m32 asan m32-asan

bench: ## speed beside its floors; regenerates doc/benchmarks.md
	@scripts/setup build tools sandbox bench
	@scripts/bench

fuzz: ## each libFuzzer target for SECONDS=60
	@scripts/setup build tools sandbox fuzz
	@scripts/fuzz $(SECONDS)

shell: ## a shell on a throw-away appliance
	@scripts/setup build tools sandbox
	@cmake --preset dev >/dev/null && cmake --build build/dev --target kestrove-sandbox kestrovectl shm-init -- --quiet
	@PATH="$(CURDIR)/build/dev/tools:$$PATH" build/dev/sandbox/kestrove-sandbox --real --ports -- $${SHELL:-/bin/bash}

format: ## formats every source with clang-format
	@scripts/setup format
	@git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

lint: ## runs clang-tidy over the library and the programs
	@scripts/setup build tools format
	@cmake --preset dev >/dev/null
	@git ls-files 'sys/*.cpp' 'store/*.cpp' 'config/*.cpp' 'events/*.cpp' 'users/*.cpp' 'stats/*.cpp' 'state/*.cpp' \
	  'net/*.cpp' 'tools/*.cpp' | xargs -P "$$(nproc)" -n 4 clang-tidy --quiet -p build/dev 2>/dev/null

install: ## builds the release and installs it (PREFIX, DESTDIR)
	@scripts/setup build tools
	@cmake --preset release $(if $(PREFIX),-DCMAKE_INSTALL_PREFIX=$(PREFIX)) >/dev/null
	@cmake --build build/release -- --quiet
	@cmake --install build/release
