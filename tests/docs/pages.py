"""pages.py: what the pages of README.md and docs/ show, for commands_test.py.

A page is made of prose, with code between backticks, and of fenced blocks. A block is a
sequence of commands with what they print, a script of `rtif run`, JSON, or text.
"""

import re
from dataclasses import dataclass, field
from pathlib import Path

FENCE = re.compile(r"^(\s*)```(\w*)\s*$")
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$")
CODE = re.compile(r"(?<!`)`([^`]+)`(?!`)")
PROMPT = re.compile(r"^([$#]) (.*)$")
# Alone on a line any lines, at a line's end any rest of it.
LEFT_OUT = "…"


@dataclass
class Command:
    """A command line of a block, and the lines that it is shown to print."""

    line: int
    text: str
    root: bool = False
    shown: list[str] = field(default_factory=list)


@dataclass
class Block:
    """A fenced block: its language, the line of its first line, its lines."""

    page: str
    line: int
    language: str
    lines: list[str]

    @property
    def text(self):
        return "\n".join(self.lines) + "\n"

    def commands(self):
        """The commands behind prompts, each with what is shown below it. A line that ends in a
        backslash goes on in the next."""
        found = []
        goes_on = False
        for number, line in enumerate(self.lines, self.line):
            prompt = PROMPT.match(line)
            if goes_on:
                found[-1].text += "\n" + line
            elif prompt:
                found.append(Command(number, prompt[2], root=prompt[1] == "#"))
            elif found:
                found[-1].shown.append(line)
            goes_on = bool(found) and line.endswith("\\") and (goes_on or bool(prompt))
        return found

    def bare_lines(self):
        """The lines of a block without prompts, those that go on joined, each with its number."""
        found = []
        goes_on = False
        for number, line in enumerate(self.lines, self.line):
            if goes_on:
                found[-1] = (found[-1][0], found[-1][1] + "\n" + line)
            else:
                found.append((number, line))
            goes_on = line.endswith("\\")
        return found


class PageError(Exception):
    """A page that can't be read."""


class Page:
    """A page's blocks, and the code, the links and the headings of its prose."""

    def __init__(self, name, text):
        self.name = name
        self.blocks = []
        self.spans = []  # (line, code)
        self.links = []  # (line, target)
        self.anchors = set()
        self._read(text.split("\n"))

    def _read(self, lines):
        paragraph = []
        block = None
        indent = ""
        for number, line in enumerate(lines, 1):
            fence = FENCE.match(line)
            if block is not None:
                if fence and not fence[2]:
                    self.blocks.append(block)
                    block = None
                else:
                    block.lines.append(line.removeprefix(indent))
            elif fence:
                self._spans_of(paragraph)
                indent = fence[1]
                block = Block(self.name, number + 1, fence[2], [])
            elif not line.strip() or line.lstrip().startswith("|"):
                # A row of a table is a paragraph of its own.
                self._spans_of(paragraph)
                self._spans_of([(number, line)])
            else:
                paragraph.append((number, line))
        if block is not None:
            raise PageError(f"{self.name}:{block.line}: the block has no end")
        self._spans_of(paragraph)

    def _spans_of(self, paragraph):
        """The code of a paragraph; a span may go over a line's end."""
        text = "\n".join(line for _, line in paragraph)
        for span in CODE.finditer(text):
            number = paragraph[text.count("\n", 0, span.start())][0]
            self.spans.append((number, " ".join(span[1].split())))
        for number, line in paragraph:
            self.links += [(number, link) for link in LINK.findall(CODE.sub("", line))]
            heading = HEADING.match(line)
            if heading:
                self.anchors.add(anchor_of(heading[1]))
        paragraph.clear()


def anchor_of(heading):
    """What a link to a heading has behind its #."""
    words = re.sub(r"[^\w\- ]", "", heading.lower())
    return words.replace(" ", "-")


def all_pages(root):
    """README.md and the pages of docs/, by name."""
    files = [root / "README.md", *sorted((root / "docs").glob("*.md"))]
    return [Page(path.relative_to(root).as_posix(), Path(path).read_text("utf-8")) for path in files]


def without_blank_end(lines):
    """Lines without the blank ones at the end."""
    end = len(lines)
    while end and not lines[end - 1].strip():
        end -= 1
    return lines[:end]


def shows(shown, printed):
    """Whether what a page shows is what was printed."""
    pattern = ""
    for line in without_blank_end(shown):
        if line.strip() == LEFT_OUT:
            pattern += r"(?:[^\n]*\n)*?"
        elif line.endswith(LEFT_OUT):
            pattern += re.escape(line.removesuffix(LEFT_OUT)) + r"[^\n]*\n"
        else:
            pattern += re.escape(line) + r"\n"
    text = "".join(line + "\n" for line in without_blank_end(printed))
    return re.fullmatch(pattern, text) is not None
