"""mkvhost as its user sees it: arguments in, two streams of text and an exit code out. Runs under Wine.

Usage: host.py LOADER BUILD CASE; LOADER starts Wine, whose prefix the environment names, BUILD has mkvhost.exe and
tarvex.dll, and CASE is one of the functions below or a file of transcripts/ without its ending.

A transcript has "$ mkvhost ARGUMENTS", what that prints to its output and then to its error stream, and an exit code
other than 0. Each says with what its content was compared when it was written down. A text that changes on purpose is
compared once more; the failure shows it.
"""

import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROMPT = "$ mkvhost"
LIMIT = 60  # seconds
NO_SUCH_FILE = 3  # host/system/exit_code.h


class Failure(Exception):
    pass


def expect(actual, expected, what=""):
    if actual != expected:
        raise Failure(f"{what}\n--- expected\n{expected}\n--- not\n{actual}")


def windows_path(path):
    return "Z:" + path.replace("/", "\\")


def run(arguments):
    """Exit code, output and errors, in the checkout's folder.

    The module that was built along, which need not be registered, follows a first word that names no other one.
    """
    if arguments and "--module" not in arguments:
        arguments = [arguments[0], "--module", windows_path(os.path.join(BUILD, "tarvex.dll")), *arguments[1:]]
    for _ in range(3):
        with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
            result = subprocess.run([LOADER, os.path.join(BUILD, "mkvhost.exe"), *arguments], stdin=subprocess.DEVNULL,
                                    stdout=output, stderr=errors, cwd=ROOT, timeout=LIMIT, check=False)
            texts = []
            for stream in (output, errors):
                stream.seek(0)
                texts.append(stream.read().decode())
        # Of some thousand starts one ended so under Wine. mkvhost never answers 1 without saying why.
        if result.returncode != 1 or any(texts):
            break
        print("ended with 1 and without a word:", *arguments)
    return result.returncode, *texts


def masked(text):
    """How fast the machine is belongs to no transcript, nor which release this is."""
    text = re.sub(r"( *[0-9.#]+ MB/s|(total .*[0-9]) +-)(?=\n)", lambda match: match[2] or "", text)
    return re.sub(r"\Amkvhost [0-9.]+\n\Z", "mkvhost #\n", text)


def transcript(name):
    with open(os.path.join(ROOT, "tests", "host", "transcripts", name + ".txt"), encoding="utf-8", newline="") as file:
        steps = ("\n" + file.read().removesuffix("\n")).split("\n" + PROMPT)[1:]
    for step in steps:
        arguments, line_end, answer = step.partition("\n")
        answer += line_end
        code, output, errors = run([quoted or word for quoted, word in re.findall(r'"([^"]*)"|(\S+)', arguments)])
        said = output + errors + (f"[exit code {code}]\n" if code else "")
        expect(masked(said), masked(answer), PROMPT + arguments)
    if not steps:
        raise Failure("no answers")


def names():
    """Nothing in a file's name is obeyed."""
    for name, shown in (("\x1b[31m.mkv", "\\x1B[31m.mkv"),
                        ("a\x9b31m.mkv", "a\\u{009B}31m.mkv"),
                        ("a\u202egpj.mkv", "a\\u{202E}gpj.mkv"),
                        ("line\nline\r.mkv", "line\\nline\\r.mkv"),
                        ("\x7f\u2028\u061c\u2069\ufeff.mkv", "\\x7F\\u{2028}\\u{061C}\\u{2069}\\u{FEFF}.mkv"),
                        ("%s%n{}.mkv", "%s%n{}.mkv"),
                        ("x" * 3000, "x" * 3000)):
        expect(run(["info", name]), (NO_SUCH_FILE, "", f"mkvhost: {shown}: no such file\n"))


def dump():
    """The bytes of the checksums and a log, for a name outside every code page that looks like an option."""
    with tempfile.TemporaryDirectory() as folder:
        film = os.path.join(folder, "-日本語 ünï 🎬.mkv")
        made = os.path.join(folder, "日本語 🎬")
        shutil.copy(os.path.join(ROOT, "tests", "data", "sample.mkv"), film)
        code, output, errors = run(["dump", "--json", "--bytes", windows_path(made), "--log",
                                    windows_path(made + ".log"), "--", windows_path(film)])
        expect(code, 0, errors)
        files = {pin: open(os.path.join(made, f"pin{pin}.bin"), "rb") for pin in range(3)}
        for event in map(json.loads, output.splitlines()):
            if event["event"] == "sample":
                data = files[event["pin"]].read(event["size"])
                expect(hashlib.sha1(data).hexdigest(), event["sha1"], f"a sample of pin {event['pin']}")
        for file in files.values():
            if file.tell() == 0 or file.read():
                raise Failure("a file without or with other bytes")
            file.close()
        with open(made + ".log", encoding="utf-8", newline="") as file:
            log = file.read()
    if not re.fullmatch(r"(\d\d:\d\d:\d\d\.\d{3} [0-9a-f]{4,} \S[^\n]*\n)+", log):
        raise Failure(log)
    if " CMatroskaSplitter::ThreadProc tm_start\n" not in log:
        raise Failure(log)


def positions():
    """What is asked for is played. There are 50 pictures, one each tenth of a second, all of them key frames."""
    for options, least, most in (("--no-clock --start 0:00:01 --stop 2.5", 13, 17),
                                 ("--no-clock --chapter 2", 28, 32),
                                 ("--no-clock --chapter 2 --seek 4.5 --seek 0 --seek 0:00:04 --seek 0", 50, 10**9),
                                 ("--duration-limit 0.001", 0, 49)):
        code, output, errors = run(["play", *options.split(), "tests/data/sample.mkv"])
        expect(code, 0, errors)
        found = re.search(r"  video (\d+)  ", output)
        if not found or not least <= int(found[1]) <= most:
            raise Failure(f"{options}: {output}")


def manifest():
    """It asks for no rights and knows long paths and densities."""
    program = os.path.join(BUILD, "mkvhost.exe")
    listing = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", program], capture_output=True, text=True, check=True)
    if not re.search(r"^\S+ +Entry: ID: 0x0*18,.*\n.*\n^\S+ +Entry: ID: 0x0*1,", listing.stdout, re.MULTILINE):
        raise Failure("the manifest is not the program's resource 1")
    with open(program, "rb") as file:
        text = re.findall(rb"<assembly .*?</assembly>", file.read(), re.DOTALL)
    expect(len(text), 1, "manifests")
    values = {}
    for element in xml.etree.ElementTree.fromstring(text[0]).iter():
        values[re.sub("{.*/", "{", element.tag)] = (element.text or "").strip(), element.attrib
    expect(values["{urn:schemas-microsoft-com:asm.v3}requestedExecutionLevel"][1],
           {"level": "asInvoker", "uiAccess": "false"})
    expect(values["{WindowsSettings}longPathAware"][0], "true")
    expect(values["{WindowsSettings}dpiAwareness"][0], "PerMonitorV2")


LOADER, BUILD, CASE = sys.argv[1], os.path.abspath(sys.argv[2]), sys.argv[3]
CASES = {case.__name__: case for case in (names, dump, positions, manifest)}
try:
    CASES[CASE]() if CASE in CASES else transcript(CASE)
except Failure as failure:
    sys.exit(str(failure))
