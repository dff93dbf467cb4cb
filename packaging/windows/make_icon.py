"""Draws the icon of the installed programs' list: one stream in, three out. Usage: make_icon.py OUTPUT

Plain bitmaps with transparency, which every Windows reads, in the sizes that it asks for at 100 to 200 %.
The same bytes everywhere.
"""

import struct
import sys

SIZES = (16, 20, 24, 32, 40, 48, 64)
SAMPLES = 4  # for each pixel and direction
GROUND, STREAM = (0x6B, 0x4A, 0x1F), (0xFF, 0xFF, 0xFF)  # blue, green, red


def in_ground(x, y):
    """A square with round corners. Coordinates run from 0 to 1."""
    radius = 0.18
    dx = max(radius - x, x - (1 - radius), 0)
    dy = max(radius - y, y - (1 - radius), 0)
    return dx * dx + dy * dy <= radius * radius


def in_stream(x, y):
    """A bar from the left that parts into three."""
    half = 0.055
    if not 0.12 <= x <= 0.88:
        return False
    if x < 0.40:
        return abs(y - 0.5) <= half
    spread = 0.27 * min((x - 0.40) / 0.22, 1.0)
    return any(abs(y - centre) <= half for centre in (0.5 - spread, 0.5, 0.5 + spread))


def pixel(column, row, size):
    """Blue, green, red and opacity of one pixel, averaged over its samples."""
    grounds = streams = 0
    for step in range(SAMPLES * SAMPLES):
        x = (column + (step % SAMPLES + 0.5) / SAMPLES) / size
        y = (row + (step // SAMPLES + 0.5) / SAMPLES) / size
        if in_ground(x, y):
            grounds += 1
            streams += in_stream(x, y)
    if grounds == 0:
        return bytes(4)
    mixed = ((a * (grounds - streams) + b * streams) // grounds for a, b in zip(GROUND, STREAM))
    return bytes((*mixed, 255 * grounds // SAMPLES**2))


def bitmap(size):
    """As in an icon file: twice the height for the mask, which is empty; rows from the bottom."""
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    rows = b"".join(pixel(x, y, size) for y in reversed(range(size)) for x in range(size))
    return header + rows + bytes((size + 31) // 32 * 4 * size)


def main():
    images = [bitmap(size) for size in SIZES]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, image in zip(SIZES, images):
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    with open(sys.argv[1], "wb") as file:
        file.write(directory + b"".join(images))


main()
