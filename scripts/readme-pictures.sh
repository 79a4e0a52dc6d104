#!/usr/bin/env bash
# Renews the pictures of the README from those that the tour has left in build/tour.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh pictures

# take STEP NAME: the picture of a step, whatever its number, in few colours and without metadata.
take() {
    local found=(build/tour/[0-9][0-9]-"$1".png)
    convert "${found[0]}" -strip +dither -colors 96 -define png:compression-level=9 \
        "PNG8:docs/pictures/$2.png"
}

take answer-read-en workbench-en
take slider-held-zh console-zh
take target-held-zh video-zh
take target-framed-drag-en video-en
