"""Finds the places of a C++ source where a small fault can be planted. The code is as clang-format leaves it."""
import dataclasses
import re

FOLDERS = ("filter/", "pins/", "scanner/", "framework/", "host/report/", "host/system/")
# What only speaks to a developer, or stands for the platform in the native build.
LEFT_OUT_FILES = re.compile(r"framework/(platform/|lock_|critical_section)")
LEFT_OUT = re.compile(r"\bLog[A-Z]\w*\(|assert|DEBUG|\b(template|operator|using|namespace)\b")
OPERATORS = {"<": ("Less", "<="), "<=": ("LessEqual", "<"), ">": ("Greater", ">="), ">=": ("GreaterEqual", ">"),
             "==": ("Equal", "!="), "!=": ("NotEqual", "=="), "+": ("Plus", "-"), "-": ("Minus", "+"),
             "*": ("Times", "+"), "/": ("Over", "*")}
OPERATOR = re.compile(r"(?<= )(<=?|>=?|==|!=|\+|-|\*|/)(?= )")
NUMBER = re.compile(r"(?<![\w.'\"])(?:0[xX][0-9A-Fa-f']+|\d[\d']*)[uUlL]*(?![\w.'])")
NAMED = re.compile(r"(?<![\w:.>])(?<!case )(?:limits::)?k[A-Z]\w*\b(?!\s*[(\[{:.<=]|::)")
RESULT = re.compile(r"\breturn (S_OK|S_FALSE|NOERROR|[EV]\w*_\w+);")
HEAD = re.compile(r"\s*(?:(?:else )?(?:if|for|while) (?=\()|else\b|default:|case [\w:]+:)")
CALL = re.compile(r"(?!(?:return|delete|throw|goto|break|continue|co_\w+)\b)"
                  r"(?:static_cast<void>\(.*\)|(?:[\w:]|\.|->|\(\)|\[[^\]]*\])+\(.*\))$", re.S)
CHANGE = re.compile(r"(?:(?:[\w:.*]|->|\[[^\]]*\]|\(\))+ [-+|&]?= .*|(?:\+\+|--)[\w.>\[\]-]+|[\w.>\[\]-]+(?:\+\+|--))$",
                    re.S)
NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\'|^#[^\n]*', re.S | re.M)


@dataclasses.dataclass
class Site:
    """Edits are (offset, characters replaced, text), where {n} stands for the fault's number."""
    file: str
    line: int
    kind: str
    change: str
    text: str  # of the line, by which the fault is found again in a changed file
    edits: list
    lines: range  # all that it touches

    def description(self):
        return {name: getattr(self, name) for name in ("file", "line", "kind", "change", "text")}


def walk(text, at, end, is_last):
    """The first place from `at` on, outside of brackets that open there, where is_last(place)."""
    depth = 0
    for k in range(at, end):
        if depth == 0 and is_last(k):
            return k
        depth += (text[k] in "([{") - (text[k] in ")]}")
    return end


def statements(text):
    """(start, end, in a function) of all that lies between semicolons and braces."""
    start, stack = 0, [False]
    for found in re.finditer("[;{}]", text):
        k = found.start()
        yield start, k, stack[-1]
        if text[k] == "{":
            stack.append(stack[-1] or bool(re.search(r"(\)|\bconst|\boverride|\bnoexcept|\belse|\btry|\bdo|\])\s*$", text[start:k])))
        elif text[k] == "}" and len(stack) > 1:
            stack.pop()
        start = k + 1


def alone(text, start, end):
    """Where a call or a change begins that the statement is, behind its conditions; None when it is none."""
    while head := HEAD.match(text, start, end):
        start = head.end()
        if text[start] == "(":
            start = walk(text, start + 1, end, lambda k: text[k] == ")") + 1
    start += len(text[start:end]) - len(text[start:end].lstrip())
    return start if CALL.match(text[start:end]) or CHANGE.match(text[start:end]) else None


def changes(text, start, end, within):
    """(kind, what, edits) of one statement."""
    code = text[start:end]
    constant = re.search(r"\bconstexpr\b", code)
    if LEFT_OUT.search(code) or not (within or constant or text[start - 1:start] == "{"):
        return
    edit = [(start + constant.start(), 9, "const")] if constant else []
    for found in [*NUMBER.finditer(code), *(NAMED.finditer(code) if within and not constant else ())]:
        wrong = f"(planted::On({{n}}) ? {found[0]} + 1 : {found[0]})"
        yield "constant", f"{found[0]} + 1", edit + [(start + found.start(), len(found[0]), wrong)]
    if not within or constant:
        return
    for found in re.finditer(r"\b(true|false)\b", code):
        yield "constant", f"not {found[0]}", [(start + found.start(), 0, "planted::On({n}) != ")]
    for found in OPERATOR.finditer(code):
        name, wrong = OPERATORS[found[1]]
        kind = "comparison" if found[1][0] in "<>=!" else "arithmetic"
        yield kind, f"{found[1]} -> {wrong}", [(start + found.end(), 0, f" planted::{name}<{{n}}>{{{{}}}} {found[1]}")]
    for found in re.finditer(r"\b(?:if|while) \(", code):
        last = walk(text, start + found.end(), end, lambda k: text[k] == ")")
        yield "condition", "the opposite", [(start + found.end(), 0, "planted::On({n}) != static_cast<bool>("), (last, 0, ")")]
    for found in re.finditer(r" (&&|\|\|) ", code):
        last = walk(text, start + found.end(), end,
                    lambda k: text[k] in ")],;?" or text.startswith((" && ", " || "), k))
        without = "planted::On({n}) || (" if found[1] == "&&" else "!planted::On({n}) && ("
        yield "part of a condition", f"without {' '.join(text[start + found.end():last].split())}", [
            (start + found.end(), 0, f"({without}"), (last, 0, "))")]
    if call := alone(text, start, end):
        yield "left out", " ".join(text[call:end].split()), [(call, 0, "{{ if (!planted::On({n})) "), (end + 1, 0, " }}")]
    if found := RESULT.search(text[start:end + 1]):
        wrong = "E_FAIL" if found[1] in ("S_OK", "NOERROR") else "S_OK"
        yield "result", f"{found[1]} -> {wrong}", [
            (start + found.start(1), len(found[1]), f"planted::On({{n}}) ? HRESULT({wrong}) : HRESULT({found[1]})")]


def find(file, text):
    """All sites of one source."""
    bare, lines = NO_CODE.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text), text.split("\n")
    for start, end, within in statements(bare):
        for kind, change, edits in changes(bare, start, end, within):
            places = [bare.count("\n", 0, offset) + 1 for offset, _, _ in edits]
            line = places[-1] if kind == "constant" else places[0]
            yield Site(file, line, kind, change, lines[line - 1].strip(), edits, range(min(places), max(places) + 1))


def apply(text, sites):
    """The text with the faults of {number: site}, on the same lines as before."""
    edits = {(at, length, new.format(n=number)) for number, site in sites.items() for at, length, new in site.edits}
    for at, length, new in sorted(edits, reverse=True):
        text = text[:at] + new + text[at + length:]
    return text
