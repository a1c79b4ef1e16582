# One target per chore.
.PHONY: build run test quick soak format lint bench install package bootstrap clean

BUILD_JOBS ?= $(shell nproc)
# Tests wait for servers, disks and each other's locks: two more than the machine has cores.
TEST_JOBS ?= $(shell expr $$(nproc) + 2)

build:
	@scripts/bootstrap build
	cmake --preset release -DORVANE_BUILD_TESTS=OFF
	cmake --build --preset release -j $(BUILD_JOBS)

# The demo suite, made anew, and every job run on it.
run: build
	scripts/demo

# Everything but the soak tests, the tests against real servers included.
test:
	@scripts/bootstrap test
	scripts/check-layers
	cmake --preset debug
	cmake --build --preset debug -j $(BUILD_JOBS)
	ctest --preset debug -j $(TEST_JOBS) -LE '^soak$$'
	@scripts/skipped-tests

# The everyday tests: no servers, under three minutes.
quick:
	cmake --preset debug
	cmake --build --preset debug -j $(BUILD_JOBS)
	ctest --preset debug -j $(TEST_JOBS) -L quick
	@scripts/skipped-tests

# The tests that take longer than everyday ones may; their results go to docs/soak.md.
soak:
	@scripts/bootstrap test
	cmake --preset debug
	cmake --build --preset debug -j $(BUILD_JOBS)
	scripts/soak

format:
	scripts/format

lint:
	@scripts/bootstrap test
	scripts/lint

# Some 15 minutes, after the tests of the benches themselves. OUT=FILE: one line of JSON for each figure.
bench:
	scripts/bootstrap bench
	cmake --preset bench
	cmake --build --preset bench -j $(BUILD_JOBS)
	ctest --preset bench
	scripts/bench $(if $(OUT),--out $(OUT))

install: build
	cmake --install build/release

# Debian packages of the program and of the library, in build/packages.
package:
	scripts/make-package

bootstrap:
	@scripts/bootstrap

clean:
	rm -rf build demo-suite
