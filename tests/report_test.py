#!/usr/bin/python3
"""report_test.py PROGRAM LIBRARY: case files, and what is left of a machine in a redacted one."""
import base64
import json
import os
import pathlib
import re
import socket
import subprocess

import jsonschema

from support.made_up_pc import ADDRESS, leave_host, mount, new_pc, set_serials
from support.program import COMMON, DOCS, HOME, ID, SOMEBODY, USER, expect, explain, paths, play, record, run, write

PRODUCT, BOARD, HOST = "PF0XYZ-4711/0815", "L1HF8BK00ABC", "accounting-pc-17"
OTHER_ID = ID.replace("0123", "3210")


def report(*words, account=0, home="/root"):
    done = subprocess.run([paths["program"], "report", *map(str, words)], user=account, group=account,
                          extra_groups=[], env={"HOME": home}, capture_output=True, check=False)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def folded(text):
    return re.sub("[^0-9a-z]", "", text.lower())


def left_over(text, values):
    """The pieces of `values`, in any spelling, that are in `text`."""
    texts = (text.lower(), folded(text))
    for value in values:
        pairs = "".join(re.findall("..", folded(value))[::-1])
        for spelled in (value.lower(), value.lower()[::-1], folded(value), folded(value)[::-1], pairs):
            pieces = {spelled[i:i + 8] for i in range(len(spelled) - 7)} | {spelled}
            yield from (piece for piece in pieces if any(piece in text for text in texts))


def states(own):
    parts = [part["present"] for part in explain()[1]["parts"]]
    good = (COMMON / "hid_settings").read_bytes()
    old = 11 * 86400
    return {"good": (own, good), "other parts": (own, record(own, old, "a7x", "b", "c")),
            "a part more": (own, record(own, old, *parts, "some-serial-9")),
            "respelled": (own, record(own, old, *(part.replace("-", "") for part in parts))),
            "a line end": (own + "\n", good), "no record": (own, b""), "no id": ("", good),
            "an id of another": (OTHER_ID, good), "zeros": (own, bytes(80)), "cut": (own, good[:60]),
            "fatal": (own, b"\x10\0\0\0" + PRODUCT.encode() + bytes(20))}


def redaction(work):
    """Nothing is left of a machine, and its explanation stays."""
    socket.sethostname(HOST)
    new_pc(work, PRODUCT, BOARD)
    write(USER, idv2=OTHER_ID)
    own = run()[1].strip()
    home = "/home/janet.malone-smith"
    values = [PRODUCT, BOARD, ADDRESS, HOST, own[4:], OTHER_ID[4:], "somebody", "janet.malone-smith"]
    dump = base64.b64encode(BOARD.encode()).decode()
    for name, (idv2, kept) in states(own).items():
        write(COMMON, idv2=idv2, record=kept)
        log = run("--no-store", "--log", "--recheck")[2]
        log = log[:log.rfind("deviceid: ")] if "deviceid: " in log else log
        lines = f"host: {BOARD} {dump}\n{log}our own line: {own} {dump}\n{BOARD.encode().hex()} {HOST[::-1]}"
        (work / "log").write_text(lines)
        for account in (0, SOMEBODY):
            status, text, said = report("--redact", "--log", work / "log", account=account, home=home)
            expect(f"{name}: status", (status, said), (0, ""))
            case = json.loads(text)
            for part in ("report", "explain", "inspect", "doctor"):
                schema = json.loads((DOCS / f"{part}.schema.json").read_text())
                jsonschema.validate(case if part == "report" else case[part], schema)
            found = sorted(set(left_over(text, values + [dump, BOARD.encode().hex()])))
            expect(f"{name}, {account}: left over", found, [])
            (work / "case").write_text(text)
            seen, told = explain(str(work / "case"))
            wanted, truth = explain(account=account)
            for member in ("verdict", "situation", "agree", "compared", "changes_left"):
                expect(f"{name}: {member}", told[member], truth[member])
            expect(f"{name}: states", [p["state"] for p in told["parts"]], [p["state"] for p in truth["parts"]])
            expect(f"{name}: exit status", seen, wanted)
        (work / "shared").write_text(report("--redact", "--log", work / "log", "--log-only")[1])
        for cut in (None, -1, len(log) // 2, len(log) // 3):
            (work / "log").write_text(log[:cut])
            short = report("--redact", "--log", work / "log", "--log-only", work / "shared")
            expect(f"{name}: redacted log", short, (0, "", ""))
            (seen, told), (wanted, truth) = explain(str(work / "shared")), explain(str(work / "log"))
            for member in ("verdict", "situation", "agree", "compared"):
                expect(f"{name}: {member} of a log cut at {cut}", told[member], truth[member])
            expect(f"{name}: exit status of a log cut at {cut}", seen, wanted)


def equality(work):
    """Equal values have equal digests: in a report, and in all reports of one key."""
    new_pc(work)
    (work / "key").write_bytes(os.urandom(32))
    ids = set()
    for words in (("--redact-key", work / "key"), ("--redact-key", work / "key"), ()):
        (work / "log").write_text(run("--no-store", "--log", "--recheck")[2])
        case = json.loads(report("--redact", "--log", work / "log", *words)[1])
        ids.add(case["explain"]["id"])
        expect("one id", case["explain"]["id"][4:] in case["log"], True)
        expect("the form of an id", bool(re.fullmatch(r"2-0-\w{8}(-\w{4}){3}-\w{12}", case["explain"]["id"])), True)
    expect("keys", len(ids), 2)
    set_serials(board="Default string")
    expect("a placeholder", "default string" in report("--redact")[1], True)


def bad_input(work):
    """One clear line, and nothing is lost."""
    new_pc(work)
    good = report()[1]
    mount("-t", "tmpfs", "-o", "size=4k", "tmpfs", HOME)
    kept = HOME / "case"
    kept.write_text("kept")
    files = {"cut": good[:len(good) // 2], "schema": good.replace('"schema": 1', '"schema": 2'), "short": "key",
             "member": good.replace('"parts"', '"pieces"'), "verdict": good.replace('"same"', '"odd"'),
             "other": '{"command": "doctor"}', "bytes": '{"command": "\xff\0'}
    for name, text in files.items():
        (work / name).write_text(text)
    with open(work / "large", "wb") as large:
        large.truncate(100 << 20)
    link = work / "link"
    link.symlink_to(COMMON)
    for status, *words in (
            *((65, "explain", work / name) for name in files), (65, "explain", work / "large"),
            (65, "report", "--log", work / "large"), (66, "report", "--log", work / "none"),
            (65, "report", "--redact", "--redact-key", work / "short"), (2, "report", "--log-only"),
            (2, "report", "--redact-key", work / "short"), (2, "report", COMMON / "case"),
            (2, "report", link / "case"), (2, "report", work), (74, "report", kept),
            (74, "report", work / "none" / "case"), (74, "report", "/dev/full")):
        seen, output, said = run(*map(str, words))
        expect(f"{words}", (seen, output), (status, ""))
        expect(f"complaint of {words}", bool(re.fullmatch("deviceid: [^\n]+\n", said)), True)
    expect("after a full disk", [(file.name, file.read_text()) for file in kept.parent.iterdir()],
           [("case", "kept")])
    subprocess.run(["umount", HOME], check=True)
    expect("a new file", report(work / "shared")[0], 0)
    expect("its rights", pathlib.Path(work / "shared").stat().st_mode & 0o777, 0o600)
    expect("beside it", [file.name for file in work.iterdir() if "shared." in file.name], [])


leave_host()
play(lambda work: (redaction(work), equality(work), bad_input(work)))
