/*
 * session_documents_test.cpp: the scripts of examples/ and of docs/commands.md
 * run, and the page names all that there is.
 */
#include "commands/run.h"
#include "session/expect.h"
#include "session/properties.h"
#include "session/verbs.h"
#include "session_run.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace lab_test
{

namespace
{

using simswitch::chip::Kind;

class SessionDocuments : public ::testing::TestWithParam<Kind>
{
protected:
    /** Runs a script; what goes wrong is in `err`. */
    int run(std::istream &in, const std::filesystem::path &path)
    {
        rtifhal_test::reset_library();
        simswitch::Switch hardware({.chip = GetParam()});
        lab::commands::RunOptions options;
        options.script = path.string();
        std::ostringstream out_stream;
        std::ostringstream err_stream;
        const int code = run_script_on(hardware, options, in, path.filename().string(),
                                       {out_stream, err_stream});
        err = err_stream.str();
        return code;
    }

    std::string err;
};

std::string page()
{
    std::ifstream in(std::filesystem::path(RTIFHAL_SOURCE_DIR) / "docs" / "commands.md");
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST_P(SessionDocuments, TheExampleOfAllChangesRuns)
{
    const auto path = EXAMPLES / "changes.rtif";
    std::ifstream in(path);
    EXPECT_EQ(run(in, path), 0) << err;
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
    EXPECT_EQ(blocks, 4);
    std::istringstream in(script);
    EXPECT_EQ(run(in, std::filesystem::path(RTIFHAL_SOURCE_DIR) / "commands.md"), 0) << err;
}

INSTANTIATE_TEST_SUITE_P(BothChips, SessionDocuments,
                         ::testing::Values(Kind::trident, Kind::trident2));

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
    std::ifstream in(EXAMPLES / "changes.rtif");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    for (const char *interface : {"Ethernet0", "PortChannel0001", "Vlan100", "Ethernet4.10",
                                  "PortChannel0001.20", "MuxTunnel0"}) {
        for (const std::string &name : lab::session::property_names()) {
            EXPECT_NE(text.find(fmt::format("\nset {} {} ", interface, name)), std::string::npos)
                << interface << " " << name;
        }
    }
}

} // namespace

} // namespace lab_test
