#!/usr/bin/env bash
# Installs what is missing, builds and runs every test: once plain, once with AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")"
source scripts/packages.sh

requirePackages "${buildPackages[@]}" "${testPackages[@]}" "${desktopPackages[@]}"
mkdir -p build

# testIn FOLDER TITLE CMAKE_OPTION...
testIn() {
    local folder=$1 title=$2
    shift 2
    echo "== $title: building =="
    buildProgram "$folder" "$@"
    echo "== $title: testing =="
    ctest --test-dir "$folder" --output-on-failure --parallel 2 --timeout 300 2>&1 | tee "$folder.tests.log" |
        grep -vE '^QStandardPaths|^ *[0-9]+/[0-9]+ Test +#.* Passed |^ +Start +[0-9]+:' || true
    # A test that skips itself says why; these lines are for the reader, and no failure.
    grep -hE -A1 '^Skipped:|: Skipped$' "$folder/Testing/Temporary/LastTest.log" | grep -vE '^--$|: Skipped$|^<end of output>' |
        sed -E 's/^(Skipped: )?/Skipped: /' | sort -u || true
    grep -qE '^100% tests passed' "$folder.tests.log"
}

testIn build/test "Plain" -DCMAKE_BUILD_TYPE=Release -DWAGEMILL_TESTS=ON
testIn build/sanitized "With sanitizers" -DCMAKE_BUILD_TYPE=Debug -DWAGEMILL_SANITIZE=ON -DWAGEMILL_TESTS=ON
