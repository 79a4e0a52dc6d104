#!/usr/bin/env bash
# Installs dissector and profiles for Wireshark for the user who calls this: those beside this script,
# as in a package, or else those that are built now. An upgrade renews what its user hasn't changed.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

source=.
if [[ ! -e nacelle.lua ]]; then
    cd ..
    scripts/install-deps.sh build
    scripts/build.sh core dissector
    source=build/core/wireshark
fi

plugins=$HOME/.local/lib/wireshark/plugins
profiles=${XDG_CONFIG_HOME:-$HOME/.config}/wireshark/profiles
# The profiles as they were last installed.
delivered=${XDG_DATA_HOME:-$HOME/.local/share}/nacellebench/wireshark

# put PROFILE/FILE: what its user has changed, by hand or in Wireshark, stays.
put() {
    local new=$source/profiles/$1 there=$profiles/$1
    if [[ -e $there ]] && ! cmp -s "$there" "$delivered/$1" && ! cmp -s "$there" "$new"; then
        echo "Kept, since it has been changed: $there (the new one: $(realpath "$new"))"
        return
    fi
    install -D -m 644 "$new" "$there"
    install -D -m 644 "$new" "$delivered/$1"
}

install -D -m 644 "$source/nacelle.lua" "$plugins/nacelle.lua"
for file in "$source"/profiles/*/*; do
    put "${file#"$source/profiles/"}"
done
echo "Installed: $plugins/nacelle.lua and the profiles NacelleBench (English), 云台报文工作台 (中文)"
echo "To start with one: wireshark -C NacelleBench"
