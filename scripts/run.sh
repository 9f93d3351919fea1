#!/usr/bin/env bash
# Installs what is missing, builds, and starts Tolvane. Extra arguments go to the program; without any,
# it starts the demo (a simulated radio). It runs in its window when there is a display, headless otherwise.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" release
if [ $# -eq 0 ]; then set -- --demo; fi
# With no display the window can't open, whatever else was asked: run headless instead.
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [[ " $* " != *" --headless "* ]]; then
    echo "run.sh: no display here, so Tolvane runs headless (on a desktop it opens its window)."
    set -- "$@" --headless
fi
exec "$root/build/release/tolvane" "$@"
