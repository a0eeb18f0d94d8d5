#!/usr/bin/env bash
# Makes the packages and checks them: Debian's policy, the hardening of every program, no path of the build in any file, and that
# packing again in other circumstances gives the same bytes.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages "${package_check_packages[@]}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tools/package.sh "$work/first" >"$work/list"
{ read -r package; read -r portable; } <"$work/list"

(umask 077 && TZ=Pacific/Kiritimati LC_ALL=C HOME=$work tools/package.sh "$work/second" >/dev/null)
cmp "$package" "$work/second/${package##*/}"
cmp "$portable" "$work/second/${portable##*/}"

lintian --display-info --verbose --info --pedantic --fail-on error,warning "$package"

mkdir "$work/portable"
dpkg-deb --extract "$package" "$work/package"
tar --extract --file "$portable" --directory "$work/portable"
if grep --recursive --fixed-strings --files-with-matches --text "$PWD" "$work/package" "$work/portable"; then
    echo "Ces fichiers nomment le dossier de compilation." >&2
    exit 1
fi
find "$work/package" "$work/portable" -type f \( -path '*/bin/*' -o -path '*/libexec/*' \) >"$work/programs"
# Without the mark of control flow integrity: Debian 12's own start files, which are in every program, do not have it. Its
# instructions are looked for instead.
xargs --arg-file="$work/programs" hardening-check --nocfprotection
while [ "$(uname -m)" = x86_64 ] && read -r program; do
    if ! objdump --disassemble "$program" | grep endbr64 >"$work/instructions"; then
        echo "$program n’a pas d’instructions endbr64." >&2
        exit 1
    fi
done <"$work/programs"
