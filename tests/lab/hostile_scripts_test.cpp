/*
 * hostile_scripts_test.cpp: scripts that never end, by their lines or by their number, default
 * routes that promise what they don't hold, and texts that would stir a terminal.
 */
#include "script_run.h"

#include "config/default_route_file.h"
#include "config/default_route_reader.h"
#include "config/json_tree.h"
#include "config/shown.h"
#include "session/line_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <istream>
#include <streambuf>
#include <string>

using namespace lab_test;
namespace config = lab::config;
using lab::session::LineReader;

namespace
{

/** A stream that never ends: the same text again and again, and how much of it was taken. */
class Endless : public std::streambuf
{
public:
    explicit Endless(std::string text) : text_(std::move(text)) {}
    std::uint64_t taken() const
    {
        return rounds_ * text_.size() - static_cast<std::uint64_t>(egptr() - gptr());
    }

private:
    int_type underflow() override
    {
        ++rounds_;
        setg(text_.data(), text_.data(), text_.data() + text_.size());
        return traits_type::to_int_type(text_.front());
    }

    std::string text_;
    std::uint64_t rounds_ = 0;
};

/** Why a text is no file of default routes. */
template <class Read> std::string refusal(const Read &read)
{
    try {
        read();
    } catch (const config::UnusableFile &error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(HostileScript, ALineThatNeverEndsIsGivenUp)
{
    Endless endless(std::string(4096, 'x'));
    std::istream in(&endless);
    LineReader reader(in, 100, 20'000);
    const auto line = reader.next();
    ASSERT_TRUE(line);
    EXPECT_TRUE(line->is_beyond);
    EXPECT_EQ(line->number, 1U);
    EXPECT_EQ(line->text, std::string(101, 'x'));
    EXPECT_LE(endless.taken(), 20'001U);
}

TEST(HostileScript, LinesThatNeverEndAreGivenUp)
{
    Endless endless("# nothing\n");
    std::istream in(&endless);
    LineReader reader(in, 100, 1000);
    std::size_t lines = 0;
    auto line = reader.next();
    for (; line && !line->is_beyond; line = reader.next()) {
        ++lines;
    }
    ASSERT_TRUE(line);
    EXPECT_EQ(lines, 100U);
}

TEST(HostileScript, AScriptAtTheLimitIsRead)
{
    std::istringstream in("ab\ncd\n");
    LineReader reader(in, 100, 6);
    EXPECT_FALSE(reader.next()->is_beyond);
    EXPECT_FALSE(reader.next()->is_beyond);
    EXPECT_FALSE(reader.next());
}

TEST(HostileScript, EndsTheCommandAndTellsWhere)
{
    const CommandRun endless = rtif("run - </dev/zero");
    EXPECT_EQ(endless.code, 2);
    EXPECT_EQ(endless.out, "standard input:1: (a line that can't be shown)\n"
                           "    the script is longer than 16 MiB\n");
}

TEST(HostileDefaultRoutes, ACountWithoutRoutesIsRefused)
{
    const std::string bytes("\xff\xff\xff\xff", 4);
    EXPECT_EQ(refusal([&bytes] { config::parse_default_routes(bytes, "routes"); }).substr(0, 8),
              "routes: ");
}

TEST(HostileDefaultRoutes, DeepOrManyAreRefused)
{
    EXPECT_EQ(refusal([] { config::read_default_routes(std::string(5000, '['), "routes", {}); }),
              "routes: cannot be read: objects and lists lie more than 1000 deep");
    std::string many = "[[[[[[0";
    for (std::size_t i = 0; i < config::JSON_VALUES_MAX; ++i) {
        many += ",0";
    }
    EXPECT_EQ(refusal([&many] { config::read_default_routes(many + "]]]]]]", "routes", {}); }),
              "routes: cannot be read: it has more than 200000 values");
}

TEST(HostileText, ComesOutHarmlessAndOnlyThen)
{
    using config::harmless;
    EXPECT_EQ(harmless("plain\ttext, Fenêtre, 日本, 🙂"),
              "plain\ttext, Fenêtre, 日本, 🙂");
    EXPECT_EQ(harmless("\x1b[2J\n"), "\\x1b[2J\\x0a");
    EXPECT_EQ(harmless("a\xff"
                       "b\xc3"),
              "a\\xffb\\xc3");
    // NOLINTNEXTLINE(misc-misleading-bidirectional): it misleads on purpose
    EXPECT_EQ(harmless("\u202e\u061c\u009b\u007f"), "\\xe2\\x80\\xae\\xd8\\x9c\\xc2\\x9b\\x7f");
    // Too long forms, surrogates, what is beyond the last character.
    EXPECT_EQ(harmless("\xc0\x80\xed\xa0\x80\xf4\x90\x80\x80"),
              "\\xc0\\x80\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80");
    EXPECT_EQ(harmless(harmless("\x1b\xff")), harmless("\x1b\xff"));
    EXPECT_EQ(config::harmless_lines("a\nb\r\n"), "a\nb\\x0d\n");
}

TEST(HostileText, EachByteAloneIsShownOrEscaped)
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_TRUE(config::can_be_shown(config::harmless(text))) << byte;
        EXPECT_EQ(config::can_be_shown(text), config::harmless(text) == text) << byte;
    }
}
