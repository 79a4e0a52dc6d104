#!/usr/bin/env bash
# Builds NacelleBench and starts it beside a simulated pod. Where there is no display, the tour
# drives the program on a virtual screen instead and leaves its pictures in build/tour.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

bin=build/release/bin
scripts/install-deps.sh build fonts stream

if [[ -z ${DISPLAY:-} && -z ${WAYLAND_DISPLAY:-} ]]; then
    scripts/install-deps.sh screen
    scripts/build.sh release NacelleBench podsim tour
    scripts/virtual-screen.sh "$bin/tour" --podsim "$bin/podsim" --out build/tour --language both
    echo "No display here, so the tour ran on a virtual one. Its pictures: $PWD/build/tour"
    exit 0
fi

scripts/build.sh release NacelleBench nacelle-config podsim
if [[ ! -e $bin/controlConfig.ncl ]]; then
    echo "There is no saved file yet; FFmpeg is the engine that paints the video into the window:"
    "$bin/nacelle-config" set engine ffmpeg
fi
if [[ ! -e $bin/Help.pdf ]]; then
    scripts/make-documents.sh || echo "Without the documents that the menu opens: they could not be made." >&2
fi
"$bin/podsim" --tcp --udp --pty build/podsim-tty --rtsp &
podsim=$!
trap 'kill "$podsim" 2>/dev/null || true; wait "$podsim" 2>/dev/null || true' EXIT
echo "The simulated pod: TCP 127.0.0.1 port 2332; UDP 127.0.0.1 ports 2337 and 2338."
echo "Its picture: rtsp://127.0.0.1:8554/pod"
"$bin/NacelleBench"
