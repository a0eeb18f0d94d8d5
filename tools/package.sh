#!/usr/bin/env bash
# package.sh [FOLDER]: builds the release and packs it for Debian, pelmora_<version>_<architecture>.deb, and as the portable copy,
# pelmora-<version>-portable.tar.zst, a folder Pelmora.app that runs in any place. They are written to the folder, or to build/.
# Prints their paths. The same sources give the same files.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${packing_packages[@]}"
folder=$(realpath -m "${1:-build}")
mkdir -p "$folder"
version=$(dpkg-parsechangelog --show-field Version)
name=pelmora_${version}_$(dpkg --print-architecture)
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog --show-field Timestamp)
export SOURCE_DATE_EPOCH

# Only what an earlier packing left is removed: what is built stays.
dh_clean
PACKAGES=$folder dpkg-buildpackage --build=binary --no-sign --no-pre-clean \
    --buildinfo-file="$folder/$name.buildinfo" --buildinfo-option="-u$folder" \
    --changes-file="$folder/$name.changes" --changes-option="-u$folder" >&2
dh_clean

tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
chmod 755 "$tree"
# Without the component for developers.
cmake --install build/release --prefix "$tree/Pelmora.app" --strip --component Unspecified >&2
archive=$folder/pelmora-$version-portable.tar.zst
tar --create --file - --directory "$tree" --sort=name --mtime="@$SOURCE_DATE_EPOCH" \
    --owner=0 --group=0 --numeric-owner --mode=u+rwX,go+rX,go-w Pelmora.app | zstd --quiet --force -19 -o "$archive"
printf '%s\n' "$folder/$name.deb" "$archive"
