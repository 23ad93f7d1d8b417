"""The chart of a run: every measure as times the floor's, and what one element costs among many."""
import math
from xml.sax.saxutils import escape

from contestants import FLOOR, LOGGED, OURS
from measures import BODIES, EXCHANGES, START, Measure

WIDTH = 1000
LEFT, RIGHT = 330, 970
ROW = 22
OUR_BLUE = "#1f5fbf"
# Told apart by those who see colours differently, and by their order in the legend.
PEER_COLOURS = ["#d55e00", "#009e73", "#9a5fb5", "#a6761d", "#666666"]
INK, PALE, RULE = "#222222", "#6b6b6b", "#dddddd"


class Picture:
    def __init__(self):
        self.parts = []

    def add(self, element, content="", **attributes):
        names = " ".join(f'{name.replace("_", "-")}="{value}"' for name, value in attributes.items())
        self.parts.append(f"<{element} {names}>{content}</{element}>" if content else f"<{element} {names}/>")

    def text(self, x, y, words, anchor="start", size=12, fill=INK, weight="normal"):
        self.add(
            "text",
            escape(words),
            x=f"{x:.1f}",
            y=f"{y:.1f}",
            text_anchor=anchor,
            font_size=size,
            fill=fill,
            font_weight=weight,
        )

    def line(self, x1, y1, x2, y2, stroke=RULE, width=1.0):
        self.add(
            "line",
            x1=f"{x1:.1f}",
            y1=f"{y1:.1f}",
            x2=f"{x2:.1f}",
            y2=f"{y2:.1f}",
            stroke=stroke,
            stroke_width=width,
        )

    def finished(self, height):
        head = (
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height:.0f}" '
            'font-family="system-ui, Helvetica, Arial, sans-serif">'
        )
        paper = f'<rect width="{WIDTH}" height="{height:.0f}" fill="#ffffff"/>'
        return "\n".join([head, paper, *self.parts, "</svg>"]) + "\n"


class LogScale:
    """Places of numbers between two powers of ten."""

    def __init__(self, numbers, start, end):
        self.low = math.floor(math.log10(min(numbers)) + 1e-9)
        self.high = max(self.low + 1, math.ceil(math.log10(max(numbers)) - 1e-9))
        self.start, self.end = start, end

    def __call__(self, number):
        share = (math.log10(number) - self.low) / (self.high - self.low)
        return self.start + share * (self.end - self.start)

    def powers(self):
        return [10.0**power for power in range(self.low, self.high + 1)]


def power_name(number):
    return f"{number:,.0f}".replace(",", " ") if number >= 1 else f"{number:g}"


def colours(run):
    chosen = {OURS: OUR_BLUE, LOGGED: OUR_BLUE}
    chosen.update(zip(run.peers, PEER_COLOURS))
    return chosen


def mark(picture, x, y, name, colour):
    """A dot; a ring for the library with its log."""
    hollow = name == LOGGED
    picture.add(
        "circle",
        cx=f"{x:.1f}",
        cy=f"{y:.1f}",
        r=4.5 if hollow else 5.5,
        fill="#ffffff" if hollow else colour,
        stroke=colour if hollow else "#ffffff",
        stroke_width=2 if hollow else 1,
    )


def sections():
    """Titles and the measures below them."""
    trips = []
    for (what, count), label in EXCHANGES.items():
        prefix = f"host/{what}/{count}"
        if count == 1:
            trips.append(Measure(f"{prefix}/p50_us", f"{label}: p50", "us"))
        else:
            trips.append(Measure(f"{prefix}/per_s", f"{label}: rate", "/s", True))
    codec = [
        Measure(f"codec/w1{body}_{what}_ns", f"{name}: {what}", "ns")
        for body, name in BODIES.items()
        for what in ("decode", "encode")
    ]
    return [("Round trips", trips), ("Bodies", codec), ("Start", [Measure(START.key, "first reply", "ms")])]


def ratios(run, name, measure):
    """Least, middle and most of a contestant's times the floor's, each round beside its own floor."""
    values, floor = (run.results.values(one, measure.key) for one in (name, FLOOR))
    if len(values) != len(floor):
        floor = [run.results.median(FLOOR, measure.key)] * len(values) if floor else []
    pairs = zip(floor, values) if measure.is_rate else zip(values, floor)
    found = sorted(one / other for one, other in pairs if one and other)
    return (found[0], found[len(found) // 2], found[-1]) if found else None


def draw_ratios(picture, run, top):
    """One row for each measure; the floor is the line at 1. Gives the place below."""
    chosen = colours(run)
    shown = [
        (title, [(measure, {name: ratios(run, name, measure) for name in chosen}) for measure in measures])
        for title, measures in sections()
    ]
    numbers = [
        number
        for _, rows in shown
        for _, by_name in rows
        for found in by_name.values()
        if found
        for number in found
    ]
    if not numbers:
        return top
    scale = LogScale([*numbers, 1], LEFT, RIGHT)
    picture.text(20, top, "Times the floor's time", size=15, weight="bold")
    x, y = LEFT, top
    for name, colour in chosen.items():
        mark(picture, x + 5, y - 4, name, colour)
        picture.text(x + 15, y, name)
        x += 30 + 7 * len(name)
    begin = top + 18
    y = begin + 10
    for title, rows in shown:
        rows = [(measure, by_name) for measure, by_name in rows if any(by_name.values())]
        if not rows:
            continue
        picture.text(20, y + 8, title, fill=PALE, weight="bold")
        y += ROW
        for measure, by_name in rows:
            picture.line(LEFT, y + 4, RIGHT, y + 4, stroke="#f2f2f2")
            picture.text(LEFT - 14, y + 8, measure.label, anchor="end")
            for name, found in by_name.items():
                if found:
                    least, _, most = (scale(number) for number in found)
                    picture.line(least, y + 4, most, y + 4, stroke=chosen[name], width=2)
            # Ours last, on top.
            for name in sorted(by_name, key=lambda one: one in (LOGGED, OURS)):
                if by_name[name]:
                    mark(picture, scale(by_name[name][1]), y + 4, name, chosen[name])
            y += ROW
        y += 6
    rules = Picture()
    for power in scale.powers():
        rules.line(scale(power), begin, scale(power), y, stroke=INK if power == 1 else RULE)
        rules.text(scale(power), y + 15, power_name(power), anchor="middle", size=11, fill=PALE)
    rules.text(scale(1), y + 29, "the floor", anchor="middle", size=11, fill=PALE)
    picture.parts = rules.parts + picture.parts
    return y + 60


def draw_growth(picture, run, top):
    """Each curve by its first value; those that rise are named. Gives the place below."""
    curves = {
        subject: {number: value / next(iter(curve.values())) for number, value in curve.items()}
        for subject, curve in run.growth["curves"].items()
        if len(curve) > 1
    }
    if not curves:
        return top
    picture.text(20, top, "Time of one element among many, times that among few", size=15, weight="bold")
    height, right = 260, RIGHT - 270
    across = LogScale([number for curve in curves.values() for number in curve], 60, right)
    up = LogScale([value for curve in curves.values() for value in curve.values()], top + 20 + height, top + 20)
    for power in up.powers():
        picture.line(60, up(power), right, up(power), stroke=PALE if power == 1 else RULE)
        picture.text(52, up(power) + 4, power_name(power), anchor="end", size=11, fill=PALE)
    for power in across.powers():
        picture.line(across(power), top + 20, across(power), top + 20 + height)
        picture.text(across(power), top + 38 + height, power_name(power), anchor="middle", size=11, fill=PALE)
    picture.text((60 + right) / 2, top + 56 + height, "how many", anchor="middle", size=11, fill=PALE)
    rising = sorted(
        (subject for subject, curve in curves.items() if list(curve.values())[-1] > 3),
        key=lambda subject: -list(curves[subject].values())[-1],
    )
    label_y = top + 20
    for subject, curve in sorted(curves.items(), key=lambda entry: entry[0] in rising):
        colour = OUR_BLUE if subject in rising else "#b5b5b5"
        points = " ".join(f"{across(number):.1f},{up(value):.1f}" for number, value in curve.items())
        picture.add("polyline", points=points, fill="none", stroke=colour, stroke_width=2)
    for subject in rising:
        number, value = list(curves[subject].items())[-1]
        label_y = max(label_y + 16, up(value) + 4)
        picture.line(across(number), up(value), right + 12, label_y - 4, stroke="#9db7dd")
        picture.text(right + 16, label_y, subject, size=11)
    return top + 80 + height


def draw(run):
    picture = Picture()
    below = draw_ratios(picture, run, 34)
    below = draw_growth(picture, run, below)
    return picture.finished(max(below, 60))
