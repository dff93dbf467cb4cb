"""Writes the three manifests by which winget finds the installers.

Usage: winget.py VERSION DATE HOMEPAGE DOWNLOADS FOLDER, where FOLDER holds the installers and gets the manifests.
"""

import hashlib
import os
import subprocess
import sys

IDENTIFIER = "Tarvex.MatroskaSplitter"
SCHEMA = "1.6.0"


def digest(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest().upper()


def product_code(path):
    rows = subprocess.run(["msiinfo", "export", path, "Property"], check=True, capture_output=True, text=True).stdout
    return next(row.split("\t")[1].strip() for row in rows.splitlines() if row.startswith("ProductCode\t"))


def manifest(kind, version, *lines):
    schema = f"# yaml-language-server: $schema=https://aka.ms/winget-manifest.{kind}.{SCHEMA}.schema.json"
    head = (f"PackageIdentifier: {IDENTIFIER}", f"PackageVersion: {version}")
    tail = (f"ManifestType: {kind}", f"ManifestVersion: {SCHEMA}")
    return "\n".join((schema, *head, *lines, *tail)) + "\n"


def installer(version, date, downloads, folder):
    lines = ["InstallerType: msi", "Scope: machine", "MinimumOSVersion: 10.0.0.0", "UpgradeBehavior: install",
             "FileExtensions: [mkv, mka, mks, webm]", f"ReleaseDate: '{date}'", "Installers:"]
    for arch in ("x64", "x86"):
        name = f"tarvex-{version}-{arch}.msi"
        path = os.path.join(folder, name)
        lines += [f"- Architecture: {arch}", f"  InstallerUrl: {downloads}/{version}/{name}",
                  f"  InstallerSha256: {digest(path)}", f"  ProductCode: '{product_code(path)}'"]
    return manifest("installer", version, *lines)


def locale(version, homepage):
    return manifest(
        "defaultLocale", version, "PackageLocale: en-US", "Publisher: Tarvex", f"PublisherUrl: {homepage}",
        "PackageName: Tarvex Matroska Splitter", f"PackageUrl: {homepage}", "License: LGPL-2.1-or-later",
        "ShortDescription: Lets DirectShow players open Matroska and WebM files.",
        "Tags: [directshow, matroska, mkv, splitter, webm]")


def main():
    version, date, homepage, downloads, folder = sys.argv[1:]
    for suffix, text in (
        ("", manifest("version", version, "DefaultLocale: en-US")),
        (".installer", installer(version, date, downloads, folder)),
        (".locale.en-US", locale(version, homepage)),
    ):
        with open(os.path.join(folder, f"{IDENTIFIER}{suffix}.yaml"), "w", encoding="utf-8", newline="\n") as file:
            file.write(text)


main()
