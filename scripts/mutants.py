"""mutants.py: small wrong changes of the library's sources, one at a time.

Each place in a source where one token or one statement can be made wrong gives
a mutant: a comparison turned or moved by one, a condition the other way round,
a constant one off, a call or an assignment left out. Comments, strings and
preprocessor lines stay as they are; what the library writes is changed only
where messages are asked for. Lines keep their numbers, which trace points name.

mutate.py lets the tests loose on them; cpp_source.py tells which function a
line belongs to.
"""

import bisect
import random
import re
from dataclasses import dataclass

import cpp_source

_TOKEN = re.compile(
    cpp_source.LEXEMES
    + r"""
  | (?P<sign> <<=|>>=|->|::|\+\+|--|&&|\|\||==|!=|<=|>=|\+=|-=|\*=|/=|%=|&=|\|=|\^=|<<|>> | . )
    """,
    cpp_source.LEXEME_FLAGS,
)

# Binary signs, which the style puts between spaces.
_BINARY = {
    "==": ("!=",),
    "!=": ("==",),
    "<": ("<=", ">="),
    "<=": ("<", ">"),
    ">": (">=", "<="),
    ">=": (">", "<"),
    "&&": ("||",),
    "||": ("&&",),
    "+": ("-",),
    "-": ("+",),
    "*": ("+",),
    "/": ("*",),
    "%": ("/",),
    "&": ("|",),
    "|": ("&",),
    "^": ("|",),
    "<<": (">>",),
    ">>": ("<<",),
    "+=": ("-=", "="),
    "-=": ("+=", "="),
    "|=": ("=",),
    "&=": ("=",),
}
_STEPS = {"++": "--", "--": "++"}
_WORDS = {"true": "false", "false": "true"}
_LEVELS = {
    "TRACE": "REPORT",
    "TRACE_OF": "REPORT_OF",
    "TRACE_NAMED": "REPORT_NAMED",
}
_LEVELS |= {report: trace for trace, report in _LEVELS.items()}

_KEYWORDS = {"return", "if", "while", "for", "switch", "case", "do", "else", "static_assert",
             "goto", "const", "constexpr", "static", "using", "sizeof"}  # fmt: skip
_COMPARING = {"==", "!=", "<", "<=", ">", ">=", "&&", "||", "!", "=", ";"}
_OPENING = {"(": ")", "[": "]", "{": "}"}


@dataclass(frozen=True)
class Mutant:
    """One change of one file: text[start:end] becomes `new`."""

    file: str  # below the library's folder
    line: int
    column: int
    operator: str  # what is done, like "== to !="
    start: int
    end: int
    new: str
    function: str  # "" outside of all
    source: str  # the line as it stands, without its indent
    nth: int  # of those with the same file, function, source and operator

    @property
    def name(self):
        """How a mutant is called on the command line."""
        return f"{self.file}:{self.line}:{self.column} {self.operator}"

    @property
    def key(self):
        """What names it also after lines were put in above it."""
        return (self.file, self.function, self.source, self.operator, self.nth)

    def applied(self, text):
        """The file's text with the change made."""
        return text[: self.start] + self.new + text[self.end :]


@dataclass(frozen=True)
class _Token:
    kind: str
    text: str
    start: int
    end: int


def _tokens_of(text):
    """The tokens that count; comments, spaces and preprocessor lines don't."""
    found = []
    for match in _TOKEN.finditer(text):
        kind = match.lastgroup if match.lastgroup != "mark" else "raw"
        if kind not in ("comment", "directive", "space"):
            found.append(_Token(kind, match.group(), match.start(), match.end()))
    return found


def _one_off(number):
    """A number that is wrong by one, or a flag that is wrong by one bit; None for others."""
    match = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[0-9']+)([uUlL]*)", number)
    if not match:
        return None
    digits = match.group(1).replace("'", "")
    if not digits.lower().startswith("0x"):
        return f"{int(digits) + 1}{match.group(2)}"
    value = int(digits, 16)
    single = value != 0 and value & (value - 1) == 0
    if not single:
        return f"{value ^ 1:#x}{match.group(2)}"
    return f"{value << 1 if value < 1 << 31 else value >> 1:#x}{match.group(2)}"


class _Source:
    """One source while its mutants are looked for."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = _tokens_of(text)
        self.breaks = [match.start() for match in re.finditer("\n", text)]
        self.functions = []
        for function in cpp_source.functions_of(text, file):
            last = function.body[-1].line if function.body else function.line
            self.functions.append((function.line, last, function.name))
        self.found = []
        self.seen = {}

    def function_at(self, line):
        """The name of the function that a line belongs to; "" for none."""
        for first, last, name in self.functions:
            if first <= line <= last:
                return name
        return ""

    def line_of(self, offset):
        """The line that an offset is in, from 1 on."""
        return bisect.bisect_left(self.breaks, offset) + 1

    def add(self, operator, start, end, new):
        """A change of text[start:end], which keeps its line breaks."""
        missing = self.text.count("\n", start, end) - new.count("\n")
        line = self.line_of(start)
        begin = self.text.rfind("\n", 0, start) + 1
        stop = self.text.find("\n", start)
        source = self.text[begin : stop if stop >= 0 else len(self.text)].strip()
        function = self.function_at(line)
        key = (function, source, operator)
        self.seen[key] = self.seen.get(key, 0) + 1
        self.found.append(
            Mutant(self.file, line, start - begin + 1, operator, start, end,
                   new + "\n" * missing, function, source, self.seen[key])
        )  # fmt: skip

    def swap(self, token, new):
        """One token becomes another one."""
        self.add(f"{token.text} to {new}", token.start, token.end, new)

    def end_of_group(self, index):
        """Index of the bracket that closes the one at `index`."""
        depth = 0
        for at in range(index, len(self.tokens)):
            text = self.tokens[at].text
            if self.tokens[at].kind == "sign":
                depth += (text in _OPENING) - (text in _OPENING.values())
                if depth == 0:
                    return at
        return len(self.tokens) - 1

    def end_of_statement(self, index):
        """Index of the semicolon behind `index`, or of the bracket that closes before it."""
        while index < len(self.tokens) - 1:
            token = self.tokens[index]
            if token.text == ";" or (token.kind == "sign" and token.text in _OPENING.values()):
                break
            if token.kind == "sign" and token.text in _OPENING:
                index = self.end_of_group(index)
            index += 1
        return index

    def begins_statement(self, index):
        """Whether a statement begins with the token at `index`."""
        before = self.text_at(index - 1)
        label = self.text_at(index - 2) == "default" or self.text_at(index - 3) == "case"
        return before in (";", "{", "}") or (before == ":" and label)

    def text_at(self, index):
        """A token's text; "" outside of the source."""
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def is_spaced(self, token):
        """Whether a sign stands between spaces."""
        around = self.text[token.start - 1] + self.text[token.end : token.end + 1]
        return len(around) == 2 and around.isspace()

    def in_constant(self, index):
        """Whether a token outside of functions belongs to a constant's value."""
        words = []
        while index >= 0 and self.tokens[index].text != ";":
            words.append(self.tokens[index].text)
            index -= 1
        return "constexpr" in words and "=" in words


def _values(source, index):
    """Numbers, truth values."""
    token = source.tokens[index]
    if token.kind == "number":
        new = _one_off(token.text)
        before = source.tokens[index - 1]
        owner = source.tokens[index - 2] if index > 1 else before
        minus = before.text == "-" and before.end == token.start
        operand = owner.kind in ("name", "number") and owner.text != "return"
        if minus and token.text == "1" and not operand and owner.text not in (")", "]"):
            source.add("-1 to 0", before.start, token.end, "0")
        elif new is not None:
            source.swap(token, new)
    elif token.text in _WORDS:
        source.swap(token, _WORDS[token.text])


def _is_unread(source, index):
    """Whether the value of a sign's operand goes nowhere: (void)!f()."""
    return [source.text_at(index - back) for back in (3, 2, 1)] == ["(", "void", ")"]


def _signs(source, index):
    """Comparisons, conditions, arithmetic."""
    token = source.tokens[index]
    if token.text in _BINARY and source.is_spaced(token):
        for new in _BINARY[token.text]:
            source.swap(token, new)
    elif token.text in _STEPS:
        source.swap(token, _STEPS[token.text])
    elif token.text in ("!", "~") and not _is_unread(source, index):
        source.add(f"{token.text} dropped", token.start, token.end, "")
    elif token.text == "?":
        source.add("? turned", token.start, token.end, "== 0 ?")


def _conditions(source, index):
    """A condition without a sign of its own."""
    if source.text_at(index) not in ("if", "while") or source.text_at(index + 1) != "(":
        return
    end = source.end_of_group(index + 1)
    inside = source.tokens[index + 2 : end]
    if not any(token.text in _COMPARING for token in inside):
        first, last = inside[0].start, inside[-1].end
        source.add("condition turned", first, last, f"!({source.text[first:last]})")


def _returns(source, index):
    """What a function answers; numbers are changed as numbers."""
    if source.text_at(index) != "return":
        return
    end = source.end_of_statement(index)
    inside = source.tokens[index + 1 : end]
    plain = all(t.kind == "number" or t.text in ("-", "true", "false", "nullptr") for t in inside)
    if inside and not plain and inside[0].text != "{":
        source.add("return nothing", inside[0].start, inside[-1].end, "{}")


def _is_call(source, first, end):
    """Whether the tokens from `first` to `end` are one call, alone."""
    name = first
    while source.text_at(name + 1) == "::":
        name += 2
    called = source.tokens[name].kind == "name" and source.text_at(name + 1) == "("
    return called and source.end_of_group(name + 1) == end - 1


def _is_assignment(tokens):
    """Whether tokens write to something that is there, and declare nothing."""
    texts = [token.text for token in tokens]
    if "=" not in texts:
        return False
    target = tokens[: texts.index("=")]
    pairs = zip(target, target[1:])
    declares = any(
        one.kind == "name" and (two.kind == "name" or two.text in ("*", "&")) for one, two in pairs
    )
    return bool(target) and not declares


def _statements(source, index):
    """A call or an assignment left out; a way out of a loop."""
    token = source.tokens[index]
    words = _KEYWORDS | _LEVELS.keys() | {";", "}", "{", "++", "--"}
    if not source.begins_statement(index) or token.text in words:
        return
    end = source.end_of_statement(index)
    if source.text_at(end) != ";":
        return
    void = [source.text_at(index + i) for i in range(3)] == ["(", "void", ")"]
    last = source.tokens[end - 1].end
    if token.text in ("break", "continue"):
        source.add(f"{token.text} left out", token.start, last, "")
    elif _is_call(source, index + 3 if void else index, end):
        source.add("call left out", token.start, last, "")
    elif _is_assignment(source.tokens[index:end]):
        source.add("assignment left out", token.start, last, "")


def _messages(source, index):
    """A message at another level, with another text, or none at all."""
    token = source.tokens[index]
    if token.text not in _LEVELS or source.text_at(index + 1) != "(":
        return
    source.swap(token, _LEVELS[token.text])
    end = source.end_of_group(index + 1)
    texts = [t for t in source.tokens[index:end] if t.kind == "string"]
    if texts:
        source.add("text changed", texts[0].start, texts[0].end, '"~' + texts[0].text[1:])
    source.add("message left out", token.start, source.tokens[end].end, "")


def mutants_of(file, text, messages=False):
    """All mutants of one source, in its order; those of messages alone with `messages`."""
    source = _Source(file, text)
    index = 0
    while index < len(source.tokens):
        token = source.tokens[index]
        inside = source.function_at(source.line_of(token.start)) != ""
        if token.text in ("static_assert", "__attribute__"):
            index = source.end_of_group(index + 1)
        elif inside and messages:
            _messages(source, index)
        elif inside:
            for look in (_values, _signs, _conditions, _returns, _statements):
                look(source, index)
        elif not messages and source.in_constant(index):
            _values(source, index)
            _signs(source, index)
        index += 1
    return source.found


def spread(mutants, count, seed):
    """`count` of the mutants, a like share of each file's, chosen by a seed; in their order."""
    by_file = {}
    for mutant in mutants:
        by_file.setdefault(mutant.file, []).append(mutant)
    ranked = []
    for number, (file, own) in enumerate(sorted(by_file.items())):
        order = list(range(len(own)))
        random.Random(f"{seed} {file}").shuffle(order)
        ranked += [(rank / len(own), number, own[at]) for rank, at in enumerate(order)]
    ranked.sort(key=lambda entry: entry[:2])
    # The first of each file stand at the same place: not always the first files.
    first = [entry for entry in ranked if entry[0] == 0]
    if count < len(first):
        random.Random(seed).shuffle(first)
        ranked = first
    chosen = {entry[2] for entry in ranked[:count]}
    return [mutant for mutant in mutants if mutant in chosen]
