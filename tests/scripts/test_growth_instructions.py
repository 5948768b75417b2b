"""Tests of scripts/growth_instructions.py: what grows too much, and what isn't counted."""

import io
import sys
import unittest
from contextlib import redirect_stderr, redirect_stdout
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import growth_instructions  # noqa: E402
from instructions import SKIPPED, CountError  # noqa: E402


class Limit(unittest.TestCase):
    """Counts among few and among many interfaces."""

    def test_growth_over_the_limit_is_told_with_both_counts(self):
        rows = growth_instructions.rows_of(
            "trident2", {"port: add": 100, "SVI: add": 100}, {"port: add": 151, "SVI: add": 150}
        )
        self.assertEqual(
            growth_instructions.complaints(rows),
            ["port: add, trident2: 151 instructions among 7676 interfaces, 100 among 16"],
        )

    def test_request_that_is_counted_once_only_is_refused(self):
        with self.assertRaisesRegex(CountError, "port: add"):
            growth_instructions.rows_of("trident", {"port: add": 1}, {})


class Command(unittest.TestCase):
    """The command line."""

    def run_with(self, many, *words):
        """Exit code and output, with so many instructions among many interfaces."""
        def counts(_program, _chip, interfaces):
            return {"port: add": 100 if interfaces == growth_instructions.FEW else many}

        out = io.StringIO()
        with mock.patch.object(growth_instructions, "counts", counts), \
             mock.patch.object(growth_instructions.shutil, "which", lambda _: "/bin/true"), \
             redirect_stdout(out), redirect_stderr(io.StringIO()):
            code = growth_instructions.main([*words, __file__])
        return code, out.getvalue()

    def test_check_fails_when_one_grows_too_much(self):
        code, out = self.run_with(200, "check")
        self.assertEqual(code, 1)
        self.assertIn("port: add, trident: 200 instructions among 3580 interfaces", out)

    def test_check_passes_when_all_stay(self):
        code, out = self.run_with(100, "check")
        self.assertEqual((code, out), (
            0, "2 requests, 2 of them as long among 16 interfaces as among thousands\n"))

    def test_counting_alone_never_fails(self):
        self.assertEqual(self.run_with(200)[0], 0)

    def test_without_valgrind_it_is_skipped(self):
        with mock.patch.object(growth_instructions.shutil, "which", lambda _: None), \
             redirect_stdout(io.StringIO()):
            self.assertEqual(growth_instructions.main(["check", __file__]), SKIPPED)


if __name__ == "__main__":
    unittest.main()
