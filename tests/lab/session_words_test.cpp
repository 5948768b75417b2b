/*
 * session_words_test.cpp: lines of a session's language, cut into words.
 */
#include "session/errors.h"
#include "session/line_reader.h"
#include "session/words.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace lab_test
{

namespace
{

using lab::session::as_written;
using lab::session::can_be_shown;
using lab::session::split;
using lab::session::split_unfinished;
using lab::session::UsageError;
using lab::session::Words;

/** Why a line can't be cut; empty when it can. */
std::string problem(const std::string &line)
{
    try {
        split(line);
    } catch (const UsageError &error) {
        return error.what();
    }
    return "";
}

TEST(SessionWords, StandBetweenBlanksAndTabs)
{
    EXPECT_EQ(split("set Ethernet0\tmtu   9000 "), (Words{"set", "Ethernet0", "mtu", "9000"}));
    EXPECT_EQ(split(""), Words{});
    EXPECT_EQ(split(" \t "), Words{});
}

TEST(SessionWords, ACommentBeginsAWord)
{
    EXPECT_EQ(split("# all of it"), Words{});
    EXPECT_EQ(split("show ports # now"), (Words{"show", "ports"}));
    EXPECT_EQ(split("up a#b"), (Words{"up", "a#b"}));
    EXPECT_EQ(split("up \"#1.json\""), (Words{"up", "#1.json"}));
}

TEST(SessionWords, QuotesKeepBlanks)
{
    EXPECT_EQ(split(R"(up "my file.json")"), (Words{"up", "my file.json"}));
    EXPECT_EQ(split(R"(expect message "a \"b\" \\ c\d")"),
              (Words{"expect", "message", R"(a "b" \ c\d)"}));
    EXPECT_EQ(split(R"(expect message "")"), (Words{"expect", "message", ""}));
    EXPECT_EQ(split(R"(up my" "file)"), (Words{"up", "my file"}));
}

TEST(SessionWords, AnOpenQuoteIsRefused)
{
    EXPECT_EQ(problem("up \"my file"), "a quote is opened and not closed");
    EXPECT_EQ(problem("up \"ends with \\\""), "a quote is opened and not closed");
}

TEST(SessionWords, ACarriageReturnAtTheEndIsDropped)
{
    EXPECT_EQ(split("show ports\r"), (Words{"show", "ports"}));
    EXPECT_NE(problem("show\rports"), "");
}

TEST(SessionWords, ControlCharactersAreRefusedAndNotShown)
{
    EXPECT_EQ(problem("add \x1b[2JEthernet0"),
              "column 5 holds the control character U+001B: take it out");
    EXPECT_EQ(problem(std::string("add\0x", 5)),
              "column 4 holds the control character U+0000: take it out");
    EXPECT_EQ(problem("add \x7f"), "column 5 holds the control character U+007F: take it out");
    // One of the second control set, and one that turns the text's direction round.
    EXPECT_NE(problem("add \xc2\x9b"), "");
    // NOLINTNEXTLINE(misc-misleading-bidirectional): it misleads on purpose
    EXPECT_NE(problem("add \xe2\x80\xae"), "");
}

TEST(SessionWords, BytesThatAreNoUtf8AreRefused)
{
    EXPECT_EQ(problem("add \xff"), "byte 0xff in column 5 is no UTF-8: only text is read");
    EXPECT_NE(problem("add \xc3"), "");             // cut short
    EXPECT_NE(problem("add \xc0\xaf"), "");         // longer than it need be
    EXPECT_NE(problem("add \xed\xa0\x80"), "");     // a surrogate
    EXPECT_NE(problem("add \xf4\x90\x80\x80"), ""); // above the last code point
    EXPECT_EQ(problem("up b\xc3\xa4r\xe2\x82\xac\xf0\x9f\x98\x80"), "");
}

TEST(SessionWords, ALineHasALongestLength)
{
    EXPECT_EQ(problem(std::string(4096, 'x')), "");
    EXPECT_EQ(problem(std::string(4097, 'x')), "the line is longer than 4096 bytes");
}

TEST(SessionWords, AnUnfinishedLineTellsTheWordAtItsEnd)
{
    auto at = split_unfinished("set Ether");
    EXPECT_EQ(at.before, Words{"set"});
    EXPECT_EQ(at.last, "Ether");
    at = split_unfinished("set Ethernet0 ");
    EXPECT_EQ(at.before, (Words{"set", "Ethernet0"}));
    EXPECT_EQ(at.last, "");
    at = split_unfinished("up \"my fi");
    EXPECT_EQ(at.last, "my fi");
    EXPECT_TRUE(at.in_quotes);
    EXPECT_TRUE(split_unfinished("show # po").in_comment);
}

TEST(SessionWords, AWordIsWrittenSoThatItIsReadAgain)
{
    for (const std::string word : {"plain", "", "two words", "#1", "a\"b\\c", "C:\\x y"}) {
        EXPECT_EQ(split(as_written(word)), Words{word}) << word;
    }
    EXPECT_EQ(as_written("plain"), "plain");
}

TEST(SessionWords, TextThatCanBeShownHasNoControlCharacters)
{
    EXPECT_TRUE(can_be_shown("b\xc3\xa4r\t1"));
    EXPECT_FALSE(can_be_shown("\x1b[2J"));
    EXPECT_FALSE(can_be_shown("\xff"));
}

TEST(LineReader, GivesEachLineWithItsNumber)
{
    std::istringstream in("one\n\nthree");
    lab::session::LineReader reader(in, 100);
    EXPECT_EQ(reader.next()->text, "one");
    EXPECT_EQ(reader.next()->text, "");
    const auto last = reader.next();
    EXPECT_EQ(last->text, "three");
    EXPECT_EQ(last->number, 3U);
    EXPECT_FALSE(reader.next());
}

TEST(LineReader, KeepsOneByteMoreThanTheLimit)
{
    std::istringstream in(std::string(1000, 'x') + "\nnext\n");
    lab::session::LineReader reader(in, 10);
    EXPECT_EQ(reader.next()->text, std::string(11, 'x'));
    EXPECT_EQ(reader.next()->text, "next");
    EXPECT_FALSE(reader.next());
}

} // namespace

} // namespace lab_test
