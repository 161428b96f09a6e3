#!/usr/bin/env python3
"""Plays the stories that need nothing but files and flags with the real DLL, each on a fresh PC.

stories_test.py BUILD_DIR; exits 77 where no Wine can run.
"""
import os
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
WINE = HERE / "wine_root.sh"
BODIES = {  # By md5sum of the joined ids, and two that are nobody's.
    "H": "e605da79-8246-9201-b359-b533fafc9984",
    "S": "0d279e0a-c3c2-393f-256c-e20d6ff74d62",
    "O": "aaa6afe7-bb68-078b-d0c4-b70e6d9f4a72",
}
IDS = ["1234abcd", "pf0xyz", "board7", "00:1a:2b:c3:d4:0f"]
DMI = "/sys/class/dmi/id/"
PC = ["--serial", "1234ABCD", "--file", DMI + "product_serial", "PF0XYZ", "--file",
      DMI + "board_serial", "BOARD7", "--nic", IDS[3]]
FLAGS = {"0": [], "1": ["--flags", "SkipDateCheck"], "2": ["--flags", "ForceRandomHid"],
         "4": ["--flags", "UseEmulatedHardwareIds"]}


def text(value):
    return struct.pack("<I", len(value)) + value.encode()


def record(notation, present, random=""):
    """The bytes of a record before its date, the date, and those behind it."""
    age, same, kind, body, *version = notation.split(",")
    ids = [] if same == "0" else ["other"] * (4 - int(same)) + IDS[4 - int(same):]
    head = text((version or ["2.0"])[0]) + text("2-0-" + BODIES.get(body, random))
    tail = struct.pack("<I", len(ids)) + b"".join(map(text, ids))
    return head + struct.pack("<i", int(kind)), present - int(age), tail


def read(path):
    return path.read_bytes() if path.exists() else b""


def prepare(folder, file, before, present):
    if file == before == "-":
        return
    folder.mkdir(parents=True)
    for part in file.replace("-", "").split("+"):
        name = {"v2": "device.idv2", "v1": "device.id", "bad": "device.idv2"}.get(part)
        if name:
            (folder / name).write_text("1-6-" + ("no id" if part == "bad" else BODIES["S"]))
    if before != "-":
        head, date, tail = record(before, present)
        (folder / "hid_settings").write_bytes(head + struct.pack("<q", date) + tail)


def play(build, work, story):
    name, file, before, flags, _, wanted, after, *_ = story
    present = int(time.time())
    prepare(work / "before/ProgramData/BrindleQuayWorks", file, before, present)
    for folder in "before", "after":
        (work / folder).mkdir(exist_ok=True)
    call = subprocess.run(
        [WINE, "run", *PC, "--before", work / "before", "--after", work / "after",
         f"{build}/deviceid.exe", "--format", "2.0", "--log", *FLAGS[flags]],
        capture_output=True, text=True)
    id = call.stdout.strip()
    left = work / "after/ProgramData/BrindleQuayWorks"
    faults = []
    if call.returncode != (4 if wanted == "-" else 0):
        faults.append(f"status {call.returncode}")
    if wanted != "-" and id != "2-0-" + BODIES.get(wanted, id[4:]):
        faults.append(f"id {id}")
    if wanted != "-" and read(left / "device.idv2").decode() != "1-6-" + id[4:]:
        faults.append(f"device.idv2 {read(left / 'device.idv2')}")
    stored = read(left / "hid_settings")
    if after != "-":
        head, date, tail = record(after, present, id[4:])
        written = int.from_bytes(stored[len(head):][:8], "little")
        if stored != head + struct.pack("<q", written) + tail:
            faults.append(f"record {stored}")
        if not (written == date if after == before else 0 <= written - date < 600):
            faults.append(f"written {written - date} seconds too late")
    elif stored:
        faults.append(f"record {stored}")
    return [f"{name}: {', '.join(faults)}\n{call.stderr}"] if faults else []


def main():
    if subprocess.run([WINE, "why-not"]).returncode:
        return 1 if os.environ.get("DEVICEID_REQUIRE_WINDOWS") == "1" else 77
    rows = [line.split() for line in (HERE.parent / "stories.txt").read_text().splitlines()]
    stories = [row for row in rows if row[0] != "#" and row[4] == "ok"]
    faults = []
    for story in stories:
        with tempfile.TemporaryDirectory() as work:
            faults += play(sys.argv[1], Path(work), story)
    print(f"{len(stories)} stories played", *faults, sep="\n")
    return 1 if faults or len(stories) < 15 else 0


sys.exit(main())
