"""What scripts/instructions.py says of counts that grew, and what it reads of callgrind's dumps."""
import json
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import instructions  # noqa: E402


def row(request, library, chip="trident", floor=100):
    return {"request": request, "chip": chip, "library": library, "floor": floor}


class Complaints(unittest.TestCase):
    def test_growth_beyond_the_margin_names_request_and_chip(self):
        found = instructions.complaints([row("port: add", 1000)], [row("port: add", 1061)])
        self.assertEqual(len(found), 1)
        self.assertIn("port: add, trident: 1061 instructions, 1000 in instructions.json, 6.1 % more",
                      found[0])

    def test_growth_within_the_margin_passes(self):
        self.assertEqual(
            instructions.complaints([row("port: add", 1000)], [row("port: add", 1060)]), [])

    def test_fewer_instructions_pass(self):
        self.assertEqual(
            instructions.complaints([row("port: add", 1000)], [row("port: add", 10)]), [])

    def test_chips_have_lines_of_their_own(self):
        lines = [row("port: add", 1000), row("port: add", 2000, "trident2")]
        seen = [row("port: add", 1000), row("port: add", 2200, "trident2")]
        found = instructions.complaints(lines, seen)
        self.assertEqual(len(found), 1)
        self.assertIn("trident2", found[0])

    def test_request_without_a_line_and_line_without_a_request_are_told(self):
        found = instructions.complaints([row("old", 10)], [row("new", 10)])
        self.assertEqual(len(found), 2)
        self.assertIn("new, trident: has no line", found[0])
        self.assertIn("old, trident: is in instructions.json and isn't measured", found[1])


class Dumps(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "dump.1"
            path.write_text(text)
            return instructions.count_of(path)

    def test_name_and_count_are_read(self):
        dump = ("version: 1\ndesc: Trigger: Client Request: port: add/library\n"
                "events: Ir\nsummary: 4711\n\n0x1 2 3\ntotals: 4711\n")
        self.assertEqual(self.read(dump), ("port: add/library", 4711))

    def test_dump_at_the_end_of_the_program_is_none(self):
        self.assertIsNone(self.read("desc: Trigger: Program termination\nsummary: 1\n"))


class Table(unittest.TestCase):
    def test_text_has_a_line_a_request_and_is_read_back(self):
        rows = [row("a", 1), row("b", 2)]
        text = instructions.text_of(rows)
        self.assertEqual(json.loads(text), rows)
        self.assertEqual(len(text.splitlines()), 4)


if __name__ == "__main__":
    unittest.main()
