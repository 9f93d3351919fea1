#!/usr/bin/env bash
# Installs what is missing, builds, and starts Tolvane. Extra arguments go to the program.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" release
if [ $# -eq 0 ]; then set -- --demo; fi
exec "$root/build/release/tolvane" "$@"
