#!/usr/bin/python3
"""Names each relative link in the pages whose file or heading does not exist."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def anchors(page):
    """The names by which the headings of a page can be linked."""
    headings = re.findall(r"^#+ (.*)$", page.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-") for heading in headings}


def broken_links(page):
    text = re.sub(r"```.*?```", "", page.read_text(), flags=re.DOTALL)
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if re.match(r"\w+:", target):
            continue
        name, _, anchor = target.partition("#")
        file = page.parent / name if name else page
        if not file.exists() or (anchor and anchor not in anchors(file)):
            yield target


def main():
    faults = [f"{page.relative_to(ROOT)}: there is no {target}"
              for page in [*ROOT.glob("*.md"), *ROOT.glob("*/**/*.md")]
              if "build" not in page.relative_to(ROOT).parts
              for target in broken_links(page)]
    print(*faults, sep="\n")
    sys.exit(bool(faults))


main()
