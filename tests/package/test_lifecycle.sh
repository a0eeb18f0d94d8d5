#!/usr/bin/env bash
# test_lifecycle.sh PACKAGE.deb [SCREENSHOT.png]: in a bare Debian 12 with the package's dependencies only, an older
# version is installed, used, upgraded, used again, and purged. Nothing of it stays, nothing else is changed. As root.
set -euo pipefail
[ "${PELMORA_IN_NAMESPACE:-}" ] || PELMORA_IN_NAMESPACE=yes exec unshare --mount --propagation private "$0" "$@"
package=$(realpath "$1")
screenshot=${2:+$(realpath -m "$2")}
cd "$(dirname "$0")/../.."
. tools/packages.sh
ensure_packages "${package_test_packages[@]}"
. tests/package/root.sh
. tests/package/use.sh

# Files, with their content and permissions. Logs, caches and the package manager's own lists change with any installation,
# and the print server has files of its own.
state() {
    (cd "$root" && find . \( -path ./proc -o -path ./dev -o -path ./home -o -path ./tmp -o -path ./var/log -o -path ./var/cache \
        -o -path ./var/lib/apt -o -path ./run -o -path ./etc/cups -o -path ./var/spool/cups \) -prune \
        -o -path './var/lib/dpkg/*' \( -name 'status*' -o -name 'lock*' \) -prune \
        -o \( -type f -exec sha256sum {} + -o -true \) -printf '%p %M %u %g %l\n' | sort)
}
homes() {
    (cd "$root/home" && find . -type f -exec sha256sum {} + | sort)
}
every_library_is_found() {
    local missing
    missing=$(inside find /usr/bin/pelmora /usr/libexec/pelmora -type f -exec ldd {} + | grep 'not found')
    [ -z "$missing" ]
}
# looks_for_updates TREE: whether the tree's update program checks the feed. It stores the time before it asks the feed.
looks_for_updates() {
    rm -f "$settings"
    as_user DISPLAY=":$display" "$1/libexec/pelmora/pelmora-update" --by-itself
    [ -e "$settings" ] && grep SULastCheckTime "$settings"
}
leaves_updates_to_the_package_manager() {
    local feed='<key>SUFeedURL</key><string>http://127.0.0.1:9/</string>'
    local key='<key>SUPublicEDKey</key><string>AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=</string>'
    sed -i "s|^<dict>|<dict>$feed$key|" "$root/usr/share/pelmora/Info.plist"
    mkdir -p "$root/tmp/tree/libexec" "$root/tmp/tree/share"
    cp -a "$root/usr/libexec/pelmora" "$root/tmp/tree/libexec/"
    cp -a "$root/usr/share/pelmora" "$root/tmp/tree/share/"
    looks_for_updates /tmp/tree && ! looks_for_updates /usr
}

start_display
settings=$root/home/accueil/.config/MORVEL/Pelmora.conf
cp "$package" "$root/tmp/new.deb"
with_version "$package" 0.0.1 "$root/tmp/old.deb"
inside useradd --create-home accueil
# Files of the administrator and of another maker.
install -D -m 644 /dev/stdin "$root/etc/xdg/MORVEL/caisses.csv" <<<'01;999;Caisse du cabinet'
install -D -m 755 /dev/stdin "$root/usr/lib/pelmora/reading-library.so" <<<'Not a library.'
apt update
apt satisfy --no-install-recommends "$(dpkg-deb --field "$package" Depends)"
apt install --no-install-recommends "${print_server_packages[@]}"
start_print_server
state >"$work/before"

apt install --no-install-recommends /tmp/old.deb | tee "$work/installation"
expect 'the dependencies are all that it needs' grep '^0 upgraded, 1 newly installed, 0 to remove' "$work/installation"
expect 'every library is found' every_library_is_found
is_used first 1
expect 'updates are left to the package manager' leaves_updates_to_the_package_manager
homes >"$work/homes"

apt install --no-install-recommends /tmp/new.deb
expect 'the version is the new one' test "$(inside dpkg-query --show --showformat='${Version}' pelmora)" = \
    "$(dpkg-deb --field "$package" Version)"
expect 'an upgrade leaves files of users as they are' diff "$work/homes" <(homes)
is_used second 2
homes >"$work/homes"

apt purge pelmora
state >"$work/after"
expect 'nothing is left, and nothing else was changed' diff "$work/before" "$work/after"
expect 'files of users are left as they are' diff "$work/homes" <(homes)
