"""The program on state folders of its own, as root and as an ordinary account, for tests in Python.

A test is called with the PROGRAM and the shared LIBRARY and hands its cases to play(). It needs root, and
mounts that nobody else sees; it exits 77 without."""
import functools
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

DOCS = pathlib.Path(__file__).resolve().parent.parent.parent / "docs"
COMMON = pathlib.Path("/var/lib/BrindleQuayWorks")
HOME = pathlib.Path("/mnt/home")
SOMEBODY = 65534
USER = HOME / ".local/share/BrindleQuayWorks"
ID = "2-0-01234567-89ab-cdef-0123-456789abcdef"
faults = []
paths = {}


CHANGING = ("creat|unlink|unlinkat|mkdir|mkdirat|rmdir|rename|renameat|renameat2|chmod|fchmod|fchmodat|chown|fchown|"
            "lchown|fchownat|utime|utimes|futimesat|utimensat|truncate|ftruncate|link|linkat|symlink|symlinkat|"
            "mknod|mknodat|setxattr|fsetxattr|flock")
TRACED = ["strace", "-f", "-qq", "-e", "trace=open,openat,openat2,fcntl," + CHANGING.replace("|", ",")]


def run(*words, account=0, text=None, by=()):
    """Status, standard output and standard error."""
    done = subprocess.run([*by, paths["program"], *words], user=account, group=account, extra_groups=[], input=text,
                          env={"HOME": str(HOME if account else "/root"), "LC_ALL": "C"},
                          capture_output=True, check=False)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


@functools.cache
def can_trace():
    works = shutil.which("strace") and subprocess.run([*TRACED, "true"], capture_output=True, check=False)
    if not works or works.returncode != 0:
        print("skipped: no system call can be traced here")
    return works and works.returncode == 0


def changes(*words, account=0):
    """The system calls of the program that change a file, could do so, or keep others from one. None if
    that cannot be seen."""
    if not can_trace():
        return None
    trace = run(*words, account=account, by=TRACED)[2]
    return [line for line in trace.splitlines() if '"/dev/null"' not in line and re.search(
        rf"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|F_\w*SETL|^(\[pid +\d+\] )?({CHANGING})\(", line)]


def expect(what, seen, wanted):
    if seen != wanted:
        faults.append(f"{what}: {seen!r} instead of {wanted!r}")


def ask(command, *words, account=0, schema=None):
    """Status and JSON of a command, held against its schema."""
    status, output, _ = run(command, "--json", *words, account=account)
    answer = json.loads(output)
    schema = json.loads((DOCS / f"{schema or command}.schema.json").read_text())
    jsonschema.validate(answer, schema)
    return status, answer


def explain(*words, account=0):
    return ask("explain", *words, account=account)


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


def trees(*roots):
    """All names, bytes, rights, owners and dates; below given roots without the date of the last change."""
    state = []
    for root in roots or ("/var/lib", "/mnt"):
        for path in [*([root] if roots and root.exists() else []), *sorted(pathlib.Path(root).rglob("*"))]:
            status = path.lstat()
            data = path.readlink() if path.is_symlink() else path.read_bytes() if path.is_file() else b""
            state.append((str(path), status.st_mode, status.st_uid, status.st_gid, status.st_mtime_ns,
                          not roots and status.st_ctime_ns, data))
    return state


def play(*cases):
    """Plays each case with a folder of its own for work, and ends the process."""
    if os.geteuid() != 0:
        print("only root can mount state folders")
        sys.exit(77)
    if sys.argv[3:] != ["inside"]:
        os.execvp("unshare", ["unshare", "--mount", sys.argv[0], *sys.argv[1:3], "inside"])
    for folder, mode in (("/var/lib", 755), ("/var/backups", 755), ("/mnt", 755), ("/root", 700)):
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"mode={mode}", "tmpfs", folder], check=True)
    # The one other account that has a folder of its own.
    passwd = pathlib.Path("/mnt/passwd")
    passwd.write_text(f"root:x:0:0::/root:/bin/sh\nsomebody:x:{SOMEBODY}:{SOMEBODY}::{HOME}:/bin/sh\n")
    subprocess.run(["mount", "--bind", passwd, "/etc/passwd"], check=True)
    for case in cases:
        with tempfile.TemporaryDirectory() as work:
            os.chmod(work, 0o755)
            for name, source in zip(("program", "library"), sys.argv[1:]):
                paths[name] = shutil.copy(source, work)
            clear()
            case(pathlib.Path(work))
    print(*faults, sep="\n")
    sys.exit(bool(faults))
