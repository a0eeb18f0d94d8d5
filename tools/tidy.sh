#!/usr/bin/env bash
# clang-tidy over the shipped sources, with the checks of .clang-tidy, and over the tests, with those of tests/.clang-tidy. Any
# finding is a failure. Needs the generated sources of the asan build.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${check_packages[@]}"
cmake --preset asan >/dev/null
cmake --build --preset asan --target pelmora >/dev/null

# Reading the headers takes most of the time, so the sources of each part of the program are read as one.
sources=$(mktemp -d)
trap 'rm -rf "$sources"' EXIT
mkdir "$sources/shipped" "$sources/tests"
/usr/bin/python3 tools/sources-as-one.py write build/asan "$sources/shipped"
# The analyzer follows a function for a third of its usual steps: the others take half of the time, and have found nothing.
run-clang-tidy-19 -quiet -p "$sources/shipped" -j "$(nproc)" -config-file=.clang-tidy \
    -extra-arg=-Wno-unknown-warning-option -extra-arg=-Xclang -extra-arg=-analyzer-config -extra-arg=-Xclang \
    -extra-arg=max-nodes=75000 "^$sources/shipped/.*\.cpp\$" |
    /usr/bin/python3 tools/sources-as-one.py locate "$sources/shipped"

# Of the tests only the names are checked.
/usr/bin/python3 tools/tests-as-one.py build/asan "$sources/tests"
clang-tidy-19 -quiet -p "$sources/tests" --config-file=tests/.clang-tidy "$sources/tests/tests.cpp"
