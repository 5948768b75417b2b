/*
 * record_align_test.cpp: which lines of two lists belong together.
 */
#include "record/align.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{

using lab::record::align;
using lab::record::Step;
using lab::record::StepKind;
using AlignLines = std::vector<std::string_view>;

/** The steps as a text: "=" the same, "~" changed, "-" and "+". */
std::string steps_of(const AlignLines &before, const AlignLines &after,
                     std::size_t pairs_max = lab::record::ALIGN_PAIRS_MAX)
{
    std::string text;
    for (const Step &step : align(before, after, pairs_max)) {
        text += "=~-+"[static_cast<std::size_t>(step.kind)];
    }
    return text;
}

TEST(RecordAlign, EqualListsHaveNothingElse)
{
    EXPECT_EQ(steps_of({"a()", "b()"}, {"a()", "b()"}), "==");
    EXPECT_EQ(steps_of({}, {}), "");
}

TEST(RecordAlign, WhatStandsInOneListOnlyIsAddedOrRemoved)
{
    EXPECT_EQ(steps_of({}, {"a()"}), "+");
    EXPECT_EQ(steps_of({"a()"}, {}), "-");
    EXPECT_EQ(steps_of({"a()", "c()"}, {"a()", "b()", "c()"}), "=+=");
    EXPECT_EQ(steps_of({"a()", "b()", "c()"}, {"b()"}), "-=-");
    EXPECT_EQ(steps_of({"a()"}, {"b()"}), "-+");
}

TEST(RecordAlign, TheSameCallWithOtherNumbersIsChanged)
{
    EXPECT_EQ(steps_of({"f(1) = 0", "g(1) = 0"}, {"f(2) = 0", "h()", "g(2) = 0"}), "~+~");
    EXPECT_EQ(steps_of({"trace f: one"}, {"trace f: two"}), "~");
    EXPECT_EQ(steps_of({"trace f: one"}, {"error f: one"}), "-+");
}

TEST(RecordAlign, ALineThatIsTheSameCountsMoreThanTwoThatChanged)
{
    EXPECT_EQ(steps_of({"f(1)", "f(2)"}, {"f(2)", "f(1)"}), "-=+");
    EXPECT_EQ(steps_of({"f(1)", "f(2)", "f(3)"}, {"f(2)", "f(3)", "f(4)"}), "-==+");
}

TEST(RecordAlign, BeyondTheBoundTheMiddleIsReplacedWhole)
{
    const AlignLines before = {"a()", "b(1)", "c()", "d()"};
    const AlignLines after = {"a()", "c()", "b(2)", "d()"};
    EXPECT_EQ(steps_of(before, after, 4), "=-=+=");
    EXPECT_EQ(steps_of(before, after, 3), "=--++=");
}

TEST(RecordAlign, StepsGoThroughBothListsWholeWhateverTheyAre)
{
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same lists in every run
    const AlignLines words = {"a(1)", "a(2)", "b(1)", "b(2)", "c()"};
    for (int round = 0; round < 300; ++round) {
        AlignLines before(random() % 12);
        AlignLines after(random() % 12);
        for (AlignLines *list : {&before, &after}) {
            for (std::string_view &line : *list) {
                line = words[random() % words.size()];
            }
        }
        std::size_t i = 0;
        std::size_t j = 0;
        for (const Step &step : align(before, after, round % 2 == 0 ? 1000 : 20)) {
            ASSERT_EQ(step.before, i);
            ASSERT_EQ(step.after, j);
            if (step.kind == StepKind::same) {
                ASSERT_EQ(before.at(i), after.at(j));
            }
            if (step.kind == StepKind::changed) {
                ASSERT_NE(before.at(i), after.at(j));
                ASSERT_EQ(before.at(i).front(), after.at(j).front());
            }
            i += step.kind == StepKind::added ? 0 : 1;
            j += step.kind == StepKind::removed ? 0 : 1;
        }
        ASSERT_EQ(i, before.size());
        ASSERT_EQ(j, after.size());
    }
}

} // namespace
