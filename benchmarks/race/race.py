#!/usr/bin/env python3
"""Runs every contestant through every race, round by round, and tells what came out.

    benchmarks/race/race.py BUILD-DIRECTORY OUTPUT-DIRECTORY [--short] [--write-docs] [--only RACE...]

Within a round the contestants take turns at each race, in an order that moves on from round to round, so
that what disturbs the machine disturbs all of them alike. Each contestant warms itself up before its time
counts. OUTPUT-DIRECTORY gets race.txt, race.json and race.svg.

--short does one quick round, all contestants at once. It says nothing about speed: it shows that everything
runs.
--write-docs puts tables and chart into docs/performance.md and docs/performance.svg.
--only takes the races whose names begin with one of the words: codec, host, host/a/1, start, links.

RACE_ROUNDS (5) and RACE_SECONDS (1, of each timed run) are taken from the environment. The exit status is
1 when the floor or the library fails in a race; a peer that fails is told in the tables.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import resource
import shutil
import sys
import time

import chart
import contestants
import document
import gen_data
import machine
import processes
import races
import tables
from measures import Results

LEAST_ROUNDS = 5


class Run:
    """Everything that a run has found out."""

    def __init__(self, build, found, skipped, effort):
        self.machine = machine.describe(build)
        self.date = time.strftime("%Y-%m-%d")
        self.rounds = effort.rounds
        self.seconds = effort.seconds
        self.link_counts = list(effort.links)
        self.contestants = [
            {"name": one.name, "version": one.version, "runtime": one.runtime} for one in found
        ]
        self.names = [one.name for one in found]
        self.peers = [one.name for one in found if one.is_peer]
        self.skipped = skipped
        self.failures = []  # contestant, race, reason
        self.figures = {name: {} for name in self.names}
        self.results = Results(self.figures)
        self.growth = {"line": {}, "curves": {}}
        self.endurance = {}

    def take(self, contestant, measures):
        for key, value in measures.items():
            self.figures[contestant].setdefault(key, []).append(value)

    def fail(self, contestant, race, reason):
        if (contestant, race) not in {failure[:2] for failure in self.failures}:
            self.failures.append((contestant, race, reason))
            tell(f"{contestant} failed in {race}: {reason}")

    def own_failures(self):
        return [failure for failure in self.failures if failure[0] not in self.peers]

    def as_json(self):
        shown = (
            "date machine rounds seconds contestants skipped failures figures growth endurance".split()
        )
        return {name: getattr(self, name) for name in shown}


def tell(text):
    print(text, file=sys.stderr, flush=True)


def run_race(run, race, contestant, course):
    if contestant.log_folder:
        shutil.rmtree(contestant.log_folder, ignore_errors=True)
        contestant.log_folder.mkdir(parents=True)
    try:
        run.take(contestant.name, race.run(contestant, course))
    except processes.Failure as failure:
        run.fail(contestant.name, race.name, str(failure))
    except (AttributeError, KeyError, TypeError) as error:
        run.fail(contestant.name, race.name, f"figures that are not understood: {error}")
    finally:
        if contestant.log_folder:
            shutil.rmtree(contestant.log_folder, ignore_errors=True)


def wanted_races(effort, only):
    return [race for race in races.all_races(effort) if not only or race.name.startswith(tuple(only))]


def run_rounds(run, found, course, only):
    for number in range(course.effort.rounds):
        begin = time.monotonic()
        turn = number % len(found)
        for race in wanted_races(course.effort, only):
            for contestant in found[turn:] + found[:turn]:
                given_up = (contestant.name, race.name) in {one[:2] for one in run.failures}
                if race.admits(contestant) and not given_up:
                    run_race(run, race, contestant, course)
        tell(f"round {number + 1} of {course.effort.rounds}: {time.monotonic() - begin:.0f} s")


def run_side_by_side(run, found, course, only):
    """One round with all contestants at once: quick, and no measure of anything."""

    def run_all(contestant):
        for race in wanted_races(course.effort, only):
            if race.admits(contestant):
                run_race(run, race, contestant, course)

    with concurrent.futures.ThreadPoolExecutor(len(found)) as lanes:
        list(lanes.map(run_all, found))


def run_once(run, found, course, short):
    """What does not compare contestants."""
    for name, what in (
        ("endurance", lambda: races.endurance(found, course)),
        ("growth", lambda: races.growth(course, short)),
    ):
        try:
            setattr(run, name, what())
        except processes.Failure as failure:
            run.fail(contestants.OURS, name, str(failure))


def effort_of(short):
    if short:
        os.environ["RACE_SHORT"] = "1"
        return races.SHORT
    rounds = int(os.environ.get("RACE_ROUNDS", LEAST_ROUNDS))
    return races.Effort(rounds=rounds, seconds=float(os.environ.get("RACE_SECONDS", 1)))


def raise_file_limit():
    """An equipment of 500 links has a listener and a connection for each."""
    _, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--write-docs", action="store_true")
    parser.add_argument("--only", nargs="+", default=[], metavar="RACE")
    given = parser.parse_args()
    if given.write_docs and (given.short or given.only):
        parser.error("the document shows whole runs only")
    return given


def main():
    given = arguments()
    build, output = given.build.resolve(), given.output.resolve()
    output.mkdir(parents=True, exist_ok=True)
    raise_file_limit()
    course = races.Course(build, output / "data", effort_of(given.short))
    gen_data.write(course.data)

    found, skipped = contestants.find(build, output)
    tell("contestants: " + "; ".join(one.name for one in found))
    for name, reason in skipped.items():
        tell(f"skipped: {name}: {reason}")
    run = Run(build, found, skipped, course.effort)
    (run_side_by_side if given.short else run_rounds)(run, found, course, given.only)
    if not given.only:
        run_once(run, found, course, given.short)

    made = tables.all_tables(run)
    text = f"{run.date}, {machine.sentence(run.machine)}; rounds: {run.rounds}\n\n"
    text += "\n".join(table.plain() for table in made)
    (output / "race.txt").write_text(text)
    (output / "race.json").write_text(json.dumps(run.as_json(), indent=1) + "\n")
    (output / "race.svg").write_text(chart.draw(run))
    print(text)
    if given.write_docs:
        document.write(run, made, output / "race.svg")
    return 1 if run.own_failures() else 0


if __name__ == "__main__":
    sys.exit(main())
