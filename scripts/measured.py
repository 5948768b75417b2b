"""measured.py: what doesn't take a benchmark: the machine, and the library as a file.

    measured.py BUILD --load PROGRAM --json FILE

writes one JSON object: `machine`, on what, with what compiler and flags; `size`
and `relocations` of the shared library of BUILD; `load`, what PROGRAM
(bench/load_time.cpp) measured. performance.py makes the page of it.
"""

import argparse
import json
import os
import platform
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from collections import Counter
from datetime import datetime, timezone
from pathlib import Path

import page

LIBRARY = "lib/librtifhal_trident.so"

# Options of the compiler that say nothing about how fast the result is.
_SILENT_OPTIONS = ("-D", "-I", "-W", "-c", "-i", "-M")

_RELOCATION = re.compile(r"^[0-9a-f]+\s+[0-9a-f]+\s+(R_\w+)", flags=re.MULTILINE)


class MeasureError(Exception):
    """Why something can't be measured."""


def run(command):
    """What a command prints; raises MeasureError when it fails."""
    if shutil.which(command[0]) is None:
        raise MeasureError(f"{command[0]} is missing")
    done = subprocess.run(
        command, capture_output=True, text=True, check=False, env={**os.environ, "LC_ALL": "C"}
    )
    if done.returncode != 0:
        raise MeasureError(f"{shlex.join(command)} failed: {done.stderr.strip()[-500:]}")
    return done.stdout


def optimisation(command):
    """Of a compiler's command line what decides how fast its code is, in order, once each."""
    words = shlex.split(command)
    kept = []
    skipped = False
    for word in words[1:]:
        if skipped:
            skipped = False
        elif word in ("-o", "-isystem", "-include", "-MF", "-MT", "-c", "-I"):
            skipped = True
        elif word.startswith(("-D_FORTIFY_SOURCE", "-U_FORTIFY_SOURCE")):
            kept.append(word)
        elif word.startswith("-") and not word.startswith(_SILENT_OPTIONS):
            kept.append(word)
    return list(dict.fromkeys(kept))


def compiler_of(build):
    """The version of the compiler and its options for the library's sources."""
    database = build / "compile_commands.json"
    if not database.exists():
        raise MeasureError(f"{database} is missing: build it first")
    for entry in json.loads(database.read_text(encoding="utf-8")):
        if page.LIBRARY in Path(entry["file"]).parents:
            compiler = shlex.split(entry["command"])[0]
            return run([compiler, "--version"]).splitlines()[0], optimisation(entry["command"])
    raise MeasureError(f"{database} has none of the library's sources")


def processor_of(text):
    """Name and number of processors, by /proc/cpuinfo."""
    names = re.findall(r"^model name\s*: (.*)$", text, flags=re.MULTILINE)
    count = len(re.findall(r"^processor\s*:", text, flags=re.MULTILINE))
    return (names[0] if names else platform.machine()), max(count, 1)


def machine(build):
    """Where and with what the figures come about."""
    name, count = processor_of(Path("/proc/cpuinfo").read_text(encoding="utf-8"))
    memory = re.search(r"MemTotal:\s+(\d+)", Path("/proc/meminfo").read_text(encoding="utf-8"))
    compiler, options = compiler_of(build)
    return {
        "processor": name,
        "processors": count,
        "memory_kib": int(memory[1]) if memory else 0,
        "system": platform.freedesktop_os_release().get("PRETTY_NAME", "Linux"),
        "kernel": platform.release(),
        "compiler": compiler,
        "options": options,
        "load_average": round(os.getloadavg()[1], 1),
    }


def sections_of(text):
    """text, data and bss in bytes, as `size` prints them."""
    found = re.search(r"^\s*(\d+)\s+(\d+)\s+(\d+)\s", text, flags=re.MULTILINE)
    if not found:
        raise MeasureError(f"size printed what isn't known: {text[:200]}")
    return dict(zip(("text", "data", "bss"), map(int, found.groups())))


def relocations_of(text):
    """How many relocations there are of each kind, as `readelf -rW` prints them."""
    return dict(sorted(Counter(_RELOCATION.findall(text)).items()))


def size_of(library):
    """The library's size: on disk, without symbols for debuggers, and in memory."""
    with tempfile.TemporaryDirectory() as folder:
        stripped = Path(folder) / library.name
        run(["strip", "-o", str(stripped), str(library)])
        stripped_bytes = stripped.stat().st_size
    return {
        "file": library.stat().st_size,
        "stripped": stripped_bytes,
        **sections_of(run(["size", str(library)])),
    }


def measure(build, load):
    """All of it; `load` is the program that measures how long loading takes."""
    library = (build / LIBRARY).resolve()
    if not library.exists():
        raise MeasureError(f"{library} is missing: build it first")
    return {
        "kind": "library",
        "measured": datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
        "machine": machine(build),
        "size": size_of(library),
        "relocations": relocations_of(run(["readelf", "-rW", str(library)])),
        "load": json.loads(run([str(load), str(library)])),
    }


def main(arguments):
    """Does what the command line says."""
    parser = argparse.ArgumentParser(description="Measures the machine and the library's file.")
    parser.add_argument("build", type=Path, help="build folder with the shared library")
    parser.add_argument("--load", type=Path, required=True, help="program that measures loading")
    parser.add_argument("--json", type=Path, required=True, help="file to write")
    options = parser.parse_args(arguments)
    try:
        found = measure(options.build, options.load)
    except (MeasureError, json.JSONDecodeError) as error:
        print(error, file=sys.stderr)
        return 1
    page.write(options.json, json.dumps(found, indent=1) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
