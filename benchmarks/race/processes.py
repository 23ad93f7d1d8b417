"""The programs of a race: the equipment, contestants that run to their end, contestants that wait.

Everything is bounded in time and gone when the block that started it is left.
"""
import contextlib
import json
import os
import pathlib
import re
import select
import subprocess
import time

PROC = pathlib.Path("/proc")


class Failure(Exception):
    """A contestant that did not do its race, and why, in one line."""


def last_line(text):
    lines = [line for line in text.splitlines() if line.strip()]
    return lines[-1].strip() if lines else ""


def why(text):
    """The line that tells most about a failure: the first that names an error, else the last."""
    error = r"([\w.]*(Error|Exception)|panic|fatal error)\b"
    named = [line.strip() for line in text.splitlines() if re.match(error, line)]
    return (named[0] if named else last_line(text))[:160]


def result(command, patience):
    """Runs a contestant to its end; the JSON of its last line, or None when it wrote none."""
    try:
        done = subprocess.run(
            command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=patience
        )
    except subprocess.TimeoutExpired:
        raise Failure(f"took longer than {patience} s") from None
    except OSError as error:
        raise Failure(str(error)) from None
    if done.returncode != 0:
        reason = why(done.stderr) or why(done.stdout)
        raise Failure(f"exit status {done.returncode}: {reason}" if reason else f"exit status {done.returncode}")
    line = last_line(done.stdout)
    if not line:
        return None
    try:
        return json.loads(line)
    except ValueError:
        raise Failure(f"no JSON: {line[:80]}") from None


def run_time(command, patience):
    """Seconds from the start of a process to its end."""
    start = time.perf_counter()
    result(command, patience)
    return time.perf_counter() - start


@contextlib.contextmanager
def waiting(command, patience):
    """A program that tells when it is ready and lives until its input ends; gives it and what it told."""
    pipe = subprocess.PIPE
    try:
        child = subprocess.Popen(command, stdin=pipe, stdout=pipe, stderr=pipe)
    except OSError as error:
        raise Failure(str(error)) from None
    try:
        yield child, ready_line(child, time.monotonic() + patience)
    finally:
        child.stdin.close()
        child.stdin = None
        try:
            child.communicate(timeout=5)
        except subprocess.TimeoutExpired:
            child.kill()
            child.communicate()


def ready_line(child, deadline):
    """What the line that says "ready" tells."""
    output = child.stdout.fileno()
    text = b""
    while True:
        left = deadline - time.monotonic()
        if left <= 0 or not select.select([output], [], [], left)[0]:
            child.kill()
            raise Failure("was not ready in time")
        piece = os.read(output, 4096)
        if not piece:
            child.kill()
            raise Failure(f"ended before it was ready: {why(child.stderr.read().decode())}")
        text += piece
        for line in text.split(b"\n")[:-1]:
            with contextlib.suppress(ValueError):
                told = json.loads(line)
                if isinstance(told, dict) and told.get("event") == "ready":
                    return told


@contextlib.contextmanager
def equipment(floor, links, patience=60):
    """The equipment that every host faces; gives the first of its ports."""
    with waiting([str(floor), "equipment", str(links)], patience) as (_, told):
        yield told["port"]


# --- what a running process uses --------------------------------------------------------------------


def family(pid):
    """The process and all that it started."""
    found = [pid]
    with contextlib.suppress(OSError):
        for task in (PROC / str(pid) / "task").iterdir():
            for child in (task / "children").read_text().split():
                found += family(int(child))
    return found


def private_kib(pid):
    """Memory that belongs to the process and its children alone."""
    total = 0
    for member in family(pid):
        for line in (PROC / str(member) / "smaps_rollup").read_text().splitlines():
            if line.startswith(("Private_Clean:", "Private_Dirty:")):
                total += int(line.split()[1])
    return total


def cpu_seconds(pid):
    """Processor time of the process and its children so far."""
    total = 0
    for member in family(pid):
        with contextlib.suppress(OSError):
            for task in (PROC / str(member) / "task").iterdir():
                total += int((task / "schedstat").read_text().split()[0])
    return total / 1e9
