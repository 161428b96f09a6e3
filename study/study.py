#!/usr/bin/python3
"""study.py PROGRAM FOLDER [--quick] [--seed N]: plays the machines and writes pages and pictures.

PROGRAM is study_fleet. Numbers and pages go to the project, or to FOLDER with --quick: then few machines
are played, and the pages of the project are held against the numbers that they were made from.
"""
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

import pages
import pictures

HERE = pathlib.Path(__file__).resolve().parent
PARAMETERS = HERE / "parameters.json"
RESULTS = "results.json"

# How many fleets are played, and of how many machines; `every` leaves out ranges.
FULL = {"runs": 10, "machines": 1000, "sweep": 500, "range": 200, "habit": 500, "every": 1}
QUICK = {"runs": 2, "machines": 20, "sweep": 5, "range": 3, "habit": 5, "every": 20}

# What no source gives a yearly rate for, and the rates or shares over which it is shown.
SWEEPS = {
    "board_replaced": [0, 0.02, 0.05, 0.1, 0.2],
    "adapter_replaced": [0, 0.02, 0.05, 0.1, 0.2],
    "dock": [0, 0.25, 0.5, 0.75, 1],
    "vpn": [0, 0.25, 0.5, 0.75, 1],
}
SWEEP_POPULATION = "notebooks"

HABITS = {
    "every 10 days": ["--days", "10"],
    "every 30 days": ["--days", "30"],
    "every 90 days": ["--days", "90"],
    "every day, `RecheckHardwareId`": ["--days", "1", "--recheck"],
}
HABIT_POPULATIONS = ["desktops", "notebooks", "virtual"]


def ranges_of(parameters, sizes):
    """Population, parameter, and the ends of the range of each assumed number that has one."""
    found = []
    for name, parameter in parameters["parameters"].items():
        for population in parameters["populations"]:
            if "range" not in parameter or not parameter.get(population):
                continue
            ends = [parameter[population] * times for times in parameter["range"]]
            found.append((population, name, ends if "a year" in parameter["what"]
                          else [min(end, 1) for end in ends]))
    return found[::sizes["every"]]


def jobs_of(parameters, sizes, seed):
    """Keys of all runs, and the arguments of each."""
    def arguments(population, machines, number, *others):
        return [population, "--machines", str(machines), "--seed", str(seed * 1000 + number), *others]

    jobs = {}
    for population in parameters["populations"]:
        for run in range(sizes["runs"]):
            jobs["base", population, run] = arguments(population, sizes["machines"], run)
        jobs["middle", population] = arguments(population, sizes["range"], 0, "--latest-format")
    for name, values in SWEEPS.items():
        for value in values:
            jobs["sweep", name, value] = arguments(SWEEP_POPULATION, sizes["sweep"], 0,
                                                   "--set", name, str(value))
    for population, name, ends in ranges_of(parameters, sizes):
        for end in ends:
            jobs["range", population, name, end] = arguments(
                population, sizes["range"], 0, "--latest-format", "--set", name, str(end))
    for population in HABIT_POPULATIONS:
        for habit, options in HABITS.items():
            jobs["habit", population, habit] = arguments(
                population, sizes["habit"], 0, "--latest-format", "--not-after-events", *options)
    return jobs


def digest(parameters):
    """Of the numbers; texts may change without another run."""
    numbers = {name: {key: value for key, value in parameter.items() if not isinstance(value, str)}
               for name, parameter in parameters["parameters"].items()}
    return hashlib.sha256(json.dumps([numbers, SWEEPS, HABITS], sort_keys=True).encode()).hexdigest()


def play(program, arguments):
    output = subprocess.run([program, *arguments], check=True, stdout=subprocess.PIPE).stdout
    return json.loads(output)


def short(counts, only=None):
    """What the pages use of the counts of a run."""
    rules = {rule: [numbers["kept"], numbers["back"], numbers["own"], numbers["own_copies"], numbers["none"]]
             for rule, numbers in counts["rules"].items() if only is None or rule in only}
    return {"machines": counts["machines"], "copies": counts["copies"], "rules": rules}


def play_all(program, sizes, seed):
    parameters = json.loads(PARAMETERS.read_text())
    jobs = jobs_of(parameters, sizes, seed)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        counts = dict(zip(jobs, pool.map(
            lambda options: play(program, ["fleet", str(PARAMETERS), *options]), jobs.values())))
    results = {"seed": seed, "sizes": sizes,
               "parameters": digest(parameters),
               "calls": sum(found["calls"] for found in counts.values()),
               "scripts": play(program, ["scripts"]),
               "base": {}, "losses": {}, "kinds": {}, "sweep": [], "ranges": [], "habits": []}
    for key, found in counts.items():
        if key[0] == "base":
            results["base"].setdefault(key[1], []).append(short(found))
            add_up(results["losses"].setdefault(key[1], {}), {**found["losses"],
                                                              "by order": found["lost_by_order"]})
            for kind, numbers in found["kinds"].items():
                add_up(results["kinds"].setdefault(key[1], {}).setdefault(kind, {}), numbers)
        elif key[0] == "sweep":
            results["sweep"].append([*key[1:], short(found)])
        elif key[0] == "range":
            results["ranges"].append([*key[1:], short(found, ["format 2.0"]),
                                      short(counts["middle", key[1]], ["format 2.0"])])
        elif key[0] == "habit":
            results["habits"].append([*key[1:], short(found, ["format 2.0"])])
    return results


def add_up(sums, numbers):
    for name, number in numbers.items():
        sums[name] = sums.get(name, 0) + number


def text_of(results):
    """One line for each entry of the second level, so that a change can be read."""
    parts = []
    for name, value in results.items():
        lines = value if isinstance(value, (list, dict)) else None
        if isinstance(lines, dict) and lines:
            inner = ",\n  ".join(f"{json.dumps(key)}: {json.dumps(entry)}" for key, entry in lines.items())
            parts.append(f"{json.dumps(name)}: {{\n  {inner}\n}}")
        elif lines:
            inner = ",\n  ".join(json.dumps(entry) for entry in lines)
            parts.append(f"{json.dumps(name)}: [\n  {inner}\n]")
        else:
            parts.append(f"{json.dumps(name)}: {json.dumps(value)}")
    return "{\n" + ",\n".join(parts) + "\n}\n"


def disagreements(folder):
    """Pages of the project that do not say what the stored numbers say."""
    results = json.loads((HERE / RESULTS).read_text())
    parameters = json.loads(PARAMETERS.read_text())
    if results["parameters"] != digest(parameters):
        yield "the numbers in parameters.json have changed since the pages were made: run study/run"
    for name, text in pages.render(results, parameters, HERE).items():
        if (HERE.parent / "docs" / name).read_text() != text:
            (folder / name).write_text(text)
            yield f"docs/{name} is not what study/run makes of its numbers: see {folder / name}"


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("program")
    options.add_argument("folder", type=pathlib.Path)
    options.add_argument("--quick", action="store_true", help="few machines, to see that it works")
    options.add_argument("--pages", action="store_true", help="from the numbers of the last run")
    options.add_argument("--seed", type=int, default=1)
    given = options.parse_args()
    given.folder.mkdir(parents=True, exist_ok=True)
    numbers, docs = (given.folder, given.folder) if given.quick else (HERE, HERE.parent / "docs")
    if not given.pages:
        results = play_all(given.program, QUICK if given.quick else FULL, given.seed)
        (numbers / RESULTS).write_text(text_of(results))
    results = json.loads((numbers / RESULTS).read_text())
    for name, text in pages.render(results, json.loads(PARAMETERS.read_text()), HERE).items():
        (docs / name).write_text(text)
    pictures.draw(results, docs)
    if given.quick:
        sys.exit("\n".join(disagreements(given.folder)) or 0)


main()
