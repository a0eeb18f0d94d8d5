#!/usr/bin/env bash
# Builds the release and packs the portable copy, build/pelmora-<version>-portable.tar.zst: a folder Pelmora.app that runs
# in any place. Prints the path. The same sources give the same archive.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${portable_packages[@]}"
cmake --preset release -DPELMORA_BENCHMARKS=OFF >&2
cmake --build --preset release >&2

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/release/CMakeCache.txt)
archive=$PWD/build/pelmora-$version-portable.tar.zst
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
chmod 755 "$tree"
# Without the component for developers.
cmake --install build/release --prefix "$tree/Pelmora.app" --strip --component Unspecified >&2

made=$(git log -1 --format=%ct 2>/dev/null || date +%s)
tar --create --file - --directory "$tree" --sort=name --mtime="@${SOURCE_DATE_EPOCH:-$made}" \
    --owner=0 --group=0 --numeric-owner --mode=u+rwX,go+rX,go-w Pelmora.app | zstd --quiet --force -19 -o "$archive"
echo "$archive"
