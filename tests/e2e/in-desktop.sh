#!/bin/sh
# in-desktop.sh COMMAND...: runs a command in a desktop of its own, with a display, a window manager and a session bus; all
# of it ends with the command. SCREEN is the size of its screen; with MANAGER=none it has no window manager.
set -u
here=$(dirname "$(readlink -f "$0")")
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR
chmod 700 "$XDG_RUNTIME_DIR"

# The machine's own card readers are not used.
export PCSCLITE_CSOCK_NAME="$XDG_RUNTIME_DIR/absent"

numbers=$XDG_RUNTIME_DIR/display
mkfifo "$numbers"
Xvfb -displayfd 3 -screen 0 "${SCREEN:-1280x1024}x24" -nolisten tcp -noreset 3>"$numbers" >/dev/null 2>&1 &
server=$!
manager=
trap 'kill $manager $server 2>/dev/null; wait; rm -rf "$XDG_RUNTIME_DIR"' EXIT
number=$(timeout 20 head -n 1 "$numbers")
export DISPLAY=":$number"
unset WAYLAND_DISPLAY XDG_CURRENT_DESKTOP QT_QPA_PLATFORMTHEME QT_QPA_PLATFORM

if [ "${MANAGER:-openbox}" != none ]; then
    # It is ready when it runs its start-up command. Windows mapped earlier would never be managed.
    ready=$XDG_RUNTIME_DIR/ready
    mkfifo "$ready"
    openbox --sm-disable --config-file "$here/openbox.xml" --startup "sh -c 'echo >$ready'" >/dev/null 2>&1 &
    manager=$!
    timeout 20 head -n 1 "$ready" >/dev/null
fi

dbus-run-session -- "$@"
