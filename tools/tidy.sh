#!/usr/bin/env bash
# clang-tidy over the shipped sources, with the checks of .clang-tidy; any finding is a failure. Needs a dev build, for
# the generated sources.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${check_packages[@]}"
cmake --preset dev >/dev/null
cmake --build --preset dev >/dev/null
run-clang-tidy-19 -quiet -p build/dev -j "$(nproc)" \
    "^$PWD/(platform|support|card|service|attestation|prefs|app)/.*\.cpp$"
