#!/usr/bin/env bash
# scripts/install-deps.sh as a normal user meets it, against a make-believe dpkg, apt-get and sudo that
# only record what they are asked: a machine that has everything (some names only provided by another
# package) asks nothing of apt-get; one that lacks packages installs them through sudo, and without
# sudo names the exact command and stops. Started as root, it runs the script as "nobody".
#
#   tests/scripts/install-deps-test.sh path/to/install-deps.sh
set -euo pipefail
script="$1"
uid="$(id -u)"
if [ "$uid" -eq 0 ] && ! command -v runuser >/dev/null 2>&1; then
    echo "SKIP: root without runuser can't run the script as a normal user"
    exit 77
fi
work="$(mktemp -d)"
trap '[ -n "${KEEP:-}" ] || rm -rf "$work"' EXIT
cp "$script" "$work/install-deps.sh"
mkdir "$work/nosudo" "$work/sudo"
for dir in nosudo sudo; do
    # dpkg-query reports what $work/installed lists, as "status|package|provides" lines.
    printf '#!/bin/bash\n/bin/cat %s/installed 2>/dev/null\n' "$work" >"$work/$dir/dpkg-query"
    printf '#!/bin/bash\necho "apt-get $*" >>%s/calls\n' "$work" >"$work/$dir/apt-get"
done
printf '#!/bin/bash\necho "sudo $*" >>%s/calls\n' "$work" >"$work/sudo/sudo"
chmod a+rx "$work"/*/*
chmod a+rwx "$work"

fail() { echo "FAIL: $*"; echo "--- calls:"; cat "$work/calls" 2>/dev/null || true; exit 1; }
# Runs the script as a normal user with only the given folder on PATH; output in $work/out.
run() {
    local path="$work/$1"
    shift
    rm -f "$work/calls"
    local as_user=()
    [ "$uid" -eq 0 ] && as_user=(runuser -u nobody --)
    set +e
    "${as_user[@]}" /usr/bin/env -i PATH="$path" HOME="$work" /bin/bash "$work/install-deps.sh" "$@" >"$work/out" 2>&1
    status=$?
    set -e
}

# Nothing installed: --check names every package and changes nothing.
run nosudo --check
[ "$status" -eq 1 ] || fail "--check with packages missing exited $status"
grep -qx qt6-base-dev "$work/out" || fail "--check did not name qt6-base-dev: $(cat "$work/out")"
[ ! -e "$work/calls" ] || fail "--check ran something"
all="$(cat "$work/out")"

# Everything installed, the serial port's -dev name only provided by another package.
for p in $all; do
    [ "$p" = libqt6serialport6-dev ] && continue
    if [ "$p" = qt6-serialport-dev ]; then
        echo "ii |$p|libqt6serialport6-dev (= 6.4.2-2)"
    else
        echo "ii |$p|"
    fi
done >"$work/installed"
echo "rc |dbus-x11-old|" >>"$work/installed"  # removed, configuration left: not installed
for dir in nosudo sudo; do
    run "$dir"
    [ "$status" -eq 0 ] || fail "with everything installed ($dir) it exited $status: $(cat "$work/out")"
    [ ! -e "$work/calls" ] || fail "with everything installed ($dir) it still called apt-get or sudo"
done

# Two packages missing, no sudo: the exact command, and a stop.
grep -v -e '|socat|' -e '|xauth|' "$work/installed" >"$work/installed.new"
mv "$work/installed.new" "$work/installed"
run nosudo
[ "$status" -ne 0 ] || fail "without sudo and with packages missing it succeeded"
grep -q "apt-get install --no-install-recommends socat xauth" "$work/out" || fail "no install command: $(cat "$work/out")"
[ ! -e "$work/calls" ] || fail "without sudo it still called apt-get"

# The same with sudo: installed through it, and only what is missing.
run sudo
[ "$status" -eq 0 ] || fail "with sudo it exited $status: $(cat "$work/out")"
grep -qx "sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq" "$work/calls" || fail "no apt-get update through sudo"
grep -qx "sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends socat xauth" "$work/calls" ||
    fail "not installed through sudo, or more than was missing"
! grep -q "^apt-get" "$work/calls" || fail "apt-get run without sudo"
echo "install-deps.sh behaves as a normal user expects"
