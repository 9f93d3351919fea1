#!/usr/bin/env bash
# Instructions per polled frame, the figure a busy machine doesn't move: tolvane polls a simulated
# IC-7300 at 50 ms under callgrind, which counts only a steady stretch after start-up, and the total is
# divided by the frames the simulator received in it. --window runs it with its window (on a private
# Xvfb) instead of headless. The profile stays in --keep DIR for callgrind_annotate.
#
#   benchmarks/poll-callgrind.sh [--window] [--seconds 30] [--keep DIR]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bin="${TOLVANE_BIN:-$root/build/release}"
window=0 seconds=30 keep=""
while [ $# -gt 0 ]; do
    case "$1" in
        --window) window=1; shift ;;
        --seconds) seconds="$2"; shift 2 ;;
        --keep) keep="$2"; shift 2 ;;
        *) echo "usage: poll-callgrind.sh [--window] [--seconds S] [--keep DIR]" >&2; exit 2 ;;
    esac
done
work="$(mktemp -d)"
trap 'kill $(jobs -p) 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
socat pty,raw,echo=0,link="$work/a" pty,raw,echo=0,link="$work/b" 2>/dev/null &
for _ in $(seq 50); do [ -e "$work/a" ] && [ -e "$work/b" ] && break; sleep 0.1; done
"$bin/tolvane-radiosim" --device "$work/b" --model IC-7300 --freq 14025.5 --mode CW \
    < <(sleep $((seconds + 60))) >/dev/null 2>"$work/sim.log" &
mkdir -p "$work/config"
cat >"$work/config/Tolvane.ini" <<INI
[General]
Radio=IC-7300
RadioId=94
CommPort=1
CommPortDevice1=$work/a
InterrogateInterval=50
MessageCapture=F
INI
mode=(--headless)
if [ "$window" = 1 ]; then
    mode=()
    display=":$((500 + RANDOM % 400))"
    Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
    for _ in $(seq 50); do [ -e "/tmp/.X11-unix/X${display#:}" ] && break; sleep 0.1; done
    export DISPLAY="$display" QT_QPA_PLATFORM=xcb
fi
valgrind --tool=callgrind --instr-atstart=no --callgrind-out-file="$work/cg.out" \
    "$bin/tolvane" "${mode[@]}" --config-dir "$work/config" --app-dir "$root/data" >"$work/out.log" 2>&1 &
pid=$!
# Start-up under valgrind is slow: counted from the moment the poll runs steadily.
for _ in $(seq 120); do [ "$(grep -c '^<- ' "$work/sim.log" || true)" -gt 40 ] && break; sleep 0.5; done
sleep 5
callgrind_control -i on "$pid" >/dev/null
f0=$(grep -c '^<- ' "$work/sim.log" || true)
sleep "$seconds"
callgrind_control -d "$pid" >/dev/null
f1=$(grep -c '^<- ' "$work/sim.log" || true)
callgrind_control -i off "$pid" >/dev/null
kill -TERM "$pid"; wait "$pid" || true
dump="$(ls "$work"/cg.out.* | head -1)"
ir=$(awk '/^(summary|totals):/ {print $2; exit}' "$dump")
frames=$((f1 - f0))
echo "$( [ "$window" = 1 ] && echo window || echo headless ): $frames frames in $seconds s," \
     "$ir instructions, $((ir / (frames > 0 ? frames : 1))) per frame"
if [ -n "$keep" ]; then mkdir -p "$keep"; cp "$dump" "$keep/"; fi
