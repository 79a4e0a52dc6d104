#!/usr/bin/env bash
# Makes the PDF files that the program's menu opens, beside the program in build/release/bin.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh build fonts documents
# Configured anew in any case: a converter that has just been installed wants to be found.
cmake --preset release
cmake --build --preset release --target documents
