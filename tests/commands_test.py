#!/usr/bin/python3
"""commands_test.py PROGRAM LIBRARY: the call, explain and inspect."""
import itertools
import re
import shutil

from support.program import (COMMON, ID, SOMEBODY, USER, ask, changes, expect, explain, paths, play, record, run,
                             trees, write)


def a_life(_):
    """From the first call on, each explanation foretells the call that follows it."""
    for verdict in ("new-machine", "same"):
        before = trees()
        status, told = explain()
        ask("inspect")
        expect("trace of a look", trees(), before)
        expect("verdict", (status, told["verdict"]), (0, verdict))
        expect("id without a trace", run("--no-store")[1].strip(), told["next"]["id"])
        expect("trace of --no-store", trees(), before)
        status, device_id, said = run()
        expect("foretold id", device_id.strip(), told["next"]["id"])
        stored = f"deviceid: stored {device_id.strip()} in {COMMON}/device.idv2\n"
        expect("what was stored", said, stored if verdict == "new-machine" else "")
    expect("another library", run("--library", paths["library"])[1], device_id)
    expect("files", ask("inspect")[0], 0)


def situations(_):
    """Status and verdict of states that a support engineer meets."""
    run()
    parts = [part["present"] for part in explain()[1]["parts"]]
    own = run()[1].strip()
    young, old = 3 * 86400, 11 * 86400
    for name, idv2, kept, wanted in (
            ("other parts, young", ID, record(ID, young, "a", "b"), (10, "will-change", ID)),
            ("other parts, old", ID, record(ID, old, "a", "b"), (10, "changes-now", own)),
            ("a random record", ID, record(ID, old, *parts, kind=1), (0, "not-compared", ID)),
            ("another id in the record", ID, record(own, old, *parts), (0, "not-compared", ID)),
            ("a record of zeros", ID, bytes(88), (0, "not-compared", ID)),
            ("a record without id", "", record(ID, young, *parts), (20, "no-id", None)),
            ("a line end behind the id", own + "\n", record(own, young, *parts),
             (20, "no-id", None)),
            ("a damaged version", own, b"\3\0\0\0x.y" + bytes(20), (20, "failed", None))):
        write(COMMON, idv2=idv2, record=kept)
        status, told = explain()
        expect(name, (status, told["verdict"]), wanted[:2])
        for words, account in itertools.product((["explain"], ["inspect"]), (0, SOMEBODY)):
            expect(f"{name}: changes by {words}", changes(*words, account=account) or [], [])
        for command, outcome in (((), told["next"]), (("--recheck",), told["recheck"])):
            write(COMMON, idv2=idv2, record=kept)
            status, device_id, _ = run(*command)
            expect(f"{name}: result of {command}", status, outcome["result"])
            expect(f"{name}: id of {command}", device_id.strip() or None, outcome["id"])
    expect("a change that is seen", changes() != [], True)


def flags(_):
    """Each flag does its own part of a call, alone and with the others."""
    run()
    write(COMMON, record=record(run()[1].strip(), 0, "a"))
    (COMMON / "hardware_ids.emulated").write_text("a\n")
    lines = {"SkipDateCheck": "Skipping date check.", "ForceRandomHid": "Generating random runtime hid",
             "UseEmulatedHardwareIds": "match of 1 hardware ids out of stored hw ids number of 1 and "}
    for chosen in (["SkipDateCheck"], ["ForceRandomHid"], ["forcerandomhid", "SkipDateCheck"],
                   ["UseEmulatedHardwareIds", "SkipDateCheck"]):
        log = run("--no-store", "--log", "--flags", ",".join(chosen))[2]
        for name, line in lines.items():
            wanted = name.lower() in map(str.lower, chosen)
            expect(f"{line!r} with {chosen}", line in log, wanted)


def accounts(_):
    """Root is told before it takes an id away."""
    run(account=SOMEBODY)
    write(USER, idv2=ID)
    before = trees()
    status, _, said = run()
    expect("an id that would be taken away", (status, ID in said, trees()), (75, True, before))
    expect("by another library", (run("--library", paths["library"])[0], trees()), (75, before))
    expect("with consent", run("--yes")[0], 0)
    expect("no rights", run("explain", "/root", account=SOMEBODY)[0], 77)


def bad_input(work):
    """One line on standard error, and a status of its own."""
    (work / "empty").mkdir()
    (work / "text").write_text("no log")
    with open(work / "large", "wb") as large:
        large.truncate(10 << 30)
    for status, *words in ((66, "explain", work / "none"), (65, "explain", work / "empty"),
                           (65, "explain", work / "text"), (65, "explain", work / "large"),
                           (66, "inspect", work / "none"), (65, "inspect", work / "empty"),
                           (66, "explain", "--against", work / "none"),
                           (2, "explain", "--format", "2"), (2, "explian"),
                           (2, "explain", "--format", "1.6", "--against", work),
                           (69, "--library", work / "none"), (69, "--library", work / "text")):
        seen, output, said = run(*map(str, words))
        expect(f"{words}", (seen, output), (status, ""))
        expect(f"complaint of {words}", bool(re.fullmatch("deviceid: [^\n]+\n", said)), True)
    for typed, meant in (("explian", '"explain"'), ("--fromat", '"--format"'), ("--jsno", '"--json"')):
        expect(f"suggestion for {typed}", meant in run(typed)[2], True)


def kept_copies_and_logs(work):
    """A copied folder and a host's log are explained without the machine."""
    run()
    shutil.copytree(COMMON, work / "kept")
    status, told = explain(str(work / "kept"))
    expect("a kept folder", (told["next"], told["parts"][0]["state"]), (None, "unknown"))
    expect("no difference", explain("--against", str(work / "kept"))[1]["against"], [])
    expect("files of a copy", ask("inspect", str(work / "kept"))[0], 0)
    (work / "log").write_text(run("--recheck", "--log")[2])
    status, told = explain(str(work / "log"))
    expect("a log", (status, told["verdict"]), (0, "same"))
    log = (work / "log").read_bytes()
    (work / "wide").write_bytes(log.decode().replace("\n", "\r\n").encode("utf-16"))
    expect("a log in UTF-16", explain(str(work / "wide"))[1], told)


play(a_life, situations, flags, accounts, bad_input, kept_copies_and_logs)
