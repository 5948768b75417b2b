"""What tidy.py joins, and whose line it tells."""

import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

import tidy  # noqa: E402


def command(name, options="-O0"):
    return {
        "directory": "/b",
        "file": str(tidy.page.ROOT / name),
        "command": f"g++ {options} -o {name}.o -c {tidy.page.ROOT / name}",
    }


class Commands(unittest.TestCase):
    def test_only_our_own_sources_without_their_output(self):
        made = tidy.own_commands(
            [command("lab/b.cpp"), command("lab/a.cpp"), command("build/dev/gen.cpp"),
             {"directory": "/b", "file": "/usr/src/gtest.cc", "command": "g++ -c x"}], [])
        self.assertEqual(made, [("lab/a.cpp", "/b", ["g++", "-O0"]),
                                ("lab/b.cpp", "/b", ["g++", "-O0"])])

    def test_a_source_compiled_twice_is_looked_at_once(self):
        made = tidy.own_commands([command("lab/a.cpp"), command("lab/a.cpp", "-O2")], [])
        self.assertEqual(made, [("lab/a.cpp", "/b", ["g++", "-O0"])])

    def test_only_what_stands_below_the_folders_asked_for(self):
        commands = [command("lab/cpu/a.cpp"), command("lab/cpus/b.cpp"), command("bench/c.cpp")]
        self.assertEqual([name for name, _, _ in tidy.own_commands(commands, ["lab/cpu", "bench/"])],
                         ["bench/c.cpp", "lab/cpu/a.cpp"])

    def test_what_a_build_makes_is_left_out(self):
        self.assertEqual(tidy.own_commands([command("lab/session/platform_functions.cpp")], []), [])


class Groups(unittest.TestCase):
    def test_a_group_has_one_folder_and_one_way_of_compiling(self):
        own = [("a/1.cpp", "/b", ["g++"]), ("a/2.cpp", "/b", ["g++", "-DX"]),
               ("a/3.cpp", "/b", ["g++"]), ("b/4.cpp", "/b", ["g++"])]
        self.assertEqual([[n for n, _, _ in group] for group in tidy.grouped(own)],
                         [["a/1.cpp", "a/3.cpp"], ["a/2.cpp"], ["b/4.cpp"]])

    def test_a_full_group_is_followed_by_another(self):
        own = [(f"a/{n}.cpp", "/b", ["g++"]) for n in range(5)]
        self.assertEqual([len(group) for group in tidy.grouped(own, 2)], [2, 2, 1])


class Places(unittest.TestCase):
    texts = {"a.cpp": "one\ntwo\n", "b.cpp": "three"}

    def test_each_line_keeps_its_file_and_number(self):
        text, places = tidy.joined(["a.cpp", "b.cpp"], self.texts.get)
        self.assertEqual(text, "one\ntwo\nthree\n")
        self.assertEqual(places, [("a.cpp", 1), ("a.cpp", 2), ("b.cpp", 1)])

    def test_a_finding_is_told_of_the_source(self):
        _, places = tidy.joined(["a.cpp", "b.cpp"], self.texts.get)
        said = "/u.cpp:3:5: error: bad\n/h.h:9:1: note: here\n/u.cpp:2:1: note: there\n"
        self.assertEqual(tidy.placed(said, "/u.cpp", places),
                         "b.cpp:1:5: error: bad\n/h.h:9:1: note: here\na.cpp:2:1: note: there\n")



class Comments(unittest.TestCase):
    def test_a_header_with_other_comments_counts_the_same(self):
        old = "/* a\n * b */\nint f(int); // why\n\nint w[17];\n"
        new = "/** more\n * of it */\n\nint f(int);\nint w[17]; /**< the words */\n"
        self.assertEqual(tidy.without_comments(old), "int f(int);\nint w[17];")
        self.assertEqual(tidy.without_comments(new), tidy.without_comments(old))

    def test_what_speaks_to_the_checks_stays(self):
        line = "int f(int); // NOLINT(misc-x)"
        self.assertEqual(tidy.without_comments(line + "\n"), line)

    def test_a_string_is_no_comment(self):
        line = r'const char *a = "/* \" //"; int b;'
        self.assertEqual(tidy.without_comments(line + " // c\n/* d */"), line)


if __name__ == "__main__":
    unittest.main()
