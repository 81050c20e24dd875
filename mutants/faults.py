"""The rules by which faults are planted: each changes one line of a C++ source.

The rules read the layout of .clang-format: operators of two operands have a blank on both sides,
brackets of templates, references and pointers do not.
"""

import dataclasses
import random
import re


@dataclasses.dataclass(frozen=True)
class Fault:
    file: str  # relative to the root
    line: int  # from 1
    kind: str
    before: str  # the line as it is
    after: str

    def apply(self, text):
        """Returns the text of the file with the fault in it."""
        lines = text.split("\n")
        assert lines[self.line - 1] == self.before
        lines[self.line - 1] = self.after
        return "\n".join(lines)


_HIDDEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|(?:u8)?R"(?P<mark>[^(]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"'
    r"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*",
    re.DOTALL | re.MULTILINE,
)


def mask(text):
    """Replaces comments, literals of strings and preprocessor lines by as many underlines or blanks, so
    that no rule sees what is in them."""

    def cover(match):
        filler = "_" if match.group()[-1] in "\"'" else " "
        return re.sub(r"[^\n]", filler, match.group())

    return _HIDDEN.sub(cover, text)


_OPERATORS = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">",
    "&&": "||", "||": "&&", "+": "-", "-": "+", "+=": "-=", "-=": "+=", "*": "/", "/": "*",
    "&": "|", "|": "&", "|=": "&=", "&=": "|=", "<<": ">>", ">>": "<<",
}
_OPERATOR = re.compile(r"(?<=[\w)\]}\"'] )(==|!=|<=|>=|&&|\|\||[+*|&-]=?|<<|>>|[<>/])(?= |$)")
_LEADING_OPERATOR = re.compile(r"^(?<![\w])( +)(&&|\|\|)(?= )")
_STEP = re.compile(r"\+\+|--")
_NUMBER = re.compile(r"(?<![\w.'])(\d+)(?=[uUlL]*\b)(?![.\w']*[.'xXbB])")
_TRUTH = re.compile(r"\b(true|false)\b")
_NOT = re.compile(r"(?<![\w)\]])!(?=[\w(:*])")
_EXTREME = re.compile(r"\bstd::(min|max)(?=[(<])")
_RETURN = re.compile(r"^(\s*return )([^;{}]+)(;)\s*$")
_CONDITION = re.compile(r"\bif \((?!constexpr)")
_STATEMENT = re.compile(
    r"^\s*(?!return\b|using\b|namespace\b|else\b|case\b|default\b|public:|private:|static_assert\b"
    r"|typedef\b|friend\b|struct\b|class\b|enum\b|template\b|extern\b|const\b|constexpr\b|auto\b"
    r"|static\b|throw\b|#)(?P<body>[\w:*(!+~-][^;{}]*);\s*$"
)
_CALL_OR_ASSIGNMENT = re.compile(
    r"^(?:[\w:.>\[\]()*&-]+|\(void\)[\w:.>-]+)(?:\(.*\)| [-+*/|&]?= .+|(?:\+\+|--))$|^(?:\+\+|--)[\w.>\[\]()-]+$"
)
_JUMP = re.compile(r"^\s*(break|continue|return);\s*$")


def _close_of(text, opening):
    """Returns the place of the bracket that closes the one at `opening`, or -1."""
    depth = 0
    for place in range(opening, len(text)):
        depth += {"(": 1, ")": -1}.get(text[place], 0)
        if depth == 0:
            return place
    return -1


def _edits(line, previous):
    """Yields kind, begin, end and replacement for a masked line; `previous` is the one before it."""
    for rule in (_OPERATOR, ):
        for match in rule.finditer(line):
            word = match.group(1)
            if word in _OPERATORS:
                yield "operator", match.start(1), match.end(1), _OPERATORS[word]
    for match in _LEADING_OPERATOR.finditer(line):
        yield "operator", match.start(2), match.end(2), _OPERATORS[match.group(2)]
    for match in _STEP.finditer(line):
        yield "step", match.start(), match.end(), "--" if match.group() == "++" else "++"
    for match in _NUMBER.finditer(line):
        number = int(match.group(1))
        yield "constant", match.start(1), match.end(1), str(number + 1)
        if number > 0:
            yield "constant", match.start(1), match.end(1), str(number - 1)
    for match in _TRUTH.finditer(line):
        yield "constant", match.start(), match.end(), "false" if match.group() == "true" else "true"
    for match in _NOT.finditer(line):
        yield "condition", match.start(), match.end(), ""
    for match in _EXTREME.finditer(line):
        yield "operator", match.start(1), match.end(1), "max" if match.group(1) == "min" else "min"
    for match in _CONDITION.finditer(line):
        close = _close_of(line, match.end() - 1)
        inside = line[match.end():close]
        if close > 0 and ";" not in inside:
            for value in ("true", "false"):
                yield "guard", match.end(), close, value
            if not inside.startswith("!"):
                yield "condition", match.end(), close, None
    match = _RETURN.match(line)
    if match and not re.fullmatch(r"!.*|true|false|nullptr|\d+", match.group(2)):
        yield "return", match.start(2), match.end(2), None
    begins = re.search(r"([;{}:]|\)|\belse)\s*$", previous) or not previous.strip()
    match = _STATEMENT.match(line)
    if match and begins and line.count("(") == line.count(")") and _CALL_OR_ASSIGNMENT.match(match["body"]):
        yield "statement", match.start("body"), match.end("body"), ""
    match = _JUMP.match(line)
    if match:
        yield "statement", match.start(1), match.end(1), ""


def find_faults(file, text):
    """Returns all faults that the rules plant into a file, one line each."""
    found = []
    previous = ""
    lines = text.split("\n")
    for number, (line, masked) in enumerate(zip(lines, mask(text).split("\n")), 1):
        for kind, begin, end, replacement in _edits(masked, previous):
            if replacement is None:
                replacement = f"!({line[begin:end]})"
            fault = Fault(file, number, kind, line, line[:begin] + replacement + line[end:])
            if fault.after != line and fault not in found:
                found.append(fault)
        if masked.strip():
            previous = masked
    return found


def choose(faults, count, seed):
    """Returns `count` of them in an order that the seed and the faults alone decide, at most one for
    each line."""
    generator = random.Random(seed)
    mixed = sorted(faults, key=lambda f: (f.file, f.line, f.kind, f.after))
    generator.shuffle(mixed)
    chosen = {}
    for fault in mixed:
        chosen.setdefault((fault.file, fault.line), fault)
        if len(chosen) == count:
            break
    return list(chosen.values())


def read_listed(path, texts):
    """Returns the faults of a list: blocks of `before` and `after`, each a whole line without its
    indentation, found anywhere in the sources, or in `file` if the block names one. `texts` maps names of
    files to what is in them."""
    listed = []
    missing = []
    blocks = re.split(r"\n\s*\n", re.sub(r"(?m)^#.*\n", "", path.read_text()))
    for block in filter(str.strip, blocks):
        pair = dict(re.findall(r"(?m)^(file|before|after):[ ]?(.*)$", block))
        before, after = pair["before"].strip(), pair["after"].strip()
        places = [
            (file, number, line)
            for file, text in sorted(texts.items())
            for number, line in enumerate(text.split("\n"), 1)
            if line.strip() == before and pair.get("file", file) == file
        ]
        if not places:
            missing.append(before)
        for file, number, line in places:
            listed.append(Fault(file, number, "listed", line, line.replace(before, after)))
    return listed, missing
