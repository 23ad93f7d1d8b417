"""A TCP relay on the loopback address that treats connections badly: it needs no rights."""
import collections
import dataclasses
import queue
import random
import select
import socket
import struct
import threading
import time

ADDRESS = "127.0.0.1"
ACK = b"\6"


@dataclasses.dataclass(frozen=True)
class Treatment:
    """How bytes are carried."""

    hold: bool = False  # nothing is read, passed on or answered
    delay: float = 0.0  # seconds
    chop: bool = False  # pieces of 1 to 7 bytes, each in a segment of its own
    late_acks: float = 0.0  # seconds by which every second ACK of an end is late (SECS-I)


class Way:
    """One direction of a connection."""

    def __init__(self, source, target):
        self.source, self.target = source, target
        self.flying = collections.deque()  # (due, bytes); b"" is the end of the stream
        self.ended = False
        self.acks = 0


class Proxy:
    """Listens, and connects each caller to the target port."""

    TICK = 0.002

    def __init__(self, target_port):
        self.treatment = Treatment()
        self.pieces = 0
        self.connections = 0
        self._target_port = target_port
        self._random = random.Random(20261121)
        self._ways = []
        self._changes = queue.SimpleQueue()
        self._listener = socket.create_server((ADDRESS, 0))
        self.port = self._listener.getsockname()[1]
        self._running = True
        self._thread = threading.Thread(target=self._carry, daemon=True)
        self._thread.start()

    def refuse(self, reset=False):
        """Ends every connection, by a reset or in order, and refuses callers."""

        def change():
            self._listener.close()
            for way in self._ways:
                self._end(way.source, reset)
            self._ways.clear()

        self._call(change)

    def end_connections(self, reset=False):
        """Ends every connection but listens on."""

        def change():
            for way in self._ways:
                self._end(way.source, reset)
            self._ways.clear()

        self._call(change)

    def accept_again(self):
        def change():
            self._listener = socket.create_server((ADDRESS, self.port))

        self._call(change)

    def close(self):
        self.refuse()

        def stop():
            self._running = False

        self._call(stop)
        self._thread.join(5)

    def _call(self, change):
        done = threading.Event()
        self._changes.put((change, done))
        if not done.wait(5):
            raise OSError("the relay does not answer")

    @staticmethod
    def _end(sock, reset):
        if sock.fileno() < 0:
            return
        if reset:
            sock.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        sock.close()

    def _carry(self):
        while self._running:
            while not self._changes.empty():
                change, done = self._changes.get()
                change()
                done.set()
            if self.treatment.hold:
                time.sleep(self.TICK)
                continue
            sources = [way.source for way in self._ways if not way.ended]
            if self._listener.fileno() >= 0:
                sources.append(self._listener)
            readable, _, _ = select.select(sources, [], [], self.TICK)
            if self._listener in readable:
                self._accept()
            for way in list(self._ways):
                if way in self._ways and way.source in readable:
                    self._read(way)
                if way in self._ways:
                    self._pass_on(way)

    def _accept(self):
        caller, _ = self._listener.accept()
        try:
            called = socket.create_connection((ADDRESS, self._target_port), 1)
        except OSError:
            self._end(caller, True)
            return
        self.connections += 1
        for sock in (caller, called):
            sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self._ways += [Way(caller, called), Way(called, caller)]

    def _read(self, way):
        try:
            data = way.source.recv(65536)
        except ConnectionError:
            self._drop(way, True)
            return
        due = time.monotonic() + self.treatment.delay
        if data[:1] == ACK:  # an ENQ may follow in the same segment
            way.acks += 1
            if way.acks % 2:
                due += self.treatment.late_acks
        way.flying.append((due, data))
        way.ended = not data

    def _pass_on(self, way):
        now = time.monotonic()
        while way.flying and way.flying[0][0] <= now and way in self._ways:
            due, data = way.flying.popleft()
            try:
                if not data:
                    way.target.shutdown(socket.SHUT_WR)
                    continue
                size = self._random.randint(1, 7) if self.treatment.chop else len(data)
                way.target.sendall(data[:size])
                self.pieces += 1
            except OSError:
                self._drop(way, True)
                return
            if data[size:]:
                way.flying.appendleft((due, data[size:]))
                return  # The rest in the next turn: a segment of its own.
        if way.ended and not way.flying:
            self._close_when_both_ended(way)

    def _close_when_both_ended(self, way):
        back = next((other for other in self._ways if other.source is way.target), None)
        if back is None or (back.ended and not back.flying):
            self._drop(way, False)

    def _drop(self, way, reset):
        for sock in (way.source, way.target):
            self._end(sock, reset)
        self._ways = [other for other in self._ways if other.source not in (way.source, way.target)]
