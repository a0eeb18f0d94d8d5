# A bare Debian 12 for the tests of the package, as root. Sourced by scripts that run in a mount namespace of their own. Sets
# $work, which is removed at the end, and $root. What is downloaded is kept in build/package-tests.

cache=$PWD/build/package-tests
mkdir -p "$cache/archives"
if [ ! -e "$cache/root.tar" ]; then
    mmdebstrap --quiet --variant=minbase --format=tar bookworm "$cache/root.tar.new"
    mv "$cache/root.tar.new" "$cache/root.tar"
fi

work=$(mktemp -d)
chmod 755 "$work"
root=$work/root
mkdir "$root"
background=()
trap 'for process in "${background[@]}"; do kill "$process"; done; wait
    findmnt --list --noheadings --output TARGET | grep "^$work/" | tac | xargs --no-run-if-empty umount --lazy
    rm -rf --one-file-system "$work"' EXIT

tar --extract --numeric-owner --file "$cache/root.tar" --directory "$root" --exclude './dev/*'
# The devices, the processes and the downloaded packages, in $root.
mount_system() {
    mount --bind /dev "$root/dev"
    mount -t proc proc "$root/proc"
    mount --bind "$cache/archives" "$root/var/cache/apt/archives"
}
mount_system
cp /etc/resolv.conf "$root/etc/resolv.conf"
# Packages are kept after they were installed, and no service is started.
rm -f "$root/etc/apt/apt.conf.d/docker-clean"
echo 'APT::Keep-Downloaded-Packages "true";' >"$root/etc/apt/apt.conf.d/99keep"
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
chmod 755 "$root/usr/sbin/policy-rc.d"

# Run commands in the root, as root or as a user. There is no terminal: a command that asks a question fails.
inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 "$@" </dev/null
}
as_user() {
    chroot --userspec=accueil:accueil "$root" env -i PATH=/usr/bin:/bin HOME=/home/accueil LC_ALL=C.UTF-8 "$@" </dev/null
}
apt() {
    inside DEBIAN_FRONTEND=noninteractive apt-get -qy -o Dpkg::Use-Pty=0 "$@"
}

# with_version PACKAGE.deb VERSION OUTPUT.deb: the same package under another version.
with_version() {
    local tree=$work/repacked
    dpkg-deb --raw-extract "$1" "$tree"
    sed -i "s/^Version: .*/Version: $2/" "$tree/DEBIAN/control"
    dpkg-deb --root-owner-group -Znone --build "$tree" "$3"
    rm -rf "$tree"
}

expect() { # expect DESCRIPTION COMMAND...
    local description=$1
    shift
    if ! "$@"; then
        echo "FAILED: $description" >&2
        exit 1
    fi
    echo "ok: $description"
}
