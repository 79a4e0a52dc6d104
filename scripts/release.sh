#!/usr/bin/env bash
# What the packaging scripts have in common: to be sourced from the top of the checkout.

version=$(sed -n 's/^project(NacelleBench VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
# A release's files are as old as its entry in the changelog says, wherever it is built.
release_day=$(sed -n "s/^## $version (\([0-9-]*\))$/\1/p" CHANGELOG.md)
if [[ -z $version || -z $release_day ]]; then
    echo "CHANGELOG.md has no entry '## ${version:-?} (YYYY-MM-DD)'" >&2
    exit 1
fi
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(date --utc --date "$release_day" +%s)}
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8

# Whose all of this is.
holders() {
    sed -n 's/^Copyright: //p' .reuse/dep5
}

# programs_of KIND...: the programs of a release whose kind is one of these.
programs_of() {
    local name kind
    while read -r name kind _; do
        [[ " $* " != *" $kind "* ]] || echo "$name"
    done < <(grep -v '^#' packaging/programs)
}
