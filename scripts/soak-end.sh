#!/usr/bin/env bash
# Closes the program 0 to 200 ms after a press of Play on libVLC, with OpenGL in software, so many
# times (200), and ends with 1 if one of them didn't end well.
# Usage: scripts/soak-end.sh [TRIES]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ ${1:-} != --inside ]]; then
    scripts/build.sh dev endplaying nacelle_test_data
    exec scripts/virtual-screen.sh "scripts/${0##*/}" --inside "${1:-200}"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ffmpeg -v error -f lavfi -i testsrc=size=1280x720:rate=25:duration=10 -c:v mpeg2video "$work/clip.ts"
bad=0
for ((try = 0; try < $2; ++try)); do
    after=$((try * 10 % 210))
    LIBGL_ALWAYS_SOFTWARE=1 timeout 60 build/dev/tests/bin/endplaying libvlc "file://$work/clip.ts" \
        "$after" >"$work/log" 2>&1 || {
        echo "closed after $after ms: ended with $?"
        bad=$((bad + 1))
    }
done
echo "$bad of $2 ended badly"
((bad == 0))
