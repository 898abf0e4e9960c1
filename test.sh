#!/usr/bin/env bash
# Installs what is missing, builds and runs every test: plain, with AddressSanitizer and UndefinedBehaviorSanitizer, and
# for Windows under Wine where its tools are installed.
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

# runTests FOLDER TITLE
runTests() {
    local folder=$1 title=$2 limit=300
    [ -n "${WAGEMILL_LONG:-}" ] && limit=86400
    echo "== $title: testing =="
    ctest --test-dir "$folder" --output-on-failure --parallel 2 --timeout $limit 2>&1 | tee "$folder.tests.log" |
        grep -vE '^QStandardPaths|^ *[0-9]+/[0-9]+ Test +#.* Passed |^ +Start +[0-9]+:' || true
    # A test that skips itself says why; these lines are for the reader, and no failure.
    grep -hE -A1 '^Skipped:|: Skipped$' "$folder/Testing/Temporary/LastTest.log" | grep -vE '^--$|: Skipped$|^<end of output>' |
        sed -E 's/^(Skipped: )?/Skipped: /' | sort -u || true
    grep -qE '^100% tests passed' "$folder.tests.log"
}

# testIn FOLDER TITLE CMAKE_OPTION...
testIn() {
    local folder=$1 title=$2
    shift 2
    echo "== $title: building =="
    buildProgram "$folder" "$@"
    runTests "$folder" "$title"
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
    WAGEMILL_HOST_TOOLS=build/test/resources packaging/windows/build.sh --with-tests
    runTests build/windows/app "For Windows"
}

testIn build/test "Plain" -DCMAKE_BUILD_TYPE=Release -DWAGEMILL_TESTS=ON -DWAGEMILL_BENCHMARKS=ON
testIn build/sanitized "With sanitizers" -DCMAKE_BUILD_TYPE=Debug -DWAGEMILL_SANITIZE=ON -DWAGEMILL_TESTS=ON
testForWindows
if [ -n "${WAGEMILL_LONG:-}" ]; then
    echo "== Fuzzing =="
    tests/fuzz/run.sh 10000000 || [ $? = 77 ] # it says what is missing
fi
