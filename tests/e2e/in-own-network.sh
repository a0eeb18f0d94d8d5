#!/bin/sh
# in-own-network.sh COMMAND...: runs a command in a network of its own, which has only a loopback, and in a mount
# namespace of its own. Simulated card readers listen on every address, and only their test may reach them.
[ "$(id -u)" -eq 0 ] && exec unshare --mount --net -- "$@"
exec unshare --mount --net --map-root-user -- "$@"
