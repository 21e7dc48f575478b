"""Cuts C++ text into tokens, as far as choosing mutations needs it."""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""
    (?P<space>\s+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<preprocessor>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<string>"(?:[^"\\\n]|\\.)*")
  | (?P<char>'(?:[^'\\\n]|\\.)+')
  | (?P<number>0[xX][0-9A-Fa-f]+[uUlL]*|\d+\.\d*|\d+[uUlL]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<punct><<=|>>=|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[^\w\s])
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)

CLOSING = {"(": ")", "[": "]", "{": "}"}


@dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    spaced_before: bool
    spaced_after: bool = False
    partner: int = -1  # index of the other bracket
    function: str = ""  # the function whose head or body this is in
    in_body: bool = False
    returns_nothing: bool = False


def tokenise(text):
    tokens = []
    at = 0
    spaced = True
    while at < len(text):
        match = TOKEN.match(text, at)
        kind = match.lastgroup
        if kind in ("space", "comment", "preprocessor"):
            spaced = True
            if tokens:
                tokens[-1].spaced_after = True
        else:
            tokens.append(Token(kind, match.group(), match.start(), match.end(), spaced))
            spaced = False
        at = match.end()
    _pair_brackets(tokens)
    _name_functions(tokens)
    return tokens


def _pair_brackets(tokens):
    still_open = []
    for i, token in enumerate(tokens):
        if token.kind != "punct":
            continue
        if token.text in CLOSING:
            still_open.append(i)
        elif token.text in CLOSING.values():
            other = still_open.pop()
            assert CLOSING[tokens[other].text] == token.text
            token.partner = other
            tokens[other].partner = i


def _name_functions(tokens):
    head = 0
    i = 0
    while i < len(tokens):
        token = tokens[i]
        if token.text == "{" and token.kind == "punct":
            if _initialises_member(tokens, head, i):
                i = token.partner + 1
                continue
            name_at = _function_name(tokens, head, i)
            if name_at >= 0:
                _mark_function(tokens, head, name_at, i)
                i = token.partner
            head = i + 1
        elif token.text in (";", "}") or (token.text == ":" and tokens[i - 1].text in ACCESS):
            head = i + 1
        i += 1


def _initialises_member(tokens, head, brace):
    """The brace of `m_x{1}` behind a constructor's head, which is not that of its body."""
    heading = [token.text for token in tokens[head:brace]]
    return ":" in heading and ")" in heading and heading[-2] in (":", ",")


ACCESS = ("public", "private", "protected")


def _function_name(tokens, head, brace):
    """Index of the name of the function that the brace opens; -1 when it opens something else."""
    for i in range(head, brace):
        if tokens[i].text == "=":
            return -1
        if tokens[i].text == "(" and tokens[i - 1].kind == "name":
            return i - 1
    return -1


def _mark_function(tokens, head, name_at, brace):
    before = [token.text for token in tokens[head:name_at]]
    returns_nothing = "void" in before and "*" not in before
    for i in range(head, tokens[brace].partner + 1):
        tokens[i].function = tokens[name_at].text
        tokens[i].in_body = i > brace
        tokens[i].returns_nothing = returns_nothing
