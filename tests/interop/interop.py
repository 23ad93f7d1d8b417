#!/usr/bin/env python3
"""Lets the program talk to others as host and as equipment, calling and called: to the plain HSMS peer of
hsms.py, and to stacks that others wrote; has tshark read its captures.

    tests/interop/interop.py PROGRAM [--peer NAME]... [--scene WORDS] [--transport KIND] [--times]
    tests/interop/interop.py PROGRAM --write-docs | --check-docs

`make peers` installs the stacks. What one that is not there would have been asked is counted as skipped.
--write-docs writes the table of docs/interoperation.md from what was seen; --check-docs compares it.
"""
import argparse
import concurrent.futures
import os
import sys
import tempfile
import threading
import time

import capture
import run
import scenes
import sides
import table

WORKERS = 4  # links at a time; most of their time is waiting
SCENE_BOUND, BOUND = 75, 230  # seconds for one scene and for all of them
INSTALLED = sides.ROOT / "build" / "peers"
MODES = {"hsms": ["passive", "active"], "secs1tcp": ["passive", "active"], "serial": ["passive"]}


class Link:
    """A peer and the program, and what is between them."""

    def __init__(self, program, peer_name, transport, peer_role, mode):
        self.program, self.peer_name, self.transport = program, peer_name, transport
        self.peer_role, self.mode = peer_role, mode  # of the peer
        self.role = "host" if peer_role == "equipment" else "equipment"
        self.many_blocks = (peer_name, transport != "hsms") != ("secs4js", True)
        contention = {
            ("secsgem", "equipment"): scenes.peer_takes_an_enq_for_an_eot,
            ("secs4js", "host"): scenes.peer_forgets_what_it_postponed,
        }
        self.cannot_contend = contention.get((peer_name, peer_role)) if transport != "hsms" else None
        # A stack that leaves acknowledgements to the kernel's delay needs 50 ms a message there.
        self.events = 250 if transport == "secs1tcp" else scenes.EVENTS
        self.recipe_size = scenes.MEGABYTE
        self.notes = []
        self.settings = {}
        self.peer = self.hexmire = self.cable = self.relay = None
        self.is_up = False
        self.port = 0

    # --- starting and ending

    def open(self, settings):
        self.settings = settings
        if self.transport == "serial":
            self.cable = sides.Cable()
        else:
            self.port = sides.free_port()
        if settings.get("relay"):
            return
        if self.mode == "passive":
            self.start_peer()
            self.start_hexmire()
        else:
            self.start_hexmire()
            self.start_peer()
        self.wait_until_up()

    def start_peer(self):
        self.end(self.peer)
        words = ["--role", self.peer_role, "--transport", self.transport, "--mode", self.mode, "--device", 7]
        words += ["--t3", self.settings.get("peer_t3", 30), "--t5", 1, "--t6", 5, "--t7", 10]
        words += ["--linktest", self.settings.get("linktest", 0)]
        if self.settings.get("r_bit", True):
            words += ["--r-bit"]
        if self.transport == "serial":
            words += ["--device-file", self.cable.files[0], "--baud", 19200]
        else:
            words += ["--port", self.port]
        self.peer = sides.Peer(self.peer_name, words)

    def start_hexmire(self):
        self.end(self.hexmire)
        kind = {"hsms": "hsms-ss", "secs1tcp": "tcpip", "serial": "rs232"}[self.transport]
        words = ["--port-type", kind, "--device-id", 7, "--t3", self.settings.get("t3", 30)]
        if self.transport == "serial":
            words += ["--serial", self.cable.files[1], "--baud", 19200]
        elif self.mode == "passive" or self.relay:
            words += ["--mode", "active", "--remote", f"127.0.0.1:{self.port}", "--t5", 1]
        else:
            words += ["--mode", "passive", "--local", f"127.0.0.1:{self.port}", "--t5", 1]
        self.hexmire = sides.Hexmire(self.program, self.role, words)

    def wait_until_up(self, peer=True, hexmire=True):
        if peer:
            self.peer.take(event="selected")
        if hexmire:
            self.hexmire.take(event="connect")
        self.is_up = True

    def restart(self):
        settings = self.settings
        self.close()
        self.open(settings)

    def restart_peer(self):
        """kill -9 and another process; on a serial line Hexmire cannot notice."""
        self.peer.kill()
        if self.transport != "serial":
            self.hexmire.take(event="disconnect")
        self.start_peer()
        self.wait_until_up(hexmire=self.transport != "serial")

    def meet_at_a_relay(self):
        """Both ends call."""
        self.relay = sides.Relay()
        self.port = self.relay.port
        self.start_hexmire()
        self.start_peer()

    @staticmethod
    def end(side):
        if side is not None:
            side.close()

    def close(self):
        for part in (self.peer, self.hexmire, self.cable, self.relay):
            self.end(part)
        self.peer = self.hexmire = self.cable = self.relay = None
        self.is_up = False

    # --- what scenes ask

    def note(self, words):
        if words not in self.notes:
            self.notes.append(words)

    def fitting(self, cases):
        """All cases, or those that fit one block when the peer cannot do more."""
        return [case for case in cases if self.many_blocks or len(case[2]) <= 244]

    def check_changed(self, changed):
        known = table.CHANGED_ITEMS.get(self.peer_name, {})
        for name, cases in changed.items():
            assert name in known, f"{name} came back changed: {cases}"
        for name, words in known.items():
            assert name in changed, f"{name} is not changed any more"
            self.note(words)


class Result:
    def __init__(self, job, scene, state, words="", notes=()):
        self.job, self.scene, self.state, self.words, self.notes = job, scene, state, words, list(notes)


class Job:
    """Scenes of one peer, transport, role and mode, one after the other."""

    def __init__(self, program, peer, transport, role, mode, chosen):
        self.program, self.peer, self.transport, self.role, self.mode = program, peer, transport, role, mode
        self.scenes = [scene for scene in chosen if scene.fits(transport, role, mode)]
        self.link = None

    def name(self):
        mode = "" if self.transport == "serial" else f", {self.mode}"
        return f"{self.peer} as {self.role}{mode}, {table.TRANSPORTS[self.transport]}"

    def run(self, tell):
        for scene in self.scenes:
            begin = time.monotonic()
            sides.bound.until = begin + SCENE_BOUND
            tell(self.play(scene), time.monotonic() - begin)
        self.drop()

    def play(self, scene):
        """On the link of the scene before unless one of the two wants its own."""
        if self.link is not None and (scene.settings or self.link.settings or not self.link.is_up):
            self.drop()
        try:
            if self.link is None:
                self.link = Link(self.program, self.peer, self.transport, self.role, self.mode)
                self.link.open(scene.settings)
            self.link.notes = []
            scene.act(self.link)
            left = self.link.hexmire.unexpected_errors()
            assert not left, f"errors that nobody expected: {left[:3]}"
            return Result(self, scene, "passed", notes=self.link.notes)
        except scenes.NotPossible as reason:
            self.drop()
            return Result(self, scene, "not possible", str(reason))
        except Exception as failure:  # whatever it is, the other scenes are still to be played
            words = str(failure) if isinstance(failure, AssertionError) and str(failure) else repr(failure)
            self.drop()
            return Result(self, scene, "failed", words[:1000])

    def drop(self):
        if self.link is not None:
            self.link.close()
        self.link = None


def jobs_of(options, peers):
    """Scenes that mostly wait are jobs of their own."""
    chosen = [scene for scene in scenes.SCENES if options.scene in scene.name]
    for peer in peers:
        for transport in table.PEERS[peer].transports:
            if options.transport not in (None, transport):
                continue
            for role in ("equipment", "host"):
                for mode in MODES[transport]:
                    for idle in (True, False):
                        part = [scene for scene in chosen if (scene.act is scenes.linktest) is idle]
                        job = Job(options.program, peer, transport, role, mode, part)
                        if job.scenes:
                            yield job


def why_missing(peer):
    """Nothing when it is there."""
    folder = INSTALLED / peer
    if (folder / "ready").exists():
        return ""
    if (folder / "skipped").exists():
        return (folder / "skipped").read_text().strip()
    return "make peers has not been run"


def play_own(program, tell):
    """The scenes with the plain peer, and the captures."""
    run.PROGRAM = program

    def play(group, act, *arguments):
        name = f"{group}: {act.__name__.replace('_', ' ')}"
        try:
            act(*arguments)
            tell(name, "passed", "")
        except Exception as failure:  # whatever it is, the other scenes are still to be played
            tell(name, "failed", repr(failure)[:1000])

    for act in run.SCENARIOS:
        play("plain peer", act)
    for act in capture.SCENARIOS:
        with tempfile.TemporaryDirectory() as folder:
            play("captures", act, folder)


def parse():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--peer", action="append", choices=sorted(table.PEERS))
    parser.add_argument("--scene", default="", help="only scenes with these words in their name")
    parser.add_argument("--transport", choices=sorted(table.TRANSPORTS))
    parser.add_argument("--times", action="store_true", help="print how long each scene takes")
    parser.add_argument("--write-docs", action="store_true")
    parser.add_argument("--check-docs", action="store_true")
    return parser.parse_args()


class Score:
    """Prints a line for each scene and counts."""

    def __init__(self, times):
        self.times, self.results, self.count = times, [], {"passed": 0, "failed": 0, "skipped": 0}
        self.lock = threading.Lock()

    def line(self, name, state, words, seconds=None):
        with self.lock:
            self.count["skipped" if state == "not possible" else state] += 1
            took = f" ({seconds:.1f} s)" if self.times and seconds is not None else ""
            print(f"{name}: {state}{took}{': ' if words else ''}{words}", flush=True)

    def tell(self, result, seconds):
        self.results.append(result)
        self.line(f"{result.job.name()}: {result.scene.name}", result.state, result.words, seconds)

    def skip(self, peer, scenes_of_it, reason):
        self.count["skipped"] += scenes_of_it
        print(f"{peer}: {scenes_of_it} scenes skipped: {reason}")

    def close(self):
        print(", ".join(f"{number} {state}" for state, number in self.count.items()))
        return 1 if self.count["failed"] else 0


def give_up():
    print(f"not done after {BOUND} s", flush=True)
    os._exit(1)  # the children end with their standard input


def main():
    options = parse()
    watchdog = threading.Timer(BOUND, give_up)
    watchdog.daemon = True
    watchdog.start()
    score = Score(options.times)
    peers = options.peer or list(table.PEERS)
    missing = {peer: why for peer in peers if (why := why_missing(peer))}
    jobs = list(jobs_of(options, [peer for peer in peers if peer not in missing]))
    idle = [job for job in jobs if job.scenes[0].act is scenes.linktest]
    whole = not (options.peer or options.scene or options.transport)
    with concurrent.futures.ThreadPoolExecutor(len(idle) + 1) as waiting, \
            concurrent.futures.ThreadPoolExecutor(WORKERS) as busy:
        futures = [busy.submit(play_own, options.program, score.line)] if whole else []
        futures += [waiting.submit(job.run, score.tell) for job in idle]
        futures += [busy.submit(job.run, score.tell) for job in jobs if job not in idle]
        for future in futures:
            future.result()
    for peer, reason in missing.items():
        score.skip(peer, sum(len(job.scenes) for job in jobs_of(options, [peer])), reason)
    if (options.write_docs or options.check_docs) and not score.count["failed"]:
        if missing or not whole:
            print("docs/interoperation.md: not compared, for it is about all peers")
        elif options.write_docs:
            table.FILE.write_text(table.page(score.results))
        elif table.FILE.read_text() != table.page(score.results):
            score.line("docs/interoperation.md", "failed", "it says otherwise; tests/interop/interop.py --write-docs")
    return score.close()


if __name__ == "__main__":
    sys.exit(main())
