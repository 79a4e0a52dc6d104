#!/usr/bin/env bash
# Installs dissector and profiles for Wireshark for the user who calls this: those beside this script,
# as in a package, or else those that are built now.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

source=.
if [[ ! -e nacelle.lua ]]; then
    cd ..
    scripts/install-deps.sh build
    scripts/build.sh core dissector
    source=build/core/wireshark
fi

plugins=$HOME/.local/lib/wireshark/plugins
settings=${XDG_CONFIG_HOME:-$HOME/.config}/wireshark
mkdir -p "$plugins" "$settings"
cp "$source/nacelle.lua" "$plugins"
cp -r "$source/profiles" "$settings"
echo "Installed: $plugins/nacelle.lua and the profiles NacelleBench (English), 云台报文工作台 (中文)"
echo "To start with one: wireshark -C NacelleBench"
