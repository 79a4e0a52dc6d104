#!/usr/bin/env bash
# Renews docs/protocol.en.md and docs/protocol.zh.md from their templates and the program's tables.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh build
scripts/build.sh core protocoldoc
for language in en zh; do
    target=docs/protocol.$language.md
    build/core/bin/protocoldoc "$language" data docs/protocol-notes.txt \
        "docs/templates/protocol.$language.md" "$target"
    # Classes of headings serve the PDF file only; a reader of the text would see the braces.
    sed -i 's/^\(#.*\) {\.[a-z]*}$/\1/' "$target"
done
