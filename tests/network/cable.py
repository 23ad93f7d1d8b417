"""Two network namespaces and a cable between them that is as bad as a scene wants it.

Each end is a namespace with a TUN interface; this process carries the packets from one to the other
and drops, delays or re-orders them. Both ends run the system's own TCP. Nothing leaves the two
namespaces: they have no other interface that is up.
"""
import ctypes
import dataclasses
import errno
import fcntl
import heapq
import os
import queue
import random
import select
import socket
import struct
import threading
import time

CLONE_NEWNET, CLONE_NEWUSER = 0x40000000, 0x10000000
TUNSETIFF, IFF_TUN, IFF_NO_PI = 0x400454CA, 0x0001, 0x1000
SIOCGIFFLAGS, SIOCSIFFLAGS, SIOCSIFADDR, SIOCSIFNETMASK = 0x8913, 0x8914, 0x8916, 0x891C
IFF_UP = 1
INTERFACE = b"cable"

_libc = ctypes.CDLL(None, use_errno=True)


def _unshare(flags):
    if _libc.unshare(flags) != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number), "unshare")


def become_able():
    """Takes the rights that namespaces need. To be called before any thread is made; returns why it
    is not possible, or None."""
    try:
        if os.geteuid() != 0:
            user, group = os.geteuid(), os.getegid()
            _unshare(CLONE_NEWUSER)
            for name, text in [("setgroups", "deny"), ("uid_map", f"0 {user} 1"), ("gid_map", f"0 {group} 1")]:
                with open(f"/proc/self/{name}", "w", encoding="ascii") as file:
                    file.write(text)
        end = Namespace("10.99.0.9")
        end.close()
    except OSError as failure:
        return f"{failure.filename or 'network interface'}: {failure.strerror}"
    return None


class Namespace:
    """A network namespace with one interface. A thread of its own lives in it; what it starts does
    too."""

    def __init__(self, address):
        self.address = address
        self._calls = queue.SimpleQueue()
        self._thread = threading.Thread(target=self._live, daemon=True)
        self._thread.start()
        try:
            self.tun = self.do(self._make)
        except OSError:
            self._stop()
            raise

    def do(self, function):
        """Runs a function inside and returns what it returns."""
        result = queue.SimpleQueue()
        self._calls.put((function, result))
        value, failure = result.get()
        if failure is not None:
            raise failure
        return value

    def set_up(self, is_up):
        """Plugs the interface in or out."""
        self.do(lambda: self._set_up(is_up))

    def close(self):
        os.close(self.tun)
        self._stop()

    def _stop(self):
        self._calls.put(None)
        self._thread.join()

    def _live(self):
        while (call := self._calls.get()) is not None:
            function, result = call
            try:
                result.put((function(), None))
            except OSError as failure:
                result.put((None, failure))

    def _make(self):
        _unshare(CLONE_NEWNET)
        tun = os.open("/dev/net/tun", os.O_RDWR | os.O_NONBLOCK)
        try:
            fcntl.ioctl(tun, TUNSETIFF, struct.pack("16sH22x", INTERFACE, IFF_TUN | IFF_NO_PI))
            with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
                for request, address in [(SIOCSIFADDR, self.address), (SIOCSIFNETMASK, "255.255.255.0")]:
                    packed = struct.pack("16sHH4s16x", INTERFACE, socket.AF_INET, 0, socket.inet_aton(address))
                    fcntl.ioctl(control, request, packed)
            self._set_up(True)
        except OSError:
            os.close(tun)
            raise
        return tun

    @staticmethod
    def _set_up(is_up):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
            answer = fcntl.ioctl(control, SIOCGIFFLAGS, struct.pack("16sH22x", INTERFACE, 0))
            flags = struct.unpack("16sH22x", answer)[1]
            flags = flags | IFF_UP if is_up else flags & ~IFF_UP
            fcntl.ioctl(control, SIOCSIFFLAGS, struct.pack("16sH22x", INTERFACE, flags))


@dataclasses.dataclass(frozen=True)
class Conditions:
    """What happens to each packet. Times in seconds, the others as a share of all packets."""

    drop_all: bool = False
    loss: float = 0.0
    delay: float = 0.0
    jitter: float = 0.0
    overtaken: float = 0.0  # packets held back for 30 ms, so that later ones overtake them


class Cable:
    """Carries packets between two namespaces."""

    HELD_BACK = 0.03

    def __init__(self, addresses):
        self.ends = [Namespace(address) for address in addresses]
        self.conditions = Conditions()
        self.lost = 0
        self.overtaken = 0
        self._random = random.Random(20261121)
        self._flying = []  # (due, order, end, packet)
        self._order = 0
        self._changes = queue.SimpleQueue()
        self._wake_out, self._wake_in = os.pipe()
        self._running = True
        self._thread = threading.Thread(target=self._carry, daemon=True)
        self._thread.start()

    def replace_end(self, index):
        """A machine that loses its power and comes back: its namespace is gone with all that TCP
        knew."""
        done = threading.Event()

        def replace():
            old = self.ends[index]
            self.ends[index] = Namespace(old.address)
            old.close()
            done.set()

        self._call(replace)
        if not done.wait(5):
            raise OSError("the cable does not answer")

    def close(self):
        def stop():
            self._running = False

        self._call(stop)
        self._thread.join(5)
        for end in self.ends:
            end.close()
        os.close(self._wake_in)
        os.close(self._wake_out)

    def _call(self, change):
        self._changes.put(change)
        os.write(self._wake_in, b"!")

    def _carry(self):
        while self._running:
            descriptors = [end.tun for end in self.ends]
            readable, _, _ = select.select([*descriptors, self._wake_out], [], [], self._pause())
            if self._wake_out in readable:
                os.read(self._wake_out, 1)
                self._changes.get()()
                continue
            for index, tun in enumerate(descriptors):
                if tun in readable:
                    self._take(index, tun)
            self._deliver()

    def _pause(self):
        return max(0.0, self._flying[0][0] - time.monotonic()) if self._flying else None

    def _take(self, index, tun):
        try:
            packet = os.read(tun, 65536)
        except OSError as failure:
            if failure.errno not in (errno.EAGAIN, errno.EIO, errno.EBADFD):
                raise
            return
        now = self.conditions
        if now.drop_all or self._random.random() < now.loss:
            self.lost += 1
            return
        due = time.monotonic() + now.delay + self._random.uniform(0, now.jitter)
        if self._random.random() < now.overtaken:
            due += self.HELD_BACK
            self.overtaken += 1
        self._order += 1
        heapq.heappush(self._flying, (due, self._order, 1 - index, packet))

    def _deliver(self):
        while self._flying and self._flying[0][0] <= time.monotonic():
            _, _, index, packet = heapq.heappop(self._flying)
            try:
                os.write(self.ends[index].tun, packet)
            except OSError:  # The interface is down: so is the cable.
                self.lost += 1
