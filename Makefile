# The commands of the project. `make` alone lists them.
#
# Settings: JOBS (parallel compilations), FUZZ_SECONDS (each target of `make fuzz`), WRITE_DOCS=1 (`make
# race` renews docs/performance.md), RACE_ROUNDS and RACE_SECONDS (benchmarks/race/race.py).
JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60
CHECK_FUZZ_SECONDS := 20

.DEFAULT_GOAL := help
.NOTPARALLEL:
.PHONY: help setup demo test check check-format check-layers check-words check-dev check-clang \
        check-network check-tidy check-fuzz bench race race-check \
        build-race fuzz coverage peers interop man format clean

help: ## List the targets
	@awk -F ':.*## ' '/^[a-z-]+:.*## / { printf "  make %-14s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)

setup: ## Install what is missing (Debian packages)
	@scripts/setup

demo: setup ## Build the program and show a host and an equipment talking
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target hexmire
	build/release/apps/hexmire/hexmire demo

test: setup ## Build with optimisation and run every test
	@cmake --preset release >/dev/null
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)

check: check-format check-layers check-words check-dev check-network check-clang check-tidy check-fuzz ## Everything that a change must pass
	@echo "check: format, layers, words, tests with GCC and Clang under ASan and UBSan, links on a bad network, tidy and short fuzzing passed"

check-format: ## Compare every C++ file with .clang-format
	@scripts/setup check
	@git ls-files -z '*.cpp' '*.h' | xargs -0 -r clang-format --dry-run --Werror

check-layers: ## Look for includes that point up the layers
	@scripts/check-layers

check-words: ## Look for words that mean nothing to a reader of this repository
	@scripts/check-words

check-dev: setup ## Run the tests under ASan and UBSan, built with GCC
	@cmake --preset dev >/dev/null
	cmake --build --preset dev -j $(JOBS)
	ctest --preset dev -j $(JOBS)

check-network: setup ## Run links over a bad network in real time (about a minute)
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev -j $(JOBS) --target network_peer
	python3 tests/network/run.py build/dev/tests/network_peer

check-clang: ## The same, built with Clang
	@scripts/setup check
	@cmake --preset dev-clang >/dev/null
	cmake --build --preset dev-clang -j $(JOBS)
	ctest --preset dev-clang -j $(JOBS)

check-tidy: ## Run clang-tidy over every source file but the tests themselves
	@scripts/setup check
	@cmake --preset dev-clang >/dev/null
	scripts/tidy build/dev-clang $(JOBS)

check-fuzz: ## Run every fuzz target for a short time
	@$(MAKE) --no-print-directory fuzz FUZZ_SECONDS=$(CHECK_FUZZ_SECONDS)

fuzz: ## Run every fuzz target for FUZZ_SECONDS
	@scripts/setup check
	@cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz -j $(JOBS) --target fuzzers
	scripts/fuzz build/fuzz $(FUZZ_SECONDS)

bench: ## Run the benchmarks and print the ratios that matter
	@scripts/setup bench
	@cmake --preset bench >/dev/null
	cmake --build --preset bench -j $(JOBS) --target hexmire_benchmarks hexmire
	benchmarks/run build/bench
	benchmarks/log-stream build/bench/apps/hexmire/hexmire

race: build-race ## Run the library beside the peers that are installed, and beside no library; print tables
	python3 benchmarks/race/race.py build/bench build/race $(if $(WRITE_DOCS),--write-docs)

race-check: build-race ## One quick round of the race, which only shows that everything runs
	python3 benchmarks/race/race.py build/bench build/race --short

build-race:
	@scripts/setup bench
	@cmake --preset bench >/dev/null
	cmake --build --preset bench -j $(JOBS) --target hexmire_benchmarks floor race_host

coverage: ## Run the tests with counters; print line and branch coverage by folder
	@scripts/setup check
	@cmake --preset coverage >/dev/null
	@rm -rf build/coverage/profiles
	cmake --build --preset coverage -j $(JOBS)
	ctest --preset coverage -j $(JOBS)
	scripts/coverage build/coverage

peers: ## Install independent SECS stacks into build/peers, for `make interop` and benchmarks
	@scripts/peers

interop: peers ## Run the program against independent stacks; have tshark read its captures (2 to 4 minutes)
	@scripts/setup interop
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target hexmire
	tests/interop/interop.py build/release/apps/hexmire/hexmire --check-docs

man: setup ## Write the manual page from what the program says
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target hexmire
	scripts/make-man build/release/apps/hexmire/hexmire

format: ## Rewrite every C++ file as .clang-format says
	@scripts/setup check
	@git ls-files -z '*.cpp' '*.h' | xargs -0 -r clang-format -i

clean: ## Remove everything that was built
	rm -rf build
