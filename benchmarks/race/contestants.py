"""Who takes part: the floor, the library without and with its message log, and the peers that are installed.

`make peers` installs the peers into build/peers and leaves the reason there when it cannot. A peer is a folder below benchmarks/peers with an executable `run`, which takes the commands of
benchmarks/race/Main.cpp. `run version` tells its name, version and runtime, or why it cannot run.
"""
import dataclasses
import pathlib

import processes

INSTALLED = pathlib.Path(__file__).parents[2] / "build/peers"
PEERS = pathlib.Path(__file__).parents[1] / "peers"
FLOOR, OURS, LOGGED = "floor", "hexmire", "hexmire, log"


@dataclasses.dataclass
class Contestant:
    name: str
    command: list
    version: str = ""
    runtime: str = ""
    log_folder: pathlib.Path | None = None

    @property
    def is_peer(self):
        return self.name not in (FLOOR, OURS, LOGGED)

    def call(self, *arguments):
        """The command line of a race."""
        log = ["--log", self.log_folder] if self.log_folder else []
        return [str(word) for word in (*self.command, *arguments, *log)]


def introduce(contestant):
    """Asks a contestant for its version; raises Failure when it cannot run."""
    told = processes.result([*contestant.command, "version"], 60) or {}
    contestant.version = told.get("version", "")
    contestant.runtime = told.get("runtime", "")
    return contestant


def why_missing(name):
    """Why `make peers` has not installed a peer; empty when it has."""
    reason = INSTALLED / name / "skipped"
    if reason.exists():
        return reason.read_text().strip()
    return "" if (INSTALLED / name).exists() else "not installed (make peers)"


def find(build, output):
    """Those that take part, and the reasons of those that cannot, by name."""
    floor = Contestant(FLOOR, [str(build / "benchmarks/floor/floor")])
    host = [str(build / "benchmarks/race/race_host")]
    found = [introduce(floor), introduce(Contestant(OURS, host))]
    found.append(introduce(Contestant(LOGGED, host, log_folder=output / "log")))
    skipped = {}
    for run in sorted(PEERS.glob("*/run")):
        name = run.parent.name
        missing = why_missing(name)
        if missing:
            skipped[name] = missing
            continue
        try:
            found.append(introduce(Contestant(name, [str(run)])))
        except processes.Failure as failure:
            skipped[name] = str(failure)
    return found, skipped
