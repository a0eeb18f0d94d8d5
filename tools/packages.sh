# Debian packages that Pelmora needs, by purpose, and a function to install them. Sourced by the other scripts.

build_packages=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-svg-dev libxml2-dev libplist-dev libfmt-dev libcups2-dev libsodium-dev libxcb1-dev
    libpcsclite-dev libseccomp-dev
    # The document: its objects, its texts, its colours.
    libharfbuzz-dev libfribidi-dev libfontconfig-dev liblcms2-dev libdeflate-dev zlib1g-dev
    # French texts of Qt's own dialogs.
    qt6-translations-l10n
    # The page's fonts are cut from Roboto when the program is built.
    fonts-roboto-unhinted python3 python3-fonttools
)

# For packing the Debian package and the portable copy.
packing_packages=(debhelper dpkg-dev zstd)

# For checking them: policy, and hardening of programs.
package_check_packages=(lintian devscripts zstd)

# For installing the Debian package in a system of its own, with a display.
package_test_packages=(mmdebstrap dpkg-dev xvfb xdotool imagemagick poppler-utils procps python3)

# For a repository of packages.
repository_packages=(apt-utils dpkg-dev gnupg xz-utils)

test_packages=(
    # For reading PDF files in tests; the validator of PDF/A is a Java program.
    poppler-utils mupdf-tools qpdf python3-pikepdf default-jre-headless
    libpdfbox2-java libfontbox2-java libcommons-logging-java libjaxb-api-java libactivation-java
    # Windows: a display, a window manager, and the accessibility bus for controlling them.
    xvfb xauth xdotool openbox at-spi2-core dbus python3-gi gir1.2-atspi-2.0 imagemagick x11-utils wmctrl trayer
    # Windows on Wayland: a compositor and Qt's plugin.
    sway qt6-wayland
    # For the tests' session manager.
    libsm-dev
    # For validating JSON output.
    python3-jsonschema
    # For checking the man pages.
    mandoc
    # For the tests' print server.
    cups-daemon cups-client cups-filters-core-drivers
    # Validators of the files for desktops.
    desktop-file-utils appstream appstream-util shared-mime-info libglib2.0-bin
    # System fonts for characters that are missing in the page's font, of TrueType outlines and of PostScript ones.
    fonts-dejavu-core fonts-tlwg-loma-otf
    # For the tests' certificates, keys and signatures.
    openssl
    # Simulated card readers with the tests' PC/SC service, and the card service's channel.
    pcscd vsmartcard-vpcd python3-cbor2
    # For faults and limits.
    procps strace
    # For the portable copy.
    zstd
    # For the licence of every file.
    reuse
)

bench_packages=(
    # A desktop for the window, and tools to measure it.
    xvfb xauth openbox at-spi2-core dbus python3-gi gir1.2-atspi-2.0 procps libxcb-damage0-dev libxcb-xtest0-dev
    # A simulated card reader.
    pcscd vsmartcard-vpcd
    # A document without compression.
    qpdf
)

check_packages=(
    git clang-format-19 clang-tidy-19 clang-19 libclang-rt-19-dev
)

# ensure_packages NAME...: installs missing packages, as root or with sudo.
ensure_packages() {
    local missing=() name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "Il manque des paquets (${missing[*]}) : relancez ce script en tant que root, ou installez sudo." >&2
            return 1
        }
        as_root=(sudo)
    fi
    echo "Installation de : ${missing[*]}" >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qy --no-install-recommends "${missing[@]}" >&2
}
