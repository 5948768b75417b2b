"""cpp_source.py: as much of C++ as the generators of docs/ need to read.

A source is cut into tokens, and its functions at namespace scope are found
with their parameters and the tokens of their bodies. It reads the library's
own style, free functions and plain records; templates of classes, methods and
operators aren't looked for.

messages.py and calls.py stand on it.
"""

import re
from dataclasses import dataclass, field
from pathlib import Path


class SourceError(Exception):
    """What can't be read in a source: file, line and what to do about it."""


@dataclass(frozen=True)
class Token:
    """A piece of a source. `text` is as it stands there, quotes included."""

    kind: str  # name, string, other
    text: str
    line: int


@dataclass
class Function:
    """A function definition at namespace scope."""

    name: str
    file: Path
    line: int
    parameters: list  # names; "" for one without
    local: bool  # only its own file can call it
    body: list = field(repr=False)  # tokens between its braces


# The lexemes that every reader of C++ takes alike; each adds its own for signs.
LEXEMES = r"""
    (?P<comment> //[^\n]* | /\*.*?\*/ )
  | (?P<directive> ^[ \t]*\#(?:\\\n|[^\n])* )
  | (?P<raw> R"(?P<mark>[^()\\\s]*)\(.*?\)(?P=mark)" )
  | (?P<string> (?:u8|[uUL])?"(?:\\.|[^"\\\n])*" )
  | (?P<char> '(?:\\.|[^'\\\n])+' )
  | (?P<number> \.?[0-9](?:'?[0-9a-zA-Z_.])* )
  | (?P<name> [A-Za-z_]\w* )
  | (?P<space> \s+ )
"""
LEXEME_FLAGS = re.VERBOSE | re.DOTALL | re.MULTILINE

_TOKEN = re.compile(LEXEMES + r"| (?P<other> -> | :: | . )", LEXEME_FLAGS)

_OPENING = {"(": ")", "[": "]", "{": "}"}


def tokens_of(text):
    """The tokens of a source; comments and preprocessor lines are left out."""
    tokens = []
    line = 1
    for match in _TOKEN.finditer(text):
        kind = match.lastgroup if match.lastgroup != "mark" else "raw"
        if kind not in ("comment", "directive", "space"):
            shown = kind if kind in ("name", "string") else "other"
            tokens.append(Token(shown, match.group(), line))
        line += match.group().count("\n")
    return tokens


def end_of_group(tokens, start):
    """Index of the bracket that closes the one at `start`; len(tokens) when none does."""
    depth = 0
    for index in range(start, len(tokens)):
        text = tokens[index].text
        if tokens[index].kind != "other":
            continue
        if text in _OPENING:
            depth += 1
        elif text in _OPENING.values():
            depth -= 1
            if depth == 0:
                return index
    return len(tokens)


def split_arguments(tokens):
    """Cuts what stands between two parentheses at its own commas."""
    parts = [[]]
    depth = 0
    for token in tokens:
        if token.kind == "other":
            depth += (token.text in _OPENING) - (token.text in _OPENING.values())
            if token.text == "," and depth == 0:
                parts.append([])
                continue
        parts[-1].append(token)
    return parts if parts != [[]] else []


def calls_in(tokens, wanted):
    """Each use of `name(...)` for which wanted(name): the name's token and its arguments."""
    for index, token in enumerate(tokens[:-1]):
        if token.kind == "name" and tokens[index + 1].text == "(" and wanted(token.text):
            end = end_of_group(tokens, index + 1)
            yield token, split_arguments(tokens[index + 2 : end])


def literal_of(tokens, words=()):
    """The text of adjacent string literals, escapes as they stand; None for anything else.

    `words` has what a macro among them stands for: {"PRIu32": "u"}.
    """
    parts = []
    for token in tokens:
        if token.kind == "string" and token.text.startswith('"'):
            parts.append(token.text[1:-1])
        elif token.kind == "name" and token.text in words:
            parts.append(words[token.text])
        else:
            return None
    return "".join(parts) if parts else None


def _parameter_name(tokens):
    """The name in one parameter's declaration, "" when it has none."""
    names = []
    for token in tokens:
        if token.text in ("=", "["):
            break
        if token.kind == "name":
            names.append(token.text)
    return names[-1] if len(names) > 1 else ""


def _function_head(declaration):
    """Index of the name in a function's head; None when it is no function."""
    index = 0
    while index + 1 < len(declaration):
        token = declaration[index]
        if token.text == "=":
            return None
        if declaration[index + 1].text == "(" and token.kind == "name":
            if token.text not in ("__attribute__", "alignas", "decltype"):
                return index
            index = end_of_group(declaration, index + 1)
        index += 1
    return None


def functions_of(text, file):
    """All functions that a source defines at namespace scope, in their order."""
    tokens = tokens_of(text)
    found = []
    scopes = []  # for each open namespace: whether it is without a name
    declaration = []
    index = 0
    while index < len(tokens):
        token = tokens[index]
        if token.text == ";":
            declaration = []
        elif token.text == "}" and token.kind == "other":
            if scopes:
                scopes.pop()
            declaration = []
        elif token.text == "{" and token.kind == "other":
            words = [part.text for part in declaration]
            if "namespace" in words or (words[:1] == ["extern"] and len(words) == 2):
                scopes.append(words[-1:] == ["namespace"])
                declaration = []
            else:
                end = end_of_group(tokens, index)
                head = _function_head(declaration)
                if head is not None:
                    close = end_of_group(declaration, head + 1)
                    parameters = split_arguments(declaration[head + 2 : close])
                    found.append(
                        Function(
                            name=declaration[head].text,
                            file=file,
                            line=declaration[head].line,
                            parameters=[_parameter_name(part) for part in parameters],
                            local=any(scopes) or "static" in words,
                            body=tokens[index + 1 : end],
                        )
                    )
                    declaration = []
                index = end
        else:
            declaration.append(token)
        index += 1
    return found


_EXPORTED = re.compile(r"RTIFHAL_EXPORT\s+([^;{=]*?)(\w+)\s*\(")


def exported_functions(header_folder):
    """The names that the library exports, by header, both in their order of documentation."""
    family = {}
    umbrella = header_folder / "rtifhal_trident.h"
    order = re.findall(r'#include "(rtifhal_\w+\.h)"', umbrella.read_text(encoding="utf-8"))
    for name in order:
        text = (header_folder / name).read_text(encoding="utf-8")
        text = re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.DOTALL)
        # Not a declaration of data, which has no parenthesis before its end.
        names = [match.group(2) for match in _EXPORTED.finditer(text)]
        if names:
            family[name] = names
    return family


_HEADER_COMMENT = re.compile(r"\A\s*/\*(.*?)\*/", re.DOTALL)


def header_comment(text):
    """The paragraphs of the comment that a source begins with."""
    match = _HEADER_COMMENT.match(text)
    if not match:
        return []
    lines = [line.strip().lstrip("*").strip() for line in match.group(1).split("\n")]
    return [" ".join(part.split()) for part in "\n".join(lines).split("\n\n") if part.strip()]


def subject_of(path):
    """What a source says of itself behind its name; that of its header where it points there."""
    paragraphs = header_comment(path.read_text(encoding="utf-8"))
    if not paragraphs:
        return ""
    subject = paragraphs[0].split(": ", 1)[-1]
    pointed = re.fullmatch(r"see (\w+\.h)\.?", subject)
    if pointed and (path.parent / pointed.group(1)).exists():
        return subject_of(path.parent / pointed.group(1))
    return subject
