#!/usr/bin/env bash
# Fuzzes with libFuzzer: tests/fuzz/run.sh RUNS [TARGET...]
# Builds in build/fuzz with clang and every sanitizer, then runs each target RUNS times, one after the other, with at
# most 256 MB. An input may take 1 second: the replay of seeds and findings in a plain build measures that. Here, with
# sanitizers and perhaps on a busy machine, 20 seconds raise the alarm. What coverage finds stays in build/fuzz/corpus for
# the next time. A finding is left in build/fuzz/findings, and ends the run with 1; fix it and keep the input under
# tests/fuzz/inputs/TARGET. Ends with 77 when there is no clang or no libFuzzer.
set -euo pipefail

# In a function, so that an edit of this file leaves a run of hours alone.
main() {
    cd "$(dirname "$0")/../.."

    local -A maxInput=([NumberText]=64 [NumberFormat]=96 [TypedText]=160 [FormulaTokens]=256 [DrawingFile]=512
                             [WorkbookFile]=5120)
    runs=${1:?how many runs each?}
    shift
    targets=("$@")
    [ $# -gt 0 ] || targets=("${!maxInput[@]}")

    compiler=$(command -v clang++ || command -v clang++-14 || true)
    if [ -z "$compiler" ] || ! echo 'extern "C" int LLVMFuzzerTestOneInput(const char*, long) { return 0; }' |
        "$compiler" -xc++ -fsanitize=fuzzer -o /dev/null - 2>/dev/null; then
        echo "Skipped: clang with libFuzzer, which fuzzes, is not installed"
        exit 77
    fi

    build=build/fuzz
    mkdir -p build
    cmake --preset fuzz -DCMAKE_CXX_COMPILER="$compiler" >"$build.log" 2>&1 || { cat "$build.log"; exit 1; }
    cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}" >>"$build.log" 2>&1 || { tail -50 "$build.log"; exit 1; }

    export QT_QPA_PLATFORM=offscreen
    export ASAN_OPTIONS=quarantine_size_mb=8:allocator_release_to_os_interval_ms=500 # memory is to be what the program takes
    mkdir -p "$build/findings"
    failed=0
    for target in "${targets[@]}"; do
        corpus="$build/corpus/$target"
        mkdir -p "$corpus"
        options=(-runs="$runs" -max_len="${maxInput[$target]}" -timeout=20 -rss_limit_mb=256
                 -print_final_stats=1 -artifact_prefix="$build/findings/$target-")
        started=$SECONDS
        if "$build/tests/fuzz/fuzz_$target" "${options[@]}" "$corpus" "$build/tests/fuzz/seeds/$target" \
            >"$build/$target.log" 2>&1; then
            echo "$target: no finding in $runs runs, $((SECONDS - started)) s; $(grep -oE 'cov: [0-9]+' "$build/$target.log" |
                tail -1), largest memory $(sed -n 's/^stat::peak_rss_mb: *//p' "$build/$target.log") MB"
        else
            echo "$target: a finding"
            tail -40 "$build/$target.log"
            failed=1
        fi
    done
    exit $failed
}
main "$@"
