"""Tests of scripts/performance.py and its page and plot: figures, goals, reasons."""

import io
import json
import shutil
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from contextlib import redirect_stderr, redirect_stdout
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import page  # noqa: E402
import performance  # noqa: E402
import performance_page  # noqa: E402
import performance_plot  # noqa: E402


def floor(request, library_ns, floor_ns, chip="trident2"):
    """A request's row beside its floor."""
    return {
        "request": request, "chip": chip, "calls": 31, "library_ns": library_ns,
        "floor_ns": floor_ns, "ratio": library_ns / floor_ns,
    }


def grown(request, costs, chip="trident2", subject="interfaces", calls=lambda count: 31):
    """A request's rows by count."""
    return [
        {
            "request": request, "chip": chip, "subject": subject, "count": count,
            "calls": calls(count), "ns": cost,
        }
        for count, cost in costs.items()
    ]


def whole(seconds, goal):
    """A row of a whole switch."""
    return {
        "name": "rtif up", "chip": "trident2", "interfaces": 7000, "seconds": seconds,
        "operations": 500000, "operations_per_second": 500000 / seconds, "peak_rss_kib": 51200,
        "goal_seconds": goal,
    }


class Folder(unittest.TestCase):
    """A folder of what was measured, and a list of reasons."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.reasons = self.folder / "reasons.toml"
        self.instructions = self.folder / "counts.json"

    def put(self, kind, rows, measured="2026-01-02T03:04:05Z"):
        """Writes a program's file."""
        found = {"kind": kind, "measured": measured, "rows": rows}
        (self.folder / f"{kind}.json").write_text(json.dumps(found), encoding="utf-8")

    def read(self):
        """What performance.py makes of the folder."""
        return performance.read(self.folder, self.reasons, self.instructions)

    def page(self):
        """The page of the folder."""
        results = self.read()
        goals = performance.goals_of(results)
        return performance_page.page_text(results, goals, performance.GOAL_REQUEST)


class Reading(Folder):
    """Files that are there, that are missing, and that aren't as they should be."""

    def test_rows_with_the_latest_day_and_without_what_is_missing(self):
        self.put("floor", [floor("add port", 110, 100)], "2026-01-01T00:00:00Z")
        self.put("whole", [whole(0.5, 1)], "2026-01-03T00:00:00Z")
        results = self.read()
        self.assertEqual(results.measured, "2026-01-03T00:00:00Z")
        self.assertEqual([row["request"] for row in results.floor], ["add port"])
        self.assertEqual((results.growth, results.library), ([], {}))

    def test_empty_folder_is_refused(self):
        with self.assertRaisesRegex(page.PageError, "nothing that was measured"):
            self.read()

    def test_row_without_a_column_is_refused_with_its_name(self):
        row = floor("add port", 110, 100)
        del row["floor_ns"]
        self.put("floor", [row])
        with self.assertRaisesRegex(page.PageError, "floor.json: floor_ns missing"):
            self.read()

    def test_floor_calls_its_rows_requests(self):
        found = {"requests": [floor("add port", 110, 100)], "geometric_mean": 1.1}
        (self.folder / "floor.json").write_text(json.dumps(found), encoding="utf-8")
        self.assertEqual([row["calls"] for row in self.read().floor], [31])

    def test_file_without_rows_is_refused(self):
        self.put("growth", [])
        with self.assertRaisesRegex(page.PageError, "growth.json has no rows"):
            self.read()

    def test_file_that_is_no_json_is_refused_with_its_name(self):
        (self.folder / "whole.json").write_text("{", encoding="utf-8")
        with self.assertRaisesRegex(page.PageError, "whole.json"):
            self.read()

    def test_growth_is_the_cost_at_the_largest_over_that_at_the_smallest(self):
        self.put("growth", grown("add SVI", {1024: 450, 16: 300, 7676: 330}))
        (series,) = self.read().growth
        self.assertAlmostEqual(series.growth(), 1.1)
        self.assertFalse(series.missed())

    def test_request_of_both_chips_and_two_subjects_is_four_series(self):
        rows = []
        for chip in ("trident", "trident2"):
            for subject in ("interfaces", "SVIs"):
                rows += grown("add SVI", {16: 300, 256: 310}, chip, subject)
        self.put("growth", rows)
        self.assertEqual(len(self.read().growth), 4)


class Goals(Folder):
    """What is met, and what isn't."""

    def goals(self):
        """By what is asked: the figure and what missed it."""
        return {goal.what: (goal.found, goal.missed) for goal in performance.goals_of(self.read())}

    def test_geometric_mean_of_each_chip(self):
        self.put("floor", [
            floor("add port", 100, 100), floor("add SVI", 121, 100),
            floor("add port", 140, 100, "trident"),
        ])
        goals = self.goals()
        what = "library / floor on {}, geometric mean"
        self.assertEqual(goals[what.format("Trident2")], ("1.10", []))
        self.assertEqual(goals[what.format("Trident")], ("1.40", ["trident"]))

    def test_requests_over_their_goal_are_counted_and_the_largest_is_named(self):
        self.put("floor", [
            floor("add port", 141, 100), floor("add SVI", 160, 100), floor("add tunnel", 140, 100),
        ])
        self.assertEqual(
            self.goals()["library / floor on Trident2, any request"],
            ("1.60 (add SVI); 2 of 3 over", ["add port", "add SVI"]),
        )

    def test_largest_request_is_named_when_all_are_met(self):
        self.put("floor", [floor("add port", 110, 100), floor("add SVI", 120, 100)])
        found = self.goals()["library / floor on Trident2, any request"]
        self.assertEqual(found, ("1.20 (add SVI)", []))

    def test_growth_of_each_thing_has_its_goal(self):
        self.put("growth", [
            *grown("pair: add", {16: 100, 1000: 160}, subject="pairs"),
            *grown("add SVI", {16: 100, 7676: 150}),
        ])
        self.assertEqual(self.goals(), {
            "cost with 1,000 pairs / with 16 on Trident2, any request":
                ("1.60 (pair: add); 1 of 1 over", ["pair: add"]),
            "cost with 7,676 interfaces / with 16 on Trident2, any request": ("1.50 (add SVI)", []),
        })

    def test_whole_switch_over_its_seconds_is_missed_and_without_a_goal_not_told(self):
        self.put("whole", [whole(1.2, 1), whole(0.4, 0.5), whole(9, None)])
        goals = [(goal.found, goal.missed) for goal in performance.goals_of(self.read())]
        self.assertEqual(goals, [("1.20 s", ["rtif up"]), ("0.40 s", [])])

    def test_terminal_shows_what_was_missed(self):
        self.put("whole", [whole(1.2, 1), whole(0.4, 0.5)])
        lines = performance.table_text(performance.goals_of(self.read())).splitlines()
        self.assertTrue(lines[0].startswith("MISSED  rtif up, 7,000 interfaces on Trident2"))
        self.assertTrue(lines[1].startswith("met "))


class Page(Folder):
    """The page's text."""

    def test_missed_goal_stands_with_its_reason(self):
        self.put("floor", [floor("add port", 150, 100)])
        self.reasons.write_text('[floor."add port"]\nwhy = "It has to count."\n', encoding="utf-8")
        text = self.page()
        self.assertIn("| at most 1.4 | 1.50 (add port); 1 of 1 over | **no** |", text)
        self.assertIn("| 150 | 100 | **1.50** |", text)
        self.assertIn("* library / floor: add port – It has to count.\n", text)

    def test_missed_goal_without_a_reason_says_so(self):
        self.put("floor", [floor("add port", 150, 100)])
        self.assertIn("add port – no reason is written down.\n", self.page())

    def test_what_has_the_same_reason_stands_together(self):
        self.put("floor", [floor("add port", 150, 100), floor("add SVI", 150, 100)])
        self.reasons.write_text('[floor.others]\nwhy = "All do."\n', encoding="utf-8")
        self.assertIn("* library / floor: add port; add SVI – All do.\n", self.page())

    def test_reason_of_a_goal_that_is_met_isnt_shown(self):
        self.put("floor", [floor("add port", 105, 100)])
        self.reasons.write_text('[floor."add port"]\nwhy = "It has to count."\n', encoding="utf-8")
        self.assertNotIn("It has to count", self.page())

    def test_floor_has_a_row_a_request_with_both_chips_beside_each_other(self):
        self.put("floor", [
            floor("add port", 1230, 1000, "trident"), floor("add port", 110, 100),
            floor("add tunnel", 11, 10),
        ])
        text = self.page()
        self.assertIn("| request | Trident: calls | library | floor | ratio | Trident2: calls |", text)
        self.assertIn("| add port | 31 | 1,230 | 1,000 | 1.23 | 31 | 110 | 100 | 1.10 |", text)
        self.assertIn("| add tunnel |  |  |  |  | 31 | 11.0 | 10.0 | 1.10 |", text)

    def test_growth_marks_what_grows_too_much_on_either_chip(self):
        self.put("growth", [
            *grown("add port", {16: 100, 3580: 200}, "trident"),
            *grown("add port", {16: 100, 7676: 110}),
        ])
        text = self.page()
        self.assertIn("| request | calls | 16 | 7,676 | growth | Trident: growth at 3,580 |", text)
        self.assertIn("| add port | 31 | 100 | 110 | 1.10 | **2.00** |", text)

    def test_calls_that_grow_are_told_from_the_fewest_to_the_most(self):
        self.put("growth", grown("walk", {16: 100, 4000: 9000}, calls=lambda count: count + 4.4))
        self.assertIn("| walk | 20 to 4,004 | 100 | 9,000 | **90.00** |", self.page())

    def test_instructions_are_shown_with_their_ratio(self):
        self.put("whole", [whole(0.5, 1)])
        rows = [{"request": "add port", "chip": "trident2", "library": 4400, "floor": 4000}]
        self.instructions.write_text(json.dumps(rows), encoding="utf-8")
        self.assertIn("| add port | 4,400 | 4,000 | 1.10 |", self.page())

    def test_instructions_that_grow_are_told_and_the_others_counted(self):
        self.put("growth_instructions", [
            {"request": name, "chip": "trident2", "interfaces": 7676, "few": 200, "many": many}
            for name, many in (("port: add", 240), ("SVI: set MTU", 200))
        ])
        text = " ".join(self.page().split())
        self.assertIn("1 of 2 requests take exactly as many instructions", text)
        self.assertIn("| port: add | Trident2, 7,676 | 200 | 240 | 1.20 |", text)
        self.assertNotIn("SVI: set MTU", text)

    def test_whole_switch_shows_rate_and_memory(self):
        self.put("whole", [whole(0.5, 1)])
        row = "| rtif up | Trident2 | 7,000 | 0.500 |  | 1 | 500,000 | 1,000,000 | 50.0 MiB |"
        self.assertIn(row, self.page())
        self.put("whole", [{**whole(1.5, 1), "cpu_seconds": 0.25}])
        self.assertIn("| rtif up | Trident2 | 7,000 | **1.500** | 0.250 | 1 |", self.page())

    def test_frames_are_named_as_people_would(self):
        found = {"benchmarks": [
            {"name": "run/routed_one_flow", "run_type": "iteration", "frames/s": 4.5e6,
             "allocs/frame": 0.0},
            {"name": "run/routed_one_flow_mean", "run_type": "aggregate", "frames/s": 1.0},
        ]}
        (self.folder / "pipeline.json").write_text(json.dumps(found), encoding="utf-8")
        self.put("whole", [whole(0.5, 1)])
        text = self.page()
        self.assertIn("| run: routed one flow | 4,500,000 | 0 |\n", text)
        self.assertNotIn("mean", text)

    def test_library_and_machine(self):
        found = {
            "kind": "library", "measured": "2026-02-03T04:05:06Z",
            "machine": {
                "processor": "Fast One", "processors": 2, "memory_kib": 2097152,
                "system": "Debian", "kernel": "6.1", "compiler": "c++ 12.2", "options": ["-O2"],
            },
            "size": {"file": 177760, "stripped": 153504, "text": 143651, "data": 2000, "bss": 10},
            "relocations": {"R_X86_64_GLOB_DAT": 26, "R_X86_64_RELATIVE": 6},
            "load": {"runs": 400, "rows": [{"what": "bound at once", "microseconds": 62.4}]},
        }
        (self.folder / "library.json").write_text(json.dumps(found), encoding="utf-8")
        text = self.page()
        self.assertIn("Measured on 2026-02-03: Fast One, 2 processors, 2.0 GiB; Debian, Linux 6.1;", text)
        self.assertNotIn("other work", text)
        self.assertIn("| file, stripped | 153,504 bytes |", text)
        self.assertIn("| relocations in all | 32 |", text)
        self.assertIn("| load, bound at once | 62 µs |", text)

    def test_busy_machine_is_told(self):
        machine = {
            "processor": "Fast One", "processors": 2, "memory_kib": 2097152, "system": "Debian",
            "kernel": "6.1", "compiler": "c++ 12.2", "options": ["-O2"], "load_average": 10.5,
        }
        results = performance.Results(library={"machine": machine})
        text = " ".join(" ".join(performance_page.machine_text(results)).split())
        self.assertIn("The machine had other work at that time, a load of 10.5", text)

    def test_ratios_for_a_terminal(self):
        self.put("floor", [floor("add port", 110, 100)])
        self.put("growth", grown("add port", {16: 100, 7676: 125}))
        text = performance_page.ratios_text(self.read())
        self.assertRegex(text, r"add port +1\.10 +1\.25\n")


class Plot(unittest.TestCase):
    """What gnuplot is told, and what it makes of it."""

    def setUp(self):
        rows = grown("add port", {16: 300, 1000: 310, 1024: 315, 7676: 330})
        rows += grown("add port", {16: 300, 3580: 310}, "trident")
        rows += grown("pair: add", {16: 300, 1000: 900}, subject="pairs")
        self.growth = performance.series_of(rows)

    def test_one_chip_in_two_plots_by_what_grows(self):
        left, right = performance_plot.chosen(self.growth)
        self.assertEqual([(one.request, one.chip) for one in left], [("add port", "trident2")])
        self.assertEqual([one.request for one in right], ["pair: add"])

    def test_labels_of_an_axis_dont_touch(self):
        self.assertIn("set xtics ('16' 16, '1,024' 1024, '7,676' 7676)",
                      performance_plot.script(self.growth))

    def test_axis_of_costs_holds_all_of_them(self):
        self.assertIn("set yrange [200:500]", performance_plot.script(self.growth))
        self.assertIn("set yrange [200:1000]", performance_plot.script(self.growth))

    @unittest.skipUnless(shutil.which("gnuplot"), "gnuplot isn't installed")
    def test_gnuplot_draws_it_on_white(self):
        svg = performance_plot.plot(self.growth)
        xml.etree.ElementTree.fromstring(svg)
        self.assertIn(">pair: add<", svg)
        self.assertIn("#ffffff", svg.lower())


class Command(Folder):
    """The command line."""

    def run_words(self, *words):
        """Exit code, output and errors of a command line."""
        out, err = io.StringIO(), io.StringIO()
        with redirect_stdout(out), redirect_stderr(err):
            code = performance.main(list(words))
        return code, out.getvalue(), err.getvalue()

    def test_table_writes_nothing(self):
        self.put("floor", [floor("add port", 110, 100)])
        with mock.patch.object(performance.page, "write") as written:
            code, out, _ = self.run_words("table", str(self.folder))
        self.assertEqual(code, 0)
        self.assertIn("add port", out)
        written.assert_not_called()

    def test_write_makes_the_page(self):
        self.put("floor", [floor("add port", 110, 100)])
        made = self.folder / "performance.md"
        with mock.patch.object(performance, "PAGE", made):
            code, _, _ = self.run_words("write", str(self.folder))
        self.assertEqual(code, 0)
        self.assertTrue(made.read_text(encoding="utf-8").startswith("# Performance\n"))

    def test_what_cant_be_read_ends_with_a_line_and_1(self):
        code, _, err = self.run_words("table", str(self.folder))
        self.assertEqual((code, err.count("\n")), (1, 1))

    def test_wrong_words_end_with_2(self):
        self.assertEqual(self.run_words("show", str(self.folder))[0], 2)


if __name__ == "__main__":
    unittest.main()
