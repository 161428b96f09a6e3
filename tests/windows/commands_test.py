#!/usr/bin/python3
"""commands_test.py PROGRAM: the program on a Windows PC, with a folder of a name that no code page has. Exits
77 where no Wine can run."""
import json
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

import jsonschema

HERE = pathlib.Path(__file__).parent
WINE = HERE / "../../tools/wine/wine_root.sh"
C = "/wine/drive_c"
KEPT = "Käse-日本"
OTHER_ID = "2-0-01234567-89ab-cdef-0123-456789abcdef"
faults = []

# What is run in this order, each under a name. "copy" keeps a copy of the state folder, and "log" is kept in
# it.
STEPS = [
    ("new", "explain", "--json"),
    ("played", "--no-store"),
    ("made",),
    ("copy",),
    ("log", "--recheck", "--log"),
    ("known", "explain", "--json"),
    ("in the DLL", "--library", rf"C:\{KEPT}\deviceid.dll"),
    ("kept", "explain", "--json", rf"C:\{KEPT}"),
    ("beside the copy", "explain", "--json", "--against", rf"C:\{KEPT}"),
    ("of a log", "explain", "--json", rf"C:\{KEPT}\log"),
    ("of a pipe", "explain", "--json", "-"),
    ("files", "inspect", "--json"),
    ("one file", "inspect", "--json", rf"C:\{KEPT}\hid_settings"),
    ("for people", "inspect", rf"C:\{KEPT}"),
    ("66", "explain", rf"C:\{KEPT}\none"),
    ("65", "explain", rf"C:\{KEPT}\deviceid.dll"),
    ("65 ", "inspect", r"C:\windows"),
    ("69", "--library", rf"C:\{KEPT}\log"),
    ("2", "explian"),
    ("simulated", "simulate", "--json", "replace=network"),
    ("matrix", "simulate", "--all", "--svg", rf"C:\{KEPT}\matrix.svg"),
    ("healthy", "doctor", "--json"),
    ("case", "report", "--redact", "--log", rf"C:\{KEPT}\log", rf"C:\{KEPT}\case.json"),
    ("of a case", "explain", "--json", rf"C:\{KEPT}\case.json"),
    ("refused", "repair", "restore", "--yes"),
    ("mended", "repair", "keep", OTHER_ID, "--json", "--yes", "--backup", rf"C:\{KEPT}\backup"),
    ("undone", "repair", "undo", rf"C:\{KEPT}\backup", "--json", "--yes"),
    ("at last", "explain", "--json"),
]


def script():
    """Shell commands for all steps; what each printed goes where it is found at the end."""
    lines = ["export LC_ALL=C.UTF-8", f"out={C}/ProgramData/out", "mkdir -p $out"]
    for number, (name, *words) in enumerate(STEPS):
        if name == "copy":
            lines.append(f"cp -a {C}/ProgramData/BrindleQuayWorks/. {C}/{KEPT} && cp deviceid.dll {C}/{KEPT}")
            continue
        lines.append(f"wine deviceid.exe {shlex.join(words)} < {C}/{KEPT}/log > $out/{number}.out "
                     f"2> $out/{number}.err; echo $? > $out/{number}.status")
        if name == "log":
            lines.append(f"cp $out/{number}.err {C}/{KEPT}/log")
    lines.insert(3, f"mkdir {C}/{KEPT}; : > {C}/{KEPT}/log")
    return "\n".join(lines) + "\n"


def expect(what, seen, wanted):
    if seen != wanted:
        faults.append(f"{what}: {seen!r} instead of {wanted!r}")


def play(program):
    """Status, standard output and standard error of each step, by its name."""
    path = pathlib.Path(program).with_name("commands_test.sh")
    path.write_text(script())
    with tempfile.TemporaryDirectory() as after:
        subprocess.run([WINE, "run", "--serial", "1234ABCD", "--nic", "00:1a:2b:c3:d4:0f", "--after", after,
                        path], check=True, timeout=400)
        out = pathlib.Path(after) / "ProgramData/out"
        texts = {name: [(out / f"{number}.{kind}").read_bytes().decode().replace("\r", "")
                        for kind in ("status", "out", "err")]
                 for number, (name, *_) in enumerate(STEPS) if name != "copy"}
    return {name: (int(status), *told) for name, (status, *told) in texts.items()}


def objects(answers):
    """The JSON of each step that gave some, held against its schema."""
    told = {}
    for name, *words in STEPS:
        if "--json" not in words:
            continue
        told[name] = json.loads(answers[name][1])
        schema = HERE / f"../../docs/{words[0].replace('simulate', 'explain')}.schema.json"
        jsonschema.validate(told[name], json.loads(schema.read_text()))
    return told


def main():
    ready = subprocess.run([HERE / "setup.sh"], check=False)
    if ready.returncode != 0:
        sys.exit(ready.returncode)
    answers = play(sys.argv[1])
    told = objects(answers)
    device_id = answers["made"][1]
    expect("id", bool(re.fullmatch(r"2-0-[0-9a-f-]{36}\n", device_id)), True)
    for name in ("played", "made", "log", "in the DLL"):
        expect(f"id {name}", answers[name][:2], (0, device_id))
    expect("what was stored", answers["made"][2],
           f"deviceid: stored {device_id.strip()} in C:\\ProgramData\\BrindleQuayWorks\\device.idv2\n")
    expect("foretold id", told["new"]["next"]["id"], device_id.strip())
    for name, verdict in (("new", "new-machine"), ("known", "same"), ("beside the copy", "same"),
                          ("of a log", "same"), ("of a pipe", "same"), ("kept", None)):
        expect(f"verdict {name}", (answers[name][0], told[name]["verdict"]), (0, verdict))
    expect("part of the copy", told["kept"]["parts"][0]["stored"], "1234abcd")
    expect("differences", told["beside the copy"]["against"], [])
    expect("agreement", told["files"]["record_agrees"], True)
    expect("path of a file", told["one file"]["files"][0]["path"], rf"C:\{KEPT}\hid_settings")
    expect("path for people", rf"C:\{KEPT}\device.idv2" in answers["for people"][1], True)
    for status in ("66", "65", "65 ", "69", "2"):
        expect(f"bad input {status}", answers[status][:2], (int(status), ""))
        expect(f"complaint {status}", bool(re.fullmatch("deviceid: [^\n]+\n", answers[status][2])), True)
    expect("simulation", (answers["simulated"][0], told["simulated"]["verdict"]), (0, "forgiven"))
    expect("matrix", (answers["matrix"][0], answers["matrix"][1].count("kept") > 3), (0, True))
    expect("ills of this PC", [finding["code"] for finding in told["healthy"]["findings"] if finding["level"] != "ok"],
           ["adapter-choice"])
    expect("report", answers["case"], (0, "", ""))
    expect("verdict of the case", told["of a case"]["verdict"], "same")
    expect("redacted id", told["of a case"]["id"] != device_id.strip(), True)
    expect("no need", answers["refused"][0], 76)
    expect("repair", (told["mended"]["call"]["id"], told["mended"]["backup"]), (OTHER_ID, rf"C:\{KEPT}\backup"))
    expect("undone repair", told["at last"]["next"]["id"], device_id.strip())
    print(*faults, sep="\n")
    sys.exit(bool(faults))


main()
