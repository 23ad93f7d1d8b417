"""A run as tables: the same rows as plain text and as Markdown."""
from aims import aims
from contestants import LOGGED, OURS
from measures import CODEC, EXCHANGES, START, exchange_measures


def number(value):
    """Three significant digits or more, thousands apart."""
    if value is None:
        return ""
    if value >= 100:
        return f"{value:,.0f}".replace(",", " ")
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def times(value):
    return f"{number(value)}x" if value is not None else ""


def spread(values, divisor=1):
    """Median (least..most)."""
    if not values:
        return ""
    ordered = sorted(value / divisor for value in values)
    middle = (ordered[(len(ordered) - 1) // 2] + ordered[len(ordered) // 2]) / 2
    if len(ordered) == 1:
        return number(middle)
    return f"{number(middle)} ({number(ordered[0])}..{number(ordered[-1])})"


class Table:
    """A heading, columns and rows of texts; the first column is on the left, the others on the right."""

    def __init__(self, name, title, columns, rows):
        self.name, self.title, self.columns, self.rows = name, title, columns, rows

    def plain(self):
        lines = [self.columns, *self.rows]
        widths = [max(len(line[i]) for line in lines) for i in range(len(self.columns))]
        text = [self.title, ""]
        for line in lines:
            cells = [line[0].ljust(widths[0])]
            cells += [cell.rjust(width) for cell, width in zip(line[1:], widths[1:])]
            text.append("  ".join(cells).rstrip())
        return "\n".join(text) + "\n"

    def markdown(self):
        lines = ["| " + " | ".join(self.columns) + " |", "|---" + "|--:" * (len(self.columns) - 1) + "|"]
        lines += ["| " + " | ".join(row) + " |" for row in self.rows]
        return "\n".join(lines) + "\n"


def round_trips(run):
    rows = []
    for key, label in EXCHANGES.items():
        p50, p99, rate = exchange_measures(*key)
        for contestant in run.names:
            if not run.results.values(contestant, rate.key):
                continue
            rows.append(
                [
                    label if contestant == run.names[0] else "",
                    contestant,
                    spread(run.results.values(contestant, p50.key)),
                    spread(run.results.values(contestant, p99.key)),
                    spread(run.results.values(contestant, rate.key)),
                    times(run.results.over_floor(contestant, p50)),
                    times(run.results.over_floor(contestant, rate)),
                    times(run.results.ahead_of_best(rate, run.peers, contestant)),
                ]
            )
    columns = ["exchange", "host", "p50 us", "p99 us", "a second", "p50 / floor", "floor / rate", "rate / best peer"]
    return Table("round-trips", "Round trips", columns, rows)


def codec(run):
    names = [name for name in run.names if name != LOGGED]
    rows = []
    for measure in CODEC:
        over = run.results.over_floor(OURS, measure)
        ahead = run.results.ahead_of_best(measure, run.peers)
        cells = [spread(run.results.values(name, measure.key), 1000) for name in names]
        rows.append([measure.label, *cells, times(over), times(ahead)])
    columns = ["body, us", *names, "hexmire / floor", "best peer / hexmire"]
    return Table("codec", "Bodies to trees and back", columns, rows)


def memory_of_link(run):
    """KiB of each link beyond the first, by contestant."""
    most = max(run.link_counts)
    found = {}
    for name in run.names:
        one = run.results.median(name, "links/1/kib")
        many = run.results.median(name, f"links/{most}/kib")
        if one is not None and many is not None and most > 1:
            found[name] = (many - one) / (most - 1)
    return found


def links(run):
    memory = memory_of_link(run)
    most = max(run.link_counts)
    rows = []
    for name in run.names:
        row = [
            name,
            spread(run.results.values(name, "links/1/kib")),
            number(memory[name]) if name in memory else "",
            spread(run.results.values(name, f"links/{most}/cpu_percent")),
        ]
        row += [spread(run.results.values(name, f"links/{count}/per_s")) for count in run.link_counts]
        rows.append(row)
    columns = ["host", "KiB, one link", "KiB, each further", f"idle CPU %, {most} links"]
    columns += [f"S1F1 a second, {count} link{'s' if count > 1 else ''}" for count in run.link_counts]
    return Table("links", "Links of one process", columns, rows)


def start(run):
    rows = [
        [
            name,
            spread(run.results.values(name, START.key)),
            times(run.results.over_floor(name, START)),
            times(run.results.ahead_of_best(START, run.peers, name)),
        ]
        for name in run.names
    ]
    columns = ["host", "ms", "/ floor", "best peer /"]
    return Table("start", "Start of the process to its end after the first reply", columns, rows)


def growth(run):
    """Each curve takes the columns of its own sizes."""
    rows = []
    for subject, curve in run.growth["curves"].items():
        sizes = [f"{size:,}".replace(",", " ") for size in curve]
        steps = [f"{number(value)} ({size})" for size, value in zip(sizes, curve.values())]
        values = list(curve.values())
        rows.append([subject, *steps, *[""] * (5 - len(steps)), times(values[-1] / values[0])])
    columns = ["one element", *["ns (of how many)"] * 5, "last / first"]
    return Table("growth", "What one element costs among few and among many", columns, rows)


def line(run):
    told = run.growth["line"]
    rows = [
        [what, number(told[f"line_{key}"]), number(told[f"least_{key}"]), f"{told[f'line_{key}'] / told[f'least_{key}']:.3f}"]
        for what, key in (("bytes on the line", "bytes"), ("seconds at 9600 bit/s", "seconds"))
        if f"line_{key}" in told
    ]
    columns = ["100 KB by SECS-I, simulated", "hexmire", "least that the protocol permits", "ratio"]
    return Table("line", "SECS-I", columns, rows)


def aims_table(run):
    rows = []
    for aim in aims(run.results, run.peers, memory_of_link(run), run.endurance):
        bound = f"at {'least' if aim.at_least else 'most'} {number(aim.limit)}"
        if aim.measured is None:
            rows.append([aim.text, bound, "not measured", ""])
        else:
            rows.append([aim.text, bound, number(aim.measured), "yes" if aim.is_met else "no"])
    return Table("aims", "Aims", ["aim", "bound", "this run", "met"], rows)


def contestants(run):
    rows = [
        [entry["name"], " ".join(filter(None, (entry["version"], entry["runtime"])))]
        for entry in run.contestants
    ]
    rows += [[name, f"skipped: {reason}"] for name, reason in run.skipped.items()]
    rows += [[f"{name}, {race}", f"failed: {reason}"] for name, race, reason in run.failures]
    return Table("contestants", "Contestants", ["name", "version, or what became of it"], rows)


def all_tables(run):
    return [table(run) for table in (contestants, round_trips, codec, links, start, line, growth, aims_table)]
