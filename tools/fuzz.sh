#!/usr/bin/env bash
# fuzz.sh [SECONDS]: builds the fuzz targets and runs each for that time (30), as many at a time as there are processors. Each
# begins with all of its corpus: the files of tests/fuzz/corpus/TARGET, and those of earlier runs in TARGET.tar.xz beside it. New
# inputs and failing ones are in build/fuzz/found.
# fuzz.sh --keep: puts the new inputs into those archives, without inputs that reach nothing more than the others.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

targets=(card framing bytes feed cardmap cardreading document)
corpus=tests/fuzz/corpus
ensure_packages "${build_packages[@]}" "${check_packages[@]}"
cmake --preset fuzz >&2
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}" >&2
for target in "${targets[@]}"; do
    mkdir -p "build/fuzz/kept/$target" "build/fuzz/found/$target"
    [ ! -e "$corpus/$target.tar.xz" ] || tar --extract --file "$corpus/$target.tar.xz" --directory "build/fuzz/kept/$target"
done

run_one()
{
    local target=$1 found=build/fuzz/found/$1 output status=0
    output=$(build/fuzz/tests/fuzz/fuzz_$target -max_total_time="$2" -rss_limit_mb=1024 -timeout=5 -print_final_stats=1 \
        -artifact_prefix="$found/" "$found" "build/fuzz/kept/$target" "tests/fuzz/corpus/$target" 2>&1) || status=$?
    printf '\n== fuzz_%s, %s s\n%s\n' "$target" "$2" "$(tail -n 12 <<<"$output")"
    return "$status"
}
keep_one()
{
    local target=$1 smallest=build/fuzz/smallest/$1
    rm -rf "$smallest"
    mkdir -p "$smallest"
    build/fuzz/tests/fuzz/fuzz_$target -merge=1 "$smallest" "tests/fuzz/corpus/$target" "build/fuzz/kept/$target" \
        "build/fuzz/found/$target" 2>&1 | tail -n 1
    tar --create --xz --file "tests/fuzz/corpus/$target.tar.xz" --directory "$smallest" --sort=name --mtime=@0 \
        --owner=0 --group=0 --numeric-owner .
}
export -f run_one keep_one
if [ "${1:-}" = --keep ]; then
    printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'keep_one {}'
else
    printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run_one {} "$1"' run_one "${1:-30}"
fi
