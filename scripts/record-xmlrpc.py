#!/usr/bin/python3
"""Records what fldigi and Hamlib's flrig client (rigctl -m 4) say to Debian's flrig, and how flrig answers.

Debian's flrig runs headless (xvfb-run) with prefs files of its own in a temporary directory, set up for an
IC-756PRO-II that tolvane-radiosim plays on one end of a socat pty pair. A byte tap (a small TCP proxy) stands
between each client and flrig's XML-RPC port and writes down every HTTP request body and the answer:

    tests/data/xmlrpc/fldigi.txt   fldigi (xvfb-run, a temporary config dir set up for flrig) for ~25 s,
                                   asked through its own XML-RPC port to tune, change mode and key
    tests/data/xmlrpc/hamlib.txt   rigctl -m 4: reads and sets frequency, mode, PTT and split

A transcript is a list of calls, each:

    > SECONDS CONNECTION METHOD LENGTH       when it came, the client's connection, the method, body bytes
    <LENGTH bytes: the request body as the client sent it>
    < TYPE VALUE                             flrig's answer: its XML-RPC type (string, int, double,
                                             boolean, array, struct, fault) and value on one line; "empty"
                                             for an empty value (what flrig answers a set)

tests/integration/xmlrpc-replay.py sends the same bodies to Tolvane and compares the answers' types.

    scripts/record-xmlrpc.py [--radiosim build/test/tolvane-radiosim] [fldigi] [hamlib]

Needs: flrig, fldigi, rigctl (libhamlib-utils), xvfb-run (xvfb), socat.
"""

import argparse
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
import xml.etree.ElementTree as ET
import xmlrpc.client

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, ".."))
OUT = os.path.join(ROOT, "tests", "data", "xmlrpc")
# flrig's IC-7300 reads the dial with the newer commands 25 and 26, which the simulated IC-7300 doesn't
# know; its IC-756PRO-II speaks the older ones the simulated IC-756PRO (at the PRO-II's address) answers.
RADIO = "IC-756PRO-II"


def free_port():
    s = socket.socket()
    s.bind(("127.0.0.1", 0))
    port = s.getsockname()[1]
    s.close()
    return port


def wait_until(what, test, seconds):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        try:
            if test():
                return
        except (OSError, xmlrpc.client.Error):
            pass
        time.sleep(0.2)
    sys.exit("record-xmlrpc: %s did not happen in %d s" % (what, seconds))


def http_messages(buffer):
    """Splits complete HTTP messages off the front of buffer: (list of (head, body), rest)."""
    out = []
    while True:
        end = buffer.find(b"\r\n\r\n")
        if end < 0:
            return out, buffer
        head = buffer[:end].decode("latin-1")
        m = re.search(r"(?im)^content-length:\s*(\d+)", head)
        length = int(m.group(1)) if m else 0
        if len(buffer) < end + 4 + length:
            return out, buffer
        out.append((head, buffer[end + 4:end + 4 + length]))
        buffer = buffer[end + 4 + length:]


def method_of(body):
    # Both clients put a processing instruction <?clientid="..."?> after the XML declaration whose target
    # is no XML name, which Python's parser refuses: it goes before the call is read.
    try:
        return xmlrpc.client.loads(re.sub(rb"<\?clientid=[^?]*\?>", b"", body))[1]
    except Exception:
        return "?"


def answer_shape(body):
    """flrig's answer as one line: its XML-RPC type and value."""
    try:
        root = ET.fromstring(body)
    except ET.ParseError:
        return "unparsed %r" % body[:60]
    if root.find("fault") is not None:
        try:
            xmlrpc.client.loads(body)
        except xmlrpc.client.Fault as f:
            return "fault %d %s" % (f.faultCode, f.faultString.replace("\n", " "))
        return "fault"
    value = root.find("params/param/value")
    if value is None:
        return "none"
    if len(value) == 0 and not (value.text or "").strip():
        return "empty"  # the server's "no value": a set's answer
    kind = value[0].tag if len(value) else "string"
    if kind == "i4":
        kind = "int"
    got = xmlrpc.client.loads(body)[0][0]
    return "%s %s" % (kind, repr(got) if not isinstance(got, str) else got.replace("\n", " "))


class Tap:
    """A TCP proxy in front of flrig that writes down each request body and the type of its answer."""

    def __init__(self, server_port):
        self.server_port = server_port
        self.port = free_port()
        self.start = time.monotonic()
        self.calls = []  # [seconds, connection, method, body, answer]
        self.lock = threading.Lock()
        self.connections = 0
        self.listener = socket.socket()
        self.listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.listener.bind(("127.0.0.1", self.port))
        self.listener.listen(8)
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            with self.lock:
                self.connections += 1
                number = self.connections
            server = socket.create_connection(("127.0.0.1", self.server_port))
            pending = []  # this connection's calls waiting for their answers, oldest first
            threading.Thread(target=self.pump, args=(client, server, number, pending, True), daemon=True).start()
            threading.Thread(target=self.pump, args=(server, client, number, pending, False), daemon=True).start()

    def pump(self, src, dst, number, pending, from_client):
        buffer = b""
        while True:
            try:
                data = src.recv(65536)
            except OSError:
                data = b""
            if not data:
                for s in (dst, src):
                    try:
                        s.shutdown(socket.SHUT_RDWR)
                    except OSError:
                        pass
                return
            buffer += data
            messages, buffer = http_messages(buffer)
            with self.lock:
                for _, body in messages:
                    if from_client:
                        call = [time.monotonic() - self.start, number, method_of(body), body, None]
                        self.calls.append(call)
                        pending.append(call)
                    elif pending:
                        pending.pop(0)[4] = answer_shape(body)
            try:
                dst.sendall(data)
            except OSError:
                return

    def write(self, path, header):
        with self.lock:
            calls = list(self.calls)
        with open(path, "wb") as f:
            for line in header:
                f.write(("# " + line + "\n").encode())
            for seconds, number, method, body, answer in calls:
                f.write(("> %.3f %d %s %d\n" % (seconds, number, method, len(body))).encode())
                f.write(body + b"\n")
                f.write(("< %s\n" % (answer or "dropped")).encode())
        print("record-xmlrpc: %d calls to %s" % (len(calls), os.path.relpath(path, ROOT)), flush=True)


def prefs(path, application, entries):
    with open(path, "w") as f:
        f.write("; FLTK preferences file format 1.0\n; vendor: w1hkj.com\n; application: %s\n\n[.]\n\n" % application)
        for key, value in entries:
            f.write("%s:%s\n" % (key, value))


class Station:
    """socat's pty pair, the simulated IC-756PRO (as a PRO-II) on one end and Debian's flrig on the other."""

    def __init__(self):
        self.procs = []
        self.flrig = None

    def start(self, radiosim, work):
        self.socat = self.spawn(["socat", "-d", "-d", "pty,raw,echo=0", "pty,raw,echo=0"], stderr=subprocess.PIPE)
        ends = []
        while len(ends) < 2:
            line = self.socat.stderr.readline().decode()
            if not line:
                sys.exit("record-xmlrpc: socat made no pty pair")
            m = re.search(r"PTY is (\S+)", line)
            if m:
                ends.append(m.group(1))
        self.sim_log = open(os.path.join(work, "radio.log"), "w")
        self.sim = self.spawn([radiosim, "--device", ends[1], "--model", "IC-756PRO", "--address", "64", "--freq", "7010",
                               "--mode", "USB"],
                              stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=self.sim_log)
        self.port = free_port()
        flrig_dir = os.path.join(work, "flrig")
        os.makedirs(flrig_dir)
        prefs(os.path.join(flrig_dir, "flrig.prefs"), "flrig", [("xcvr_name", RADIO)])
        # flrig 1.4 keeps its XML-RPC port among the radio's own prefs; use_rig_data: it starts from what
        # the radio has instead of tuning it to where flrig was last.
        prefs(os.path.join(flrig_dir, RADIO + ".prefs"), RADIO,
              [("version", "1.4.7"), ("xcvr_serial_port", ends[0]), ("comm_baudrate", 8), ("civadr", 0x64),
               ("comm_echo", 1), ("use_rig_data", 1), ("restore_frequency", 0), ("restore_mode", 0),
               ("xmlport", self.port)])
        env = dict(os.environ, HOME=work)
        self.flrig = self.spawn(["xvfb-run", "-a", "flrig", "--config-dir", flrig_dir + "/"], env=env,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        rig = xmlrpc.client.ServerProxy("http://127.0.0.1:%d/RPC2" % self.port)
        wait_until("flrig's answer from the radio", lambda: rig.rig.get_vfoA() == "7010000", 60)

    def spawn(self, argv, **kw):
        p = subprocess.Popen(argv, **kw)
        self.procs.append(p)
        return p

    def stop(self):
        for p in reversed(self.procs):
            if p.poll() is None:
                if p is self.flrig:  # xvfb-run and its X server and flrig: the whole group we started
                    os.killpg(p.pid, 15)
                else:
                    p.terminate()
                try:
                    p.wait(5)
                except subprocess.TimeoutExpired:
                    p.kill()


def record_fldigi(station, work):
    tap = Tap(station.port)
    config = os.path.join(work, "fldigi")
    os.makedirs(config)
    # The keys fldigi keeps in its fldigi_def.xml: rig control through flrig at this address, and PTT
    # pressed at the radio (flrig) switching fldigi to transmit, which adds rig.get_ptt to its poll.
    with open(os.path.join(config, "fldigi_def.xml"), "w") as f:
        f.write('<?xml version="1.0" encoding="UTF-8"?>\n<FLDIGI_DEFS>\n'
                "<CLIENT_TO_FLRIG>1</CLIENT_TO_FLRIG>\n<CHKUSEXMLRPCIS>1</CHKUSEXMLRPCIS>\n<CHKUSEHAMLIBIS>0</CHKUSEHAMLIBIS>\n"
                "<CHKUSERIGCATIS>0</CHKUSERIGCATIS>\n<FLRIG_KEYS_MODEM>1</FLRIG_KEYS_MODEM>\n<FLRIG_IP_ADDRESS>127.0.0.1</FLRIG_IP_ADDRESS>\n"
                "<FLRIG_IP_PORT>%d</FLRIG_IP_PORT>\n<MYCALL>N0CALL</MYCALL>\n</FLDIGI_DEFS>\n" % tap.port)
    own = free_port()
    fldigi = subprocess.Popen(["xvfb-run", "-a", "fldigi", "--config-dir", config, "--xmlrpc-server-port", str(own)],
                              env=dict(os.environ, HOME=work), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              start_new_session=True)
    try:
        me = xmlrpc.client.ServerProxy("http://127.0.0.1:%d/RPC2" % own)
        wait_until("fldigi's own XML-RPC port", lambda: me.fldigi.name() is not None, 60)
        wait_until("fldigi's first calls to flrig", lambda: len(tap.calls) > 5, 30)
        time.sleep(6)  # fldigi polling on its own
        # The operator tunes, changes mode and keys, through fldigi's own XML-RPC (as a logger would).
        me.main.set_frequency(14074000.0)
        time.sleep(2)
        me.rig.set_mode("CW")
        time.sleep(2)
        me.main.tx()
        time.sleep(2)
        me.main.rx()
        time.sleep(8)
    finally:
        os.killpg(fldigi.pid, 15)
        fldigi.wait(10)
    tap.write(os.path.join(OUT, "fldigi.txt"),
              ["fldigi %s through flrig %s (its XML-RPC port), an IC-756PRO-II simulated at 7010 kHz USB." %
               (version(["fldigi", "--version"]), version(["flrig", "--version"])),
               "Regenerate with scripts/record-xmlrpc.py fldigi."])


def record_hamlib(station):
    # Back where the radio was at the start, through flrig itself (not through the tap).
    rig = xmlrpc.client.ServerProxy("http://127.0.0.1:%d/RPC2" % station.port)
    rig.rig.set_vfoA(7010000.0)
    rig.rig.set_modeA("USB")
    wait_until("flrig back at the start", lambda: (rig.rig.get_vfoA(), rig.rig.get_modeA()) == ("7010000", "USB"), 30)
    tap = Tap(station.port)
    commands = ["f", "m", "F", "14074000", "f", "M", "CW", "500", "m", "t", "T", "1", "t", "T", "0", "t",
                "s", "S", "1", "VFOB", "s"]
    run = subprocess.run(["rigctl", "-m", "4", "-r", "127.0.0.1:%d" % tap.port] + commands,
                         capture_output=True, text=True, timeout=120)
    print(run.stdout, run.stderr, flush=True)
    time.sleep(1)
    tap.write(os.path.join(OUT, "hamlib.txt"),
              ["rigctl -m 4 (%s) through flrig %s, an IC-756PRO-II simulated at 7010 kHz USB: %s" %
               (version(["rigctl", "--version"]), version(["flrig", "--version"]), " ".join(commands)),
               "Regenerate with scripts/record-xmlrpc.py hamlib."])


def version(argv):
    try:
        out = subprocess.run(argv, capture_output=True, text=True, timeout=10).stdout
    except (OSError, subprocess.TimeoutExpired):
        return "?"
    m = re.search(r"\d+\.\d+(\.\d+)*", out)
    return m.group(0) if m else "?"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--radiosim", default=os.path.join(ROOT, "build", "test", "tolvane-radiosim"))
    parser.add_argument("clients", nargs="*", default=["fldigi", "hamlib"])
    args = parser.parse_args()
    for tool in ("flrig", "fldigi", "rigctl", "xvfb-run", "socat"):
        if not shutil.which(tool):
            sys.exit("record-xmlrpc: %s is needed" % tool)
    os.makedirs(OUT, exist_ok=True)
    work = tempfile.mkdtemp(prefix="record-xmlrpc-")
    station = Station()
    try:
        station.start(args.radiosim, work)
        if "fldigi" in args.clients:
            record_fldigi(station, work)
        if "hamlib" in args.clients:
            record_hamlib(station)
    finally:
        station.stop()
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()
