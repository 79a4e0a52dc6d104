#!/usr/bin/env bash
# Makes a release's package in build/packages.
# Usage: scripts/package.sh windows [--qt DIR --ffmpeg DIR --vlc DIR | --kit FILE]
#        scripts/package.sh deb
#        scripts/package.sh tar
# For windows a zip, and an installer made of the same folder. Without the three folders the kit is
# taken, by default ../shared/windows-kit.tar.xz; what is made with its stand-in for the serial port
# has `standin` in its name and isn't for users.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

usage() {
    sed -n '3,5s/^# //p' scripts/package.sh >&2
    exit 2
}

[[ $# -gt 0 ]] || usage
kind=$1
shift
kit=../shared/windows-kit.tar.xz
qt=''
ffmpeg=''
vlc=''
while [[ $# -gt 0 ]]; do
    [[ $kind == windows && $# -gt 1 ]] || usage
    case $1 in
        --qt) qt=$(realpath "$2") ;;
        --ffmpeg) ffmpeg=$(realpath "$2") ;;
        --vlc) vlc=$(realpath "$2") ;;
        --kit) kit=$2 ;;
        *) usage ;;
    esac
    shift 2
done

packages=$PWD/build/packages
work=$PWD/build/package/$kind
rm -rf "$work"
mkdir -p "$packages" "$work"

# install_into PRESET FOLDER: the programs and text files, and what is the same on every system: the
# documents, the changelog, and a saved file that chooses the engine that shows a picture.
install_into() {
    cmake --install "build/$1" --strip --prefix "$2" >"$work/install.log"
    scripts/make-documents.sh >"$work/documents.log"
    scripts/build.sh release nacelle-config >>"$work/documents.log"
    build/release/bin/nacelle-config --file "$2/controlConfig.ncl" set engine ffmpeg >>"$work/documents.log"
    cp build/release/bin/*.pdf CHANGELOG.md "$2"
}

# finish FOLDER: notices, the list of the files, and one time for all of them.
finish() {
    scripts/notices.sh "$1" "$2"
    scripts/sbom.sh "${2##*/}" "$2" sbom.spdx
    chmod -R u=rwX,go=rX "$2"
    find "$2" -exec touch --no-dereference --date "@$SOURCE_DATE_EPOCH" {} +
}

package_windows() {
    scripts/install-deps.sh build fonts documents windows
    if [[ -z $qt || -z $ffmpeg || -z $vlc ]]; then
        [[ -z $qt$ffmpeg$vlc ]] || usage
        if [[ ! build/windows-kit -nt $kit ]]; then
            rm -rf build/windows-kit
            tar -xf "$kit" -C build
            touch build/windows-kit
        fi
        qt=$PWD/build/windows-kit/qt
        ffmpeg=$PWD/build/windows-kit/ffmpeg
        vlc=$PWD/build/windows-kit/vlc
    fi
    local standin=
    [[ ! -e $qt/../STANDIN ]] || standin=-standin
    # The linker sorts imports by the libraries' paths, and here these are relative to the build: the
    # order is the same wherever the folders lie.
    local roots=$PWD/build/windows/roots
    mkdir -p "$roots"
    ln -sfn "$qt" "$roots/qt"
    ln -sfn "$ffmpeg" "$roots/ffmpeg"
    ln -sfn "$vlc" "$roots/vlc"
    cmake --preset windows -DNACELLE_QT_ROOT="$roots/qt" -DNACELLE_FFMPEG_ROOT="$roots/ffmpeg" \
        -DNACELLE_VLC_ROOT="$roots/vlc" >"$work/configure.log"
    scripts/build.sh windows nacelle_release

    local name=NacelleBench-$version-win64$standin
    install_into windows "$work/$name"
    # What makes the dissector doesn't run here as a program for Windows.
    scripts/build.sh release dissector
    cp -r build/release/wireshark "$work/$name"
    rm "$work/$name/wireshark/install-wireshark.sh"
    # Nine tenths of the compiler's runtime are for its debugger.
    x86_64-w64-mingw32-strip --strip-debug "$work/$name"/lib*.dll
    finish windows "$work/$name"
    scripts/check-imports.sh "$work/$name"

    rm -f "$packages/$name.zip"
    # Sorted, with names in UTF-8 and nothing of this machine's users.
    (cd "$work" && find "$name" | sort | zip -q -X -UN=UTF8 -@ "$packages/$name.zip")
    # Files first, then the folders that they leave empty, the innermost first.
    (
        cd "$work/$name"
        # shellcheck disable=SC2016 # $INSTDIR is the installer's
        find . -type f ! -name controlConfig.ncl -printf 'Delete "$INSTDIR\\%P"\n' | sort
        # shellcheck disable=SC2016
        find . -mindepth 1 -type d -printf 'RMDir "$INSTDIR\\%P"\n' | sort --reverse
    ) | tr '/' "\\\\" >"$work/uninstall.nsh"
    makensis -V2 -NOCD -DVERSION="$version" -DHOLDERS="$(holders)" -DFOLDER="$work/$name" \
        -DFILES="$work/uninstall.nsh" -DOUTPUT="$packages/$name-setup.exe" packaging/installer.nsi
    echo "Made: $packages/$name.zip and $name-setup.exe"
}

package_tar() {
    scripts/install-deps.sh build fonts stream documents
    local name
    name=NacelleBench-$version-linux-$(uname -m)
    scripts/build.sh release nacelle_release
    install_into release "$work/$name"
    scripts/needed-packages.sh "$work/$name" | tr ',' '\n' | sed 's/^ *//' >"$work/$name/PACKAGES.txt"
    finish linux "$work/$name"
    tar -C "$work" --sort=name --owner=0 --group=0 --numeric-owner --format=gnu \
        -cf - "$name" | xz >"$packages/$name.tar.xz"
    echo "Made: $packages/$name.tar.xz"
}

package_deb() {
    scripts/install-deps.sh build fonts stream documents debian
    scripts/build.sh release nacelle_release
    install_into release "$work/folder"
    packaging/debian/make.sh "$work" "$packages"
}

case $kind in
    windows | deb | tar) "package_$kind" ;;
    *) usage ;;
esac
