#!/usr/bin/env bash
# repository.sh PACKAGE.deb... FOLDER: adds packages to the signed apt repository in the folder, which is made if needed. Any web
# server can serve the folder. PELMORA_SIGNING_KEY names the GnuPG key for the signature, which must exist.
set -euo pipefail
here=$(dirname "$(realpath "$0")")
. "$here/packages.sh"

if [ $# -lt 2 ] || [ -z "${PELMORA_SIGNING_KEY:-}" ]; then
    echo "Utilisation : PELMORA_SIGNING_KEY=CLÉ $0 PAQUET.deb… DOSSIER" >&2
    exit 2
fi
ensure_packages "${repository_packages[@]}"
# Before anything is written.
if ! gpg --batch --list-secret-keys "$PELMORA_SIGNING_KEY" >/dev/null; then
    echo "Il n’y a pas de clé secrète « $PELMORA_SIGNING_KEY »." >&2
    exit 1
fi

packages=("${@:1:$#-1}")
repository=$(realpath -m "${!#}")
mkdir -p "$repository/pool"
work=$(mktemp -d "$repository/.new-XXXXXX")
trap 'rm -rf "$work"' EXIT

for package in "${packages[@]}"; do
    name=$(dpkg-deb --showformat='${Package}_${Version}_${Architecture}.deb' --show "$package")
    # Computers that have installed a version never get another content of it.
    if [ -e "$repository/pool/$name" ] && ! cmp --quiet "$package" "$repository/pool/$name"; then
        echo "$name existe déjà avec un autre contenu : donnez-lui un autre numéro de version." >&2
        exit 1
    fi
    install -m 644 "$package" "$work/$name"
    mv "$work/$name" "$repository/pool/$name"
done

cd "$repository"
architectures=$(for package in pool/*.deb; do dpkg-deb --field "$package" Architecture; done | sort -u | tr '\n' ' ')
suite=$work/dists/stable
for architecture in $architectures; do
    binary=$suite/main/binary-$architecture
    mkdir -p "$binary"
    apt-ftparchive --arch "$architecture" packages pool >"$binary/Packages"
    xz --keep "$binary/Packages"
done
apt-ftparchive -o APT::FTPArchive::Release::Origin=MORVEL -o APT::FTPArchive::Release::Label=Pelmora \
    -o APT::FTPArchive::Release::Suite=stable -o APT::FTPArchive::Release::Codename=stable \
    -o APT::FTPArchive::Release::Components=main -o APT::FTPArchive::Release::Architectures="$architectures" \
    release "$suite" >"$work/Release"
mv "$work/Release" "$suite/Release"
sign=(gpg --batch --yes --local-user "$PELMORA_SIGNING_KEY" --digest-algo SHA512)
"${sign[@]}" --armor --detach-sign --output "$suite/Release.gpg" "$suite/Release"
"${sign[@]}" --clear-sign --output "$suite/InRelease" "$suite/Release"
gpg --batch --export "$PELMORA_SIGNING_KEY" >"$work/pelmora.gpg"

# The index is replaced when it is complete and signed.
chmod -R u+rwX,go+rX "$work"
[ ! -e dists ] || mv dists "$work/old"
mv "$work/dists" dists
mv "$work/pelmora.gpg" pelmora.gpg
