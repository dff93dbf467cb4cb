#!/usr/bin/env python3
"""Measures the splitter and its peers and prints a table. ./bench calls it when everything is built."""
import argparse
import datetime
import json
import os
import platform
import subprocess
import sys

from runner import demux, opening, report, scale
from runner.contestants import MeasureError, Programs
from runner.files import Corpus
from runner.rounds import Budget, say

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
README = os.path.join(ROOT, "benchmarks", "README.md")
SECTIONS = ["demux", "wine", "opening", "memory", "scale"]
BEGIN, END = "<!-- latest table -->", "<!-- end of the table -->"

OPENING_ROUNDS = 3  # for each of the others: these take milliseconds, and busy moments weigh more

# Seconds within which a quick run begins its last round, spread over what it measures.
QUICK_DEMUX, QUICK_WINE, QUICK_OPENING, QUICK_MEMORY, QUICK_SCALE = 75, 25, 15, 5, 10


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("--native", required=True, help="folder of the native programs")
    parser.add_argument("--windows", help="folder of bench_play.exe")
    parser.add_argument("--wine", help="the Wine loader; the module is registered")
    parser.add_argument("--corpus", required=True, help="folder of the files")
    parser.add_argument("--results", required=True, help="folder that the figures are written to")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--record", action="store_true", help="put the table into benchmarks/README.md")
    parser.add_argument("--rounds", type=int)
    parser.add_argument("--only", help="sections, comma-separated: demux, wine, opening, memory, scale")
    parser.add_argument("--files", help="letters of the files to demux")
    return parser.parse_args()


def git(*command):
    result = subprocess.run(["git", "-c", "safe.directory=*", "-C", ROOT, *command], capture_output=True, text=True,
                            check=False)
    return result.stdout.strip() if result.returncode == 0 else ""


def about(options, rounds):
    commit = git("log", "-1", "--format=%h") or "unknown"
    dirty = " with changes" if git("status", "--porcelain", "--untracked-files=no") else ""
    kind = "quick form, " if options.quick else ""
    day = datetime.date.today().isoformat()
    load = os.getloadavg()
    busy = " **The machine was busy: wall times of this run say little.**" if load[0] > os.cpu_count() else ""
    return (f"Commit {commit}{dirty}, {day}: {kind}{rounds} rounds at most, {os.cpu_count()} processors, "
            f"{platform.system()} {platform.release()}, load average {load[0]:.1f} when it began.{busy}")


class Run:
    """One run of the program: each section adds its figures."""

    def __init__(self, options, corpus, rounds):
        self.options, self.corpus, self.rounds, self.quick = options, corpus, rounds, options.quick
        self.programs = Programs(options.native, options.windows, options.wine)
        self.figures = {"about": about(options, rounds)}

    def budget(self, seconds):
        return Budget(seconds if self.quick else None)

    def demux(self):
        letters = self.options.files or ("abcdfg" if self.quick else "abcdefgi")
        self.figures["starts"] = demux.process_starts(os.path.join(ROOT, "tests", "data", "sample.mkv"))
        self.figures["demux"] = demux.measure(
            self.corpus, letters, self.rounds, lambda letter: demux.native_contestants(self.programs, letter),
            self.budget(QUICK_DEMUX))
        demux.check_counts(self.figures["demux"])

    def wine(self):
        if not self.programs.windows_play:
            return
        self.programs.under_wine("", "--raw").measure(self.corpus.path("h"))  # wakes Wine's server
        self.figures["wine"] = demux.measure(
            self.corpus, "ab" if self.quick else "abd", self.rounds, lambda _: demux.wine_contestants(self.programs),
            self.budget(QUICK_WINE))
        self.figures["wine_search"] = opening.measure_wine_search(self.programs, self.corpus.path("e"), self.rounds,
                                                                  self.budget(QUICK_OPENING))

    def opening(self):
        letters, seeks = ("defhij", 10) if self.quick else ("bdefhij", 50)
        self.figures["opening"] = opening.measure(self.programs, self.corpus, letters, OPENING_ROUNDS * self.rounds,
                                                  seeks, self.budget(QUICK_OPENING))

    def memory(self):
        self.figures["memory"] = opening.measure_memory(self.programs, self.corpus.path("d"), self.rounds,
                                                        self.budget(QUICK_MEMORY))

    def scale(self):
        self.figures["scale"] = scale.measure(self.programs, self.corpus.folder, 1 if self.quick else 3,
                                              self.budget(QUICK_SCALE), 10**5 if self.quick else None)

    def measure(self):
        """Whether every section could be measured; those that could are kept."""
        whole = True
        for name in self.options.only.split(",") if self.options.only else SECTIONS:
            try:
                getattr(self, name)()
            except MeasureError as error:
                say(f"{name}: {error}")
                whole = False
        return whole


def record(text):
    with open(README, encoding="utf-8") as file:
        readme = file.read()
    before, rest = readme.split(BEGIN)
    _, after = rest.split(END)
    with open(README, "w", encoding="utf-8") as file:
        file.write(f"{before}{BEGIN}\n{text}{END}{after}")
    say("the table is in benchmarks/README.md")


def main():
    options = arguments()
    rounds = options.rounds or (3 if options.quick else 5)
    corpus = Corpus(options.corpus)
    os.makedirs(options.results, exist_ok=True)
    run = Run(options, corpus, rounds)
    whole = run.measure()
    with open(os.path.join(options.results, "figures.json"), "w", encoding="utf-8") as file:
        json.dump(run.figures, file, indent=1)
    text = report.whole(run.figures, corpus)
    with open(os.path.join(options.results, "table.md"), "w", encoding="utf-8") as file:
        file.write(text)
    print(text)
    if options.record:
        record(text)
    return 0 if whole else 1


if __name__ == "__main__":
    sys.exit(main())
