#!/usr/bin/env bash
# The program as an operator installs it: "cmake --install" into a fresh prefix; the installed tolvane,
# started from another folder without --app-dir, finds its data and its simulator and polls the radio;
# the menu entry, the software-centre description and the manual pages pass their own tools' checks.
# Usage: check-install.sh BUILD-DIR
set -euo pipefail
build="$1"
work="$(mktemp -d)"
pid=""
cleanup() {
    if [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null; then kill -KILL "$pid" 2>/dev/null || true; fi
    rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "check-install: $*" >&2; exit 1; }

prefix="$work/prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null

app_id=org.tolvane.Tolvane
for f in bin/tolvane bin/tolvane-radiosim bin/tolvane-send share/tolvane/Radios.txt share/tolvane/Help \
         share/tolvane/SMeter share/applications/$app_id.desktop \
         share/icons/hicolor/scalable/apps/$app_id.svg share/metainfo/$app_id.metainfo.xml \
         share/man/man1/tolvane.1.gz share/man/man1/tolvane-radiosim.1.gz share/man/man1/tolvane-send.1.gz \
         share/doc/tolvane/copyright share/doc/tolvane/changelog.gz lib/systemd/user/tolvane.service; do
    [ -e "$prefix/$f" ] || fail "not installed: $f"
done
# The unit names the program where this install put it, not where the build was configured to go.
grep -qx "ExecStart=$prefix/bin/tolvane --headless" "$prefix/lib/systemd/user/tolvane.service" ||
    fail "the service's ExecStart is not $prefix/bin/tolvane --headless"

desktop-file-validate "$prefix/share/applications/$app_id.desktop"
appstreamcli validate --no-net --explain "$prefix/share/metainfo/$app_id.metainfo.xml" >"$work/appstream" 2>&1 ||
    { cat "$work/appstream" >&2; fail "appstreamcli validate failed"; }
for page in tolvane tolvane-radiosim tolvane-send; do
    file="$prefix/share/man/man1/$page.1.gz"
    # groff's warnings (a bad macro, a line it can't set) fail the page as they would lintian.
    warnings="$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$file" 2>&1 >/dev/null || true)"
    [ -z "$warnings" ] || fail "$page.1: $warnings"
    LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$file" >"$work/$page.txt" 2>/dev/null
    grep -q "^NAME" "$work/$page.txt" && grep -qE "^ *$page +- " "$work/$page.txt" ||
        fail "$page.1 does not render with its NAME"
done

# From a folder that has nothing of Tolvane's in it, as a user's shell would start it.
mkdir -p "$work/elsewhere" "$work/config"
cd "$work/elsewhere"
"$prefix/bin/tolvane" --headless --demo --config-dir "$work/config" >"$work/out" 2>&1 &
pid=$!
# The first frequency reported proves the catalogue was read and the simulator answers the polls.
deadline=$((SECONDS + 60))
until grep -qE '^Radio: [0-9]+\.[0-9]+ kHz' "$work/out"; do
    kill -0 "$pid" 2>/dev/null || { cat "$work/out" >&2; fail "the installed tolvane --demo ended early"; }
    [ "$SECONDS" -lt "$deadline" ] || { cat "$work/out" >&2; fail "no frequency from the simulator in 60 s"; }
    sleep 0.2
done
kill -TERM "$pid"
code=0
wait "$pid" || code=$?
pid=""
[ "$code" -eq 0 ] || { cat "$work/out" >&2; fail "tolvane ended with $code on SIGTERM"; }
grep -qF "App.Path        : $prefix/share/tolvane" "$work/config/ErrorLog.txt" ||
    fail "the data was not read from $prefix/share/tolvane"
echo "check-install: installed into $prefix, the demo polled the simulator, and the desktop files validate"
