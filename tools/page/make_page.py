#!/usr/bin/env python3
"""Joins the pieces of explain.html.

  make_page.py VERSION ENGINE OUTPUT

ENGINE is the program's code as WebAssembly. The page takes the meaning of each line from docs/log.md
and the picture from docs/decision.svg. It may load nothing, and run no other script than its own.
"""
import base64
import hashlib
import html
import json
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
DOCS = HERE.parent.parent / "docs"


def inline(markdown):
    """HTML of a cell: the marks that docs/log.md uses in one."""
    return re.sub("`(.*?)`", r"<code>\1</code>", html.escape(markdown.replace("\\|", "|")))


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


def digest(text):
    return base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()


def main():
    version, engine, output = sys.argv[1:]
    script, style = ((HERE / name).read_text() for name in ("page.js", "page.css"))
    picture = (DOCS / "decision.svg").read_text()
    pieces = {
        "VERSION": version,
        "SCRIPT": script,
        "SCRIPT_DIGEST": digest(script),
        "STYLE": style,
        "STYLE_DIGEST": digest(style),
        "EXAMPLE": html.escape((HERE / "example.log").read_text()),
        "ROWS": data(log_rows()),
        "PICTURE": picture[picture.index("<svg"):],
        "ENGINE": base64.b64encode(pathlib.Path(engine).read_bytes()).decode(),
    }
    page = re.sub("@([A-Z_]+)@", lambda name: pieces[name[1]], (HERE / "page.html").read_text())
    pathlib.Path(output).write_text(page)


main()
