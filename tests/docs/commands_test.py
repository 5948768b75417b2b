"""commands_test.py: every command that a page shows runs, and prints what the page shows.

    commands_test.py RTIF    of README.md and docs/*.md, with the program RTIF

A block of commands runs from top to bottom in a folder of its own, which has a copy of
examples/. Scripts run by `rtif run`, JSON is parsed and, where it is a configuration, brought
up. What can't run here is in excused.py with a reason. pages.py reads the pages.
"""

import functools
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import pages
from excused import DEV_OPTIONS, EXCUSED, OTHER_OPTIONS

ROOT = Path(__file__).resolve().parent.parent.parent
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z0-9-]*")
LANGUAGES = {"", "sh", "text", "console", "rtif", "json", "c", "cpp", "cmake", "mermaid"}
SECONDS = 60


class Place:
    """A folder as a reader has it: examples/, and rtif on the path."""

    rtif = Path()

    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="rtif-docs-")
        self.path = Path(self._folder.name) / "here"
        programs = Path(self._folder.name) / "bin"
        programs.mkdir()
        (programs / "rtif").symlink_to(Place.rtif)
        shutil.copytree(ROOT / "examples", self.path / "examples")
        self._environment = {
            **os.environ,
            "PATH": f"{programs}:/usr/bin:/bin",
            "HOME": str(self.path),
            "TERM": "dumb",
            "LC_ALL": "C.UTF-8",
        }

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._folder.cleanup()

    def run(self, command):
        """The exit code of a command line, and what it printed on both streams."""
        done = subprocess.run(
            ["bash", "-c", command],
            cwd=self.path,
            env=self._environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            timeout=SECONDS,
            encoding="utf-8",
            errors="replace",
            check=False,
        )
        return done.returncode, done.stdout


@functools.cache
def help_of(*words):
    """What `rtif [VERB] --help` says; nothing for a verb that there isn't."""
    done = subprocess.run(
        [Place.rtif, *words, "--help"], capture_output=True, encoding="utf-8", check=False
    )
    return done.stdout if done.returncode == 0 else ""


@functools.cache
def verbs():
    """The verbs of rtif, as its help lists them."""
    commands = help_of().split("Subcommands:")[-1]
    return re.findall(r"^ {2}([a-z][a-z-]*) ", commands, re.MULTILINE)


@functools.cache
def dev_help():
    """What `./dev help` says."""
    return subprocess.run(
        [ROOT / "dev", "help"], capture_output=True, encoding="utf-8", check=True
    ).stdout


def wrong_with_rtif(command):
    """What is wrong with the verb and the options of an rtif command line; None when nothing is.
    Words in brackets are a synopsis's."""
    words = re.split(r"[\s\[\]()|]+", command.split(" # ")[0])
    at = next(i for i, word in enumerate(words) if word.split("/")[-1] == "rtif")
    verb = words[at + 1] if len(words) > at + 1 else ""
    if verb == "" or verb.isupper() or verb == pages.LEFT_OUT:
        return None
    if verb.startswith("-"):
        known = help_of()
    elif verb in verbs():
        known = help_of(verb)
    else:
        return f"rtif has no verb {verb}"
    options = set(OPTION.findall(" ".join(words[at + 1 :]))) - {"--help"}
    unknown = sorted(options - set(OPTION.findall(known)))
    return f"rtif {verb} has no {', '.join(unknown)}" if unknown else None


def wrong_with_dev(command):
    """What is wrong with the verb and the options of a ./dev command line; None when nothing is."""
    words = command.split(" # ")[0].split()
    verb = words[1] if len(words) > 1 else "help"
    known = dev_help()
    if verb in DEV_OPTIONS:
        known += (ROOT / DEV_OPTIONS[verb]).read_text("utf-8")
    if not re.search(rf"^ {{2}}{re.escape(verb)}\b", dev_help(), re.MULTILINE):
        return f"./dev has no verb {verb}"
    unknown = sorted(set(OPTION.findall(command)) - set(OPTION.findall(known)))
    return f"./dev {verb} has no {', '.join(unknown)}" if unknown else None


def wrong_with(command):
    """What is wrong with a command line that isn't run."""
    first = command.split()[0]
    if first == "./dev":
        return wrong_with_dev(command)
    return wrong_with_rtif(command) if first.split("/")[-1] == "rtif" else None


def excuse_of(page, command):
    """Why a command isn't run; None when it is to be run."""
    return next((e for e in EXCUSED if e.page == page and command.startswith(e.begins)), None)


def is_command(line):
    """Whether a line without a prompt begins as a command line does."""
    words = line.split()
    if not words or not line[0].isprintable() or line[0].isspace():
        return False
    first = words[0]
    return first in ("rtif", "./dev", "sudo") or (
        re.fullmatch(r"[a-z./][\w./-]*", first) is not None
        and (shutil.which(first) is not None or os.access(ROOT / first, os.X_OK))
        and not (ROOT / first).is_dir()
    )


def scripts_of(page):
    """The scripts of a page, each with its first line. A script goes on in the page's next block;
    `up` begins one."""
    scripts = []
    for block in page.blocks:
        if block.language == "rtif":
            if not scripts or re.search(r"^up ", block.text, re.MULTILINE):
                scripts.append((block.line, ""))
            scripts[-1] = (scripts[-1][0], scripts[-1][1] + block.text)
    return scripts


def json_values(text, where):
    """The values of a text, one behind the other."""
    values = []
    decoder = json.JSONDecoder()
    text = text.strip()
    while text:
        try:
            value, end = decoder.raw_decode(text)
        except json.JSONDecodeError as error:
            raise AssertionError(f"{where}: {error}") from error
        values.append(value)
        text = text[end:].strip()
    return values


class Documents(unittest.TestCase):
    """README.md and docs/*.md."""

    longMessage = False

    @classmethod
    def setUpClass(cls):
        cls.pages = pages.all_pages(ROOT)

    def for_blocks(self, hold, *languages):
        """Calls a function with each block of these languages, each as a test of its own."""
        for page in self.pages:
            for block in page.blocks:
                if block.language in languages:
                    with self.subTest(f"{page.name}:{block.line}"):
                        hold(block)

    def test_blocks_have_a_language_that_is_known(self):
        for page in self.pages:
            for block in page.blocks:
                self.assertIn(block.language, LANGUAGES, f"{page.name}:{block.line}")

    def test_commands_print_what_is_shown(self):
        self.ran = 0
        self.for_blocks(self.hold_commands, "console")
        self.assertGreater(self.ran, 10)

    def hold_commands(self, block):
        """Runs the commands of a block, but those that are excused."""
        self.assertTrue(block.commands(), f"{block.page}:{block.line}: no command in the block")
        with Place() as place:
            for command in block.commands():
                self.hold_command(block, command, place)

    def hold_command(self, block, command, place):
        """Holds what a command prints against what is shown below it."""
        where = f"{block.page}:{command.line}: {command.text}"
        excuse = excuse_of(block.page, command.text)
        if excuse and excuse.unless and place.run(excuse.unless)[0] == 0:
            excuse = None
        if not excuse and command.root:
            self.fail(f"{where}\nneeds root, and tests/docs/excused.py doesn't say so")
        if excuse or command.text.startswith("./dev"):
            self.assertIsNone(wrong_with(command.text), f"{where}\n{wrong_with(command.text)}")
            if excuse and excuse.prints:
                self.hold_lines(where, command, 0, (ROOT / excuse.prints).read_text("utf-8"))
            return
        self.ran += 1
        self.hold_lines(where, command, *place.run(command.text))

    def hold_lines(self, where, command, code, printed):
        """Holds what a command printed against what is shown."""
        self.assertIn(code, (0, 1, 2), f"{where}\nended with {code}\n{printed[-4000:]}")
        shown = "\n".join(pages.without_blank_end(command.shown))
        if not pages.shows(command.shown, printed.split("\n")):
            self.fail(f"{where}\n-- shown:\n{shown}\n-- printed, code {code}:\n{printed[:4000]}")
        if not shown:
            self.assertEqual(code, 0, f"{where}\nended with {code} and nothing is shown")

    def test_prompts_stand_in_blocks_of_commands_only(self):
        self.for_blocks(self.hold_no_prompt, "", "sh", "text", "rtif")

    def hold_no_prompt(self, block):
        """A comment of a script isn't told from root's prompt, so only $ is looked for."""
        for command in block.commands():
            where = f"{block.page}:{command.line}: {command.text}"
            self.assertTrue(command.root, f"{where}\nbegin the block with ```console")

    def test_command_lines_without_a_prompt_are_known(self):
        self.for_blocks(self.hold_bare_lines, "", "sh", "text")

    def hold_bare_lines(self, block):
        """Command lines without a prompt, or with root's, have verbs and options that exist, or
        an excuse."""
        for number, line in block.bare_lines():
            if block.language == "":
                line = line.removeprefix("# ")
            if is_command(line):
                where = f"{block.page}:{number}: {line}"
                self.assertIsNone(wrong_with(line), f"{where}\n{wrong_with(line)}")
                ours = line.split()[0] in ("rtif", "./dev")
                self.assertTrue(
                    ours or excuse_of(block.page, line),
                    f"{where}\nis neither run nor excused: give it a prompt in a block that "
                    "begins with ```console, or a reason in tests/docs/excused.py",
                )

    def test_scripts_run(self):
        for page in self.pages:
            for line, script in scripts_of(page):
                with self.subTest(f"{page.name}:{line}"), Place() as place:
                    (place.path / "script.rtif").write_text(script, "utf-8")
                    code, printed = place.run("rtif run --state state script.rtif")
                    self.assertEqual(code, 0, f"{page.name}:{line}\n{printed[-4000:]}")

    def test_json_can_be_read_and_is_taken(self):
        self.for_blocks(self.hold_json, "json")

    def hold_json(self, block):
        """Configurations come up, default routes are written; all else can be read."""
        where = f"{block.page}:{block.line}"
        for value in json_values(block.text, where):
            command = ""
            # The tables of a configuration have names in capitals.
            if isinstance(value, dict) and any(re.match(r"[A-Z_0-9]+(\||$)", key) for key in value):
                command = "rtif up shown.json"
            elif isinstance(value, list) and "paths" in value[0]:
                command = "rtif default-routes shown.json routes.txt"
            if command:
                with Place() as place:
                    (place.path / "shown.json").write_text(json.dumps(value), "utf-8")
                    code, printed = place.run(command)
                    self.assertEqual(code, 0, f"{where}: {command}\n{printed}")

    def test_verbs_and_options_in_prose_exist(self):
        every_option = {"--help", "--version", *OTHER_OPTIONS}.union(
            OPTION.findall(dev_help()), *(OPTION.findall(help_of(verb)) for verb in verbs())
        )
        for page in self.pages:
            for line, span in page.spans:
                with self.subTest(f"{page.name}:{line}"):
                    self.hold_span(f"{page.name}:{line}: `{span}`", span, every_option)

    def hold_span(self, where, span, every_option):
        """Holds code in prose against what rtif and ./dev have."""
        option = OPTION.match(span)
        if span.split()[0] in ("rtif", "./dev"):
            self.assertIsNone(wrong_with(span), f"{where}\n{wrong_with(span)}")
        elif option:
            self.assertIn(option[0], every_option, f"{where}: no verb of rtif or ./dev has it")

    def test_links_lead_to_files_and_headings(self):
        anchors = {page.name: page.anchors for page in self.pages}
        for page in self.pages:
            for line, link in page.links:
                path, _, anchor = link.partition("#")
                if ":" in path:
                    continue
                target = os.path.normpath(Path(page.name).parent / path) if path else page.name
                with self.subTest(f"{page.name}:{line}"):
                    self.assertTrue((ROOT / target).exists(), f"{page.name}:{line}: no {target}")
                    if anchor:
                        known = anchors.get(target, {anchor})
                        self.assertIn(anchor, known, f"{page.name}:{line}: no #{anchor}")

    def test_integrating_names_each_header_and_datum_of_the_contract(self):
        page = (ROOT / "docs/integrating.md").read_text(encoding="utf-8")
        contract = ROOT / "platform/include"
        missing = []
        for header in sorted(contract.rglob("*.h")):
            data = re.findall(r'^extern [^(;"\n]*?(\w+)(?:\[\w*\])?;',
                              header.read_text(encoding="utf-8"), re.M)
            for name in [str(header.relative_to(contract)), *data]:
                if f"`{name}`" not in page:
                    missing.append(name)
        self.assertEqual(missing, [])

    def test_excuses_are_needed(self):
        for page in self.pages:
            lines = [command.text for block in page.blocks for command in block.commands()]
            lines += [line for block in page.blocks for _, line in block.bare_lines()]
            for excuse in EXCUSED:
                if page.name == excuse.page:
                    self.assertTrue(
                        any(line.removeprefix("# ").startswith(excuse.begins) for line in lines),
                        f"{excuse.page} has no command that begins with {excuse.begins!r}",
                    )


class Checks(unittest.TestCase):
    """What is found in command lines that aren't run."""

    def test_verbs_and_options_that_there_are_pass(self):
        for command in (
            "rtif",
            "rtif --help",
            "rtif up [--chip KIND] [--calls|--trace] CONFIG.json   # --no-such in a comment",
            "build/dev/bin/rtif run --quiet -",
            "./dev sweep --stride 20",
            "cmake --no-such",
        ):
            self.assertIsNone(wrong_with(command), command)

    def test_others_are_told(self):
        for command, told in (
            ("rtif upp a.json", "rtif has no verb upp"),
            ("rtif up --cals a.json", "rtif up has no --cals"),
            ("rtif run [--quiet|--loud] SCRIPT", "rtif run has no --loud"),
            ("./dev tes", "./dev has no verb tes"),
            ("./dev demo --quickly", "./dev demo has no --quickly"),
        ):
            self.assertEqual(wrong_with(command), told)

    def test_lines_that_are_commands(self):
        for line in ("rtif up CONFIG", "./dev demo", "ls -l", "examples/ping.sh"):
            self.assertTrue(is_command(line), line)
        for line in ("", "  rtif", "up kinds.json", "Ethernet0  IPv4", "├─ rtif", "h = 0x9e"):
            self.assertFalse(is_command(line), line)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit("usage: commands_test.py RTIF [unittest option...]")
    Place.rtif = Path(sys.argv.pop(1)).resolve()
    if not os.access(Place.rtif, os.X_OK):
        sys.exit(f"{Place.rtif}: no program; build the target rtif first")
    unittest.main()
