"""The bodies of the race, built from plain values by the variables of secsgem, and their reading."""
from secsgem.secs.variables import F8, I2, U1, U4, Array, Binary, Boolean, Dynamic, String
from secsgem.secs.variables.dynamic import ANYVALUE

LOTS = ["LOT-2026-0101-000001", "LOT-2026-0101-000002"]
NUMBERS = [i * 429496 for i in range(10000)]
ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
LEAVES = [f"LEAF{i:04}" for i in range(101)]


def items(*values):
    return Array(ANYVALUE, list(values))


def report(number, lot):
    return items(
        U4(number),
        items(
            String(lot),
            U4(4000000001),
            F8(1234.5678),
            I2(-12345),
            Boolean(True),
            Binary(b"\x00\x7f\x80\xff"),
            String("CHAMBER1"),
            U1(200),
        ),
    )


def event():
    return items(U4(1001), U4(2002), items(report(3001, LOTS[0]), report(3002, LOTS[1])))


def list_of_numbers():
    return Array(ANYVALUE, [U4(number) for number in NUMBERS])


def big_array():
    return U4([i * 4294 for i in range(1000000)])


def text():
    return String((ALPHABET * ((1 << 20) // 26 + 1))[: 1 << 20])


def nested():
    body = items(String(LEAVES[98]), String(LEAVES[99]), String(LEAVES[100]))
    for depth in range(48, -1, -1):
        body = items(String(LEAVES[2 * depth]), String(LEAVES[2 * depth + 1]), body)
    return body


# The encoder of arrays takes a time that grows with the square of their length: that of w1c is left out.
BUILDERS = {"w1a": event, "w1b": list_of_numbers, "w1c": big_array, "w1d": text, "w1e": nested}
NOT_ENCODED = {"w1c"}


def decode(body):
    variable = Dynamic([])
    variable.decode(body)
    return variable


def read_tree(variable):
    """A list of every value."""
    return variable.get()
