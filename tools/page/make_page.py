#!/usr/bin/env python3
"""Joins the pieces of explain.html.

  make_page.py ENGINE OUTPUT

ENGINE is the program's code as WebAssembly. The page takes the meaning of each line from docs/log.md
and the picture from docs/decision.svg. It may load nothing, and run no other script than its own.
"""
import base64
import hashlib
import json
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
DOCS = HERE.parent.parent / "docs"


def inline(markdown):
    """HTML of a cell: the marks that docs/log.md uses in one."""
    text = markdown.replace("&", "&amp;").replace("<", "&lt;").replace("\\|", "|")
    return re.sub("`(.*?)`", r"<code>\1</code>", text)


def log_rows():
    """The rows of docs/log.md with the heading above each. "As above." stands for the row before."""
    rows, heading = [], ""
    for line in (DOCS / "log.md").read_text().splitlines():
        row = re.fullmatch(r"\| `(.*?)` \| (\w+) \| (.*) \| (.*) \|", line)
        if line.startswith("## "):
            heading = line[3:]
        elif row:
            text, level, meaning, remedy = row.groups()
            remedy = rows[-1]["remedy"] if remedy == "As above." else inline(remedy)
            rows.append({"heading": heading, "level": level, "text": text.replace("<nothing>", ""),
                         "meaning": inline(meaning), "remedy": remedy})
    return rows


def data(value):
    """JSON that may stand in a script element."""
    return json.dumps(value, separators=(",", ":")).replace("<", "\\u003c")


def main():
    engine, output = map(pathlib.Path, sys.argv[1:])
    script = (HERE / "page.js").read_text()
    picture = (DOCS / "decision.svg").read_text()
    pieces = {
        "SCRIPT": script,
        "SCRIPT_DIGEST": base64.b64encode(hashlib.sha256(script.encode()).digest()).decode(),
        "STYLE": (HERE / "page.css").read_text(),
        "ROWS": data(log_rows()),
        "PICTURE": picture[picture.index("<svg"):],
        "ENGINE": base64.b64encode(engine.read_bytes()).decode(),
    }
    page = re.sub("@([A-Z_]+)@", lambda name: pieces[name[1]], (HERE / "page.html").read_text())
    output.write_text(page)


main()
