#!/usr/bin/python3
"""How many instructions each request takes, held against bench/instructions.json.

    instructions.py check PROGRAM    fails when a count of the library grew by more than 5 %
    instructions.py write PROGRAM    writes the table anew
    instructions.py show PROGRAM     prints the counts beside those of the platform calls alone

PROGRAM is request_counts of an optimised build; it runs under valgrind's callgrind, which
counts the same instructions each time. Exit code 77: there is no valgrind.
"""
import argparse
import concurrent.futures
import contextlib
import json
import math
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TABLE = pathlib.Path(__file__).resolve().parent.parent / "bench" / "instructions.json"
CHIPS = ("trident", "trident2")
SKIPPED = 77

# A count may grow by so much before its line has to be written anew. libc and GLib of
# another version take a few instructions more or less in what is short.
MARGIN = 0.05
SLACK = 10


class CountError(Exception):
    """Something that can't be counted."""


def count_of(dump):
    """The name and the count of a dump of callgrind; None for the one at the end."""
    text = dump.read_text()
    trigger = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
    total = re.search(r"^(?:summary|totals): (\d+)$", text, re.MULTILINE)
    if not trigger:
        return None
    return trigger.group(1), int(total.group(1)) if total else 0


@contextlib.contextmanager
def callgrind(program, *words):
    """Runs a program under callgrind: the dumps that it asked for, in their order, while they are there."""
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder) / "dump"
        done = subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no", f"--callgrind-out-file={out}",
             str(program), *words], capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise CountError(f"{' '.join([str(program), *words])} failed:\n{done.stderr[-2000:]}")
        yield sorted(pathlib.Path(folder).glob("dump.*"), key=lambda d: int(d.suffix[1:]))


def counts_of_chip(program, chip):
    """The rows of a chip: request, chip, library, floor."""
    with callgrind(program, chip) as dumps:
        counted = [count for count in map(count_of, dumps) if count]
    rows = {}
    for name, count in counted:
        request, side = name.rsplit("/", 1)
        rows.setdefault(request, {"request": request, "chip": chip})[side] = count
    if not rows or any(len(row) != 4 for row in rows.values()):
        raise CountError(f"{program} {chip}: the dumps aren't whole")
    return list(rows.values())


def counts(program):
    """The rows of all chips."""
    with concurrent.futures.ThreadPoolExecutor() as pool:
        parts = pool.map(lambda chip: counts_of_chip(program, chip), CHIPS)
        return [row for part in parts for row in part]


def key(row):
    return row["chip"], row["request"]


def complaints(expected, seen):
    """What of the counts doesn't fit the table, a line each."""
    lines = {key(row): row for row in expected}
    found = []
    for row in seen:
        line = lines.pop(key(row), None)
        if line is None:
            found.append(f"{row['request']}, {row['chip']}: has no line in {TABLE.name}")
            continue
        limit = line["library"] * (1 + MARGIN) + SLACK
        if row["library"] > limit:
            growth = 100 * (row["library"] / line["library"] - 1)
            found.append(f"{row['request']}, {row['chip']}: {row['library']} instructions, "
                         f"{line['library']} in {TABLE.name}, {growth:.1f} % more")
    found += [f"{request}, {chip}: is in {TABLE.name} and isn't measured"
              for chip, request in lines]
    return found


def ratio(row):
    return row["library"] / row["floor"]


def summary(rows):
    mean = math.exp(sum(math.log(ratio(row)) for row in rows) / len(rows))
    worst = max(rows, key=ratio)
    return (f"{len(rows)} requests, instructions over those of the platform calls alone: "
            f"geometric mean {mean:.3f}, largest {ratio(worst):.3f} "
            f"({worst['request']}, {worst['chip']})")


def text_of(rows):
    """The table's text, a line a request."""
    return "[\n" + ",\n".join("  " + json.dumps(row) for row in rows) + "\n]\n"


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("verb", choices=("check", "write", "show"))
    parser.add_argument("program", help="request_counts of an optimised build")
    options = parser.parse_args(arguments)
    if not shutil.which("valgrind"):
        print("instructions: valgrind isn't installed")
        return SKIPPED
    try:
        rows = counts(options.program)
    except CountError as error:
        print(f"instructions: {error}", file=sys.stderr)
        return 1
    if options.verb == "write":
        TABLE.write_text(text_of(rows))
    if options.verb == "show":
        for row in rows:
            print(f"{row['request']:44} {row['chip']:9} {row['library']:7} {row['floor']:7} "
                  f"{ratio(row):6.3f}")
    print(summary(rows))
    if options.verb != "check":
        return 0
    found = complaints(json.loads(TABLE.read_text()), rows)
    for line in found:
        print(line)
    if found:
        print("Where the growth is meant: ./dev bench --write-instructions")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
