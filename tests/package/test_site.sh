#!/usr/bin/env bash
# test_site.sh PACKAGE.deb [COUNT]: tools/install-site.sh sets up COUNT (10) computers with a bare Debian 12 each, from one file of
# settings and without a question. Each reads the settings, keeps them when it is set up again, and saves an attestation. As root.
set -euo pipefail
[ "${PELMORA_IN_NAMESPACE:-}" ] || PELMORA_IN_NAMESPACE=yes exec unshare --mount --propagation private "$0" "$@"
package=$(realpath "$1")
count=${2:-10}
cd "$(dirname "$0")/../.."
. tools/packages.sh
ensure_packages "${package_test_packages[@]}"
. tests/package/root.sh

# Each computer is an overlay on the bare system, one at a time. They share the downloaded packages.
bare=$root
root=$work/computer
mkdir "$root" "$work/layer"
mount -t tmpfs tmpfs "$work/layer"
new_computer() {
    mkdir -p "$work/layer/"{changes,scratch}
    mount -t overlay overlay -o "lowerdir=$bare,upperdir=$work/layer/changes,workdir=$work/layer/scratch" "$root"
    mount_system
}
remove_computer() {
    umount --recursive "$root"
    rm -rf "$work/layer/"{changes,scratch}
}

settings=/etc/xdg/MORVEL/Pelmora.conf
set_up() {
    inside /site/install-site.sh /site/Pelmora.conf /site/pelmora.deb >"$work/answers" 2>&1 || {
        cat "$work/answers"
        return 1
    }
}
has_the_settings() {
    cmp "$bare/site/Pelmora.conf" "$root$settings" && [ "$(inside stat --format '%a %U' "$settings")" = '644 root' ]
}
# The user's own file says that the page has no title, the site's that it has one.
saves_with_the_title_that_the_site_wants() {
    local path
    path=$(as_user pelmora --simulate --save /home/accueil 2>"$work/messages")
    [ ! -s "$work/messages" ] && [[ $(pdftotext "$root$path" -) == *"Attestation de droits à l'assurance maladie"* ]]
}

chroot "$bare" useradd --create-home accueil
chroot --userspec=accueil:accueil "$bare" mkdir -p /home/accueil/.config/MORVEL
chroot --userspec=accueil:accueil "$bare" tee /home/accueil/.config/MORVEL/Pelmora.conf >/dev/null <<'END'
[General]
MVShowRightLabelPrintOption=false
END
mkdir "$bare/site"
cp tools/install-site.sh "$bare/site/"
{ cat examples/site/Pelmora.conf; echo MVShowRightLabelPrintOption=true; } >"$bare/site/Pelmora.conf"
cp "$package" "$bare/site/pelmora.deb"

started=$SECONDS
for ((computer = 1; computer <= count; ++computer)); do
    new_computer
    expect "computer $computer is set up" set_up
    expect 'the settings are the site’s' has_the_settings
    expect 'an attestation is saved with them' saves_with_the_title_that_the_site_wants
    expect 'it can be set up again' set_up
    expect 'the settings have stayed' has_the_settings
    remove_computer
done
echo "$count computers in $((SECONDS - started)) s"
