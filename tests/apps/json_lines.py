#!/usr/bin/env python3
"""Drives `hexmire host --json --script -` as another program would: one command a line on its
standard input, one JSON object a line on its standard output, nothing else.

    json_lines.py PROGRAM
"""

import json
import os
import select
import socket
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = ""
BOUND = 20.0  # seconds; longer than anything here takes

HARMLESS = (3050, 2011)  # a connection refused before the equipment listens, an unknown primary

EVENT_FIELDS = {
    "connect": ["event"],
    "disconnect": ["event", "code", "text"],
    "error": ["event", "code", "text", "line"],
}
MESSAGE_FIELDS = ["event", "stream", "function", "device_id", "system_bytes", "reply_expected",
                  "name", "sml", "body_hex"]


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Side:
    """One side of a link, driven over its standard streams."""

    def __init__(self, *arguments):
        self.process = subprocess.Popen(
            [PROGRAM, *arguments, "--no-log", "--json", "--script", "-"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
        self.pending = b""

    def say(self, text):
        self.process.stdin.write(text.encode() + b"\n")

    def event(self):
        """The next event; every one must have exactly its fields, in their order."""
        end = time.monotonic() + BOUND
        while b"\n" not in self.pending:
            left = end - time.monotonic()
            ready = select.select([self.process.stdout], [], [], max(0, left))[0]
            if not ready:
                raise AssertionError("no event came")
            piece = os.read(self.process.stdout.fileno(), 65536)
            if not piece:
                raise AssertionError("the output has ended: " +
                                     self.process.stderr.read().decode())
            self.pending += piece
        line, self.pending = self.pending.split(b"\n", 1)
        event = json.loads(line)
        wanted = EVENT_FIELDS.get(event["event"], MESSAGE_FIELDS)
        if list(event) != wanted:
            raise AssertionError(f"fields {list(event)}, not {wanted}")
        return event

    def wait_for(self, **wanted):
        """Passes over other events, but not over errors that should not be."""
        while True:
            event = self.event()
            if (event["event"] == "error" and wanted["event"] != "error"
                    and event["code"] not in HARMLESS):
                raise AssertionError(str(event))
            if all(event.get(key) == value for key, value in wanted.items()):
                return event

    def end(self):
        """Ends the input; exit status and the standard error."""
        errors = self.process.communicate(timeout=BOUND)[1]
        return self.process.returncode, errors.decode()

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            stream.close()
        self.process.wait()


class JsonLines(unittest.TestCase):
    def side(self, *arguments):
        side = Side(*arguments)
        self.addCleanup(side.close)
        return side

    def pair(self):
        address = f"127.0.0.1:{free_port()}"
        with tempfile.NamedTemporaryFile("w", suffix=".xml", delete=False) as small:
            self.addCleanup(os.unlink, small.name)
            small.write("<D>")
            for function in (1, 13):
                small.write(
                    f"<Trans Name='S1F{function}' Desc=''>"
                    f"<Primary Stream='1' Func='{function}' Name='' Desc=''><Root/></Primary>"
                    f"<Secondary Stream='1' Func='{function + 1}' Name='x' Desc=''><Root/>"
                    "</Secondary></Trans>")
            small.write("</D>")
        equipment = self.side("equipment", "--local", address, "--dictionary", small.name)
        equipment.say("connect")
        host = self.side("host", "--remote", address, "--t3", "1", "--t5", "1")
        host.say("connect")
        self.assertEqual(host.wait_for(event="connect"), {"event": "connect"})
        return equipment, host

    def test_a_host_is_driven_from_connect_to_disconnect(self):
        equipment, host = self.pair()
        for function, name in ((13, "S1F13"), (1, "S1F1")):
            host.say(f"send {name}\nexpect S1F{function + 1} 5")
            sent = host.event()
            self.assertEqual(sent["event"], "sent")
            self.assertEqual((sent["stream"], sent["function"], sent["name"]), (1, function, name))
            self.assertIs(sent["reply_expected"], True)
            self.assertIn(f"S1F{function} W\r\n", sent["sml"])
            got = host.event()
            self.assertEqual(got["event"], "received-secondary")
            self.assertEqual((got["stream"], got["function"]), (1, function + 1))
            self.assertEqual(got["system_bytes"], sent["system_bytes"])

        host.say("send S99F1 <A 'x'>.\nexpect S9F3 5")
        self.assertEqual(host.event()["body_hex"], "41 01 78")
        got = host.event()
        self.assertEqual((got["event"], got["stream"], got["function"]), ("received-primary", 9, 3))
        self.assertEqual(got["body_hex"], "21 0A 00 00 63 01 00 00 00 00 00 03")

        equipment.say("hold S1F1\nsend S9F13 .")
        host.wait_for(event="received-primary", function=13)
        host.say("send S1F1")
        error = host.wait_for(event="error")
        self.assertEqual(error["code"], 2012)
        self.assertIn("S1F1", error["text"])

        host.say("disconnect")
        self.assertEqual(host.event(), {"event": "disconnect", "code": 0, "text": ""})
        self.assertEqual(equipment.wait_for(event="disconnect")["code"], 3035)
        self.assertEqual(host.end(), (0, ""))

    def test_a_primary_is_answered_by_a_reply_that_is_asked_for(self):
        equipment, host = self.pair()
        equipment.say("send\nS6F11 W\n<L [2]\n  <U4 7>\n  <A 'caf\u00e9'>\n>.\nexpect S6F12 5")
        self.assertEqual(equipment.wait_for(event="sent")["body_hex"],
                         "01 02 B1 04 00 00 00 07 41 04 63 61 66 E9")
        got = host.wait_for(event="received-primary")
        self.assertIn("< A 'caf\u00e9' >", got["sml"])
        host.say("expect S6F11 5\nreply S6F12 <B 0x00>.")
        reply = equipment.wait_for(event="received-secondary")
        self.assertEqual((reply["function"], reply["body_hex"]), (12, "21 01 00"))
        self.assertEqual(reply["system_bytes"], got["system_bytes"])

        # The reply was matched: nothing is told between it and what comes next.
        equipment.say("send S1F1 W.\nexpect S1F2 5")
        self.assertEqual(equipment.event()["name"], "S1F1")
        host.wait_for(event="received-primary", function=1)
        host.say("expect S1F1 5\nreply S1F2 .")
        self.assertEqual(equipment.event()["event"], "received-secondary")

        # An answer of the equipment waits for its script too, while it is held back.
        equipment.say("hold\nsend S9F13 .")
        host.wait_for(event="received-primary", function=13)
        host.say("send S1F13")
        equipment.wait_for(event="received-primary", function=13)
        equipment.say("expect S1F13 5\nreply S1F14 <L <B 1> <L>>.")
        got = host.wait_for(event="received-secondary")
        self.assertEqual(got["body_hex"], "01 02 21 01 01 01 00")
        equipment.say("release\nsend S9F13 .")
        host.wait_for(event="received-primary", function=13)
        host.say("send S1F1\nexpect S1F2 5")
        host.wait_for(event="received-secondary", function=2)
        equipment.say("reply S1F2 .")
        status, errors = equipment.end()
        self.assertEqual(status, 1)
        self.assertEqual(errors, "hexmire: <stdin>:17: no received primary waits for S1F2\n")

    def test_what_is_listed_is_no_event(self):
        host = self.side("host", "--remote", "127.0.0.1:1")
        host.say("list s1f13\nshow S1F1\nset t3timeout\nset T3Timeout 7\nset T3Timeout\nhelp quit")
        output, errors = host.process.communicate(timeout=BOUND)
        self.assertEqual(host.process.returncode, 0, errors)
        self.assertEqual(output, b"")
        lines = errors.decode().splitlines()
        self.assertTrue(lines[0].startswith("S1F13 "), lines[0])
        self.assertIn("S1F1 W", lines)
        self.assertEqual(lines[-3:-1], ["T3Timeout 45", "T3Timeout 7"])

    def test_a_refused_value_is_an_error_and_ends_the_script(self):
        host = self.side("host", "--remote", "127.0.0.1:1")
        host.say("set T3Timeout 1000")
        self.assertEqual(host.event()["code"], 1051)
        status, errors = host.end()
        self.assertEqual(status, 1)
        self.assertTrue(errors.startswith(
            "hexmire: <stdin>:1: cannot set T3Timeout to 1000: 1051 "), errors)

    def test_a_reader_that_goes_away_ends_the_program_with_status_1(self):
        address = f"127.0.0.1:{free_port()}"
        equipment = self.side("equipment", "--local", address)
        equipment.process.stdout.close()
        host = self.side("host", "--remote", address, "--t5", "1")
        equipment.say("connect")
        host.say("connect")
        host.wait_for(event="connect")
        equipment.process.wait(timeout=BOUND)
        self.assertEqual(equipment.process.returncode, 1)
        self.assertEqual(equipment.process.stderr.read(),
                         b"hexmire: cannot write to the standard output\n")

    def test_lines_are_read_as_they_are_asked_for(self):
        host = self.side("host", "--remote", "127.0.0.1:1")
        host.say("wait 1000")
        given = 0
        while select.select([], [host.process.stdin], [], 0.5)[1]:
            given += os.write(host.process.stdin.fileno(), b"# nothing to do\n" * 64)
            self.assertLess(given, 4 << 20)
        host.process.terminate()
        self.assertEqual(host.end(), (1, "hexmire: <stdin>:1: interrupted\n"))

    def test_a_line_without_an_end_is_refused(self):
        host = self.side("host", "--remote", "127.0.0.1:1")
        try:
            for _ in range(20 * 16):
                host.process.stdin.write(b"#" * 65536)
        except BrokenPipeError:
            pass
        status, errors = host.end()
        self.assertEqual((status, errors),
                         (2, "hexmire: <stdin>: a line is longer than 16 MiB\n"))


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
