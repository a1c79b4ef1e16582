# One target per chore.
.PHONY: build run test quick soak format lint bench install package bootstrap clean

BUILD_JOBS ?= $(shell nproc)

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
	ctest --preset debug -j $(BUILD_JOBS) -LE '^soak$$'

# The everyday tests: no servers, under three minutes.
quick:
	cmake --preset debug
	cmake --build --preset debug -j $(BUILD_JOBS)
	ctest --preset debug -j $(BUILD_JOBS) -L quick

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
