"""mutate.py: makes the library a little wrong, a place at a time, and counts what tests notice.

A mutant is noticed when one of the library's tests fails, or when their program
falls or doesn't end. One that no test can tell from the library stands in
mutants-equal.toml with the reason. Ends with 1 when any other survives, with 2
when it can't work.

    mutate.py --count 40           forty mutants, spread over all files
    mutate.py --file kinds/svi     all of one file
    mutate.py --list --messages    the names of those that change messages

mutants.py makes the mutants, mutation_bench.py builds and runs them.
"""

import argparse
import sys
import tempfile
import time
import tomllib
from collections import Counter
from pathlib import Path

import cpp_source
import mutants
import page
from mutation_bench import Bench, BenchError, sources_of

EQUAL = page.ROOT / "scripts/mutants-equal.toml"

# Suites that are asked first because they have noticed something in this file.
ASKED_FIRST = 5


class EqualError(Exception):
    """What is wrong with the list of equal mutants; one line for each finding."""


def all_mutants(library, messages=False):
    """The mutants of all files of the library."""
    found = []
    for name, path in sources_of(library).items():
        found += mutants.mutants_of(name, path.read_text(encoding="utf-8"), messages)
    return found


def read_equal(text):
    """The reasons why mutants are equal, by the mutants' keys.

    Each [[equal]] has a `reason` and its `mutants`: file, function, the line as
    it stands, operator, and which one of like ones where it isn't the first.

    Raises EqualError for a reason without words, and for what isn't such a mutant.
    """
    reasons = {}
    wrong = []
    for entry in tomllib.loads(text).get("equal", []):
        reason = entry.get("reason", "").strip()
        if not reason:
            wrong.append(f"no reason: {entry}")
        for words in entry.get("mutants", []):
            key = tuple(words) if len(words) == 5 else (*words, 1)
            if [type(word) for word in key] != [str, str, str, str, int]:
                wrong.append(f"no mutant's name: {words}")
            if key in reasons:
                wrong.append(f"twice: {words}")
            reasons[key] = reason
    if wrong:
        raise EqualError("\n".join(wrong))
    return reasons


def stale(reasons, known):
    """The keys of a list that no mutant has any more."""
    keys = {mutant.key for mutant in known}
    return [key for key in reasons if key not in keys]


def names_of(mutant, library):
    """What a test that is about a mutant's file may mention: the functions of the file."""
    path = library / mutant.file
    functions = cpp_source.functions_of(path.read_text(encoding="utf-8"), path)
    return {function.name for function in functions if not function.local}


class Run:
    """Mutants on the bench, one after the other."""

    def __init__(self, bench, reasons, out=sys.stdout):
        """`reasons` has the mutants that are known as equal."""
        self.bench = bench
        self.reasons = reasons
        self.out = out
        self.results = []  # mutant and verdict
        self.noticed_by = {}  # suites by file
        self.about = {}  # suites that mention a file's functions

    def suites_about(self, mutant):
        """The suites whose source mentions a function of the mutant's file."""
        if mutant.file not in self.about:
            names = names_of(mutant, self.bench.library)
            found = []
            for path, suites in self.bench.suites_of_file.items():
                text = path.read_text(encoding="utf-8")
                if any(name in text for name in names):
                    found += suites
            self.about[mutant.file] = found
        return self.about[mutant.file]

    def judge(self, mutant):
        """Lets the tests loose on one mutant, and tells the result."""
        begin = time.monotonic()
        noticed = self.noticed_by.setdefault(mutant.file, Counter())
        first = [suite for suite, _ in noticed.most_common(ASKED_FIRST)]
        text = mutant.applied((self.bench.library / mutant.file).read_text(encoding="utf-8"))
        verdict = self.bench.judge(mutant.file, text, first, self.suites_about(mutant))
        if verdict.by in self.bench.seconds:
            noticed[verdict.by] += 1
        self.results.append((mutant, verdict))
        kind = verdict.kind
        if kind == "survived" and mutant.key in self.reasons:
            kind = "equal"
        by = f" by {verdict.by}" if verdict.by else ""
        spent = time.monotonic() - begin
        print(f"{kind}{by}, {spent:.1f} s: {mutant.name}", file=self.out, flush=True)
        if kind == "survived":
            print(f"    {mutant.source}", file=self.out, flush=True)

    def survivors(self):
        """Those that aren't known as equal."""
        return [
            mutant
            for mutant, verdict in self.results
            if verdict.kind == "survived" and mutant.key not in self.reasons
        ]

    def table(self):
        """How many mutants each file had, and what became of them."""
        rows = {}
        for mutant, verdict in self.results:
            kind = verdict.kind
            if kind == "survived" and mutant.key in self.reasons:
                kind = "equal"
            for name in (mutant.file, "all"):
                rows.setdefault(name, Counter())[kind] += 1
        width = max((len(name) for name in rows), default=4)
        heads = ("MUTANTS", "NOTICED", "EQUAL", "SURVIVED", "UNCOMPILED")
        lines = [f"{'FILE':<{width}}" + "".join(f"  {head}" for head in heads)]
        for name in [name for name in rows if name != "all"] + ["all"] * ("all" in rows):
            row = rows[name]
            row["mutants"] = row["noticed"] + row["equal"] + row["survived"]
            numbers = "".join(f"  {row[head.lower()]:>{len(head)}}" for head in heads)
            lines.append(f"{name:<{width}}{numbers}")
        return lines


def options_of(arguments):
    """The command line, read."""
    parser = argparse.ArgumentParser(
        prog="mutate.py", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    add = parser.add_argument
    add("--count", type=int, metavar="N", help="N mutants, a like share of each file's")
    add("--seed", type=int, default=1, metavar="N", help="another choice of them; 1 as default")
    add("--file", action="append", default=[], metavar="PART", help="files with this in their name")
    add("--only", action="append", default=[], metavar="NAME", help="the mutant of that name")
    add("--messages", action="store_true", help="change what the library writes, not what it does")
    add("--list", action="store_true", help="name the mutants; build and run nothing")
    add("--build", type=Path, default=page.ROOT / "build/dev", metavar="DIR",
        help="a folder of the plain build with test_library; build/dev as default")  # fmt: skip
    return parser.parse_args(arguments)


def chosen_of(options, known):
    """The mutants that a command line asks for."""
    chosen = [
        mutant
        for mutant in known
        if (not options.file or any(part in mutant.file for part in options.file))
        and (not options.only or mutant.name in options.only)
    ]
    if options.count is not None:
        chosen = mutants.spread(chosen, options.count, options.seed)
    return chosen


def run(options, chosen, reasons):
    """Runs the mutants and tells the table; gives the exit code."""
    with tempfile.TemporaryDirectory(prefix="mutate-") as folder:
        bench = Bench(options.build.resolve(), Path(folder))
        bench.measure()
        ran = Run(bench, reasons)
        for mutant in chosen:
            ran.judge(mutant)
    print("\n".join(["", *ran.table()]))
    survivors = ran.survivors()
    if survivors:
        print("\nNo test notices:")
        for mutant in survivors:
            print(f"  {mutant.name}, in {mutant.function or 'no function'}, no. {mutant.nth}")
            print(f"      {mutant.source}")
    return 1 if survivors else 0


def main(arguments):
    """Does what the command line says."""
    options = options_of(arguments)
    try:
        reasons = read_equal(EQUAL.read_text(encoding="utf-8")) if EQUAL.exists() else {}
        known = all_mutants(page.LIBRARY, options.messages)
        chosen = chosen_of(options, known)
        if not chosen:
            raise BenchError("no such mutant: --list shows them")
        if options.list:
            for mutant in chosen:
                print(mutant.name)
            print(f"{len(chosen)} mutants", file=sys.stderr)
            return 0
        return run(options, chosen, reasons)
    except (BenchError, EqualError, tomllib.TOMLDecodeError) as error:
        print(error, file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
