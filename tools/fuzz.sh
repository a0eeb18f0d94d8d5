#!/usr/bin/env bash
# Builds the fuzz targets and runs each from its seed corpus for the given number of seconds (default 30), as many at a time
# as there are processors. New inputs and failing ones are kept in build/fuzz.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

seconds=${1:-30}
ensure_packages "${build_packages[@]}" "${check_packages[@]}"
cmake --preset fuzz >&2
cmake --build --preset fuzz --target fuzz_card fuzz_framing fuzz_bytes fuzz_feed fuzz_cardmap fuzz_cardreading fuzz_document >&2

run_one()
{
    local name=$1 found=build/fuzz/found/$1 output status=0
    mkdir -p "$found"
    output=$(build/fuzz/tests/fuzz/fuzz_$name -max_total_time="$2" -rss_limit_mb=1024 -timeout=5 -print_final_stats=1 \
        -artifact_prefix="$found/" "$found" "tests/fuzz/corpus/$name" 2>&1) || status=$?
    printf '\n== fuzz_%s, %s s\n%s\n' "$name" "$2" "$(tail -n 12 <<<"$output")"
    return "$status"
}
export -f run_one
printf '%s\n' card framing bytes feed cardmap cardreading document |
    xargs -P "$(nproc)" -I{} bash -c 'run_one {} "$1"' run_one "$seconds"
