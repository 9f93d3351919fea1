#!/usr/bin/env bash
# The cost of polling: tolvane --headless polls a simulated radio at 50 ms for a while, and this prints
# the CPU time the program used and how many messages crossed the line each way. With --capture FILE the
# line is tapped (socat -x -v) and its traffic written to FILE; with --script the radio is also tuned
# and keyed through the suite link halfway through (needs dbus-run-session). --slow BAUD makes the
# simulator answer at the pace of a serial line of that speed; with a capture the script then also says
# how long each request waited for the end of its reply (the Yaesu radios' reply wait, during which the
# queue and the polling hold).
#
#   benchmarks/poll-cpu.sh [--model IC-7300] [--seconds 60] [--interval 50] [--capture FILE] [--script]
#                          [--slow BAUD]
#   benchmarks/poll-cpu.sh --model FT817 --slow 4800 --capture /tmp/ft817.cap
#
# --compare runs the peers side by side instead, each polling its own simulated IC-7300 at the interval:
# tolvane headless, tolvane with its window (on a private Xvfb) and flrig (its own settings in a private
# config folder), and with TOLVANE_BASE_BIN=<dir> the same two of another build (the one before a change),
# for three rounds with the start order rotated. It prints CPU-s per minute, frames/s and the ratios to
# flrig. Needs Xvfb and flrig.
#
#   TOLVANE_BASE_BIN=/tmp/before benchmarks/poll-cpu.sh --compare [--seconds 60] [--interval 50]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bin="${TOLVANE_BIN:-$root/build/release}"
if [ "${1:-}" = --compare ]; then
    shift
    exec "$root/benchmarks/poll-compare.sh" "$@"
fi
model=IC-7300 seconds=60 interval=50 capture="" script=0 slow=""
while [ $# -gt 0 ]; do
    case "$1" in
        --model) model="$2"; shift 2 ;;
        --seconds) seconds="$2"; shift 2 ;;
        --interval) interval="$2"; shift 2 ;;
        --capture) capture="$2"; shift 2 ;;
        --script) script=1; shift ;;
        --slow) slow="$2"; shift 2 ;;
        *) echo "usage: poll-cpu.sh [--model M] [--seconds S] [--interval MS] [--capture FILE] [--script] [--slow BAUD]" >&2; exit 2 ;;
    esac
done
if [ "$script" = 1 ] && [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ]; then
    exec dbus-run-session -- "$0" --model "$model" --seconds "$seconds" --interval "$interval" \
        ${capture:+--capture "$capture"} ${slow:+--slow "$slow"} --script
fi
work="$(mktemp -d)"
trap 'kill $(jobs -p) 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT

# Two ptys joined: the program on a, the simulator on b; with a capture, socat relays and taps between.
if [ -n "$capture" ]; then
    socat -d -d pty,raw,echo=0,link="$work/a" pty,raw,echo=0,link="$work/tap" 2>"$work/socat1.log" &
    # The tap must be there before the second relay opens it.
    for _ in $(seq 50); do [ -e "$work/tap" ] && break; sleep 0.1; done
    socat -x -v pty,raw,echo=0,link="$work/b" "$work/tap",raw,echo=0 2>"$capture" &
else
    socat -d -d pty,raw,echo=0,link="$work/a" pty,raw,echo=0,link="$work/b" 2>"$work/socat1.log" &
fi
for _ in $(seq 50); do [ -e "$work/a" ] && [ -e "$work/b" ] && break; sleep 0.1; done

"$bin/tolvane-radiosim" --device "$work/b" --model "$model" --freq 14025.5 --mode CW ${slow:+--slow "$slow"} \
    < <(sleep $((seconds + 5))) >/dev/null 2>"$work/sim.log" &
case "$model" in IC-*) address="$(grep -i "^RADIO=I$model," "$root/data/Radios.txt" | sed 's/.*ADDRESS=\([0-9A-F]*\).*/\1/')" ;; *) address=0 ;; esac
mkdir -p "$work/config"
cat >"$work/config/Tolvane.ini" <<EOF
[General]
Radio=$model
RadioId=$address
CommPort=1
CommPortDevice1=$work/a
InterrogateInterval=$interval
MessageCapture=F
EOF
"$bin/tolvane" --headless --config-dir "$work/config" --app-dir "$root/data" >"$work/tolvane.log" 2>&1 &
pid=$!
if [ "$script" = 1 ]; then
    sleep $((seconds / 2))
    for c in 001qsy7010.2 "001xcvrfreqmode<xcvrfreq:8>14025.50<xcvrmode:2>cw<eor>" 001split14030 001transmit 001receive; do
        "$bin/tolvane-send" "$c" >/dev/null || true
        sleep 1
    done
    sleep $((seconds - seconds / 2 - 5))
else
    sleep "$seconds"
fi
ticks=$(awk '{print $14 + $15}' /proc/$pid/stat)
hz=$(getconf CLK_TCK)
kill -TERM $pid; wait $pid || true
echo "model $model, interval $interval ms, $seconds s: tolvane CPU $((ticks * 1000 / hz)) ms;" \
     "messages to the radio $(grep -c '^<- ' "$work/sim.log" || true), from it $(grep -c '^-> ' "$work/sim.log" || true)"
# Reply waits from the capture: socat marks the radio's bytes "> " and the program's "< ", each with its
# time. A request's wait runs from its block to the last piece of the radio's answer before the next block.
# Some socat versions write the microseconds of the time in nine digits: read so when no value says
# otherwise.
if [ -n "$capture" ]; then
    awk '
        /^[<>] [0-9]+\/[0-9]+\/[0-9]+ / {
            split($3, hms, ":"); split(hms[3], sf, ".")
            n++; dir[n] = $1; sec[n] = hms[1] * 3600 + hms[2] * 60 + sf[1]; frac[n] = sf[2] + 0
            if (frac[n] > maxfrac) maxfrac = frac[n]
            digits = length(sf[2])
        }
        END {
            scale = (digits == 9 && maxfrac < 1000000) ? 1e6 : 10 ^ digits
            for (i = 1; i <= n; i++) {
                now = sec[i] + frac[i] / scale
                if (dir[i] == "<") { if (asked && answered) { w = last - asked; sum += w; k++; if (w > max) max = w }
                                     asked = now; answered = 0 }
                else if (asked) { last = now; answered = 1 }
            }
            if (k) printf "reply waits: %d answered, mean %.1f ms, longest %.1f ms\n", k, sum / k * 1000, max * 1000
            else print "reply waits: none answered"
        }' "$capture"
fi
