#!/usr/bin/env bash
# Builds the packages from nothing twice, in different folders and circumstances, and compares them byte for byte. Takes as long
# as two builds of the release. What was built stays in build/reproducible, for looking into differences.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages git "${build_packages[@]}" "${packing_packages[@]}"
unset PELMORA_COMPILER_LAUNCHER
export CCACHE_DISABLE=1
work=$PWD/build/reproducible
rm -rf "$work"
first=$work/sources
second=$work/another/folder/of/sources
# Before the builds, as the sources may change meanwhile.
for copy in "$first" "$second"; do
    mkdir -p "$copy"
    git ls-files -z | tar --create --null --files-from=- | tar --extract --directory "$copy"
done

TZ=UTC LC_ALL=C.UTF-8 "$first/tools/package.sh" "$work/first"
(umask 077 && TZ=Pacific/Kiritimati LC_ALL=C HOME=$work "$second/tools/package.sh" "$work/second")

for file in "$work"/first/*.deb "$work"/first/*.tar.zst; do
    cmp "$file" "$work/second/${file##*/}"
    (cd "${file%/*}" && sha256sum "${file##*/}")
done
