"""page.py: what the generators of docs/ share: the folders, Markdown, writing and comparing."""

import difflib
import textwrap
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LIBRARY = ROOT / "asic/forwarding-sw/l3lif/pd_trident"
HEADERS = LIBRARY / "include"
PLATFORM = ROOT / "platform/include"

WIDTH = 110


class PageError(Exception):
    """Why a page can't be made, with what to do about it; one line for each finding."""


def code(text):
    """A text as Markdown code, also in a table's cell."""
    fence = "`" if "`" not in text else "``"
    return fence + text.replace("|", "\\|") + fence


def paragraph(text, first="", further=""):
    """Text in lines, its first one and its further ones behind a prefix."""
    return textwrap.fill(
        " ".join(text.split()),
        WIDTH,
        initial_indent=first,
        subsequent_indent=further,
        break_long_words=False,
        break_on_hyphens=False,
    )


def write(path, text):
    """Writes a file where it isn't so already; tells whether it did."""
    if path.exists() and path.read_text(encoding="utf-8") == text:
        return False
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")
    return True


def compare(path, text):
    """Raises PageError, the difference in it, unless a file is this text."""
    present = path.read_text(encoding="utf-8") if path.exists() else ""
    if present == text:
        return
    lines = difflib.unified_diff(
        present.splitlines(), text.splitlines(), f"{path.name} as it is", "as it should be",
        lineterm="", n=1,
    )
    shown = list(lines)[:40]
    raise PageError("\n".join([f"{path} isn't up to date; run ./dev docs", *shown]))
