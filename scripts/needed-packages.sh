#!/usr/bin/env bash
# Writes the Debian packages that a release for Linux needs, as a Depends field has them. What is
# loaded while the programs run is seen by no tool and stands here; with --loaded it alone is written,
# else what the programs of a folder are linked to as well.
# Usage: scripts/needed-packages.sh --loaded | FOLDER
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

# The packages of the libraries that the build's headers belong to.
loaded=$(for library in avformat avcodec avutil swscale vlc; do
    dpkg --search "$(realpath "/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/lib$library.so")"
done | cut -d : -f 1 | sort -u | paste -s -d , | sed 's/,/, /g')
loaded+=", vlc-plugin-base, vlc-plugin-video-output"
loaded+=", gstreamer1.0-plugins-base, gstreamer1.0-plugins-good, gstreamer1.0-plugins-ugly"
loaded+=", fonts-wqy-microhei | fonts-noto-cjk | fonts-arphic-uming | fonts-droid-fallback"
if [[ $1 == --loaded ]]; then
    echo "$loaded"
    exit 0
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/debian"
touch "$work/debian/control"
folder=$(realpath "$1")
mapfile -t programs < <(programs_of own shared)
(cd "$work" && dpkg-shlibdeps -O "${programs[@]/#/-e$folder/}" 2>/dev/null) | sed "s/^shlibs:Depends=//; s/\$/, $loaded/"
