"""Lists the mutants of one C++ file: one small change each."""

import re
from dataclasses import dataclass

from cppTokens import tokenise

# Binary operators; clang-format puts a space on both sides of them, and not of a template's
# brackets, a pointer's star, a reference's ampersand or a sign.
REPLACEMENTS = {
    "<": ["<=", ">="],
    "<=": ["<", ">"],
    ">": [">=", "<="],
    ">=": [">", "<"],
    "==": ["!="],
    "!=": ["=="],
    "+": ["-"],
    "-": ["+"],
    "*": ["/"],
    "/": ["*"],
    "%": ["*", "/"],
    "&&": ["||"],
    "||": ["&&"],
    "&": ["|"],
    "|": ["&"],
    "^": ["|", "&"],
    "<<": [">>"],
    ">>": ["<<"],
    "+=": ["-=", "="],
    "-=": ["+=", "="],
    "*=": ["/=", "="],
    "/=": ["*=", "="],
    "&=": ["|=", "="],
    "|=": ["&=", "="],
    "^=": ["|=", "="],
}
RELATIONAL = ("<", "<=", ">", ">=", "==", "!=")
ASSIGNMENTS = ("=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=")
NO_EXPRESSION = (
    "return if for while do switch case default typedef enum struct class static const using "
    "break continue else extern template inline public private goto static_assert"
).split()
WITHOUT_EFFECT = ["Q_UNUSED", ";"]
SCOPED_OBJECTS = ("QMutexLocker",)


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    function: str
    before: str  # the lines that it touches, spaces run together
    after: str
    start: int
    end: int
    text: str  # what replaces start to end

    def key(self):
        return (self.file, self.function, self.before, self.after)

    def applied_to(self, source):
        return source[: self.start] + self.text + source[self.end :]


class Collector:
    def __init__(self, file, source):
        self.file = file
        self.source = source
        self.tokens = tokenise(source)
        self.found = []

    def add(self, first, last, text):
        """One mutant that replaces the tokens first to last."""
        start, end = self.tokens[first].start, self.tokens[last].end
        line_start = self.source.rfind("\n", 0, start) + 1
        line_end = self.source.find("\n", end)
        before = self.source[line_start:line_end]
        after = self.source[line_start:start] + text + self.source[end:line_end]
        self.found.append(
            Mutant(
                self.file,
                self.source.count("\n", 0, start) + 1,
                self.tokens[first].function,
                one_line(before),
                one_line(after),
                start,
                end,
                text,
            )
        )

    def text(self, first, last):
        return self.source[self.tokens[first].start : self.tokens[last].end]


def one_line(text):
    return " ".join(text.split())


def mutants_of(file, source):
    """All mutants of a file, in the order of the text."""
    code = Collector(file, source)
    i = 0
    while i < len(code.tokens):
        if code.tokens[i].text == "static_assert":
            i = code.tokens[i + 1].partner
        mutate_token(code, i)
        mutate_condition(code, i)
        mutate_statement(code, i)
        i += 1
    different = {}
    for mutant in code.found:
        different.setdefault((mutant.start, mutant.end, mutant.text), mutant)
    return sorted(different.values(), key=lambda m: (m.start, m.end, m.text))


def mutate_token(code, i):
    token = code.tokens[i]
    if token.kind == "number":
        for text in other_numbers(token.text):
            code.add(i, i, text)
    elif token.kind in ("string", "char") and code.tokens[i - 1].text != "extern":
        for text in other_texts(token.text):
            code.add(i, i, text)
    elif token.text in ("true", "false"):
        code.add(i, i, "false" if token.text == "true" else "true")
    elif token.text in ("++", "--"):
        code.add(i, i, "--" if token.text == "++" else "++")
    elif token.text in ("!", "~") and not token.spaced_after:
        code.add(i, i, "")
    elif token.kind == "punct" and token.spaced_before and token.spaced_after:
        for text in REPLACEMENTS.get(token.text, []):
            code.add(i, i, text)


def other_numbers(text):
    """The numbers one below and one above, in the same notation."""
    digits, suffix = re.match(r"(0[xX][0-9A-Fa-f]+|\d+\.?\d*)([uUlL]*)", text).groups()
    if "." in digits:
        return [f"{float(digits) - 1}", f"{float(digits) + 1}"]
    value = int(digits, 8 if re.fullmatch(r"0[0-7]+", digits) else 0)
    show = (lambda n: f"0x{n:X}{suffix}") if digits[:2] in ("0x", "0X") else (lambda n: f"{n}{suffix}")
    if value == 0:
        return [show(1)] if "u" in suffix.lower() else [show(1), f"(-1{suffix})"]
    return [show(value - 1), show(value + 1)]


def other_texts(text):
    """The first, and the last, character changed."""
    quote, inside = text[0], text[1:-1]
    if not inside:
        return [quote + "x" + quote]
    if "\\" in inside:
        return []
    first = quote + chr(ord(inside[0]) + 1) + inside[1:] + quote
    last = quote + inside[:-1] + chr(ord(inside[-1]) + 1) + quote
    return [first] if len(inside) == 1 else [first, last]


def mutate_condition(code, i):
    tokens = code.tokens
    text = tokens[i].text
    if text in ("if", "while") and tokens[i + 1].text == "(":
        end = tokens[i + 1].partner
        negate(code, max([i + 1, *semicolons(tokens, i + 2, end)]) + 1, end - 1)
    elif text == "for":
        ends = semicolons(tokens, i + 2, tokens[i + 1].partner)
        if ends:  # one that goes over a range has no condition
            negate(code, ends[0] + 1, ends[1] - 1)
    elif text == "?":
        negate(code, ternary_condition(tokens, i), i - 1)


def semicolons(tokens, first, end):
    """Indices of those that are in no inner brackets."""
    found = []
    k = first
    while k < end:
        if tokens[k].text == ";":
            found.append(k)
        k = tokens[k].partner + 1 if tokens[k].partner > k else k + 1
    return found


def ternary_condition(tokens, mark):
    """Index of the first token of the condition before a question mark."""
    i = mark - 1
    while True:
        token = tokens[i]
        if token.text in (")", "]", "}"):
            i = token.partner
        elif token.text in ("(", "[", "{", ",", ";", "?", ":", "return") + ASSIGNMENTS:
            return i + 1
        i -= 1


def negate(code, first, last):
    """The condition the other way round, unless a change of its one operator does just that."""
    texts = [token.text for token in code.tokens[first : last + 1]]
    relations = sum(
        token.text in RELATIONAL and token.spaced_after for token in code.tokens[first : last + 1]
    )
    if "&&" not in texts and "||" not in texts and (relations == 1 or texts[0] == "!"):
        return
    code.add(first, last, f"!({code.text(first, last)})")


def mutate_statement(code, i):
    if not starts_statement(code.tokens, i):
        return
    last = end_of_statement(code.tokens, i)
    if last < 0:
        return
    text = code.tokens[i].text
    if text == "return":
        mutate_return(code, i, last)
    elif text in ("break", "continue") or is_call_or_assignment(code.tokens, i, last):
        code.add(i, last, ";")


def starts_statement(tokens, i):
    if not tokens[i].in_body or i == 0:
        return False
    before = tokens[i - 1]
    if before.text in (";", "{", "}", "else", "do"):
        return True
    if before.text == ")":
        return tokens[before.partner - 1].text in ("if", "for", "while", "switch")
    if before.text == ":":
        return tokens[i - 2].text == "default" or tokens[i - 3].text == "case"
    return False


def end_of_statement(tokens, i):
    """Index of the semicolon; -1 for a block."""
    while tokens[i].text != ";":
        if tokens[i].text in ("{", "}"):
            return -1
        i = tokens[i].partner + 1 if tokens[i].partner > i else i + 1
    return i


def is_call_or_assignment(tokens, first, last):
    if tokens[first].text in NO_EXPRESSION + WITHOUT_EFFECT:
        return False
    if tokens[first].text in SCOPED_OBJECTS:
        return True
    return tokens[first].text in ("++", "--", "*", "(") or not is_declaration(tokens, first, last)


def is_declaration(tokens, first, last):
    """A type comes before a name: two names, or a name behind a template's end or a star."""
    for i in range(first + 1, last):
        if tokens[i].text in ("(", "[") + ASSIGNMENTS:
            return False
        if tokens[i].kind == "name" and tokens[i - 1].text not in (".", "->", "::"):
            return True
    return False


def mutate_return(code, i, last):
    """Returns a value-initialised result; for a named constant, the number after it."""
    if last == i + 1:
        if code.tokens[i - 1].text != ":":
            code.add(i, last, ";")
        return
    value = code.text(i + 1, last - 1)
    if code.tokens[i].returns_nothing:
        code.add(i, last, "return;")
    elif re.fullmatch(r"[A-Z][A-Z0-9_]+", value):
        code.add(i + 1, last - 1, f"static_cast<decltype({value})>({value} + 1)")
    elif not re.fullmatch(r"-?\d+|true|false|\w+\(\)", value):
        code.add(i + 1, last - 1, "{}")
