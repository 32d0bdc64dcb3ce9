"""Where small faults can be planted in a C++ source, and what they look like.

A site is one change of one line: a bound moved, an operator exchanged, a statement dropped. Comments, texts and
preprocessor lines are left alone. Formatting is the project's own, so that ` < ` with blanks is a comparison and `<T>` is
not.
"""

import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Site:
    path: str
    line: int  # from 1
    kind: str
    old: str  # the line as it is
    new: str  # the line with the fault

    def key(self):
        """The site without its place: edits elsewhere in the file leave it."""
        return f"{self.path} | {self.old.strip()} | {self.new.strip()}"


EXCHANGES = {
    "bound": [(" < ", " <= "), (" <= ", " < "), (" > ", " >= "), (" >= ", " > ")],
    "comparison": [(" == ", " != "), (" != ", " == ")],
    "operator": [
        (" + ", " - "), (" - ", " + "), (" * ", " + "), (" / ", " * "), (" % ", " / "),
        (" << ", " >> "), (" >> ", " << "), (" & ", " | "), (" | ", " & "), (" += ", " -= "), (" -= ", " += "),
    ],
    "logic": [(" && ", " || "), (" || ", " && "), ("true", "false"), ("false", "true")],
}

# Calls of the saturating and rounding operators and of their register forms, each with one that rounds or saturates
# otherwise.
ROUNDING = {
    "mult_r": "mult", "mult": "mult_r", "round16": "extract_h", "L_shr_r": "L_shr", "shr_r": "shr",
    "L_mac": "L_msu", "L_msu": "L_mac", "L_add": "L_sub", "L_sub": "L_add", "add": "sub", "sub": "add",
    "L_shl": "L_shr", "L_shr": "L_shl", "shl": "shr", "shr": "shl", "norm_l": "norm_s",
    "negate": "abs_s", "extract_h": "extract_l", "extract_l": "extract_h",
    "_mm_mulhrs_epi16": "_mm_mulhi_epi16", "_mm256_mulhrs_epi16": "_mm256_mulhi_epi16",
    "_mm_adds_epi16": "_mm_add_epi16", "_mm256_adds_epi16": "_mm256_add_epi16",
    "_mm_subs_epi16": "_mm_sub_epi16", "_mm256_subs_epi16": "_mm256_sub_epi16",
    "min": "max", "max": "min",
}

STATEMENT = re.compile(r"^(\s+)([A-Za-z_][\w.:\->\[\]()*, +&]*)(\(.*\)| [-+*/|&^]?= .+| ?\+\+| ?--);$")
DECLARATION = re.compile(
    r"^\s+(const |constexpr |static |using |typedef |return|break|continue|throw|delete |goto |extern |inline |auto )"
)
# Two words in front of what is assigned make a declaration: `int x = 1;`, `std::vector<T> x(n);`.
TYPED = re.compile(r"^\s+[\w:]+(<.*>)?[&*]? [&*]?\w+(\[.*\])?( =|\(|\{|;)")
ARGUMENTS = re.compile(r"(\w)\(([A-Za-z_][\w.]*), ([A-Za-z_][\w.]*)(, [^()]*)?\)")
CONSTANT = re.compile(r"(?<![\w.#\"])(\d+)(?![\w.\"])")
# So many numbers in a line are figures of a table.
TABLE = 6
CONDITION = re.compile(r"^(\s*(?:\} else )?if \()(.+)(\) \{)$")


def blanked(text):
    """The text with comments, string and character literals replaced by blanks; same length, same lines."""
    pattern = re.compile(
        r"//[^\n]*|/\*.*?\*/|R\"(\w*)\(.*?\)\1\"|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])+'", re.DOTALL
    )

    def blank(match):
        if match.group(0).startswith("'") and match.start() > 0 and text[match.start() - 1].isalnum():
            return match.group(0)  # a separator of digits
        return re.sub(r"[^\n]", "\x01", match.group(0))

    return pattern.sub(blank, text)


def _line_sites(path, number, line, code):
    if not code.strip() or code.lstrip().startswith("#") or "static_assert" in code:
        return
    declares = re.match(r"^\s*(template|class|struct|enum|namespace|using|extern|friend|public|private|protected)\b", code)
    if declares:
        return

    def site(kind, begin, end, new):
        return Site(path, number, kind, line, line[:begin] + new + line[end:])

    for kind, pairs in EXCHANGES.items():
        for old, new in pairs:
            for match in re.finditer(re.escape(old) if old[0] == " " else rf"\b{old}\b", code):
                yield site(kind, match.start(), match.end(), new)
    constants = list(CONSTANT.finditer(code))
    for match in constants:
        value = int(match.group(1))
        kind = "table" if len(constants) >= TABLE else "constant"
        yield site(kind, match.start(), match.end(), str(value + 1))
        if value > 1:
            yield site(kind, match.start(), match.end(), str(value - 1))
    for match in re.finditer(r"(?<![\w.])(\w+)\(", code):
        other = ROUNDING.get(match.group(1))
        if other:
            yield site("rounding", match.start(1), match.end(1), other)
    for match in ARGUMENTS.finditer(code):
        if match.group(2) != match.group(3):
            swapped = f"{match.group(1)}({match.group(3)}, {match.group(2)}{match.group(4) or ''})"
            yield site("arguments", match.start(), match.end(), swapped)
    if STATEMENT.match(code) and not DECLARATION.match(code) and not TYPED.match(code):
        indent = len(code) - len(code.lstrip())
        yield site("dropped", indent, len(line), ";")
    condition = CONDITION.match(code)
    if condition and "constexpr" not in code:
        yield site("condition", condition.start(2), condition.end(2), f"!({line[condition.start(2):condition.end(2)]})")


def sites_of(path, text):
    """All sites of a source, in order."""
    plain = text.split("\n")
    found = []
    for number, code in enumerate(blanked(text).split("\n"), 1):
        found.extend(s for s in _line_sites(path, number, plain[number - 1], code) if s.new != s.old)
    return found
