#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks to build, run and test Tolvane. When everything is
# there it installs nothing and needs no root. Otherwise it runs apt-get as root or through sudo; with
# neither, it names the packages, gives the command to install them, and stops.
#
#   scripts/install-deps.sh           install what is missing
#   scripts/install-deps.sh --check   print the missing packages, one a line; exit 1 if there are any
set -euo pipefail
pkgs=(build-essential cmake ninja-build pkg-config
      qt6-base-dev qt6-base-dev-tools qt6-serialport-dev libqt6serialport6-dev qt6-qpa-plugins qt6-httpserver-dev qt6-websockets-dev
      libgtest-dev libgmock-dev libbenchmark-dev
      socat dbus dbus-x11 xvfb xauth clang-format clang libclang-rt-14-dev
      desktop-file-utils appstream man-db lintian file xdg-utils
      libhamlib-utils python3-hamlib)

# A name is there when an installed package has it, or provides it (some -dev names are only
# provided: libqt6serialport6-dev by qt6-serialport-dev).
declare -A have=()
while IFS='|' read -r status name provides; do
    [ "${status:1:1}" = i ] || continue  # "ii", "hi": installed
    have[$name]=1
    IFS=',' read -ra provided <<<"$provides"
    for p in "${provided[@]}"; do
        p="${p#"${p%%[![:space:]]*}"}"  # "libfoo-dev (= 1.2)" -> "libfoo-dev"
        p="${p%% *}"
        [ -n "$p" ] && have[${p%%:*}]=1
    done
done < <(dpkg-query -W -f='${db:Status-Abbrev}|${Package}|${Provides}\n' 2>/dev/null || true)

missing=()
for p in "${pkgs[@]}"; do
    [ -n "${have[$p]:-}" ] || missing+=("$p")
done
if [ "${1:-}" = --check ]; then
    [ ${#missing[@]} -eq 0 ] || printf '%s\n' "${missing[@]}"
    [ ${#missing[@]} -eq 0 ]
    exit
fi
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$EUID" -eq 0 ]; then
    as_root=(env DEBIAN_FRONTEND=noninteractive)
elif command -v sudo >/dev/null 2>&1; then
    as_root=(sudo env DEBIAN_FRONTEND=noninteractive)
else
    {
        echo "install-deps.sh: Tolvane needs packages that are not installed: ${missing[*]}"
        echo "There is no sudo here: ask someone with root to run"
        echo "    apt-get update && apt-get install --no-install-recommends ${missing[*]}"
        echo "then run this again."
    } >&2
    exit 1
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
