# The front door; the builds themselves are in CMakePresets.json. A fresh Debian machine needs make.

JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
NATIVE = release asan
TARGETS = x86-32 x86-32-asan armv7

.PHONY: all build demo test test-targets lint format bench install clean help

all: build

help:
	@echo 'make demo          build, and render the sample models into demo/'
	@echo 'make test          build, run all tests, natively and with sanitizers, and fuzz for some seconds'
	@echo 'make test-targets  the same for i386 and ARMv7'
	@echo 'make               build into build/release'
	@echo 'make lint          clang-tidy over what is built for users, and the benchmarks; make lint-all over all sources'
	@echo 'make format        clang-format over all sources'
	@echo 'make bench         build and run the benchmarks'
	@echo 'make bench-peers   the same for other loaders and viewers, side by side'
	@echo 'make fuzz          fuzz each target for a minute (needs clang); FUZZ_SECONDS=600 FUZZ_BITS=32 for more'
	@echo 'make install       install into PREFIX, /usr/local unless given'
	@echo 'make clean         remove build/ and demo/'
	@echo
	@echo 'make and make install name the packages that are missing; the others install them first, with apt (scripts/install-deps.sh).'

.PHONY: deps deps-targets deps-bench deps-fuzz
deps:
	@scripts/install-deps.sh
deps-targets:
	@scripts/install-deps.sh targets
deps-bench:
	@scripts/install-deps.sh bench
deps-fuzz:
	@scripts/install-deps.sh fuzz

# build-NAME, test-NAME: one preset.
build-%:
	cmake --preset $*
	cmake --build --preset $* -j $(JOBS)
test-%: build-%
	ctest --preset $* -j $(JOBS)

build: build-release

demo: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target model3d_tool
	@scripts/demo.sh

test: deps
	@scripts/format.sh --check
	@set -e; for preset in $(NATIVE); do $(MAKE) --no-print-directory test-$$preset; done
	@$(MAKE) --no-print-directory fuzz FUZZ_SECONDS=4

test-targets: deps-targets
	@set -e; for preset in $(TARGETS); do $(MAKE) --no-print-directory test-$$preset; done

.PHONY: lint-all
lint: deps
	@scripts/lint.sh
lint-all: deps
	@scripts/lint.sh --all

format: deps
	@scripts/format.sh

bench: deps-bench
	cmake --preset release -DMODEL3D_BUILD_BENCH=ON
	cmake --build --preset release -j $(JOBS)
	@set -e; for program in build/release/bin/bench_*; do echo "== $${program##*/}"; "$$program"; done
	@bench/first_picture.py build/release

# A peer that cannot be installed is left out.
.PHONY: bench-peers
bench-peers: deps-bench
	@for peer in assimp f3d; do scripts/install-deps.sh $$peer || echo "$$peer could not be installed"; done
	cmake --preset release -DMODEL3D_BUILD_BENCH=ON
	cmake --build --preset release -j $(JOBS)
	@bench/peers.py build/release

# make fuzz FUZZ_SECONDS=600 FUZZ_BITS=32
FUZZ_SECONDS ?= 60
FUZZ_BITS ?= 64
FUZZ_TARGETS ?=
FUZZ_FLAGS_32 = --target=i686-linux-gnu -msse2 -mfpmath=sse
.PHONY: fuzz
fuzz: deps-fuzz
	cmake -S . -B build/fuzz-$(FUZZ_BITS) -G Ninja -DCMAKE_BUILD_TYPE=Release -DMODEL3D_BUILD_FUZZ=ON \
	  -DMODEL3D_BUILD_TOOLS=OFF -DMODEL3D_BUILD_EXAMPLES=OFF -DMODEL3D_BUILD_TESTS=OFF \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
	  "-DCMAKE_C_FLAGS=$(FUZZ_FLAGS_$(FUZZ_BITS))" "-DCMAKE_CXX_FLAGS=$(FUZZ_FLAGS_$(FUZZ_BITS))"
	cmake --build build/fuzz-$(FUZZ_BITS) -j $(JOBS) --target fuzz
	fuzz/run.sh build/fuzz-$(FUZZ_BITS) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

install: build
	cmake --install build/release --prefix $(PREFIX)

clean:
	rm -rf build demo
