#!/usr/bin/env bash
# Runs a program of the cross-build under Wine, in a Windows of the build folder's own, with the
# libraries of the toolkit, FFmpeg and the compiler in its path. Used by ctest.
# Usage: scripts/wine.sh PROGRAM [ARGUMENT...]
set -euo pipefail

build=$(cd "$(dirname "${BASH_SOURCE[0]}")/../build/windows" && pwd)
root_of() {
    sed -n "s/^NACELLE_$1_ROOT:[A-Z]*=//p" "$build/CMakeCache.txt"
}
path=
for library in libstdc++-6 libwinpthread-1 zlib1; do
    path+="Z:$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=$library.dll)");"
done
WINEPATH="${path}Z:$(root_of QT)/bin;Z:$(root_of FFMPEG)/bin"
export WINEPATH WINEPREFIX=$build/wine WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
exec wine "$@"
