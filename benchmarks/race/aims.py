"""What the library aims at, as ratios within one run."""
import dataclasses

from contestants import LOGGED, OURS
from measures import Measure


@dataclasses.dataclass
class Aim:
    text: str
    measured: float | None
    limit: float
    at_least: bool = False

    @property
    def is_met(self):
        return self.measured >= self.limit if self.at_least else self.measured <= self.limit


def aims(results, peers, memory, endurance):
    """Every aim and what this run says of it; without a figure where nothing was measured."""

    def time(key):
        return Measure(key, "", "")

    def rate(key):
        return Measure(key, "", "", True)

    def floor(measure):
        return results.over_floor(OURS, measure)

    def ahead(measure):
        return results.ahead_of_best(measure, peers)

    def share(key):
        over = floor(time(key))
        return 1 / over if over else None

    logged = results.median(LOGGED, "host/a/1/p50_us")
    plain = results.median(OURS, "host/a/1/p50_us")
    growth = endurance.get("heap_after", 0) - endurance.get("heap_before", 0) if endurance else None
    return [
        Aim("S1F1, one open: p50, times the floor", floor(time("host/a/1/p50_us")), 1.25),
        Aim("S1F1, one open: p99, times the floor", floor(time("host/a/1/p99_us")), 2),
        Aim("event report, one open: p50, times the floor", floor(time("host/b/1/p50_us")), 1.5),
        Aim("S1F1, 32 open: times the best peer", ahead(rate("host/a/32/per_s")), 5, True),
        Aim("event report, 32 open: times the best peer", ahead(rate("host/b/32/per_s")), 5, True),
        Aim(
            "S1F1, 32 open: share of the floor's rate (200 000 where it does 1.3 million)",
            share_of_rate(results),
            200_000 / 1_300_000,
            True,
        ),
        Aim(
            "S1F1, one open, with the log: p50, times without",
            logged / plain if logged and plain else None,
            3,
        ),
        Aim("event report decoded: times the best peer", ahead(time("codec/w1a_decode_ns")), 5, True),
        Aim("event report encoded: times the best peer", ahead(time("codec/w1a_encode_ns")), 5, True),
        Aim("event report as SML: times the best peer", ahead(time("codec/w1a_sml_ns")), 3, True),
        Aim("10 000 U4 items decoded: times the tree of C", floor(time("codec/w1b_decode_ns")), 1),
        Aim(
            "10 000 U4 items encoded from a ready tree: times the loop of C",
            floor(time("codec/w1b_encode_ready_ns")),
            2,
        ),
        Aim("1 000 000 U4 values decoded: share of copy and swap", share("codec/w1c_decode_ns"), 0.5, True),
        Aim(
            "1 000 000 U4 values encoded: share of copy and swap",
            share("codec/w1c_encode_ready_ns"),
            0.5,
            True,
        ),
        Aim("1 MiB of ASCII decoded: share of a copy", share("codec/w1d_decode_ns"), 0.5, True),
        Aim("1 MiB of ASCII encoded: share of a copy", share("codec/w1d_encode_ready_ns"), 0.5, True),
        Aim("memory of a link beyond the first, KiB", memory.get(OURS), 64),
        Aim("memory of a decoded U4 item, bytes", results.median(OURS, "codec/w1b_item_bytes"), 160),
        Aim("memory that stays after a million round trips, KiB", None if growth is None else growth / 1024, 4),
    ]


def share_of_rate(results):
    over = results.over_floor(OURS, Measure("host/a/32/per_s", "", "", True))
    return 1 / over if over else None
