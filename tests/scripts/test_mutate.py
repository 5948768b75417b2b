"""Tests of scripts/mutate.py: which mutants a command line asks for, and what is told of them."""

import io
import json
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import mutants  # noqa: E402
import mutate  # noqa: E402
import mutation_bench  # noqa: E402
import page  # noqa: E402
from mutation_bench import Verdict, filter_of, plain_suite  # noqa: E402

SOURCE = "int rtifhal_one(int a)\n{\n    if (a == b) {\n        f();\n    }\n    return 1;\n}\n"
LEFT_OUT = ["kinds/one.cpp", "rtifhal_one", "f();", "call left out"]


def equal(reason, *names):
    """A list of equal mutants as it stands in its file."""
    return f"[[equal]]\nreason = {reason!r}\nmutants = {list(names)!r}\n"


class Folder(unittest.TestCase):
    """A library of one source."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.library = Path(folder.name)
        (self.library / "kinds").mkdir()
        (self.library / "kinds/one.cpp").write_text(SOURCE, encoding="utf-8")
        self.known = mutate.all_mutants(self.library)


class Equal(Folder):
    """The list of mutants that no test can tell from the library."""

    def test_a_mutant_is_found_again(self):
        reasons = mutate.read_equal(equal("because", LEFT_OUT))
        self.assertEqual(reasons, {(*LEFT_OUT, 1): "because"})
        self.assertEqual(mutate.stale(reasons, self.known), [])

    def test_a_mutant_that_is_no_more_is_told(self):
        gone = [*LEFT_OUT[:2], "g();", "call left out"]
        reasons = mutate.read_equal(equal("because", LEFT_OUT, gone))
        self.assertEqual(mutate.stale(reasons, self.known), [(*gone, 1)])

    def test_a_reason_is_needed(self):
        with self.assertRaises(mutate.EqualError):
            mutate.read_equal(equal(" ", LEFT_OUT))

    def test_a_mutant_stands_there_once(self):
        with self.assertRaises(mutate.EqualError):
            mutate.read_equal(equal("because", LEFT_OUT, [*LEFT_OUT, 1]))

    def test_a_name_is_whole(self):
        with self.assertRaises(mutate.EqualError):
            mutate.read_equal(equal("because", LEFT_OUT[:3]))


class Bench:
    """A bench whose tests notice what a text is left without."""

    def __init__(self, library, verdicts):
        self.library = library
        self.verdicts = verdicts
        self.seconds = {"One": 0.1, "Two": 0.1, "Three": 0.1}
        self.suites_of_file = {}
        self.asked = []

    def judge(self, name, text, first, second):
        """The next verdict."""
        self.asked.append((name, text, list(first), list(second)))
        return self.verdicts[len(self.asked) - 1]


class Objects(unittest.TestCase):
    """What the bench takes of a build."""

    def test_what_benchmarks_compile_for_themselves_is_left_alone(self):
        with tempfile.TemporaryDirectory() as name:
            bench = mutation_bench.Bench.__new__(mutation_bench.Bench)
            bench.library, bench.build, bench.folder = page.LIBRARY, Path(name), Path(name)
            bench.copy, bench.objects, bench.commands = Path(name) / "library", {}, {}
            source = page.LIBRARY / "rtifhal_kelvo_trident/frame/helpers.cpp"
            own = page.LIBRARY.relative_to(page.ROOT) / "helpers.cpp.o"
            (bench.build / own).parent.mkdir(parents=True)
            (bench.build / own).write_text("own", encoding="utf-8")
            entries = [
                {"file": str(source), "directory": name, "command": f"c++ -o {to} -c {source}"}
                for to in (own, "bench/helpers.cpp.o")
            ]
            database = bench.build / "compile_commands.json"
            database.write_text(json.dumps(entries), encoding="utf-8")
            bench._take_objects()
            taken = bench.objects["rtifhal_kelvo_trident/frame/helpers.cpp"]
            self.assertEqual(taken.read_text(encoding="utf-8"), "own")


class Running(Folder):
    """Mutants on the bench."""

    def run_with(self, verdicts, reasons=None):
        """Runs as many mutants as there are verdicts."""
        self.bench = Bench(self.library, verdicts)
        self.out = io.StringIO()
        ran = mutate.Run(self.bench, reasons or {}, self.out)
        for mutant in (self.known * 2)[: len(verdicts)]:
            ran.judge(mutant)
        return ran

    def test_the_bench_gets_the_changed_text(self):
        self.run_with([Verdict("noticed", "One")])
        name, text, _, _ = self.bench.asked[0]
        self.assertEqual(name, "kinds/one.cpp")
        self.assertEqual(text, SOURCE.replace("==", "!="))

    def test_who_noticed_is_asked_first_afterwards(self):
        one, two = Verdict("noticed", "One"), Verdict("noticed", "Two")
        self.run_with([one, two, two, one])
        self.assertEqual([asked[2] for asked in self.bench.asked],
                         [[], ["One"], ["One", "Two"], ["Two", "One"]])  # fmt: skip

    def test_a_fall_teaches_nothing(self):
        self.run_with([Verdict("noticed", "(ended with -11)"), Verdict("survived")])
        self.assertEqual(self.bench.asked[1][2], [])

    def test_tests_that_mention_a_function_come_second(self):
        test = self.library / "one_test.cpp"
        test.write_text("TEST_F(Two, Works) { rtifhal_one(1); }", encoding="utf-8")
        bench = Bench(self.library, [Verdict("survived")])
        bench.suites_of_file = {test: ["Two"]}
        mutate.Run(bench, {}, io.StringIO()).judge(self.known[0])
        self.assertEqual(bench.asked[0][3], ["Two"])

    def test_survivors_are_those_without_a_reason(self):
        reasons = {(*LEFT_OUT, 1): "because"}
        ran = self.run_with([Verdict("survived")] * len(self.known), reasons)
        names = [mutant.operator for mutant in ran.survivors()]
        self.assertEqual(names, [m.operator for m in self.known if m.operator != "call left out"])
        self.assertIn("equal", self.out.getvalue())

    def test_the_table_counts(self):
        ran = self.run_with([Verdict("noticed", "One"), Verdict("survived"), Verdict("uncompiled")])
        head, row, total = ran.table()
        heads = "FILE MUTANTS NOTICED EQUAL SURVIVED UNCOMPILED"
        self.assertEqual(head.split(), heads.split())
        self.assertEqual(row.split(), ["kinds/one.cpp", "2", "1", "0", "1", "1"])
        self.assertEqual(total.split(), ["all", "2", "1", "0", "1", "1"])


class Choice(Folder):
    """Which mutants a command line asks for."""

    def chosen(self, *arguments):
        """The names of those."""
        options = mutate.options_of(list(arguments))
        return [mutant.name for mutant in mutate.chosen_of(options, self.known)]

    def test_all(self):
        self.assertEqual(len(self.chosen()), 3)

    def test_by_count(self):
        self.assertEqual(len(self.chosen("--count", "2")), 2)

    def test_by_file(self):
        self.assertEqual(self.chosen("--file", "two"), [])
        self.assertEqual(len(self.chosen("--file", "one", "--file", "two")), 3)

    def test_by_name(self):
        name = "kinds/one.cpp:4:9 call left out"
        self.assertEqual(self.chosen("--only", name), [name])


class Suites(unittest.TestCase):
    """Suites as GoogleTest names them."""

    def test_the_name_in_the_source(self):
        names = ["Plain", "Kinds/WithValues", "Typed/0"]
        self.assertEqual([plain_suite(name) for name in names], ["Plain", "WithValues", "Typed"])

    def test_a_filter_finds_all_forms(self):
        self.assertEqual(filter_of(["A", "B"]), "A.*:A/*:*/A.*:B.*:B/*:*/B.*")


class TheLibrary(unittest.TestCase):
    """The library as it is: what can be changed, without building anything."""

    @classmethod
    def setUpClass(cls):
        cls.known = mutate.all_mutants(page.LIBRARY)
        cls.messages = mutate.all_mutants(page.LIBRARY, messages=True)

    def test_each_change_can_be_made_and_changes_its_line_alone(self):
        self.assertGreater(len(self.known), 300)
        self.assertGreater(len(self.messages), 300)
        texts = {}
        for mutant in self.known + self.messages:
            path = page.LIBRARY / mutant.file
            text = texts.setdefault(mutant.file, path.read_text(encoding="utf-8"))
            changed = mutant.applied(text)
            self.assertNotEqual(changed, text, mutant.name)
            self.assertEqual(changed.count("\n"), text.count("\n"), mutant.name)
            line = text.split("\n")[mutant.line - 1]
            self.assertEqual(line.strip(), mutant.source, mutant.name)

    def test_names_and_keys_are_unique(self):
        known = self.known + self.messages
        self.assertEqual(len({mutant.name for mutant in known}), len(known))
        self.assertEqual(len({mutant.key for mutant in known}), len(known))

    def test_what_is_told_equal_is_there(self):
        reasons = mutate.read_equal(mutate.EQUAL.read_text(encoding="utf-8"))
        self.assertEqual(mutate.stale(reasons, self.known + self.messages), [])


if __name__ == "__main__":
    unittest.main()
