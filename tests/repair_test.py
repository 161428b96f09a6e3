#!/usr/bin/python3
"""repair_test.py PROGRAM LIBRARY: what repair mends, refuses and takes back."""
import json
import os
import pathlib
import re
import subprocess

import jsonschema

from support.program import (COMMON, DOCS, ID, SOMEBODY, USER, ask, clear, expect, explain, paths, play,
                             record, run, trees, write)

OWN = pathlib.Path("/root/.local/share/BrindleQuayWorks")
OTHER_ID = "2-0-fedcba98-7654-3210-fedc-ba9876543210"
YOUNG, OLD = 3 * 86400, 11 * 86400


def repair(*words, account=0):
    """Status and JSON of a repair that is to succeed."""
    status, answer = ask("repair", *words, account=account)
    jsonschema.validate(answer["explanation"], json.loads((DOCS / "explain.schema.json").read_text()))
    return status, answer


def stored():
    return trees(COMMON, OWN, USER)


def mends(_):
    """One repair each, and undo gives the same bytes, owners, rights and dates."""
    run()
    told = explain()[1]
    own, parts = told["id"], [part["present"] for part in told["parts"]]
    fatal = b"\3\0\0\0x.y" + bytes(20)
    for name, files, words, wanted in (
            ("parts changed", {"idv2": ID, "record": record(ID, YOUNG, "a", "b")}, ["keep", ID], ID),
            ("and a new id", {"idv2": own, "record": record(own, OLD, *parts)}, ["keep", ID], ID),
            ("no record", {"idv2": ID}, ["keep", "1-6" + ID[3:]], ID),
            ("a damaged id before an older one", {"idv2": ID + "\n", "id": OTHER_ID, "record": record(ID, OLD, *parts)},
             ["restore"], ID),
            ("no id", {"record": record(ID, YOUNG, *parts)}, ["restore"], ID),
            ("a random record", {"idv2": ID, "record": record(ID, OLD, *parts, kind=1)}, ["keep", ID], ID),
            ("a fatal record", {"idv2": ID, "record": fatal}, ["keep", ID], ID),
            ("nothing of use", {"idv2": ID, "id": ID, "record": fatal}, ["anew"], own),
            ("a new machine", {}, ["keep", ID], ID)):
        clear()
        if files:
            write(COMMON, **files)
            (COMMON / "link").symlink_to("nowhere")
            os.chown(COMMON / "link", 7, 7, follow_symlinks=False)
        for number, path in enumerate(COMMON.glob("*[!k]")):
            os.chown(path, 1000, 4242)
            os.utime(path, ns=(number, 1_234_567_890_123_456_789 + number))
            path.chmod(0o1640)
            os.setxattr(path, "user.note", b"\0kept")
        before, untouched = stored(), trees()
        expect(f"{name}: --dry-run", (repair(*words, "--dry-run")[0], trees()), (0, untouched))
        status, answer = repair(*words, "--yes")
        expect(name, (status, answer["call"]["id"], run("--recheck")[1].strip()), (0, wanted, wanted))
        expect(f"{name}: verdict", explain()[1]["verdict"], "same")
        status, undone = repair("undo", answer["backup"], "--yes")
        expect(f"{name}: undo", (status, undone["call"], stored()), (0, None, before))
        for path in COMMON.glob("*[!k]"):
            expect(f"{name}: attributes of {path}", os.getxattr(path, "user.note"), b"\0kept")


def accounts(_):
    """Whose id it is, and who may change it."""
    run(account=SOMEBODY)
    write(USER, idv2=ID)
    write(OWN, idv2=OTHER_ID)
    before = trees()
    status, _, said = run("repair", "keep", OTHER_ID)
    expect("an id that another account loses", (status, ID in said, trees()), (75, True, before))
    status, answer = repair("keep", OTHER_ID, "--yes")
    expect("with consent", (status, [lost["id"] for lost in answer["taken"]]), (0, [ID]))
    expect("different ids in both folders", (run()[1].strip(), (OWN / "device.idv2").exists()), (OTHER_ID, False))
    expect("the id of root", run("repair", "keep", ID, "--yes", account=SOMEBODY)[0], 77)
    expect("a backup of root", run("repair", "undo", answer["backup"], "--yes", account=SOMEBODY)[0], 77)
    COMMON.chmod(0o777)
    (COMMON / "device.idv2").chmod(0o666)
    before = trees(COMMON)
    status, _, said = run("repair", "anew", "--yes", account=SOMEBODY)
    expect("files of root", (status, "belongs to root" in said, trees(COMMON)), (77, True, before))


def refusals(work):
    """One line, a status of its own, and nothing is changed."""
    run()
    own = run()[1].strip()
    parts = [part["present"] for part in explain()[1]["parts"]]
    backup = repair("keep", ID, "--yes", "--backup", str(work / "kept"))[1]["backup"]
    expect("a chosen place", backup, str(work / "kept"))
    (work / "cut").mkdir()
    (work / "cut/common").mkdir()
    subprocess.run(["cp", "-a", work / "kept", work / "forged"], check=True)
    (work / "forged/common/device.idv2").write_text(OTHER_ID)
    (work / "full").mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=4k", "tmpfs", work / "full"], check=True)
    record_of = {"idv2": ID, "record": record(ID, YOUNG, *parts)}
    for status, files, *words in (
            (76, record_of, "restore"), (76, {"idv2": OTHER_ID}, "restore"), (76, record_of, "keep", ID),
            (76, {"idv2": b"", "record": record(ID, OLD, "a")}, "restore"),
            (2, record_of, "keep", "2-0-0123"), (2, record_of, "keep", "9-9" + ID[3:]), (2, record_of, "keep"),
            (2, record_of, "resotre"), (2, record_of, "anew", ID), (66, record_of, "undo", work / "none"),
            (65, record_of, "undo", work), (65, record_of, "undo", work / "cut"),
            (65, record_of, "undo", work / "forged"), (74, record_of, "anew", "--backup", work / "full/here"),
            (76, record_of, "anew", "--backup", work / "kept"), (76, record_of, "anew", "--backup", COMMON / "here")):
        write(COMMON, **files)
        before = trees()
        seen, output, said = run("repair", *map(str, words), "--yes")
        expect(f"{words}", (seen, output, trees() == before), (status, output * (seen == 74), True))
        expect(f"complaint of {words}", bool(re.fullmatch("deviceid: [^\n]+\n", said)), True)
    expect("leftovers on a full disk", list((work / "full").iterdir()), [])
    subprocess.run(["umount", work / "full"], check=True)
    for name, make in (("device.idv2", lambda path: path.symlink_to("device.id")),
                       ("hid_settings", pathlib.Path.mkdir)):
        clear()
        write(COMMON, idv2=own, record=b"")
        (COMMON / name).unlink()
        make(COMMON / name)
        before = trees()
        status, _, said = run("repair", "keep", ID, "--yes")
        expect(f"something else for {name}", (status, name in said, trees()), (76, True, before))


class Asked:
    """A repair that waits for an answer on its terminal."""

    def __init__(self, *words):
        self.terminal, end = os.openpty()
        self.process = subprocess.Popen([paths["program"], "repair", *words], stdin=end, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL)
        os.close(end)
        seen = b""
        while b"[y/N]" not in seen and self.process.poll() is None:
            seen += os.read(self.process.stdout.fileno(), 4096)

    def answer(self, text):
        os.write(self.terminal, text)
        output = self.process.communicate()[0].decode()
        os.close(self.terminal)
        return self.process.returncode, output


def company(_):
    """Another repair, a host that stores meanwhile, and one that calls all the time."""
    run()
    before = trees()
    asked = Asked("keep", ID)
    expect("a second repair", run("repair", "anew", "--yes")[0], 72)
    expect("no", (asked.answer(b"\n")[0], trees()), (75, before))
    asked = Asked("keep", ID)
    write(COMMON, idv2=OTHER_ID)
    expect("changed meanwhile", asked.answer(b"y\n")[0], 72)
    status, output = Asked("keep", ID).answer(b"y\n")
    expect("yes", (status, pathlib.Path(output.splitlines()[-1], "manifest.json").exists()), (0, True))
    host = subprocess.Popen(["sh", "-c", 'while "$0"; do :; done', paths["program"]], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL)
    for device_id in (OTHER_ID, ID) * 10:
        expect("beside a host", run("repair", "keep", device_id, "--yes")[0], 0)
    host.terminate()
    expect("ids of the host", set(host.stdout.read().decode().split()) - {ID, OTHER_ID}, set())


play(mends, accounts, refusals, company)
