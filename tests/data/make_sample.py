"""Writes sample.mkv from raw pictures and two MP3 streams.

Usage: make_sample.py PICTURES WIDTH HEIGHT RATE MP3 MP3 OUTPUT

The pictures are UYVY, the one form that Wine's renderer takes from a V_MS/VFW/FOURCC track as
DirectShow describes it; they are stored zlib-compressed, each on its own.
"""

import struct
import sys
import zlib

CHAPTERS = [(0, 2500, "First half"), (2500, 5000, "Second half")]
TITLES = [(500, 2300, "Tarvex Matroska Splitter"), (2600, 4800, "One picture, two sounds, one subtitle")]
VIDEO, AUDIO, SUBTITLE, SECOND_AUDIO = 1, 2, 3, 4


def element(identifier, *parts):
    body = b"".join(parts)
    return bytes.fromhex(identifier) + struct.pack(">Q", len(body) | 1 << 56) + body


def short(identifier, body):
    """An element with a one-byte size, for small bodies."""
    return bytes.fromhex(identifier) + bytes([0x80 | len(body)]) + body


def number(identifier, value):
    return short(identifier, value.to_bytes(max(1, (value.bit_length() + 7) // 8), "big"))


def text(identifier, value):
    return short(identifier, value.encode())


def real(identifier, value):
    return short(identifier, struct.pack(">d", value))


def mp3_frames(data):
    """MPEG-1 layer 3 frames; the sizes come from their headers."""
    rates = [0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320]
    at = 0
    while at + 4 <= len(data):
        if data[at] != 0xFF or data[at + 1] & 0xFE != 0xFA:
            raise SystemExit(f"no MP3 frame at {at}")
        size = 144000 * rates[data[at + 2] >> 4] // 44100 + (data[at + 2] >> 1 & 1)
        yield data[at : at + size]
        at += size


def track(number_, kind, codec, *parts):
    return element("AE", number("D7", number_), number("73C5", number_), number("83", kind), text("86", codec), *parts)


def sound(number_, language, name):
    return track(number_, 2, "A_MPEG/L3", text("22B59C", language), text("536E", name),
                 element("E1", real("B5", 44100.0), number("9F", 1)))


def tracks(width, height, rate):
    bitmap = struct.pack("<IiiHH4sIiiII", 40, width, height, 1, 16, b"UYVY", width * height * 2, 0, 0, 0, 0)
    zlib_encoding = element("6D80", element("6240", element("5034", number("4254", 0))))
    return element(
        "1654AE6B",
        track(VIDEO, 1, "V_MS/VFW/FOURCC", short("63A2", bitmap), number("23E383", 10**9 // rate), text("22B59C", "und"),
              element("E0", number("B0", width), number("BA", height)), zlib_encoding),
        sound(AUDIO, "eng", "Low tone"),
        track(SUBTITLE, 17, "S_TEXT/UTF8", text("22B59C", "eng")),
        sound(SECOND_AUDIO, "ger", "High tone"),
    )


def chapters():
    atoms = [
        element("B6", number("73C4", uid), number("91", start * 10**6), number("92", end * 10**6),
                element("80", text("85", name), text("437C", "eng")))
        for uid, (start, end, name) in enumerate(CHAPTERS, 1)
    ]
    return element("1043A770", element("45B9", *atoms))


def frames(pictures, picture_size, rate, sounds):
    """(time in milliseconds, track, payload, duration or None), by time."""
    for index in range(len(pictures) // picture_size):
        picture = pictures[index * picture_size : (index + 1) * picture_size]
        yield index * 1000 // rate, VIDEO, zlib.compress(picture, 9), None
    for track_number, mp3 in sounds.items():
        for index, frame in enumerate(mp3_frames(mp3)):
            yield index * 1152 * 1000 // 44100, track_number, frame, None
    for start, end, line in TITLES:
        yield start, SUBTITLE, line.encode(), end - start


def block(cluster_time, time, number_, payload, duration):
    header = bytes([0x80 | number_]) + struct.pack(">h", time - cluster_time)
    if duration is None:
        return element("A3", header, b"\x80", payload)
    return element("A0", element("A1", header, b"\x00", payload), number("9B", duration))


def clusters(all_frames):
    """One cluster for each second: (time, bytes)."""
    for second in range(max(frame[0] for frame in all_frames) // 1000 + 1):
        time = second * 1000
        blocks = [block(time, *frame) for frame in all_frames if frame[0] // 1000 == second]
        yield time, element("1F43B675", number("E7", time), *blocks)


def seek_head(positions):
    """Entries have a fixed size, so the head can be made again when the positions are known."""
    return element(
        "114D9B74",
        *[element("4DBB", short("53AB", bytes.fromhex(i)), short("53AC", struct.pack(">Q", p))) for i, p in positions],
    )


def cues(entries):
    return element(
        "1C53BB6B",
        *[element("BB", number("B3", time), element("B7", number("F7", VIDEO), number("F1", at))) for time, at in entries],
    )


def main():
    pictures_path, width, height, rate, low_path, high_path, output = sys.argv[1:]
    width, height, rate = int(width), int(height), int(rate)
    with open(pictures_path, "rb") as file:
        pictures = file.read()
    sounds = {}
    for track_number, path in ((AUDIO, low_path), (SECOND_AUDIO, high_path)):
        with open(path, "rb") as file:
            sounds[track_number] = file.read()
    all_frames = sorted(frames(pictures, width * height * 2, rate, sounds), key=lambda frame: frame[:2])
    names = text("7BA9", "Tarvex sample") + text("4D80", "make_sample") + text("5741", "make_sample")
    parts = [
        ("1549A966", element("1549A966", number("2AD7B1", 10**6), real("4489", 5000.0), names)),
        ("1654AE6B", tracks(width, height, rate)),
        ("1043A770", chapters()),
    ]
    head_size = len(seek_head([(i, 0) for i, _ in parts] + [("1C53BB6B", 0)]))
    positions, at = [], head_size
    for identifier, body in parts:
        positions.append((identifier, at))
        at += len(body)
    entries, data = [], b""
    for time, cluster in clusters(all_frames):
        entries.append((time, at + len(data)))
        data += cluster
    positions.append(("1C53BB6B", at + len(data)))
    ebml = element("1A45DFA3", number("4286", 1), number("42F7", 1), number("42F2", 4), number("42F3", 8),
                   text("4282", "matroska"), number("4287", 4), number("4285", 2))
    segment = element("18538067", seek_head(positions), *[body for _, body in parts], data, cues(entries))
    with open(output, "wb") as file:
        file.write(ebml + segment)


if __name__ == "__main__":
    main()
