#!/usr/bin/env bash
# install-site.sh FILE [PACKAGE]: installs Pelmora without a question, from a package file or else by its name from the computer's
# sources of packages, and puts the file in place as the settings of the site. As root or with sudo. Can be repeated.
set -euo pipefail

if [ $# -lt 1 ] || [ $# -gt 2 ] || [ ! -f "$1" ]; then
    echo "Utilisation : $0 Pelmora.conf [pelmora_….deb]" >&2
    exit 2
fi
file=$1
package=${2:-pelmora}
if ! iconv --from-code=UTF-8 --to-code=UTF-8 "$file" >/dev/null 2>&1; then
    echo "$file n’est pas en UTF-8 : rien n’est installé." >&2
    exit 1
fi
# apt takes a name without a slash for the name of a package.
[ $# -lt 2 ] || package=$(realpath -e "$package")

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qy -o Dpkg::Options::=--force-confold "$package"

# Complete or not at all: the program may start meanwhile.
place=/etc/xdg/MORVEL
"${as_root[@]}" install -D -m 644 "$file" "$place/.Pelmora.conf.new"
"${as_root[@]}" mv -T "$place/.Pelmora.conf.new" "$place/Pelmora.conf"
echo "Pelmora est installé, avec les réglages de $file dans $place/Pelmora.conf."
