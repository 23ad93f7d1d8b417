#!/usr/bin/env python3
"""Prints what a run of the benchmarks says, as ratios: times on one machine say little elsewhere.

Round trips are measured by the clock, everything else by the processor time of its one thread. A
SECS-I line is measured in simulated time, by what its benchmark counts.

    hexmire_benchmarks --benchmark_format=json | benchmarks/ratios.py
"""
import json
import sys

# What is measured, and its measure from the same run.
PAIRS = [
    *[(f"{what}/{name}", f"PlainWalk/{name}") for name in "abcde" for what in ("Decode", "Encode")],
    ("WriteHex/1048576", "PlainCopy/1048576"),
    ("ReadHex/1048576", "PlainCopy/1048576"),
    ("Growth/table: send and take the reply/10000", "Growth/table: send and take the reply/1"),
    ("LoadDictionary", "PlainReadDictionary"),
    *[
        (f"{what}/{name}/{count}/real_time", f"PlainRoundTrip/{name}/{count}/real_time")
        for name in ("S1F1", "S2F101")
        for count in (1, 32)
        for what in ("RoundTrip", "RoundTripLogged")
    ],
]
# Counters of one benchmark: what was counted, and the least that is possible.
COUNTERS = [
    ("SecsILine/102400/manual_time", f"line_{what}", f"least_{what}") for what in ("bytes", "seconds")
]
TO_MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


def times(report):
    """Microseconds of each benchmark; the median where it was repeated."""
    found = {}
    for run in report["benchmarks"]:
        if run.get("error_occurred"):
            continue
        if run.get("run_type") == "aggregate" and run.get("aggregate_name") != "median":
            continue
        time = "real_time" if run["run_name"].endswith("/real_time") else "cpu_time"
        found[run["run_name"]] = run[time] * TO_MICROSECONDS[run["time_unit"]]
    return found


def main():
    report = json.load(sys.stdin)
    failed = [run["name"] for run in report["benchmarks"] if run.get("error_occurred")]
    measured = times(report)
    print(f"{'benchmark':<45}{'us':>12}   {'measure':<41}{'us':>12}{'ratio':>9}")
    for name, measure in PAIRS:
        if name in measured and measure in measured:
            ratio = measured[name] / measured[measure]
            print(f"{name:<45}{measured[name]:>12.2f}   {measure:<41}{measured[measure]:>12.2f}{ratio:>9.1f}")
    for name, count, least in COUNTERS:
        for run in report["benchmarks"]:
            if run["run_name"] == name and run.get("aggregate_name") == "median":
                ratio = run[count] / run[least]
                print(f"{count:<45}{run[count]:>12.2f}   {least:<41}{run[least]:>12.2f}{ratio:>9.3f}")
    for name in failed:
        print(f"{name} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
