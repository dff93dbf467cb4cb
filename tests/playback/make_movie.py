"""Writes a movie with pictures of a Video for Windows codec and MP3 sound.

Usage: make_movie.py FOURCC BITS WIDTH HEIGHT RATE PACKETS MP3 OUTPUT

PACKETS is a folder with one file for each picture, named in their order. All pictures are key frames.
"""

import os
import struct
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "data"))
from make_sample import AUDIO, VIDEO, clusters, element, mp3_frames, number, real, short, sound, text, track  # noqa: E402


def main():
    fourcc, bits, width, height, rate, packets, mp3, output = sys.argv[1:]
    bits, width, height, rate = int(bits), int(width), int(height), int(rate)
    bitmap = struct.pack("<IiiHH4sIiiII", 40, width, height, 1, bits, fourcc.encode(), 0, 0, 0, 0, 0)
    all_frames = []
    for index, name in enumerate(sorted(os.listdir(packets))):
        with open(os.path.join(packets, name), "rb") as file:
            all_frames.append((index * 1000 // rate, VIDEO, file.read(), None))
    duration = 1000.0 * len(all_frames) / rate
    with open(mp3, "rb") as file:
        for index, frame in enumerate(mp3_frames(file.read())):
            all_frames.append((index * 1152 * 1000 // 44100, AUDIO, frame, None))
    all_frames.sort(key=lambda frame: frame[:2])
    video = track(VIDEO, 1, "V_MS/VFW/FOURCC", short("63A2", bitmap), number("23E383", 10**9 // rate),
                  element("E0", number("B0", width), number("BA", height)))
    header = element("1A45DFA3", text("4282", "matroska"), number("4287", 4), number("4285", 2))
    segment = [
        element("1549A966", number("2AD7B1", 10**6), real("4489", duration)),
        element("1654AE6B", video, sound(AUDIO, "eng", "Tone")),
        *[data for _, data in clusters(all_frames)],
    ]
    with open(output, "wb") as file:
        file.write(header + element("18538067", *segment))


main()
