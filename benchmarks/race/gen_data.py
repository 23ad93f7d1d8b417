#!/usr/bin/env python3
"""Writes the bodies of the races, byte by byte and with no SECS library, as NAME.bin.

    benchmarks/race/gen_data.py DIRECTORY

Every contestant decodes exactly these files and checks against them what it encodes (the byte of a true
BOOLEAN may be any but 0), so that all figures are for the same bytes.
"""
import pathlib
import struct
import sys

MEBIBYTE = 1 << 20


def item(code, count, content=b""):
    """An item with its format code (octal in SEMI E5) and its count of bytes or, for a list, of items."""
    for length_bytes in (1, 2, 3):
        if count < 1 << 8 * length_bytes:
            return bytes([code << 2 | length_bytes]) + count.to_bytes(length_bytes, "big") + content
    raise ValueError("an item holds less than 16 MiB")


def list_of(*items):
    return item(0o00, len(items), b"".join(items))


def value(code, content):
    return item(code, len(content), content)


def binary(content):
    return value(0o10, content)


def ascii_text(text):
    return value(0o20, text.encode("ascii"))


def u4(*values):
    return value(0o54, struct.pack(f">{len(values)}I", *values))


def event_report():
    """S6F11 with two reports of eight values: 164 bytes, 26 items."""
    reports = [
        list_of(
            u4(3001 + index),
            list_of(
                ascii_text(lot),
                u4(4_000_000_001),
                value(0o40, struct.pack(">d", 1234.5678)),
                value(0o32, struct.pack(">h", -12345)),
                value(0o11, b"\x01"),
                binary(b"\x00\x7f\x80\xff"),
                ascii_text("CHAMBER1"),
                value(0o51, b"\xc8"),
            ),
        )
        for index, lot in enumerate(("LOT-2026-0101-000001", "LOT-2026-0101-000002"))
    ]
    return list_of(u4(1001), u4(2002), list_of(*reports))


def alphabet(length):
    letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    return (letters * (length // len(letters) + 1))[:length]


def nested(depth=50):
    """Lists one inside the other, each with two texts before the next; the innermost has three."""
    numbers = iter(range(2 * depth + 1))

    def leaf():
        return ascii_text(f"LEAF{next(numbers):04}")

    outer = [(leaf(), leaf()) for _ in range(depth - 1)]
    body = list_of(leaf(), leaf(), leaf())
    for pair in reversed(outer):
        body = list_of(*pair, body)
    return body


BODIES = {
    "w1a": event_report,
    "w1b": lambda: list_of(*(u4(i * 429_496) for i in range(10_000))),
    "w1c": lambda: u4(*(i * 4_294 for i in range(1_000_000))),
    "w1d": lambda: ascii_text(alphabet(MEBIBYTE)),
    "w1e": nested,
    "w3a": lambda: list_of(ascii_text("RECIPE_NAME"), ascii_text(alphabet(MEBIBYTE))),
    "w3b": lambda: list_of(ascii_text("RECIPE_NAME"), binary(bytes(range(256)) * (MEBIBYTE // 256))),
    "s1f2": lambda: list_of(ascii_text("EQ-SIM"), ascii_text("1.0.00")),
    "ack": lambda: binary(b"\x00"),
}


def write(directory):
    directory = pathlib.Path(directory)
    directory.mkdir(parents=True, exist_ok=True)
    for name, body in BODIES.items():
        (directory / f"{name}.bin").write_bytes(body())


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    write(sys.argv[1])
