#!/usr/bin/env bash
# Holds the pages, panels, menus and windows of two versions of the program against each other, pixel
# by pixel, in both languages on a screen of 1920x1080. Prints a line for each picture; ends with 1
# when two of them differ. The pictures, and what differs in red, stay in build/pages.
# Usage: scripts/compare-pages.sh OLD [NEW]
#   OLD, NEW  git's names of versions; NEW is the files as they stand here if left out
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [[ $# -lt 1 || $# -gt 2 ]]; then
    sed -n 's/^# Usage: /usage: /p' "$0" >&2
    exit 2
fi
scripts/install-deps.sh build fonts screen drive

out=$PWD/build/pages

# The files of a version in a folder of their own, named after it, since files of another time there
# would pass for built.
source_of() {
    local commit
    commit=$(git rev-parse --verify --quiet "$1^{commit}") || {
        echo "compare-pages: git knows no $1" >&2
        exit 2
    }
    if [[ ! -d $out/$commit/source ]]; then
        mkdir -p "$out/$commit/unpacked"
        git archive "$commit" | tar -x -C "$out/$commit/unpacked"
        mv "$out/$commit/unpacked" "$out/$commit/source"
    fi
    echo "$out/$commit/source"
}

# A version never knows of the taker of its pictures, which comes from here: an old one has none.
build() { # SOURCE BUILD
    CCACHE_BASEDIR=$1 CCACHE_NOHASHDIR=1 cmake -S "$1" -B "$2" -G Ninja \
        -DCMAKE_BUILD_TYPE=Release -DNACELLE_TESTS=OFF -DNACELLE_TOUR=OFF -DNACELLE_PODSIM=OFF \
        -DCMAKE_PROJECT_NacelleBench_INCLUDE="$PWD/tests/pages/beside.cmake" >/dev/null
    CCACHE_BASEDIR=$1 CCACHE_NOHASHDIR=1 cmake --build "$2" --target pagepictures
    cp "$1"/data/*.ini "$2/bin/"
}

take_pictures() { # BUILD PICTURES
    local language
    for language in zh en; do
        rm -rf "${2:?}/$language" "$1/bin/controlConfig.ncl"
        mkdir -p "$2/$language"
        scripts/virtual-screen.sh "$1/bin/pagepictures" "$language" "$2/$language" \
            2>"$2/$language.log" || {
            cat "$2/$language.log" >&2
            exit 1
        }
    done
}

# Prints how many pixels of a picture differ; fails when any does, or when one is missing.
compare_picture() { # NAME
    local count
    if [[ ! -f $out/old/$1 || ! -f $out/new/$1 ]]; then
        echo "$1: taken of one version only"
        return 1
    fi
    mkdir -p "$out/differs/${1%/*}"
    count=$(compare -metric AE "$out/old/$1" "$out/new/$1" "$out/differs/$1" 2>&1) || true
    echo "$1: $count"
    [[ $count == 0 ]]
}

old=$(source_of "$1")
new=$PWD
new_build=$out/here
if [[ $# -eq 2 ]]; then
    new=$(source_of "$2")
    new_build=${new%/source}/build
fi
build "$old" "${old%/source}/build"
build "$new" "$new_build"
take_pictures "${old%/source}/build" "$out/old"
take_pictures "$new_build" "$out/new"

rm -rf "$out/differs"
failed=0
while read -r name; do
    compare_picture "$name" || failed=1
done < <(cd "$out" && find old new -name '*.png' | sed 's#^[a-z]*/##' | sort -u)
exit "$failed"
