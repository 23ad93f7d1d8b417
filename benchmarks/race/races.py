"""The races: what is run, how often, and what is measured.

A measure is a name such as "host/a/1/p50_us". Times and sizes are better when they are small, rates
("per_s") when they are large.
"""
import dataclasses
import json
import pathlib
import statistics
import subprocess
import time

import processes
from contestants import FLOOR, LOGGED, OURS

# The floor tells several times for a body. Which of them a time is measured by: the tree of malloc'ed
# nodes, the bytes written from a ready one, and for single large items the copy, turned round or not.
FLOOR_OF_BODY = {
    "a": ("tree", "encode"),
    "b": ("tree", "encode"),
    "c": ("swap", "swap"),
    "d": ("memcpy", "memcpy"),
    "e": ("tree", "encode"),
}


@dataclasses.dataclass
class Effort:
    """How long a run takes."""

    rounds: int = 5
    seconds: float = 1.0
    idle_seconds: float = 2.0
    starts: int = 5
    links: tuple = (1, 10, 100, 500)
    endurance: int = 1_000_000
    growth: tuple = ("--benchmark_repetitions=3", "--benchmark_min_time=0.05")
    patience: float = 120.0


SHORT = Effort(
    rounds=1,
    seconds=0.2,
    idle_seconds=0.2,
    starts=1,
    links=(1, 10),
    endurance=1_000,
    growth=("--benchmark_min_time=0.001",),
    patience=20.0,
)
# Some need half a second for a round trip with 1 MiB.
LEAST_SECONDS_OF_LONG_BODIES = 1.5
SHORT_GROWTH_SIZES = "(1|16|100|128|1024)(/|$)"


@dataclasses.dataclass
class Course:
    """What the races share."""

    build: pathlib.Path
    data: pathlib.Path
    effort: Effort

    @property
    def floor(self):
        return self.build / "benchmarks/floor/floor"


class Codec:
    name = "codec"

    def admits(self, contestant):
        return contestant.name != LOGGED  # nothing is logged here

    def run(self, contestant, course):
        told = processes.result(contestant.call("codec", course.data), course.effort.patience)
        measures = {f"codec/{name}": value for name, value in told.items()}
        if contestant.name == FLOOR:
            for body, (decode, encode) in FLOOR_OF_BODY.items():
                measures[f"codec/w1{body}_decode_ns"] = told[f"w1{body}_{decode}_ns"]
                measures[f"codec/w1{body}_encode_ns"] = told[f"w1{body}_{encode}_ns"]
                measures[f"codec/w1{body}_encode_ready_ns"] = told[f"w1{body}_{encode}_ns"]
        return measures


@dataclasses.dataclass
class RoundTrips:
    what: str
    open: int

    @property
    def name(self):
        return f"host/{self.what}/{self.open}"

    def admits(self, _):
        return True

    def seconds(self, effort):
        return max(effort.seconds, LEAST_SECONDS_OF_LONG_BODIES) if self.what.startswith("w3") else effort.seconds

    def run(self, contestant, course):
        seconds = self.seconds(course.effort)
        with processes.equipment(course.floor, 1) as port:
            told = processes.result(
                contestant.call("host", port, self.what, self.open, seconds, course.data),
                course.effort.patience,
            )
        return {f"{self.name}/{measure}": told[measure] for measure in ("p50_us", "p99_us", "per_s")}


class Start:
    name = "start"

    def admits(self, _):
        return True

    def run(self, contestant, course):
        with processes.equipment(course.floor, 1) as port:
            times = [
                processes.run_time(contestant.call("start", port), course.effort.patience)
                for _ in range(course.effort.starts)
            ]
        return {"start/ms": statistics.median(times) * 1000}


@dataclasses.dataclass
class Links:
    links: int

    @property
    def name(self):
        return f"links/{self.links}"

    def admits(self, _):
        return True

    def run(self, contestant, course):
        return {**self.idle(contestant, course), **self.busy(contestant, course)}

    def idle(self, contestant, course):
        effort = course.effort
        with processes.equipment(course.floor, self.links) as port:
            command = contestant.call("idle", port, self.links)
            with processes.waiting(command, effort.patience) as (child, _):
                time.sleep(effort.idle_seconds / 2)  # what connecting has begun comes to its end
                memory = processes.private_kib(child.pid)
                begin, used = time.perf_counter(), processes.cpu_seconds(child.pid)
                time.sleep(effort.idle_seconds)
                used = processes.cpu_seconds(child.pid) - used
                share = used / (time.perf_counter() - begin)
        return {f"{self.name}/kib": memory, f"{self.name}/cpu_percent": 100 * share}

    def busy(self, contestant, course):
        with processes.equipment(course.floor, self.links) as port:
            command = contestant.call("links", port, self.links, course.effort.seconds)
            try:
                told = processes.result(command, course.effort.patience)
            except processes.Failure as failure:
                if str(failure).startswith("exit status 2"):
                    return {}  # It has no such race.
                raise
        return {f"{self.name}/per_s": told["per_s"]}


def all_races(effort):
    """The races of one round, in order."""
    return [
        Codec(),
        *(RoundTrips(what, count) for what in ("a", "b") for count in (1, 32)),
        *(RoundTrips(what, 1) for what in ("w3a", "w3b")),
        Start(),
        *(Links(count) for count in effort.links),
    ]


# --- what is run once, by the library alone ---------------------------------------------------------


def endurance(contestants, course):
    """Bytes of memory in use before and after many round trips, by contestant."""
    found = {}
    for contestant in contestants:
        if contestant.name == OURS:
            with processes.equipment(course.floor, 1) as port:
                found = processes.result(
                    contestant.call("endurance", port, course.effort.endurance, course.data), 900
                )
    return found


def growth(course, short):
    """Nanoseconds of an element by subject and number, and the figures of the SECS-I line."""
    wanted = f"^Growth/.*/{SHORT_GROWTH_SIZES}" if short else "^Growth/"
    command = [
        str(course.build / "benchmarks/hexmire_benchmarks"),
        f"--benchmark_filter={wanted}|^SecsILine",
        "--benchmark_format=json",
        *course.effort.growth,
    ]
    done = subprocess.run(command, capture_output=True, text=True, timeout=900)
    if done.returncode != 0:
        raise processes.Failure(f"the benchmarks of growth failed: {processes.last_line(done.stderr)}")
    curves, line = {}, {}
    for run in json.loads(done.stdout)["benchmarks"]:
        if run.get("error_occurred"):
            raise processes.Failure(f"{run['name']}: {run['error_message']}")
        if run.get("run_type") == "aggregate":
            continue
        if run["run_name"].startswith("SecsILine"):
            line = {name: run[name] for name in run if name.startswith(("line_", "least_"))}
            continue
        _, subject, number = run["run_name"].split("/")[:3]
        times = curves.setdefault(subject, {}).setdefault(int(number), [])
        times.append(1e9 / run["items_per_second"])
    return {
        "line": line,
        "curves": {
            subject: {number: statistics.median(times) for number, times in sorted(curve.items())}
            for subject, curve in curves.items()
        },
    }
