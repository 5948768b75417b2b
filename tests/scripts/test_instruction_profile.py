"""Tests of scripts/instruction_profile.py: whose instructions a dump of callgrind tells."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import instruction_profile  # noqa: E402
from instructions import CountError  # noqa: E402

DUMP = """\
desc: Trigger: Client Request: port: add/library
positions: line
events: Ir
summary: 19

fn=(1) rtifhal_add(l3lif*)
10 5
+2 1
cfn=(2) (anonymous namespace)::find(int)
calls=1 0
+1 7
* 2
fn=(2)
3 7
fn=(3) bcm_l3_intf_get
1 4
"""


class Costs(unittest.TestCase):
    def test_what_a_called_function_took_counts_there(self):
        names = {}
        self.assertEqual(instruction_profile.own_costs(DUMP, names), {"1": 8, "2": 7, "3": 4})
        self.assertEqual(names["2"], "(anonymous namespace)::find(int)")

    def test_names_of_earlier_dumps_are_known(self):
        names = {"4": "later"}
        self.assertEqual(instruction_profile.own_costs("fn=(4)\n1 3\n", names), {"4": 3})
        self.assertEqual(names, {"4": "later"})


class Names(unittest.TestCase):
    def test_without_namespace_arguments_and_parts(self):
        for symbol, name in (
            ("(anonymous namespace)::find(int, char)", "find"),
            ("null_platform::vlan::drop(int)", "drop"),
            ("void rtifhal_trace_stream<int>(int, char const*)", "rtifhal_trace_stream"),
            ("count_row.part.0", "count_row"),
            ("rtifhal_add", "rtifhal_add"),
        ):
            with self.subTest(symbol):
                self.assertEqual(instruction_profile.plain(symbol), name)


class Rows(unittest.TestCase):
    def rows(self, *texts):
        with tempfile.TemporaryDirectory() as folder:
            for number, text in enumerate(texts, 1):
                (Path(folder) / f"dump.{number}").write_text(text)
            return instruction_profile.rows_of(sorted(Path(folder).glob("dump.*")), {"rtifhal_add", "find"})

    def test_the_library_is_told_from_the_platform(self):
        self.assertEqual(self.rows(DUMP), [
            {"request": "port: add", "chip": "trident2", "platform": 4, "library": 15,
             "functions": {"rtifhal_add": 8, "find": 7}}])

    def test_the_floor_is_left_out(self):
        floor = DUMP.replace("add/library", "add/floor")
        self.assertEqual(len(self.rows(DUMP, floor)), 1)
        with self.assertRaises(CountError):
            self.rows(floor)

    def test_a_dump_whose_parts_are_not_its_sum_is_refused(self):
        with self.assertRaisesRegex(CountError, "19 instructions of functions, 20 in all"):
            self.rows(DUMP.replace("summary: 19", "summary: 20"))


if __name__ == "__main__":
    unittest.main()
