"""The measured figures as one Markdown text."""
from . import demux, limits
from .files import ABOUT
from .rounds import least, median
from .scale import slope

MEBIBYTE = 1024 * 1024
INDEX_JUDGED_FROM = 10**6  # cue points: in smaller files the buffers for reading outweigh the index


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    lines += ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]
    return "\n".join(lines)


def against(value, limit, form="{:.2f}"):
    if value is None:
        return ""
    return f"{form.format(value)} {limits.mark(value, limit)} (≤ {form.format(limit)})"


def head_of(results):
    return [""] + [f"{letter} {ABOUT[letter]}" for letter in results]


def names_of(results):
    names = []
    for records in results.values():
        names += [name for name in records if name not in names]
    return names


def time_cell(records):
    return f"{median(records, 'wall_ms'):.0f} ({least(records, 'wall_ms'):.0f})" if records else ""


def rounds_of(results):
    return min(len(records) for file in results.values() for records in file.values())


def demux_times(results):
    rows = [[name] + [time_cell(records.get(name)) for records in results.values()] for name in names_of(results)]
    return table(head_of(results), rows)


def ratio(records, name, key="wall_ms"):
    other = median(records.get(name, []), key)
    return median(records[demux.OURS], key) / other if other else None


def demux_ratios(results):
    rows = []
    for name, allowed in limits.DEMUX.items():
        cells = [against(ratio(records, name), allowed[letter]) if letter in allowed else
                 f"{ratio(records, name):.2f}" for letter, records in results.items()]
        rows.append([f"of {name}"] + cells)
    for name in (demux.MKVEXTRACT, demux.RAW):
        rows.append([f"of {name}"] + [f"{ratio(records, name):.2f}" for records in results.values()])
    return table(head_of(results), rows)


def cpu_cell(letter, records):
    ours, theirs = median(records[demux.OURS], "user_ms"), median(records[demux.LIBAVFORMAT], "user_ms")
    verdict = f" {'✓' if ours < theirs else '✗'}" if letter in limits.LESS_CPU_ON else ""
    return f"{ours:.0f} / {theirs:.0f}{verdict}"


def demux_cpu(results):
    rows = [["user CPU, ours / libavformat, ms"] + [cpu_cell(letter, records) for letter, records in results.items()]]
    return table(head_of(results), rows)


def read_limit(size):
    return size / limits.READ_BYTES_A_CALL + limits.READ_CALLS_MORE


def demux_reads(results, corpus):
    cells = [against(median(records[demux.OURS], "reads"), read_limit(corpus.size(letter)), "{:.0f}")
             for letter, records in results.items()]
    return table(head_of(results), [["`SyncRead` calls of a whole pass"] + cells])


def from_ffmpeg(results):
    """f as FFmpeg writes it takes hardly longer than as mkvmerge does."""
    if "f" not in results or "i" not in results:
        return ""
    share = median(results["i"][demux.OURS], "wall_ms") / median(results["f"][demux.OURS], "wall_ms")
    return f"f from FFmpeg takes {against(share, limits.FROM_FFMPEG)} times as long as f from mkvmerge."


def on_one_file(results):
    """What is measured on a single file."""
    parts = []
    walk = ratio(results["c"], demux.LIBMATROSKA) if "c" in results else None
    if walk is not None:
        parts.append(f"c takes {against(walk, limits.OF_LIBMATROSKA)} of the time in which libmatroska alone reads its "
                     "blocks, which copies no frame to a sample and queues none.")
    slow = median(results["b"].get(demux.SLOW_SOURCE, []), "wall_ms") if "b" in results else None
    if slow is not None:
        share = slow / median(results["b"][demux.OURS], "wall_ms")
        parts.append(f"b takes {share:.2f} times as long where each read takes {demux.SLOW_READ} µs more.")
    return " ".join(parts)


def wine_cell(letter, records):
    ours, raw = median(records[demux.WINE], "wall_ms"), median(records[demux.WINE_RAW], "wall_ms")
    native = median(records["native"], "wall_ms")
    share = raw / ours
    verdict = f" {'✓' if share >= limits.WINE_SHARE_OF_RAW else '✗'} (≥ 80 %)" if letter in "ad" else ""
    to_native = against(ours / native, limits.WINE_TO_NATIVE_B) if letter == "b" else f"{ours / native:.2f}"
    return [f"{letter} {ABOUT[letter]}", f"{raw:.0f}", f"{ours:.0f}", f"{share:.0%}{verdict}", f"{native:.0f}",
            to_native]


def wine_times(results):
    head = ["under Wine, ms", demux.WINE_RAW, "ours", "speed of raw", "ours natively", "Wine / native"]
    return table(head, [wine_cell(letter, records) for letter, records in results.items()])


def judged(value, limit, form):
    return form.format(value) if limit is None else against(value, limit, form)


def opening_row(letter, found):
    seek_limit = limits.SEARCH_MS if letter == "e" else limits.SEEK_MS.get(letter)
    reads_limit = limits.SEARCH_READS if letter == "e" else limits.SEEK_READS
    return [
        f"{letter} {ABOUT[letter]}",
        judged(found["first_ms"], limits.OPEN_MS.get(letter), "{:.1f}"),
        judged(found["first_reads"], limits.OPEN_READS_D if letter == "d" else None, "{:.0f}"),
        judged(found["first_seek_ms"], seek_limit, "{:.1f}"),
        judged(found["first_seek_reads"], reads_limit, "{:.0f}"),
        judged(found["worst_seek_ms"], seek_limit, "{:.2f}"),
        f"{found['seek_ms']:.2f}",
        judged(found["seek_reads"], reads_limit, "{:.0f}"),
        f"{found['first_as_reads']:.1f}",
    ]


def opening(results):
    head = ["natively", "open to first sample, ms", "reads", "first seek, ms", "reads", "slowest later seek, ms",
            "median, ms", "most reads of one", "open to first sample / reading those bytes"]
    text = table(head, [opening_row(letter, found) for letter, found in results.items()])
    rounds = min(found["rounds"] for found in results.values())
    text += f"\n\nMedians, for a seek of each place by itself; rounds made: {rounds}."
    if "d" in results and "e" in results:
        share = results["e"]["first_ms"] / results["d"]["first_ms"]
        text += f" The first sample takes {share:.2f} times as long without Cues as with them."
    return text


def memory(found):
    above = found["above_rings"] / MEBIBYTE
    return table(["d, bytes resident", "MiB"], [
        ["before", f"{found['start_bytes'] / MEBIBYTE:.1f}"],
        ["peak", f"{found['peak_bytes'] / MEBIBYTE:.1f}"],
        ["of it the rings' touched pages", f"{found['ring_bytes'] / MEBIBYTE:.1f}"],
        ["peak above the rings", against(above, limits.PEAK_ABOVE_RINGS / MEBIBYTE, "{:.1f}")],
    ])


def scale_blocks(found):
    rows = [[f"{one['count']:,}", f"{one['wall_ms']:.1f}", f"{one['user_ms'] * 1e6 / one['count']:.0f}",
             f"{one['peak_bytes'] / MEBIBYTE:.1f}"] for one in found]
    large = [one for one in found if one["count"] >= 10**5]
    text = table(["blocks", "wall, ms", "user CPU a block, ns", "peak, MiB"], rows)
    if len(large) < 2:
        return text
    fit = slope([(one["count"], one["user_ms"]) for one in large])
    return text + f"\n\nUser CPU grows with the blocks to the power of {against(fit, limits.STEEPEST)} from 100,000 on."


def index_bytes(found):
    """What an entry more costs the heap, from the two largest files: with them all buffers have grown."""
    first, last = found[-2:]
    return (last["heap_bytes"] - first["heap_bytes"]) / (last["count"] - first["count"])


def scale_cues(found):
    rows = [[f"{one['count']:,}", f"{one['open_ms']:.2f}", f"{one['seek_ms']:.3f}",
             f"{one['heap_bytes'] / MEBIBYTE:.2f}", f"{one['peak_bytes'] / MEBIBYTE:.1f}"] for one in found]
    text = table(["cue points", "opening, ms", "seeks, median ms", "heap, MiB", "peak, MiB"], rows)
    large = [one for one in found if one["count"] >= 10**4]
    if len(large) < 2:
        return text
    fit = slope([(one["count"], one["open_ms"]) for one in large])
    growth = against(fit, limits.STEEPEST)
    text += f"\n\nOpening grows with the cue points to the power of {growth} from 10,000 on"
    if found[-1]["count"] < INDEX_JUDGED_FROM:
        return text + "."
    entry = against(index_bytes(found), limits.INDEX_BYTES_AN_ENTRY, "{:.1f}")
    return text + f"; an entry costs {entry} bytes of heap."


def starts_note(starts, rounds):
    parts = ", ".join(f"{name} {value:.0f} ms" for name, value in starts.items())
    return (f"Wall milliseconds, median (least); rounds made: {rounds}. Times are taken inside the process, except of "
            f"these, whose process start is in them: {parts} on a file of a second.")


def whole(figures, corpus):
    """`figures` holds what was measured, by section; a missing section is left out."""
    parts = [figures["about"]]
    if "demux" in figures:
        found = figures["demux"]
        parts += ["### Whole passes, natively", demux_times(found), starts_note(figures["starts"], rounds_of(found)),
                  "### Ours as a share of theirs (medians)", demux_ratios(found), demux_cpu(found),
                  demux_reads(found, corpus), from_ffmpeg(found), on_one_file(found)]
    if "wine" in figures:
        parts += ["### The module in the platform's graph, under Wine", wine_times(figures["wine"]),
                  f"Medians; rounds made: {rounds_of(figures['wine'])}."]
    if "wine_search" in figures:
        found = figures["wine_search"]
        first = against(found["first_seek_ms"], limits.SEARCH_MS_WINE, "{:.1f}")
        reads = against(found["first_seek_reads"], limits.SEARCH_READS, "{:.0f}")
        parts += [f"The first seek in e takes {first} ms and {reads} reads under Wine."]
    if "opening" in figures:
        parts += ["### Opening and seeking", opening(figures["opening"])]
    if "memory" in figures:
        parts += ["### Memory", memory(figures["memory"])]
    if "scale" in figures:
        parts += ["### Scale", scale_blocks(figures["scale"]["blocks"]), scale_cues(figures["scale"]["cues"])]
    return "\n\n".join(part for part in parts if part) + "\n"
