#!/usr/bin/env python3
"""Scripts and the file finder beside their peers, in interleaved runs.

Lines: a script of 30,000 lines beside dash (nanoseconds a line; what the same program takes for an
empty script is taken off). Finder: 200,000 files in 20,000 folders beside find and fdfind
(milliseconds, best of five). Pinned to one processor.
Usage: bench/script.py FOLDER-OF-PROGRAMS
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

LINES = 30_000
ROUNDS = 7


def best_of(commands):
    """The best time in seconds of each command, run in turn."""
    best = {name: float("inf") for name in commands}
    for _ in range(ROUNDS):
        for name, command in commands.items():
            began = time.perf_counter()
            subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
            best[name] = min(best[name], time.perf_counter() - began)
    return best


def bench_lines(programs, folder):
    home = folder / "home"
    scripts = home / "scripts"
    scripts.mkdir(parents=True)
    # A command that costs next to nothing: a message box of a style that shows nothing.
    texts = {"empty": "", "comments": "*(a comment line of some length, as they are)\n",
             "commands": "msgbox('a text',none)\n"}
    shells = {"empty": "", "comments": "# a comment line of some length, as they are\n",
              "commands": ": 'a text' none\n"}
    orvanto = programs / "orvanto"
    commands = {}
    for number, (name, line) in enumerate(texts.items(), 1):
        (scripts / (name + ".txt")).write_text(line * LINES)
        subprocess.run([orvanto, "--home", home, "add", name, "--at", "10:00", "--day", "1",
                        "--script", name + ".txt"], check=True, stdout=subprocess.DEVNULL)
        (folder / (name + ".sh")).write_text(shells[name] * LINES)
        commands["orvanto", name] = [orvanto, "--home", home, "run", str(number)]
        commands["dash", name] = ["dash", folder / (name + ".sh")]
    best = best_of(commands)
    for name in ("comments", "commands"):
        ns = {who: (best[who, name] - best[who, "empty"]) / LINES * 1e9 for who in ("orvanto", "dash")}
        print(f"{LINES} {name}: orvanto {ns['orvanto']:.0f} ns a line, dash {ns['dash']:.0f} ns, "
              f"ratio {ns['orvanto'] / ns['dash']:.2f}")


def bench_finder(programs, folder):
    tree = folder / "tree"
    for a in range(200):
        for b in range(100):
            leaf = tree / f"d{a}" / f"d{b}"
            leaf.mkdir(parents=True)
            for c in range(10):
                (leaf / f"file{c}.txt").touch()
    (tree / "d150" / "d50" / "Needle.txt").touch()
    best = {"orvanto": float("inf"), "find": float("inf"), "fdfind": float("inf")}
    for _ in range(3):
        done = subprocess.run([programs / "finder_bench", tree, "needle.txt"], check=True,
                              capture_output=True, text=True)
        best["orvanto"] = min(best["orvanto"], float(done.stdout))
        peers = best_of({"find": ["find", tree, "-iname", "needle.txt"],
                         "fdfind": ["fdfind", "-u", "-i", "-j1", "^needle.txt$", tree]})
        for who, seconds in peers.items():
            best[who] = min(best[who], seconds * 1000)
    print("200,000 files in 20,000 folders: " + ", ".join(
        f"{who} {ms:.0f} ms" for who, ms in best.items()) +
        f"; orvanto / find {best['orvanto'] / best['find']:.2f}, "
        f"orvanto / fdfind {best['orvanto'] / best['fdfind']:.2f}")


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    folder = pathlib.Path(tempfile.mkdtemp())
    try:
        bench_lines(programs, folder)
        bench_finder(programs, folder)
    finally:
        shutil.rmtree(folder)


main()
