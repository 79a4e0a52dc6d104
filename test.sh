#!/usr/bin/env bash
# Builds and tests. Without an argument: preset dev. Arguments name presets (dev, core, asan, tsan,
# release), or all for the first four; the last one named closes the run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

presets=("$@")
if [[ ${#presets[@]} -eq 0 ]]; then
    presets=(dev)
elif [[ ${presets[*]} == all ]]; then
    presets=(core tsan asan dev)
fi

scripts/install-deps.sh build fonts screen stream papers
for preset in "${presets[@]}"; do
    scripts/build.sh "$preset"
    ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error
done
