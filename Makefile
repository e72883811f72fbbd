# Thin: every target installs what is missing, configures a CMake preset, builds with Ninja, runs.
.PHONY: build run test test-dev test-asan check bench packages

build: packages
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target turnbuckle turnbuckle-runner turnbuckle-reader

run: build
	@examples/beam/run.sh build/release/bin/turnbuckle

test: test-dev test-asan

test-dev: packages
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev

test-asan: packages
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan

# Form, forbidden calls, and clang-tidy on what changed.
check: packages
	@dev/check.sh

.PHONY: desktop
desktop: packages
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target turnbuckle-desktop turnbuckle-runner turnbuckle-reader
	@build/release/bin/turnbuckle-desktop examples/beam/beam.tbk

bench: build
	@bench/run.sh build/release

packages:
	@dev/install-packages.sh
