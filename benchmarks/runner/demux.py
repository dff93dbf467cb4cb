"""Whole passes over the files: the peers, the limit, ours natively and under Wine."""
from . import contestants as who
from .files import TRACKS
from .rounds import in_turn, say

OURS = "ours"
RAW = "1 MiB reads (the limit)"
MKVEXTRACT = "mkvextract"
FFMPEG = "ffmpeg -c copy"
LIBAVFORMAT = "libavformat packets"
MATROSKADEMUX = "matroskademux with queues"
BY_KIND = "ours, a pin for every kind"
LIBMATROSKA = "libmatroska alone"
SLOW_SOURCE = "ours, 50 µs a read more"
SLOW_READ = "50"  # microseconds
WINE = "ours"
WINE_RAW = "1 MiB SyncReads"


def native_contestants(programs, letter):
    found = [
        programs.native(OURS, "--separate-pins"),
        programs.native(RAW, "--raw"),
        who.InProcess(LIBAVFORMAT, [programs.av_packets]),
        who.InProcess(MATROSKADEMUX, [programs.gst_play]),
        who.WholeProcess(FFMPEG, who.ffmpeg),
        who.WholeProcess(MKVEXTRACT, who.mkvextract(TRACKS[letter])),
    ]
    if letter == "b":
        found.append(programs.native(SLOW_SOURCE, "--separate-pins", "--read-delay", SLOW_READ))
    if letter == "c":
        found.append(who.InProcess(LIBMATROSKA, [programs.block_walk]))
    if TRACKS[letter] > 2:
        found.append(programs.native(BY_KIND))
    return found


def wine_contestants(programs):
    return [
        programs.under_wine(WINE, "--separate-pins", "--platform-source"),
        programs.under_wine(WINE_RAW, "--raw"),
        programs.native("native", "--separate-pins"),
    ]


def measure(corpus, letters, rounds, make_contestants, budget):
    """{letter: {name: [records]}}. Every round goes over all files; the first is always made."""
    contestants = {letter: make_contestants(letter) for letter in letters}
    results = {letter: {one.name: [] for one in contestants[letter]} for letter in letters}
    for number in range(rounds):
        if number and budget.is_spent():
            break
        say(f"whole passes, round {number + 1}")
        for letter in letters:
            if number == 0:
                corpus.warm(letter)
            for one in in_turn(contestants[letter], number):
                results[letter][one.name].append(one.measure(corpus.path(letter)))
    return results


def check_counts(results):
    """Everybody has to have delivered the same number of frames, or the times compare nothing."""
    for letter, records in results.items():
        counts = {}
        for name in (OURS, LIBAVFORMAT, MATROSKADEMUX, LIBMATROSKA):
            for record in records.get(name, []):
                pins = record.get("pins")
                counts[name] = sum(pin["samples"] for pin in pins) if pins is not None else record["samples"]
        if len(set(counts.values())) > 1:
            say(f"frames of {letter} differ: {counts}")


def process_starts(sample):
    """Wall milliseconds of the programs that can only be measured whole, on a file of nearly nothing."""
    def fastest(make_command):
        return min(who.run_process(make_command(sample))[1] for _ in range(5))
    return {FFMPEG: fastest(who.ffmpeg), MKVEXTRACT: fastest(who.mkvextract(1))}
