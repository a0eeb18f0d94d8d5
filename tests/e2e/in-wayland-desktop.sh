#!/bin/sh
# in-wayland-desktop.sh COMMAND...: runs a command in a Wayland desktop of its own, with a compositor without a screen
# (sway) and a session bus, which end with the command. SCREEN is the size of its virtual screen in pixels, SCALE the
# scale that it tells programs. There is no X server and no status bar. The script creates a keyboard and a mouse
# (wayland.py).
#
# Scripts that drive windows by desktop.py and windows.py work here as under in-desktop.sh, unless they need what only X has:
# bell.py, statusbar.py, xdotool and wmctrl themselves, and windows that are iconified. A scenario is written once, as a
# test of its script. Its name is added to that script's list in CMakeLists.txt, at pelmora_wayland_test(). By hand:
#
#   tests/e2e/in-wayland-desktop.sh /usr/bin/python3 tests/e2e/test_application.py build/dev/stage \
#       build/dev/tests/fakes/fake-card-service Reading.test_a_card_is_read_looked_at_and_saved
set -u
here=$(dirname "$(readlink -f "$0")")
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR
chmod 700 "$XDG_RUNTIME_DIR"

# The machine's own card readers are not used.
export PCSCLITE_CSOCK_NAME=/nonexistent
unset DISPLAY XAUTHORITY WAYLAND_DISPLAY SWAYSOCK XDG_CURRENT_DESKTOP QT_QPA_PLATFORMTHEME

# The compositor refuses to run as root. In a user namespace it runs as another user with the same access to files.
as_user=
[ "$(id -u)" -eq 0 ] && as_user="unshare --user --map-user=1000 --"
ready=$XDG_RUNTIME_DIR/ready
mkfifo "$ready"
{
    cat "$here/sway.conf"
    echo "output * resolution ${SCREEN:-1280x1024} position 0,0 scale ${SCALE:-1}"
    # The compositor's shell expands the variables.
    # shellcheck disable=SC2016
    echo 'exec sh -c '\''echo "$WAYLAND_DISPLAY $SWAYSOCK" >'"$ready'"
} >"$XDG_RUNTIME_DIR/sway.conf"

compositor=
# shellcheck disable=SC2064
trap 'kill $compositor 2>/dev/null; wait; rm -rf "$XDG_RUNTIME_DIR"' EXIT
# Painted without a graphics card.
HOME=/nonexistent WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
    $as_user sway --config "$XDG_RUNTIME_DIR/sway.conf" >"$XDG_RUNTIME_DIR/sway.log" 2>&1 &
compositor=$!
sockets=$(timeout 20 head -n 1 "$ready")
if [ -z "$sockets" ]; then
    cat "$XDG_RUNTIME_DIR/sway.log" >&2
    exit 1
fi
WAYLAND_DISPLAY=$XDG_RUNTIME_DIR/${sockets%% *}
SWAYSOCK=${sockets#* }
export WAYLAND_DISPLAY SWAYSOCK QT_QPA_PLATFORM=wayland

dbus-run-session -- "$@"
