#!/usr/bin/env bash
# Builds the fuzz targets and runs each from its seed corpus for the given number of seconds (default 30). New inputs and
# failing ones are kept in build/fuzz.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

seconds=${1:-30}
ensure_packages "${build_packages[@]}" "${check_packages[@]}"
cmake --preset fuzz >&2
cmake --build --preset fuzz --target fuzz_card fuzz_framing fuzz_bytes fuzz_feed fuzz_cardmap fuzz_cardreading fuzz_document >&2

for name in card framing bytes feed cardmap cardreading document; do
    found=build/fuzz/found/$name
    mkdir -p "$found"
    printf '\n== fuzz_%s, %s s\n' "$name" "$seconds"
    build/fuzz/tests/fuzz/fuzz_$name -max_total_time="$seconds" -rss_limit_mb=1024 -timeout=5 -print_final_stats=1 \
        -artifact_prefix="$found/" "$found" "tests/fuzz/corpus/$name" 2>&1 | tail -n 12
done
