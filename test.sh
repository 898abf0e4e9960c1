#!/usr/bin/env bash
# Installs what is missing, builds and runs every test: plain, for Windows under Wine where its tools are installed, and
# with AddressSanitizer and UndefinedBehaviorSanitizer. A stage that fails does not keep the next from running.
# usage: ./test.sh [--long]       --long: the tests of faults try everything rather than a part of it, and fuzz (a day)
set -euo pipefail
cd "$(dirname "$0")"
source scripts/packages.sh

case "${1:-}" in
"") ;;
--long) export WAGEMILL_LONG=1 ;;
*)
    echo "usage: ./test.sh [--long]" >&2
    exit 2
    ;;
esac

requirePackages "${buildPackages[@]}" "${testPackages[@]}" "${desktopPackages[@]}" "${benchmarkPackages[@]}"
mkdir -p build

# runTests PRESET TITLE
runTests() {
    local preset=$1 title=$2 log=build/$1.tests.log
    echo "== $title: testing =="
    ctest --preset "$preset" ${WAGEMILL_LONG:+--timeout 86400} 2>&1 | tee "$log" |
        grep -vE '^QStandardPaths|^ *[0-9]+/[0-9]+ Test +#.* Passed |^ +Start +[0-9]+:' || true
    # A test that skips itself says why; these lines are for the reader, and no failure.
    grep -hE -A1 '^Skipped:|: Skipped$' "$(sed -n 's/^Test project //p' "$log")/Testing/Temporary/LastTest.log" |
        grep -vE '^--$|: Skipped$|^<end of output>' | sed -E 's/^(Skipped: )?/Skipped: /' | sort -u || true
    grep -qE '^100% tests passed' "$log"
}

# buildAndTest PRESET TITLE
buildAndTest() {
    echo "== $2: building =="
    buildPreset "$1" && runTests "$1" "$2"
}

# whyNotForWindows: what the tests for Windows lack; nothing when they can run.
whyNotForWindows() {
    local lacking=()
    mapfile -t lacking < <(missingPackages "${windowsBuildPackages[@]}" "${windowsTestPackages[@]}")
    [ -d "${QT_WINDOWS_PREFIX:-build/windows/qt-windows}" ] || lacking+=("Qt for Windows (packaging/windows/build-qt.sh)")
    (IFS=,; echo "${lacking[*]}")
}

testForWindows() {
    local lacking
    lacking=$(whyNotForWindows)
    if [ -n "$lacking" ]; then
        echo "Skipped: the tests for Windows, because these are missing: ${lacking//,/, }"
        return 0
    fi
    echo "== For Windows: building =="
    local tools=build/test/resources
    [ -x $tools/template_builder ] || tools= # the native build failed; the Windows one makes its own
    WAGEMILL_HOST_TOOLS=$tools packaging/windows/build.sh --with-tests && runTests windows "For Windows"
}

fuzz() {
    echo "== Fuzzing =="
    tests/fuzz/run.sh 10000000 || [ $? = 77 ] # it says what is missing
}

failed=()

# stage TITLE COMMAND...
stage() {
    local title=$1 start=$SECONDS
    shift
    "$@" || failed+=("$title")
    echo "== $title: $((SECONDS - start)) s =="
}

stage "Plain" buildAndTest test "Plain"
stage "For Windows" testForWindows
stage "With sanitizers" buildAndTest sanitized "With sanitizers"
[ -z "${WAGEMILL_LONG:-}" ] || stage "Fuzzing" fuzz

if [ ${#failed[@]} -ne 0 ]; then
    printf 'Failed: %s\n' "${failed[@]}" >&2
    exit 1
fi
echo "All stages passed."
