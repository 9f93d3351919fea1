#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, into build/fuzz) when needed and runs one or all of them from
# their seed corpora in fuzz/corpus/<target>/, SECONDS each (20 by default). Prints per target the
# executions, the coverage (libFuzzer's "cov:") and the findings; exits 1 when any target found one.
#   scripts/fuzz.sh [TARGET] [SECONDS]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
only="${1:-}"
seconds="${2:-20}"
dir="$root/build/fuzz"
if ! command -v clang++ >/dev/null 2>&1; then
    echo "fuzz.sh: clang++ is not installed" >&2
    exit 2
fi
gen=()
command -v ninja >/dev/null 2>&1 && gen=(-G Ninja)
if [ ! -f "$dir/CMakeCache.txt" ]; then
    CC=clang CXX=clang++ cmake -S "$root" -B "$dir" "${gen[@]}" -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTOLVANE_FUZZ=ON -DTOLVANE_TESTS=OFF >/dev/null
fi
jobs="$(nproc 2>/dev/null || echo 2)"
[ "$jobs" -gt 2 ] && jobs=2
if [ -n "$only" ]; then
    cmake --build "$dir" -j "$jobs" --target "fuzz_$only"
    targets=("$only")
else
    cmake --build "$dir" -j "$jobs" --target fuzz
    targets=()
    for f in "$root"/fuzz/*.cpp; do targets+=("$(basename "$f" .cpp)"); done
fi

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export QT_QPA_PLATFORM=offscreen
found=0
printf '%-18s %12s %8s  %s\n' target executions cov findings
for t in "${targets[@]}"; do
    seeds="$root/fuzz/corpus/$t"
    work="$dir/corpus/$t"
    art="$dir/findings/$t"
    rm -rf "$art"
    mkdir -p "$work" "$art"
    log="$dir/$t.log"
    set +e
    # The seeds are read; what the run adds goes to build/fuzz, so the repository's corpus stays small.
    "$dir/fuzz/fuzz_$t" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$art/" \
        -timeout=25 -rss_limit_mb=4096 "$work" "$seeds" >"$log" 2>&1
    rc=$?
    set -e
    execs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1 || true)"
    cov="$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -d' ' -f2 || true)"
    n="$(find "$art" -type f | wc -l)"
    printf '%-18s %12s %8s  %s\n' "$t" "${execs:-?}" "${cov:-?}" "$n"
    if [ "$rc" -ne 0 ] || [ "$n" -ne 0 ]; then
        found=1
        echo "  see $log and $art/" >&2
    fi
done
exit "$found"
