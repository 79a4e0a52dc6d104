#!/usr/bin/env bash
# clang-format, clang-tidy, cppcheck, shellcheck and luacheck over all that is ours, and reuse on whose it is.
# Ends with 0 when there are no findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh build bench stream lint wireshark
failed=0

sources() {
    find . -path ./build -prune -o -name "$1" -print0
}

echo "== clang-format"
scripts/format.sh --check || failed=1

echo "== permitted includes"
scripts/check-edges.sh || failed=1

echo "== clang-tidy"
# A separate build folder with all there is, of which only the generated sources are made.
cmake --preset dev -B build/lint -DNACELLE_BENCH=ON -DNACELLE_FUZZ=ON >/dev/null
ninja -C build/lint -t targets all | sed -n 's/^\(.*_autogen\): phony$/\1/p' |
    xargs ninja -C build/lint --quiet
# What is compiled here: another platform's files or a missing package's have no flags to go by.
sed -n 's/^ *"file": "\(.*\)",\?$/\1/p' build/lint/compile_commands.json | grep -v "^$PWD/build/" |
    sort -u | tr '\n' '\0' |
    xargs -0 -n 2 -P "$(nproc)" clang-tidy -p build/lint --quiet 2>/dev/null || failed=1

echo "== cppcheck"
# passedByValue: the slots' signatures are what they are.
sources '*.cpp' |
    xargs -0 cppcheck -j "$(nproc)" --quiet --std=c++17 --library=qt --inline-suppr \
        --error-exitcode=1 --enable=warning,performance,portability \
        --suppress=missingIncludeSystem --suppress=unknownMacro --suppress=passedByValue \
        -I . || failed=1

echo "== shellcheck"
sources '*.sh' | xargs -0 shellcheck .ci/run || failed=1

echo "== luacheck"
ninja -C build/lint --quiet dissector
luacheck --quiet build/lint/wireshark/nacelle.lua || failed=1

echo "== reuse"
reuse lint --quiet || failed=1

if [[ $failed -eq 0 ]]; then
    echo "No findings."
fi
exit "$failed"
