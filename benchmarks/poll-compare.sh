#!/usr/bin/env bash
# The side-by-side run of poll-cpu.sh --compare (see there): every peer polls its own simulated IC-7300
# on its own pty pair at the same interval and for the same time, all at once, three rounds.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bin="${TOLVANE_BIN:-$root/build/release}"
base="${TOLVANE_BASE_BIN:-}"
seconds=60 interval=50 rounds=3
while [ $# -gt 0 ]; do
    case "$1" in
        --seconds) seconds="$2"; shift 2 ;;
        --interval) interval="$2"; shift 2 ;;
        --rounds) rounds="$2"; shift 2 ;;
        *) echo "usage: poll-cpu.sh --compare [--seconds S] [--interval MS] [--rounds N]" >&2; exit 2 ;;
    esac
done
work="$(mktemp -d)"
trap 'kill $(jobs -p) 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
address="$(grep -i '^RADIO=IIC-7300,' "$root/data/Radios.txt" | sed 's/.*ADDRESS=\([0-9A-F]*\).*/\1/')"

# One display for every windowed peer.
display=":$((90 + RANDOM % 400))"
Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
for _ in $(seq 50); do [ -e "/tmp/.X11-unix/X${display#:}" ] && break; sleep 0.1; done

peers=(after-headless after-window flrig)
[ -n "$base" ] && peers=(before-headless before-window "${peers[@]}")

# Starts one peer with its radio (in this shell, so that the exit trap reaches all of them); sets
# pid[peer] and log[peer].
start_peer() {
    local name="$1" dir="$work/$1.$2"
    mkdir -p "$dir/config"
    socat pty,raw,echo=0,link="$dir/a" pty,raw,echo=0,link="$dir/b" 2>/dev/null &
    helpers+=($!)
    for _ in $(seq 50); do [ -e "$dir/a" ] && [ -e "$dir/b" ] && break; sleep 0.1; done
    "$bin/tolvane-radiosim" --device "$dir/b" --model IC-7300 --freq 14025.5 --mode CW \
        < <(sleep $((seconds + 10))) >/dev/null 2>"$dir/sim.log" &
    helpers+=($!)
    local b="$bin"
    case "$name" in before-*) b="$base" ;; esac
    case "$name" in
        *-headless|*-window)
            cat >"$dir/config/Tolvane.ini" <<INI
[General]
Radio=IC-7300
RadioId=$address
CommPort=1
CommPortDevice1=$dir/a
InterrogateInterval=$interval
MessageCapture=F
INI
            local mode=(--headless)
            [ "${name#*-}" = window ] && mode=()
            DISPLAY="$display" QT_QPA_PLATFORM=xcb "$b/tolvane" "${mode[@]}" --config-dir "$dir/config" \
                --app-dir "$root/data" >"$dir/out.log" 2>&1 &
            ;;
        flrig)
            # Its preferences files: the radio in flrig.prefs, the port and the poll in the radio's own
            # (read only when it carries a version).
            printf '%s\n' '; FLTK preferences file format 1.0' '; vendor: w1hkj.com' '; application: flrig' '' \
                '[.]' '' 'xcvr_name:IC-7300' >"$dir/config/flrig.prefs"
            printf '%s\n' '; FLTK preferences file format 1.0' '; vendor: w1hkj.com' '; application: IC-7300' '' \
                '[.]' '' "version:$(flrig --version 2>/dev/null | sed -n 's/^Version: //p')" \
                "xcvr_serial_port:$dir/a" "comm_baudrate:7" "serloop_timing:$interval" \
                "civadr:$((16#$address))" "use_tcpip:0" \
                >"$dir/config/IC-7300.prefs"
            DISPLAY="$display" flrig --config-dir "$dir/config" >"$dir/out.log" 2>&1 &
            ;;
    esac
    pid[$name]=$!
    log[$name]="$dir/sim.log"
}

hz=$(getconf CLK_TCK)
echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
declare -A cpu frames pid log
helpers=()
for ((r = 0; r < rounds; r++)); do
    order=("${peers[@]:r % ${#peers[@]}}" "${peers[@]:0:r % ${#peers[@]}}")
    for p in "${order[@]}"; do start_peer "$p" "$r"; done
    # Counted over the last $seconds: start-up (connecting, the first full read) is left out.
    sleep 5
    declare -A t0 f0
    for p in "${order[@]}"; do
        t0[$p]=$(awk '{print $14 + $15}' /proc/${pid[$p]}/stat); f0[$p]=$(grep -c '^<- ' "${log[$p]}" || true)
    done
    sleep "$seconds"
    line="round $((r + 1)) (${order[*]}):"
    for p in "${order[@]}"; do
        t=$(( $(awk '{print $14 + $15}' /proc/${pid[$p]}/stat) - t0[$p] ))
        f=$(( $(grep -c '^<- ' "${log[$p]}" || true) - f0[$p] ))
        cpu[$p]="${cpu[$p]:-} $(awk -v t="$t" -v hz="$hz" -v s="$seconds" 'BEGIN{printf "%.3f", t / hz * 60 / s}')"
        frames[$p]="${frames[$p]:-} $(awk -v f="$f" -v s="$seconds" 'BEGIN{printf "%.1f", f / s}')"
        kill -TERM "${pid[$p]}" 2>/dev/null || true
    done
    echo "$line load $(cut -d' ' -f1-3 /proc/loadavg)"
    for p in "${order[@]}"; do wait "${pid[$p]}" 2>/dev/null || true; done
    kill "${helpers[@]}" 2>/dev/null || true
    wait "${helpers[@]}" 2>/dev/null || true
    helpers=()
    unset t0 f0
done
flrigMean=$(echo ${cpu[flrig]} | awk '{for (i = 1; i <= NF; i++) s += $i; print s / NF}')
printf '%-16s %-24s %-8s %s\n' peer "CPU-s per minute" "frames/s" "vs flrig (mean)"
for p in "${peers[@]}"; do
    mean=$(echo ${cpu[$p]} | awk '{for (i = 1; i <= NF; i++) s += $i; print s / NF}')
    printf '%-16s %-24s %-8s %s\n' "$p" "$(echo ${cpu[$p]})" "$(echo ${frames[$p]} | awk '{for (i = 1; i <= NF; i++) s += $i; printf "%.1f", s / NF}')" \
        "$(awk -v a="$mean" -v b="$flrigMean" 'BEGIN{if (b > 0) printf "%.2f x", a / b}')"
done
