"""Times of decoding and encoding, in nanoseconds an operation."""
import pathlib
import time

import bodies

WARM_UP = 0.1
MEASURED = 0.3


def nanoseconds(operation):
    times = 0
    start = time.perf_counter()
    while times == 0 or time.perf_counter() - start < WARM_UP:
        operation()
        times += 1
    each = (time.perf_counter() - start) / times
    count = max(1, round(MEASURED / each))
    begin = time.perf_counter_ns()
    for _ in range(count):
        operation()
    return (time.perf_counter_ns() - begin) / count


def measure_codec(folder):
    figures = {}
    for name, build in bodies.BUILDERS.items():
        body = pathlib.Path(folder, f"{name}.bin").read_bytes()
        figures[f"{name}_decode_ns"] = nanoseconds(lambda: bodies.read_tree(bodies.decode(body)))
        if name in bodies.NOT_ENCODED:
            continue
        ready = build()
        if ready.encode() != body:
            raise ValueError(f"{name} is encoded in another way")
        figures[f"{name}_encode_ns"] = nanoseconds(lambda: build().encode())
        figures[f"{name}_encode_ready_ns"] = nanoseconds(ready.encode)
        if name == "w1a":
            figures["w1a_sml_ns"] = nanoseconds(lambda: repr(ready))
    return figures
