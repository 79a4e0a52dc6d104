#!/usr/bin/env bash
# Makes the Debian package of the portable folder FOLDER in WORK/folder: the programs in their
# places, the launcher, and what a desktop wants. Called by scripts/package.sh.
# Usage: packaging/debian/make.sh WORK TARGET
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

work=$1
target=$2
folder=$work/folder
source=$work/nacellebench-$version
own=$PWD/packaging/debian
mkdir -p "$source"
cp -r "$own/debian" "$source/debian"
cp .reuse/dep5 "$source/debian/copyright"
sed -n '/^Permission is hereby/,$p' LICENSE | sed 's/^$/./; s/^/ /' >"$work/mit"
printf '\nLicense: MIT\n' | cat - "$work/mit" >>"$source/debian/copyright"

# The entries of the changelog as Debian writes them.
{
    maintainer=$(sed -n 's/^Maintainer: //p' "$own/debian/control")
    while read -r number day; do
        printf 'nacellebench (%s) unstable; urgency=medium\n\n' "$number"
        printf '  * Changes of %s: /usr/share/doc/nacellebench/CHANGELOG.md\n\n' "$number"
        printf ' -- %s  %s\n\n' "$maintainer" "$(date --utc --rfc-email --date "$day")"
    done < <(sed -n 's/^## \([0-9.]*\) (\([0-9-]*\))$/\1 \2/p' CHANGELOG.md)
} >"$source/debian/changelog"

# Programs where the machine's own files lie, what is the same for every machine beside them.
root=$source/root
lib=$root/usr/lib/nacellebench
share=$root/usr/share/nacellebench
man=$root/usr/share/man/man1
completions=$root/usr/share/bash-completion/completions
icons=$root/usr/share/icons/hicolor/scalable/apps
mkdir -p "$root/usr/bin" "$lib" "$share" "$man" "$completions" "$icons" \
    "$root/usr/share/applications" "$root/usr/share/metainfo"
cp "$folder"/*.ini "$folder"/*.pdf "$share"
cp "$folder/controlConfig.ncl" "$share/controlConfig.first"
mkdir -p "$lib/own"
install "$own/launcher.sh" "$lib/launcher"
for program in $(programs_of own); do
    install "$folder/$program" "$lib/own"
    ln -s ../lib/nacellebench/launcher "$root/usr/bin/${program,,}"
done
for program in $(programs_of shared); do
    install "$folder/$program" "$lib"
    ln -s "../lib/nacellebench/$program" "$root/usr/bin/$program"
done
# Wireshark finds its plugin and its profiles where those of the system lie.
plugins=$root/usr/lib/$(dpkg-architecture --query DEB_HOST_MULTIARCH)/wireshark/plugins
mkdir -p "$plugins" "$root/usr/share/wireshark"
cp "$folder/wireshark/nacelle.lua" "$plugins"
cp -r "$folder/wireshark/profiles" "$root/usr/share/wireshark"
cp "$own/nacellebench.desktop" "$root/usr/share/applications"
cp "$own"/*.metainfo.xml "$root/usr/share/metainfo"
sed -i "s/@VERSION@/$version/; s/@DAY@/$release_day/" "$root"/usr/share/metainfo/*.xml
cp resources/svg/pod.svg "$icons/nacellebench.svg"

# The bench takes no options and so has no --help to make a page of; its own is written by hand.
sed "s/@VERSION@/$version/; s/@DAY@/$release_day/" "$own/nacellebench.1" >"$man/nacellebench.1"
while read -r program _ text; do
    [[ $program != NacelleBench ]] || continue
    help2man --locale=C.UTF-8 --no-info --name "$text" --version-string "$version" --source NacelleBench \
        "$folder/$program" >"$man/$program.1"
    ln -s nacellebench "$completions/$program"
done < <(grep -v '^#' packaging/programs)
# The tool with verbs has a page for each of them.
wire=$folder/nacelle-wire
while read -r verb text; do
    help2man --locale=C.UTF-8 --no-info --name "$text" --help-option "$verb --help" --version-string "$version" \
        --source NacelleBench "$wire" >"$man/nacelle-wire-$verb.1"
done < <("$wire" --help | sed -n 's/^  \([a-z]*\)  *\([a-z].*\)/\1 \2/p')
tools=$(programs_of own shared | grep -v NacelleBench | paste -s -d ' ')
sed "s/@TOOLS@/$tools/" "$own/completion.bash" >"$completions/nacellebench"

(cd "$source" && NACELLE_RELEASE="$OLDPWD" dpkg-buildpackage --build=binary --no-sign --no-check-builddeps) \
    >"$work/debhelper.log" 2>&1 || {
    cat "$work/debhelper.log" >&2
    exit 1
}
mv "$work"/nacellebench_"$version"_*.deb "$target"
echo "Made: $(echo "$target"/nacellebench_"$version"_*.deb)"
