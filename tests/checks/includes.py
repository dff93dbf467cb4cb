#!/usr/bin/env python3
"""Checks that no file of the product includes one from a room above its own. Usage: tests/checks/includes.py

A room is a folder or a single file. Each house below lists its rooms from the ground up: a file may include what lies
in its own room and below it, in every house that has its room. Rooms on one floor know nothing of each other.
"""
import os
import re
import subprocess
import sys

GROUND = [["include/tarvex"], ["framework"]]

HOUSES = {
    "module": GROUND + [
        ["scanner/limits.h", "scanner/block_time"],
        ["scanner/source"],
        ["scanner/elements"],
        ["scanner/file"],
        ["scanner/frames", "scanner/index"],
        ["scanner"],
        ["pins/limits.h"],
        ["pins/formats"],
        ["pins/output"],
        ["pins/creator"],
        ["filter"],
        ["module"],
    ],
    "pages": GROUND + [["pages"], ["module"]],
    # mkvhost is an application: of the module it knows the names of formats and how the log begins a refusal.
    "host": GROUND + [
        ["pins/formats"],
        ["host/system"],
        ["host/report"],
        ["host/graph"],
        ["host/commands"],
        ["host"],
    ],
    "examples": [["include/tarvex"], ["examples"]],
}

# Where there is no windows.h, ours stands for the platform's headers.
EXCEPTIONS = {("include/tarvex/declarations.h", "framework/platform/platform.h")}

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]+["<]([^">]+)[">]', re.MULTILINE)


def rooms(house):
    return {room: floor for floor, names in enumerate(house) for room in names}


ALL_ROOMS = {room for house in HOUSES.values() for room in rooms(house)}


def room_of(path):
    """The smallest room that holds the file, or None."""
    stem = os.path.splitext(path)[0]
    while stem:
        for name in (path, stem):
            if name in ALL_ROOMS:
                return name
        path = stem = os.path.dirname(stem)
    return None


def may_include(above, below):
    if above == below:
        return True
    for house in HOUSES.values():
        floors = rooms(house)
        if above in floors and below in floors and floors[below] < floors[above]:
            return True
    return False


def product_files():
    folders = sorted({room.split("/")[0] for room in ALL_ROOMS})
    if os.path.exists(".git"):
        command = ["git", "-c", "safe.directory=*", "ls-files", "--cached", "--others", "--exclude-standard", *folders]
        names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    else:
        names = [os.path.join(top, name) for folder in folders for top, _, found in os.walk(folder) for name in found]
    return sorted(name for name in names if name.endswith((".h", ".cpp")) and os.path.exists(name))


def included_files(path, known):
    with open(path, encoding="utf-8") as file:
        for name in INCLUDE.findall(file.read()):
            for place in (name, os.path.join("include", name), os.path.join(os.path.dirname(path), name)):
                if place in known:
                    yield place
                    break


def faults(files):
    known = set(files)
    for path in files:
        room = room_of(path)
        if room is None:
            yield f"{path}: is in no room"
            continue
        for target in included_files(path, known):
            if (path, target) not in EXCEPTIONS and not may_include(room, room_of(target)):
                yield f"{path}: includes {target}, which is not below {room}"


def main():
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
    files = product_files()
    found = list(faults(files))
    for line in found:
        print(line)
    if len(files) < 100:
        found.append("too few files")
        print(f"only {len(files)} files of the product were found")
    print(f"{len(files)} files looked at")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
