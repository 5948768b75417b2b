/*
 * session_nearest_test.cpp: the known word that an unknown one was meant to be.
 */
#include "session/nearest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab_test
{

namespace
{

using lab::session::nearest;
using lab::session::unknown;

const std::vector<std::string> VERBS = {"up", "add", "del", "set", "show", "quit", "disable"};

TEST(Nearest, FindsWhatWasMeant)
{
    EXPECT_EQ(nearest("shwo", VERBS), "show");        // swapped
    EXPECT_EQ(nearest("shw", VERBS), "show");         // left out
    EXPECT_EQ(nearest("disablle", VERBS), "disable"); // put in
    EXPECT_EQ(nearest("quot", VERBS), "quit");        // changed
    EXPECT_EQ(nearest("SHOW", VERBS), "show");        // in capitals
}

TEST(Nearest, FindsNothingFarAway)
{
    EXPECT_FALSE(nearest("interface", VERBS));
    EXPECT_FALSE(nearest("", VERBS));
    EXPECT_FALSE(nearest("x", {}));
    EXPECT_FALSE(nearest(std::string(200, 'a'), {std::string(200, 'a')}));
}

TEST(Nearest, TakesTheFirstOfEquallyNearOnes)
{
    EXPECT_EQ(nearest("sat", {"set", "sit"}), "set");
}

TEST(Nearest, AnUnknownWordIsToldWithTheNearest)
{
    EXPECT_EQ(unknown("command", "shwo", VERBS), "unknown command 'shwo': did you mean 'show'?");
    EXPECT_EQ(unknown("command", "banana", VERBS), "unknown command 'banana'");
}

TEST(Nearest, ALongWordIsShortenedBetweenCharacters)
{
    const std::string text = unknown("command", std::string(59, 'a') + "\xc3\xa4\xc3\xa4", VERBS);
    EXPECT_EQ(text, "unknown command '" + std::string(59, 'a') + "…'");
}

} // namespace

} // namespace lab_test
