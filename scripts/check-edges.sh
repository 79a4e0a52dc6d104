#!/usr/bin/env bash
# Holds every #include against the table of permitted edges in docs/architecture.md, and looks that
# CMake lists every header of product and tools. Ends with 0 when nothing is found.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

git grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<](\.\./)*(foundation|protocol|shell|console|video|tools|tests|bench|fuzz)/' -- '*.h' '*.cpp' '*.inl' | awk -F'[`|]' '
    # What CMakeLists.txt lists before the tools is nacelle_core.
    FILENAME == "CMakeLists.txt" { n = split($0, words, /[ ]+/); for (i in words) core[words[i]] = 1; next }
    FILENAME ~ /architecture/ { if (/^\| `[a-z\/+]+` \|/) { row = $3; sub(/^[^|]*\| `[^|]*\| /, ""); may[row] = $0 } next }
    {
        split($0, at, ":"); gsub(/[<>]/, "\""); split($0, quoted, "\""); sub(/^(\.\.\/)+/, "", quoted[2])
        from = room(at[1]); to = room(quoted[2])
        if (from == to || index(may[from], "`" to "`") || index(may[from], "`*`"))
            next
        if (at[1] ~ /\.cpp$/ && index(may[from], "`" quoted[2] "`"))
            next
        print at[1] ":" at[2] ": " from " may not include " quoted[2]
        failed = 1
    }
    function room(file, parts) {
        split(file, parts, "/")
        if (parts[1] == "tools") return parts[1] "/" parts[2]
        if (parts[1] !~ /^(foundation|protocol|shell|console|video)$/) return parts[1]
        return parts[1] (file in core ? "" : "+")
    }
    END { exit failed }
' CMakeLists.txt docs/architecture.md -

unlisted=$(git ls-files '*.h' '*.inl' ':!tests' ':!bench' ':!fuzz' | while read -r header; do
    git grep -qF "${header##*/}" -- 'CMakeLists.txt' '*/CMakeLists.txt' 'cmake' || echo "$header"
done)
if [[ -n $unlisted ]]; then
    echo "No CMakeLists.txt lists: $unlisted"
    exit 1
fi
