"""Man pages and completions, held against what the command and the headers say of
themselves: every command and every option is in its page, and in what each shell offers,
and nothing else is. And the command itself, installed.

    RTIF=build/dev/bin/rtif [BUILD=build/dev] python3 tests/install/test_manual.py [TEST...]

A shell that isn't installed counts as skipped.
"""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from functools import cache
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
HERE = Path(__file__).resolve().parent
PAGES = ROOT / "packaging/man"
COMPLETION = ROOT / "packaging/completion"
EXAMPLES = ROOT / "examples"
INSTALLED_EXAMPLES = "/usr/share/doc/rtif/examples"
RTIF = Path(os.environ.get("RTIF", ROOT / "build/dev/bin/rtif")).resolve()


@cache
def help_of(*command):
    return subprocess.run([RTIF, *command, "--help"], capture_output=True, text=True, check=True).stdout


@cache
def commands():
    """The commands, as `rtif --help` lists them."""
    listed = help_of().split("Subcommands:")[1]
    return tuple(re.findall(r"^  (\S+)  ", listed, re.M))


@cache
def options(*command):
    """Each option of a command with the values that it may have, where those are listed."""
    found = {}
    for line in re.findall(r"^  (-.*)", help_of(*command), re.M):
        values = re.search(r"\{(.*?)\}", line)
        for name in line.split()[0].split(","):
            found[name] = set(values[1].split(",")) if values else None
    return found


def long_options(*command):
    return {name for name in options(*command) if name.startswith("--")}


class Page:
    """A man page."""

    def __init__(self, name):
        self.text = (PAGES / name).read_text()
        self.parts = dict(re.findall(r"^\.SH (.*?)\n(.*?)(?=^\.SH |\Z)", self.text, re.M | re.S))

    def entries(self, part):
        """The heads of its lists' entries, without marks of fonts."""
        return [re.sub(r'^\.[BIR]+ |\\f.|\\&|"', "", line).replace("\\-", "-")
                for line in re.findall(r"^\.TP\n(.*)", self.parts[part], re.M)]

    def tags(self, part):
        """The first word of each."""
        return {re.split(r"[\s(]", entry)[0] for entry in self.entries(part)}

    def option_tags(self):
        return {word for entry in self.entries("OPTIONS") for word in re.split(r"[\s,]+", entry)
                if word.startswith("-")}


def exported():
    """What the library's headers mark."""
    names = set()
    for header in (ROOT / "asic/forwarding-sw/l3lif/pd_trident/include").glob("*.h"):
        text = re.sub(r"/\*.*?\*/|^#.*?$", "", header.read_text(), flags=re.M | re.S)
        for declaration in re.findall(r"RTIFHAL_EXPORT([^;]*);", text):
            names.add(re.search(r"(\w+)\s*(?:\(|\[|$)", declaration.strip())[1])
    return names


class ManPages(unittest.TestCase):

    def test_each_command_has_a_page(self):
        self.assertEqual({path.name for path in PAGES.iterdir()},
                         {"rtif.1", "librtifhal_trident.3"} | {f"rtif-{name}.1" for name in commands()})

    def test_the_first_page_has_the_commands(self):
        page = Page("rtif.1")
        self.assertEqual(page.tags("COMMANDS"), set(commands()))
        named = re.findall(r"^\.BR rtif\\-(\S+) \(1\)", page.parts["SEE ALSO"], re.M)
        self.assertEqual({name.replace("\\-", "-") for name in named}, set(commands()))

    def test_a_page_has_the_options_of_its_command(self):
        self.assertEqual(Page("rtif.1").option_tags(), set(options()))
        for command in commands():
            with self.subTest(command):
                self.assertEqual(Page(f"rtif-{command}.1").option_tags(), set(options(command)))

    def test_a_page_has_the_values_of_an_option(self):
        for command in commands():
            text = Page(f"rtif-{command}.1").parts["OPTIONS"]
            for option, values in options(command).items():
                for value in values or ():
                    with self.subTest(f"{command} {option} {value}"):
                        described = text.split(option.replace("-", "\\-"))[1].split(".TP")[0]
                        self.assertRegex(described, rf"\b{value}\b")

    def test_a_page_has_the_defaults_of_the_help(self):
        compared = 0
        for command in commands():
            text = Page(f"rtif-{command}.1").parts["OPTIONS"]
            for name, default in re.findall(r"^  (?:-\w,)?(--\w[\w-]*) \S.*?=(\d+)\b", help_of(command), re.M):
                with self.subTest(f"{command} {name}"):
                    described = text.split(name.replace("-", "\\-"))[1].split(".TP")[0]
                    self.assertRegex(described, rf"\b{default}\b")
                compared += 1
        self.assertGreater(compared, 0)

    def test_the_language_of_scripts_is_whole(self):
        listed = subprocess.run([RTIF, "run", "-"], input="help\n", capture_output=True, text=True,
                                check=True).stdout
        verbs = {line.split()[0] for line in listed.splitlines()[1:]}
        self.assertGreater(len(verbs), 20)
        self.assertEqual(Page("rtif-run.1").tags("LANGUAGE"), verbs)

    def test_a_page_tells_every_exit_status(self):
        for command in commands():
            with self.subTest(command):
                self.assertEqual(Page(f"rtif-{command}.1").tags("EXIT STATUS"), {"0", "1", "2"})

    def test_the_library_s_page_names_what_is_exported(self):
        self.assertEqual(Page("librtifhal_trident.3").tags("FUNCTIONS AND DATA"), exported())

    @unittest.skipUnless(shutil.which("groff"), "groff isn't installed")
    def test_pages_are_formatted_without_a_warning(self):
        for path in sorted(PAGES.iterdir()):
            with self.subTest(path.name):
                said = subprocess.run(["groff", "-man", "-ww", "-Tutf8", path], capture_output=True,
                                      text=True, check=True).stderr
                self.assertEqual(said, "")

    def test_what_the_examples_show_can_be_done(self):
        for command in commands():
            if command in ("shell", "wire"):  # a terminal, and interfaces of root's
                continue
            examples = Page(f"rtif-{command}.1").parts["EXAMPLES"]
            for shown in re.findall(r"^\.EX\n(.*?)\.EE", examples, re.M | re.S):
                if not shown.startswith(("rtif ", "cd ")):
                    continue
                with self.subTest(command), tempfile.TemporaryDirectory() as folder:
                    self.do(folder, shown)

    def do(self, folder, shown):
        """Runs lines of a page in a folder of their own."""
        lines = shown.replace("\\-", "-").replace("\\e\n", "\\\n").replace("/tmp/", f"{folder}/")
        lines = lines.replace(INSTALLED_EXAMPLES, str(EXAMPLES))
        path = f"{RTIF.parent}:{os.environ['PATH']}"
        made = subprocess.run(["sh", "-ec", lines], cwd=folder, capture_output=True, text=True,
                              check=False, env={**os.environ, "PATH": path})
        self.assertEqual(made.returncode, 0, lines + made.stdout[-2000:] + made.stderr)


@unittest.skipUnless("BUILD" in os.environ, "there is no build folder to install from")
class Installed(unittest.TestCase):
    """rtif in a prefix, as it is after a move."""

    def test_it_finds_its_library_and_brings_an_example_up(self):
        with tempfile.TemporaryDirectory(prefix="rtifhal-tools-") as folder:
            first, prefix = Path(folder) / "first", Path(folder) / "a place elsewhere"
            for component in ("library", "tools"):
                subprocess.run(["cmake", "--install", os.environ["BUILD"], "--prefix", first,
                                "--component", component], capture_output=True, check=True)
            first.rename(prefix)
            rtif = prefix / "bin/rtif"
            loaded = subprocess.run(["ldd", rtif], capture_output=True, text=True, check=True).stdout
            self.assertRegex(loaded, rf"librtifhal_trident\.so\.0 => {re.escape(str(prefix))}/")
            seen = subprocess.run([rtif, "up", prefix / "share/doc/rtif/examples/kinds.json"],
                                  capture_output=True, text=True, check=True).stdout
            self.assertIn("\n7 interfaces: 7 up, 0 failed", seen)
            self.assertEqual({path.name for path in prefix.glob("share/man/man1/*")},
                             {path.name for path in PAGES.glob("*.1")})


class Shell:
    """What all shells have to offer; each asks its own."""

    def offers(self, *lines):
        """For each line the words offered at its end, in a folder with a few files."""
        raise NotImplementedError

    def asked(self, *lines):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("a.json", "b.rtif", "c.pcap"):
                (Path(folder) / name).touch()
            (Path(folder) / "sub").mkdir()
            return self.offers(folder, *lines)

    def compare(self, wanted):
        """`wanted` has what each line is to be answered with."""
        for (line, words), seen in zip(wanted.items(), self.asked(*wanted), strict=True):
            with self.subTest(line):
                self.assertEqual({word.rstrip("/") for word in seen}, words)

    def test_commands(self):
        self.compare({"rtif ": set(commands()), "rtif --": long_options()})

    def test_options(self):
        self.compare({f"rtif {command} --": long_options(command) for command in commands()})

    def test_values_of_options(self):
        wanted = {}
        for command in commands():
            for option, values in options(command).items():
                if values and option.startswith("--"):
                    wanted[f"rtif {command} {option} "] = values
        self.assertGreater(len(wanted), 8)
        self.compare(wanted)

    def test_files_and_folders(self):
        both = {"a.json", "sub"}
        self.compare({"rtif up ": both, "rtif up --chip trident a": {"a.json"},
                      "rtif restart --config ": both, "rtif run ": {"b.rtif", "sub"}, "rtif packet --pcap ": {"c.pcap", "sub"},
                      "rtif replay ": {"a.json", "b.rtif", "c.pcap", "sub"},
                      "rtif up --state ": {"sub"}, "rtif packet --out ": {"sub"}})

    def test_words_of_one_s_own(self):
        self.compare({"rtif packet --vlan ": set(), "rtif packet --ip ": set(),
                      "rtif packet --ip 10.0.0.1 ": set(), "rtif packet --proto t": {"tcp"}})

    def test_kinds_of_numbers(self):
        kinds = re.search(r"KIND REQUIRED +The kind of number: (.*)", help_of("explain"))[1]
        self.compare({"rtif explain ": set(kinds.split(", ")), "rtif explain iif 3 ": {"a.json", "sub"}})


def answer(folder, *command):
    """What a shell printed; one that has anything to complain about fails the test."""
    made = subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False)
    if made.returncode != 0 or made.stderr != "":
        raise AssertionError(f"{command[0]}: exit {made.returncode}\n{made.stderr}")
    # A line of its own, "--", ends the answer to a question; -h is --help.
    return [{line.split("\t")[0] for line in part.splitlines()} - {"-h", ""}
            for part in re.split(r"^--\n", made.stdout, flags=re.M)[:-1]]


class Bash(Shell, unittest.TestCase):

    def offers(self, folder, *lines):
        script = f'source "{COMPLETION}/rtif.bash"\n'
        for line in lines:
            words = [repr(word) for word in line.split(" ")]
            script += f"COMP_WORDS=({' '.join(words)}) COMP_CWORD={len(words) - 1}\n"
            script += '_rtif; printf "%s\\n" "${COMPREPLY[@]}" --\n'
        return answer(folder, "bash", "--norc", "-uc", script)

    def test_it_is_what_bash_asks(self):
        script = f'source "{COMPLETION}/rtif.bash"; complete -p rtif'
        made = subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True, check=True)
        self.assertEqual(made.stdout, "complete -F _rtif rtif\n")


@unittest.skipUnless(shutil.which("zsh"), "zsh isn't installed")
class Zsh(Shell, unittest.TestCase):

    def offers(self, folder, *lines):
        return answer(folder, HERE / "complete.zsh", COMPLETION, *lines)


@unittest.skipUnless(shutil.which("fish"), "fish isn't installed")
class Fish(Shell, unittest.TestCase):

    def offers(self, folder, *lines):
        script = f"source {COMPLETION}/rtif.fish\n"
        script += "".join(f"complete -C '{line}'; echo -- --\n" for line in lines)
        return answer(folder, "fish", "--no-config", "-c", script)


if __name__ == "__main__":
    unittest.main()
