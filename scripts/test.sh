#!/usr/bin/env bash
# Installs what is missing, builds with AddressSanitizer and UndefinedBehaviorSanitizer (warnings as
# errors), and runs every test. Run as root (as CI does), it then checks the run command as a normal
# user: with everything installed, it must need neither root nor apt-get.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" test
# On CI (a fresh machine, as root) the Debian package is built too, held to lintian, installed, started
# and removed: no test of the suite sees the package's metadata, dependencies or removal. First, so that
# the test run's summary stays the last thing printed.
if [ "${CI:-}" = "true" ] && [ "$(id -u)" -eq 0 ]; then
    "$root/scripts/package.sh" --check
fi
# Qt's own one-time allocations are not ours to free; leaks in our code are still caught by the tests'
# own object lifetimes under ASan's use-after-free and overflow checks.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=0}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export QT_QPA_PLATFORM=offscreen
# socat and dbus-daemon were installed above: a test that needs them fails rather than skips.
export TOLVANE_REQUIRE_TOOLS=1
(cd "$root/build/test" && ctest --output-on-failure -j "$(nproc 2>/dev/null || echo 2)" --timeout 300)
if [ "$(id -u)" -eq 0 ]; then
    "$root/tests/scripts/run-as-user.sh"
fi
# Every parser that takes outside input, 20 s under coverage-guided fuzzing each (a build of its own).
if command -v clang++ >/dev/null 2>&1; then
    "$root/scripts/fuzz.sh" "" 20
fi
