"""Puts the tables of a run between the marks in docs/performance.md, and the chart beside it.

A mark is a comment: <!-- race: NAME --> in front of what is generated, <!-- end --> behind it.
"""
import pathlib
import re
import shutil

import machine

DOCS = pathlib.Path(__file__).parents[2] / "docs"


def replaced(text, name, content):
    pattern = re.compile(rf"(<!-- race: {re.escape(name)} -->\n).*?(<!-- end -->)", re.DOTALL)
    if not pattern.search(text):
        raise ValueError(f"docs/performance.md has no place for {name}")
    return pattern.sub(lambda match: f"{match[1]}\n{content.strip()}\n\n{match[2]}", text, count=1)


def write(run, made, picture):
    path = DOCS / "performance.md"
    text = path.read_text()
    facts = f"{run.date}: {machine.sentence(run.machine)}. {run.rounds} rounds, {run.seconds:g} s for each timed run."
    text = replaced(text, "machine", facts)
    for table in made:
        text = replaced(text, table.name, table.markdown())
    path.write_text(text)
    shutil.copyfile(picture, DOCS / "performance.svg")
