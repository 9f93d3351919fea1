#!/usr/bin/python3
"""The XML-RPC calls of the programs set up for the other common Linux rig server, made with Python's own
xmlrpc.client against Tolvane and a simulated IC-7300 (7010 kHz USB at the start): every method served,
its answer checked against what the radio has; then the sets, checked by reading back. Exits 1 at the
first wrong answer.

    xmlrpc-clients.py PORT
"""

import sys
import time
import xmlrpc.client

rig = xmlrpc.client.ServerProxy("http://127.0.0.1:%s/RPC2" % sys.argv[1])


def check(what, got, want):
    print("%s: %r" % (what, got), flush=True)
    if got != want:
        print("  expected %r" % (want,), flush=True)
        sys.exit(1)


def until(what, read, want, seconds=10):
    end = time.monotonic() + seconds
    got = read()
    while got != want and time.monotonic() < end:
        time.sleep(0.2)
        got = read()
    check(what, got, want)


methods = rig.system.listMethods()
check("listMethods has every poll", all(m in methods for m in (
    "rig.get_vfo", "rig.get_vfoA", "rig.get_vfoB", "rig.get_AB", "rig.get_split", "rig.get_mode",
    "rig.get_modeA", "rig.get_modeB", "rig.get_bw", "rig.get_bwA", "rig.get_bwB", "rig.get_ptt",
    "rig.get_smeter", "rig.get_DBM", "rig.get_pwrmeter", "rig.get_SWR", "rig.get_power", "rig.get_notch",
    "rig.get_sideband")), True)
check("version", isinstance(rig.main.get_version(), str), True)
check("xcvr", rig.rig.get_xcvr(), "Icom IC-7300")
check("modes", rig.rig.get_modes(), ["LSB", "USB", "AM", "CW", "RTTY", "FM", "CW-R", "RTTY-R", "USB-D"])
check("bws", rig.rig.get_bws(), [["Bandwidth", "3000", "2400", "1800"]])
check("pwrmeter scale", rig.rig.get_pwrmeter_scale(), 1)
check("agc labels", rig.rig.get_agc_labels(), [])
check("vfo", rig.rig.get_vfo(), "7010000")
check("vfoA", rig.rig.get_vfoA(), "7010000")
check("AB", rig.rig.get_AB(), "A")
check("split", rig.rig.get_split(), 0)
check("mode", rig.rig.get_mode(), "USB")
check("modeA", rig.rig.get_modeA(), "USB")
check("bw", rig.rig.get_bw(), ["3000", ""])
check("ptt", rig.rig.get_ptt(), 0)
check("smeter is a number in text", rig.rig.get_smeter().isdigit(), True)
check("dBm is a number", isinstance(rig.rig.get_DBM(), int), True)
check("notch", rig.rig.get_notch(), 0)
check("sideband", rig.rig.get_sideband(), "U")

check("set_vfoA", rig.rig.set_vfoA(14074000.0), 0)
until("vfoA after the set", rig.rig.get_vfoA, "14074000")
check("set_mode", rig.rig.set_mode("CW"), 0)
until("mode after the set", rig.rig.get_mode, "CW")
check("set_bw", rig.rig.set_bw(500), 0)
until("bw after the set", rig.rig.get_bw, ["500", ""])
check("set_ptt on", rig.rig.set_ptt(1), 0)
check("ptt on", rig.rig.get_ptt(), 1)
check("set_ptt off", rig.rig.set_ptt(0), 0)
until("ptt off once the receive command has left", rig.rig.get_ptt, 0)
check("set_modeA USB-D", rig.rig.set_modeA("USB-D"), 0)
until("data mode read back", rig.rig.get_modeA, "USB-D")
try:
    rig.rig.set_bwA("not a number")
    check("a bad bandwidth is a fault", False, True)
except xmlrpc.client.Fault as f:
    check("a bad bandwidth is a fault", f.faultCode != 0, True)
try:
    rig.rig.cat_string("FEFE94E003FD")
    check("raw commands are refused", False, True)
except xmlrpc.client.Fault:
    check("raw commands are refused", True, True)
try:
    rig.rig.no_such_method()
    check("an unknown method is a fault", False, True)
except xmlrpc.client.Fault:
    check("an unknown method is a fault", True, True)
check("the connection still serves", rig.rig.get_ptt(), 0)
print("done", flush=True)
