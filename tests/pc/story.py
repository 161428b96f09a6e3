"""What the sentences of stories.txt mean: steps for the player, and checks of its answers."""
import fnmatch
import functools
import pathlib
import re
import struct
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent / "../../tools"))
import check_ids  # pylint: disable=wrong-import-position

NOW = int(time.time())
SECONDS = {"second": 1, "day": 86400}
GUID = r"(?<!{)(\d-\d-)?\w{8}(-\w{4}){3}-\w{12}"
TEXT = r'((?:\d+ times )?"[^"]*")'
PART = r"(volume|product|board|network)"
PATH = r"((?:old-)?(?:common|user)(?:/(?:device\.idv?2?|hid_settings|hardware_ids\.emulated))?)"

# The ordinary PC, as the library reads it.
PARTS = {"volume": "1234abcd", "product": "pf0xyz", "board": "board7", "network": "00:1a:2b:c3:d4:0f"}
WINDOWS = "deaddead-dead-dead-dead-deaddeaddead12345-oem-0000001-54321"

FLAGS = {"": 0, "SkipDateCheck": 1, "ForceRandomHid": 2, "UseEmulatedHardwareIds": 4}

# Sentences that are one step each, and its answer.
PLAIN_SENTENCES = {
    "Take away the hardware": "lose hardware",
    "Take away the network": "lose network",
    "Take away the rights of root": "lose rights",
    "Enter a single-threaded apartment": "enter sta = 0",
    "Enter a multithreaded apartment": "enter mta = 0",
    "Enter a single-threaded apartment between the two readings of the hardware": "enter late = 0",
    # COM can be used inside, and no more: what the library entered it has left.
    "Leave the apartment": "leave = 0, then -2147221008",
    "Let opening fail": "fail open",
    "Let opening fail in the common folder": "fail open common",
    "Let reading fail in the common folder": "fail read common",
    "Let writing fail in the common folder": "fail write common",
    "Let every write stop after 10 bytes": "fail short",
    "Let deleting fail": "fail delete",
    "Let making a folder fail": "fail mkdir",
    "Let making a folder fail in the common folder": "fail mkdir common",
    "Let the connection to WMI fail": "fail wmi",
    "Let the reading of the hardware end the call": "halt",
    "Let another process store id B as the folder is made": "race",
    "Let the system not know the folders": "lost",
    "Let 10 days pass": "pass 10",
    "Load libgcc_s before the library": "beside libgcc_s = loaded",
    "Loading, calling and unloading it 100 times leaves nothing behind": "cycle 100 = nothing left",
    "The library's version is 2.0.0": "version = 2.0.0",
}
SOURCES = {"The machine": "machine", "Its next call": "next", "The last call": "last",
           "A copy of the common folder": "copy"}
NOT_HERE = "on Windows only"
TIMES = {"never": 0, "once": 1, "twice": 2}

# Where a record has its date, behind the version "2.0", the id and the type; and the date of one
# that was stored in the course of its story.
DATE = slice(struct.calcsize("<i3si40si"), struct.calcsize("<i3si40siq"))
PRESENT = b"present!"

names, known_ids = {}, set()
id_of = functools.cache(check_ids.id_of)


def match(pattern, words):
    found = re.fullmatch(pattern, words)
    if not found:
        raise ValueError(f"not understood: {words}")
    return found.groups()


def text_of(words):
    times, text = match(r'(?:(\d+) times )?"([^"]*)"', words)
    return text.encode().decode("unicode_escape") * int(times or 1)


def hardware_text(version, parts):
    texts = list(parts.values())
    if version == "1.0":
        texts.pop()
    return WINDOWS * (version < "1.4") + "".join(texts)


def made_id(words, version, random=""):
    words = names.get(words, words)
    prefix = "" if version == "1.0" else version.replace(".", "-") + "-"
    if words in ("a new random id", "the same random id"):
        return prefix + random
    if re.fullmatch(GUID, words):
        made = words
    elif words.startswith("the id of "):
        made = id_of(version, text_of(words.removeprefix("the id of ")))
    else:
        changes, = match("the id(?: with (.+))?", words)
        pairs = [match(f"{PART} {TEXT}", change) for change in changes.split(" and ")] if changes else []
        parts = PARTS | {part: text_of(value) for part, value in pairs}
        made = id_of(version, hardware_text(version, parts))
    known_ids.add(made)
    return made


def counted(text):
    return struct.pack("<i", len(text)) + text.encode("latin1")


def record(words, random):
    """`of ID` and, behind commas, what differs from a record that this PC makes now. In a list of
    parts, every other comma ends one."""
    words, _, listed = words.partition(", parts ")
    owner, *differences = words.removeprefix("of ").split(", ")
    version, kind, date, parts = "2.0", 0, PRESENT, dict(PARTS)
    for words in differences:
        age = re.fullmatch(r"(\d+) (second|day)s? (old|ahead)", words)
        if age:
            seconds = int(age[1]) * SECONDS[age[2]]
            date = struct.pack("<q", NOW - seconds if age[3] == "old" else NOW + seconds)
        elif words == "random":
            kind = 1
        elif words == "no parts":
            parts = {}
        elif words.startswith("type "):
            kind = int(words.removeprefix("type "))
        elif words.startswith("format "):
            version = words.removeprefix("format ")
        else:
            part, value = match(f"{PART} {TEXT}", words)
            parts[part] = text_of(value)
    texts = [text_of(text) for text in listed.split(", ")] if listed else list(parts.values())
    return (counted(version) + counted(made_id(owner, "2.0", random)) + struct.pack("<i", kind) + date
            + struct.pack("<i", len(texts)) + b"".join(map(counted, texts)))


def content(words, random=""):
    """The bytes of a file: a text, an id or a record, and of another one behind " + "."""
    if " + " in words:
        return b"".join(content(piece, random) for piece in words.split(" + "))
    if re.fullmatch(TEXT, words):
        return text_of(words).encode("latin1")
    if words.startswith("a record "):
        return record(words.removeprefix("a record "), random)
    return made_id(words, "1.6", random).encode()


class Reply:
    """The player's answer to a call. A date since the beginning of the story is PRESENT."""

    def __init__(self, answer, began):
        result, reads, before, after, changed, unforeseen, device_id, log, *files = answer.split("\t")
        self.result, self.reads, self.changed = int(result), int(reads), changed == "1"
        self.before, self.after = int(before), int(after)
        self.unforeseen, self.id = bytes.fromhex(unforeseen).decode("latin1"), bytes.fromhex(device_id).decode()
        self.log = bytes.fromhex(log).decode("latin1")
        entries = re.split(r"^\[[\d:]{12}\] ", self.log, flags=re.M)[1:]
        self.lines = [entry[:-1].replace("[Info]  ", "[Info] ", 1).rstrip(" ") for entry in entries]
        self.files = {}
        for name, data in (file.split("=") for file in files):
            self.files[name] = self.undated(bytes.fromhex(data), int(began))

    def undated(self, data, began):
        if len(data) < DATE.stop or not data.startswith(b"\3\0\0\0"):
            return data
        date, = struct.unpack("<q", data[DATE])
        return data[:DATE.start] + PRESENT + data[DATE.stop:] if began <= date <= self.after else data

    def decisions(self):
        """The log but for what the readers of the hardware tell."""
        return [line for line in self.lines if not re.match(
            r"\[Debug\] (?!Exec|\[Copy|Received)|\[Error\] .*(COM|Wmi)", line)]

    def has_line(self, seen, wanted):
        """Whether a line is as promised, where a star stands for anything and an age is that at NOW."""
        age, = re.fullmatch(r"\[Info\] Diff seconds: (-?\d+)|.*", wanted, re.S).groups()
        if age is None or "Diff seconds: " not in seen:
            return fnmatch.fnmatchcase(seen, wanted.replace("[", "[[]"))
        # An age below zero is cut to the next second towards zero.
        late = int(seen.split()[-1]) - int(age)
        return self.before - NOW <= late <= self.after - NOW + (int(age) < 0)

    def comparable(self):
        """What every build has to say and to do."""
        log = re.sub(r"(Diff seconds: ).*", r"\1AGE", "\n".join(self.lines))
        log = re.sub(r"(random runtime hid: ).*|( dir: ).*[/\\]", r"\1\2", log)
        texts = [str(self.result), *log.split("\n"), *(f"{name} {data}" for name, data in
                                                       sorted(self.files.items()))]
        return [re.sub(GUID, lambda id: id[0] if id[0] in known_ids else "?", text) for text in texts]


SENTENCES = []


def sentence(pattern):
    def register(method):
        SENTENCES.append((re.compile(pattern), method))
        return method
    return register


class Story:
    """The steps of a story, and what is promised: checks of the answers to all steps, which give what
    came instead, or nothing."""

    def __init__(self, title, place):
        self.title, self.place = title, place
        self.steps, self.places, self.checks = [], [], []
        self.random, self.reply, self.lines, self.text = "", None, None, ""
        self.step("renew")

    def step(self, *words):
        self.steps.append("\t".join(words))
        self.places.append(self.place)
        return len(self.steps) - 1

    def promise(self, words, check):
        self.checks.append((self.place, words, check))

    def promise_answer(self, line, wanted, *words):
        number = self.step(*words)
        self.promise(line, lambda answers: "" if answers[number] in (wanted, NOT_HERE) else answers[number])

    def read(self, line):
        if line.startswith("  "):
            if self.lines is None:
                raise ValueError("no sentence above promises lines")
            self.lines.append(line.strip())
            return
        self.lines = None
        self.text += line + "\n"
        if line in PLAIN_SENTENCES:
            step, _, answer = PLAIN_SENTENCES[line].partition(" = ")
            self.promise_answer(line, answer, *step.split())
            return
        for pattern, method in SENTENCES:
            found = pattern.fullmatch(line)
            if found:
                method(self, *found.groups())
                return
        raise ValueError("no such sentence")

    def finish(self):
        """What every story promises at its end."""
        if re.search("Enter a (?!.*between)", self.text) and "Leave" not in self.text:
            self.read("Leave the apartment")
        if "user" not in self.text and "returns" in self.text:
            self.holds("user", "nothing")

    @sentence(f"Set (?:the )?(volume|product|board|PCI adapter|all values) to {TEXT}")
    def set_part(self, part, text):
        self.step("set", part.split()[0].lower(), text_of(text).encode("latin1").hex())

    @sentence(f"Put (.+) into {PATH}")
    def write(self, words, path):
        self.step("write", path, content(words).replace(PRESENT, struct.pack("<q", NOW)).hex())

    @sentence(f"(Remove|Make the folder) {PATH}")
    def change_tree(self, verb, path):
        self.step("remove" if verb == "Remove" else "folder", path)

    @sentence("(Store|Stored are) (.+?)(?: and (no record|a record .+))?")
    def store(self, verb, owner, of_it):
        act = self.write if verb == "Store" else lambda words, path: self.holds(path, words)
        act(owner, "common/device.idv2")
        if of_it:
            words = of_it.replace("of it", f"of {owner}", 1)
            act("nothing" if of_it == "no record" else words, "common/hid_settings")

    @sentence(r'(GetHardwareId(?:Ex|Mod)?|RecheckHardwareId)\((?:"(.*?)"|(\d+))(?:, ([\w |]+))?\) returns (.+)')
    def call(self, name, text, number, flags, wanted):
        version = number if text is None else text_of(f'"{text}"')
        bits = sum(FLAGS[flag] for flag in (flags or "").split(" | "))
        place = self.step("call", name, version, str(bits))
        version = ".".join(number) if number else version
        if not wanted.startswith("result "):
            made_id(wanted, version)
        self.promise(f"{name}({version}) returns {wanted}",
                     lambda answers: self.replied(Reply(answers[place], answers[0]), version, wanted))

    def replied(self, reply, version, wanted):
        self.reply, last = reply, self.random
        came = f"result {reply.result}" + " and a log" * bool(reply.log)
        if reply.unforeseen:
            return "otherwise than it was played: " + reply.unforeseen
        if wanted.startswith("result "):
            return "" if (came, reply.id) == (wanted, "#") else f"{came}, {reply.id}"
        if wanted == "a new random id":
            self.random = reply.id[4:]
            new = re.fullmatch(GUID, reply.id) and reply.id not in known_ids and self.random != last
            return "" if new else reply.id
        right = (reply.result, reply.id) == (0, made_id(wanted, version, self.random))
        return "" if right else f"{came}, {reply.id}"

    @sentence(r"(The machine|Its next call|The last call|A copy of the common folder)(?: of format (\S+))? is "
              r"explained as ([a-z-]+, status \d+)(?:, with (.+))?")
    def explained(self, source, version, verdict, parts):
        """What is told beside the verdict and the parts is promised line by line."""
        wanted = self.lines = []
        place = self.step("explain", SOURCES[source], version or "2.0")

        def check(answers):
            seen_verdict, seen_parts, *lines = answers[place].split("\t")
            missing = [line for line in wanted if line not in lines]
            right = (seen_verdict, seen_parts.removeprefix(", ")) == (verdict, parts or "")
            if right and missing:
                return f'not "{missing[0]}" but {lines}'
            return "" if right else f"{seen_verdict}{seen_parts}"
        self.promise(f"{source} is explained as {verdict}, with {parts or 'no other part'}", check)

    @sentence("The log (ends with|has)")
    def log_has(self, how):
        wanted = self.lines = []
        check = self.log_ends if how == "ends with" else self.log_contains
        self.promise(f"The log {how}", lambda _: check(wanted))

    def log_ends(self, wanted):
        seen = self.reply.decisions()[-len(wanted):]
        if len(seen) < len(wanted):
            return f"only {len(seen)} lines"
        wrong = [pair for pair in zip(wanted, seen) if not self.reply.has_line(pair[1], pair[0])]
        return f'not "{wrong[0][0]}" but "{wrong[0][1]}"' if wrong else ""

    def log_contains(self, wanted):
        missing = [line for line in wanted if line not in self.reply.lines]
        return f'no line "{missing[0]}"' if missing else ""

    @sentence("The hardware is read (never|once|twice)")
    def hardware_is_read(self, times):
        self.promise(f"The hardware is read {times}", lambda _: "" if self.reply.reads in (
            -1, TIMES[times]) else f"{self.reply.reads} times")

    @sentence(r"(\d) values are read")
    def values_are_read(self, count):
        self.promise(f"{count} values are read", lambda _: "" if int(count) == len(
            [line for line in self.reply.lines if "WMI property" in line]) else "another number")

    @sentence(f"{PATH} holds (.+)")
    def holds(self, path, words):
        if words != "nothing":
            content(words)
        self.promise(f"{path} holds {words}", lambda _: self.held(path, words))

    def held(self, path, words):
        seen = {name: data for name, data in self.reply.files.items() if name.startswith(path)}
        if words == "nothing":
            return repr(seen) if seen else ""
        data = self.reply.files.get(path)
        return "" if data == content(words, self.random) else f"{data} instead of {content(words, self.random)}"

    @sentence("No file changes")
    def no_file_changes(self):
        self.promise("No file changes", lambda _: repr(self.reply.files) if self.reply.changed else "")

    @sentence(f"Every format takes product {TEXT} and board {TEXT}")
    def every_format(self, product, board):
        network = PARTS["network"] if "no network" not in self.title else ""
        made = f'the id with product {product} and board {board} and network "{network}"'
        for version, values in (("1.0", 5), ("1.1", 6), ("1.2", 6), ("1.4", 4), ("1.5", 3), ("2.0", 6),
                                ("1.6", 3)):
            self.read(f'GetHardwareId("{version}") returns {made}')
            if network:
                self.read(f"{values} values are read")
        self.read(f"common/device.id holds {made}")
        listed = [part for part in (f'"{PARTS["volume"]}"', product, board, f'"{network}"')
                  if part not in ('""', '"0"')]
        self.read(f"common/hid_settings holds a record of {made}, parts {', '.join(listed)}")

    @sentence(rf"Formats 1\.1, 1\.2 and 2\.0 take {TEXT} (\d), (\d) and (\d) times, and the record (\d) times")
    def formats_take(self, text, *times):
        for version, count in zip(("1.1", "1.2", "2.0"), times):
            self.read(f'GetHardwareId("{version}") returns the id of {count} times {text}')
        listed = "parts " + ", ".join([text] * int(times[3])) if times[3] != "0" else "no parts"
        self.read(f"common/hid_settings holds a record of the id of {times[2]} times {text}, {listed}")

    @sentence(r"((\d) processes of (\d) threads?, each calling (\d+) times, get the id( or none yet)?"
              r"( in single-threaded apartments)?)")
    def processes_get(self, line, processes, threads, calls, none_yet, apartments):
        kind = "new" if none_yet else "sta" if apartments else "known"
        self.promise_answer(line, "0", "processes", processes, threads, calls, kind, made_id("the id", "2.0"))

    def fault(self, answers):
        """The first promise that is not kept and what came, with the log of the last call."""
        for place, words, check in self.checks:
            came = check(answers)
            if came:
                log = self.reply.log if self.reply else ""
                return f"{place}: {self.title}: promised: {words}; came: {came}\n{log}"
        return None


def read_stories(path=pathlib.Path(__file__).with_name("stories.txt")):
    stories = []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        try:
            if line.startswith("let "):
                names.update([line.removeprefix("let ").split(" = ")])
            elif line.startswith("== "):
                stories.append(Story(line.removeprefix("== "), f"{path.name}:{number}"))
            elif line and not line.startswith("#"):
                stories[-1].place = f"{path.name}:{number}"
                stories[-1].read(line)
        except (ValueError, KeyError, IndexError) as error:
            sys.exit(f"{path.name}:{number}: {error} in: {line}")
    for story in stories:
        story.finish()
    return stories
