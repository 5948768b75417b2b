"""Tests of scripts/calls.py, and of what cpp_source.py reads of headers."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import calls  # noqa: E402
import cpp_source  # noqa: E402
import message_sites  # noqa: E402
from page import PageError  # noqa: E402

EXPORTED = {"rtifhal_kinds.h": ["add", "add_step", "silent"]}
HEADERS = {"bcm_write": "sdk/vlan.h", "get_unit": "fwmpd/l3_cache.h", "malloc": calls.C_LIBRARY}


def made_of(*pairs):
    """Calls as the tests noted them."""
    noted = calls.Calls(EXPORTED)
    for caller, callee in pairs:
        noted.add(caller, callee)
    return noted


NOTED = (
    ("add", "add_step"),
    ("add", "bcm_write"),
    ("add", "get_unit"),
    ("add", "malloc"),
    ("add_step", "bcm_write"),
)


class Page(unittest.TestCase):
    """The page, and reading it back."""

    def test_functions_with_their_platform_functions_by_header(self):
        text = calls.page_text(made_of(*NOTED), HEADERS)
        self.assertIn(
            "### `add`\n\nthrough `add_step`\n\n| header | functions |\n|---|---|\n"
            "| fwmpd/l3_cache.h | `get_unit` |\n| sdk/vlan.h | `bcm_write` |\n| C library | `malloc` |\n",
            text,
        )
        self.assertIn("No platform function is called by `silent`.", text)

    def test_function_that_no_test_calls_is_told_apart(self):
        text = calls.page_text(made_of(*NOTED), HEADERS, {"silent"})
        self.assertIn("No test has seen a call yet of `silent`.", text)
        self.assertNotIn("No platform function is called", text)

    def test_reverse_table_names_callers_or_that_all_call(self):
        text = calls.page_text(made_of(*NOTED), HEADERS)
        self.assertIn("| `get_unit` | `add` |", text)
        self.assertIn("| `bcm_write` | all 2 that call the platform |", text)

    def test_page_read_back_has_the_same_calls(self):
        noted = made_of(*NOTED)
        told = calls.Calls(EXPORTED)
        told.read_page(calls.page_text(noted, HEADERS))
        self.assertEqual(noted.missing_in(told) + told.missing_in(noted), [])

    def test_call_that_the_page_lacks_is_told(self):
        told = calls.Calls(EXPORTED)
        told.read_page(calls.page_text(made_of(*NOTED[:-1]), HEADERS))
        self.assertEqual(made_of(*NOTED).missing_in(told), ["add_step calls bcm_write"])

    def test_order_of_what_was_noted_doesnt_matter(self):
        self.assertEqual(
            calls.page_text(made_of(*NOTED), HEADERS),
            calls.page_text(made_of(*reversed(NOTED)), HEADERS),
        )


class Reading(unittest.TestCase):
    """Files of the tests, headers of platform and library."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, name, text):
        """Writes a file; gives its path."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def test_shards_are_joined(self):
        noted = calls.Calls(EXPORTED)
        noted.read_noted(self.write("1", "add bcm_write\nadd add_step\n"))
        noted.read_noted(self.write("2", "add get_unit\n"))
        self.assertEqual(noted.platform["add"], {"bcm_write", "get_unit"})
        self.assertEqual(noted.through["add"], {"add_step"})

    def test_run_that_left_tests_out_is_partial(self):
        noted = calls.Calls(EXPORTED)
        noted.read_noted(self.write("1", "add bcm_write\n"))
        self.assertFalse(noted.partial)
        noted.read_noted(self.write("2", "partial\nadd get_unit\n"))
        self.assertTrue(noted.partial)

    def test_missing_file_is_told(self):
        with self.assertRaisesRegex(PageError, "is missing: run the library's tests"):
            calls.Calls(EXPORTED).read_noted(self.folder / "none")

    def test_caller_that_isnt_exported_is_refused(self):
        with self.assertRaisesRegex(PageError, "old isn't exported any more"):
            calls.Calls(EXPORTED).add("old", "bcm_write")

    def test_header_of_a_platform_function(self):
        self.write("sdk/vlan.h", "/* get_unit() is elsewhere */\nint bcm_write(int unit);\n")
        self.write("fwmpd/l3_cache.h", "int get_unit\n    (int module);\n")
        names = ["bcm_write", "get_unit", "malloc", "g_hash_table_new"]
        self.assertEqual(
            calls.platform_headers(self.folder, names),
            {**HEADERS, "g_hash_table_new": calls.GLIB},
        )
        with self.assertRaisesRegex(PageError, "unheard was called"):
            calls.platform_headers(self.folder, ["unheard"])

    def test_exported_functions_by_header_in_the_umbrellas_order(self):
        self.write("rtifhal_trident.h", '#include "rtifhal_b.h"\n#include "rtifhal_a.h"\n')
        self.write(
            "rtifhal_a.h",
            "/** RTIFHAL_EXPORT int not_this(int x); */\n"
            "RTIFHAL_EXPORT extern int data[4];\n"
            "RTIFHAL_EXPORT struct l3lif *\nwide(int a,\n    int (*visit)(int));\n"
            "RTIFHAL_EXPORT void last(void);\n",
        )
        self.write("rtifhal_b.h", "RTIFHAL_EXPORT int first(void);\n")
        self.assertEqual(
            cpp_source.exported_functions(self.folder),
            {"rtifhal_b.h": ["first"], "rtifhal_a.h": ["wide", "last"]},
        )


class Reach(Reading):
    """Whether a function can call the platform."""

    def test_through_steps_and_callbacks_but_not_through_others(self):
        source = self.write(
            "one.cpp",
            "namespace { void visit(int x) { bcm_write(x); } }\n"
            "int outer(int x) { return walk(x, visit); }\n"
            "int loop(int x) { return x != 0 ? loop(x - 1) : other(x); }\n"
            "int text(int x) { return print(\"bcm_write\"); }\n",
        )
        library = message_sites.Library([source])
        reached = [calls.can_call(library, name, HEADERS) for name in ("outer", "loop", "text")]
        self.assertEqual(reached, [True, False, False])


class Source(unittest.TestCase):
    """Functions in a source."""

    def test_functions_of_all_shapes(self):
        text = """
        extern "C" { struct record *made(struct record *r, int n[4]) { if (r) { } } }
        namespace { constexpr int X[] = {1, 2}; struct s { int a; };
        template <class T> T *allocate(uint32_t count) { return nullptr; } }
        static void own(void) {}
        int __attribute__((noinline)) marked(unsigned) { auto f = [](int x) { return x; }; }
        """
        found = cpp_source.functions_of(text, Path("x.cpp"))
        self.assertEqual(
            [(f.name, f.parameters, f.local) for f in found],
            [
                ("made", ["r", "n"], False),
                ("allocate", ["count"], True),
                ("own", [""], True),
                ("marked", [""], False),
            ],
        )

    def test_raw_strings_and_characters_hide_brackets(self):
        text = "int a() { f(R\"x(}\")x\", '}', '\\''); } int b() { }"
        found = cpp_source.functions_of(text, Path("x.cpp"))
        self.assertEqual([f.name for f in found], ["a", "b"])

    def test_subject_of_a_source_that_points_to_its_header(self):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            (folder / "a.h").write_text("/*\n * a.h: how it\n * works.\n *\n * More.\n */\n")
            (folder / "a.cpp").write_text("/*\n * a.cpp: see a.h.\n */\n")
            self.assertEqual(cpp_source.subject_of(folder / "a.cpp"), "how it works.")


if __name__ == "__main__":
    unittest.main()
