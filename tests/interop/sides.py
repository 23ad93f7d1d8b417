"""The two ends of a link as child processes that speak JSON lines: the program, and a peer on a stack of
others. Also the cables between them: a pair of pseudo-terminals, and a relay that two callers meet at."""
import contextlib
import json
import os
import pathlib
import pty
import re
import select
import signal
import socket
import subprocess
import tempfile
import threading
import time
import tty

ROOT = pathlib.Path(__file__).parents[2]
DICTIONARY = ROOT / "dictionaries" / "Default.xml"
PEERS = ROOT / "tests" / "interop" / "peers"
PATIENCE = 15  # seconds that anything may take; nothing here takes as long
HARMLESS = {3050, 2011}  # a call before the other side listens, a primary that no dictionary holds


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


bound = threading.local()  # .until: when the scene of this thread must be over


class Side:
    """A child process; its events are kept until they are taken."""

    def __init__(self, command, name):
        self.name = name
        self._errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            [str(word) for word in command],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._errors,
        )
        self._events = []
        self._changed = threading.Condition()
        self._ended = False
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            event = json.loads(line)
            with self._changed:
                self._events.append(event)
                self._changed.notify_all()
        with self._changed:
            self._ended = True
            self._changed.notify_all()

    def say(self, text):
        self.process.stdin.write(text.encode("latin-1") + b"\n")
        self.process.stdin.flush()

    def take_any(self, wanted, seconds=PATIENCE):
        """The first event that is like one of these; it is gone then. None when none comes in time."""
        end = min(time.monotonic() + seconds, getattr(bound, "until", float("inf")))
        with self._changed:
            looked_at = 0
            while True:
                for place in range(looked_at, len(self._events)):
                    event = self._events[place]
                    if any(all(event.get(key) == value for key, value in one.items()) for one in wanted):
                        return self._events.pop(place)
                looked_at = len(self._events)
                left = end - time.monotonic()
                if left <= 0 or self._ended:
                    return None
                self._changed.wait(left)

    def take(self, seconds=PATIENCE, **wanted):
        event = self.take_any([wanted], seconds)
        if event is None:
            raise AssertionError(f"{self.name}: no {wanted}; {self.story()}")
        return event

    def drain(self, **wanted):
        """All events of this kind that have come."""
        with self._changed:
            fits = [event for event in self._events if all(event.get(k) == v for k, v in wanted.items())]
            self._events = [event for event in self._events if event not in fits]
        return fits

    def story(self):
        """What it said last, for a message of failure."""
        with self._changed:
            last = [json.dumps(event)[:160] for event in self._events[-4:]]
        self._errors.seek(0)
        errors = self._errors.read().decode(errors="replace").splitlines()[-2:]
        ended = f"ended with {self.process.poll()}" if self.process.poll() is not None else "runs"
        return f"{ended}; events {last}; stderr {errors}"

    def kill(self):
        """As a crash: no goodbye."""
        self.process.send_signal(signal.SIGKILL)
        self.process.wait(PATIENCE)

    def close(self):
        if self.process.poll() is None:
            with contextlib.suppress(OSError):
                self.process.stdin.close()
            try:
                self.process.wait(3)
            except subprocess.TimeoutExpired:
                self.kill()
        with contextlib.suppress(OSError):
            self.process.stdin.close()


class Hexmire(Side):
    """The program as `host` or `equipment`."""

    def __init__(self, program, role, arguments):
        self.role = role
        self.folder = tempfile.TemporaryDirectory()
        command = [program, role, *arguments, "--dictionary", DICTIONARY, "--no-log", "--json"]
        command += ["--trace", self.folder.name, "--script", "-"]
        if role == "equipment":
            command += ["--model", pathlib.Path(__file__).parent / "model.json"]
        super().__init__(command, f"hexmire {role}")
        if role == "equipment":
            self.say("hold S64F1\nhold S7F3")  # answered by the scenes
        self.say(f"connect {PATIENCE}")

    def trace(self):
        """Lines of the byte trace so far."""
        return [line for file in pathlib.Path(self.folder.name).iterdir()
                for line in file.read_text("latin-1").splitlines()]

    def expect_traced(self, way, s_type, since=0):
        """Waits for a control message that was sent (`Send`) or came (`Recv`), in the lines of the trace
        behind those that were there before."""
        header = re.compile(f" {way} .* 00 00 00 0A .. .. 00 00 00 0{s_type} ")
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            lines = self.trace()
            for place in range(since, len(lines)):
                if header.search(lines[place]):
                    return place
            time.sleep(0.05)
        raise AssertionError(f"the trace has no {way} of SType {s_type}")

    def send(self, sml):
        """Sends a message, by its name or as SML; the event of it."""
        stream, function = map(int, re.match(r"S(\d+)F(\d+)", sml).groups())
        self.drain(event="sent")
        self.say(f"send {sml}")
        return self.take(event="sent", stream=stream, function=function)

    def secondary(self, stream, function, **fields):
        return self.take(event="received-secondary", stream=stream, function=function, **fields)

    def primary(self, stream, function):
        return self.take(event="received-primary", stream=stream, function=function)

    def unexpected_errors(self):
        return [event for event in self.drain(event="error") if event["code"] not in HARMLESS]

    def close(self):
        super().close()
        self.folder.cleanup()


class Peer(Side):
    """A program below tests/interop/peers."""

    def __init__(self, name, arguments):
        self._id = 0
        super().__init__([PEERS / name / "peer", *arguments], name)
        self.take(event="ready")

    def do(self, what, **fields):
        self.say(json.dumps({"do": what, **fields}))

    def answer(self, stream, function, body, **fields):
        self.do("answer", stream=stream, function=function, body=body, **fields)
        self.do("sync")  # no peer knows this one; that it says so tells that the other one is done
        self.take(event="unsupported", do="sync")

    def request(self, stream, function, body="", **fields):
        """Sends a primary that wants a reply; its number."""
        self._id += 1
        self.do("request", id=self._id, stream=stream, function=function, body=body, **fields)
        return self._id

    def outcome(self, number, seconds=PATIENCE):
        """`reply`, `timeout` or `error` of a request."""
        kinds = [{"event": kind, "id": number} for kind in ("reply", "timeout", "error")]
        event = self.take_any(kinds, seconds)
        if event is None:
            raise AssertionError(f"{self.name}: request {number} has no end; {self.story()}")
        return event

    def reply(self, number):
        event = self.outcome(number)
        assert event["event"] == "reply", f"{self.name}: {event}"
        return event


class Cable:
    """Two pseudo-terminals, joined: what one side writes the other one reads."""

    def __init__(self):
        self._masters, self._slaves = [], []
        for _ in range(2):
            master, slave = pty.openpty()
            tty.setraw(slave)
            self._masters.append(master)
            self._slaves.append(slave)  # held open: a side that ends is no hang-up
        self.files = [os.ttyname(slave) for slave in self._slaves]
        self._wake, self._stop = os.pipe()
        self._thread = threading.Thread(target=self._carry, daemon=True)
        self._thread.start()

    def _carry(self):
        one, other = self._masters
        across = {one: other, other: one}
        while True:
            ready = select.select([one, other, self._wake], [], [])[0]
            if self._wake in ready:
                return
            for end in ready:
                data = os.read(end, 4096)
                while data:
                    data = data[os.write(across[end], data):]

    def close(self):
        os.write(self._stop, b"x")
        self._thread.join(PATIENCE)
        for end in [*self._masters, *self._slaves, self._wake, self._stop]:
            os.close(end)


class Relay:
    """Joins each two callers of a port as if one had called the other."""

    def __init__(self):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._open = True
        self._waiting = None
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while self._open:
            try:
                caller = self._listener.accept()[0]
            except OSError:
                return
            caller.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            if self._waiting is None or select.select([self._waiting], [], [], 0)[0] and not self._waiting.recv(
                    1, socket.MSG_PEEK):
                self._waiting = caller
                continue
            first, self._waiting = self._waiting, None
            threading.Thread(target=self._carry, args=(first, caller), daemon=True).start()

    @staticmethod
    def _carry(one, other):
        across = {one: other, other: one}
        with one, other, contextlib.suppress(OSError):
            while True:
                for end in select.select([one, other], [], [])[0]:
                    data = end.recv(65536)
                    if not data:
                        return
                    across[end].sendall(data)

    def close(self):
        self._open = False
        with contextlib.suppress(OSError):
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
