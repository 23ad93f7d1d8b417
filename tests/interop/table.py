"""The page docs/interoperation.md, from what a run of all scenes has seen; and what is known of the peers."""
import re

import scenes
import sides

FILE = sides.ROOT / "docs" / "interoperation.md"
TRANSPORTS = {"hsms": "HSMS-SS", "secs1tcp": "SECS-I over TCP", "serial": "SECS-I on a serial line"}


class Known:
    def __init__(self, transports, language, pin, pattern):
        self.transports, self.language, self._pin, self._pattern = transports, language, pin, pattern

    def version(self):
        return re.search(self._pattern, (sides.PEERS / self._pin).read_text()).group(1)


PEERS = {
    "secsgem": Known(["hsms", "secs1tcp", "serial"], "Python", "secsgem/requirements.txt", r"secsgem==(\S+)"),
    "secs4js": Known(["hsms", "secs1tcp", "serial"], "JavaScript", "secs4js/package.json", r'"secs4js": "(\S+)"'),
    "go-secs": Known(["hsms", "secs1tcp"], "Go", "go-secs/go.mod", r"go-secs/v2 v(\S+)"),
}

# Formats that a peer gives back changed, and what it does.
CHANGED_ITEMS = {
    "secsgem": {"BOOLEAN": "writes a true BOOLEAN as 01, whatever it was when it came (Hexmire writes FF)"},
}

INTRODUCTION = """# Interoperation

`make interop` lets the program `hexmire` talk to stacks of the standards that others wrote, as host and as
equipment, calling and called, and compares what it saw with this page, which is written by
`tests/interop/interop.py PROGRAM --write-docs`. The stacks come from package registries, pinned by version and
hash ([dependencies](dependencies.md)); `make peers` installs them into `build/peers`, and a small program for each
(`tests/interop/peers`) puts it at the other end of the link. A scene passes when every byte and event that it
names came, and no error that it does not name.

The columns tell what the peer is and who calls; Hexmire is the other one. `yes`: as the standards say. `yes` with
a number: the peer does otherwise, as the note below the table says, the scene has seen it do so, and Hexmire
goes on as it should. `no`: not possible with this peer; the note says why. `-`: the scene makes no sense there.
On SECS-I over TCP there are 250 events instead of 1000.

| peer | version | language | transports |
|---|---|---|---|
"""

SCENES_HEAD = """
## What the scenes are

| scene | what happens |
|---|---|
"""


def columns(transport):
    if transport == "serial":
        return [("equipment", "passive"), ("host", "passive")]
    return [(role, mode) for role in ("equipment", "host") for mode in ("passive", "active")]


def one_table(results, peer, transport):
    mine = {(r.scene.name, r.job.role, r.job.mode): r for r in results
            if r.job.peer == peer and r.job.transport == transport}
    notes, lines = [], []
    heads = [role if transport == "serial" else f"{role}, {mode}" for role, mode in columns(transport)]
    lines.append(f"| peer: {' | '.join(heads)} |".replace("| peer: ", "| the peer is | ", 1))
    lines.append("|---" * (len(heads) + 1) + "|")

    def number(words):
        if words not in notes:
            notes.append(words)
        return str(notes.index(words) + 1)

    for scene in scenes.SCENES:
        cells = []
        for role, mode in columns(transport):
            result = mine.get((scene.name, role, mode))
            if result is None:
                cells.append("-")
            elif result.state == "passed":
                cells.append(" ".join(["yes", *[f"({number(words)})" for words in result.notes]]))
            else:
                cells.append(f"no ({number(result.words)})")
        if set(cells) != {"-"}:
            lines.append(f"| {scene.name} | {' | '.join(cells)} |")
    text = "\n".join(lines) + "\n"
    if notes:
        text += "\n" + "\n".join(f"{place}. {peer} {words}." for place, words in enumerate(notes, 1)) + "\n"
    return text


def page(results):
    text = INTRODUCTION
    for name, known in PEERS.items():
        kinds = ", ".join(TRANSPORTS[transport] for transport in known.transports)
        text += f"| {name} | {known.version()} | {known.language} | {kinds} |\n"
    for name, known in PEERS.items():
        for transport in known.transports:
            text += f"\n## {name}, {TRANSPORTS[transport]}\n\n" + one_table(results, name, transport)
    text += SCENES_HEAD
    for scene in scenes.SCENES:
        text += f"| {scene.name} | {' '.join(scene.act.__doc__.split())} |\n"
    return text
