#!/usr/bin/env bash
# Whether a release's list of files names every file of a folder, with its sum, and nothing else.
# Usage: scripts/check-sbom.sh FOLDER FILE
set -euo pipefail

diff <(awk '/^FileName: / { sub(/^FileName: /, ""); name = $0 }
            /^FileChecksum: SHA256: / { print $3 "  " name }' "$1/$2" | sort) \
    <(cd "$1" && find . -type f ! -path "./$2" -exec sha256sum {} + | sort) || {
    echo "check-sbom: $2 and $1 differ" >&2
    exit 1
}
