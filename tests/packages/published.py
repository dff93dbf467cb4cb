"""Checks the form and the truth of what ./package writes for others: the SPDX list, and winget's manifests.

Usage: published.py FOLDER. Required fields are those of SPDX 2.3 and of the manifest schema 1.6.
"""

import glob
import hashlib
import json
import os
import re
import subprocess
import sys
import zipfile

import yaml

LICENCE = r"(NOASSERTION|NONE|[A-Za-z0-9.+-]+( (AND|OR|WITH) [A-Za-z0-9.+-]+)*)"


def need(condition, text):
    if not condition:
        sys.exit(text)


def need_fields(thing, what, **patterns):
    for name, pattern in patterns.items():
        need(name in thing, f"{what} has no {name}")
        need(re.fullmatch(pattern, str(thing[name])), f"{what}: {name} is {thing[name]!r}")


def check_spdx_form(document):
    need_fields(document, "the list", spdxVersion=r"SPDX-2\.3", dataLicense=r"CC0-1\.0", SPDXID="SPDXRef-DOCUMENT",
                name=r".+", documentNamespace=r"https?://[^#\s]+")
    need_fields(document["creationInfo"], "creationInfo", created=r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ")
    for creator in document["creationInfo"]["creators"]:
        need(re.match(r"(Person|Organization|Tool): \S", creator), f"creator {creator!r}")
    for package in document["packages"]:
        need_fields(package, package.get("name", "a package"), SPDXID=r"SPDXRef-[A-Za-z0-9.-]+", name=".+",
                    versionInfo=".+", downloadLocation=r"NOASSERTION|NONE|https?://\S+", filesAnalyzed="False",
                    licenseConcluded=LICENCE, licenseDeclared=LICENCE, copyrightText=".+")
    for file in document["files"]:
        need_fields(file, "a file", SPDXID=r"SPDXRef-[A-Za-z0-9.-]+", fileName=r"\./\S+", licenseConcluded=LICENCE,
                    copyrightText=".+")


def check_spdx_references(document):
    ids = [document["SPDXID"]] + [thing["SPDXID"] for thing in document["packages"] + document["files"]]
    need(len(ids) == len(set(ids)), "two things have one identifier")
    for relation in document["relationships"]:
        need({relation["spdxElementId"], relation["relatedSpdxElement"]} <= set(ids), f"{relation} leads nowhere")
        need(relation["relationshipType"] in ("DESCRIBES", "CONTAINS", "STATIC_LINK"), str(relation))
    described = [r["relatedSpdxElement"] for r in document["relationships"] if r["relationshipType"] == "DESCRIBES"]
    need(described == ["SPDXRef-tarvex"], "the list does not say what it describes")
    extracted = {text["licenseId"] for text in document["hasExtractedLicensingInfos"]}
    named = set(re.findall(r"LicenseRef-[A-Za-z0-9.-]+", json.dumps(document["packages"])))
    need(named <= extracted, f"no text for {named - extracted}")


def check_spdx_truth(document, folder, version):
    """The checksums are those of the packed programs; what these are known to be built from is listed."""
    for file in document["files"]:
        arch, program = file["fileName"][2:].split("/")
        with zipfile.ZipFile(os.path.join(folder, f"tarvex-{version}-{arch}.zip")) as packed:
            data = packed.read(f"tarvex-{version}-{arch}/{program}")
        for checksum in file["checksums"]:
            found = hashlib.new(checksum["algorithm"].lower(), data).hexdigest()
            need(found == checksum["checksumValue"], f"{file['fileName']} has another {checksum['algorithm']}")
    need(len(document["files"]) == 4, "not all four programs are listed")
    for arch in ("x64", "x86"):
        for program, wanted in (("tarvex.dll", {"libebml", "libmatroska", "zlib", "gcc-runtime"}),
                                ("mkvhost.exe", {"CLI11", "nlohmann-json", "fmt"})):
            linked = {relation["relatedSpdxElement"][8:] for relation in document["relationships"]
                      if relation["spdxElementId"] == f"SPDXRef-{arch}-{program}"}
            need(wanted <= linked, f"{arch}/{program} lists only {sorted(linked)}")


def check_spdx(folder, version):
    with open(os.path.join(folder, f"tarvex-{version}.spdx.json"), encoding="utf-8") as file:
        document = json.load(file)
    check_spdx_form(document)
    check_spdx_references(document)
    check_spdx_truth(document, folder, version)


def load_manifest(folder, suffix, kind, version):
    with open(os.path.join(folder, f"Tarvex.MatroskaSplitter{suffix}.yaml"), encoding="utf-8") as file:
        text = file.read()
    need(text.startswith(f"# yaml-language-server: $schema=https://aka.ms/winget-manifest.{kind}.1.6.0"), "no schema line")
    manifest = yaml.safe_load(text)
    need_fields(manifest, kind, PackageIdentifier=r"[^.\s]{1,32}(\.[^.\s]{1,32}){1,7}", PackageVersion=re.escape(version),
                ManifestType=kind, ManifestVersion=r"1\.6\.0")
    return manifest


def property_of(path, name):
    rows = subprocess.run(["msiinfo", "export", path, "Property"], check=True, capture_output=True, text=True).stdout
    return next(row.split("\t")[1].strip() for row in rows.splitlines() if row.startswith(name + "\t"))


def check_winget(folder, version):
    need_fields(load_manifest(folder, "", "version", version), "version", DefaultLocale="en-US")
    locale = load_manifest(folder, ".locale.en-US", "defaultLocale", version)
    need_fields(locale, "locale", PackageLocale="en-US", Publisher=".{2,256}", PackageName=".{2,256}",
                License=".{3,512}", ShortDescription=".{3,256}", PackageUrl=r"https://\S+")
    need(len(locale["Tags"]) <= 16 and len(set(locale["Tags"])) == len(locale["Tags"]), "tags")
    manifest = load_manifest(folder, ".installer", "installer", version)
    need_fields(manifest, "installer", InstallerType="msi", Scope="machine", MinimumOSVersion=r"\d+(\.\d+){3}",
                ReleaseDate=r"\d{4}-\d\d-\d\d", UpgradeBehavior="install")
    need([entry["Architecture"] for entry in manifest["Installers"]] == ["x64", "x86"], "not both installers")
    for entry in manifest["Installers"]:
        need_fields(entry, "an installer", InstallerUrl=r"https://\S+\.msi", InstallerSha256="[0-9A-F]{64}")
        path = os.path.join(folder, entry["InstallerUrl"].rsplit("/", 1)[1])
        with open(path, "rb") as file:
            found = hashlib.sha256(file.read()).hexdigest().upper()
        need(found == entry["InstallerSha256"], f"{path} has another checksum")
        need(entry["ProductCode"] == property_of(path, "ProductCode"), f"{path} has another product code")


def check_sums(folder):
    """Each file is listed, and nothing else."""
    with open(os.path.join(folder, "SHA256SUMS"), encoding="ascii") as file:
        listed = dict(reversed(line.split()) for line in file)
    need(set(listed) == set(os.listdir(folder)) - {"SHA256SUMS"}, "SHA256SUMS lists other files than there are")
    for name, wanted in listed.items():
        with open(os.path.join(folder, name), "rb") as file:
            need(hashlib.sha256(file.read()).hexdigest() == wanted, f"{name} has another checksum")


def main():
    folder = sys.argv[1]
    lists = glob.glob(os.path.join(folder, "tarvex-*.spdx.json"))
    need(len(lists) == 1, "there is no SPDX list; ./package makes it")
    version = os.path.basename(lists[0])[len("tarvex-"):-len(".spdx.json")]
    check_spdx(folder, version)
    check_winget(folder, version)
    check_sums(folder)


main()
