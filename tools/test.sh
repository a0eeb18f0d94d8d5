#!/usr/bin/env bash
# Installs what the tests need, builds, and runs all tests.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
cmake --preset dev
cmake --build --preset dev
# Two more than processors: tests of whole programs wait for most of their time.
ctest --preset dev --parallel "$(($(nproc) + 2))" "$@"
