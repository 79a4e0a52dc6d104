#!/bin/sh
# Starts a program of NacelleBench from the user's own copy of its folder: the programs read and write
# files beside themselves. The copy is made at the first start. A later version renews it, but for
# what the user has changed and for the saved file. A text file that is gone comes back.
set -eu

lib=/usr/lib/nacellebench/own
share=/usr/share/nacellebench
own=${XDG_DATA_HOME:-$HOME/.local/share}/nacellebench
delivered=$own/.delivered # the files as the package last had them

# put FILE FOLDER: where it isn't there yet. In one step: the old program may be running.
put() {
    name=${1##*/}
    if ! cmp -s "$1" "$2/$name"; then
        cp "$1" "$2/.new"
        mv -f "$2/.new" "$2/$name"
    fi
}

mkdir -p "$delivered"
(
    flock 9
    for file in "$lib"/*; do
        put "$file" "$own"
    done
    for file in "$share"/*.ini "$share"/*.pdf; do
        name=${file##*/}
        if [ ! -e "$own/$name" ] || cmp -s "$own/$name" "$delivered/$name"; then
            put "$file" "$own"
            put "$file" "$delivered"
        fi
    done
    if [ ! -e "$own/controlConfig.ncl" ]; then
        cp "$share/controlConfig.first" "$own/controlConfig.ncl"
    fi
) 9>"$own/.lock"

program=${0##*/}
if [ "$program" = nacellebench ]; then
    program=NacelleBench
fi
exec "$own/$program" "$@"
