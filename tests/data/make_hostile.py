"""Writes hostile.mkv: a file in order whose texts are what a terminal would obey, and longer than any line.

Usage: make_hostile.py OUTPUT
"""

import sys

from make_sample import element, number, seek_head, text, track

CONTROLS = "".join(map(chr, [*range(1, 32), 127]))
# The eight-bit form of ESC [, what turns the direction of writing, separators of lines, a byte order mark.
MARKS = "\u009b31m \u061c\u200e\u202e\u2028\u2066\ufeff"


def chapter(uid, start, name, end):
    return element("B6", number("73C4", uid), number("91", start), number("92", end), element("80", element("85", name)))


tracks = element(
    "1654AE6B",
    track(1, 1, "V_VP8", text("22B59C", "und"), element("536E", b'\x1b]0;"title"\x07\\'),
          element("E0", number("B0", 16), number("BA", 16))),
    track(2, 2, "A_TTA1", element("63A2", b"\1"), text("22B59C", "fre"), element("536E", b"[German] " + CONTROLS.encode())),
    track(3, 2, "A_TTA1", element("63A2", b"\1"), text("22B59C", "deu"), element("536E", MARKS.encode())),
    track(4, 2, "A_TTA1", element("63A2", b"\1"), text("22B59C", "nob"), element("536E", b"cut \xe6\x97 \xc0\x8a \xff")),
    track(5, 17, "S_TEXT/UTF8", element("22B59C", b"\xe4\xff\x1b"), element("536E", "\u00fc".encode() * 600)),
)
# Read in code page 1252, where 81 is the control character U+0081.
chapters = element("1043A770", element(
    "45B9", chapter(1, 0, b"\x1b[2J\r\n\x81", 5 * 10**8), chapter(2, 36_610_019_999 * 100, b"late", 2**62),
    chapter(3, 2**63 + 10**8, b"far", 0)))
info = element("1549A966", number("2AD7B1", 10**6))
blocks = [element("A3", bytes([0x80 | k, 0, 0, 0x80]), bytes(k)) for k in range(1, 6)]
cluster = element("1F43B675", number("E7", 0), *blocks)
body = info + tracks + cluster
segment = seek_head([("1043A770", len(seek_head([("1043A770", 0)])) + len(body))]) + body + chapters
with open(sys.argv[1], "wb") as file:
    file.write(element("1A45DFA3", element("4282", b"matroska")) + element("18538067", segment))
