#!/usr/bin/python3
"""doctor_test.py PROGRAM LIBRARY: what is found on a healthy machine and on ill ones."""
import os
import pathlib
import shutil
import subprocess

from support.made_up_pc import leave_host, mount, new_pc, set_serials
from support.program import (COMMON, HOME, ID, SOMEBODY, USER, ask, explain, expect, play, record, run, trees,
                             write)

OTHER_ID = ID.replace("0123", "3210")
ROOTS = pathlib.Path("/root/.local/share/BrindleQuayWorks")
DMI = "/sys/class/dmi/id"
OLD = COMMON.parent / "Fennel"


def found(account=0):
    status, told = ask("doctor", account=account)
    ills = sorted((f["level"], f["code"]) for f in told["findings"] if f["level"] != "ok")
    expect("remedies", all(f["remedy"] for f in told["findings"] if f["level"] != "ok"), True)
    return status, ills


def healthy(work):
    new_pc(work)
    before = trees()
    for account in (0, SOMEBODY):
        expect(f"a healthy machine, {account}", found(account), (0, []))
    expect("traces", trees(), before)
    shutil.rmtree(COMMON)
    expect("a new machine", found(), (0, []))
    run()
    text = run("doctor")[1]
    expect("lines", all(line.startswith("OK ") for line in text.splitlines()), True)


def link(name):
    (COMMON / name).rename("/var/lib/elsewhere")
    (COMMON / name).symlink_to("/var/lib/elsewhere")


def fifo():
    (COMMON / "device.idv2").unlink()
    os.mkfifo(COMMON / "device.idv2")


def foreign_link():
    link("device.idv2")
    os.chown(COMMON / "device.idv2", SOMEBODY, SOMEBODY, follow_symlinks=False)


def carried_over_halfway():
    shutil.rmtree(COMMON)
    write(COMMON)
    write(OLD, id="1-6" + ID[3:])


def linked_folder():
    COMMON.rename("/var/lib/elsewhere")
    COMMON.symlink_to("/var/lib/elsewhere")


def on_memory(options=""):
    mount("-t", "tmpfs", "-o", "mode=755" + options, "tmpfs", COMMON)


def full():
    on_memory(",size=64k")
    try:
        (COMMON / "rest").write_bytes(bytes(1 << 20))
    except OSError:
        pass


def in_container():
    mount("-t", "tmpfs", "tmpfs", "/run")
    open("/run/.containerenv", "w", encoding="ascii").close()
    for folder in ("upper", "work"):
        os.makedirs(f"/var/lib/{folder}")
    mount("-t", "overlay", "-o", f"lowerdir={COMMON},upperdir=/var/lib/upper,workdir=/var/lib/work",
          "overlay", COMMON)


def one_part():
    shutil.rmtree(DMI)
    if any(part["name"] == "volume" for part in explain()[1]["parts"]):
        shutil.rmtree("/sys/class/net/eth0")
    shutil.rmtree(COMMON)
    run()


def placeholder():
    set_serials(board="Default string")
    shutil.rmtree(COMMON)
    run()


def ills(work):
    """Each is told by its own code, and nothing else is."""
    day, young = 86400, 3 * 86400
    new_pc(work)
    own = run()[1].strip()
    parts = [part["present"] for part in explain()[1]["parts"]]
    write(COMMON, record=record(own, young, *parts))
    good = (COMMON / "hid_settings").read_bytes()
    fail, warn = "fail", "warn"
    for name, codes, prepare in (
            ("an editor's line end", [(fail, "line-end"), (fail, "record-without-id")],
             lambda: write(COMMON, idv2=own + "\n")),
            ("an id file of zeros", [(fail, "damaged-id"), (fail, "record-without-id")],
             lambda: write(COMMON, idv2=bytes(40))),
            ("a record of zeros", [(warn, "zero-record")], lambda: write(COMMON, record=bytes(len(good)))),
            ("a cut record", [(warn, "damaged-record"), (warn, "id-without-record")],
             lambda: write(COMMON, record=good[:50])),
            ("a record that fails calls", [(fail, "fatal-record")],
             lambda: write(COMMON, record=b"\3\0\0\0x.y" + bytes(20))),
            ("a record without id", [(fail, "record-without-id")], (COMMON / "device.idv2").unlink),
            ("an id without record", [(warn, "id-without-record")], (COMMON / "hid_settings").unlink),
            ("different ids", [(warn, "different-ids")],
             lambda: write(ROOTS, idv2=OTHER_ID)),
            ("a random id", [(warn, "random-id")],
             lambda: write(COMMON, record=record(own, young, *parts, kind=1))),
            ("another id in the record", [(warn, "other-record")],
             lambda: write(COMMON, record=record(OTHER_ID, young, *parts))),
            ("a clock set back", [(warn, "future-record")],
             lambda: write(COMMON, record=record(own, -day, *parts))),
            ("two changed parts", [(warn, "changing-id")], lambda: set_serials(product="New", board="Parts")),
            ("parts with a placeholder", [(warn, "shared-part")], placeholder),
            ("one part", [(warn, "one-part")], one_part),
            ("a file for everybody", [(warn, "file-open-to-others")],
             lambda: (COMMON / "device.idv2").chmod(0o666)),
            ("a file of another account", [(warn, "file-open-to-others")],
             lambda: os.chown(COMMON / "hid_settings", SOMEBODY, SOMEBODY)),
            ("a folder for everybody", [(warn, "folder-open-to-others")], lambda: COMMON.chmod(0o777)),
            ("a link", [(warn, "linked-file")], lambda: link("hid_settings")),
            ("another account's link", [(fail, "record-without-id"), (fail, "unreadable-file")], foreign_link),
            ("a pipe", [(fail, "record-without-id"), (fail, "unreadable-file")], fifo),
            ("a linked folder", [(warn, "linked-folder")], linked_folder),
            ("half carried over", [(warn, "not-carried-over")], carried_over_halfway),
            ("another account's id", [(warn, "other-id")], lambda: write(USER, idv2=OTHER_ID)),
            ("a folder in memory", [(warn, "passing-folder")], on_memory),
            ("a full disk", [(fail, "full-disk"), (warn, "passing-folder")], full),
            ("a read-only disk", [(warn, "passing-folder"), (warn, "read-only")],
             lambda: on_memory(",ro")),
            ("a container", [(warn, "passing-folder")], in_container)):
        new_pc(work)
        write(COMMON, idv2=own, record=good)
        prepare()
        status = 20 if fail in dict(codes) else 10
        expect(name, found(), (status, sorted(codes)))
        if os.path.ismount(COMMON):
            subprocess.run(["umount", COMMON], check=True)
    new_pc(work)
    shutil.rmtree(COMMON)
    HOME.chmod(0o555)
    expect("nowhere to store", found(SOMEBODY), (20, [(fail, "nowhere-to-store")]))


leave_host()
play(lambda work: (healthy(work), ills(work)))
