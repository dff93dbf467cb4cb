#!/usr/bin/env python3
"""Chooses the corpus files that the repository keeps and writes them with a reduced manifest.

    choose_corpus.py CORPUS [--budget BYTES]

CORPUS is a folder with manifest.json, real.tsv and the files. The choice is written to the folder
"corpus" beside this script, replacing what was chosen before. First a cover: the smallest files that
together show every trait (codec, lacing, compression, damage, refusal, ...). Then what else fits the
budget, smallest first.
"""

import argparse
import json
import os
import re
import shutil
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
TARGET = HERE / "corpus"
BUDGET = 5 * 1024 * 1024 - 256 * 1024  # room for licences and for a sample beside the corpus
# Bulk that the tests do not read.
DROPPED = ("chapters_in_file",)


def track_traits(track):
    codec = track.get("codec_id", "")
    private = track.get("codec_private")
    yield f"codec {track.get('type')} {codec}"
    yield f"codec {codec} private {private is not None}"
    compression = track.get("compression")
    if compression:
        yield f"compression {compression['algo']} settings {compression['settings'] is not None}"
    for field in ("display_width", "default_duration_ns", "channels", "bit_depth"):
        yield f"has {field}: {track.get(field) is not None}"
    yield f"language of {len(track.get('language', ''))} letters, name {track.get('name', '').isascii()}"
    if track.get("type") == 17:
        yield f"flags {track.get('default')} {track.get('forced')}"
    avcc = track.get("avcc")
    if avcc:
        yield f"avcc {avcc['nal_length_size']} {min(avcc['sps'], 2)} {min(avcc['pps'], 2)}"
    if track.get("name") == "No Subtitles":
        yield "placeholder name"


def chapter_traits(chapters):
    yield f"chapters: {len(chapters) > 0}"
    for row in chapters:
        yield f"chapter name {row['name'] != ''} {row['name'].isascii()}, end {row['end'] != 0}"


def order(level1):
    """The elements whose order matters to a reader, runs taken as one."""
    names = re.findall("SeekHead|Info|Tracks|Chapters|Cluster[?]?|Cues|junk|CRC", level1)
    return " ".join(name for name, before in zip(names, [""] + names) if name != before)


def frame_traits(frames):
    for track in frames.values():
        if "decoding_differs_from_format" in track:
            yield "decoding differs from the format"
        if "no_track_entry" in track:
            yield "frames without a track"
        rows = track.get("frames", [])
        if any(row[0] < 0 for row in rows):
            yield "negative time"
        if any(row[3] == 0 for row in rows):
            yield "empty frame"
        if any(row[3] > 65536 for row in rows):
            yield "large frame"


def traits(name, entry):
    expect = entry["expect"]
    yield f"open {expect['open']} {expect.get('message')}"
    yield f"frames {expect.get('frames')}"
    yield f"headers {expect.get('headers_read')}"
    yield from chapter_traits(expect.get("chapters", []))
    yield f"doc type {entry.get('doc_type')}"
    yield f"robustness {entry.get('robustness', False)}"
    for question in expect.get("questions", []):
        yield f"question {question}"
    if "disputed" in entry:
        yield f"disputed {entry['disputed']}"
    numbers = [track.get("number") or 0 for track in entry.get("tracks", [])]
    yield f"track numbers rise {numbers == sorted(set(numbers))}, without gaps {numbers == list(range(1, len(numbers) + 1))}"
    if "level1" in entry:
        yield f"order {order(entry['level1'])}"
        yield f"void {'Void' in entry['level1']}"
        yield f"scale {entry['timecode_scale'] in (0, 1000000) or 'another'}"
        index = expect.get("seek_index", {})
        yield f"index {index.get('source')} {min(index.get('count', 0), 2)}"
        yield f"blocks {entry['simple_blocks'] > 0} {entry['block_groups'] > 0}"
    # In these families each case stands for one rule and often differs in nothing else that shows here.
    if re.match("gen/(enc|lace|truncated|private|segment_size|cues|relative)_|gen/.*(_huge|_edges|_in_clusters)|.*bad_lace", name):
        yield f"case {name}"
    if name.startswith("real/"):
        yield f"real {name.split('/')[1]}"
    for track in entry.get("tracks", []):
        yield from track_traits(track)
    yield from frame_traits(entry.get("frames", {}))


def line_of(name, entry):
    kept = {key: value for key, value in entry.items() if key not in DROPPED}
    return f"{json.dumps(name)}: {json.dumps(kept, separators=(',', ':'))}"


def choose(files, budget):
    shown = {name: set(traits(name, entry)) for name, entry in files.items()}
    cost = {name: entry["size"] + len(line_of(name, entry)) for name, entry in files.items()}
    missing = set().union(*shown.values())
    chosen, spent = [], 0
    while missing:
        name = max(shown, key=lambda n: (len(shown[n] & missing) / (cost[n] + 2000), n))
        missing -= shown[name]
        chosen.append(name)
        spent += cost[name]
    if spent > budget:
        sys.exit(f"the cover alone takes {spent} bytes")
    for name in sorted(set(files) - set(chosen), key=lambda n: (cost[n], n)):
        if spent + cost[name] > budget:
            continue
        chosen.append(name)
        spent += cost[name]
    return sorted(chosen), spent


def write(corpus, manifest, chosen):
    for folder in ("gen", "real"):
        shutil.rmtree(TARGET / folder, ignore_errors=True)
    for name in chosen:
        (TARGET / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(corpus / name, TARGET / name)
    with open(TARGET / "manifest.json", "w", encoding="ascii", newline="\n") as out:
        out.write('{"about": ' + json.dumps(manifest["about"], indent=1) + ',\n"files": {\n')
        out.write(",\n".join(line_of(name, manifest["files"][name]) for name in chosen))
        out.write("\n}}\n")
    with open(corpus / "real.tsv", encoding="utf-8") as rows, open(TARGET / "real.tsv", "w", encoding="utf-8") as out:
        out.writelines(row for row in rows if row.split("\t")[0] in chosen)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("corpus", type=Path)
    parser.add_argument("--budget", type=int, default=BUDGET)
    options = parser.parse_args()
    manifest = json.loads((options.corpus / "manifest.json").read_text(encoding="utf-8"))
    missing = [name for name in manifest["files"] if not os.path.exists(options.corpus / name)]
    if missing:
        sys.exit(f"not in the corpus: {', '.join(missing)}")
    chosen, spent = choose(manifest["files"], options.budget)
    write(options.corpus, manifest, chosen)
    print(f"{len(chosen)} of {len(manifest['files'])} files, {spent} bytes with the manifest")


if __name__ == "__main__":
    main()
