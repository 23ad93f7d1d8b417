#!/usr/bin/env python3
"""Runs the program against the peer of hsms.py, in both roles.

    tests/interop/run.py PROGRAM
"""
import contextlib
import json
import pathlib
import socket
import struct
import subprocess
import sys
import time

import hsms
from hsms import Peer, ascii_item, control, data, item

DICTIONARY = pathlib.Path(__file__).parents[2] / "dictionaries" / "Default.xml"
PROGRAM = ""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


@contextlib.contextmanager
def program(*arguments, script=""):
    """The program as a child process with JSON lines on its standard output."""
    child = subprocess.Popen(
        [PROGRAM, *arguments, "--dictionary", str(DICTIONARY), "--no-log", "--json"],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )
    try:
        child.stdin.write(script)
        child.stdin.close()
        child.stdin = None  # communicate() would flush it
        yield child
    finally:
        if child.poll() is None:
            child.terminate()
        child.wait(hsms.PATIENCE)


def call(port):
    """A connection to a program that may still be starting."""
    deadline = time.monotonic() + hsms.PATIENCE
    while time.monotonic() < deadline:
        with contextlib.suppress(ConnectionRefusedError):
            return Peer(socket.create_connection(("127.0.0.1", port), hsms.PATIENCE))
    raise AssertionError("nobody listens")


@contextlib.contextmanager
def selected_equipment():
    """`hexmire equipment`, connected and selected."""
    port = free_port()
    with program("equipment", "--local", f"127.0.0.1:{port}", "--device-id", "7"):
        peer = call(port)
        peer.send(control(hsms.SELECT_REQ, 1))
        assert peer.expect("SType 2").byte3 == 0
        yield peer
        peer.close()


# --- the program as equipment -----------------------------------------------------------------------


def an_equipment_answers_its_host():
    with selected_equipment() as peer:
        peer.send(data(1, 13, 100, item(0, []), wait=True, session=7))
        reply = peer.expect("S1F14")
        assert reply.system == 100 and reply.session == 7
        assert reply.body.startswith(bytes.fromhex("0102210100")), reply.body.hex()
        peer.send_in_pieces(data(1, 1, 101, wait=True, session=7))
        assert peer.expect("S1F2").system == 101
        peer.send(
            data(1, 1, 102, wait=True, session=7),
            control(hsms.LINKTEST_REQ, 5),
            data(1, 1, 103, wait=True, session=7),
        )
        answers = [peer.receive() for _ in range(3)]
        names = sorted((answer.name, answer.system) for answer in answers)
        assert names == [("S1F2", 102), ("S1F2", 103), ("SType 6", 5)], names


def an_equipment_reports_what_it_does_not_know():
    with selected_equipment() as peer:
        peer.send(data(99, 1, 200, wait=True, session=7))
        unknown_stream = peer.expect("S9F3")
        header = struct.pack(">HBBHI", 7, 99 | 0x80, 1, 0, 200)
        assert unknown_stream.body[:2] == bytes.fromhex("210a"), unknown_stream.body.hex()
        assert unknown_stream.body[2:6] == header[:4] and unknown_stream.body[8:] == header[6:]
        peer.send(data(1, 99, 201, wait=True, session=7))
        assert peer.expect("S9F5").body[2:6] == struct.pack(">HBB", 7, 0x81, 99)


def an_equipment_refuses_what_it_must():
    port = free_port()
    with program("equipment", "--local", f"127.0.0.1:{port}"):
        peer = call(port)
        peer.send(data(1, 1, 300, wait=True))
        assert peer.expect("SType 7").byte3 == 4, "data before select is rejected as not selected"
        peer.send(control(hsms.SELECT_REQ, 1))
        assert peer.expect("SType 2").byte3 == 0
        peer.send(control(hsms.SELECT_REQ, 2))
        assert peer.expect("SType 2").byte3 == 1, "a second select is told that it is active already"
        peer.send(control(8, 3))
        rejected = peer.expect("SType 7")
        assert (rejected.byte2, rejected.byte3) == (8, 1), "an unknown SType is rejected as such"
        peer.send(control(hsms.LINKTEST_REQ, 4))
        assert peer.expect("SType 6").system == 4
        peer.sock.sendall(struct.pack(">I", 9) + bytes(9))
        peer.expect_closed()
        again = call(port)
        again.send(control(hsms.SELECT_REQ, 1))
        assert again.expect("SType 2").byte3 == 0, "the next caller is served"
        again.send(control(hsms.SEPARATE_REQ, 2))
        again.expect_closed()
        again.close()


# --- the program as host ----------------------------------------------------------------------------


def a_host_runs_its_script():
    script = "connect 10\nsend S1F13\nexpect S1F14 10\nsend S1F1\nexpect S1F2 10\n"
    script += "expect S6F11 10\ndisconnect\nquit\n"
    with socket.create_server(("127.0.0.1", 0)) as listener:
        listener.settimeout(hsms.PATIENCE)
        remote = f"127.0.0.1:{listener.getsockname()[1]}"
        with program("host", "--remote", remote, "--script", "-", script=script) as child:
            peer = Peer(listener.accept()[0])
            peer.send(control(hsms.SELECT_RSP, peer.expect("SType 1").system))
            asked = peer.expect("S1F13W")
            identity = item(0, [ascii_item("PEER"), ascii_item("1.0")])
            accepted = item(0, [item(0o10, b"\0"), identity])
            peer.send_in_pieces(data(1, 14, asked.system, accepted))
            asked = peer.expect("S1F1W")
            report = item(0, [item(0o54, bytes(4)), item(0o54, b"\0\0\0\7"), item(0, [])])
            peer.send(data(1, 2, asked.system, identity), data(6, 11, 900, report))
            assert peer.expect("SType 9").session == 0xFFFF
            peer.close()
            output, errors = child.communicate(timeout=hsms.PATIENCE)
            assert child.returncode == 0, f"status {child.returncode}: {errors}"
    events = [json.loads(line) for line in output.splitlines()]
    received = [
        (event["stream"], event["function"], event["body_hex"].replace(" ", "").lower())
        for event in events
        if event["event"].startswith("received")
    ]
    assert received == [
        (1, 14, accepted.hex()),
        (1, 2, identity.hex()),
        (6, 11, report.hex()),
    ], received


def a_host_whose_peer_dies_says_so():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        listener.settimeout(hsms.PATIENCE)
        remote = f"127.0.0.1:{listener.getsockname()[1]}"
        script = "connect 10\nsend S1F1\nexpect S1F2 10\n"
        with program("host", "--remote", remote, "--script", "-", script=script) as child:
            peer = Peer(listener.accept()[0])
            peer.send(control(hsms.SELECT_RSP, peer.expect("SType 1").system))
            peer.expect("S1F1W")
            peer.close()
            output, _ = child.communicate(timeout=2 * hsms.PATIENCE)
            assert child.returncode != 0
    events = [json.loads(line)["event"] for line in output.splitlines()]
    assert "disconnect" in events, events


SCENARIOS = [
    an_equipment_answers_its_host,
    an_equipment_reports_what_it_does_not_know,
    an_equipment_refuses_what_it_must,
    a_host_runs_its_script,
    a_host_whose_peer_dies_says_so,
]


def main():
    global PROGRAM
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    PROGRAM = sys.argv[1]
    failed = 0
    for scenario in SCENARIOS:
        name = scenario.__name__.replace("_", " ")
        try:
            scenario()
            print(f"interop: {name}: ok")
        except (AssertionError, EOFError, OSError, subprocess.TimeoutExpired) as failure:
            failed += 1
            print(f"interop: {name}: FAILED: {failure!r}")
    print(f"interop: {len(SCENARIOS) - failed} of {len(SCENARIOS)} scenarios passed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
