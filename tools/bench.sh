#!/usr/bin/env bash
# Builds the release and runs every benchmark with its baseline. PELMORA_IDLE_SECONDS sets for how long the idle window
# is measured (60).
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${bench_packages[@]}" time
cmake --preset release -DPELMORA_BENCHMARKS=ON >&2
cmake --build --preset release >&2

bench=build/release/bench
stage=build/release/stage
for name in bench_card_xml bench_channel bench_pdf; do
    printf '\n== %s\n' "$name"
    "$bench/$name"
done
printf '\n== A card in a reader\n'
tests/e2e/in-own-network.sh bench/bench-card-read.py "$bench/bench_card_read" "$stage"
printf '\n== bin/pelmora, before the program that it starts\n'
bench/bench-door.py "$stage/bin/pelmora"
printf '\n== pelmora --save, whole process\n'
bench/bench-save.py "$stage/bin/pelmora" "$bench/bench_bare_pdf" "$bench/bench_raw_pdf" "$stage/share/pelmora"
printf '\n== The attestation on the screen\n'
for scale in 1 2; do
    QT_SCALE_FACTOR=$scale xvfb-run -a -s "-screen 0 3840x2160x24 -nolisten tcp" "$bench/bench_viewer"
done
printf '\n== The window\n'
tests/e2e/in-desktop.sh bench/bench-window.py "$stage/bin/pelmora" "$bench/bench_window" "$bench/bench_bare_window" \
    "${PELMORA_IDLE_SECONDS:-60}"
printf '\n== The window beside an empty one, without a window manager\n'
MANAGER=none tests/e2e/in-desktop.sh bench/bench-window.py --empty "$stage/bin/pelmora" "$bench/bench_window" \
    "$bench/bench_bare_window"
