#!/usr/bin/env python3
"""Makes the rows of the language table from the published ISO 639-2 list.

Usage: make_language_rows.py iso639-2.csv language_rows.inc other_names.inc

One row per three-letter code, in alphabetical order of the English name, the bibliographic code before
the terminology code. Of several published names the first is kept, since that is what most locales call the
language. The others are listed apart, each with the first code of its language. Text becomes code page 1252,
written as escapes; a character it lacks becomes "?".
"""
import csv
import re
import sys


# What locales call languages that the list has under a longer name only.
LOCALE_NAMES = {"gre": ["Greek"], "khm": ["Khmer"]}


def split_names(names):
    return [name.strip() for name in names.split(";")]


def first_name(names):
    return split_names(names)[0]


def other_names(names, code):
    """The published ones behind the first, all without what stands in brackets, and what locales say."""
    published = split_names(names)
    plain = [re.sub(r" *\([^)]*\)$", "", name) for name in published]
    return [name for name in published[1:] + plain + LOCALE_NAMES.get(code, []) if name != published[0]]


def literal(text):
    data = text.encode("cp1252", errors="replace")
    plain = (chr(b) if 32 <= b < 127 and chr(b) not in '"\\?' else "\\%03o" % b for b in data)
    return '"%s"' % "".join(plain)


def read_rows(path):
    with open(path, encoding="utf-8-sig", newline="") as file:
        for entry in csv.DictReader(file):
            english, french = first_name(entry["English"]), first_name(entry["French"])
            codes = (entry["alpha3-b"].strip(), entry["alpha3-t"].strip())
            for place, code in enumerate(codes):
                if code:
                    yield (english.casefold(), codes[0], place), (english, english, french, code, entry["alpha2"].strip())


def read_other_names(path, taken):
    """In order of the names. None of those in `taken`, and none twice: they would lead to two languages."""
    found = {}
    with open(path, encoding="utf-8-sig", newline="") as file:
        for entry in csv.DictReader(file):
            code = entry["alpha3-b"].strip()
            for name in other_names(entry["English"], code):
                found.setdefault(name, set()).add(code)
    return sorted((name, *codes) for name, codes in found.items() if len(codes) == 1 and name not in taken)


def write(path, rows):
    with open(path, "w", encoding="ascii", newline="\n") as file:
        for row in rows:
            file.write("    {%s},\n" % ", ".join(literal(column) for column in row))


def main():
    source, table, others = sys.argv[1:]
    rows = [row for _, row in sorted(read_rows(source))]
    codes = [row[3] for row in rows]
    if not rows or len(set(codes)) != len(codes):
        sys.exit(f"{source}: no rows, or a code that is there twice")
    write(table, rows)
    write(others, read_other_names(source, {row[0] for row in rows}))


if __name__ == "__main__":
    main()
