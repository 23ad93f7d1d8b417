#!/usr/bin/env python3
"""Types at the prompt of `hexmire host` on a pseudo-terminal and looks at what it shows.

    terminal.py PROGRAM
"""

import fcntl
import os
import pty
import select
import signal
import socket
import stat
import subprocess
import sys
import tempfile
import termios
import time
import unittest

PROGRAM = ""
BOUND = 20.0  # seconds; longer than anything here takes


def modes(terminal):
    return termios.tcgetattr(terminal)[3]


def size(terminal):
    """Bytes that wait to be read."""
    room = bytearray(4)
    fcntl.ioctl(terminal, termios.FIONREAD, room)
    return int.from_bytes(room, sys.byteorder)


class Prompt:
    """The program on a terminal of 80 columns."""

    def __init__(self, state, *arguments, terminal="xterm"):
        self.shown = ""
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            environment = dict(os.environ, TERM=terminal, XDG_STATE_HOME=state)
            os.execve(PROGRAM, [PROGRAM, *arguments], environment)
        self.taken = 0

    def type(self, keys):
        os.write(self.descriptor, keys.encode())

    def read(self, left):
        if not select.select([self.descriptor], [], [], max(0, left))[0]:
            return False
        try:
            piece = os.read(self.descriptor, 65536)
        except OSError:  # the other end has been closed
            return False
        self.shown += piece.decode()
        return bool(piece)

    def wait_for(self, text):
        """Reads to the text, behind what was waited for before; gives what came before it."""
        end = time.monotonic() + BOUND
        while True:
            at = self.shown.find(text, self.taken)
            if at >= 0:
                before = self.shown[self.taken:at]
                self.taken = at + len(text)
                return before
            if not self.read(end - time.monotonic()):
                raise AssertionError(f"{text!r} is not in {self.shown[self.taken:]!r}")

    def end(self):
        while self.read(BOUND):
            pass
        status = os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])
        if status != 0:
            print(self.shown[self.taken:], file=sys.stderr)
        return status


class Terminal(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.state = folder.name
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.address = "127.0.0.1:%d" % probe.getsockname()[1]

    def prompt(self, terminal="xterm", t5="1"):
        return Prompt(self.state, "host", "--remote", self.address, "--no-log", "--t5", t5,
                      terminal=terminal)

    def equipment(self):
        equipment = subprocess.Popen(
            [PROGRAM, "equipment", "--local", self.address, "--no-log", "--script", "-"],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
        self.addCleanup(equipment.wait)
        self.addCleanup(equipment.stdin.close)
        equipment.stdin.write(b"connect\n")
        equipment.stdin.flush()
        return equipment

    def test_events_appear_above_what_is_typed(self):
        equipment = self.equipment()
        host = self.prompt()
        host.wait_for("host connected")
        host.wait_for("host> ")
        host.type("sen")
        host.wait_for("sen")
        equipment.stdin.write(b"send S5F1\n")
        equipment.stdin.flush()
        host.wait_for("host received S5F1 W")
        host.wait_for("host> ")
        host.wait_for("sen")
        host.type("d S1F13\r")
        host.wait_for("host sent S1F13 W")
        host.wait_for("host received S1F14")
        host.wait_for("host> ")
        host.type("\x04")
        host.wait_for("host disconnected")
        self.assertEqual(host.end(), 0)

    def test_words_are_completed(self):
        host = self.prompt()
        host.wait_for("host> ")
        host.type("sho\ts1f1\t\t")
        host.wait_for("S1F11")
        host.wait_for("S1F19")
        host.type("3\r")
        host.wait_for("S1F14")
        host.wait_for("host> ")
        host.type("set t3\t\r")
        host.wait_for("T3Timeout 45")
        host.type("quit\r")
        self.assertEqual(host.end(), 0)

    def test_what_fails_ends_nothing(self):
        host = self.prompt()
        for line, answer in (("fetch", "error: unknown command 'fetch'"),
                             ("send S1F1 <U1 256>.", "error: 1:15: expected a whole number"),
                             ("expect S9F9 0", "error: S9F9 did not come"),
                             ("set T3Timeout 999", "error: cannot set T3Timeout to 999: 1051 "),
                             ("send S99F99", "error: cannot send S99F99: 1025 ")):
            host.wait_for("host> ")
            host.type(line + "\r")
            host.wait_for(answer)
        host.type("quit\r")
        self.assertEqual(host.end(), 0)

    def test_control_c_drops_the_line_or_ends_the_command(self):
        host = self.prompt(t5="200")
        host.wait_for("host error 3050")  # The only one: nothing else is shown above the line.
        host.wait_for("host> ")
        host.type("quit")
        host.wait_for("quit")
        host.type("\x03")
        host.wait_for("\r\n")
        host.wait_for("host> ")
        host.type("send\r")
        host.wait_for("....> ")
        host.type("S1F1 W\r")
        host.wait_for("....> ")
        host.type("\x03")
        host.wait_for("host> ")
        host.type("wait 1000\r")
        host.wait_for("\n")
        host.type("\x03")
        host.wait_for("error: interrupted")
        host.wait_for("host> ")
        os.kill(host.process, signal.SIGTERM)
        self.assertEqual(host.end(), 0)

    def test_a_command_that_is_dropped_is_not_done(self):
        self.equipment()
        host = self.prompt()
        host.wait_for("host connected")
        host.type("send\rS1F1 W\r")
        host.wait_for("....> ")
        host.wait_for("....> ")
        host.type("\x03")
        host.wait_for("host> ")
        host.type("quit\r")
        self.assertEqual(host.end(), 0)
        self.assertNotIn("sent", host.shown)
        self.assertNotIn("error: ", host.shown)

    def test_a_terminal_that_nobody_reads_gets_its_modes_back(self):
        equipment = self.equipment()
        host = self.prompt()
        host.wait_for("host connected")
        host.wait_for("host> ")
        self.assertFalse(modes(host.descriptor) & termios.ICANON)
        equipment.stdin.write(b"send S5F1 <A '%s'>.\n" % (b"x" * 500_000))  # no terminal holds it
        equipment.stdin.flush()
        waits = 0
        while waits < 5:  # Until nothing more comes.
            before = size(host.descriptor)
            waits = waits + 1 if not select.select([], [], [], 0.2)[0] and before > 0 and \
                before == size(host.descriptor) else 0
        os.kill(host.process, signal.SIGTERM)
        os.kill(host.process, signal.SIGHUP)
        status = os.waitstatus_to_exitcode(os.waitpid(host.process, 0)[1])
        self.assertIn(status, (128 + signal.SIGTERM, 128 + signal.SIGHUP))
        wanted = termios.ICANON | termios.ECHO
        self.assertEqual(modes(host.descriptor) & wanted, wanted)

    def test_what_commands_show_moves_no_cursor(self):
        shown = Prompt(self.state, "decode", "41 04 1B 5B 32 4A")
        shown.wait_for("< A '\\x1B[2J' >")
        self.assertEqual(shown.end(), 0)
        path = os.path.join(self.state, "d.xml")
        with open(path, "w", encoding="ascii") as file:
            file.write("<D><Trans Name='S1F1' Desc='&#x9b;2J'>"
                       "<Primary Stream='1' Func='1' Name='' Desc=''><Root/></Primary>"
                       "<Secondary Stream='1' Func='2' Name='' Desc=''><Root/></Secondary>"
                       "</Trans></D>")
        for arguments in (("list",), ("show", "S1F1")):
            shown = Prompt(self.state, "dictionary", *arguments, "--dictionary", path)
            shown.wait_for("\\x9B2J")
            self.assertEqual(shown.end(), 0)

    def test_a_signal_ends_the_prompt_and_what_runs_there(self):
        host = self.prompt()
        host.wait_for("host> ")
        host.type("wait 1000\r")
        host.wait_for("\n")
        # Whether the command had begun or not.
        os.kill(host.process, signal.SIGTERM)
        self.assertEqual(host.end(), 0)

    def test_control_characters_that_come_are_visible(self):
        equipment = self.equipment()
        host = self.prompt()
        host.wait_for("host connected")
        equipment.stdin.write(b"send S5F1 <A '\x1b[5m'>.\n")
        equipment.stdin.flush()
        host.wait_for("< A '\\x1B[5m' >")
        host.type("\x04")
        self.assertEqual(host.end(), 0)

    def test_lines_come_back_in_the_next_session(self):
        host = self.prompt()
        host.wait_for("host> ")
        host.type("set T4Timeout\r")
        host.wait_for("T4Timeout 10")
        host.type("quit\r")
        self.assertEqual(host.end(), 0)
        path = os.path.join(self.state, "hexmire", "history")
        self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(os.stat(os.path.dirname(path)).st_mode), 0o700)
        host = self.prompt()
        host.wait_for("host> ")
        host.type("\x1b[A\x1b[A\r")
        host.wait_for("T4Timeout 10")
        host.type("quit\r")
        self.assertEqual(host.end(), 0)

    def test_a_terminal_that_cannot_move_the_cursor_shows_events_alone(self):
        self.equipment()
        host = self.prompt(terminal="dumb")
        self.assertNotIn("host>", host.wait_for("host connected"))
        os.kill(host.process, signal.SIGTERM)
        host.wait_for("host disconnected")
        self.assertEqual(host.end(), 0)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
