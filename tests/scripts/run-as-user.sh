#!/usr/bin/env bash
# The README's run command as an operator meets it after the set-up: a normal user ("nobody", with a
# home of its own) in a checkout of its own, everything already installed. `scripts/run.sh --version`
# must build and run without asking anything of apt-get or sudo (stand-ins on PATH record any call).
# Run as root, by scripts/test.sh; the sources are copied, as root's checkout may be out of nobody's reach.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
user=nobody
work="$(mktemp -d /tmp/tolvane-as-user.XXXXXX)"
trap 'rm -rf "$work"' EXIT
mkdir "$work/src" "$work/home" "$work/stand-ins"
tar -C "$root" --exclude=./build --exclude=./.git -cf - . | tar -C "$work/src" -xf -
for t in apt-get sudo; do
    printf '#!/bin/sh\necho "%s $*" >>%s/calls\nexit 1\n' "$t" "$work" >"$work/stand-ins/$t"
done
chmod a+rx "$work/stand-ins"/*
chown -R "$user" "$work"
chmod 755 "$work"

echo "run-as-user.sh: scripts/run.sh --version as $user"
set +e
runuser -u "$user" -- /usr/bin/env -i HOME="$work/home" PATH="$work/stand-ins:/usr/local/bin:/usr/bin:/bin" \
    "$work/src/scripts/run.sh" --version >"$work/out" 2>&1
status=$?
set -e
if [ "$status" -ne 0 ] || ! grep -q '^Tolvane [0-9]' "$work/out" || [ -e "$work/calls" ]; then
    echo "run-as-user.sh: FAILED (exit $status)"
    tail -n 40 "$work/out"
    [ -e "$work/calls" ] && { echo "--- asked of apt-get or sudo:"; cat "$work/calls"; }
    exit 1
fi
echo "run-as-user.sh: $(grep '^Tolvane [0-9]' "$work/out")"
