"""pages_test.py: what pages.py reads of a page, and when a page shows what was printed."""

import unittest

import pages

PAGE = """# A page, and `more`

Prose has `rtif up --calls`, and a span that goes over
a line's end: `rtif
run --quiet`.

```console
$ rtif up a.json
one
…

$ rtif packet \\
      --in Ethernet0
two
# rtif wire
```

| a row of [links](b.md#part) | `--json` |

   ```json
   {"a": 1}
   ```
"""


class Reading(unittest.TestCase):
    """Blocks, commands and code of a page."""

    def setUp(self):
        self.page = pages.Page("docs/a.md", PAGE)

    def test_code_of_prose_has_its_line(self):
        self.assertEqual(
            self.page.spans,
            [(1, "more"), (3, "rtif up --calls"), (4, "rtif run --quiet"), (18, "--json")],
        )

    def test_links_and_headings(self):
        self.assertEqual(self.page.links, [(18, "b.md#part")])
        self.assertEqual(self.page.anchors, {"a-page-and-more"})

    def test_commands_have_what_is_shown_below_them(self):
        commands = self.page.blocks[0].commands()
        self.assertEqual(
            [(c.line, c.text, c.root, c.shown) for c in commands],
            [
                (8, "rtif up a.json", False, ["one", "…", ""]),
                (12, "rtif packet \\\n      --in Ethernet0", False, ["two"]),
                (15, "rtif wire", True, []),
            ],
        )

    def test_blocks_of_a_list_lose_their_indent(self):
        self.assertEqual(
            [(block.language, block.line, block.lines) for block in self.page.blocks[1:]],
            [("json", 21, ['{"a": 1}'])],
        )

    def test_a_block_without_an_end_is_refused(self):
        with self.assertRaisesRegex(pages.PageError, "docs/b.md:2: the block has no end"):
            pages.Page("docs/b.md", "```json\n{}\n")


class Showing(unittest.TestCase):
    """Whether what a page shows is what was printed."""

    def expect(self, shown, printed, same):
        self.assertEqual(pages.shows(shown.split("\n"), printed.split("\n")), same)

    def test_all_lines_are_compared(self):
        self.expect("one\ntwo", "one\ntwo\n", True)
        self.expect("one\ntwo", "one\ntwo \n", False)
        self.expect("one", "one\ntwo\n", False)
        self.expect("one\ntwo", "one\n", False)
        self.expect("", "one\n", False)

    def test_blank_lines_at_the_end_do_not_count_and_others_do(self):
        self.expect("one\n\n", "one\n", True)
        self.expect("one\ntwo", "one\n\ntwo\n", False)

    def test_an_ellipsis_stands_for_lines_and_for_the_rest_of_one(self):
        self.expect("one\n  …\nfour", "one\ntwo\nthree\nfour\n", True)
        self.expect("one\n…", "one\n", True)
        self.expect("one …\ntwo", "one and a half\ntwo\n", True)
        self.expect("one …", "one and\ntwo\n", False)
        self.expect("one\n…\nfive", "one\ntwo\nthree\nfour\n", False)

    def test_an_ellipsis_within_a_line_is_itself(self):
        self.expect("a … c", "a b c\n", False)
        self.expect("a … c", "a … c\n", True)


if __name__ == "__main__":
    unittest.main()
