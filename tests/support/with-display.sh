#!/bin/sh
# Runs a test program that draws with OpenGL: on the X display there is, else on a private
# Xvfb (Debian's VTK draws through X11 only). Listing the tests needs no display.
for arg in "$@"; do
  case "$arg" in
    --gtest_list_tests) exec "$@" ;;
  esac
done
export QT_QPA_PLATFORM=xcb
# Under the sanitizers every check stays but the leak check: Mesa's and D-Bus's own
# allocations reach it with stacks that the fast unwinder cannot follow.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
if [ -n "${DISPLAY:-}" ]; then
  exec "$@"
fi
exec xvfb-run -a -s "-screen 0 1600x1200x24 -nolisten tcp" "$@"
