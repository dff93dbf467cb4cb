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
        results[letter]["first_as_reads"] = median(records, "first_ms") / reading_time(programs, corpus, letter, records)
    return results


def reading_time(programs, corpus, letter, records):
    """Milliseconds in which as many bytes as come in front of the first sample are read in blocks of 1 MiB."""
    raw = programs.native("raw", "--raw")
    whole = min(raw.measure(corpus.path(letter))["wall_ms"] for _ in range(3))
    return whole * median(records, "first_read_bytes") / corpus.size(letter)


def measure_wine_search(programs, path, rounds, budget):
    """The first seek without Cues, to the middle of the film, in the platform's graph: the time with the platform's own
    source, and the reads with one that counts them."""
    say("the first seek in e under Wine")
    wine = programs.under_wine("ours", "--platform-source", "--seek", "3600")
    counting = programs.under_wine("reads", "--seek", "3600")
    records = measure_rounds([wine, counting], rounds, lambda one: one.measure(path), budget)
    return {
        "first_seek_ms": statistics.median(one["seeks"][0]["first_ms"] for one in records[wine.name]),
        "first_seek_reads": statistics.median(one["seeks"][0]["reads"] for one in records[counting.name]),
    }


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
