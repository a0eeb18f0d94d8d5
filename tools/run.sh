#!/usr/bin/env bash
# Installs what is missing, builds Pelmora, and starts it with the simulated reader. Without a display it makes the
# attestation of the specimen card and prints its path.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}"
cmake --preset release -DPELMORA_BENCHMARKS=OFF >&2
cmake --build --preset release >&2

pelmora=build/release/stage/bin/pelmora
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec "$pelmora" --simulate
fi
exec "$pelmora" --simulate --save "$PWD/build/specimen"
