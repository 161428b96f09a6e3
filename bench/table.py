#!/usr/bin/python3
"""table.py [--once]: measures what is built and prints the table that README.md explains.

--once takes one short round of each, which shows that it works and no more.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

BENCH = pathlib.Path(__file__).resolve().parent
BUILD = BENCH.parent / "build"
WINE = BENCH.parent / "tools/wine/wine_root.sh"
ONCE = sys.argv[1:] == ["--once"]
ROUNDS = 1 if ONCE else 40
SECONDS_OF_A_ROUND = 0 if ONCE else 0.05
HEADINGS = ("what", "takes", "against", "takes", "ratio", "middle half of rounds")


class NotHere(Exception):
    """Why something cannot be measured on this machine."""


def rounds(*command):
    """The seconds that subject and reference took in each round."""
    output = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
    return [(entry["subject"], entry["reference"]) for entry in json.loads(output)["benchmarks"]
            if entry.get("run_type") != "aggregate"]


def native(name):
    return (built("linux", "deviceid_bench"), f"--benchmark_filter=^{name}/", "--benchmark_format=json",
            f"--benchmark_repetitions={ROUNDS}", f"--benchmark_min_time={SECONDS_OF_A_ROUND}")


def on_linux(name):
    return rounds(*native(name))


def with_adapters(name, pairs):
    if os.geteuid() != 0:
        raise NotHere("only root can make state folders and a network for it")
    return rounds(BENCH / "linux/isolated.sh", str(pairs), *native(name))


def in_wine(name, bits):
    why_not = subprocess.run([WINE, "why-not"], stdout=subprocess.PIPE, text=True, check=False)
    if why_not.returncode != 0:
        reason = why_not.stdout.strip()
        raise NotHere(reason.partition(": ")[2]) if why_not.returncode == 77 else SystemExit(reason)
    return rounds(WINE, "run", built(f"windows-{bits}", f"{name}_bench.exe"), str(ROUNDS))


def built(preset, name):
    path = BUILD / preset / name
    if not path.exists():
        raise NotHere(f"build/{preset}/{name} is not built")
    return path


def shipped_size(preset, name):
    path = built(preset, name)
    if preset != "linux" or path.suffix == ".html":
        return path.stat().st_size
    with tempfile.NamedTemporaryFile() as stripped:
        subprocess.run(["strip", path, "-o", stripped.name], check=True)
        return os.path.getsize(stripped.name)


def quartiles(values):
    ordered = sorted(values)
    return [ordered[len(ordered) * quarter // 4] for quarter in (1, 2, 3)]


def time_text(seconds):
    return f"{seconds * 1e3:.2f} ms" if seconds >= 1e-3 else f"{seconds * 1e6:.1f} µs"


def compared(what, against, measure, *arguments):
    try:
        measured = measure(*arguments)
    except NotHere as reason:
        return what, "", against, "", "", f"not measured: {reason}"
    subject, reference = (quartiles(times)[1] for times in zip(*measured))
    low, ratio, high = quartiles(subject / reference for subject, reference in measured)
    return (what, time_text(subject), against, time_text(reference), f"{ratio:.2f}",
            f"{low:.2f} to {high:.2f}")


def sized(preset, name):
    try:
        return f"size of {preset}/{name}", f"{shipped_size(preset, name) / 1e3:.0f} KB", "", "", "", ""
    except NotHere as reason:
        return f"size of {preset}/{name}", "", "", "", "", f"not measured: {reason}"


def measured_rows():
    for pairs in (1, 20, 250):
        adapters = f"{pairs} adapter pair" + "s" * (pairs > 1)
        yield compared(f"call, {adapters}", "bare reads", with_adapters, "call", pairs)
    yield compared("explain, 1 adapter pair", "call", with_adapters, "explain", 1)
    yield compared("first load of libdeviceid.so", "empty library", on_linux, "first_load")
    yield compared("load and unload of libdeviceid.so", "empty library", on_linux, "load")
    for bits in ("x86", "x64"):
        yield compared(f"call in Wine, {bits}", "bare calls in C", in_wine, "call", bits)
        yield compared(f"load and unload in Wine, {bits}", "empty DLL", in_wine, "load", bits)
    for name in ("libdeviceid.so", "deviceid", "explain.html"):
        yield sized("linux", name)
    for bits in ("x86", "x64"):
        for name in ("deviceid.dll", "deviceid.exe"):
            yield sized(f"windows-{bits}", name)


def main():
    if sys.argv[1:] not in ([], ["--once"]):
        sys.exit(__doc__)
    rows = [HEADINGS, *measured_rows()]
    widths = [max(map(len, column)) for column in zip(*rows)][:-1] + [len(HEADINGS[-1])]
    rows.insert(1, ["-" * width for width in widths])
    for row in rows:
        print("|", " | ".join(cell.ljust(width) for cell, width in zip(row, widths)), "|")


try:
    main()
except subprocess.CalledProcessError as failure:
    sys.exit(failure)
