"""Tests of scripts/measured.py: what it reads out of what other commands print."""

import json
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import measured  # noqa: E402
import page  # noqa: E402

COMMAND = (
    "/usr/bin/c++ -I/a/include -isystem /usr/include/glib-2.0 -O2 -DNDEBUG -fPIC -Wall -Werror"
    " -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fno-rtti -fPIC -std=c++20 -o -O0.o -c /a/-O1.cpp"
)

READELF = """
Relocation section '.rela.dyn' at offset 0x3bd8 contains 3 entries:
    Offset             Info             Type               Symbol's Value  Symbol's Name + Addend
0000000000024840  0000000000000008 R_X86_64_RELATIVE                         5190
0000000000024fd0  0000000100000006 R_X86_64_GLOB_DAT      0000000000000000 rtifhal_vlan + 0
0000000000024fd8  0000000200000006 R_X86_64_GLOB_DAT      0000000000000000 R_X86_64_ODD + 0
"""


class Reading(unittest.TestCase):
    """Texts of the tools."""

    def test_options_that_decide_how_fast_the_code_is(self):
        self.assertEqual(
            measured.optimisation(COMMAND),
            ["-O2", "-fPIC", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2", "-fno-rtti", "-std=c++20"],
        )

    def test_sections(self):
        text = "   text\t   data\t    bss\t    dec\n 143651\t   2000\t 238384\t 384035\n"
        self.assertEqual(
            measured.sections_of(text), {"text": 143651, "data": 2000, "bss": 238384}
        )

    def test_sections_of_another_text_are_refused(self):
        with self.assertRaisesRegex(measured.MeasureError, "isn't known"):
            measured.sections_of("nothing here")

    def test_relocations_by_kind(self):
        self.assertEqual(
            measured.relocations_of(READELF), {"R_X86_64_GLOB_DAT": 2, "R_X86_64_RELATIVE": 1}
        )

    def test_processors(self):
        text = "processor\t: 0\nmodel name\t: Fast One\nprocessor\t: 1\nmodel name\t: Fast One\n"
        self.assertEqual(measured.processor_of(text), ("Fast One", 2))

    def test_command_that_fails_is_told_with_its_words(self):
        with self.assertRaisesRegex(measured.MeasureError, "ls /no/such failed: .*/no/such"):
            measured.run(["ls", "/no/such"])

    def test_command_that_is_missing_is_told(self):
        with self.assertRaisesRegex(measured.MeasureError, "no-such-command is missing"):
            measured.run(["no-such-command"])


class Compiler(unittest.TestCase):
    """Compiler and options, of a build folder."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.build = Path(folder.name)

    def put(self, file):
        """A build folder with one source."""
        entry = {"directory": "/", "file": str(file), "command": "c++ -O2 -o a.o -c a.cpp"}
        (self.build / "compile_commands.json").write_text(json.dumps([entry]), encoding="utf-8")

    def test_options_of_the_librarys_sources(self):
        self.put(page.LIBRARY / "rtifhal_kelvo_trident/frame/trace.cpp")
        name, options = measured.compiler_of(self.build)
        self.assertRegex(name, r"\d+\.\d+")
        self.assertEqual(options, ["-O2"])

    def test_build_without_the_library_is_refused(self):
        self.put("/elsewhere/a.cpp")
        with self.assertRaisesRegex(measured.MeasureError, "none of the library's sources"):
            measured.compiler_of(self.build)

    def test_folder_that_was_never_built_is_refused(self):
        with self.assertRaisesRegex(measured.MeasureError, "build it first"):
            measured.compiler_of(self.build)


if __name__ == "__main__":
    unittest.main()
