#!/usr/bin/env python3
"""Plays stories about PCs, with the native build and, in Wine, with a real DLL.

  play.py NATIVE_PLAYER [WINDOWS_PLAYER]

Each build has to do what the stories tell. The DLL has to do, to the byte, what the native build
does: results, ids, files, logs but for their times. Exits 77 where no Wine can run.
"""
import difflib
import pathlib
import subprocess
import sys

from story import Reply, read_stories

HERE = pathlib.Path(__file__).parent
WINE = HERE / "../../tools/wine/wine_root.sh"
SECONDS_TO_PLAY = 400


def play(stories, command):
    """The answers of all stories, each as a list."""
    steps = [step for story in stories for step in story.steps]
    places = [place for story in stories for place in story.places]
    done = subprocess.run(command, input="\n".join(steps) + "\n", text=True, stdout=subprocess.PIPE,
                          check=False, timeout=SECONDS_TO_PLAY)
    answers = [answer.strip("\r") for answer in done.stdout.split("\n")[:-1]]
    if done.returncode != 0 or len(answers) != len(steps):
        last = min(len(answers), len(steps) - 1)
        sys.exit(f"{places[last]}: the player ended with {done.returncode} at: {steps[last]}")
    remaining = iter(answers)
    return [[next(remaining) for _ in story.steps] for story in stories]


def faults_of(stories, plays):
    faults = [story.fault(answers) for story, answers in zip(stories, plays)]
    return [fault for fault in faults if fault]


def differences(story, native, windows):
    """What the two builds did otherwise in each call of a story."""
    for step, one, other in zip(story.steps, native, windows):
        if not step.startswith("call"):
            continue
        diff = list(difflib.unified_diff(
            Reply(one, native[0]).comparable(), Reply(other, windows[0]).comparable(),
            "natively", "on Windows", lineterm=""))
        if diff:
            yield "\n".join([f"{story.title}: {step}", *diff])


def play_on_windows(stories, native, player):
    faults = []
    for title, network in (("", "--nic 00:1a:2b:c3:d4:0f"), ("(no network)", "--no-network")):
        chosen = [place for place, story in enumerate(stories) if "(native)" not in story.title
                  and ("(no network)" in story.title) == bool(title)]
        here = [stories[place] for place in chosen]
        plays = play(here, [WINE, "run", "--serial", "1234ABCD", *network.split(), player])
        faults += faults_of(here, plays)
        for place, story, answers in zip(chosen, here, plays):
            faults += differences(story, native[place], answers)
    return faults


def main():
    native_player, *windows_player = sys.argv[1:]
    if not pathlib.Path(native_player).exists():
        sys.exit("the player of the preset linux is to be built first")
    stories = read_stories()
    native = play(stories, [native_player])
    faults = faults_of(stories, native)
    if windows_player:
        ready = subprocess.run([HERE / "../windows/setup.sh"], check=False)
        if ready.returncode != 0:
            sys.exit(ready.returncode)
        faults += play_on_windows(stories, native, windows_player[0])
    print(*faults, sep="\n\n")
    print(f"{len(stories)} stories, {len(faults)} faults")
    sys.exit(bool(faults))


if __name__ == "__main__":
    main()
