#!/usr/bin/env bash
# clang-tidy over the shipped sources, with the checks of .clang-tidy, and over the tests, with those of tests/.clang-tidy. Any
# finding is a failure. Needs the generated sources of the dev and asan builds.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${check_packages[@]}"
for preset in dev asan; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target pelmora >/dev/null
done
folders='(platform|support|update|card|service|attestation|prefs|app)'

# Most checks process all included headers, which takes most of their time. So they run on the combined sources of the asan
# build. Checks that only consider the main source run on each source.
alone=bugprone-suspicious-include,misc-unused-using-decls,clang-analyzer-*
run-clang-tidy-19 -quiet -p build/asan -j "$(nproc)" -checks="-${alone//,/,-}" \
    -extra-arg=-Wno-unknown-warning-option \
    -header-filter="/$folders/([^/]*/)?[^/]*\.(h|cpp)\$" "^$PWD/build/asan/$folders/.*/unity_[0-9]+_cxx\.cxx\$"
run-clang-tidy-19 -quiet -p build/dev -j "$(nproc)" -checks="-*,$alone,-clang-analyzer-cplusplus.NewDeleteLeaks" \
    "^$PWD/$folders/.*\.cpp\$"

# Of the tests only the names are checked.
tests=$(mktemp -d)
trap 'rm -rf "$tests"' EXIT
/usr/bin/python3 tools/tests-as-one.py build/dev "$tests"
clang-tidy-19 -quiet -p "$tests" --config-file=tests/.clang-tidy "$tests/tests.cpp"
