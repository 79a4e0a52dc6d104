#!/usr/bin/env bash
# Runs the tests of nacelle_core under valgrind's memcheck, which sees reads of what was never
# written; the sanitizers don't. Ends with 0 when there are no findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh build memcheck
scripts/build.sh core
# A program of ours takes no arguments here; what has some is a script about another's program.
mapfile -t tests < <(ctest --preset core -N -V | sed -n 's/^[0-9]*: Test command: \([^"]*\)$/\1/p')
if [[ ${#tests[@]} -eq 0 ]]; then
    echo "memcheck: ctest knows of no test" >&2
    exit 1
fi
# Compiled expressions read whole words on purpose.
export QT_ENABLE_REGEXP_JIT=0
failed=0
for test in "${tests[@]}"; do
    echo "== ${test##*/}"
    valgrind --quiet --error-exitcode=1 --suppressions=tests/support/memcheck.supp \
        "$test" -silent || failed=1
done
if [[ $failed -eq 0 ]]; then
    echo "No findings."
fi
exit "$failed"
