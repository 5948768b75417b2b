/*
 * session_documents_test.cpp: the scripts of examples/ and of docs/commands.md
 * run, and the page names all that there is.
 */
#include "script_run.h"
#include "session/expect.h"
#include "session/properties.h"
#include "session/verbs.h"
#include "session/words.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace lab_test
{

namespace
{

/** Each script is a process: the library keeps some things as long as its process lives. */
class SessionDocuments : public ::testing::TestWithParam<const char *>
{
protected:
    /** Expects that a script runs to its end; `up` finds files of a folder. */
    static void expect_done(const std::string &script, const std::filesystem::path &folder)
    {
        const CommandRun run = run_script(script, GetParam(), folder);
        EXPECT_EQ(run.code, 0) << run.out;
    }
};

std::string page()
{
    return bytes_of(source_path("docs/commands.md"));
}

TEST_P(SessionDocuments, TheExamplesRun)
{
    int scripts = 0;
    for (const auto &entry : std::filesystem::directory_iterator(EXAMPLES)) {
        if (entry.path().extension() == ".rtif") {
            expect_done(bytes_of(entry.path()), EXAMPLES);
            ++scripts;
        }
    }
    EXPECT_GE(scripts, 2);
}

TEST_P(SessionDocuments, TheScriptsOfThePageRun)
{
    const std::string text = page();
    const std::string fence = "```rtif\n";
    std::string script;
    int blocks = 0;
    for (std::size_t at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        at += fence.size();
        script += text.substr(at, text.find("```", at) - at);
        ++blocks;
    }
    EXPECT_EQ(blocks, 6);
    expect_done(script, RTIFHAL_SOURCE_DIR);
}

INSTANTIATE_TEST_SUITE_P(BothChips, SessionDocuments, ::testing::Values("trident", "trident2"));

TEST(SessionPage, NamesEachCommandPropertyTableAndSubject)
{
    const std::string text = page();
    std::vector<std::string> names = lab::session::verb_names();
    for (auto list : {lab::session::property_names(), lab::session::show_names(),
                      lab::session::expect_subjects()}) {
        names.insert(names.end(), list.begin(), list.end());
    }
    for (const std::string &name : names) {
        const bool told = text.find("`" + name + "`") != std::string::npos ||
                          text.find("`" + name + " ") != std::string::npos ||
                          text.find("\n" + name + " ") != std::string::npos ||
                          text.find("expect " + name + " ") != std::string::npos;
        EXPECT_TRUE(told) << name;
    }
}

/** Every property on every kind, as the example's own heading promises. */
TEST(SessionPage, TheExampleSetsEachPropertyOfEachInterface)
{
    const std::string text = bytes_of(EXAMPLES / "changes.rtif");
    for (const char *interface : {"Ethernet0", "PortChannel0001", "Vlan100", "Ethernet4.10",
                                  "PortChannel0001.20", "MuxTunnel0"}) {
        for (const std::string &name : lab::session::property_names()) {
            EXPECT_NE(text.find(fmt::format("\nset {} {} ", interface, name)), std::string::npos)
                << interface << " " << name;
        }
    }
}

/** What an example's line says, without its comment. */
std::vector<lab::session::Words> commands_of(const std::string &script)
{
    std::vector<lab::session::Words> commands;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        if (lab::session::Words words = lab::session::split(line); !words.empty()) {
            commands.push_back(std::move(words));
        }
    }
    return commands;
}

TEST(SessionPage, TheExampleExpectsSomethingOfEachChange)
{
    const auto commands = commands_of(bytes_of(EXAMPLES / "changes.rtif"));
    ASSERT_FALSE(commands.empty());
    std::size_t changes = 0;
    for (std::size_t i = 0; i + 1 < commands.size(); ++i) {
        const std::string &verb = commands[i].front();
        if (verb == "set" || verb == "get" || verb == "ipv6" || verb == "disable") {
            ++changes;
            EXPECT_EQ(commands[i + 1].front(), "expect") << lab::session::as_written(commands[i]);
        }
    }
    EXPECT_GE(changes, 100U);
    EXPECT_EQ(commands.back().front(), "expect");
}

TEST(SessionPage, TheExampleSetsEachReversePathModeOfEachInterface)
{
    const auto commands = commands_of(bytes_of(EXAMPLES / "changes.rtif"));
    for (const char *interface : {"Ethernet0", "PortChannel0001", "Vlan100", "Ethernet4.10",
                                  "PortChannel0001.20", "MuxTunnel0"}) {
        for (const char *mode : {"strict", "loose", "off"}) {
            const lab::session::Words wanted = {"set", interface, "urpf", mode};
            EXPECT_NE(std::ranges::find(commands, wanted), commands.end())
                << lab::session::as_written(wanted);
        }
    }
}

} // namespace

} // namespace lab_test
