#!/usr/bin/env bash
# Pictures of the main, configuration and monitor windows, taken under Xvfb while the demo radio runs,
# into docs/screenshots/ (for the README). The demo's settings get a few memories first, so that the
# bank and its notes have something to show.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" release
out="$root/docs/screenshots"
mkdir -p "$out"
cfg="$(mktemp -d)"
trap 'rm -rf "$cfg"' EXIT
cat > "$cfg/memories.txt" <<'MEMORIES'
<Memory 1> <Freq 1,840.00> <Mode LSB> <Filter Wide> <Notes 160 m FT8>
<Memory 2> <Freq 3,573.00> <Mode USB> <Filter Wide> <Notes 80 m FT8>
<Memory 3> <Freq 7,030.00> <Mode CW> <Filter Narrow> <Notes QRP calling, 40 m>
<Memory 4> <Freq 10,116.00> <Mode CW> <Filter Narrow> <Notes 30 m QRP>
<Memory 5> <Freq 14,025.00> <Mode CW> <Filter Narrow> <Split On> <Notes DX window, listen up 1>
<Memory 6> <Freq 14,074.00> <Mode USB> <Filter Wide> <Notes 20 m FT8>
<Memory 7> <Freq 14,230.00> <Mode USB> <Filter Normal> <Notes SSTV>
<Memory 8> <Freq 18,100.00> <Mode USB> <Filter Wide> <Notes 17 m digital>
<Memory 9> <Freq 21,080.00> <Mode RTTY> <Filter Narrow> <Notes RTTY contest>
<Memory 10> <Freq 28,400.00> <Mode USB> <Filter Wide> <Notes 10 m net, Sunday 1800 UTC>
MEMORIES
"$root/build/release/tolvane" --config-dir "$cfg" --import-memories "$cfg/memories.txt" >/dev/null
xvfb-run -a -s "-screen 0 1600x1200x24" "$root/build/release/tolvane" --demo --config-dir "$cfg" --screenshots "$out" >/dev/null
ls -1 "$out"
