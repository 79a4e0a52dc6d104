#!/usr/bin/env bash
# Tries the packages for Windows under Wine as a new user would, on a virtual screen: the zip in a
# folder with blanks and Chinese letters in its path, and the installer. Needs what
# `scripts/package.sh windows` has made. Pictures are left in build/check-windows/pictures.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

if [[ ${1:-} != inside ]]; then
    scripts/install-deps.sh screen wine drive papers
    scripts/build.sh release podsim
    scripts/build.sh windows tour novlc
    exec scripts/virtual-screen.sh "$0" inside
fi

check=$PWD/build/check-windows
rm -rf "$check"
mkdir -p "$check/pictures" "$check/新 文件夹 (1)"
# A separate Windows, which knows no folder of a developer.
export WINEPREFIX=$check/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" PATH=/usr/bin:/bin
unset WINEPATH
pods=()
clean_up() {
    [[ ${#pods[@]} -eq 0 ]] || kill "${pods[@]}" 2>/dev/null || true
    wineserver --kill || true
}
trap clean_up EXIT
wineboot --init >"$check/wine.log" 2>&1

fail() {
    echo "check-windows: $1" >&2
    exit 1
}

# await FILE: what a program that has ended leaves may come a moment later.
await() { # TEST FILE
    local limit=$((SECONDS + 60))
    until test "$@"; do
        [[ $SECONDS -lt $limit ]] || fail "in vain waited for: test $*"
        sleep 0.2
    done
}

echo "== the folder"
# The newest of this version: with the stand-in, or not.
zip=$(find build/packages -name "NacelleBench-$version-win64*.zip" -printf '%T@ %p\n' | sort -n | tail -n 1 | cut -d ' ' -f 2)
[[ -n $zip ]] || fail "there is no zip; scripts/package.sh windows makes it"
unzip -q "$zip" -d "$check/新 文件夹 (1)"
folder=$(echo "$check/新 文件夹 (1)"/*)
scripts/check-sbom.sh "$folder" sbom.spdx
[[ -e $folder/wireshark/nacelle.lua ]] || fail "the zip lacks the dissector for Wireshark"
[[ -e $folder/GCU私有通信协议.pdf ]] || fail "the zip's names aren't in UTF-8"
for program in $(programs_of own shared); do
    strings --encoding=l "$folder/$program.exe" | grep -qx "$version" || fail "$program.exe has no version to show"
    [[ $program == NacelleBench || $(wine "$folder/$program.exe" --version) == "$program $version"* ]] ||
        fail "$program is of another version"
done

# The tour comes from the build and isn't part of the package.
tour=$check/tour
cp -r "$folder" "$tour"
cp build/windows/bin/tour.exe "$(sed -n 's/^NACELLE_QT_ROOT:PATH=//p' build/windows/CMakeCache.txt)/bin/Qt5Test.dll" "$tour"
wine "$tour/tour.exe" --places | tr -d '\r' >"$check/places"

run_tour() { # LANGUAGE ARGUMENT...
    wine "$tour/tour.exe" --language "$@" --out "$check/pictures/tour" >"$check/tour-$1.log" 2>&1 || {
        cat "$check/tour-$1.log" >&2
        fail "the tour ends early"
    }
    grep 'came true' "$check/tour-$1.log"
}

echo "== the tour, against podsim.exe"
run_tour zh --without-video

build/release/bin/podsim --tcp --udp --rtsp >"$check/pod.log" &
pods+=($!)
await -s "$check/pod.log"
echo "== the tour with the video, against a pod on the Linux side"
run_tour en --pod-log "$(winepath -w "$check/pod.log")"
kill "${pods[0]}"
wait "${pods[0]}" || true
pods=()

echo "== the program, against podsim.exe and a picture from the Linux side"
wine "$folder/podsim.exe" --tcp --udp >"$check/pod-exe.log" &
pods+=($!)
build/release/bin/podsim --rtsp >"$check/pod.log" &
pods+=($!)
await -s "$check/pod-exe.log"
export STREAM=rtsp://127.0.0.1:8554/pod
drive() { # PARTS NAME FOLDER
    scripts/drive-bench.sh "$1" "$check/places" "$check/pod-exe.log" "$check/pictures/$2" wine "$3/NacelleBench.exe"
}
language_of() {
    wine "$1/nacelle-config.exe" show | tr -d '\r' | sed -n 's/^language: //p'
}
drive "links picture language" zip "$folder"
[[ $(language_of "$folder") == en ]] || fail "the language isn't saved"

echo "== an acceptance over TCP and UDP, with its report"
for kind in tcp udp; do
    report=$check/pictures/acceptance-$kind.pdf
    wine "$folder/nacelle-check.exe" $kind://127.0.0.1 --group link,protocol,commands --cycles 100 \
        --language zh --report "$(winepath -w "$report")" >"$check/acceptance.log" || {
        cat "$check/acceptance.log" >&2
        fail "a good pod doesn't pass over $kind"
    }
    pdftotext "$report" - | grep -q 校验 || fail "the report over $kind can't be read"
done

echo "== without the engines"
bare=$check/bare
cp -r "$tour" "$bare"
rm "$bare"/av*.dll
drive black no-ffmpeg "$bare"
wine "$bare/nacelle-config.exe" set engine libvlc >"$check/wine.log"
drive black no-libvlc "$bare"

echo "== libVLC where its installer puts it"
vlc="$WINEPREFIX/drive_c/Program Files/VideoLAN/VLC"
mkdir -p "$vlc"
cp build/windows/tests/video/libvlc.dll "$vlc"
wine reg add 'HKLM\Software\VideoLAN\VLC' /f /v InstallDir /d 'C:\Program Files\VideoLAN\VLC' >"$check/wine.log"
WINEDEBUG=+loaddll drive black installed-vlc "$bare"
grep -q 'VideoLAN.*libvlc.dll.*native' "$check/pictures/installed-vlc/program.log" || fail "libVLC isn't found"

echo "== the dissector, by the help's line"
# shellcheck disable=SC2016 # the backquotes are the help's
sed -n 's/^| Windows |[^`]*`\(xcopy [^`]*\)`.*/\1/p' docs/help.md | sort -u >"$check/install.bat"
(cd "$folder" && timeout 60 wine cmd /c "$(winepath -w "$check/install.bat")" >"$check/wine.log") ||
    fail "xcopy asks, or fails"
settings=$(find "$WINEPREFIX/drive_c/users" -type d -name Wireshark)
diff <(cd "$folder/wireshark" && find . -type f | sed 's,^./nacelle,./plugins/nacelle,' | sort) \
    <(cd "$settings" && find . -type f | sort) || fail "not all of wireshark is copied"

echo "== the installer"
wine "${zip%.zip}-setup.exe" /S
installed=$(find "$WINEPREFIX/drive_c/users" -type d -path '*/Programs/NacelleBench')
[[ -n $installed ]] || fail "nothing is installed"
diff <(cd "$folder" && find . -type f | sort) \
    <(cd "$installed" && find . -type f ! -name uninstall.exe | sort) || fail "other files are installed"
shortcut() { find "$WINEPREFIX/drive_c/users" -name NacelleBench.lnk; }
[[ -n $(shortcut) ]] || fail "the start menu hasn't got it"
drive language installed "$installed"
wine "${zip%.zip}-setup.exe" /S
[[ $(language_of "$installed") == en ]] || fail "an upgrade loses the saved file"
link=$(shortcut)
wine "$installed/uninstall.exe" /S
await ! -e "$link"
[[ $(ls "$installed") == controlConfig.ncl ]] || fail "uninstalling leaves more than the saved file, or less"
wine "${zip%.zip}-setup.exe" /S
[[ $(language_of "$installed") == en ]] || fail "installing anew loses the saved file"
wine "$installed/uninstall.exe" /S /PURGE
await ! -e "$installed"
await ! -e "$link"
if wine reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\NacelleBench' >"$check/wine.log" 2>&1; then
    fail "the registry keeps it"
fi
echo "The packages for Windows do what they should. Pictures: $check/pictures"
