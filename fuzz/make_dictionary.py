"""Prints a libFuzzer dictionary of the element identifiers that the scanner's tests name, and of sizes.

Usage: make_dictionary.py tests/support/ebml_writer.h > fuzz/matroska.dict
"""

import re
import sys


def entry(name, data):
    return f'{name}="' + "".join(f"\\x{byte:02X}" for byte in data) + '"'


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        identifiers = re.findall(r"\bk(\w+) = 0x([0-9A-F]+)", file.read())
    print("# Element identifiers, then element sizes. Made by make_dictionary.py.")
    for name, digits in identifiers:
        print(entry(name, bytes.fromhex(digits)))
    for name, digits in [("empty", "80"), ("unknown", "FF"), ("unknown8", "01FFFFFFFFFFFFFF"), ("huge", "01000000FFFFFFFF"),
                         ("magic", "1A45DFA3"), ("matroska", b"matroska".hex()), ("webm", b"webm".hex()),
                         ("signed_minimum", "8000"), ("codec", b"V_MPEG4/ISO/AVC".hex())]:
        print(entry(name, bytes.fromhex(digits)))


main()
