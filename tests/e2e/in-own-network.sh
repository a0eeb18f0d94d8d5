#!/bin/sh
# in-own-network.sh COMMAND...: runs a command in a network of its own, with nothing but a loopback in it, and where it may
# mount what it likes: card readers that are programs listen on every address, and are to be reached by their test alone.
[ "$(id -u)" -eq 0 ] && exec unshare --mount --net -- "$@"
exec unshare --mount --net --map-root-user -- "$@"
