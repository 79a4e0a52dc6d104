#!/usr/bin/env bash
# Puts into a folder of a release what says whose it is: our licence, the notices of what isn't ours,
# and the texts of its licences. With a second folder, they go there. For the Debian package the texts
# that are on every Debian stay where they are there, and our licence stands in its file copyright.
# Usage: scripts/notices.sh windows|linux|debian FOLDER [TARGET]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

system=$1
folder=$2
target=${3:-$2}
mkdir -p "$target/licenses"

ours=LICENSE.txt
place='the folder licenses'
if [[ $system == debian ]]; then
    ours=copyright
    place='/usr/share/common-licenses and in the folder licenses'
else
    sed "s/^Copyright (c) .*/Copyright (c) $(holders)/" LICENSE >"$target/$ours"
fi

take_text() {
    local name=${1%/copyright}
    local file=/usr/share/common-licenses/$1
    if [[ $1 == */* ]]; then
        file=/usr/share/doc/$1
    elif [[ $system == debian ]]; then
        return
    fi
    cp -L "$file" "$target/licenses/$name.txt"
}

# What lies in the folder by one of the patterns, or what the system lends.
is_used() {
    local pattern
    for pattern in $1; do
        case $pattern in
            - | "-${system/debian/linux}") return 0 ;;
            *) compgen -G "$folder/$pattern" >/dev/null && return 0 ;;
        esac
    done
    return 1
}

{
    echo "NacelleBench is under the MIT licence ($ours). It uses, or comes with:"
    while IFS='|' read -r files what licence texts source; do
        is_used "$files" || continue
        printf '\n%s\n    licence: %s\n    source:  %s\n' "$what" "$licence" "$source"
        for text in $texts; do
            take_text "$text"
        done
    done < <(grep -v '^#' packaging/components)
    for library in "$folder"/avformat-*.dll; do
        [[ -e $library ]] && printf '\nFFmpeg as built here: %s\n' \
            "$(strings -n 8 "$library" | sed -n 's/^libavformat license: //p')"
    done
    echo
    echo "The libraries are linked at run time: each may be replaced by another build of it. The"
    echo "texts of the licences stand in $place."
    echo "Qt's documentation lists the parts of others in Qt."
} >"$target/THIRD-PARTY.txt"
