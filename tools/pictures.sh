#!/usr/bin/env bash
# Makes the pictures of docs/images anew: the windows, light and dark, at twice the size.
# With a folder as argument: each window there, in every setting that windows are looked at in.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${build_packages[@]}" "${test_packages[@]}" grim
cmake --preset dev
cmake --build --preset dev

# take_in DESKTOP FOLDER SUFFIX [VARIABLE=VALUE...]
take_in() {
    mkdir -p "$2"
    env "${@:4}" "tests/e2e/$1.sh" /usr/bin/python3 tests/e2e/pictures.py build/dev/stage "$2" "$3"
}

take() {
    take_in in-desktop "$@"
}

if [ $# -gt 0 ]; then
    for suffix in "" -dark; do
        take "$1/1366x768" "$suffix" SCREEN=1366x768
        take "$1/1024x600" "$suffix" SCREEN=1024x600
        take "$1/1024x600-large-texts" "$suffix" SCREEN=1024x600 QT_ENABLE_HIGHDPI_SCALING=0 QT_FONT_DPI=192
        take "$1/scale-2" "$suffix" SCREEN=2560x2048 QT_SCALE_FACTOR=2
        take_in in-wayland-desktop "$1/wayland" "$suffix"
        take_in in-wayland-desktop "$1/wayland-scale-2" "$suffix" SCREEN=2560x2048 SCALE=2
    done
    exit
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
for suffix in "" -dark; do
    take "$folder" "$suffix" SCREEN=2560x2048 QT_SCALE_FACTOR=2
    for name in main-window viewer; do
        cp "$folder/$name$suffix.png" docs/images/
    done
    cp "$folder/preferences-configuration$suffix.png" "docs/images/preferences$suffix.png"
done
