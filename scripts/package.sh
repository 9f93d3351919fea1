#!/usr/bin/env bash
# Builds the Debian package into build/package/package/ (a build of its own, with Debian's hardening
# flags, for /usr) and checks it with lintian: an error fails, warnings are shown.
#   --check   also installs it with dpkg, runs the installed tolvane --version as the menu entry starts
#             it, finds its manual page, and removes it again, leaving nothing behind (root only; skipped
#             when a tolvane package is installed already, so that an operator's own is never replaced).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
check=false
case "${1:-}" in
    "") ;;
    --check) check=true ;;
    *) echo "usage: package.sh [--check]" >&2; exit 2 ;;
esac
"$root/scripts/install-deps.sh"

dir="$root/build/package"
jobs="$(nproc 2>/dev/null || echo 2)"
gen=()
command -v ninja >/dev/null 2>&1 && gen=(-G Ninja)
# A package built twice from one commit carries the same dates.
SOURCE_DATE_EPOCH="$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)"
export SOURCE_DATE_EPOCH
if [ ! -f "$dir/CMakeCache.txt" ]; then
    # The flags a distribution's own build would use, every hardening included (read once, at the first
    # configure).
    export DEB_BUILD_MAINT_OPTIONS="hardening=+all"
    CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)" \
    LDFLAGS="$(dpkg-buildflags --get LDFLAGS)" \
        cmake -S "$root" -B "$dir" "${gen[@]}" -DCMAKE_BUILD_TYPE=None -DTOLVANE_TESTS=OFF \
              -DCMAKE_INSTALL_PREFIX=/usr
else
    cmake -S "$root" -B "$dir" >/dev/null
fi
cmake --build "$dir" -j "$jobs"
rm -f "$dir"/package/tolvane_*.deb
(cd "$dir" && cpack -G DEB >/dev/null)
deb="$(ls "$dir"/package/tolvane_*.deb)"

fail() { echo "package.sh: $*" >&2; exit 1; }
# What the programs link at run time, found by dpkg-shlibdeps; nothing needed only to build them.
depends="$(dpkg-deb -f "$deb" Depends)"
for lib in libqt6core6 libqt6gui6 libqt6widgets6 libqt6serialport6 libqt6dbus6 qt6-qpa-plugins; do
    [[ "$depends" == *"$lib"* ]] || fail "Depends lacks $lib: $depends"
done
[[ "$depends" != *-dev* ]] || fail "Depends names a build-time package: $depends"

lintian --fail-on error --tag-display-limit 0 "$deb"
echo "package.sh: built $deb"
echo "  Depends: $depends"

$check || exit 0
if [ "$(id -u)" -ne 0 ]; then
    echo "package.sh: --check installs the package with dpkg and needs root; skipped"
    exit 0
fi
if dpkg-query -W -f='${Status}' tolvane 2>/dev/null | grep -q "install ok installed"; then
    echo "package.sh: a tolvane package is installed on this computer already; --check leaves it alone"
    exit 0
fi
dpkg -i "$deb" >/dev/null
files="$(dpkg -L tolvane)"
removed=false
remove() { $removed || dpkg -r tolvane >/dev/null; removed=true; }
trap remove EXIT
# The command line the application menu runs, from another folder and with a bare PATH.
exec_line="$(sed -n 's/^Exec=//p' /usr/share/applications/org.tolvane.Tolvane.desktop)"
version="$(cd / && env -i PATH=/usr/bin:/bin $exec_line --version)"
[[ "$version" == *"$(dpkg-deb -f "$deb" Version)"* ]] || fail "'$exec_line --version' printed: $version"
[ "$(man -w tolvane)" = /usr/share/man/man1/tolvane.1.gz ] || fail "man tolvane does not find the page"
remove
while IFS= read -r f; do
    # Folders the system shares (/usr/bin) stay; every file of the package must be gone.
    if [ -e "$f" ] && [ ! -d "$f" ]; then fail "left behind after dpkg -r: $f"; fi
done <<<"$files"
[ ! -e /usr/share/tolvane ] || fail "left behind after dpkg -r: /usr/share/tolvane"
echo "package.sh: installed with dpkg -i, '$exec_line --version' printed \"$version\", removed with dpkg -r"
