#!/usr/bin/env bash
# Tries the Debian package and the portable folder in a fresh Debian, as a plain user on a virtual
# screen: Chinese letters, both links, a picture from podsim, the language over a restart, an upgrade,
# the purge. Needs what `scripts/package.sh deb` and `scripts/package.sh tar` have made, and root's
# rights. Pictures are left in build/check-debian/pictures.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

if [[ ${1:-} != inside ]]; then
    scripts/install-deps.sh screen drive debian release
    scripts/build.sh release NacelleBench tour
    exec scripts/virtual-screen.sh "$0" inside
fi

check=$PWD/build/check-debian
debian=$check/debian
package=$(find build/packages -name "nacellebench_${version}_*.deb")
folder=$(find build/packages -name "NacelleBench-$version-linux-*.tar.xz")
rm -rf "$check"
mkdir -p "$check/pictures"
pod=
clean_up() {
    [[ -z $pod ]] || kill "$pod" 2>/dev/null || true
}
trap clean_up EXIT

fail() {
    echo "check-debian: $1" >&2
    exit 1
}

echo "== what the checkers say"
lintian --allow-root --fail-on error,warning "$package"
mkdir "$check/unpacked"
dpkg-deb -x "$package" "$check/unpacked"
desktop-file-validate "$check"/unpacked/usr/share/applications/*.desktop
appstreamcli validate --no-net "$check"/unpacked/usr/share/metainfo/*.xml
scripts/check-sbom.sh "$check/unpacked" usr/share/doc/nacellebench/sbom.spdx
for program in $(programs_of own shared); do
    [[ -e $check/unpacked/usr/bin/${program,,} && -e $check/unpacked/usr/share/man/man1/${program,,}.1.gz ]] ||
        fail "$program isn't on the path, or has no man page"
done

for font in fonts-wqy-microhei fonts-dejavu-core; do
    compgen -G "$check/unpacked/usr/share/doc/nacellebench/licenses/$font.txt*" >/dev/null ||
        fail "the licence of $font in the documents isn't there"
done
for file in lib/*/wireshark/plugins/nacelle.lua share/wireshark/profiles/{NacelleBench,云台报文工作台}/preferences; do
    compgen -G "$check/unpacked/usr/$file" >/dev/null || fail "Wireshark wouldn't find $file"
done

echo "== a fresh Debian"
# By the sources of this machine.
mapfile -t sources < <(find /etc/apt/sources.list* -name '*.sources' -o -name '*.list' | sort)
# shellcheck disable=SC2016 # $1 is the hook's
mmdebstrap --quiet --variant=minbase \
    --customize-hook="upload $package /tmp/nacellebench.deb" \
    --customize-hook='chroot "$1" apt-get install -y -qq --no-install-recommends /tmp/nacellebench.deb' \
    "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$debian" "${sources[@]}" >"$check/debian.log" 2>&1 || {
    tail -n 20 "$check/debian.log" >&2
    fail "the package can't be installed"
}
install -d -o 1000 -g 1000 "$debian/home/user"
# The screen of this machine is reached by the network's name space, which both have in common.
user=(chroot --userspec=1000:1000 "$debian" env -i HOME=/home/user PATH=/usr/bin:/bin LANG=C.UTF-8
    DISPLAY="$DISPLAY")
own=/home/user/.local/share/nacellebench

build/release/bin/tour --places >"$check/places"
start_pod() {
    "${user[@]}" podsim --tcp --udp --rtsp >"$check/pod.log" &
    pod=$!
    until grep -q rtsp "$check/pod.log"; do
        kill -0 "$pod" || fail "podsim doesn't run"
        sleep 0.2
    done
}
export STREAM=rtsp://127.0.0.1:8554/pod
drive() { # PARTS NAME PROGRAM...
    scripts/drive-bench.sh "$1" "$check/places" "$check/pod.log" "$check/pictures/$2" "${@:3}"
}

echo "== the package, by a plain user"
start_pod
drive "links picture language" package "${user[@]}" nacellebench
"${user[@]}" nacelle-config show | grep -q '^language: en' || fail "the language isn't saved"

# The same letters as here, where the font is known to be there: boxes in their place would differ.
drive "" here build/release/bin/NacelleBench
differing=$(compare -metric AE -fuzz 20% -extract 480x50+0+20 \
    "$check/pictures/package/start.png" "$check/pictures/here/start.png" null: 2>&1 || true)
[[ $differing -lt 200 ]] || fail "the letters differ from those here: $differing points"

echo "== an upgrade"
"${user[@]}" sh -c "echo changed:1,2,3 >$own/ModelMap.ini"
newer=$check/newer
dpkg-deb -R "$package" "$newer"
sed -i "s/^Version: .*/Version: $version+1/" "$newer/DEBIAN/control"
for file in lib/nacellebench/own/nacelle-config share/nacellebench/{ModelMap,LanguageMap}.ini; do
    echo newer >>"$newer/usr/$file"
done
dpkg-deb -b "$newer" "$debian/tmp/newer.deb" >"$check/debian.log"
chroot "$debian" dpkg -i /tmp/newer.deb >"$check/debian.log"
"${user[@]}" nacelle-config show | grep -q '^language: en' || fail "an upgrade loses the saved file"
[[ $(cat "$debian$own/ModelMap.ini") == changed:1,2,3 ]] || fail "an upgrade loses a changed text file"
for file in nacelle-config LanguageMap.ini; do
    [[ $(tail -c 6 "$debian$own/$file") == newer ]] || fail "an upgrade leaves the old $file"
done

echo "== the purge"
kill "$pod"
wait "$pod" || true
pod=
chroot "$debian" dpkg --purge nacellebench >"$check/purge.log" 2>&1
! grep -i warning "$check/purge.log" || fail "the purge isn't clean"
left=$(find "$debian" -xdev -iname '*nacelle*' ! -path "$debian/tmp/*" ! -path "$debian/home/*" ! -path "$debian/proc/*")
[[ -z $left ]] || fail "the purge leaves: $left"

echo "== the portable folder"
tar -xf "$folder" -C "$debian/home/user" --no-same-owner
portable=$(echo "$debian"/home/user/NacelleBench-*)
scripts/check-sbom.sh "$portable" sbom.spdx
chown -R 1000:1000 "$portable"
portable=${portable#"$debian"}
"${user[@]}" "$portable/podsim" --tcp --udp --rtsp >"$check/pod.log" &
pod=$!
drive "links picture language" portable "${user[@]}" "$portable/NacelleBench"
"${user[@]}" "$portable/nacelle-config" show | grep -q '^language: en' || fail "the language isn't saved"
echo "The packages for Debian do what they should. Pictures: $check/pictures"
