#!/usr/bin/python3
"""simulate_test.py PROGRAM LIBRARY: simulate, and the completion of command lines."""
import subprocess
import xml.etree.ElementTree

from support.program import COMMON, ID, ask, expect, explain, play, record, run, trees, write


def simulate(*words, schema="explain"):
    return ask("simulate", *words, schema=schema)


def changes(work):
    """The kept id by record and hardware, whatever changes, and no trace of it."""
    run()
    address = explain()[1]["parts"][-1]["present"]
    write(COMMON, idv2=ID, record=record(ID, 3 * 86400, address))
    write(work / "kept", idv2=ID, record=record(ID, 0, "a", "b", "c"))
    before = trees()
    for words, wanted in ((["days=11"], (0, "same", "same")),
                          (["replace=network"], (10, "will-change", "changed")),
                          (["replace=network", "days=11"], (10, "changes-now", "changed")),
                          (["gone=network", "days=11"], (10, "changes-now", "gone")),
                          (["new=network:" + address.upper()], (0, "same", "same")),
                          ([f"restore={work}/kept", "days=0"], (10, "will-change", "changed"))):
        status, told = simulate(*words)
        network = told["parts"][-1]["state"]
        expect(f"{words}", (status, told["verdict"], network), wanted)
        expect(f"changes of {words}", [change["change"] for change in told["changes"]], words)
    status, told = simulate("--all", schema="simulate-all")
    expect("matrix", (status, [cell["fate"] for cell in told["outcomes"]]), (0, ["lost", "lost"]))
    expect("text of the matrix", "replace  lost    -" in run("simulate", "--all")[1], True)
    expect("trace of simulate", trees(), before)
    expect("picture", run("simulate", "--svg", str(work / "id.svg"))[0], 0)
    xml.etree.ElementTree.parse(work / "id.svg")


def bad_changes(work):
    """One line on standard error, and a status of its own."""
    run()
    for path in (COMMON / "device.idv2", work / "link"):
        path.exists() or path.symlink_to(COMMON / "hid_settings")
        expect(f"a picture at {path}", (run("simulate", "--svg", str(path))[0], trees()), (2, trees()))
    for status, *words in ((2, "gone=network", "replace=network"), (2, "account=ordinary", "gone=board"),
                           (2, "gone=disk"), (2, "gone=product"), (2, "new=board:"), (2, "new=network:x"),
                           (2, "days=-1"), (2, "account=root"), (2,), (66, f"restore={work}/none"),
                           (65, f"restore={work}"), (74, "--svg", "/dev/full"), (74, "--svg", f"{work}/no/x")):
        seen, output, said = run("simulate", *words)
        expect(f"{words}", (seen, output, said.count("\n")), (status, "", 1))


def completion(work):
    """What bash offers once the script is read, and zsh finds no fault in its own."""
    (work / "some folder").mkdir()
    (work / "script").write_text(run("completion", "bash")[1])
    for line, wanted in (("ex", "explain"), ("--for", "--format"), ("--format 1.", "1.0 1.1 1.2 1.4 1.5 1.6"),
                         ("explain --format=2", "2.0"), ("explain --ag", "--against"),
                         ("simulate rep", "replace=volume replace=product replace=board replace=network"),
                         ("simulate days=30 gone=n", "network"), ("simulate new=v", "volume:"),
                         (f"simulate restore={work}/s", f"{work}/some folder"), ("completion z", "zsh")):
        asked = (f"source {work}/script; COMP_LINE='deviceid {line}' COMP_POINT=$((${{#COMP_LINE}}));"
                 "_deviceid; echo \"${COMPREPLY[*]}\"")
        offers = subprocess.run(["bash", "-c", f"COMP_WORDBREAKS=' =:'; {asked}"], text=True,
                                capture_output=True, check=False)
        expect(f"offers for {line!r}", (offers.stdout.strip(), offers.stderr), (wanted, ""))
    script = run("completion", "zsh")[1]
    expect("zsh", subprocess.run(["zsh", "-n"], input=script.encode(), check=False).returncode, 0)


play(changes, bad_changes, completion)
