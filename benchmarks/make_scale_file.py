#!/usr/bin/env python3
"""Writes a Matroska file of any number of blocks or cue points, for measuring how cost grows.

usage: make_scale_file.py FILE blocks COUNT   COUNT blocks of 16 bytes, 1,000 a cluster, 10 cue points
       make_scale_file.py FILE cues COUNT     COUNT clusters of one block, a cue point for each
"""
import sys

CLUSTER_BLOCKS = 1000
FRAME = bytes(range(16))
BLOCK_MILLISECONDS = 1


def size_of(length, width=8):
    """An element's size field of this many bytes."""
    return ((1 << (7 * width)) | length).to_bytes(width, "big")


def element(identifier, data, width=8):
    return bytes.fromhex(identifier) + size_of(len(data), width) + data


def unsigned(identifier, value, length=8):
    return element(identifier, value.to_bytes(length, "big"), 1)


def header():
    return element("1A45DFA3", element("4282", b"matroska", 1) + unsigned("4287", 4, 1) + unsigned("4285", 2, 1))


def tracks():
    audio = element("E1", element("B5", bytes.fromhex("40E7700000000000"), 1) + unsigned("9F", 2, 1))
    entry = (unsigned("D7", 1, 1) + unsigned("73C5", 1, 1) + unsigned("83", 2, 1) + element("86", b"A_MPEG/L3", 1)
             + audio)
    return element("1654AE6B", element("AE", entry))


def info(milliseconds):
    import struct
    return element("1549A966", unsigned("2AD7B1", 1000000, 4) + element("4489", struct.pack(">d", milliseconds), 1)
                   + element("4D80", b"make_scale_file", 1) + element("5741", b"make_scale_file", 1))


def seek_head(cues_position):
    seek = element("53AB", bytes.fromhex("1C53BB6B"), 1) + unsigned("53AC", cues_position)
    return element("114D9B74", element("4DBB", seek))


def blocks_of(count):
    """The SimpleBlocks of a cluster: they are the same in every one."""
    return b"".join(element("A3", b"\x81" + (k * BLOCK_MILLISECONDS).to_bytes(2, "big") + b"\x80" + FRAME, 1)
                    for k in range(count))


def cue_point(time, position):
    return element("BB", unsigned("B3", time) + element("B7", unsigned("F7", 1, 1) + unsigned("F1", position), 1), 1)


def write_file(path, blocks, blocks_each, cue_count):
    clusters = -(-blocks // blocks_each)
    cue_step = max(1, clusters // cue_count)
    body = blocks_of(blocks_each)
    cluster_head = bytes.fromhex("1F43B675")
    milliseconds = blocks * BLOCK_MILLISECONDS
    head = info(milliseconds) + tracks()
    first_cluster = len(seek_head(0)) + len(head)
    cluster_bytes = len(cluster_head) + 8 + 10 + len(body)
    cues = element("1C53BB6B", b"".join(
        cue_point(k * blocks_each * BLOCK_MILLISECONDS, first_cluster + k * cluster_bytes)
        for k in range(0, clusters, cue_step)))
    cues_position = first_cluster + clusters * cluster_bytes
    with open(path, "wb") as file:
        file.write(header() + bytes.fromhex("18538067") + size_of(cues_position + len(cues)))
        file.write(seek_head(cues_position) + head)
        for k in range(clusters):
            time = unsigned("E7", k * blocks_each * BLOCK_MILLISECONDS)
            file.write(cluster_head + size_of(len(time) + len(body)) + time + body)
        file.write(cues)


def main():
    if len(sys.argv) != 4 or sys.argv[2] not in ("blocks", "cues"):
        sys.exit(__doc__)
    path, kind, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    if kind == "blocks":
        write_file(path, count, CLUSTER_BLOCKS, 10)
    else:
        write_file(path, count, 1, count)


if __name__ == "__main__":
    main()
