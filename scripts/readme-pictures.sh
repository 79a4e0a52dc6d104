#!/usr/bin/env bash
# Renews the pictures of the README and of the help from those that the tour has left in build/tour.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh pictures

# take STEP NAME [PART]: the picture of a step in both languages, whatever its number, or a part of
# it (WIDTHxHEIGHT+X+Y), in few colours and without metadata.
take() {
    local language found
    for language in zh en; do
        found=(build/tour/[0-9][0-9]-"$1-$language".png)
        convert "${found[0]}" ${3:+-crop "$3" +repage} -strip +dither -colors 96 \
            -define png:compression-level=9 "PNG8:docs/pictures/$2-$language.png"
    done
}

take tcp-chosen connect 640x140+8+80
take answer-read workbench
take command-chosen command 1048x386+436+346
take slider-held console
take history-older history
take target-framed-drag video
