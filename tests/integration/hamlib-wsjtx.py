#!/usr/bin/python3
"""WSJT-X's conversation with a radio through Hamlib's network client (model 2), in Debian's Python
bindings: open, the resolution probe, polls, a data mode, split with a transmit frequency, PTT on and
off, close. Prints one line a step; exits 1 at the first answer that isn't what the radio has, 2
without the bindings.

    hamlib-wsjtx.py PORT
"""

import sys
import time

try:
    import Hamlib
except ImportError:
    sys.exit(2)


def check(what, got, want):
    print("%s: %s" % (what, got), flush=True)
    if got != want:
        print("  expected %s" % (want,), flush=True)
        sys.exit(1)


def until(what, read, want, seconds=10):
    # What the program learns from the radio by polling comes within a few polls.
    end = time.monotonic() + seconds
    got = read()
    while got != want and time.monotonic() < end:
        time.sleep(0.2)
        got = read()
    check(what, got, want)


Hamlib.rig_set_debug(Hamlib.RIG_DEBUG_NONE)
rig = Hamlib.Rig(Hamlib.RIG_MODEL_NETRIGCTL)
rig.set_conf("rig_pathname", "127.0.0.1:" + sys.argv[1])
rig.open()
check("open", rig.error_status, Hamlib.RIG_OK)
f = int(rig.get_freq())
check("freq", f, 7010000)
check("mode", rig.get_mode()[0], Hamlib.RIG_MODE_USB)
# The resolution probe: 55 Hz up, read back, and back again.
rig.set_freq(Hamlib.RIG_VFO_CURR, f + 55)
check("probe", int(rig.get_freq()), f + 55)
rig.set_freq(Hamlib.RIG_VFO_CURR, f)
check("restored", int(rig.get_freq()), f)
rig.set_mode(Hamlib.RIG_MODE_PKTUSB, -1)
check("data mode set", rig.error_status, Hamlib.RIG_OK)
until("data mode read", lambda: rig.get_mode()[0], Hamlib.RIG_MODE_PKTUSB)
for _ in range(3):
    rig.get_vfo()
    rig.get_freq()
    rig.get_ptt(Hamlib.RIG_VFO_CURR)
check("poll", rig.error_status, Hamlib.RIG_OK)
rig.set_split_freq(Hamlib.RIG_VFO_B, f + 1500)
rig.set_split_vfo(Hamlib.RIG_SPLIT_ON, Hamlib.RIG_VFO_B)
check("split", rig.error_status, Hamlib.RIG_OK)
check("split frequency", int(rig.get_split_freq()), f + 1500)
rig.set_ptt(Hamlib.RIG_VFO_CURR, Hamlib.RIG_PTT_ON)
check("ptt on", rig.get_ptt(Hamlib.RIG_VFO_CURR), Hamlib.RIG_PTT_ON)
rig.set_ptt(Hamlib.RIG_VFO_CURR, Hamlib.RIG_PTT_OFF)
check("ptt off", rig.get_ptt(Hamlib.RIG_VFO_CURR), Hamlib.RIG_PTT_OFF)
rig.close()
print("closed", flush=True)
