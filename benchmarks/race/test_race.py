#!/usr/bin/env python3
"""Tests of what a race makes of its figures, and of how it watches its processes.

    benchmarks/race/test_race.py
"""
import pathlib
import re
import sys
import tempfile
import types
import unittest

import aims
import chart
import document
import gen_data
import processes
import tables
from contestants import FLOOR, LOGGED, OURS
from measures import Measure, Results

TIME = Measure("host/a/1/p50_us", "", "us")
RATE = Measure("host/a/1/per_s", "", "/s", True)


def results(**figures):
    return Results({name.replace("_", " "): values for name, values in figures.items()})


class Ratios(unittest.TestCase):
    def test_a_time_is_compared_with_the_floor_of_its_own_round(self):
        found = results(floor={TIME.key: [10, 20, 30]}, hexmire={TIME.key: [20, 40, 90]})
        self.assertEqual(found.over_floor(OURS, TIME), 2)

    def test_a_rate_counts_the_other_way(self):
        found = results(floor={RATE.key: [90, 90, 90]}, hexmire={RATE.key: [30, 30, 45]})
        self.assertEqual(found.over_floor(OURS, RATE), 3)

    def test_a_missing_round_leaves_the_medians(self):
        found = results(floor={TIME.key: [10, 20, 30]}, hexmire={TIME.key: [30, 50]})
        self.assertEqual(found.over_floor(OURS, TIME), 2)

    def test_nothing_measured_is_no_ratio(self):
        found = results(floor={TIME.key: [10]}, hexmire={})
        self.assertIsNone(found.over_floor(OURS, TIME))

    def test_the_best_peer_has_the_least_time_or_the_highest_rate(self):
        found = results(
            hexmire={TIME.key: [10], RATE.key: [100]},
            slow={TIME.key: [90], RATE.key: [10]},
            quick={TIME.key: [30], RATE.key: [50]},
        )
        peers = ["slow", "quick", "absent"]
        self.assertEqual(found.best_peer(TIME, peers), "quick")
        self.assertEqual(found.best_peer(RATE, peers), "quick")
        self.assertEqual(found.ahead_of_best(TIME, peers), 3)
        self.assertEqual(found.ahead_of_best(RATE, peers), 2)

    def test_without_peers_nobody_is_best(self):
        found = results(hexmire={TIME.key: [10]})
        self.assertIsNone(found.ahead_of_best(TIME, []))


class Texts(unittest.TestCase):
    def test_a_median_stands_before_the_best_and_the_worst(self):
        self.assertEqual(tables.spread([30, 10, 20]), "20.0 (10.0..30.0)")
        self.assertEqual(tables.spread([1, 2]), "1.50 (1.00..2.00)")
        self.assertEqual(tables.spread([1234567]), "1 234 567")
        self.assertEqual(tables.spread([]), "")
        self.assertEqual(tables.spread([2500], 1000), "2.50")

    def test_columns_of_plain_tables_line_up(self):
        table = tables.Table("name", "Title", ["what", "n"], [["first", "1"], ["x", "22 222"]])
        self.assertEqual(table.plain(), "Title\n\nwhat        n\nfirst       1\nx      22 222\n")
        self.assertEqual(table.markdown(), "| what | n |\n|---|--:|\n| first | 1 |\n| x | 22 222 |\n")

    def test_what_stands_between_two_marks_is_replaced_and_nothing_else(self):
        text = "a\n<!-- race: one -->\nold\n<!-- end -->\nb\n<!-- race: two -->\nkept\n<!-- end -->\n"
        once = document.replaced(text, "one", "new \\1")
        self.assertIn("<!-- race: one -->\n\nnew \\1\n\n<!-- end -->\nb\n", once)
        self.assertIn("kept", once)
        self.assertEqual(document.replaced(once, "one", "new \\1"), once)
        with self.assertRaises(ValueError):
            document.replaced(text, "three", "new")

    def test_the_document_has_a_place_for_every_table(self):
        places = re.findall(r"<!-- race: (\S+) -->", (document.DOCS / "performance.md").read_text())
        made = [table.name for table in tables.all_tables(sample_run())]
        self.assertEqual(sorted(places), sorted([*made, "machine"]))


def sample_run():
    """A run with a little of everything."""
    run = types.SimpleNamespace()
    run.contestants = [{"name": name, "version": "1", "runtime": ""} for name in (FLOOR, OURS, "peer")]
    run.names, run.peers = [FLOOR, OURS, LOGGED, "peer"], ["peer"]
    run.skipped, run.failures = {"other": "no <toolchain>"}, []
    run.link_counts = [1, 10]
    run.results = Results(
        {
            FLOOR: {TIME.key: [10], "links/1/kib": [100], "links/10/kib": [109]},
            OURS: {TIME.key: [12], "links/1/kib": [1000], "links/10/kib": [1090]},
            LOGGED: {TIME.key: [60]},
            "peer": {TIME.key: [50]},
        }
    )
    run.growth = {
        "line": {"line_bytes": 11, "least_bytes": 10, "line_seconds": 2, "least_seconds": 2},
        "curves": {"even": {1: 5, 100: 5}, "rising": {1: 5, 100: 50}},
    }
    run.endurance = {"count": 1, "heap_before": 1000, "heap_after": 2024}
    return run


class WholeRuns(unittest.TestCase):
    def test_memory_of_a_link_is_what_the_others_add(self):
        self.assertEqual(tables.memory_of_link(sample_run()), {FLOOR: 1, OURS: 10})

    def test_aims_are_met_or_missed_or_not_measured(self):
        run = sample_run()
        by_text = {
            aim.text: aim
            for aim in aims.aims(run.results, run.peers, tables.memory_of_link(run), run.endurance)
        }
        met = by_text["S1F1, one open: p50, times the floor"]
        self.assertTrue(met.is_met and met.measured == 1.2)
        missed = by_text["S1F1, one open, with the log: p50, times without"]
        self.assertTrue(not missed.is_met and missed.measured == 5)
        self.assertIsNone(by_text["event report as SML: times the best peer"].measured)
        self.assertEqual(by_text["memory that stays after a million round trips, KiB"].measured, 1)

    def test_the_chart_names_contestants_and_rising_curves(self):
        drawn = chart.draw(sample_run())
        self.assertTrue(drawn.startswith("<svg ") and drawn.endswith("</svg>\n"))
        for words in (">peer<", ">rising<", ">hexmire, log<"):
            self.assertIn(words, drawn)
        self.assertNotIn(">even<", drawn)


class Processes(unittest.TestCase):
    @staticmethod
    def python(*lines):
        return [sys.executable, "-c", "\n".join(lines)]

    def test_the_last_line_is_the_result(self):
        told = processes.result(self.python("print('so'); print('{\"a\": 1}')"), 30)
        self.assertEqual(told, {"a": 1})

    def test_a_failure_tells_the_line_that_names_the_error_or_the_last(self):
        self.assertEqual(processes.why("  throw new Error(\nTypeError: no list\n\nNode\n"), "TypeError: no list")
        self.assertEqual(processes.why("one\ntwo\n\n"), "two")
        self.assertEqual(processes.why(""), "")
        with self.assertRaisesRegex(processes.Failure, "exit status 3: why"):
            processes.result(self.python("import sys", "print('why', file=sys.stderr)", "sys.exit(3)"), 30)

    def test_a_program_that_is_ready_lives_until_it_is_left(self):
        lines = "print('{\"event\": \"ready\", \"port\": 7}', flush=True); input()"
        with processes.waiting(self.python(lines), 30) as (child, told):
            self.assertEqual(told["port"], 7)
            self.assertIsNone(child.poll())
            self.assertGreater(processes.private_kib(child.pid), 0)
            self.assertGreater(processes.cpu_seconds(child.pid), 0)
        self.assertIsNotNone(child.returncode)

    def test_a_program_that_ends_before_it_is_ready_fails(self):
        with self.assertRaisesRegex(processes.Failure, "ended before it was ready"):
            with processes.waiting(self.python("pass"), 30):
                pass


class Bodies(unittest.TestCase):
    def test_headers_have_as_few_length_bytes_as_they_can(self):
        self.assertEqual(gen_data.item(0o20, 255)[:2], b"\x41\xff")
        self.assertEqual(gen_data.item(0o20, 256)[:3], b"\x42\x01\x00")
        self.assertEqual(gen_data.item(0o20, 1 << 16)[:4], b"\x43\x01\x00\x00")

    def test_bodies_have_their_known_lengths(self):
        with tempfile.TemporaryDirectory() as folder:
            gen_data.write(folder)
            sizes = {path.stem: path.stat().st_size for path in pathlib.Path(folder).iterdir()}
        self.assertEqual(
            sizes,
            {
                "w1a": 164,
                "w1b": 60_003,
                "w1c": 4_000_004,
                "w1d": 1_048_580,
                "w1e": 1_110,
                "w3a": 1_048_595,
                "w3b": 1_048_595,
                "s1f2": 18,
                "ack": 3,
            },
        )


if __name__ == "__main__":
    unittest.main()
