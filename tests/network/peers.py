"""The two ends of a link as child processes, and the account of what they sent."""
import collections
import re
import subprocess
import threading
import time

PATIENCE = 40  # seconds; it only ends a scene that fails

# Errors that name the message they are about by its header.
LOST_BY_DRIVER = {3010, 3029, 3040, 3071, 3073}


class Run:
    """One process, from its start to its end, and all that it told."""

    def __init__(self, command, start):
        self.sent = {}  # number: system bytes
        self.got, self.answered, self.late, self.damaged = [], [], [], []
        self.reported = collections.defaultdict(set)  # number: codes
        self.codes = collections.Counter()  # of errors
        self.disconnects = []
        self.connects = 0
        self.connected = False
        self.killed = False
        self.errors = ""  # its standard error, when it has ended
        self.last_lines = collections.deque(maxlen=25)
        self._stops = 0
        self._started = time.monotonic()
        self._changed = threading.Condition()
        self._process = start(
            lambda: subprocess.Popen(
                command,
                stdin=subprocess.PIPE,
                stdout=subprocess.PIPE,
                stderr=subprocess.PIPE,
                text=True,
                encoding="latin-1",
            )
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def tell(self, command):
        self._process.stdin.write(command + "\n")
        self._process.stdin.flush()

    def stop(self):
        """Lets it send no more; afterwards every message is known."""
        before = self._stops
        self.tell("stop")
        self.wait(lambda: self._stops > before, "the end of sending")

    def wait(self, condition, what, seconds=PATIENCE):
        with self._changed:
            if not self._changed.wait_for(condition, seconds):
                raise AssertionError(f"{what} did not come within {seconds} s")

    def kill(self):
        self.killed = True
        self._process.kill()
        self._leave()

    def quit(self):
        """Exit status."""
        if not self.killed:
            self.tell("quit")
            self._process.stdin.close()
            self._leave()
        return self._process.returncode

    def alive(self):
        return self._process.poll() is None

    def _leave(self):
        try:
            self._process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._reader.join()
        self.errors = self._process.stderr.read()
        for stream in (self._process.stdin, self._process.stdout, self._process.stderr):
            try:
                stream.close()
            except BrokenPipeError:
                pass

    def _read(self):
        for line in self._process.stdout:
            with self._changed:
                self.last_lines.append(f"{time.monotonic() - self._started:6.2f} {line.rstrip()[:150]}")
                self._take(*line.rstrip("\n").split(" ", 2))
                self._changed.notify_all()

    def _take(self, event, first="", rest=""):
        if event == "connect":
            self.connected = True
            self.connects += 1
        elif event == "disconnect":
            self.connected = False
            self.disconnects.append(int(first))
        elif event == "error":
            self._take_error(int(first), rest)
        elif event == "stopped":
            self._stops += 1
        elif event == "sent":
            self.sent[int(first)] = int(rest)
        elif event == "got":
            self.got.append(int(first))
        elif event == "answered":
            self.answered.append(int(first))
        elif event == "late":
            self.late.append(int(first))
        else:
            self.damaged.append(f"{event} {first} {rest}")

    def _take_error(self, code, text):
        self.codes[code] += 1
        if code == 2012:  # T3
            system = int(re.search(r"SystemBytes-(\d+)", text)[1])
            self._report(system, code)
        elif code in LOST_BY_DRIVER:
            header = bytes.fromhex(re.search(r"hdr=([0-9A-F]{20})$", text)[1])
            if header[3] % 2:  # replies are the other side's to miss
                self._report(int.from_bytes(header[6:], "big"), code)

    def _report(self, system, code):
        # The newest message is told of as sent after its error, if that comes at once.
        self.reported[next((n for n, s in self.sent.items() if s == system), None)].add(code)

    def unaccounted(self):
        """Numbers that were neither answered nor reported."""
        return self.sent.keys() - set(self.answered) - self.reported.keys()


class Side:
    """Host or equipment, over restarts."""

    def __init__(self, name, command, start):
        self.name, self._command, self._start = name, command, start
        self.runs = []

    @property
    def now(self):
        return self.runs[-1]

    def start(self, **settings):
        # A killed process may have sent one message more than it told of.
        first = max(self.runs[-1].sent, default=0) + 10 if self.runs else 1
        arguments = [f"{name.replace('_', '-')}={value}" for name, value in settings.items()]
        self.runs.append(Run([*self._command, f"first={first}", *arguments], self._start))
        self.now.tell("open")

    def check(self, other):
        """The account of every message that this side sent and the other side got."""
        got = [number for run in other.runs for number in run.got]
        sent = {number for run in self.runs for number in run.sent}
        answered = [number for run in self.runs for number in run.answered]
        assert got == sorted(set(got)), f"{other.name} got messages twice or out of order: {got}"
        assert answered == sorted(set(answered)), f"{self.name} got replies twice or out of order: {answered}"
        unknown = set(got) - sent - {max(run.sent, default=0) + 1 for run in self.runs if run.killed}
        assert not unknown, f"{other.name} got what was never sent: {unknown}"
        assert set(answered) <= set(got), f"{self.name} has answers to what never arrived"
        for run in self.runs:
            assert not run.damaged, f"{self.name}: {run.damaged}"
            expected = run.reported.keys() - set(run.answered)
            assert set(run.late) <= expected, f"{self.name}: {run.late} late, {sorted(expected)} given up"
            assert None not in run.reported, f"{self.name}: an error about a message that was not sent"
            if not run.killed:
                lost = run.unaccounted()
                assert not lost, f"{self.name}: nobody reported the loss of {sorted(lost)}"
            for number, codes in run.reported.items():
                # A SECS-I block whose ACK got lost arrived all the same.
                both = number in run.answered and codes != {3010}
                assert not both, f"{self.name}: {number} was answered and reported as {codes}"

    def story(self):
        """The last lines of each process, and the first of its standard error."""
        lines = []
        for run in self.runs:
            lines += [f"{self.name} {line}" for line in run.last_lines]
            lines += [f"{self.name} ! {line}" for line in run.errors.splitlines()[:40]]
        return lines

    def summary(self):
        sent = sum(len(run.sent) for run in self.runs)
        answered = sum(len(run.answered) for run in self.runs)
        lost = sum(len(run.reported.keys() - set(run.answered)) for run in self.runs)
        ends = [code for run in self.runs for code in run.disconnects]
        text = f"{self.name} sent {sent}, answered {answered}, reported lost {lost}"
        silent = sorted(n for run in self.runs if not run.killed for n in run.unaccounted())
        text += f", never heard of again {silent}" if silent else ""
        return text + (f", ended by {ends}" if ends else "")
