"""Writes the SPDX list of what is linked into the programs. Usage: spdx.py VERSION CREATED HOMEPAGE ROOT ARCH=FOLDER...

CREATED is seconds since 1970. FOLDER holds an architecture's finished programs; what went into them is read from
the linker's maps and the compiler's dependencies in ROOT/build/windows-ARCH. An archive that the table below does
not know ends this with a message: a list with a hole is worse than none.
"""

import hashlib
import json
import os
import re
import subprocess
import sys
import time
import uuid

PROGRAMS = ("tarvex.dll", "mkvhost.exe")

# Name, licence, copyright, Debian package that it comes from, archives by their file names, headers by their folder.
COMPONENTS = (
    ("libebml", "LGPL-2.1-or-later",
     "2002-2010 Steve Lhomme, 2002-2004 Ingo Ralf Blum, 2003-2004 Jory Stone, 2002-2014 Moritz Bunkus",
     "libebml", r"libebml\.a", None),
    ("utf8-cpp", "BSL-1.0", "2006-2018 Nemanja Trifunovic", "libebml", r"libebml\.a", None),
    ("libmatroska", "LGPL-2.1-or-later", "2002-2010 Steve Lhomme, 2002-2022 Matroska (non-profit organisation)",
     "libmatroska", r"libmatroska\.a", None),
    ("zlib", "Zlib", "1995-2022 Jean-loup Gailly and Mark Adler", "libz-mingw-w64-dev", r"libz\.a", None),
    ("gcc-runtime", "GPL-3.0-or-later WITH GCC-exception-3.1", "Free Software Foundation, Inc.",
     "gcc-mingw-w64-base", r"lib(stdc\+\+|gcc|gcc_eh)\.a", None),
    ("mingw-w64-runtime", "ZPL-2.1 AND MIT AND LicenseRef-public-domain", "2009-2022 by the mingw-w64 project",
     "mingw-w64-common",
     r"lib(mingw32|mingwex|moldname|msvcrt|winpthread|pthread|kernel32|user32|gdi32|shell32|advapi32|ole32|oleaut32|"
     r"strmiids|uuid|comctl32|comdlg32|winspool|version|winmm|ws2_32|bcrypt|ntdll|shlwapi)\.a", None),
    ("CLI11", "BSD-3-Clause", "2017-2021 University of Cincinnati, developed by Henry Schreiner", "libcli11-dev",
     None, "CLI"),
    ("nlohmann-json", "MIT", "2013-2022 Niels Lohmann and others", "nlohmann-json3-dev", None, "nlohmann"),
    ("fmt", "MIT", "2012 to the present Victor Zverovich and others", "libfmt-dev", None, "fmt"),
)


def archives_of(build, program):
    """File names of the archives of other projects that the linker took members from."""
    with open(os.path.join(build, program.rsplit(".", 1)[0] + ".map"), encoding="utf-8", errors="replace") as file:
        text = file.read().split("\nDiscarded input sections", 1)[0].split("\nMemory Configuration", 1)[0]
    paths = re.findall(r"^(\S+\.a)\(", text, re.MULTILINE)
    build = os.path.realpath(build)
    outside = {path for path in paths if not os.path.realpath(os.path.join(build, path)).startswith(build + os.sep)}
    if not outside:
        sys.exit(f"spdx: the map of {program} names no archive")
    return {os.path.basename(path) for path in outside}


def header_folders(build):
    """Folders of headers that the host's sources include, by the compiler's own account."""
    text = subprocess.run(["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True).stdout
    folders = set()
    for entry in text.split("\n\n"):
        if re.match(r"(host/|third_party/|CMakeFiles/tarvex_precompiled_host)", entry):
            folders.update(re.findall(r"/include/(\w+)/", entry))
    return folders


def linked_into(build, program):
    """Indices into COMPONENTS."""
    archives = archives_of(build, program)
    headers = header_folders(build) if program == "mkvhost.exe" else set()
    unknown = [name for name in archives if not any(row[4] and re.fullmatch(row[4], name) for row in COMPONENTS)]
    if unknown:
        sys.exit(f"spdx: {program} holds parts of {', '.join(sorted(unknown))}, which packaging/spdx.py does not know")
    return [at for at, row in enumerate(COMPONENTS)
            if (row[4] and any(re.fullmatch(row[4], name) for name in archives)) or (row[5] and row[5] in headers)]


def version_of(row, root):
    """What cmake/deps.sh builds has its version there; the rest is Debian's."""
    if row[3] in ("libebml", "libmatroska"):
        with open(os.path.join(root, "cmake", "deps.sh"), encoding="utf-8") as file:
            return re.search(rf"^{row[3][3:]}_version=(\S+)", file.read(), re.MULTILINE).group(1)
    return subprocess.run(["dpkg-query", "-W", "-f=${Version}", row[3]], check=True, capture_output=True,
                          text=True).stdout


def package(name, version, licence, copyright_text, spdx_id):
    return {"SPDXID": spdx_id, "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": licence, "licenseDeclared": licence,
            "copyrightText": copyright_text}


def component_package(row, root):
    version = version_of(row, root)
    result = package(row[0], version, row[1], "Copyright " + row[2], "SPDXRef-" + row[0])
    result["sourceInfo"] = f"Debian package {row[3]}"
    return result


def program_file(path, name, spdx_id):
    with open(path, "rb") as file:
        data = file.read()
    return {"SPDXID": spdx_id, "fileName": "./" + name, "fileTypes": ["BINARY"],
            "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(data).hexdigest()},
                          {"algorithm": "SHA256", "checksumValue": hashlib.sha256(data).hexdigest()}],
            "licenseConcluded": "LGPL-2.1-or-later", "licenseInfoInFiles": ["NOASSERTION"],
            "copyrightText": "NOASSERTION"}


def relation(element, kind, other):
    return {"spdxElementId": element, "relationshipType": kind, "relatedSpdxElement": other}


def document(version, created, homepage, root, folders):
    used, files, relations = set(), [], [relation("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-tarvex")]
    for arch, folder in folders:
        for program in PROGRAMS:
            name = f"{arch}/{program}"
            spdx_id = "SPDXRef-" + name.replace("/", "-")
            files.append(program_file(os.path.join(folder, program), name, spdx_id))
            relations.append(relation("SPDXRef-tarvex", "CONTAINS", spdx_id))
            linked = linked_into(os.path.join(root, "build", f"windows-{arch}"), program)
            used.update(linked)
            relations += [relation(spdx_id, "STATIC_LINK", "SPDXRef-" + COMPONENTS[at][0]) for at in linked]
    own = package("Tarvex Matroska Splitter", version, "LGPL-2.1-or-later", "NOASSERTION", "SPDXRef-tarvex")
    stamp = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(created))
    result = {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"tarvex-{version}",
        "creationInfo": {"created": stamp, "creators": ["Organization: Tarvex", "Tool: tarvex-spdx.py"]},
        "packages": [own] + [component_package(COMPONENTS[at], root) for at in sorted(used)],
        "files": files, "relationships": relations,
        "hasExtractedLicensingInfos": [{"licenseId": "LicenseRef-public-domain", "name": "Public domain",
                                        "extractedText": "Parts of the mingw-w64 runtime are in the public domain."}],
    }
    content = hashlib.sha256(json.dumps(result, sort_keys=True).encode()).hexdigest()
    result["documentNamespace"] = f"{homepage}/spdx/tarvex-{version}-{uuid.uuid5(uuid.NAMESPACE_URL, content)}"
    return result


def main():
    version, created, homepage, root, *folders = sys.argv[1:]
    pairs = [folder.split("=", 1) for folder in folders]
    print(json.dumps(document(version, int(created), homepage, root, pairs), indent=2))


main()
