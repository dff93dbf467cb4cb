"""Opening and seeking: times and read calls to the first sample, and the memory of a whole pass."""
import statistics

from .rounds import measure_rounds, median, say


def measure(programs, corpus, letters, rounds, seeks, budget):
    """{letter: {"first_ms", "first_reads", "first_seek_ms", ...}}. The first seek comes with the first need of
    the index, so it stands for itself."""
    results = {}
    for letter in letters:
        say(f"opening and seeking in {letter}")
        path = corpus.path(letter)
        ours = programs.native()
        options = ["--spread-seeks", str(seeks)]
        records = measure_rounds([ours], rounds, lambda one: one.measure(path, *options), budget)[ours.name]
        results[letter] = summary(records)
        results[letter]["rounds"] = len(records)
    return results


def measure_wine_search(programs, path, rounds, budget):
    """The first seek without Cues, to the middle of the film, in the platform's graph."""
    say("the first seek in e under Wine")
    wine = programs.under_wine("ours", "--platform-source", "--seek", "3600")
    records = measure_rounds([wine], rounds, lambda one: one.measure(path), budget)[wine.name]
    return {"first_seek_ms": statistics.median(one["seeks"][0]["first_ms"] for one in records)}


def summary(records):
    found = {key: median(records, key) for key in ("open_ms", "open_reads", "first_ms", "first_reads")}
    # For every place the median of the rounds, so that one busy moment of the machine is not taken for a slow place.
    times = [statistics.median(place) for place in by_place(records, "first_ms")]
    # Likewise: where the measuring thread is late, reads behind the first sample are counted as well.
    reads = [statistics.median(place) for place in by_place(records, "reads")]
    found["first_seek_ms"], found["first_seek_reads"] = times[0], reads[0]
    found["seek_ms"], found["worst_seek_ms"] = statistics.median(times[1:]), max(times[1:])
    found["seek_reads"] = max(reads[1:])
    return found


def by_place(records, key):
    """For every seek its values in all rounds."""
    return list(zip(*([seek[key] for seek in one["seeks"]] for one in records)))


def measure_memory(programs, path, rounds, budget):
    """Peak bytes of a whole pass, and of them where samples lay."""
    ours = programs.native()
    records = measure_rounds([ours], rounds, lambda one: one.measure(path, "--separate-pins"), budget)[ours.name]
    return {
        "peak_bytes": median(records, "peak_bytes"),
        "ring_bytes": median(records, "ring_bytes"),
        "start_bytes": median(records, "start_bytes"),
        "above_rings": statistics.median(one["peak_bytes"] - one["ring_bytes"] for one in records),
    }
