"""message_sites.py: where the library's sources write messages, read from the text.

A trace point is one of the macros of frame/trace.h; messages to the system log
go through syslog. A trace point that names its function through a parameter is
followed to the callers, which hand the name in. What can't be followed is
refused, so that no message is missing unseen.

cpp_source.py reads the sources, messages.py makes the page of the result.
"""

from collections import defaultdict
from dataclasses import dataclass

import cpp_source
from cpp_source import SourceError

TRACE = "104"
REPORT = "102"

# Macro: level, and whether its first argument names the function.
POINTS = {
    "TRACE": (TRACE, False),
    "REPORT": (REPORT, False),
    "TRACE_OF": (TRACE, True),
    "REPORT_OF": (REPORT, True),
    "TRACE_NAMED": (TRACE, True),
    "REPORT_NAMED": (REPORT, True),
}

# Behind the macros; only trace.h may use them.
_BEHIND = ("RTIFHAL_TRACE_POINT", "rtifhal_trace")

_FORMAT_WORDS = {
    f"PRI{letter}{width}": length + letter
    for letter in "diuxX"
    for width, length in (("8", ""), ("16", ""), ("32", ""), ("64", "l"))
}


@dataclass(frozen=True)
class Site:
    """One message at one place. `function` is the name that it bears."""

    level: str  # "102", "104", or "syslog LOG_…"
    function: str
    text: str  # as between the quotes of the source, escapes and all
    file: object
    line: int


class Library:
    """The library's functions, and who mentions whom."""

    def __init__(self, files):
        """Reads sources and headers; `files` in the order in which messages are to be told."""
        self.functions = []
        self._constants = defaultdict(dict)
        for file in files:
            text = file.read_text(encoding="utf-8")
            self.functions += cpp_source.functions_of(text, file)
            self._note_constants(file, text)
        self._by_name = defaultdict(list)
        for function in self.functions:
            self._by_name[function.name].append(function)

    def _note_constants(self, file, text):
        """Notes the plain constants of a file: constexpr int NAME = OTHER;"""
        tokens = cpp_source.tokens_of(text)
        for index in range(len(tokens) - 3):
            if tokens[index + 1].text == "=" and tokens[index + 3].text == ";":
                self._constants[file][tokens[index].text] = tokens[index + 2].text

    def definition(self, name, file):
        """What a name means in a file: its own function first. None for another's function."""
        found = self._by_name.get(name, [])
        own = [function for function in found if function.file == file]
        others = [function for function in found if not function.local]
        return (own or others or [None])[0]

    def home(self, name):
        """The function that bears a message's name."""
        found = self._by_name.get(name)
        if not found:
            raise SourceError(f"a message bears the name {name}, which is no function here")
        return min(found, key=lambda function: function.local)

    def callers(self, function):
        """Each function that mentions this one in its body."""
        for other in self.functions:
            if other is function or (function.local and other.file != function.file):
                continue
            if any(token.kind == "name" and token.text == function.name for token in other.body):
                if self.definition(function.name, other.file) is function:
                    yield other

    def exported_above(self, name, exported):
        """The exported functions through which a function inside the library is reached first."""
        reached, seen, waiting = set(), set(), [self.home(name)]
        while waiting:
            function = waiting.pop()
            for caller in self.callers(function):
                if caller.name in exported:
                    reached.add(caller.name)
                elif (caller.name, caller.file) not in seen:
                    seen.add((caller.name, caller.file))
                    waiting.append(caller)
        return sorted(reached)

    def sites(self):
        """Every message, in the order of the files and lines."""
        found = []
        for function in self.functions:
            for token, arguments in cpp_source.calls_in(function.body, _is_message):
                if token.text == "syslog":
                    found.append(self._log_site(function, token, arguments))
                else:
                    found += self._point_sites(function, token, arguments)
        return found

    def _point_sites(self, function, token, arguments):
        where = f"{function.file}:{token.line}"
        if token.text in _BEHIND:
            if function.file.name == "trace.h":
                return []
            raise SourceError(f"{where}: {token.text} is for trace.h only; use TRACE or REPORT")
        if token.text not in POINTS:
            raise SourceError(f"{where}: {token.text} isn't known; teach it to {__name__}.py")
        level, named = POINTS[token.text]
        names = [function.name]
        if named:
            names = self._names(function, arguments[0], where, ())
            arguments = arguments[1:]
        text = self._text(arguments, where)
        return [Site(level, name, text, function.file, token.line) for name in names]

    def _log_site(self, function, token, arguments):
        where = f"{function.file}:{token.line}"
        priority = arguments[0][0].text
        priority = self._constants[function.file].get(priority, priority)
        text = self._text(arguments[1:], where)
        return Site(f"syslog {priority}", function.name, text, function.file, token.line)

    def _text(self, arguments, where):
        text = cpp_source.literal_of(arguments[0], _FORMAT_WORDS) if arguments else None
        if text is None:
            raise SourceError(f"{where}: a message's text has to be written out at its place")
        return text

    def _names(self, function, tokens, where, path):
        """The function names that an argument may hold."""
        literal = cpp_source.literal_of(tokens)
        if literal is not None:
            return [literal]
        word = tokens[0].text if len(tokens) == 1 else ""
        if word == "__func__":
            return [function.name]
        if word not in function.parameters:
            if self._by_name.get(word):
                return [word]
            raise SourceError(f"{where}: can't tell which function this message names")
        if function in path:
            raise SourceError(f"{where}: the message's function is handed round in a circle")
        return self._handed_in(function, function.parameters.index(word), where, path)

    def _handed_in(self, function, position, where, path):
        """What the callers hand in for a parameter."""
        names = []
        for caller in self.callers(function):
            calls = cpp_source.calls_in(caller.body, lambda name: name == function.name)
            for _, arguments in calls:
                names += self._names(caller, arguments[position], where, (*path, function))
        if not names:
            raise SourceError(f"{where}: nobody calls {function.name}, so the message has no name")
        return list(dict.fromkeys(names))


def _is_message(name):
    return name == "syslog" or name in _BEHIND or name.startswith(("TRACE", "REPORT"))
