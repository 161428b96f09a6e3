#!/usr/bin/env python3
"""Names each include of the library that breaks the order of its rooms.

The order stands in CONTRIBUTING.md, from the top floor down. An include points to a room further down
or stays in its own; nothing outside platform/ includes the files of one operating system; identity/
includes nothing of the platform; and only platform/ asks which operating system this is.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
OWN_HEADER_ROOMS = ("api", "values")  # what may see the header of the hosts


def fault(room, rooms, target):
    """What is wrong with an include, or nothing."""
    if target == "deviceid.h":
        return room not in OWN_HEADER_ROOMS and "the header of the hosts belongs to api/ and values/"
    wanted = target.split("/")[0]
    if wanted not in rooms:
        return "no room of that name"
    if rooms.index(wanted) < rooms.index(room):
        return f"{wanted}/ lies above {room}/"
    if wanted == "platform" and room == "identity":
        return "the decisions see nothing of the platform"
    return wanted == "platform" != room and target.count("/") > 1 and "that system's own file"


def main():
    floors = re.findall(r"^    src/(\w+)/ ", (ROOT / "CONTRIBUTING.md").read_text(), re.M)
    folders = {path.name for path in (ROOT / "src").iterdir() if path.is_dir()}
    faults = [f"CONTRIBUTING.md and src/ differ: {name}" for name in folders ^ set(floors)]
    for path in sorted((ROOT / "src").rglob("*.*")):
        if path.suffix not in (".h", ".cc"):
            continue
        name = path.relative_to(ROOT)
        room = name.parts[1]
        for number, line in enumerate(path.read_text().splitlines(), 1):
            include = re.match(r'#include "(.*)"', line)
            wrong = include and fault(room, floors, include[1])
            if re.search(r"\b_WIN[0-9]+\b", line) and room != "platform":
                wrong = "only platform/ asks which operating system this is"
            if wrong:
                faults.append(f"{name}:{number}: {line}: {wrong}")
    sys.exit("\n".join(faults) or 0)


main()
