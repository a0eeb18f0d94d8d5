# Debian packages that Pelmora needs, by purpose, and the one way to install them. Sourced by the other scripts.

build_packages=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-svg-dev libxml2-dev libplist-dev libfmt-dev libcups2-dev libsodium-dev libxcb1-dev
    libpcsclite-dev libseccomp-dev
    # The French texts of Qt's own dialogs.
    qt6-translations-l10n
    # The page's fonts are cut from Roboto when the program is built.
    fonts-roboto-unhinted python3 python3-fonttools
)

# What the portable copy is packed with.
portable_packages=(zstd)

test_packages=(
    # What the tests read PDF files with; the validator of PDF/A is a Java program.
    poppler-utils qpdf default-jre-headless
    libpdfbox2-java libfontbox2-java libcommons-logging-java libjaxb-api-java libactivation-java
    # Windows: a display, a window manager, and the accessibility bus that the tests drive them by.
    xvfb xauth xdotool openbox at-spi2-core dbus python3-gi gir1.2-atspi-2.0 imagemagick x11-utils wmctrl trayer
    # Windows once more where there is no X server: a compositor, and Qt's part for it.
    sway qt6-wayland
    # What the tests' own session manager is made of.
    libsm-dev
    # What the man page is checked with.
    mandoc
    # A print server of the tests' own.
    cups-daemon cups-client cups-filters-core-drivers
    # Validators of what desktops are told.
    desktop-file-utils appstream
    # A font of the system's, for what the page's own font lacks.
    fonts-dejavu-core
    # Certificates, keys and signatures of the tests' own.
    openssl
    # Card readers that are programs, behind a PC/SC service of the tests' own, and the card service's own channel.
    pcscd vsmartcard-vpcd python3-cbor2
    # Faults and limits.
    procps strace
    # The portable copy's form.
    zstd
)

bench_packages=(
    # A desktop for the window, and what watches it.
    xvfb xauth openbox at-spi2-core dbus python3-gi gir1.2-atspi-2.0 procps libxcb-damage0-dev libxcb-xtest0-dev
    # A card reader that is a program.
    pcscd vsmartcard-vpcd
)

check_packages=(
    git clang-format-19 clang-tidy-19 clang-19 libclang-rt-19-dev
)

# ensure_packages NAME...: installs those that are missing, as root or through sudo.
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
