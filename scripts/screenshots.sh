#!/usr/bin/env bash
# Pictures of the main, configuration and monitor windows, taken under Xvfb while the demo radio runs,
# into docs/screenshots/ (for the README).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" release
out="$root/docs/screenshots"
mkdir -p "$out"
xvfb-run -a -s "-screen 0 1600x1200x24" "$root/build/release/tolvane" --demo --screenshots "$out" >/dev/null
ls -1 "$out"
