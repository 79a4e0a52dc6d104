#!/usr/bin/env bash
# Builds the tests for Windows and runs them under Wine, on one virtual screen: those that need neither
# pseudo-terminals nor GStreamer nor libVLC. After `scripts/package.sh windows`, which configures.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh screen wine
scripts/build.sh windows
clean_up() {
    WINEPREFIX=$PWD/build/windows/wine wineserver --kill || true
}
trap clean_up EXIT
# One after another: they share the screen and its one active window.
# On a busy machine Wine may take longer than the 30 ms that some of them have between two steps.
scripts/virtual-screen.sh ctest --preset windows --no-tests=error --repeat until-pass:3
