#!/usr/bin/env python3
"""Draws the about page's images, logo.ico and file.ico, beside this script.

Run it after changing a drawing and commit the result; the build does not run it. Needs Python alone. Each
image is drawn once for every size, from distances to its outlines, so that edges stay sharp at all
screen scalings. Every entry of an icon is a PNG.
"""

import math
import pathlib
import struct
import zlib

LOGO_SIZES = (64, 80, 96, 128, 192)
FILE_SIZES = (32, 40, 48, 64, 96)

INK = (23, 43, 77)
DEEP = (21, 82, 138)
WHITE = (255, 255, 255)
PALE = (226, 235, 245)
VIDEO = (255, 196, 61)
SOUND = (94, 214, 170)
TEXT = (255, 128, 108)


def rounded_box(x, y, left, top, right, bottom, radius):
    """Signed distance to a box with round corners, negative inside. Units are the image's side."""
    dx = abs(x - (left + right) / 2) - (right - left) / 2 + radius
    dy = abs(y - (top + bottom) / 2) - (bottom - top) / 2 + radius
    return math.hypot(max(dx, 0), max(dy, 0)) + min(max(dx, dy), 0) - radius


def disc(x, y, cx, cy, radius):
    return math.hypot(x - cx, y - cy) - radius


def stroke(x, y, points, width):
    """Signed distance to a thick line through the points."""
    best = math.inf
    for (ax, ay), (bx, by) in zip(points, points[1:]):
        length = (bx - ax) ** 2 + (by - ay) ** 2
        along = max(0, min(1, ((x - ax) * (bx - ax) + (y - ay) * (by - ay)) / length))
        best = min(best, math.hypot(x - ax - along * (bx - ax), y - ay - along * (by - ay)))
    return best - width / 2


def polygon(x, y, points):
    """Signed distance to a convex polygon, whose points go clockwise."""
    worst = -math.inf
    for (ax, ay), (bx, by) in zip(points, points[1:] + points[:1]):
        worst = max(worst, ((x - ax) * (by - ay) - (y - ay) * (bx - ax)) / math.hypot(bx - ax, by - ay))
    return worst


def branch(y_end):
    """From the incoming line's end to a stream's end, in a soft S."""
    start, end = (0.36, 0.5), (0.72, y_end)
    return [
        (start[0] + t * (end[0] - start[0]), start[1] + (end[1] - start[1]) * (1 - math.cos(math.pi * t)) / 2)
        for t in (k / 12 for k in range(13))
    ]


BRANCHES = [branch(y) for y in (0.27, 0.5, 0.73)]


def logo(x, y):
    """One line comes in, three streams go out. Yields distance and colour, from back to front."""
    shade = tuple(round(a + (b - a) * y) for a, b in zip(DEEP, INK))
    yield rounded_box(x, y, 0.02, 0.02, 0.98, 0.98, 0.2), shade
    yield stroke(x, y, [(0.15, 0.5), (0.37, 0.5)], 0.11), WHITE
    for points in BRANCHES:
        yield stroke(x, y, points, 0.06), WHITE
    for cy, colour in ((0.27, VIDEO), (0.5, SOUND), (0.73, TEXT)):
        yield disc(x, y, 0.76, cy, 0.095), colour


def file(x, y):
    """A sheet of paper with a corner turned down, and a sign for playing."""
    fold = 0.24
    sheet = max(rounded_box(x, y, 0.16, 0.03, 0.84, 0.97, 0.07), (x - y - (0.84 - fold - 0.03)) / math.sqrt(2))
    yield sheet, DEEP
    yield sheet + 0.05, PALE
    yield max(sheet, polygon(x, y, [(0.84 - fold, 0.03), (0.84, 0.03 + fold), (0.84 - fold, 0.03 + fold)])), DEEP
    yield polygon(x, y, [(0.37, 0.38), (0.70, 0.58), (0.37, 0.78)]), DEEP


def draw(picture, side):
    """Rows of RGBA bytes: each shape covers a pixel by how far its edge is from the pixel's centre."""
    rows = []
    for row in range(side):
        line = bytearray()
        for column in range(side):
            red = green = blue = alpha = 0.0
            for distance, colour in picture((column + 0.5) / side, (row + 0.5) / side):
                cover = max(0.0, min(1.0, 0.5 - distance * side))
                red, green, blue = (c * cover + old * (1 - cover) for c, old in zip(colour, (red, green, blue)))
                alpha = cover + alpha * (1 - cover)
            unpremultiplied = [round(c / alpha) if alpha else 0 for c in (red, green, blue)]
            line += bytes(unpremultiplied + [round(alpha * 255)])
        rows.append(bytes(line))
    return rows


def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def png(rows):
    """The smaller of two ways to write the rows: as they are, or each as its difference from the last."""
    side = len(rows)
    above = [bytes(len(rows[0]))] + rows
    plain = b"".join(b"\0" + row for row in rows)
    changes = b"".join(b"\2" + bytes((a - b) & 255 for a, b in zip(row, up)) for row, up in zip(rows, above))
    data = min((zlib.compress(raw, 9) for raw in (plain, changes)), key=len)
    header = struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", data) + chunk(b"IEND", b"")


def icon(images):
    """A directory of the entries, and the entries. `images` are pairs of side and bytes."""
    entries = b""
    offset = 6 + 16 * len(images)
    for side, data in images:
        entries += struct.pack("<BBBBHHII", side % 256, side % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return struct.pack("<HHH", 0, 1, len(images)) + entries + b"".join(data for _, data in images)


def main():
    folder = pathlib.Path(__file__).parent
    for name, picture, sizes in (("logo", logo, LOGO_SIZES), ("file", file, FILE_SIZES)):
        images = [(side, png(draw(picture, side))) for side in sizes]
        (folder / f"{name}.ico").write_bytes(icon(images))


if __name__ == "__main__":
    main()
