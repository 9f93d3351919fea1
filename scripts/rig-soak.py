#!/usr/bin/python3
"""Eight rig-server clients at once against the real program and a simulated radio, for a while.

Starts tolvane-radiosim (IC-7300) and `tolvane --headless` on it from a build folder, then runs eight
clients on loopback that mix what real clients send: polls ("f", "m", "t", "v s f m t"), frequency and
mode sets, and PTT — some key, hold the transmission a moment and unkey; some key and then vanish
(socket reset); one tries to unkey another's transmission. It checks, and prints at the end:

  - that every line a client sent got its whole answer (none lost, none late past the client timeout);
  - that after the last owner left, the program says it is not transmitting and the last PTT message
    the radio heard was the receive command;
  - the program's resident memory sampled every 10 s (it should stay flat).

    scripts/rig-soak.py [SECONDS] [BUILD_DIR]      default 600 s, build/release

Loopback only; bounded by SECONDS; stops its own processes by PID.
"""

import os
import random
import re
import socket
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
SECONDS = float(sys.argv[1]) if len(sys.argv) > 1 else 600.0
BUILD = sys.argv[2] if len(sys.argv) > 2 else os.path.join(ROOT, "build", "release")
KEY, UNKEY = "FE FE 94 E0 1C 00 01 FD", "FE FE 94 E0 1C 00 00 FD"
TIMEOUT = 5.0  # a client's own reply timeout: an answer later than this counts as lost


def free_port():
    s = socket.socket()
    s.bind(("127.0.0.1", 0))
    port = s.getsockname()[1]
    s.close()
    return port


class Client:
    def __init__(self, port):
        self.sock = socket.create_connection(("127.0.0.1", port), timeout=TIMEOUT)
        self.buf = b""

    def ask(self, line, answer_lines):
        """Sends one line and reads its answer (a known number of lines, or one RPRT line)."""
        self.sock.sendall(line.encode() + b"\n")
        got = []
        while len(got) < answer_lines:
            while b"\n" not in self.buf:
                chunk = self.sock.recv(4096)
                if not chunk:
                    raise ConnectionError("closed")
                self.buf += chunk
            one, self.buf = self.buf.split(b"\n", 1)
            got.append(one.decode())
            if one.startswith(b"RPRT -"):
                break  # an error code ends the answer
        return got

    def vanish(self):
        self.sock.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\x01\x00\x00\x00\x00\x00\x00\x00")
        self.sock.close()  # a reset, as a crashed program's socket

    def close(self):
        try:
            self.sock.sendall(b"q\n")
        except OSError:
            pass
        self.sock.close()


def main():
    work = tempfile.mkdtemp(prefix="tolvane-soak-")
    sim = subprocess.Popen([os.path.join(BUILD, "tolvane-radiosim"), "--model", "IC-7300", "--freq", "14074",
                            "--mode", "USB", "--dial-step", "10", "--dial-every", "500"],
                           stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=open(os.path.join(work, "radio.log"), "w"))
    pty = sim.stdout.readline().decode().split()[1]
    port = free_port()
    with open(os.path.join(work, "Tolvane.ini"), "w") as f:
        f.write("[General]\nRadio=IC-7300\nRadioId=94\nCommPort=1\nCommPortDevice1=%s\n"
                "InterrogateInterval=100\nMessageCapture=F\n" % pty)
    program = subprocess.Popen([os.path.join(BUILD, "tolvane"), "--headless", "--config-dir", work,
                                "--app-dir", os.path.join(ROOT, "data"), "--net-port", str(port)],
                               stdout=open(os.path.join(work, "program.log"), "w"), stderr=subprocess.STDOUT)
    deadline = time.time() + 30
    while time.time() < deadline:
        try:
            Client(port).close()
            break
        except OSError:
            time.sleep(0.2)

    stats = {"answers": 0, "lost": 0, "refused": 0, "vanished_keyed": 0, "errors": []}
    lock = threading.Lock()
    rss = []
    stop_at = time.time() + SECONDS

    def count(key, n=1):
        with lock:
            stats[key] += n

    def worker(index):
        rnd = random.Random(index)
        client = Client(port)
        while time.time() < stop_at:
            try:
                choice = rnd.random()
                if choice < 0.55:
                    poll = rnd.choice(["f", "m", "t", "v", "s"])
                    client.ask(poll, {"m": 2, "s": 2}.get(poll, 1))
                    client.ask("v s f m t", 7)  # the compound poll, as loggers send it
                    time.sleep(0.1)
                elif choice < 0.75:
                    client.ask("F %d" % rnd.randrange(14000000, 14350000, 10), 1)
                    client.ask(rnd.choice(["M USB 0", "M CW 500", "M PKTUSB -1"]), 1)
                elif choice < 0.9:
                    answer = client.ask("T 1", 1)[0]
                    if answer == "RPRT 0":
                        time.sleep(rnd.uniform(0.05, 0.5))
                        if rnd.random() < 0.2:
                            client.vanish()  # keyed and gone
                            count("vanished_keyed")
                            client = Client(port)
                        else:
                            client.ask("T 0", 1)
                    else:
                        count("refused")
                else:
                    if client.ask("T 0", 1)[0] != "RPRT 0":
                        count("refused")
                count("answers")
            except (socket.timeout, ConnectionError, OSError) as e:
                count("lost")
                with lock:
                    stats["errors"].append("%d: %s" % (index, e))
                client = Client(port)
        client.ask("T 0", 1)
        client.close()

    def sampler():
        while time.time() < stop_at:
            with open("/proc/%d/status" % program.pid) as f:
                m = re.search(r"VmRSS:\s+(\d+)", f.read())
                rss.append(int(m.group(1)))
            time.sleep(10)

    threads = [threading.Thread(target=worker, args=(i,)) for i in range(8)]
    threads.append(threading.Thread(target=sampler))
    for t in threads:
        t.start()
    for t in threads:
        t.join()

    time.sleep(1.5)
    last = Client(port)
    ptt = last.ask("t", 1)[0]
    last.close()
    program.terminate()
    program.wait(timeout=10)
    sim.stdin.write(b"quit\n")
    sim.stdin.flush()
    sim.wait(timeout=5)
    log = open(os.path.join(work, "radio.log")).read()
    last_ptt = max(log.rfind(KEY), log.rfind(UNKEY))
    last_is_unkey = last_ptt >= 0 and log.startswith(UNKEY, last_ptt)
    print("soak: %.0f s, 8 clients: %d rounds answered, %d lost, %d refused (another's PTT), "
          "%d keyed clients vanished" % (SECONDS, stats["answers"], stats["lost"], stats["refused"],
                                         stats["vanished_keyed"]))
    print("soak: after the last client: t = %s; last PTT message heard by the radio: %s"
          % (ptt, "receive" if last_is_unkey else "TRANSMIT"))
    if rss:
        print("soak: RSS kB first %d, max %d, last %d (%d samples)" % (rss[0], max(rss), rss[-1], len(rss)))
    for e in stats["errors"][:10]:
        print("soak: lost:", e)
    ok = stats["lost"] == 0 and ptt == "0" and last_is_unkey
    print("soak:", "PASS" if ok else "FAIL", "(files in %s)" % work)
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
