#!/usr/bin/env bash
# Makes the packages that lie in build/packages once more, from the same sources in another folder and
# without a compiler cache: each has to have the same bytes.
# Usage: scripts/check-reproducible.sh [windows] [deb] [tar]      (by default all of them)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

kinds=("$@")
[[ $# -gt 0 ]] || kinds=(windows deb tar)
kit=$(realpath --canonicalize-missing ../shared/windows-kit.tar.xz)
here=$PWD/build/packages
other=$(mktemp -d --suffix -nacellebench-elsewhere)
trap 'rm -rf "$other"' EXIT
git ls-files -z | xargs -0 cp --parents --no-dereference -t "$other"

export CCACHE_DISABLE=1
for kind in "${kinds[@]}"; do
    options=()
    [[ $kind != windows ]] || options=(--kit "$kit")
    "$other/scripts/package.sh" "$kind" "${options[@]}" >"$other/$kind.log" 2>&1 || {
        cat "$other/$kind.log" >&2
        exit 1
    }
done
failed=0
for package in "$other"/build/packages/*; do
    if cmp "$package" "$here/${package##*/}"; then
        echo "the same bytes: ${package##*/}"
    else
        failed=1
    fi
done
exit "$failed"
