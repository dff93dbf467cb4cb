#!/usr/bin/env python3
"""Makes the rows of the language table from the published ISO 639-2 list.

Usage: make_language_rows.py iso639-2.csv language_rows.inc

One row per three-letter code, in alphabetical order of the English name, the bibliographic code before
the terminology code. Of several published names the first is kept, since that is what locales call the
language. Text becomes code page 1252, written as escapes; a character it lacks becomes "?".
"""
import csv
import sys


def first_name(names):
    return names.split(";")[0].strip()


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


def main():
    source, target = sys.argv[1:]
    rows = [row for _, row in sorted(read_rows(source))]
    codes = [row[3] for row in rows]
    if not rows or len(set(codes)) != len(codes):
        sys.exit(f"{source}: no rows, or a code that is there twice")
    with open(target, "w", encoding="ascii", newline="\n") as file:
        for row in rows:
            file.write("    {%s},\n" % ", ".join(literal(column) for column in row))


if __name__ == "__main__":
    main()
