"""calls.py: docs/calls.md: which platform functions each exported function may call.

The tests of the library note it: where RTIFHAL_CALLS_FILE names a file, they
write a line "caller callee" for each exported function that was on the stack
when a platform function was called (tests/support/calls_seen.cpp). A callee is
a platform function, or another exported function in between. A line "partial"
tells that some tests were skipped or filtered out.

    calls.py table OUT         the exported functions, as calls_seen.cpp includes them
    calls.py write FILE...     makes docs/calls.md of what the tests noted
    calls.py check FILE...     nothing was noted that docs/calls.md doesn't have
    calls.py exact FILE...     and docs/calls.md is what `write` would make, unless partial
"""

import re
import sys
from collections import defaultdict
from pathlib import Path

import cpp_source
import message_sites
import page
from page import PageError, code

PAGE = page.ROOT / "docs/calls.md"

C_LIBRARY = "C library"
GLIB = "GLib"
_C_FUNCTIONS = ("calloc", "free", "malloc", "syslog")
_NO_FUNCTIONS = ("__attribute__", "sizeof", "static_assert")

PREFACE = """\
# Platform calls

For each exported function: which functions of the platform it may call, itself or through what it calls. Who
puts the library into a host can see here what a call needs; who changes a platform function, whom it concerns.

The page is made by `./dev docs` of what the library's tests saw, failures and rare roads among them; a test
fails when one of them sees a call that isn't here. A rare road that the tests only take in an inner function,
the rebuild of default routes on a fast restart for one, stands there: *through* names the exported functions on
the way.

Not listed are `memcpy` and its like, the reading of a file of default routes, and the sinks that take each
message: `fwm_ds_trace_add`, for an error `fwm_ds_add`, `sdwrap_hist_event_subtype_check`, `sdwrap_hist_event`,
`sdwrap_chk_int`, `buginf`, and while the debug stream is open `fwm_debug_elem_descr`, `fwm_ctime` and
`fwm_check_flush_dbg_out_file`. [messages.md](messages.md) has the messages.
"""


class Calls:
    """Who calls whom: by exported function its platform functions, and those in between."""

    def __init__(self, exported):
        self.exported = exported  # names by header
        self.names = {name for names in exported.values() for name in names}
        self.platform = defaultdict(set)
        self.through = defaultdict(set)
        self.partial = False

    def add(self, caller, callee):
        """Adds one pair."""
        if caller not in self.names:
            raise PageError(f"{caller} isn't exported any more; build the tests anew")
        (self.through if callee in self.names else self.platform)[caller].add(callee)

    def read_noted(self, path):
        """Adds what a run of the tests noted."""
        if not path.exists():
            raise PageError(f"{path} is missing: run the library's tests first")
        for line in path.read_text(encoding="utf-8").splitlines():
            if line == "partial":
                self.partial = True
            else:
                self.add(*line.split())

    def read_page(self, text):
        """Adds what a page tells."""
        caller = None
        for line in text.split("\n## By platform function")[0].splitlines():
            if line.startswith("### "):
                caller = line.strip("# `")
            elif caller and (line.startswith("| ") or line.startswith("through ")):
                cells = line.split(" | ")[-1] if line.startswith("| ") else line
                for callee in re.findall(r"`(\w+)`", cells):
                    if caller in self.names:
                        self.add(caller, callee)

    def missing_in(self, other):
        """The pairs that another one lacks, as texts."""
        return sorted(
            f"{caller} calls {callee}"
            for mine, theirs in ((self.platform, other.platform), (self.through, other.through))
            for caller, callees in mine.items()
            for callee in callees - theirs[caller]
        )


def declared_functions(folder):
    """By name of a function that the headers of a folder declare the header."""
    headers = {}
    for path in sorted(folder.rglob("*.h")):
        text = re.sub(r"/\*.*?\*/|//[^\n]*", "", path.read_text(encoding="utf-8"), flags=re.DOTALL)
        for name in re.findall(r"\b(\w+)\s*\(", text):
            if name not in _NO_FUNCTIONS:
                headers.setdefault(name, str(path.relative_to(folder)))
    return headers


def platform_headers(folder, names):
    """By name of a platform function that was called the header that declares it."""
    headers = declared_functions(folder)
    found = {}
    for name in names:
        if name in _C_FUNCTIONS:
            found[name] = C_LIBRARY
        elif name.startswith("g_"):
            found[name] = GLIB
        elif name in headers:
            found[name] = headers[name]
        else:
            raise PageError(f"{name} was called, but no header under {folder} declares it")
    return found


def can_call(library, name, platform):
    """Whether a function of the library reaches one of these functions, by its source."""
    waiting, seen = [library.home(name)], set()
    while waiting:
        function = waiting.pop()
        for token in function.body:
            if token.kind != "name":
                continue
            if token.text in platform:
                return True
            callee = library.definition(token.text, function.file)
            if callee and (callee.name, callee.file) not in seen:
                seen.add((callee.name, callee.file))
                waiting.append(callee)
    return False


def _by_header(names, headers):
    """Names sorted under their headers, the platform's before the two libraries."""
    groups = defaultdict(list)
    for name in sorted(names):
        groups[headers[name]].append(name)
    return sorted(groups.items(), key=lambda item: (item[0] in (C_LIBRARY, GLIB), item[0]))


def _codes(names):
    return ", ".join(code(name) for name in names)


def _silent_text(names, untested):
    """What is told of the functions of a header that weren't seen calling anything."""
    parts = {
        "No platform function is called by": [name for name in names if name not in untested],
        "No test has seen a call yet of": [name for name in names if name in untested],
    }
    for words, some in parts.items():
        if some:
            yield from (page.paragraph(f"{words} {_codes(some)}."), "")


def _functions_text(calls, headers, untested):
    lines = []
    for header, names in calls.exported.items():
        subject = cpp_source.subject_of(page.HEADERS / header)
        lines += [f"## {header}", "", page.paragraph(subject[:1].upper() + subject[1:]), ""]
        silent = [name for name in names if not calls.platform[name]]
        for name in names:
            if name in silent:
                continue
            lines += [f"### {code(name)}", ""]
            if calls.through[name]:
                lines += ["through " + _codes(sorted(calls.through[name])), ""]
            lines += ["| header | functions |", "|---|---|"]
            for platform_header, functions in _by_header(calls.platform[name], headers):
                lines.append(f"| {platform_header} | {_codes(functions)} |")
            lines.append("")
        lines += _silent_text(silent, untested)
    return lines


def _callers_text(callers, every):
    """The callers of a function; where nearly all call it, those that don't."""
    others = [name for name in every if name not in callers]
    if len(others) * 3 <= len(every):
        return f"all {len(every)} that call the platform" + (
            f", but for {_codes(others)}" if others else ""
        )
    return _codes(name for name in every if name in callers)


def page_text(calls, headers, untested=()):
    """The whole page; `untested` functions could call the platform, but weren't seen to."""
    lines = [PREFACE, *_functions_text(calls, headers, untested)]
    lines += ["## By platform function", ""]
    every = [name for names in calls.exported.values() for name in names if calls.platform[name]]
    for header, functions in _by_header(headers, headers):
        lines += [f"### {header}", "", "| function | called by |", "|---|---|"]
        for function in functions:
            callers = {name for name in every if function in calls.platform[name]}
            lines.append(f"| {code(function)} | {_callers_text(callers, every)} |")
        lines.append("")
    return "\n".join(lines).rstrip("\n") + "\n"


def table_text(exported):
    """The exported functions for calls_seen.cpp."""
    return "".join(f"EXPORTED({name})\n" for names in exported.values() for name in names)


def _made_of(noted):
    calls = Calls(cpp_source.exported_functions(page.HEADERS))
    for path in noted:
        calls.read_noted(Path(path))
    headers = platform_headers(page.PLATFORM, set().union(*calls.platform.values()))
    files = [path for end in ("cpp", "h") for path in page.LIBRARY.glob(f"rtifhal_*/**/*.{end}")]
    library = message_sites.Library(sorted(files))
    platform = set(declared_functions(page.PLATFORM)) | set(_C_FUNCTIONS)
    quiet = (name for name in calls.names if not calls.platform[name])
    untested = {name for name in quiet if can_call(library, name, platform)}
    return calls, page_text(calls, headers, untested)


def _check(calls):
    told = Calls(calls.exported)
    told.read_page(PAGE.read_text(encoding="utf-8") if PAGE.exists() else "")
    missing = calls.missing_in(told)
    if missing:
        head = f"{PAGE} lacks what the tests saw; run ./dev docs"
        raise PageError("\n".join([head, *missing]))


def main(arguments):
    """Does what the words of the command line say."""
    verb, files = (arguments[0], arguments[1:]) if arguments else ("", [])
    if verb == "table" and len(files) == 1:
        page.write(Path(files[0]), table_text(cpp_source.exported_functions(page.HEADERS)))
        return 0
    if verb not in ("write", "check", "exact") or not files:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        calls, text = _made_of(files)
        if verb == "write":
            if calls.partial:
                raise PageError(f"{PAGE} can't be made: some of the library's tests didn't run")
            print(f"{PAGE}: {'written' if page.write(PAGE, text) else 'as it was'}")
            return 0
        _check(calls)
        if verb == "exact" and not calls.partial:
            page.compare(PAGE, text)
    except PageError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
