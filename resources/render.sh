#!/bin/sh
# Renders the pictures of this folder from svg/. Needs rsvg-convert and ImageMagick.
set -eu
cd "$(dirname "$0")"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# png NAME WIDTH: both icons and pictures are square.
png() {
    rsvg-convert -w "$2" -h "$2" "svg/$1.svg" -o "$1.png"
}

# ico TARGET SMALL LARGE: sizes up to 32 pixels come from their own, simpler drawing. Every size is
# decoded at the start of the program, so there are none that no desktop asks for.
ico() {
    pages=
    for size in 16 24 32; do
        rsvg-convert -w "$size" -h "$size" "svg/$2.svg" -o "$work/$1-$size.png"
        pages="$pages $work/$1-$size.png"
    done
    for size in 48 64; do
        rsvg-convert -w "$size" -h "$size" "svg/$3.svg" -o "$work/$1-$size.png"
        pages="$pages $work/$1-$size.png"
    done
    # shellcheck disable=SC2086
    convert $pages "$1.ico"
}

png setting 64
png close 64
png handle 32
png up_2 24
png down_2 24
png cbx_unselect2 32
png cbx_selected2 32
ico a71dp-jlnoy-001 pod-small pod
ico Skylark skylark skylark
