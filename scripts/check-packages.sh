#!/usr/bin/env bash
# Makes all packages and tries them as a new user would: for Linux in a fresh Debian, for Windows
# under Wine, and all of them once more from another folder. Takes some 25 minutes, and longer on a
# busy machine. What is for Windows needs ../shared/windows-kit.tar.xz.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh build stream screen documents windows wine drive debian release

echo "== packages for Linux, in a fresh Debian"
scripts/package.sh deb
scripts/package.sh tar
scripts/check-debian.sh

packages=(deb tar)
if [[ -e ../shared/windows-kit.tar.xz ]]; then
    echo "== packages for Windows, under Wine"
    scripts/package.sh windows
    scripts/check-windows.sh
    echo "== tests for Windows, under Wine"
    scripts/test-windows.sh
    packages+=(windows)
else
    echo "Nothing is built or tried for Windows: there is no ../shared/windows-kit.tar.xz."
fi

echo "== the same packages from another folder"
scripts/check-reproducible.sh "${packages[@]}"
