#!/usr/bin/env python3
"""Holds docs/log.md against the sources: each line that the library can log has a row with its text
and level, and no row is about another line. Angle brackets stand for what varies in a line.
"""
import collections
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FILE_OPERATIONS = ROOT / "src/support/file_operations.cc"
STRING = r'L?"((?:[^"\\]|\\.)*)"'


def calls(code, name):
    """Place and arguments of each call of a function. Definitions are left out."""
    for match in re.finditer(rf"\b{name}\(", code):
        arguments, depth, position = [""], 1, match.end()
        while depth:
            token = re.compile(STRING + r"|.", re.S).match(code, position)[0]
            position += len(token)
            depth += (token in "([{") - (token in ")]}")
            if depth == 1 and token == ",":
                arguments.append("")
            elif depth:
                arguments[-1] += token
        if not re.match(r"\s*(const|noexcept)?\s*{", code[position:]):
            yield match.start(), [argument.strip() for argument in arguments]


def template(expression):
    """The text of an expression up to its first line break, with <> for all that is no literal."""
    text = ""
    for place, part in enumerate(re.split(STRING, expression)):
        if place % 2:
            text += re.sub(r"\\(.)", r"\1", part.replace("\\n", "\n"))
        elif re.sub(r"std::w?string|[\s+(){}]", "", part):
            text += "<>"
    return text.partition("\n")[0]


def messages(code, expression):
    """All texts that an expression can have."""
    if re.fullmatch(r"\w+", expression):  # a variable: all that its file puts into it, or the file
        # whose functions fill it in
        for place in (code, FILE_OPERATIONS.read_text()):
            values = re.findall(rf"\b{expression}\s*=(?!=)\s*([^;]+);", place)
            if values:
                values += re.findall(rf"string ({expression});", code)
                return {template(value) for value in values}
    if "?" in re.sub(STRING, "", expression):
        return {template(f'"{text}"') for text in re.findall(STRING, expression)}
    return {template(expression)}


def passed_on(code, place, variable):
    """What callers give a function that passes its last parameter on to the log."""
    definition = re.compile(rf"(\w+)\(([^(){{}};]*\b{variable})\)[^(){{}};]*{{")
    for function, parameters in definition.findall(code, 0, place)[-1:]:
        for _, arguments in calls(code, function):
            yield "+".join(arguments[parameters.count(","):])


def logged(code):
    """Level and text of each line that the code of a file can log."""
    code = re.sub(rf"({STRING})|//[^\n]*", lambda match: match[1] or "", code)
    for place, (message, level) in calls(code, r"log_?(?:->|\.)Write(?:Wide)?"):
        words = re.findall(r"\w+", message)
        literal = re.search(STRING, message)
        for text in [message] if literal else [*passed_on(code, place, words[-1])] or [message]:
            texts = messages(code, text)
            if not texts - {"<>"}:
                sys.exit(f"cannot tell what {text} writes to the log")
            yield from ((level.removeprefix("LogLevel::"), text) for text in texts)


def main():
    sources = [path for path in (ROOT / "src").rglob("*.*") if path.stem != "call_log"]
    in_code = collections.Counter(line for path in sources for line in set(logged(path.read_text())))
    rows = re.findall(r"^\| `(.*?)` \| (\w+) \|", (ROOT / "docs/log.md").read_text(), re.M)
    in_guide = collections.Counter((level, re.sub("<.*?>", "<>", text)) for text, level in rows)
    faults = [f"not in docs/log.md: [{level}] {text}" for level, text in in_code - in_guide]
    faults += [f"not in src/: [{level}] {text}" for level, text in in_guide - in_code]
    sys.exit("\n".join(faults) or 0)


main()
