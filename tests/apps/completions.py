#!/usr/bin/env python3
"""What bash offers behind "hexmire", once the completion is sourced.

    completions.py PROGRAM
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = ""
SCRIPT = pathlib.Path(__file__).parents[2] / "apps/hexmire/completions/hexmire.bash"

ASK = """
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
_hexmire
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completions(unittest.TestCase):
    def offered(self, *words, folder=None):
        done = subprocess.run(
            ["bash", "--norc", "-c", ASK, "bash", str(SCRIPT), PROGRAM, *words],
            capture_output=True, text=True, check=True, cwd=folder)
        self.assertEqual(done.stderr, "")
        return set(done.stdout.split())

    def test_commands(self):
        every = self.offered("")
        self.assertLessEqual({"demo", "host", "equipment", "log", "version"}, every)
        self.assertEqual(self.offered("equ"), {"equipment"})
        self.assertEqual(self.offered("dictionary", "ch"), {"check"})
        self.assertEqual(self.offered("--v"), {"--version"})
        self.assertEqual(self.offered("nothing-like-this"), set())

    def test_options_are_those_of_the_help(self):
        for command in (["host"], ["equipment"], ["demo"], ["log"], ["dictionary", "list"]):
            text = subprocess.run([PROGRAM, *command, "--help"], capture_output=True, text=True,
                                  check=True).stdout
            rows = [line.split()[0] for line in text.splitlines() if line.startswith("  -")]
            self.assertGreater(len(rows), 1)
            self.assertEqual(self.offered(*command, "-"),
                             {row.removeprefix("-h,") for row in rows})
        self.assertEqual(self.offered("host", "--remote", "1.2.3.4:5", "--sc"), {"--script"})

    def test_values(self):
        self.assertEqual(self.offered("host", "--port-type", ""),
                         {"rs232", "hsms", "tcpip", "hsms-ss"})
        self.assertEqual(self.offered("host", "--mode", "a"), {"active", "alternating"})
        self.assertEqual(self.offered("host", "--remote", ""), set())
        with tempfile.TemporaryDirectory() as folder:
            for name in ("a.script", "b.script"):
                open(os.path.join(folder, name), "w", encoding="utf-8").close()
            self.assertEqual(self.offered("host", "--script", "", folder=folder),
                             {"a.script", "b.script"})
            self.assertEqual(self.offered("host", "--script", "b", folder=folder), {"b.script"})


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
