#!/usr/bin/env python3
"""Makes ids a second time, from the values that the logs show and with a digest that is not ours.

Reads calls on standard input: log and id of each, then a line "= STATUS". The arguments are the
formats that were asked for, in order. A call whose log shows no value at all made a random id, of
which only the layout can be checked.
"""
import re
import subprocess
import sys
import uuid


def joined_values(log):
    mac = re.search(r"Find PCI MAC-Address: (\S+) for ", log)
    if "Cannot find PCI MAC-Address" in log:
        mac = re.search(r"\] Network Adapters List:\s+\S+: (\S+): ", log)
    return "".join(re.findall(r'WMI property ".*" = "(.*)"$', log, re.M)) + (mac[1] if mac else "")


def id_of(name, text):
    """The id in the format `name` that hardware with these joined values has."""
    digest = subprocess.run(["md5sum"], input=text.encode("latin1"), capture_output=True, check=True).stdout
    prefix = "" if name == "1.0" else name.replace(".", "-") + "-"
    return prefix + str(uuid.UUID(bytes_le=bytes.fromhex(digest[:32].decode())))


def main():
    names = sys.argv[1:]
    output = sys.stdin.read().replace("\r", "")
    calls = re.findall(r"(.*?)^= (-?\d+)$", output, re.M | re.S)
    faults = [] if len(calls) == len(names) else [f"{len(calls)} of {len(names)} calls:\n{output}"]
    ids = {}
    for name, (log, status) in zip(names, calls):
        ids[name] = log.strip().rpartition("\n")[2]
        text = joined_values(log)
        wanted = id_of(name, text) if text else ids[name]
        layout = re.fullmatch(r"(\d-\d-)?\w{8}(-\w{4}){3}-\w{12}", ids[name])
        received = ("IDs are received." in log) == bool(text)
        print(name, ids[name])
        if status != "0" or ids[name] != wanted or not layout or not received:
            faults.append(f"{name}: status {status}, the log gives {wanted}:\n{log}")
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
