#!/usr/bin/env bash
# Runs a command on a virtual screen with a window manager, and ends with its code. The screen has
# 1920x1080 pixels, or what SCREEN_SIZE says.
# Usage: scripts/virtual-screen.sh COMMAND [ARGUMENT...]
set -euo pipefail

# The window manager wants an absolute path.
settings=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/virtual-screen.xml
work=$(mktemp -d)
children=()
clean_up() {
    for child in "${children[@]}"; do
        kill "$child" 2>/dev/null || true
        wait "$child" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# The server itself picks a free display and writes its number when it is ready.
mkfifo "$work/number"
Xvfb -displayfd 3 -screen 0 "${SCREEN_SIZE:-1920x1080}x24" -dpi 96 -nolisten tcp \
    3>"$work/number" 2>"$work/server.log" &
children+=($!)
number=
read -r -t 60 number <"$work/number" || true
if [[ -z $number ]]; then
    echo "virtual-screen: no virtual screen could be had:" >&2
    cat "$work/server.log" >&2
    exit 1
fi

export DISPLAY=:$number
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb
export XDG_RUNTIME_DIR=$work
# A program asks once what the window manager can do, so that one has to be up before.
mkfifo "$work/managed"
openbox --config-file "$settings" --startup "sh -c 'echo up >\"$work/managed\"'" >/dev/null 2>&1 &
children=("$!" "${children[@]}")
read -r -t 60 _ <>"$work/managed" || echo "virtual-screen: no window manager came up" >&2

# In the background, so that a signal to this script is heeded at once and ends the command too.
"$@" &
children=("$!" "${children[@]}")
wait "$!"
