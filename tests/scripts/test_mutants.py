"""Tests of scripts/mutants.py: which changes it makes of a source, and which it leaves alone."""

import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

import mutants  # noqa: E402


def body(statements):
    """A source with one function of these statements, its body on line 3."""
    return "int one(int a)\n{\n" + statements + "\n}\n"


def changes(text, messages=False):
    """Operator and the changed line of each mutant of a source."""
    found = []
    for mutant in mutants.mutants_of("one.cpp", text, messages):
        line = mutant.applied(text).split("\n")[mutant.line - 1]
        found.append((mutant.operator, line.strip()))
    return found


def operators(statements, messages=False):
    """The operators that find something in a function's body."""
    return [operator for operator, _ in changes(body(statements), messages)]


class Signs(unittest.TestCase):
    """Comparisons, conditions, arithmetic."""

    def test_equality_turns(self):
        self.assertIn(("== to !=", "if (a != b) {}"), changes(body("if (a == b) {}")))

    def test_less_moves_by_one_and_turns(self):
        self.assertEqual(
            changes(body("if (a < b) {}")),
            [("< to <=", "if (a <= b) {}"), ("< to >=", "if (a >= b) {}")],
        )

    def test_a_templates_brackets_are_no_comparison(self):
        self.assertEqual(operators("auto x = static_cast<int>(a);"), [])

    def test_and_becomes_or(self):
        self.assertEqual(operators("if (a && b) {}"), ["&& to ||"])

    def test_not_is_dropped(self):
        self.assertEqual(changes(body("if (!a) {}")), [("! dropped", "if (a) {}")])

    def test_not_stays_where_nobody_reads_it(self):
        self.assertEqual(operators("(void)!f(a, b);"), [])

    def test_a_reference_and_a_pointer_are_no_arithmetic(self):
        self.assertEqual(operators("thing &x = *y; const char *const z = f(&w);"), [])

    def test_bits_are_set_instead_of_added(self):
        self.assertEqual(changes(body("a |= b;")), [("|= to =", "a = b;")])

    def test_a_choice_turns(self):
        self.assertIn(("? turned", "f(a == 0 ? b : c);"), changes(body("f(a ? b : c);")))

    def test_steps_go_backwards(self):
        self.assertEqual(operators("++a;"), ["++ to --"])

    def test_a_condition_without_a_sign_turns(self):
        self.assertEqual(changes(body("if (f(a)) {}")), [("condition turned", "if (!(f(a))) {}")])


class Values(unittest.TestCase):
    """Constants."""

    def test_numbers_are_one_off(self):
        found = operators("f(0, 4094, 7U);")
        self.assertEqual(found, ["call left out", "0 to 1", "4094 to 4095", "7U to 8U"])

    def test_minus_one_becomes_nothing(self):
        self.assertEqual(changes(body("return -1;")), [("-1 to 0", "return 0;")])

    def test_a_difference_is_no_minus_one(self):
        self.assertEqual(operators("f(a - 1);")[1:], ["- to +", "1 to 2"])

    def test_a_flag_moves_by_one_bit(self):
        self.assertEqual(operators("f(0x40);")[1:], ["0x40 to 0x80"])
        self.assertEqual(operators("f(0x80000000U);")[1:], ["0x80000000U to 0x40000000U"])

    def test_a_mask_loses_or_gains_its_lowest_bit(self):
        self.assertEqual(operators("f(0xfff);")[1:], ["0xfff to 0xffe"])

    def test_truth_turns(self):
        self.assertEqual(operators("bool x = true;"), ["true to false"])

    def test_a_named_constant_outside_of_functions_counts(self):
        self.assertEqual(
            changes("constexpr int SIZE = 9;\nstruct s { char x[8]; };\n"),
            [("9 to 10", "constexpr int SIZE = 10;")],
        )


class Statements(unittest.TestCase):
    """What is left out, and what a function answers."""

    def test_a_call_is_left_out(self):
        self.assertEqual(changes(body("f(a);")), [("call left out", ";")])
        self.assertEqual(changes(body("(void)x::f(a);")), [("call left out", ";")])

    def test_a_call_over_lines_keeps_the_numbers_of_those_below(self):
        text = body("f(a,\n  b);\nreturn a;")
        mutant = mutants.mutants_of("one.cpp", text)[0]
        self.assertEqual(mutant.operator, "call left out")
        self.assertEqual(mutant.applied(text).split("\n")[4], "return a;")

    def test_a_call_whose_result_is_used_stays(self):
        self.assertEqual(operators("const int b = f(a);"), [])

    def test_an_assignment_is_left_out(self):
        self.assertEqual(changes(body("a->b[i].c = d;")), [("assignment left out", ";")])
        self.assertEqual(operators("*a = b;"), ["assignment left out"])

    def test_a_declaration_stays(self):
        self.assertEqual(operators("int *const a = b;"), [])

    def test_a_loops_head_keeps_its_step(self):
        self.assertEqual(operators("for (x *n = f(); n; n = g(n)) {}"), [])

    def test_an_answer_becomes_none(self):
        self.assertEqual(changes(body("return a;")), [("return nothing", "return {};")])

    def test_what_is_written_in_a_case_counts(self):
        found = operators("switch (a) { case B: f(); break; }")
        self.assertEqual(found, ["call left out", "break left out"])


class LeftAlone(unittest.TestCase):
    """What isn't code of the library's work."""

    def test_comments_strings_and_directives(self):
        text = '// a == 1\n/* f(); */\n#define X 1\nconst char *t = "a == 1";'
        self.assertEqual(operators(text), [])

    def test_assertions_of_the_compiler(self):
        self.assertEqual(operators("static_assert(sizeof a == 4);"), [])

    def test_messages_stay_but_for_what_they_show(self):
        self.assertEqual(operators('REPORT("1", 2);'), ["2 to 3"])


class Messages(unittest.TestCase):
    """Messages alone, where they are asked for."""

    def test_level_text_and_the_message_itself(self):
        self.assertEqual(
            changes(body('REPORT("no %d\\n", 1);\nf(2);'), messages=True),
            [
                ("REPORT to TRACE", 'TRACE("no %d\\n", 1);'),
                ("text changed", 'REPORT("~no %d\\n", 1);'),
                ("message left out", ";"),
            ],
        )


class Names(unittest.TestCase):
    """What tells a mutant from the others."""

    def test_line_column_and_function(self):
        mutant = mutants.mutants_of("kinds/one.cpp", body("  f();"))[0]
        self.assertEqual(mutant.name, "kinds/one.cpp:3:3 call left out")
        self.assertEqual(mutant.key, ("kinds/one.cpp", "one", "f();", "call left out", 1))

    def test_the_key_stays_when_lines_are_put_in_above(self):
        text = body("f();")
        before = mutants.mutants_of("one.cpp", text)[0]
        after = mutants.mutants_of("one.cpp", "\n// more\n" + text)[0]
        self.assertEqual(before.key, after.key)

    def test_like_lines_of_a_function_are_counted(self):
        self.assertEqual(
            [mutant.nth for mutant in mutants.mutants_of("one.cpp", body("f();\nf();"))], [1, 2]
        )


class Spread(unittest.TestCase):
    """Some of the mutants."""

    def setUp(self):
        self.all = mutants.mutants_of("big.cpp", body("f();\n" * 90))
        self.all += mutants.mutants_of("small.cpp", body("f();\n" * 10))

    def files(self, count, seed=1):
        """How many of each file are chosen."""
        chosen = mutants.spread(self.all, count, seed)
        return [sum(m.file == name for m in chosen) for name in ("big.cpp", "small.cpp")]

    def test_each_file_has_its_share(self):
        big, small = self.files(20)
        self.assertEqual(big + small, 20)
        self.assertIn(small, (2, 3))

    def test_each_file_has_one_when_there_is_room(self):
        self.assertEqual(self.files(2), [1, 1])

    def test_a_seed_chooses_the_same_again(self):
        self.assertEqual(mutants.spread(self.all, 20, 7), mutants.spread(self.all, 20, 7))
        self.assertNotEqual(mutants.spread(self.all, 20, 7), mutants.spread(self.all, 20, 8))

    def test_more_than_there_are_gives_all(self):
        self.assertEqual(mutants.spread(self.all, 1000, 1), self.all)


if __name__ == "__main__":
    unittest.main()
