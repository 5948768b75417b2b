"""messages.py: docs/messages.md: what the library writes, and what to do about it.

The messages are read from the library's sources (message_sites.py), what they
mean from docs/messages.toml, which is written by hand:

    [[message]]
    function = "rtifhal_vlan_create"       # or a list of functions
    text = 'vlan_create(%d) failed: %s\\n'  # as between the quotes of the source
    tells = "what happened, and what the switch is left with"
    do = "what to do"

Every error report and every line of the system log needs one. A trace may have
one too, without `do` if there is nothing to be done.

    messages.py write    makes docs/messages.md
    messages.py check    docs/messages.md is what `write` would make
"""

import re
import sys
import tomllib
from collections import Counter

import cpp_source
import message_sites
import page
from cpp_source import SourceError
from message_sites import REPORT, TRACE
from page import PageError, code

PAGE = page.ROOT / "docs/messages.md"
EXPLAINED = page.ROOT / "docs/messages.toml"

# In the order of a reader; folders that aren't here come behind, by name.
FOLDERS = {
    "rtifhal_kelvo_trident/frame": "Common steps, interface numbers",
    "rtifhal_kelvo_trident/l3_objects": "L3 interface, ingress and egress",
    "rtifhal_kelvo_trident/kinds": "Kinds of routed interfaces",
    "rtifhal_kelvo_trident/vlan": "VLANs and translation",
    "rtifhal_kelvo_trident/station": "Router MACs, virtual MACs, private VLANs",
    "rtifhal_kelvo_trident/property": "Properties",
    "rtifhal_kelvo_trident/defaults": "Default routes and adjacencies",
    "rtifhal_kelvo_trident/field": "Field entries",
    "rtifhal_kelvo_trident/diag": "Looking into the library",
    "rtifhal_kelvo_trident_pss": "Store and restore",
}


def library_files(folder):
    """Sources and headers of the library, in the order in which their messages are told."""
    order = list(FOLDERS)

    def rank(path):
        part = path.parent.relative_to(folder).as_posix()
        known = part in FOLDERS
        return (order.index(part) if known else len(order), part, path.name)

    files = [*folder.glob("rtifhal_*/**/*.cpp"), *folder.glob("rtifhal_*/**/*.h")]
    return sorted(files, key=rank)


class Message:
    """One text of one function, at all levels and places where it is written."""

    def __init__(self, function, text):
        self.function = function
        self.text = text
        self.levels = Counter()

    @property
    def is_report(self):
        """Whether it is more than a trace."""
        return set(self.levels) != {TRACE}


def collect(library, exported):
    """All messages by function and text, in their order."""
    messages = {}
    for site in library.sites():
        function = site.function
        if site.level.startswith("syslog") and library.home(function).local:
            # The system log doesn't name a function: it belongs to the operation.
            above = library.exported_above(function, exported)
            function = above[0] if len(above) == 1 else function
        key = (function, site.text)
        messages.setdefault(key, Message(*key)).levels[site.level] += 1
    return messages


def read_explanations(path):
    """The hand-written part: what stands before all, and by function and text the explanation."""
    try:
        data = tomllib.loads(path.read_text(encoding="utf-8"))
    except tomllib.TOMLDecodeError as error:
        raise PageError(f"{path}: {error}") from error
    explained = {}
    for entry in data.get("message", []):
        functions = entry.get("function")
        if not functions or "text" not in entry or not entry.get("tells"):
            raise PageError(f"{path}: function, text and tells are needed in {entry}")
        unknown = set(entry) - {"function", "text", "tells", "do"}
        if unknown:
            raise PageError(f"{path}: {sorted(unknown)} isn't known in {entry}")
        for function in [functions] if isinstance(functions, str) else functions:
            if (function, entry["text"]) in explained:
                raise PageError(f"{path}: {function} explains {entry['text']!r} twice")
            explained[function, entry["text"]] = entry
    return data.get("preface", ""), explained


def join(messages, explained):
    """Holds messages and explanations against each other; raises PageError for each odd one."""
    findings = []
    for key, message in messages.items():
        entry = explained.get(key)
        if message.is_report and (entry is None or not entry.get("do")):
            wanted = "an explanation" if entry is None else "a word on what to do (do)"
            findings.append(
                f"{EXPLAINED.name} lacks {wanted} for\n"
                f"    function = \"{key[0]}\"\n    text = '{key[1]}'"
            )
    for function, text in explained.keys() - messages.keys():
        findings.append(f"{EXPLAINED.name} explains what {function} doesn't write: '{text}'")
    if findings:
        raise PageError("\n".join(sorted(findings)))


def visible(text):
    """A text as it stands in the source, blanks that one overlooks and missing line ends shown."""
    shown = text.replace('\\"', '"')
    pieces = re.split(r"(\\n)", shown)
    for index, piece in enumerate(pieces):
        stripped = piece.strip(" ")
        if stripped or not piece:
            left = len(piece) - len(piece.lstrip(" "))
            right = len(piece) - len(piece.rstrip(" "))
            stripped = re.sub(" {2,}", lambda blanks: "␣" * len(blanks.group()), stripped)
            pieces[index] = "␣" * left + stripped + "␣" * right
        else:
            pieces[index] = "␣" * len(piece)
    return code("".join(pieces) + ("" if shown.endswith("\\n") else "⊣"))


def _levels_text(message):
    """Levels other than the one that the place of the message tells already."""
    others = [level for level in message.levels if level not in (REPORT, TRACE)]
    if REPORT not in message.levels:
        return " (system log only: " + ", ".join(level.split()[1] for level in others) + ")"
    words = ["as a trace too"] if TRACE in message.levels else []
    words += [f"in the system log too: {level.split()[1]}" for level in others]
    return f" ({'; '.join(words)})" if words else ""


def _function_lines(name, messages, explained, where):
    lines = [f"#### {name}", ""]
    if where:
        lines += [page.paragraph(where), ""]
    for message in messages:
        entry = explained[message.function, message.text]
        lines.append(f"* {visible(message.text)}{_levels_text(message)}  ")
        lines.append(page.paragraph(entry["tells"], "  ", "  ") + "  ")
        lines.append(page.paragraph("*Do:* " + entry["do"], "  ", "  "))
    lines.append("")
    return lines


def _trace_lines(messages, explained):
    lines = ["| function | trace |", "|---|---|"]
    for message in messages:
        told_above = message.is_report
        entry = None if told_above else explained.get((message.function, message.text))
        note = " ".join([entry["tells"], entry.get("do", "")]).split() if entry else []
        told = "<br>" + " ".join(note) if note else ""
        lines.append(f"| {code(message.function)} | {visible(message.text)}{told} |")
    return [*lines, ""]


def _summary(messages):
    reports = sum(1 for message in messages if REPORT in message.levels)
    traces = sum(1 for message in messages if TRACE in message.levels)
    logged = sum(1 for message in messages if set(message.levels) - {REPORT, TRACE})
    functions = len({message.function for message in messages})
    return (
        f"{len(messages)} messages of {functions} functions: {reports} are error reports (level 102), "
        f"{traces} traces (level 104), {logged} go to the system log."
    )


def page_text(preface, messages, explained, library, exported, folder):
    """The whole page."""
    position = {(f.name, f.file): index for index, f in enumerate(library.functions)}
    homes = {name: library.home(name) for name, _ in messages}
    by_home = sorted(
        messages.values(),
        key=lambda m: position[m.function, homes[m.function].file],
    )
    lines = ["# Messages", "", preface.strip(), "", _summary(by_home), ""]
    seen_folder = seen_file = None
    index = 0
    while index < len(by_home):
        file = homes[by_home[index].function].file
        of_file = [m for m in by_home if homes[m.function].file == file]
        part = file.parent.relative_to(folder).as_posix()
        if part != seen_folder:
            lines += [f"## {FOLDERS.get(part, part)}", "", f"In `{part}/`.", ""]
            seen_folder = part
        if file != seen_file:
            subject = cpp_source.subject_of(file)
            lines += [f"### {file.name}", "", page.paragraph(subject[:1].upper() + subject[1:]), ""]
            seen_file = file
        reports = [m for m in of_file if m.is_report]
        for name in dict.fromkeys(m.function for m in reports):
            own = [m for m in reports if m.function == name]
            lines += _function_lines(name, own, explained, _where(name, library, exported))
        traces = [m for m in of_file if TRACE in m.levels]
        if traces:
            lines += ["Traces:", "", *_trace_lines(traces, explained)]
        index += len(of_file)
    return "\n".join(lines).rstrip("\n") + "\n"


def _where(name, library, exported):
    """On whose behalf a function inside the library works."""
    if name in exported:
        return ""
    above = ", ".join(code(caller) for caller in library.exported_above(name, exported))
    return f"Inside the library, on behalf of {above}." if above else "Inside the library."


def make(folder=page.LIBRARY, explained_path=EXPLAINED):
    """The text of the page for a library's folder."""
    exported = {
        name
        for names in cpp_source.exported_functions(folder / "include").values()
        for name in names
    }
    library = message_sites.Library(library_files(folder))
    messages = collect(library, exported)
    preface, explained = read_explanations(explained_path)
    join(messages, explained)
    return page_text(preface, messages, explained, library, exported, folder)


def main(arguments):
    """Does what the word of the command line says."""
    if arguments not in (["write"], ["check"]):
        print(__doc__, file=sys.stderr)
        return 2
    try:
        text = make()
        if arguments == ["write"]:
            print(f"{PAGE}: {'written' if page.write(PAGE, text) else 'as it was'}")
        else:
            page.compare(PAGE, text)
    except (PageError, SourceError) as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
