# Entry points for building, testing and benchmarking.
#   make run        install missing packages, build, start the viewer on the built-in sample;
#                   without a display it runs on a private Xvfb and writes SCREENSHOT
#                   (oxwviewer.png)
#   make test       install missing packages, build, run every test
#   make test-asan  the same with AddressSanitizer + UndefinedBehaviorSanitizer
#   make bench      build and run the benchmarks (optimised build)
#   make format     clang-format every source file in place

.PHONY: all deps build run test test-asan bench format

SCREENSHOT ?= oxwviewer.png
VIEWER := build/default/apps/oxwviewer/oxwviewer

all: build

deps:
	bash scripts/install-deps.sh

build: deps
	cmake --preset default
	cmake --build --preset default

run: build
	@if [ -n "$$DISPLAY" ] || [ -n "$$WAYLAND_DISPLAY" ]; then \
		$(VIEWER); \
	else \
		echo "No display: running on a private X server (Xvfb) and writing $(SCREENSHOT)"; \
		QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1600x1000x24 -nolisten tcp" \
			$(VIEWER) --screenshot $(SCREENSHOT); \
	fi

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
