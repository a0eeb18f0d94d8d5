#!/usr/bin/env bash
# The tests under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer; the card client's under
# ThreadSanitizer; and each fuzz target for the given number of seconds (default 30).
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
seconds=${1:-30}

ensure_packages "${build_packages[@]}" "${test_packages[@]}" "${check_packages[@]}"
cmake --preset asan
cmake --build --preset asan
# Two more than processors: tests of whole programs wait for most of their time.
# The tests of windows on Wayland are those on X11 once more.
ctest --preset asan --parallel "$(($(nproc) + 2))" --exclude-regex '^e2e_wayland_'

cmake --preset tsan
cmake --build --preset tsan --target channel_tests
ctest --preset tsan --parallel "$(nproc)"

tools/fuzz.sh "$seconds"
