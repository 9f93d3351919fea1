#!/usr/bin/env bash
# Configures and builds one flavour into build/<name>: "release" (the program) or "test" (sanitizers,
# warnings as errors, with the tests).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
flavour="${1:-release}"
jobs="$(nproc 2>/dev/null || echo 2)"
case "$flavour" in
    release) args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLVANE_TESTS=OFF) ;;
    test)    args=(-DCMAKE_BUILD_TYPE=Debug -DTOLVANE_WERROR=ON -DTOLVANE_SANITIZE=ON -DTOLVANE_TESTS=ON) ;;
    *) echo "usage: build.sh release|test" >&2; exit 2 ;;
esac
gen=()
command -v ninja >/dev/null 2>&1 && gen=(-G Ninja)
dir="$root/build/$flavour"
if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S "$root" -B "$dir" "${gen[@]}" "${args[@]}"
else
    cmake -S "$root" -B "$dir" "${args[@]}" >/dev/null
fi
cmake --build "$dir" -j "$jobs"
