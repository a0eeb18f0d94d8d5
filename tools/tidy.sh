#!/usr/bin/env bash
# clang-tidy over the shipped sources, with the checks of .clang-tidy, and over the tests, with those of tests/.clang-tidy. Any
# finding is a failure. Needs the generated sources of the asan build.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${check_packages[@]}"
cmake --preset asan >/dev/null
cmake --build --preset asan --target pelmora >/dev/null

# Reading the headers takes most of the time, so each target's sources are read as one.
sources=$(mktemp -d)
trap 'rm -rf "$sources"' EXIT
mkdir "$sources/rooms" "$sources/tests"
/usr/bin/python3 tools/rooms-as-one.py write build/asan "$sources/rooms"
run-clang-tidy-19 -quiet -p "$sources/rooms" -j "$(nproc)" -config-file=.clang-tidy \
    -extra-arg=-Wno-unknown-warning-option "^$sources/rooms/.*\.cpp\$" |
    /usr/bin/python3 tools/rooms-as-one.py locate "$sources/rooms"

# Of the tests only the names are checked.
/usr/bin/python3 tools/tests-as-one.py build/asan "$sources/tests"
clang-tidy-19 -quiet -p "$sources/tests" --config-file=tests/.clang-tidy "$sources/tests/tests.cpp"
