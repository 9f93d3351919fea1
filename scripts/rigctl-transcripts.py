#!/usr/bin/python3
"""Records what the Linux ham programs say to a rigctld server, and what Debian's rigctld answers.

Runs Debian's rigctld with Hamlib's dummy radio (model 1) behind a byte tap, drives it the way each
client does, and writes one transcript a client into tests/data/rigctl/: "> " a line the client sent,
"< " a line of the answer. The compatibility suite (tests/netserver/RigctlCompatibilityTest.cpp) sends
the same lines to Tolvane's server and compares the answers' shape with these.

The clients that use Hamlib's own network client ("Hamlib NET rigctl", model 2: WSJT-X, JTDX, fldigi,
grig, tlf, QLog) are driven through Debian's python3-hamlib, so the bytes on the wire are Hamlib's
own; the calls follow each program's published source. The programs that speak to the socket
themselves (CQRLOG, Gpredict, Log4OM) send their lines as their source writes them.

    scripts/rigctl-transcripts.py            rewrite all transcripts
    scripts/rigctl-transcripts.py wsjtx      only some

Needs: rigctld (libhamlib-utils) and python3-hamlib. Lines marked "~" in a transcript (Tolvane's
deliberate answer) are kept: they are carried over from the old file, matched by the client's line.
"""

import os
import socket
import subprocess
import sys
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "..", "tests", "data", "rigctl")


def free_port():
    s = socket.socket()
    s.bind(("127.0.0.1", 0))
    port = s.getsockname()[1]
    s.close()
    return port


class Tap:
    """A TCP proxy in front of rigctld that writes down each client line and the bytes answered."""

    def __init__(self, server_port):
        self.server_port = server_port
        self.port = free_port()
        self.events = []  # ("> ", line) or ("< ", bytes)
        self.lock = threading.Lock()
        self.last_answer = None
        self.listener = socket.socket()
        self.listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.listener.bind(("127.0.0.1", self.port))
        self.listener.listen(4)
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            server = socket.create_connection(("127.0.0.1", self.server_port))
            threading.Thread(target=self.pump, args=(client, server, True), daemon=True).start()
            threading.Thread(target=self.pump, args=(server, client, False), daemon=True).start()

    def pump(self, src, dst, from_client):
        # Lockstep: a client line goes on only once the answer to the one before it has come (or
        # none came for a while), so that each answer stands under its own line.
        pending = b""
        while True:
            try:
                data = src.recv(65536)
            except OSError:
                data = b""
            if not data:
                try:
                    dst.shutdown(socket.SHUT_WR)
                except OSError:
                    pass
                return
            if not from_client:
                with self.lock:
                    self.events.append(("< ", data))
                    self.last_answer = time.monotonic()
                dst.sendall(data)
                continue
            pending += data
            while b"\n" in pending:
                line, pending = pending.split(b"\n", 1)
                with self.lock:
                    self.events.append(("> ", line))
                    asked, answered = time.monotonic(), None
                    self.last_answer = None
                dst.sendall(line + b"\n")
                while True:
                    time.sleep(0.02)
                    with self.lock:
                        answered = self.last_answer
                    now = time.monotonic()
                    if answered is not None and now - answered > 0.1:
                        break
                    if answered is None and now - asked > 2.0:
                        break

    def transcript(self):
        out, answer = [], b""

        def flush():
            nonlocal answer
            if answer:
                for line in answer.decode("latin-1").split("\n")[:-1] if answer.endswith(b"\n") else \
                        answer.decode("latin-1").split("\n"):
                    out.append("< " + line)
            answer = b""

        with self.lock:
            for kind, data in self.events:
                if kind == "> ":
                    flush()
                    out.append("> " + data.decode("latin-1").rstrip("\r"))
                else:
                    answer += data
            flush()
        return out


def raw_client(port, lines, settle=0.3):
    """A program that writes rigctld's lines itself: each line, then its answer."""
    s = socket.create_connection(("127.0.0.1", port))
    s.settimeout(settle)
    for line in lines:
        s.sendall(line.encode("latin-1") + b"\n")
        time.sleep(settle)
        try:
            while s.recv(65536):
                pass
        except socket.timeout:
            pass
    s.close()


def hamlib_client(port, steps):
    import Hamlib
    Hamlib.rig_set_debug(Hamlib.RIG_DEBUG_TRACE)
    rig = Hamlib.Rig(Hamlib.RIG_MODEL_NETRIGCTL)
    rig.set_conf("rig_pathname", "127.0.0.1:%d" % port)
    rig.open()

    class Careful:
        """Each call on its own: one the binding can't make is left out, and the rest go on."""

        def __getattr__(self, name):
            def call(*args):
                try:
                    return getattr(rig, name)(*args)
                except Exception as e:
                    print("call %s failed: %s" % (name, e), file=sys.stderr)
                    return 0
            return call

    for step in steps:
        step(Careful(), Hamlib)
    rig.close()


def hamlib_lines(name, port):
    """The lines Hamlib's network client writes for a client's calls, read from its own trace."""
    trace = subprocess.run([sys.executable, os.path.abspath(__file__), "--hamlib-client", name, str(port)],
                           capture_output=True, text=True, encoding="latin-1").stderr
    sent, taking = b"", False
    for line in trace.splitlines():
        if "write_block(): TX" in line:
            taking = True
        elif taking and len(line) > 8 and line[:4].isdigit() and line[4:8] == "    ":
            sent += bytes(int(h, 16) for h in line[8:56].split())
        else:
            taking = False
    return [l.decode("latin-1") for l in sent.split(b"\n") if l]


def wsjtx(rig, H):
    # Open: the VFO, frequency and mode; then the resolution probe (tune 55 Hz up, read back,
    # restore); polls; split on with a transmit frequency; PTT on and off; a band change; split off.
    rig.get_vfo()
    f = rig.get_freq() or 14074000
    rig.get_mode()
    rig.set_freq(H.RIG_VFO_CURR, int(f) + 55)
    rig.get_freq()
    rig.set_freq(H.RIG_VFO_CURR, int(f))
    rig.get_freq()
    rig.set_mode(H.RIG_MODE_PKTUSB, -1)
    for _ in range(2):
        rig.get_vfo()
        rig.get_freq()
        rig.get_mode()
        rig.get_split_vfo(H.RIG_VFO_CURR)
        rig.get_ptt()
    rig.set_split_freq(H.RIG_VFO_B, int(f) + 1500)
    rig.set_split_mode(H.RIG_MODE_PKTUSB, -1, H.RIG_VFO_B)
    rig.set_split_vfo(H.RIG_SPLIT_ON, H.RIG_VFO_B)
    rig.get_split_freq()
    rig.set_ptt(H.RIG_VFO_CURR, H.RIG_PTT_ON)
    rig.get_ptt()
    rig.set_ptt(H.RIG_VFO_CURR, H.RIG_PTT_OFF)
    rig.set_freq(H.RIG_VFO_CURR, 7074000)
    rig.get_freq()
    rig.set_split_vfo(H.RIG_SPLIT_OFF, H.RIG_VFO_A)


def fldigi(rig, H):
    rig.get_freq()
    rig.get_mode()
    rig.set_mode(H.RIG_MODE_USB, 0)
    rig.set_freq(H.RIG_VFO_CURR, 14070000)
    rig.get_ptt()
    rig.set_ptt(H.RIG_VFO_CURR, H.RIG_PTT_ON)
    rig.set_ptt(H.RIG_VFO_CURR, H.RIG_PTT_OFF)
    rig.get_level_i(H.RIG_LEVEL_STRENGTH)


def grig(rig, H):
    rig.get_freq()
    rig.get_mode()
    rig.get_vfo()
    rig.get_ptt()
    rig.get_split_vfo(H.RIG_VFO_CURR)
    rig.get_level_i(H.RIG_LEVEL_STRENGTH)
    rig.get_level_i(H.RIG_LEVEL_RAWSTR)
    rig.get_powerstat()
    rig.set_vfo(H.RIG_VFO_B)
    rig.set_vfo(H.RIG_VFO_A)


def tlf(rig, H):
    rig.get_freq()
    rig.get_mode()
    rig.set_freq(H.RIG_VFO_CURR, 14025000)
    rig.set_mode(H.RIG_MODE_CW, 500)
    rig.get_freq()


def qlog(rig, H):
    rig.get_freq()
    rig.get_mode()
    rig.get_vfo()
    rig.get_ptt()
    rig.get_func(H.RIG_FUNC_RIT)
    rig.get_rit()
    rig.get_func(H.RIG_FUNC_XIT)
    rig.get_xit()
    rig.get_level_f(H.RIG_LEVEL_RFPOWER)
    rig.power2mW(0.5, 14074000, H.RIG_MODE_USB)
    rig.get_level_i(H.RIG_LEVEL_KEYSPD)


HAMLIB = {"wsjtx": wsjtx, "fldigi": fldigi, "grig": grig, "tlf": tlf, "qlog": qlog}
RAW = {
    # CQRLOG: each of its two connections (rig, CW) reads the capabilities first; the rig connection
    # polls three commands to a line.
    "cqrlog": [["+\\dump_caps", "+f +m +v", "+f +m +v", "+F 14074000", "+M USB 0", "+T 1", "+T 0"],
               ["+\\dump_caps", "+b CQ TEST", "+\\stop_morse"]],
    # Gpredict: VFO mode, frequencies padded to ten places, the DCD read.
    "gpredict": [["\\set_vfo_opt 1", "\\chk_vfo", "V VFOA", "F VFOA  145800000", "f VFOA", "\x8b VFOA",
                  "F VFOB  435300000", "f VFOB", "\\set_vfo_opt 0"]],
    # Log4OM: both VFOs in one read each.
    "log4om": [["\\get_vfo_info VFOA", "\\get_vfo_info VFOB", "\\get_powerstat", "+\\get_rig_info",
                "\\get_split_freq_mode", "+\\stream_caps", "\\get_clock"]],
}


def old_marks(path):
    """The "~" lines of an existing transcript, by the client line they follow."""
    marks, last = {}, None
    if os.path.exists(path):
        for line in open(path, encoding="latin-1"):
            line = line.rstrip("\n")
            if line.startswith("> "):
                last = line
            elif line.startswith("~") and last is not None:
                marks.setdefault(last, []).append(line)
    return marks


def record(name, rigctld_port, conversations):
    tap = Tap(rigctld_port)
    for conversation in conversations:
        raw_client(tap.port, conversation)
    # The tap may still be passing lines on, one answer at a time.
    while True:
        with tap.lock:
            seen = len(tap.events)
        time.sleep(2.5)
        with tap.lock:
            if len(tap.events) == seen:
                break
    path = os.path.join(OUT, name + ".txt")
    marks = old_marks(path)
    lines = ["# %s: what it sends to rigctld, and Debian's rigctld (Hamlib %s, dummy radio) answers."
             % (name, subprocess.run(["rigctld", "--version"], capture_output=True, text=True).stdout.split()[2]),
             "# Regenerate with scripts/rigctl-transcripts.py. \"~ \" is Tolvane's own answer where it differs on purpose, \"~#\" why."]
    prev = None
    for line in tap.transcript():
        if line.startswith("> "):
            lines.extend(marks.get(prev, []))
            prev = line
        lines.append(line)
    lines.extend(marks.get(prev, []))
    with open(path, "w", encoding="latin-1") as f:
        f.write("\n".join(lines) + "\n")
    print("%s: %d lines" % (path, len(lines)))


def rigctld():
    port = free_port()
    server = subprocess.Popen(["rigctld", "-m", "1", "-P", "RIG", "-T", "127.0.0.1", "-t", str(port)],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(50):
        try:
            socket.create_connection(("127.0.0.1", port)).close()
            break
        except OSError:
            time.sleep(0.1)
    return server, port


def main():
    if sys.argv[1:2] == ["--hamlib-client"]:
        hamlib_client(int(sys.argv[3]), [HAMLIB[sys.argv[2]]])
        return
    os.makedirs(OUT, exist_ok=True)
    for name in sys.argv[1:] or sorted(list(HAMLIB) + list(RAW)):
        # A fresh server for each client: what one client set doesn't colour the next one's answers.
        if name in HAMLIB:
            server, port = rigctld()
            try:
                conversations = [hamlib_lines(name, port)]
            finally:
                server.terminate()
                server.wait()
        else:
            conversations = RAW[name]
        server, port = rigctld()
        try:
            record(name, port, conversations)
        finally:
            server.terminate()
            server.wait()


if __name__ == "__main__":
    main()
