"""Tests of scripts/messages.py and message_sites.py, on small libraries of their own."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import message_sites  # noqa: E402
import messages  # noqa: E402
import page  # noqa: E402
from cpp_source import SourceError  # noqa: E402

UMBRELLA = '#include "rtifhal_all.h"\n'


class MessagesTest(unittest.TestCase):
    """A folder that looks like the library's."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.write("include/rtifhal_trident.h", UMBRELLA)
        self.write("include/rtifhal_all.h", "RTIFHAL_EXPORT int outer(int x);\n")

    def write(self, name, text):
        """Writes a file of the library."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def source(self, text, name="rtifhal_kelvo_trident/kinds/one.cpp"):
        """Writes a source."""
        self.write(name, text)

    def library(self):
        """The library as the generator reads it."""
        return message_sites.Library(messages.library_files(self.folder))

    def sites(self):
        """Level, function and text of each message."""
        return [(site.level, site.function, site.text) for site in self.library().sites()]

    def page(self, explained=""):
        """The page that comes of it."""
        self.write("messages.toml", explained)
        return messages.make(self.folder, self.folder / "messages.toml")

    def assert_refused(self, error, words, act):
        """The act is refused with these words in the text."""
        with self.assertRaises(error) as caught:
            act()
        for word in words:
            self.assertIn(word, str(caught.exception))


class Sites(MessagesTest):
    """What is found in a source."""

    def test_level_and_function_of_each_macro(self):
        self.source(
            """
            int outer(int x)
            {
                TRACE("a\\n");
                REPORT("b %d\\n", x);
                TRACE_OF(outer, "c\\n");
                REPORT_NAMED("outer", "d\\n");
            }
            """
        )
        self.assertEqual(
            self.sites(),
            [
                ("104", "outer", "a\\n"),
                ("102", "outer", "b %d\\n"),
                ("104", "outer", "c\\n"),
                ("102", "outer", "d\\n"),
            ],
        )

    def test_text_over_several_literals_is_one(self):
        self.source('int outer(int x) { REPORT("one, "  // why\n "two %d" "\\n", f(x, 1)); }')
        self.assertEqual(self.sites(), [("102", "outer", "one, two %d\\n")])

    def test_format_macros_are_filled_in(self):
        self.source('int outer(int x) { TRACE("id %" PRIx32 " of %" PRIu64 "\\n", x, x); }')
        self.assertEqual(self.sites(), [("104", "outer", "id %x of %lu\\n")])

    def test_escapes_and_brackets_in_a_text(self):
        self.source(r'int outer(int x) { REPORT("say \"(%d, }\" \\ \t;\n", x); }')
        self.assertEqual(self.sites(), [("102", "outer", r"say \"(%d, }\" \\ \t;\n")])

    def test_comments_and_directives_dont_count(self):
        self.source(
            """
            /* REPORT("no\\n"); */
            #define OTHER(x) \\
                REPORT("no\\n")
            int outer(int x)
            {
                // TRACE("no\\n");
                const char *text = "REPORT(\\"no\\")";
            }
            """
        )
        self.assertEqual(self.sites(), [])

    def test_name_handed_in_is_followed_through_callers(self):
        self.source(
            """
            namespace {
            void inner(const char *operation, int x) { REPORT_NAMED(operation, "bad %d\\n", x); }
            void middle(int x, const char *name) { inner(name, x); }
            }
            int outer(int x) { middle(x, __func__); }
            int second(int x) { middle(g(x, 1), "third"); inner(__func__, x); }
            int third(int x) { }
            """
        )
        self.assertEqual(
            self.sites(),
            [("102", name, "bad %d\\n") for name in ("outer", "third", "second")],
        )

    def test_name_from_a_header_and_not_from_a_namesake(self):
        self.source(
            'inline int read(const char *who, int x) { REPORT_NAMED(who, "shared\\n"); }',
            "rtifhal_kelvo_trident/kinds/read.h",
        )
        self.source('int outer(int x) { return read("outer", x); }')
        self.source(
            'namespace { int read(int x) { } } int second(int x) { return read(x); }',
            "rtifhal_kelvo_trident/kinds/two.cpp",
        )
        self.assertEqual(self.sites(), [("102", "outer", "shared\\n")])

    def test_system_log_with_its_priority(self):
        self.source(
            """
            namespace {
            constexpr int PRIORITY = LOG_CRIT;
            void tell(int x) { syslog(PRIORITY, "full: %d \\n", x); }
            }
            int outer(int x) { tell(x); }
            """
        )
        self.assertEqual(self.sites(), [("syslog LOG_CRIT", "tell", "full: %d \\n")])

    def test_what_cant_be_followed_is_refused(self):
        refused = {
            "int outer(int x) { REPORT(text, x); }": "written out",
            'int outer(int x) { REPORT("a" WORD, x); }': "written out",
            'int outer(int x) { TRACE_LATER("a\\n"); }': "TRACE_LATER isn't known",
            'int outer(int x) { RTIFHAL_TRACE_POINT(102, __func__, "a\\n"); }': "only",
            'int outer(const char *who) { REPORT_NAMED(who, "a\\n"); }': "nobody calls outer",
            'int outer(int x) { REPORT_NAMED(names[x], "a\\n"); }': "can't tell which function",
        }
        for source, word in refused.items():
            with self.subTest(source):
                self.source(source)
                self.assert_refused(SourceError, ["one.cpp:1", word], self.sites)


class Page(MessagesTest):
    """Sources and explanations joined."""

    BAD = '[[message]]\nfunction = "outer"\ntext = \'bad %d\\n\'\ntells = "It broke."\ndo = "Mend it."\n'

    def test_report_with_explanation_and_trace_in_a_table(self):
        self.source('/*\n * one.cpp: the first.\n */\nint outer(int x) { TRACE("go"); REPORT("bad %d\\n", x); }')
        text = self.page(self.BAD)
        self.assertIn("### one.cpp\n\nThe first.\n\n#### outer\n", text)
        self.assertIn("* `bad %d\\n`  \n  It broke.  \n  *Do:* Mend it.\n", text)
        self.assertIn("| `outer` | `go⊣` |", text)
        self.assertIn("2 messages of 1 functions: 1 are error reports (level 102), 1 traces", text)

    def test_same_text_twice_in_a_function_is_one_message(self):
        self.source('int outer(int x) { REPORT("bad %d\\n", x); REPORT("bad %d\\n", 2); }')
        self.assertEqual(self.page(self.BAD).count("bad %d"), 1)

    def test_same_text_in_two_functions_needs_an_explanation_for_each(self):
        self.source(
            'int outer(int x) { REPORT("bad %d\\n", x); } int other(int x) { REPORT("bad %d\\n", x); }'
        )
        self.assert_refused(page.PageError, ['function = "other"'], lambda: self.page(self.BAD))
        both = self.BAD.replace('"outer"', '["outer", "other"]')
        self.assertEqual(self.page(both).count("* `bad %d\\n`"), 2)

    def test_report_without_explanation_is_refused_with_what_to_write(self):
        self.source('int outer(int x) { REPORT("worse\\n"); }')
        words = ["lacks an explanation", 'function = "outer"', "text = 'worse\\n'"]
        self.assert_refused(page.PageError, words, self.page)

    def test_report_needs_a_word_on_what_to_do_and_a_trace_doesnt(self):
        without = self.BAD.replace('do = "Mend it."\n', "")
        self.source('int outer(int x) { REPORT("bad %d\\n", x); }')
        self.assert_refused(page.PageError, ["what to do"], lambda: self.page(without))
        self.source('int outer(int x) { TRACE("bad %d\\n", x); }')
        self.assertIn("| `outer` | `bad %d\\n`<br>It broke. |", self.page(without))

    def test_explanation_without_message_is_refused(self):
        self.source('int outer(int x) { REPORT("bad %d \\n", x); }')
        words = ["explains what outer doesn't write: 'bad %d\\n'"]
        self.assert_refused(page.PageError, words, lambda: self.page(self.BAD))

    def test_faulty_explanations_are_refused(self):
        self.source('int outer(int x) { REPORT("bad %d\\n", x); }')
        for faulty, word in {
            self.BAD * 2: "twice",
            self.BAD + "hint = 'x'\n": "hint",
            self.BAD.replace("tells", "says"): "are needed",
            self.BAD + "do = \n": "messages.toml",
        }.items():
            with self.subTest(word):
                self.assert_refused(page.PageError, [word], lambda text=faulty: self.page(text))

    def test_system_log_of_a_step_stands_under_its_operation(self):
        self.source(
            'namespace { void tell() { syslog(LOG_EMERG, "bad %d\\n", 1); } } int outer(int x) { tell(); }'
        )
        self.assertIn("#### outer\n\n* `bad %d\\n` (system log only: LOG_EMERG)", self.page(self.BAD))

    def test_one_text_at_all_levels_is_one_message(self):
        self.source(
            'int outer(int x) { syslog(LOG_CRIT, "bad %d\\n", x); REPORT("bad %d\\n", x); TRACE("bad %d\\n", x); }'
        )
        self.assertIn("(as a trace too; in the system log too: LOG_CRIT)", self.page(self.BAD))

    def test_function_inside_tells_on_whose_behalf(self):
        self.source('int step(int x) { REPORT("bad %d\\n", x); } int outer(int x) { return step(x); }')
        text = self.page(self.BAD.replace("outer", "step"))
        self.assertIn("#### step\n\nInside the library, on behalf of `outer`.", text)


class Visible(unittest.TestCase):
    """How a text is shown."""

    def test_blanks_line_ends_and_quotes(self):
        for text, shown in {
            r"plain %d\n": r"`plain %d\n`",
            r" both ends \n": r"`␣both ends␣\n`",
            r"two  blanks\n": r"`two␣␣blanks\n`",
            r"\n%s: first": r"`\n%s: first⊣`",
            r"CLI is \"up\"\n": r'`CLI is "up"\n`',
            r"a | b\n": r"`a \| b\n`",
            " ": "`␣⊣`",
        }.items():
            self.assertEqual(messages.visible(text), shown)


if __name__ == "__main__":
    unittest.main()
