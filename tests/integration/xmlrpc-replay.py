#!/usr/bin/python3
"""Sends a recorded client's calls (tests/data/xmlrpc/*.txt, made by scripts/record-xmlrpc.py) to Tolvane, one
HTTP connection for each of the client's, and checks every answer: a well-formed methodResponse of the XML-RPC
type the recorded server answered (any value where it answered an empty one, or a fault for a method it lacked
that Tolvane serves), a fault where Tolvane doesn't list the method, and never a dropped connection. Exits 1 at the first wrong answer.
Then prints what the recorded sets leave the radio at, "expect freq HZ", "expect mode NAME", "expect split 0|1",
"expect ptt 0|1", for the caller to compare with the radio, and "done".

    xmlrpc-replay.py TRANSCRIPT PORT
"""

import http.client
import re
import sys
import xml.etree.ElementTree as ET
import xmlrpc.client


def calls(path):
    """(connection, method, body, answer) for each call of the transcript."""
    data = open(path, "rb").read()
    at = 0
    while at < len(data):
        end = data.index(b"\n", at)
        line = data[at:end].decode()
        at = end + 1
        if not line.startswith("> "):
            continue
        _, _, connection, method, length = line.split(" ")
        body = data[at:at + int(length)]
        at += int(length) + 1
        end = data.index(b"\n", at)
        answer = data[at:end].decode()[2:].split(" ", 1)[0]
        at = end + 1
        yield connection, method, body, answer


def kind(body):
    """The XML-RPC type of an answer: fault, empty, or the type of its value (untyped is a string)."""
    root = ET.fromstring(body)
    if root.tag != "methodResponse":
        raise ValueError("not a methodResponse")
    if root.find("fault") is not None:
        return "fault"
    value = root.find("params/param/value")
    if value is None:
        return "empty"
    if len(value) == 0:
        return "string" if (value.text or "").strip() else "empty"
    return {"i4": "int"}.get(value[0].tag, value[0].tag)


def fail(what):
    print(what, flush=True)
    sys.exit(1)


def main():
    path, port = sys.argv[1], int(sys.argv[2])
    served = set(xmlrpc.client.ServerProxy("http://127.0.0.1:%d/RPC2" % port).system.listMethods())
    connections = {}
    state = {}
    count = 0
    for connection, method, body, recorded in calls(path):
        conn = connections.setdefault(connection, http.client.HTTPConnection("127.0.0.1", port, timeout=10))
        try:
            conn.request("POST", "/RPC2", body, {"Content-Type": "text/xml"})
            reply = conn.getresponse()
            answer = reply.read()
        except (OSError, http.client.HTTPException) as e:
            fail("call %d, %s: no answer (%s)" % (count + 1, method, e))
        if reply.status != 200:
            fail("call %d, %s: HTTP %d" % (count + 1, method, reply.status))
        try:
            got = kind(answer)
            if got != "fault":
                xmlrpc.client.loads(answer)
        except Exception as e:
            fail("call %d, %s: not a well-formed answer (%s): %r" % (count + 1, method, e, answer[:200]))
        want = recorded if method in served else "fault"
        # An empty answer takes any value; a method the recorded server lacked but Tolvane serves, any answer.
        if not (got == want or (want == "empty" and got != "fault") or want == "fault"):
            fail("call %d, %s: %s where the client got %s: %r" % (count + 1, method, got, want, answer[:300]))
        if method not in served and got != "fault":
            fail("call %d, %s: not served, yet answered %s" % (count + 1, method, got))
        count += 1
        if got != "fault":
            params = xmlrpc.client.loads(re.sub(rb"<\?clientid=[^?]*\?>", b"", body))[0]
            if re.fullmatch(r"(main|rig)\.set_(frequency|vfo|vfoA|verify_vfoA)", method):
                state["freq"] = int(float(params[0]))
            elif re.fullmatch(r"rig\.set_(mode|modeA|verify_modeA)", method):
                state["mode"] = params[0]
            elif method in ("rig.set_split", "rig.set_ptt"):
                state[method[8:]] = int(params[0])
    print("%d calls answered as the client expects" % count, flush=True)
    for key in ("freq", "mode", "split", "ptt"):
        if key in state:
            print("expect %s %s" % (key, state[key]), flush=True)
    print("done", flush=True)


if __name__ == "__main__":
    main()
