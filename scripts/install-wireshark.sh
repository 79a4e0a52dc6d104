#!/usr/bin/env bash
# Installs dissector and profile for Wireshark for the user who calls this: those beside this script,
# as in a package, or else those that are built now. The language of names is that of the system.
# Usage: install-wireshark.sh [zh|en]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

language=${1:-${LC_ALL:-${LC_MESSAGES:-${LANG:-en}}}}
case $language in
    zh*) name=中文 ;;
    *) name=English ;;
esac

source=.
if [[ ! -e nacelle.lua ]]; then
    cd ..
    scripts/install-deps.sh build
    scripts/build.sh core dissector
    source=build/core/wireshark
fi

plugins=$HOME/.local/lib/wireshark/plugins
profile=${XDG_CONFIG_HOME:-$HOME/.config}/wireshark/profiles/NacelleBench
mkdir -p "$plugins" "$profile"
cp "$source/nacelle.lua" "$plugins"
cp "$source"/profiles/NacelleBench/* "$profile"
echo "nacelle.language: $name" >>"$profile/preferences"
echo "Installed: $plugins/nacelle.lua and the profile NacelleBench, with names in $name"
echo "To start with it: wireshark -C NacelleBench"
