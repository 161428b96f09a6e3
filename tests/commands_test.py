#!/usr/bin/python3
"""commands_test.py PROGRAM LIBRARY: the commands of the program on state folders of their own, as root
and as an ordinary account. Needs root, and mounts that nobody else sees; exits 77 without."""
import hashlib
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import time

import jsonschema

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
COMMON = pathlib.Path("/var/lib/BrindleQuayWorks")
HOME = pathlib.Path("/mnt/home")
SOMEBODY = 65534
USER = HOME / ".local/share/BrindleQuayWorks"
ID = "2-0-01234567-89ab-cdef-0123-456789abcdef"
faults = []


def run(*words, account=0, text=None):
    """Status, standard output and standard error."""
    done = subprocess.run([PROGRAM, *words], user=account, group=account, extra_groups=[], input=text,
                          env={"HOME": str(HOME if account else "/root"), "LC_ALL": "C"},
                          capture_output=True, check=False)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def expect(what, seen, wanted):
    if seen != wanted:
        faults.append(f"{what}: {seen!r} instead of {wanted!r}")


def explain(*words, account=0):
    status, output, complaint = run("explain", "--json", *words, account=account)
    expect(f"complaint of explain {words}", complaint, "")
    explanation = json.loads(output)
    jsonschema.validate(explanation, json.loads((DOCS / "explain.schema.json").read_text()))
    return status, explanation


def inspect(*words):
    status, output, _ = run("inspect", "--json", *words)
    report = json.loads(output)
    jsonschema.validate(report, json.loads((DOCS / "inspect.schema.json").read_text()))
    return status, report


def clear():
    for folder in (COMMON, HOME):
        shutil.rmtree(folder, ignore_errors=True)
    HOME.mkdir()
    os.chown(HOME, SOMEBODY, SOMEBODY)


def record(device_id, age, *parts, kind=0):
    texts = ["2.0", device_id]
    head = b"".join(struct.pack("<i", len(text)) + text.encode() for text in texts)
    body = b"".join(struct.pack("<i", len(part)) + part.encode() for part in parts)
    return head + struct.pack("<iqi", kind, int(time.time()) - age, len(parts)) + body


def write(folder, **files):
    folder.mkdir(parents=True, exist_ok=True)
    for name, content in files.items():
        name = {"idv2": "device.idv2", "id": "device.id", "record": "hid_settings"}[name]
        (folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())


def trees():
    """All names, bytes, rights, owners and dates."""
    state = []
    for root in ("/var/lib", "/mnt"):
        for path in sorted(pathlib.Path(root).rglob("*")):
            status = path.lstat()
            data = hashlib.sha256(path.read_bytes()).hexdigest() if path.is_file() else ""
            state.append((str(path), status.st_mode, status.st_uid, status.st_mtime_ns,
                          status.st_ctime_ns, data))
    return state


def a_life():
    """From the first call on, each explanation foretells the call that follows it."""
    clear()
    for verdict in ("new-machine", "same"):
        before = trees()
        status, told = explain()
        inspect()
        expect("trace of a look", trees(), before)
        expect("verdict", (status, told["verdict"]), (0, verdict))
        expect("id without a trace", run("--no-store")[1].strip(), told["next"]["id"])
        expect("trace of --no-store", trees(), before)
        status, device_id, said = run()
        expect("foretold id", device_id.strip(), told["next"]["id"])
        stored = f"deviceid: stored {device_id.strip()} in {COMMON}/device.idv2\n"
        expect("what was stored", said, stored if verdict == "new-machine" else "")
    expect("another library", run("--library", LIBRARY)[1], device_id)
    expect("files", inspect()[0], 0)


def situations():
    """Status and verdict of states that a support engineer meets."""
    clear()
    run()
    parts = [part["present"] for part in explain()[1]["parts"]]
    own = run()[1].strip()
    young, old = 3 * 86400, 11 * 86400
    for name, idv2, kept, wanted in (
            ("other parts, young", ID, record(ID, young, "a", "b"), (10, "will-change", ID)),
            ("other parts, old", ID, record(ID, old, "a", "b"), (10, "changes-now", own)),
            ("a random record", ID, record(ID, old, *parts, kind=1), (0, "not-compared", ID)),
            ("another id in the record", ID, record(own, old, *parts), (0, "not-compared", ID)),
            ("a record without id", "", record(ID, young, *parts), (20, "no-id", None)),
            ("a line end behind the id", own + "\n", record(own, young, *parts),
             (20, "no-id", None)),
            ("a damaged version", own, b"\3\0\0\0x.y" + bytes(20), (20, "failed", None))):
        write(COMMON, idv2=idv2, record=kept)
        status, told = explain()
        expect(name, (status, told["verdict"]), wanted[:2])
        for command, outcome in (((), told["next"]), (("--recheck",), told["recheck"])):
            write(COMMON, idv2=idv2, record=kept)
            status, device_id, _ = run(*command)
            expect(f"{name}: result of {command}", status, outcome["result"])
            expect(f"{name}: id of {command}", device_id.strip() or None, outcome["id"])


def flags():
    """Each flag does its own part of a call, alone and with the others."""
    clear()
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


def accounts():
    """Root is told before it takes an id away."""
    clear()
    own = run(account=SOMEBODY)[1].strip()
    write(USER, idv2=ID)
    before = trees()
    status, _, said = run()
    expect("an id that would be taken away", (status, ID in said, trees()), (75, True, before))
    expect("with consent", run("--yes")[0], 0)
    expect("no rights", run("explain", "/root", account=SOMEBODY)[0], 77)
    return own


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
                           (69, "--library", work / "none"), (69, "--library", work / "text")):
        seen, output, said = run(*map(str, words))
        expect(f"{words}", (seen, output), (status, ""))
        expect(f"complaint of {words}", bool(re.fullmatch("deviceid: [^\n]+\n", said)), True)
    for typed, meant in (("explian", '"explain"'), ("--fromat", '"--format"'), ("--jsno", '"--json"')):
        expect(f"suggestion for {typed}", meant in run(typed)[2], True)


def kept_copies_and_logs(work):
    """A copied folder and a host's log are explained without the machine."""
    clear()
    run()
    shutil.copytree(COMMON, work / "kept")
    status, told = explain(str(work / "kept"))
    expect("a kept folder", (told["next"], told["parts"][0]["state"]), (None, "unknown"))
    expect("no difference", explain("--against", str(work / "kept"))[1]["against"], [])
    expect("files of a copy", inspect(str(work / "kept"))[0], 0)
    (work / "log").write_text(run("--recheck", "--log")[2])
    status, told = explain(str(work / "log"))
    expect("a log", (status, told["verdict"]), (0, "same"))
    log = (work / "log").read_bytes()
    (work / "wide").write_bytes(log.decode().replace("\n", "\r\n").encode("utf-16"))
    expect("a log in UTF-16", explain(str(work / "wide"))[1], told)
    (work / "large").unlink()


def main():
    if os.geteuid() != 0:
        print("only root can mount state folders")
        sys.exit(77)
    if sys.argv[3:] != ["inside"]:
        os.execvp("unshare", ["unshare", "--mount", __file__, *sys.argv[1:3], "inside"])
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", "/var/lib"], check=True)
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", "/mnt"], check=True)
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=700", "tmpfs", "/root"], check=True)
    # The one other account that has a folder of its own.
    passwd = pathlib.Path("/mnt/passwd")
    passwd.write_text(f"root:x:0:0::/root:/bin/sh\nsomebody:x:{SOMEBODY}:{SOMEBODY}::{HOME}:/bin/sh\n")
    subprocess.run(["mount", "--bind", passwd, "/etc/passwd"], check=True)
    with tempfile.TemporaryDirectory() as work:
        os.chmod(work, 0o755)
        for name, source in (("deviceid", sys.argv[1]), ("library.so", sys.argv[2])):
            shutil.copy(source, work)
        globals().update(PROGRAM=f"{work}/{pathlib.Path(sys.argv[1]).name}",
                         LIBRARY=f"{work}/{pathlib.Path(sys.argv[2]).name}")
        a_life()
        situations()
        flags()
        accounts()
        bad_input(pathlib.Path(work))
        kept_copies_and_logs(pathlib.Path(work))
    print(*faults, sep="\n")
    sys.exit(bool(faults))


main()
