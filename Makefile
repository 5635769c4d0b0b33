# Entry points for building, testing and benchmarking.
#   make test       install missing packages, build, run every test
#   make test-asan  the same with AddressSanitizer + UndefinedBehaviorSanitizer
#   make bench      build and run the benchmarks (optimised build)
#   make format     clang-format every source file in place

.PHONY: all deps build test test-asan bench format

all: build

deps:
	bash scripts/install-deps.sh

build: deps
	cmake --preset default
	cmake --build --preset default

test: build
	ctest --preset default

test-asan: deps
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan

bench: build
	cmake --build --preset default --target bench

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i
