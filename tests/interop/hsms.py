"""A second HSMS-SS implementation, on the Python standard library alone, for tests against the
program: it shares no code with the library and is deliberately plain."""
import socket
import struct

DATA, SELECT_REQ, SELECT_RSP, LINKTEST_REQ, LINKTEST_RSP, REJECT_REQ, SEPARATE_REQ = 0, 1, 2, 5, 6, 7, 9
PATIENCE = 10


class Frame:
    """One HSMS message."""

    def __init__(self, session, byte2, byte3, s_type, system, body=b""):
        self.session, self.byte2, self.byte3 = session, byte2, byte3
        self.s_type, self.system, self.body = s_type, system, body

    def encode(self):
        header = struct.pack(
            ">HBBBBI", self.session, self.byte2, self.byte3, 0, self.s_type, self.system
        )
        return struct.pack(">I", len(header) + len(self.body)) + header + self.body

    @classmethod
    def decode(cls, payload):
        session, byte2, byte3, p_type, s_type, system = struct.unpack(">HBBBBI", payload[:10])
        assert p_type == 0, f"PType {p_type}"
        return cls(session, byte2, byte3, s_type, system, payload[10:])

    @property
    def name(self):
        """S1F1W for data; the SType otherwise."""
        if self.s_type != DATA:
            return f"SType {self.s_type}"
        wait = "W" if self.byte2 & 0x80 else ""
        return f"S{self.byte2 & 0x7F}F{self.byte3}{wait}"


def data(stream, function, system, body=b"", wait=False, session=0):
    return Frame(session, stream | (0x80 if wait else 0), function, DATA, system, body)


def control(s_type, system, status=0):
    return Frame(0xFFFF, 0, status, s_type, system)


def item(code, payload):
    """A SECS-II item: format code and value bytes, or the items of a list."""
    if isinstance(payload, list):
        return bytes([code << 2 | 1, len(payload)]) + b"".join(payload)
    return bytes([code << 2 | 1, len(payload)]) + payload


def ascii_item(text):
    return item(0o20, text.encode("ascii"))


class Peer:
    """One connection."""

    def __init__(self, sock):
        sock.settimeout(PATIENCE)
        sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.sock = sock

    def send(self, *frames):
        """All frames in one write."""
        self.sock.sendall(b"".join(frame.encode() for frame in frames))

    def send_in_pieces(self, frame):
        """One byte a write."""
        for byte in frame.encode():
            self.sock.sendall(bytes([byte]))

    def _read(self, count):
        parts = b""
        while len(parts) < count:
            part = self.sock.recv(count - len(parts))
            if not part:
                raise EOFError("the program closed the connection")
            parts += part
        return parts

    def receive(self):
        return Frame.decode(self._read(struct.unpack(">I", self._read(4))[0]))

    def expect(self, name):
        frame = self.receive()
        assert frame.name == name, f"{frame.name} came instead of {name}"
        return frame

    def expect_closed(self):
        try:
            frame = self.receive()
        except (EOFError, ConnectionResetError):
            return
        raise AssertionError(f"{frame.name} came instead of the end of the connection")

    def close(self):
        self.sock.close()
