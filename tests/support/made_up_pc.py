"""A PC with parts of its own, for tests of the program: its network is what a made-up /sys tells."""
import ctypes
import os
import pathlib
import shutil
import subprocess

from support.program import COMMON, HOME, SOMEBODY, run

CLONE_NEWUTS, CLONE_NEWNET = 0x04000000, 0x40000000
DISKS = (COMMON.parent, HOME, pathlib.Path("/root"))
ADDRESS = "00:1a:2b:3c:4d:5e"


def leave_host():
    """To be called before play()."""
    ctypes.CDLL(None).unshare(CLONE_NEWNET | CLONE_NEWUTS)


def mount(*words):
    subprocess.run(["mount", *map(str, words)], check=True)


def set_serials(**values):
    for name, text in values.items():
        pathlib.Path(f"/sys/class/dmi/id/{name}_serial").write_text(text + "\n", encoding="ascii")


def new_pc(work, product="PF0XYZ", board="Board7"):
    """It has two serial numbers, an adapter, a disk for the state, and an id of root."""
    if os.path.ismount("/sys/class"):
        subprocess.run(["umount", "/sys/class", *DISKS], check=True)
    for place in DISKS:
        shutil.rmtree(work / place.name, ignore_errors=True)
        (work / place.name).mkdir()
        mount("--bind", work / place.name, place)
    mount("-t", "tmpfs", "tmpfs", "/sys/class")
    os.chown(HOME, SOMEBODY, SOMEBODY)
    adapter, device = (pathlib.Path("/sys/class", name) for name in ("net/eth0", "0000:00:1f.6"))
    for folder in (adapter, device, "/sys/class/dmi/id"):
        os.makedirs(folder)
    set_serials(product=product, board=board)
    for name, text in {"flags": "0x1003", "address": ADDRESS, "ifindex": "2", "addr_assign_type": "0"}.items():
        (adapter / name).write_text(text, encoding="ascii")
    (device / "subsystem").symlink_to("/sys/bus/pci")
    (adapter / "device").symlink_to(device)
    run()
