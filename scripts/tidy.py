"""tidy.py: clang-tidy over all sources, a few of one folder at a time.

Reading GoogleTest, JSON and the standard library is most of clang-tidy's work, so
sources that are compiled alike are joined into one before it reads them. Where that
isn't clean, each is looked at alone: their nameless names may clash, or one's using
may serve another. Findings name the source's own file and line. What was clean is
remembered by its contents, its headers' and the checks', and isn't looked at again
until one of them changes.

    tidy.py build/check          all sources of that folder's compile commands
    tidy.py build/check lab/cpu  those below these folders
"""

import argparse
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import page

CONFIG = page.ROOT / ".clang-tidy"
JOINED = 8
# It includes what only a build makes.
LEFT_OUT = {"lab/session/platform_functions.cpp"}
# Some of g++'s warnings clang doesn't know.
EXTRA = ["--extra-arg=-Wno-unknown-warning-option"]
# The analyzer goes along every path of what GoogleTest's macros become: nine tenths of the
# time, for branches that are no test's. What tests call it looks at, and sanitizers run them.
# Nor has a test to be fast where it puts a text together; and a comma that is missing in its
# lists of expected lines makes it fail.
LESS_STRICT = "tests/"
LEFT_OUT_OF_TESTS = ("--checks=-clang-analyzer-*,-performance-inefficient-string-concatenation,"
                     "-bugprone-suspicious-missing-comma")
# A string is no comment, whatever stands in it.
COMMENT = re.compile(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)
PLACE = re.compile(r"^(?P<file>[^\s:]+):(?P<line>\d+):(?P<rest>\d+: )", re.MULTILINE)


def own_commands(commands, folders):
    """The compile commands of our own sources below `folders` (all if there are none).

    A list of (source relative to the root, directory, arguments without source and
    output), in the order of the sources' names.
    """
    found = {}
    for command in commands:
        try:
            name = str(Path(command["file"]).relative_to(page.ROOT))
        except ValueError:
            continue
        if name.startswith("build/") or name in LEFT_OUT or not name.endswith(".cpp"):
            continue
        if folders and not any(name == f or name.startswith(f.rstrip("/") + "/") for f in folders):
            continue
        words = shlex.split(command["command"])
        for option in ("-o", "-c"):
            if option in words:
                at = words.index(option)
                del words[at:at + 2]
        found.setdefault(name, (name, command["directory"], words))
    return [found[name] for name in sorted(found)]


def grouped(commands, number=JOINED):
    """Sources of one folder that are compiled alike, at most `number` in a group."""
    open_groups = {}
    groups = []
    for command in commands:
        name, directory, words = command
        key = (os.path.dirname(name), directory, tuple(words))
        group = open_groups.get(key)
        if group is None or len(group) == number:
            group = open_groups[key] = []
            groups.append(group)
        group.append(command)
    return groups


def joined(names, read):
    """The sources as one text, and for each of its lines (file, line)."""
    lines = []
    places = []
    for name in names:
        for number, line in enumerate(read(name).splitlines(), 1):
            lines.append(line)
            places.append((name, number))
    return "\n".join(lines) + "\n", places


def placed(output, unit, places):
    """clang-tidy's output with each place in `unit` told as that of its source."""
    def place(match):
        if match["file"] != unit:
            return match[0]
        file, line = places[int(match["line"]) - 1]
        return f"{file}:{line}:{match['rest']}"
    return PLACE.sub(place, output)


def without_comments(text):
    """A header as the checks see it: without comments, but for those that speak to them."""
    kept = COMMENT.sub(lambda m: m[0] if m[0][0] != "/" or "NOLINT" in m[0] else "", text)
    return "\n".join(line.rstrip() for line in kept.splitlines() if line.strip())


def what_counts(file):
    """The bytes of a file that can make a unit unclean. A better comment in a header that all
    include isn't worth an hour."""
    content = file.read_bytes()
    if file.suffix == ".h" and page.ROOT in file.resolve().parents:
        return without_comments(content.decode("utf-8")).encode()
    return content


class Tidy:
    """One run: where its files stand, and what is known to be clean."""

    def __init__(self, build):
        self.folder = Path(build).resolve() / "tidy"
        self.folder.mkdir(parents=True, exist_ok=True)
        version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True,
                                 check=True).stdout
        self.checks = version + CONFIG.read_text(encoding="utf-8") + " ".join(EXTRA)

    def stamp(self, unit, directory, words):
        """The name of the file that stands when this unit was clean, None if it can't be read."""
        made = subprocess.run(["clang++", *words[1:], "-Wno-unknown-warning-option", "-MM", unit],
                              cwd=directory, capture_output=True, text=True)
        if made.returncode != 0:
            return None
        files = made.stdout.replace("\\\n", " ").split()[1:]
        contents = hashlib.sha256(self.checks.encode() + " ".join(words).encode())
        for file in files:
            contents.update(what_counts(Path(directory) / file))
        return self.folder / (contents.hexdigest()[:32] + ".clean")

    def look(self, group):
        """What clang-tidy has to say of a group, empty when it is clean."""
        names = [name for name, _, _ in group]
        _, directory, words = group[0]
        text, places = joined(names, lambda n: (page.ROOT / n).read_text(encoding="utf-8"))
        title = hashlib.sha256(" ".join(names).encode()).hexdigest()[:16]
        unit = self.folder / f"{os.path.dirname(names[0]).replace('/', '_')}-{title}.cpp"
        unit.write_text(text, encoding="utf-8")
        # A quoted include is looked for beside the source first.
        words = [*words, "-iquote", str(page.ROOT / os.path.dirname(names[0]))]
        stamp = self.stamp(str(unit), directory, words)
        if stamp is not None and stamp.exists():
            return ""
        output = self.run(unit, directory, words, names[0].startswith(LESS_STRICT))
        if output and len(group) > 1:
            output = "".join(self.look([command]) for command in group)
        else:
            output = placed(output, str(unit), places)
        if not output and stamp is not None:
            stamp.touch()
        return output

    def run(self, unit, directory, words, less_strict):
        options = [LEFT_OUT_OF_TESTS, *EXTRA] if less_strict else EXTRA
        made = subprocess.run(
            ["clang-tidy", "--quiet", f"--config-file={CONFIG}", *options, str(unit), "--", *words[1:]],
            cwd=directory, capture_output=True, text=True)
        if made.returncode == 0:
            return ""
        return made.stdout or made.stderr


def main(arguments=None):
    parser = argparse.ArgumentParser(prog="tidy.py", description="clang-tidy over all sources")
    parser.add_argument("build", help="a folder with compile_commands.json")
    parser.add_argument("folders", nargs="*", help="only sources below these")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args(arguments)
    try:
        commands = json.loads((Path(options.build) / "compile_commands.json").read_text())
    except OSError as error:
        print(f"tidy.py: {error}; configure that folder first", file=sys.stderr)
        return 2
    own = own_commands(commands, options.folders)
    if not own:
        print("tidy.py: no such source", file=sys.stderr)
        return 2
    tidy = Tidy(options.build)
    findings = 0
    with ThreadPoolExecutor(options.jobs) as pool:
        for output in pool.map(tidy.look, grouped(own)):
            if output:
                findings += 1
                print(output, flush=True)
    print(f"{len(own)} sources, " + ("clean" if not findings else "not clean"))
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
