"""mutation_bench.py: a workbench on which one mutant after the other meets the library's tests.

Everything comes from a plain build: the tests and the embedded switch are
linked once into one object, so that a mutant costs the compiling of its own
sources, a short link, and the tests until one of them fails. The bench stands
in a folder of its own; neither sources nor build are written to.

mutants.py makes the mutants, mutate.py counts.
"""

import json
import re
import resource
import shlex
import shutil
import subprocess
from dataclasses import dataclass
from pathlib import Path

import page

SUFFIXES = (".cpp", ".h")

# Suites that take longer are asked last.
SLOW_SECONDS = 0.5

# What a test program may take; one that runs wild is noticed by that.
MEMORY_BYTES = 4 << 30

_TESTS = re.compile(r"^TEST(?:_[FP])?\(\s*(\w+)", re.MULTILINE)
_INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)
_FAILED = re.compile(r"^\[  FAILED  \] ([\w/]+)\.", re.MULTILINE)


class BenchError(Exception):
    """Why there is no bench, with what to do about it."""


@dataclass
class Verdict:
    """What the tests say of a mutant."""

    kind: str  # noticed, survived, uncompiled
    by: str = ""  # the suite that noticed it, or how the program ended


def sources_of(library):
    """Sources and headers of the library, by their names below its folder."""
    files = [path for path in library.rglob("*") if path.suffix in SUFFIXES]
    return {path.relative_to(library).as_posix(): path for path in sorted(files)}


def plain_suite(name):
    """A suite's name in its source: that of an instance "Kinds/Suite" or "Suite/0" is Suite."""
    parts = name.split("/")
    return parts[1] if len(parts) > 1 and not parts[1].isdigit() else parts[0]


def filter_of(suites):
    """GoogleTest's filter for suites, as they are or instantiated under a name."""
    return ":".join(f"{suite}.*:{suite}/*:*/{suite}.*" for suite in suites)


def _need_newer(built, source):
    """Raises BenchError unless an object is there and was built of the source as it is now."""
    if not built.exists() or built.stat().st_mtime < source.stat().st_mtime:
        raise BenchError(f"{built} is missing or old: run `./dev build` first")


class Bench:
    """The library's objects, its tests, and what runs them."""

    def __init__(self, build, folder, library=page.LIBRARY, tests=page.ROOT / "tests/library"):
        """`build`: the folder of a plain build; `folder`: an empty one to work in."""
        self.build = build
        self.folder = folder
        self.library = library
        self.copy = folder / "library"
        self.program = folder / "test_library"
        self.suites_of_file = {
            path: sorted(set(_TESTS.findall(path.read_text(encoding="utf-8"))))
            for path in sorted(tests.glob("*.cpp"))
        }
        self.seconds = {}  # of each suite
        self.objects = {}  # of each source
        self.commands = {}  # that compile it
        self._take_sources()
        self._take_objects()
        self._join_tests()

    def _take_sources(self):
        for name, path in sources_of(self.library).items():
            (self.copy / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(path, self.copy / name)

    def _take_objects(self):
        """Copies the build's objects and finds how each is compiled."""
        # Benchmarks compile the same sources for themselves.
        own = self.build / self.library.relative_to(page.ROOT)
        database = self.build / "compile_commands.json"
        if not database.exists():
            raise BenchError(f"{database} is missing: run `./dev build` first")
        for entry in json.loads(database.read_text(encoding="utf-8")):
            file = Path(entry["file"])
            if self.library not in file.parents:
                continue
            words = shlex.split(entry["command"])
            at = words.index("-o") + 1
            built = Path(entry["directory"]) / words[at]
            if own not in built.parents:
                continue
            _need_newer(built, file)
            name = file.relative_to(self.library).as_posix()
            taken = self.folder / f"{name.replace('/', '-')}.o"
            shutil.copyfile(built, taken)
            words[at] = str(taken)
            here = [word.replace(str(self.library), str(self.copy)) for word in words]
            self.objects[name] = taken
            self.commands[name] = [word for word in here if word not in ("-g", "-Werror")]
            self.commands[name] += ["-w", "-g0", "-O0"]

    def _join_tests(self):
        """Links all that isn't the library into one object."""
        show = ["ninja", "-C", str(self.build), "-t", "commands", "-s", "bin/test_library"]
        words = shlex.split(self._run(show).splitlines()[-1])
        objects = [word for word in words if word.endswith(".o")]
        for name in objects:
            source = page.ROOT / re.sub(r"CMakeFiles/test_library\.dir/|\.o$", "", name)
            _need_newer(self.build / name, source)
        # Not in one object with the tests: a call inside of one object isn't wrapped.
        tests, switch = self.folder / "tests.o", self.folder / "libsimswitch.a"
        linker = next((name for name in ("lld", "gold") if shutil.which(f"ld.{name}")), "bfd")
        self._run([f"ld.{linker}", "-r", "--strip-debug", "-o", str(tests), *objects])
        self._run(["strip", "-g", "-o", str(switch), "lib/libsimswitch.a"])
        options = [word for word in words if word.startswith("-Wl,--wrap=")]
        libraries = [word for word in words if re.search(r"/lib[^/]+\.(a|so[.\d]*)$", word)]
        self.link = [f"-fuse-ld={linker}", *options, str(tests)]
        others = [word for word in libraries if not word.startswith("lib/")]
        self.libraries = [str(switch), *others]

    def _run(self, command):
        done = subprocess.run(
            command, cwd=self.build, capture_output=True, text=True, errors="replace", check=False
        )
        if done.returncode != 0:
            raise BenchError(f"{shlex.join(command)[:200]} failed:\n{done.stderr[-2000:]}")
        return done.stdout

    def link_with(self, changed):
        """Links the tests with the library, some of its objects changed."""
        # The changed ones first: of an inline function that tests have too, the first counts.
        objects = [*changed.values()]
        objects += [path for name, path in self.objects.items() if name not in changed]
        words = [*map(str, objects), *self.link, "-o", str(self.program), *self.libraries]
        self._run(["c++", *words])

    def measure(self):
        """Runs the tests of the library as it is; how long each suite takes."""
        self.link_with({})
        report = self.folder / "suites.json"
        done = self._tests([f"--gtest_output=json:{report}"], 600)
        if done.returncode != 0:
            raise BenchError(f"the tests fail without any mutant:\n{done.stdout[-2000:]}")
        for suite in json.loads(report.read_text(encoding="utf-8"))["testsuites"]:
            name = plain_suite(suite["name"])
            self.seconds[name] = self.seconds.get(name, 0.0) + float(suite["time"].rstrip("s"))

    def _tests(self, arguments, seconds):
        """Runs the program with at most so many seconds of the processor."""

        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_BYTES, MEMORY_BYTES))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        command = [str(self.program), "--gtest_brief=1", *arguments]
        return subprocess.run(
            command,
            cwd=self.folder,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
            preexec_fn=limit,
            timeout=60 + 20 * seconds,
            check=False,
        )

    def fails_in(self, suites):
        """The first of these suites to fail, or how the program ended; "" where all pass."""
        chosen = [name for name in suites if name in self.seconds]
        if not chosen:
            return ""
        names = filter_of(chosen)
        seconds = int(3 + 4 * sum(self.seconds[name] for name in chosen))
        try:
            done = self._tests(["--gtest_fail_fast=1", f"--gtest_filter={names}"], seconds)
        except subprocess.TimeoutExpired:
            return "(no end)"
        if done.returncode == 0:
            return ""
        failed = _FAILED.search(done.stdout)
        if failed:
            return plain_suite(failed.group(1))
        return f"(ended with {done.returncode})"

    def includers(self, name):
        """The sources that include a header, also through others; a source is its own."""
        if name.endswith(".cpp"):
            return [name]
        known = {name}
        files = sources_of(self.copy).items()
        texts = {file: path.read_text(encoding="utf-8") for file, path in files}
        grown = True
        while grown:
            grown = False
            for file, text in texts.items():
                if file not in known and any(
                    one.endswith("/" + include) or one == include
                    for include in _INCLUDE.findall(text)
                    for one in known
                ):
                    known.add(file)
                    grown = True
        return sorted(file for file in known if file.endswith(".cpp"))

    def compile_changed(self, name, text):
        """Objects of a changed file's sources; None when they don't compile."""
        file = self.copy / name
        kept = file.read_text(encoding="utf-8")
        file.write_text(text, encoding="utf-8")
        changed = {}
        try:
            for source in self.includers(name):
                changed[source] = self.folder / f"mutant{len(changed)}.o"
                command = list(self.commands[source])
                command[command.index("-o") + 1] = str(changed[source])
                if subprocess.run(command, capture_output=True, check=False).returncode != 0:
                    return None
        finally:
            file.write_text(kept, encoding="utf-8")
        return changed

    def judge(self, name, text, first=(), second=()):
        """What the tests say of a file's changed text: some suites first, then others, then all."""
        changed = self.compile_changed(name, text)
        if changed is None:
            return Verdict("uncompiled")
        try:
            self.link_with(changed)
        except BenchError:
            return Verdict("uncompiled")
        slow = [suite for suite, seconds in self.seconds.items() if seconds > SLOW_SECONDS]
        asked = []
        for suites in (first, second, self.seconds, slow):
            last = suites is slow
            suites = [s for s in suites if s not in asked and (last or s not in slow)]
            failed = self.fails_in(suites)
            if failed:
                return Verdict("noticed", failed)
            asked += suites
        return Verdict("survived")
