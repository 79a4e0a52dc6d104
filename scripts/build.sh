#!/usr/bin/env bash
# Configures a preset where that has not been done yet, and builds it.
# Usage: scripts/build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=$1
shift
# What was compiled in one checkout serves another on the same machine.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
# A change of a CMakeLists.txt is seen by the build itself, one of the presets is not.
if [[ ! build/$preset/build.ninja -nt CMakePresets.json ]]; then
    cmake --preset "$preset"
fi
if [[ $# -gt 0 ]]; then
    cmake --build --preset "$preset" --target "$@"
else
    cmake --build --preset "$preset"
fi
