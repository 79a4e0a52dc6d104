#!/usr/bin/env bash
# Installs the Debian packages that are still missing for the given purposes, and says which.
# Usage: scripts/install-deps.sh PURPOSE...
set -euo pipefail

# The one list of packages, a row for each purpose. For stream: what the simulated pod streams by,
# and what the tests make clips with. For papers: what they read the files of an acceptance with.
packages_for() {
    case $1 in
        build) echo build-essential cmake ninja-build ccache qtbase5-dev libqt5serialport5-dev \
            libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libvlc-dev vlc-plugin-base \
            vlc-plugin-video-output ;;
        fonts) echo fonts-wqy-microhei fonts-dejavu-core ;;
        stream) echo pkg-config libgstrtspserver-1.0-dev gstreamer1.0-plugins-base \
            gstreamer1.0-plugins-good gstreamer1.0-plugins-ugly ffmpeg ;;
        screen) echo xvfb xauth openbox xdotool ;;
        format) echo clang-format ;;
        lint) echo clang-format clang-tidy cppcheck shellcheck reuse ;;
        pictures) echo imagemagick wireshark ;;
        documents) echo pandoc weasyprint ;;
        wireshark) echo tshark lua-check python3 ;;
        papers) echo poppler-utils libxml2-utils ;;
        bench) echo libbenchmark-dev ;;
        fuzz) echo clang libclang-rt-dev ;;
        memcheck) echo valgrind ;;
        windows) echo g++-mingw-w64-x86-64-posix libz-mingw-w64-dev libz-mingw-w64 zip nsis ;;
        wine) echo wine wine64 unzip ;;
        drive) echo imagemagick wmctrl ;;
        debian) echo debhelper help2man ;;
        release) echo mmdebstrap lintian appstream desktop-file-utils ;;
        *)
            echo "install-deps: no such purpose: $1" >&2
            return 1
            ;;
    esac
}

is_installed() {
    [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "install-deps: neither root nor sudo; run this as root: $*" >&2
        return 1
    fi
}

wanted=()
for purpose in "$@"; do
    list=$(packages_for "$purpose")
    read -r -a names <<<"$list"
    wanted+=("${names[@]}")
done

if ! command -v apt-get >/dev/null; then
    echo "install-deps: no apt-get here. These Debian packages, or what corresponds to them," >&2
    echo "install-deps: have to be there already: ${wanted[*]}" >&2
    exit 0
fi

missing=()
for name in "${wanted[@]}"; do
    is_installed "$name" || missing+=("$name")
done
if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

echo "Installing: ${missing[*]}"
as_root apt-get update -qq </dev/null
as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
