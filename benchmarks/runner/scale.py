"""How cost grows with the number of blocks and of cue points, on files made for it."""
import math
import os
import subprocess
import sys

from .rounds import measure_rounds, median, say

BLOCKS = [10**k for k in range(3, 8)]
CUES = [10**k for k in range(1, 7)]
SEEKS = 20


def make_file(folder, kind, count):
    path = os.path.join(folder, f"scale_{kind}_{count}.mka")
    if not os.path.exists(path):
        tool = os.path.join(os.path.dirname(__file__), "..", "make_scale_file.py")
        subprocess.run([sys.executable, tool, path + ".part", kind, str(count)], check=True)
        os.rename(path + ".part", path)
    return path


def slope(points):
    """The exponent that fits cost ~ size ** exponent best."""
    logs = [(math.log(size), math.log(max(cost, 1e-9))) for size, cost in points]
    mean_x = sum(x for x, _ in logs) / len(logs)
    mean_y = sum(y for _, y in logs) / len(logs)
    return sum((x - mean_x) * (y - mean_y) for x, y in logs) / sum((x - mean_x) ** 2 for x, _ in logs)


def measure(programs, folder, rounds, budget, largest=None):
    """{"blocks": [...], "cues": [...]}, a record for each size."""
    return {
        "blocks": [measure_blocks(programs, make_file(folder, "blocks", count), count, rounds, budget)
                   for count in BLOCKS if not largest or count <= largest],
        "cues": [measure_cues(programs, make_file(folder, "cues", count), count, rounds, budget)
                 for count in CUES if not largest or count <= largest],
    }


def measure_blocks(programs, path, count, rounds, budget):
    say(f"a file of {count} blocks")
    ours = programs.one_heap()
    records = measure_rounds([ours], rounds, lambda one: one.measure(path), budget)[ours.name]
    return {
        "count": count,
        "wall_ms": median(records, "wall_ms"),
        "user_ms": median(records, "user_ms"),
        "peak_bytes": median(records, "peak_bytes"),
    }


def measure_cues(programs, path, count, rounds, budget):
    """Opening reads the Cues; the index that it makes stays on the heap."""
    say(f"a file of {count} cue points")
    ours = programs.one_heap()
    records = measure_rounds([ours], rounds, lambda one: one.measure(path, "--spread-seeks", str(SEEKS)),
                             budget)[ours.name]
    later = [seek["first_ms"] for one in records for seek in one["seeks"]]
    return {
        "count": count,
        "open_ms": min(one["open_ms"] for one in records),
        "seek_ms": sorted(later)[len(later) // 2],
        "heap_bytes": median(records, "heap_bytes"),
        "peak_bytes": median(records, "peak_bytes"),
    }
