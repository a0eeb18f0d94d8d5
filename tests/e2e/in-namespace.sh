#!/bin/sh
# in-namespace.sh COMMAND...: runs a command in a mount namespace of its own. Other processes do not see its mounts.
[ "$(id -u)" -eq 0 ] && exec unshare --mount -- "$@"
exec unshare --mount --map-root-user -- "$@"
