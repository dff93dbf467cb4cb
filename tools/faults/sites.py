"""Finds the places of a C++ source where a small fault can be planted. The code is as clang-format leaves it."""
import dataclasses
import re

FOLDERS = ("filter", "pins", "scanner", "framework", "host/report", "host/system")
# What only says something to a developer, or stands for the platform in the native build.
LEFT_OUT_FILES = re.compile(r"^framework/(platform/|lock_|critical_section)")
LEFT_OUT = re.compile(r"\bLog[A-Z]\w*\(|assert|DEBUG|template|\boperator\b|\busing\b|\bnamespace\b")

OPERATORS = {"<": ("Less", "<="), "<=": ("LessEqual", "<"), ">": ("Greater", ">="), ">=": ("GreaterEqual", ">"),
             "==": ("Equal", "!="), "!=": ("NotEqual", "=="), "+": ("Plus", "-"), "-": ("Minus", "+"),
             "*": ("Times", "+"), "/": ("Over", "*")}
OPERATOR = re.compile(r"(?<= )(<=?|>=?|==|!=|\+|-|\*|/)(?= )")
NUMBER = re.compile(r"(?<![\w.'\"])(?:0[xX][0-9A-Fa-f']+|\d[\d']*)[uUlL]*(?![\w.'])")
NAMED = re.compile(r"(?<![\w:.>])(?:limits::)?k[A-Z]\w*\b(?!\s*[(\[{:.<=]|::)")
TRUTH = re.compile(r"\b(?:true|false)\b")
RESULT = re.compile(r"\breturn (S_OK|S_FALSE|NOERROR|[EV]\w*_\w+);")
CONDITION = re.compile(r"\b(?:if|while) \(")
PART = re.compile(r" (&&|\|\|) ")
HEAD = re.compile(r"\s*(?:(?:else )?(?:if|for|while) (?=\()|else\b|default:|case [\w:]+:)")
CALL = re.compile(r"(?!(?:return|delete|throw|goto|break|continue|co_\w+)\b)"
                  r"(?:static_cast<void>\(.*\)|(?:[\w:]|\.|->|\(\)|\[[^\]]*\])+\(.*\))$", re.S)
CHANGE = re.compile(r"(?:(?:[\w:.*]|->|\[[^\]]*\]|\(\))+ [-+|&]?= .*|(?:\+\+|--)[\w.>\[\]-]+|[\w.>\[\]-]+(?:\+\+|--))$",
                    re.S)


@dataclasses.dataclass
class Site:
    """Edits are (offset, characters replaced, text); {n} stands for the fault's number."""
    file: str
    line: int
    kind: str
    change: str
    text: str  # of the line, so that the fault is found again in a changed file
    edits: list
    lines: range  # all that it touches

    def key(self):
        return self.file, self.kind, self.change, self.text


def blanked(text):
    """The text without comments, literals and preprocessor lines, each replaced by as many blanks."""
    pattern = r'//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\'|^#[^\n]*'
    return re.sub(pattern, lambda found: re.sub(r"[^\n]", " ", found[0]), text, flags=re.S | re.M)


def closing(text, at):
    """Behind the bracket that closes the one at `at`; -1 without one."""
    depth = 0
    for k in range(at, len(text)):
        depth += (text[k] in "([{") - (text[k] in ")]}")
        if depth == 0:
            return k + 1
    return -1


def statements(text):
    """(start, end, in a function) of all that lies between semicolons and braces."""
    start, stack = 0, []
    for k, letter in enumerate(text):
        if letter not in ";{}":
            continue
        within = bool(stack) and stack[-1]
        yield start, k, within
        if letter == "{":
            before = text[start:k].rstrip()
            opens = re.search(r"(\)|\bconst|\boverride|\bnoexcept|\belse|\btry|\bdo|\])$", before)
            stack.append(within or bool(opens))
        elif letter == "}" and stack:
            stack.pop()
        start = k + 1


def left_out(text, start, end):
    """The statement behind its conditions, which is a call or a change and can be left out: (start, end) or None."""
    while head := HEAD.match(text, start, end):
        start = head.end()
        if text[start:start + 1] == "(":
            start = closing(text, start)
            if start < 0 or start > end:
                return None
    while start < end and text[start].isspace():
        start += 1
    return (start, end) if CALL.match(text[start:end]) or CHANGE.match(text[start:end]) else None


def part_end(text, at, end):
    """Where the part of a condition that begins at `at` ends."""
    depth = 0
    for k in range(at, end):
        if depth == 0 and (text[k] in ")],;?" or text.startswith((" && ", " || "), k)):
            return k
        depth += (text[k] in "([{") - (text[k] in ")]}")
    return end


def changes(text, start, end, within):
    """(kind, what, edits) of one statement."""
    code = text[start:end]
    constant = re.search(r"\bconstexpr\b", code)
    if LEFT_OUT.search(code) or (not within and not constant and "{" not in text[max(0, start - 1):start]):
        return
    edit = [(start + constant.start(), 9, "const")] if constant else []
    for found in NUMBER.finditer(code):
        number = found[0]
        yield "constant", f"{number} -> {number} + 1", edit + [
            (start + found.start(), len(number), f"(planted::On({{n}}) ? {number} + 1 : {number})")]
    if not within or constant:
        return
    for found in TRUTH.finditer(code):
        yield "constant", f"not {found[0]}", [(start + found.start(), 0, "planted::On({n}) != ")]
    for found in NAMED.finditer(code):
        if not re.search(r"\bcase [\w:]*$", code[:found.start()]):
            yield "constant", f"{found[0]} + 1", [
                (start + found.start(), len(found[0]), f"(planted::On({{n}}) ? {found[0]} + 1 : {found[0]})")]
    for found in OPERATOR.finditer(code):
        name, wrong = OPERATORS[found[1]]
        kind = "comparison" if found[1][0] in "<>=!" else "arithmetic"
        yield kind, f"{found[1]} -> {wrong}", [(start + found.end(), 0, f" planted::{name}<{{n}}>{{{{}}}} {found[1]}")]
    for found in CONDITION.finditer(code):
        last = closing(text, start + found.end() - 1)
        if last > 0:
            yield "condition", "the opposite", [(start + found.end(), 0, "planted::On({n}) != static_cast<bool>("),
                                                (last - 1, 0, ")")]
    for found in PART.finditer(code):
        last = part_end(text, start + found.end(), end)
        without = "planted::On({n}) || (" if found[1] == "&&" else "!planted::On({n}) && ("
        yield "part of a condition", f"without {' '.join(text[start + found.end():last].split())}", [
            (start + found.end(), 0, f"({without}"), (last, 0, "))")]
    if alone := left_out(text, start, end):
        yield "left out", " ".join(text[alone[0]:end].split()), [(alone[0], 0, "{{ if (!planted::On({n})) "),
                                                                 (end + 1, 0, " }}")]
    if found := RESULT.search(text[start:end + 1]):
        wrong = {"S_OK": "E_FAIL", "NOERROR": "E_FAIL", "S_FALSE": "S_OK"}.get(found[1], "S_OK")
        yield "result", f"{found[1]} -> {wrong}", [
            (start + found.start(1), len(found[1]), f"planted::On({{n}}) ? HRESULT({wrong}) : HRESULT({found[1]})")]


def find(file, text):
    """All sites of one source."""
    bare, lines = blanked(text), text.split("\n")
    for start, end, within in statements(bare):
        for kind, change, edits in changes(bare, start, end, within):
            places = [bare.count("\n", 0, offset) + 1 for offset, _, _ in edits]
            line = places[-1] if kind == "constant" else places[0]
            yield Site(file, line, kind, change, lines[line - 1].strip(), edits, range(min(places), max(places) + 1))


def apply(text, sites):
    """The text with the faults of {number: site}, on the same lines as before."""
    edits = {(offset, length, new.format(n=number)) for number, site in sites.items()
             for offset, length, new in site.edits}
    for offset, length, new in sorted(edits, reverse=True):
        text = text[:offset] + new + text[offset + length:]
    return text
