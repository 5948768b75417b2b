"""growth_instructions.py: how many instructions each request takes among few interfaces and among many.

    growth_instructions.py check PROGRAM          fails when one takes over 1.5 times as many
    growth_instructions.py PROGRAM --json FILE    writes what was counted

PROGRAM is growth_counts of an optimised build; it runs under valgrind's callgrind,
which counts the same instructions each time. Exit code 77: there is no valgrind.
"""

import argparse
import json
import shutil
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import page
from instructions import SKIPPED, CountError, callgrind, count_of

FEW = 16

# As many as a chip takes.
MANY = {"trident": 3580, "trident2": 7676}

LIMIT = 1.5


def counts(program, chip, interfaces):
    """Instructions by request, a batch each; raises CountError."""
    with callgrind(program, chip, str(interfaces)) as dumps:
        found = dict(count for count in map(count_of, dumps) if count)
    if not found:
        raise CountError(f"{program} {chip} {interfaces} has counted nothing")
    return found


def rows_of(chip, few, many):
    """A chip's rows: request, chip, instructions among few and among many interfaces."""
    if few.keys() != many.keys():
        raise CountError(f"{chip}: not the same requests: {sorted(few.keys() ^ many.keys())}")
    return [
        {"request": request, "chip": chip, "interfaces": MANY[chip], "few": few[request],
         "many": many[request]}
        for request in sorted(few)
    ]


def complaints(rows):
    """What grows too much, a line each."""
    return [
        f"{row['request']}, {row['chip']}: {row['many']} instructions among {row['interfaces']}"
        f" interfaces, {row['few']} among {FEW}"
        for row in rows
        if row["many"] > LIMIT * row["few"]
    ]


def measure(program):
    """The rows of both chips."""
    sizes = [(chip, number) for chip, most in MANY.items() for number in (FEW, most)]
    with ThreadPoolExecutor() as pool:
        counted = dict(zip(sizes, pool.map(lambda size: counts(program, *size), sizes)))
    return [
        row for chip, most in MANY.items()
        for row in rows_of(chip, counted[chip, FEW], counted[chip, most])
    ]


def main(arguments):
    """Does what the command line says."""
    parser = argparse.ArgumentParser(description="Counts instructions by number of interfaces.")
    parser.add_argument("verb", nargs="?", choices=("check",), help="hold them against the limit")
    parser.add_argument("program", help="growth_counts of an optimised build")
    parser.add_argument("--json", type=Path, help="file to write")
    options = parser.parse_args(arguments)
    if not shutil.which("valgrind") or not Path(options.program).exists():
        print("growth_instructions: valgrind isn't installed, or nothing is built for it")
        return SKIPPED
    try:
        rows = measure(options.program)
    except CountError as error:
        print(f"growth_instructions: {error}", file=sys.stderr)
        return 1
    if options.json:
        text = json.dumps({"kind": "growth_instructions", "rows": rows}, indent=1)
        page.write(options.json, text + "\n")
    same = sum(row["few"] == row["many"] for row in rows)
    print(f"{len(rows)} requests, {same} of them as long among {FEW} interfaces as among thousands")
    found = complaints(rows) if options.verb == "check" else []
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
