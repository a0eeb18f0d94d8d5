#!/usr/bin/env bash
# Every test under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer; the card client's under
# ThreadSanitizer; and each fuzz target for a while (seconds each, 30 unless given).
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
seconds=${1:-30}

ensure_packages "${build_packages[@]}" "${test_packages[@]}" "${check_packages[@]}"
for preset in asan tsan; do
    cmake --preset "$preset"
    cmake --build --preset "$preset"
    ctest --preset "$preset" --parallel "$(nproc)"
done

cmake --preset fuzz
cmake --build --preset fuzz
for corpus in tests/fuzz/corpus/*/; do
    name=$(basename "$corpus")
    # New inputs go to a scratch folder: the corpus that is kept is chosen by people.
    scratch=$(mktemp -d)
    "build/fuzz/tests/fuzz/$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 "$scratch" "$corpus"
    rm -rf "$scratch"
done
