#!/usr/bin/python3
"""repair_kills.py PROGRAM LIBRARY: kills each repair at each system call, or at each KILL_EVERYth one, and
lets those calls fail that write.

What a kill leaves is the state from before, the new one, or one from which `repair undo` brings back the
first: bytes, owners, rights and dates. It does so from the second and the third. After a failed call all is
as before, or the repair was made all the same, unless the repair says that it stopped halfway."""
import collections
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys

from support.program import (COMMON, HOME, ID, SOMEBODY, USER, clear, expect, paths, play, record, run,
                             trees, write)

WRITING = ("pwrite64", "write", "fsync", "ftruncate", "mkdir", "mkdirat", "unlink", "unlinkat", "rename", "fchown",
           "fchmod", "utimensat", "fsetxattr", "symlink")
EVERY = int(os.environ.get("KILL_EVERY", "1"))
READING = int(os.environ.get("KILL_READING", EVERY))  # Of the calls before the backup is begun.
SHIFT = random.randrange(READING)
STRACE = shutil.which("strace") or sys.exit(77)
AGE = 3 * 86400
BACKUPS = {0: pathlib.Path("/var/backups/deviceid"), SOMEBODY: HOME / ".local/state/deviceid/backups"}
OWN = {0: pathlib.Path("/root/.local/share/BrindleQuayWorks"), SOMEBODY: USER}


def folders(account):
    return COMMON, OWN[account]


def settle(account):
    """Owners, rights and dates that no repair would give by itself."""
    for number, folder in enumerate(folders(account)):
        for path in [*folder.glob("*"), folder] if folder.exists() else []:
            os.chown(path, *([SOMEBODY, 4242] if account == 0 else [account, account]), follow_symlinks=False)
            if not path.is_symlink():
                path.chmod(0o2750 if path.is_dir() else 0o640)
            os.utime(path, ns=(1_600_000_000_123_456_789, 1_500_000_000_987_654_321 + number), follow_symlinks=False)


def other_hardware(account):
    write(folders(account)[account != 0], idv2=ID, record=record(ID, AGE, "a", "b", "c"))


def record_alone(account):
    run()
    content = (COMMON / "hid_settings").read_bytes()
    shutil.rmtree(COMMON)
    write(folders(account)[account != 0], record=content.replace(content[11:51], ID.encode()))


def both_folders(account):
    write(OWN[account], idv2=ID, id="1" + ID[1:], record=record(ID, AGE, "a"))
    if account == 0:
        write(COMMON, idv2=ID, id=b"", record=b"\3\0\0")
        (COMMON / "note").symlink_to("nowhere")


def after_keep(account):
    other_hardware(account)
    settle(account)
    run("repair", "keep", ID, "--yes", "--backup", str(HOME / "kept"), account=account)


CASES = (("keep", 0, other_hardware, ID), ("keep", SOMEBODY, other_hardware, ID), ("keep", 0, None, ID),
         ("restore", 0, record_alone, None), ("restore", SOMEBODY, record_alone, None),
         ("anew", 0, both_folders, None), ("anew", SOMEBODY, both_folders, None),
         ("undo", 0, after_keep, str(HOME / "kept")), ("undo", SOMEBODY, after_keep, str(HOME / "kept")))


def prepare(account, make):
    """The state before."""
    clear()
    for backups in BACKUPS.values():
        shutil.rmtree(backups, ignore_errors=True)
    shutil.rmtree(OWN[0].parent, ignore_errors=True)
    HOME.chmod(0o755)
    (HOME / ".local/share").mkdir(parents=True)
    for path in (HOME / ".local/share", HOME / ".local"):
        os.chown(path, SOMEBODY, SOMEBODY)
    if make:
        make(account)
    if make is not after_keep:
        settle(account)
    return trees(*folders(account))


def gist(state):
    """A state without dates."""
    def undated(data):
        return data[:55] + data[63:] if isinstance(data, bytes) and len(data) > 63 else data
    return [(*entry[:4], undated(entry[6])) for entry in state]


def trace(words, account, *options):
    return subprocess.run([STRACE, "-f", "-o", "/dev/shm/trace" + str(account), *options, paths["program"], "repair",
                           *filter(None, words), "--yes"], user=account, group=account, extra_groups=[],
                          env={"HOME": "/root" if account == 0 else str(HOME), "LC_ALL": "C"},
                          capture_output=True, check=False).returncode


def judge(name, before, after, account, backups, counts):
    """What a kill has left, and that it can be taken back."""
    now = trees(*folders(account))
    kind = "before" if now == before else "after" if gist(now) == gist(after) else "between"
    complete = [place for place in backups if (place / "manifest.json").exists()]
    for place in backups:
        if place not in complete:
            status = run("repair", "undo", str(place), "--yes", account=account)[0]
            expect(f"{name}: undo of an incomplete backup", status, 65)
    if kind != "before" and not complete:  # Nothing may be changed before there is a backup.
        expect(f"{name}: a backup", "none", "one")
    elif complete:
        status, _, said = run("repair", "undo", str(complete[-1]), "--yes", account=account)
        expect(f"{name}: undo ({said})", (status, trees(*folders(account))), (0, before))
    counts[kind] += 1


def fail(name, words, account, make, calls):
    """Full disks and the like: each call that changes something fails once."""
    nth, statuses = collections.Counter(), collections.Counter()
    for call in calls:
        nth[call] += 1
        if call not in WRITING:
            continue
        state = prepare(account, make)
        status = trace(words, account, "-e", f"trace={call}", "-e", f"inject={call}:error=ENOSPC:when={nth[call]}")
        statuses[status] += 1
        what = f"{name}, {call} {nth[call]} fails"
        # The last line alone is written after the repair.
        if status not in (0, 73) and call != "write":
            expect(f"{what} with status {status}", trees(*folders(account)), state)
        judge(what, state, [], account, sorted(BACKUPS[account].glob("*")), collections.Counter())
    print(f"{name}: {sum(statuses.values())} failures; statuses {dict(statuses)}")


def sweep(word, account, make, argument):
    prepare(account, make)
    log = pathlib.Path(f"/dev/shm/trace{account}")
    name = f"{word} as {'root' if account == 0 else 'somebody'}{'' if make else ' on a new machine'}"
    expect(f"{name} without a kill", trace((word, argument), account), 0)
    after = trees(*folders(account))
    calls = re.findall(r"^\d+ +(\w+)\(", log.read_text(), re.MULTILINE)[1:]
    nth, counts = collections.Counter(), collections.Counter()
    for number, call in enumerate(calls):
        nth[call] += 1
        step = READING if "mkdir" not in nth else EVERY
        if number % step != SHIFT % step:
            continue
        state = prepare(account, make)
        trace((word, argument), account, "-e", f"trace={call}", "-e", f"inject={call}:signal=KILL:when={nth[call]}")
        judge(f"{name}, {call} {nth[call]}", state, after, account, sorted(BACKUPS[account].glob("*")), counts)
    print(f"{name}: {sum(counts.values())} kills at {len(calls)} system calls; left as before {counts['before']}, "
          f"as after {counts['after']}, between {counts['between']}", flush=True)
    if EVERY == 1 or word == "restore":
        fail(name, (word, argument), account, make, calls)


play(*[lambda _, case=case: sweep(*case) for case in CASES])
