#!/usr/bin/env python3
"""Plays stories about PCs, with the native build and, in Wine, with a real DLL.

  play.py NATIVE_PLAYER [WINDOWS_PLAYER]

Each build has to do what the stories tell. The DLL has to do, to the byte, what the native build
does: results, ids, files, logs but for their times. Exits 77 where no Wine can run.
"""
import difflib
import fnmatch
import pathlib
import re
import struct
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE / "../../tools"))
from check_ids import id_of  # pylint: disable=wrong-import-position

WINE = HERE / "../../tools/wine/wine_root.sh"
NOW = int(time.time())
GUID = r"(?<!{)(\d-\d-)?\w{8}(-\w{4}){3}-\w{12}"
names, known_ids = {}, set()


def made_id(words, random):
    """An id as it is, or "FORMAT of TEXT", where "?" is the last random id. All have names."""
    if " of " not in words:
        known_ids.add(names.get(words, words))
        return names.get(words, words)
    version, text = words.split(" of ", 1)
    if text == "?":
        return version.replace(".", "-") + "-" + random
    known_ids.add(id_of(version, names.get(text, text)))
    return id_of(version, names.get(text, text))


def counted(text):
    return struct.pack("<i", len(text)) + text.encode("latin1")


def content(words, random=""):
    """The bytes of a file: an id, a record ("record AGE TYPE VERSION ID; PART, PART") or a text, and
    of another text behind "+"."""
    if " + " in words:
        return b"".join(content(part, random) for part in words.split(" + "))
    if not words.startswith("record "):
        return b"" if words == "empty" else made_id(words, random).encode("latin1")
    head, parts = words.split("; ", 1)
    _, age, kind, version, device_id = head.split(" ", 4)
    parts = [names.get(part, part) for part in parts.split(", ")] if parts else []
    return (counted(version) + counted(made_id(device_id, random))
            + struct.pack("<iqi", int(kind), NOW - int(age), len(parts))
            + b"".join(map(counted, parts)))


def undated(text):
    """A record without its date, which may lag behind on a slow machine, and that date."""
    if len(text) < 63 or text[:4] != b"\3\0\0\0":
        return text, NOW
    return text[:55] + text[63:], struct.unpack_from("<q", text, 55)[0]


class Reply:
    def __init__(self, answer):
        result, reads, device_id, log, *files = answer.split("\t")
        self.result, self.reads, self.id = int(result), int(reads), bytes.fromhex(device_id).decode()
        log = re.split(r"^\[[\d:]{12}\] ", bytes.fromhex(log).decode("latin1"), flags=re.M)
        self.lines = [entry[:-1].replace("[Info]  ", "[Info] ", 1) for entry in log[1:]]
        self.files = {name: bytes.fromhex(data) for name, data in (f.split("=") for f in files)}

    def comparable(self):
        """What every build has to say and to do."""
        log = re.sub(r"Diff seconds: (-?\d+)", lambda age: f"about {int(age[1]) // 1000} 000 seconds",
                     "\n".join(self.lines))
        log = re.sub(r"(random runtime hid: ).*|( dir: ).*([/\\])", r"\1\2\3", log)
        texts = [str(self.result), *log.split("\n"), *sorted(
            f"{name} {undated(text)[0]}" for name, text in self.files.items())]
        return [re.sub(GUID, lambda id: id[0] if id[0] in known_ids else "?", text) for text in texts]


class Story:
    """What a story does, and what has to be seen of it: functions of the answers to all steps."""

    def __init__(self, title, legend):
        self.title, self.legend, self.steps, self.checks = title, legend, [], []
        self.random, self.reply, self.answer = "", None, ""
        self.step("renew")

    def step(self, *words):
        self.steps.append("\t".join(words))
        return len(self.steps) - 1

    def read(self, line):
        verb, _, rest = line.partition(" ")
        left, _, right = rest.partition(" = ")
        first, _, others = rest.partition(" ")
        if verb in ("set", "write"):
            self.step(verb, first, content(others).hex())
        elif verb in ("get", "recheck", "mod", "ex"):
            flags, _, version = left.partition(" ") if verb == "mod" else ("0", "", left)
            place = self.step("call", verb, version or "2.0" * (verb == "mod"), flags)
            self.checks.append((line, lambda answers: self.replied(Reply(answers[place]), right)))
        elif verb == "every":
            self.read_every_format(*rest.removeprefix("format of ").split("; ", 1))
        elif verb == "remove":
            self.step(verb, rest)
        elif verb == "says":
            self.checks.append((line, lambda _: rest in self.reply.lines))
        elif verb in ("decides", "reads", "queries", "holds"):
            self.checks.append((line, lambda _: getattr(self, verb)(left, right)))
        else:
            place = self.step(verb, *left.split(" "))
            self.checks.append((line, lambda answers: self.answered(answers[place], right)))

    def read_every_format(self, parts, listed):
        mac = "" if "no network" in self.title else names["M"]
        newer = names["V"] + parts + mac
        older = names["W"] + newer
        for version, text, queries in (
                ("1.0", names["W"] + names["V"] + parts, 5), ("1.1", older, 6), ("1.2", older, 6),
                ("1.4", newer, 4), ("1.5", newer, 3), ("2.0", newer, 6), ("1.6", newer, 3)):
            self.read(f"get {version} = {version} of {text}")
            if mac:
                self.read(f"queries {queries}")
        self.read(f"holds common/device.id = 1.6 of {newer}")
        listed = ", ".join(filter(None, [names["V"], listed, mac]))
        self.read(f"holds common/hid_settings = record 0 0 2.0 2.0 of {newer}; {listed}")

    def answered(self, answer, wanted):
        self.answer = answer
        return answer in ("", wanted)

    def replied(self, reply, wanted):
        self.reply = reply
        if wanted.startswith("result "):
            return wanted == f"result {reply.result}" and reply.id == "#" and not reply.lines
        if wanted.startswith("failure "):
            return wanted == f"failure {reply.result}" and reply.id == "#"
        if wanted.endswith(" of ??"):
            old, self.random = self.random, reply.id[4:]
            return re.fullmatch(GUID, reply.id) and reply.id not in known_ids and self.random != old
        return (reply.result, reply.id) == (0, made_id(wanted, self.random))

    def decides(self, letters, age):
        lines = [line for line in self.reply.lines
                 if not re.match(r"\[Debug\] (?!Exec|\[Copy|Received)|\[Error\] .*(COM|Wmi)", line)]
        ages = [int(line.split()[-1]) - int(age) for line in lines if "Diff seconds" in line]
        return len(lines) == len(letters) and all(0 <= late < 600 for late in ages) and all(
            fnmatch.fnmatchcase(line, self.legend[x]) for line, x in zip(lines, letters))

    def reads(self, count, _):
        return self.reply.reads in (-1, int(count))

    def queries(self, count, _):
        return sum("WMI property" in line for line in self.reply.lines) == int(count)

    def holds(self, path, wanted):
        if wanted == "nothing":
            return not any(name.startswith(path) for name in self.reply.files)
        (wanted, date), (text, seen) = map(undated, (
            content(wanted, self.random), self.reply.files.get(path, b"nothing")))
        return wanted == text and abs(date - seen) < 600

    def differences(self, native, windows):
        for step, one, other in zip(self.steps, native, windows):
            if step.startswith("call"):
                wanted = [text.replace(" dir: /", " dir: \\") for text in Reply(one).comparable()]
                diff = list(difflib.unified_diff(wanted, Reply(other).comparable(),
                                                 "natively", "on Windows", lineterm=""))
                if diff:
                    yield "\n".join([f"{self.title}: {step}", *diff])

    def faults(self, answers):
        for line, seen in self.checks:
            if not seen(answers):
                last = "\n".join([self.answer, *map(str, [answers[-1]] if self.reply is None else [
                    self.reply.result, self.reply.id, *self.reply.lines, self.reply.files])])
                yield f"{self.title}: {line}\n{last}"
                return


def plain(text):
    return text.replace("[", "[[]")


def read_stories():
    stories, legend = [], {}
    for line in (HERE / "stories.txt").read_text().splitlines():
        line = re.sub(r"(\d+) times (\w)", lambda many: many[2] * int(many[1]), line)
        line = line.encode().decode("unicode_escape")
        if line.startswith("let "):
            names.update([line[4:].split(" = ")])
        elif line.startswith("= "):
            legend[line[2]] = plain(line[4:].replace("AGE", "*"))
        elif line.startswith("== "):
            stories.append(Story(line[3:], legend))
        elif line and not line.startswith("#"):
            stories[-1].read(line)
    return stories


def play(stories, command):
    """The answers of all stories, each as a list."""
    steps = [step for story in stories for step in story.steps]
    done = subprocess.run(command, input="\n".join(steps) + "\n", text=True, stdout=subprocess.PIPE,
                          check=False, timeout=400)
    answers = [answer.strip("\r") for answer in done.stdout.split("\n")[:-1]]
    if done.returncode != 0 or len(answers) != len(steps):
        sys.exit(f"{command} ended with {done.returncode} after step {len(answers)} of {len(steps)}:"
                 f" {steps[:len(answers) + 1][-1]}")
    return [[answers.pop(0) for _ in story.steps] for story in stories]


def main():
    if not pathlib.Path(sys.argv[1]).exists():
        sys.exit("the player of the preset linux is to be built first")
    stories = read_stories()
    native = play(stories, [sys.argv[1]])
    faults = [fault for story, answers in zip(stories, native) for fault in story.faults(answers)]
    played = len(stories)
    if len(sys.argv) > 2:
        ready = subprocess.run([HERE / "../windows/setup.sh"], check=False)
        if ready.returncode != 0:
            sys.exit(ready.returncode)
        for network in ("--nic 00:1a:2b:c3:d4:0f", "--no-network"):
            here = [(story, answers) for story, answers in zip(stories, native)
                    if "(native)" not in story.title and
                    ("(no network)" in story.title) == (network == "--no-network")]
            windows = play([story for story, _ in here], [
                WINE, "run", "--serial", "1234ABCD", *network.split(), sys.argv[2]])
            for (story, wanted), got in zip(here, windows):
                faults += story.faults(got)
                faults += story.differences(wanted, got)
    print(*faults, sep="\n\n")
    print(f"{played} stories, {len(faults)} faults")
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
