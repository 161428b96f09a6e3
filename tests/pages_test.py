#!/usr/bin/python3
"""pages_test.py PROGRAM LIBRARY: the commands in the pages work as a reader types them."""
import os
import pathlib
import re
import shlex
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent / "support"))
import program  # noqa: E402

ROOT = program.DOCS.parent
OLD_ID = "2-0-01234567-89ab-cdef-0123-456789abcdef"


def commands(page):
    """The indented lines of a page: what a reader types, without a prompt."""
    return [line.strip().removeprefix("$ ") for line in re.findall(r"^ {4}\S.*$", (ROOT / page).read_text(), re.M)]


def prepare(line, work):
    """A PC with an id, and what the command is about."""
    program.clear()
    (work / "host.log").write_text(program.run("--log")[2])
    kept = pathlib.Path("/root/deviceid.kept")
    if not kept.exists():
        subprocess.run(["cp", "-r", program.COMMON, kept], check=True)
    if "restore" in line:
        (program.COMMON / "device.idv2").unlink()
    backup = program.run("repair", "anew", "--yes")[1].split()[-1] if "BACKUP" in line else ""
    return line.replace("OLD_ID", OLD_ID).replace("BACKUP", backup) + " --yes" * ("repair" in line)


def the_program(work):
    os.chdir(work)
    for page in ("README.md", "docs/guide.md"):
        lines = [line for line in commands(page) if re.match(r"deviceid\b(?!:)", line)]
        program.expect(f"{page} has commands", len(lines) > 1, True)
        for line in lines:
            words = shlex.split(prepare(line, work).replace("~", "/root"))[1:]
            status, output, errors = program.run(*words)
            # As explain and doctor say that an id stays, changes, or is missing.
            if status not in (0, 10, 20) or not output and "case.json" not in words:
                program.faults.append(f"{page}: {line}: status {status}, {errors}")


def the_first_host(work):
    readme = (ROOT / "README.md").read_text()
    (work / "my.c").write_text(re.search(r"```c\n(.*?)```", readme, re.S)[1])
    (work / "include").symlink_to(ROOT / "include")
    (work / "build").mkdir()
    (work / "build/linux").symlink_to(pathlib.Path(sys.argv[2]).parent)
    lines = [line for line in commands("README.md") if "my" in line]
    done = subprocess.run("\n".join(lines), shell=True, cwd=work, capture_output=True, check=False)
    program.expect(f"{lines}", (done.stdout.decode(), done.stderr), (program.run()[1], b""))


def what_is_named_exists(_):
    build = pathlib.Path(sys.argv[2]).parent
    for page in ("README.md", "CONTRIBUTING.md", "docs/building.md", "bench/README.md"):
        for line in commands(page):
            name = line.split()[0]
            folder, name = (build, name[12:]) if name.startswith("build/linux/") else (ROOT, name)
            if "/" in line.split()[0] and name != "./my" and not list(folder.glob(name)):
                program.faults.append(f"{page} names {name}")


program.play(the_program, the_first_host, what_is_named_exists)
