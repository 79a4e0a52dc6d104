#!/usr/bin/env bash
# Formats all C++ sources of the project, or with --check says which ones are not formatted.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mode=(-i)
if [[ ${1:-} == --check ]]; then
    mode=(--dry-run --Werror)
fi
find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format "${mode[@]}"
