# The two commands of the README's Quick start, and a few more for developers.
#   make demo    install what is missing, build, install into ./dist, run the demo
#   make test    install what is missing, build and run the whole test suite
#   make bench   the benchmarks against their peers, written to bench/REPORT.md
#   make package the Debian packages, in build/package
#   make check-sanitizers  the whole suite under asan+ubsan, then under tsan
#   make fuzz-run  every fuzz target for FUZZ_SECONDS (60) each
#   make soak    the long-running tests (label slow), never run by make test
JOBS ?= $(shell nproc)
DIST ?= $(CURDIR)/dist
FUZZ_SECONDS ?= 60

.PHONY: demo test bench package asan tsan check-sanitizers fuzz fuzz-run soak clean

demo:
	tools/dev/install-deps.sh build
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	cmake --install build/release --prefix $(DIST)
	$(DIST)/bin/qibosl demo examples/installation

test:
	tools/dev/install-deps.sh build test
	cmake --preset ci
	cmake --build --preset ci -j $(JOBS)
	ctest --preset ci -j $(JOBS)

bench:
	tools/dev/install-deps.sh build bench
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS)
	tools/dev/run-benchmarks.sh build/bench

package:
	tools/dev/install-deps.sh build package
	cmake --preset package
	cmake --build --preset package -j $(JOBS)
	cd build/package && cpack

asan tsan:
	tools/dev/install-deps.sh build test
	cmake --preset $@
	cmake --build --preset $@ -j $(JOBS)
	ctest --preset $@ -j $(JOBS)

check-sanitizers: asan tsan

fuzz:
	tools/dev/install-deps.sh build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)

fuzz-run: fuzz
	tools/dev/run-fuzzers.sh build/fuzz $(FUZZ_SECONDS)

soak:
	tools/dev/install-deps.sh build test
	cmake --preset ci
	cmake --build --preset ci -j $(JOBS)
	ctest --preset soak

clean:
	rm -rf build dist
