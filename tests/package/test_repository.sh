#!/usr/bin/env bash
# test_repository.sh PACKAGE.deb: a repository with a key of the test's own, served on loopback. In a bare Debian 12, apt
# installs the package from it, upgrades it, and refuses what was changed. As root.
set -euo pipefail
[ "${PELMORA_IN_NAMESPACE:-}" ] || PELMORA_IN_NAMESPACE=yes exec unshare --mount --propagation private "$0" "$@"
package=$(realpath "$1")
cd "$(dirname "$0")/../.."
. tools/packages.sh
ensure_packages "${package_test_packages[@]}" "${repository_packages[@]}"
. tests/package/root.sh
. tests/package/use.sh

export GNUPGHOME=$work/keys
mkdir -m 700 "$GNUPGHOME"
for name in maker stranger; do
    gpg --batch --quiet --passphrase '' --quick-generate-key "$name@morvel.example" ed25519 sign
done
served=$work/served
publish() { # publish KEY PACKAGE.deb...
    local key=$1
    shift
    PELMORA_SIGNING_KEY=$key@morvel.example tools/repository.sh "$@" "$served"
}
is_refused() { # is_refused REASON COMMAND...
    local reason=$1
    shift
    ! "$@" >"$work/answer" 2>&1 && grep "$reason" "$work/answer"
}
installed() {
    inside dpkg-query --show --showformat='${Version}' pelmora
}
update() {
    apt -o APT::Update::Error-Mode=any update
}

with_version "$package" 0.0.1 "$work/old.deb"
with_version "$package" 99.0 "$work/newer.deb"
expect 'a key that does not exist is not made' is_refused 'pas de clé secrète' publish nobody "$work/old.deb"
publish maker "$work/old.deb"
mkfifo "$work/started"
/usr/bin/python3 -u -m http.server --bind 127.0.0.1 --directory "$served" 0 >"$work/started" 2>"$work/requests" &
background+=($!)
port=$(timeout 20 head -n 1 "$work/started" | sed 's/.* port \([0-9]*\) .*/\1/')
cp "$served/pelmora.gpg" "$root/usr/share/keyrings/pelmora.gpg"
cat >"$root/etc/apt/sources.list.d/pelmora.sources" <<EOF
Types: deb
URIs: http://127.0.0.1:$port
Suites: stable
Components: main
Signed-By: /usr/share/keyrings/pelmora.gpg
EOF

update
inside useradd --create-home accueil
apt install --no-install-recommends pelmora "${print_server_packages[@]}"
start_display
start_print_server
expect 'apt installs the package' test "$(installed)" = 0.0.1
is_used first 1
expect 'what it recommends can be installed' apt install --simulate pelmora

publish maker "$package"
update
apt upgrade
expect 'apt upgrades it' test "$(installed)" = "$(dpkg-deb --field "$package" Version)"
is_used second 2
with_version "$package" 0.0.1 "$work/other.deb"
echo >>"$work/other.deb"
expect 'other content under a published version is refused' is_refused 'existe déjà' publish maker "$work/other.deb"

cp -a "$served/dists" "$work/dists"
sed -i 's/^Date: .*/Date: Thu, 01 Jan 2099 00:00:00 UTC/' "$served/dists/stable/InRelease"
expect 'a changed index is refused' is_refused BADSIG update
rm -r "$served/dists"
cp -a "$work/dists" "$served/dists"
publish stranger "$work/newer.deb"
expect 'the signature of another key is refused' is_refused NO_PUBKEY update
publish maker "$work/newer.deb"
printf x | dd of="$served/pool/pelmora_99.0_$(dpkg --print-architecture).deb" bs=1 seek=5000 conv=notrunc status=none
update
expect 'a changed package is refused' is_refused 'Hash Sum mismatch' apt upgrade
expect 'the installed version has stayed' test "$(installed)" = "$(dpkg-deb --field "$package" Version)"
apt purge pelmora
expect 'it is purged' is_refused 'no packages found' installed
