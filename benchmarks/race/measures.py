"""What is told of a run: the measures in order, their names, medians and ratios."""
import dataclasses
import statistics

from contestants import FLOOR, OURS

BODIES = {
    "a": "event report, 26 items",
    "b": "list of 10 000 U4 items",
    "c": "one U4 item of 1 000 000 values",
    "d": "ASCII item of 1 MiB",
    "e": "50 lists in one another",
}
EXCHANGES = {
    ("a", 1): "S1F1, one open",
    ("a", 32): "S1F1, 32 open",
    ("b", 1): "event report and its echo, one open",
    ("b", 32): "event report and its echo, 32 open",
    ("w3a", 1): "1 MiB of ASCII, short reply",
    ("w3b", 1): "1 MiB of binary, short reply",
}


@dataclasses.dataclass(frozen=True)
class Measure:
    key: str
    label: str
    unit: str
    is_rate: bool = False  # larger is better


def exchange_measures(what, count):
    prefix, label = f"host/{what}/{count}", EXCHANGES[what, count]
    return [
        Measure(f"{prefix}/p50_us", f"{label}: half of them within", "us"),
        Measure(f"{prefix}/p99_us", f"{label}: 99 of 100 within", "us"),
        Measure(f"{prefix}/per_s", f"{label}: a second", "/s", True),
    ]


ROUND_TRIPS = [measure for key in EXCHANGES for measure in exchange_measures(*key)]
CODEC = [
    Measure(f"codec/w1{body}_{what}_ns", f"{name}: {doing}", "ns")
    for body, name in BODIES.items()
    for what, doing in (
        ("decode", "decode and read"),
        ("encode", "build and encode"),
        ("encode_ready", "encode a ready tree"),
        *([("sml", "SML text")] if body == "a" else []),
    )
]
START = Measure("start/ms", "start of the process to the first reply", "ms")


class Results:
    """The figures of a run: contestant, measure, one value for each round."""

    def __init__(self, figures):
        self.figures = figures

    def values(self, contestant, key):
        return self.figures.get(contestant, {}).get(key, [])

    def median(self, contestant, key):
        values = self.values(contestant, key)
        return statistics.median(values) if values else None

    def over_floor(self, contestant, measure):
        """How many times the floor's time it takes, each round beside its own floor."""
        return ratio(self.values(contestant, measure.key), self.values(FLOOR, measure.key), measure.is_rate)

    def best_peer(self, measure, peers):
        """Name of the best of the peers, or None."""
        known = [(self.median(peer, measure.key), peer) for peer in peers]
        known = [entry for entry in known if entry[0] is not None]
        if not known:
            return None
        return (max if measure.is_rate else min)(known)[1]

    def ahead_of_best(self, measure, peers, contestant=OURS):
        """How many times as fast as the best peer a contestant is."""
        best = self.best_peer(measure, peers)
        if best is None:
            return None
        return ratio(
            self.values(best, measure.key), self.values(contestant, measure.key), measure.is_rate
        )


def ratio(times, reference, is_rate):
    """The median of the rounds' ratios; of the medians when a round is missing. Above 1: slower."""
    if not times or not reference:
        return None
    if len(times) != len(reference):
        times, reference = [statistics.median(times)], [statistics.median(reference)]
    pairs = zip(reference, times) if is_rate else zip(times, reference)
    return statistics.median(one / other for one, other in pairs if other)
