"""instruction_profile.py: where the instructions of each request go, function by function.

    instruction_profile.py PROGRAM --library ARCHIVE --json FILE

PROGRAM is request_counts of an optimised build, ARCHIVE the library that it is linked
with: its functions are told from those of the platform and the C library by name. It
runs under valgrind's callgrind, as in instructions.py. Exit code 77: there is no valgrind.
"""

import argparse
import json
import re
import shutil
import subprocess
import sys
from collections import Counter
from datetime import datetime, timezone
from pathlib import Path

from instructions import SKIPPED, CountError, callgrind, count_of

CHIP = "trident2"
SIDE = "/library"

# A function's name stands behind its number where it comes first, and not again.
NAMED = re.compile(r"^c?fn=\((\d+)\)(?: (.*))?$")
COST = re.compile(r"^[+-]?[\d*]+ (\d+)$")


def own_costs(text, names):
    """The instructions of each function's own in a dump; `names` takes the names by number.

    The line behind "calls=" has what a called function took, which counts there.
    """
    costs = Counter()
    function = None
    called = False
    for line in text.splitlines():
        named = NAMED.match(line)
        if named:
            if named[2]:
                names[named[1]] = named[2]
            if line.startswith("fn="):
                function = named[1]
        elif line.startswith("calls="):
            called = True
        elif called:
            called = False
        elif function is not None:
            cost = COST.match(line)
            if cost:
                costs[function] += int(cost[1])
    return costs


def plain(symbol):
    """A function's name alone, without type, namespace, arguments and what the compiler put behind it."""
    symbol = re.sub(r"\(anonymous namespace\)::", "", symbol)
    return re.split(r"[(<'\[]| \.|\.(?:part|constprop|isra|cold)", symbol)[0].split("::")[-1].split(" ")[-1]


def functions_of(archive):
    """The plain names of an archive's functions."""
    listed = subprocess.run(["nm", "--demangle", "--defined-only", str(archive)],
                            capture_output=True, text=True, check=True).stdout
    return {plain(line.split(maxsplit=2)[2]) for line in listed.splitlines()
            if re.match(r"^[0-9a-f]+ [tTwW] ", line)}


def rows_of(dumps, library):
    """A row for each request of the library's side: its own instructions by function, and the rest."""
    names = {}
    rows = []
    for dump in dumps:
        text = dump.read_text()
        costs = own_costs(text, names)
        counted = count_of(dump)
        if not counted or not counted[0].endswith(SIDE):
            continue
        own = Counter()
        for number, cost in costs.items():
            name = plain(names[number])
            own[name if name in library else None] += cost
        rows.append({"request": counted[0].removesuffix(SIDE), "chip": CHIP,
                     "platform": own.pop(None, 0), "library": own.total(),
                     "functions": dict(own.most_common())})
        if sum(costs.values()) != counted[1]:
            raise CountError(f"{counted[0]}: {sum(costs.values())} instructions of functions,"
                             f" {counted[1]} in all")
    if not rows:
        raise CountError("the program has counted nothing")
    return rows


def profile(program, library):
    """The rows of all requests; raises CountError."""
    with callgrind(program, CHIP) as dumps:
        return rows_of(dumps, library)


def main(arguments=None):
    """Does what the words of the command line say."""
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="request_counts of an optimised build")
    parser.add_argument("--library", required=True, help="the library's archive")
    parser.add_argument("--json", required=True, help="the file to write")
    options = parser.parse_args(arguments)
    if not shutil.which("valgrind"):
        print("instruction_profile: valgrind isn't installed")
        return SKIPPED
    try:
        rows = profile(options.program, functions_of(options.library))
    except (CountError, subprocess.CalledProcessError) as error:
        print(f"instruction_profile: {error}", file=sys.stderr)
        return 1
    now = datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    Path(options.json).write_text(
        json.dumps({"kind": "profile", "measured": now, "rows": rows}, indent=1) + "\n",
        encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
