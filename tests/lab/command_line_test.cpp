/*
 * command_line_test.cpp: the command as a process: exit codes, what goes to
 * which stream, help.
 */
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>

namespace
{

struct Run {
    int code = -1;
    std::string out;
};

/** Runs rtif in a shell; `streams` redirects its streams, e.g. "2>&1 >/dev/null". */
Run rtif(const std::string &arguments, const std::string &streams = "2>/dev/null")
{
    Run run;
    const std::string command = std::string(RTIFHAL_RTIF) + " " + arguments + " " + streams;
    // The shell sets the streams up.
    std::FILE *pipe = popen(command.c_str(), "r"); // NOLINT(cert-env33-c)
    std::array<char, 4096> block = {};
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), pipe)) {
        run.out.append(block.data(), got);
    }
    const int status = pclose(pipe);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

/** What goes to the error stream. */
std::string errors_of(const std::string &arguments)
{
    return rtif(arguments, "2>&1 >/dev/null").out;
}

const std::string LEAF = std::string(RTIFHAL_SOURCE_DIR) + "/examples/leaf.json";

/** A file of a text in a folder of its own, which goes with it. */
class File
{
public:
    explicit File(const std::string &text)
    {
        std::string name = (std::filesystem::temp_directory_path() / "rtif-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        path = (folder_ / "leaf.json").string();
        std::ofstream(path) << text;
    }
    ~File() { std::filesystem::remove_all(folder_); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    std::string path;

private:
    std::filesystem::path folder_;
};

} // namespace

TEST(CommandLine, AllIsWell)
{
    for (const char *options :
         {"", " --chip trident2", " --json", " --then-down", " --calls --trace"}) {
        EXPECT_EQ(rtif("up " + LEAF + options).code, 0);
        EXPECT_EQ(errors_of("up " + LEAF + options), "");
    }
}

TEST(CommandLine, TwoRunsPrintTheSame)
{
    const std::string arguments = "up " + LEAF + " --calls --trace --then-down";
    EXPECT_EQ(rtif(arguments).out, rtif(arguments).out);
}

TEST(CommandLine, NoColoursOffATerminal)
{
    EXPECT_EQ(rtif("up " + LEAF).out.find('\x1b'), std::string::npos);
}

TEST(CommandLine, RowsThatAreNotTakenAreNoFailure)
{
    const File file(R"({"PORT": {"x": {}}, "INTERFACE": {"Ethernet0": {}}})");
    EXPECT_EQ(rtif("up " + file.path).code, 0);
    EXPECT_EQ(errors_of("up " + file.path), "");
}

TEST(CommandLine, BadFileIsRefusedWithOneLine)
{
    const File file("[]");
    EXPECT_EQ(rtif("up " + file.path).code, 1);
    EXPECT_EQ(errors_of("up " + file.path),
              file.path + ": an object of tables was expected, not a list\n");
    EXPECT_EQ(rtif("up " + file.path).out, "");
    EXPECT_EQ(rtif("up /nowhere.json").code, 1);
    EXPECT_EQ(errors_of("up /nowhere.json"),
              "/nowhere.json: cannot be read: No such file or directory\n");
}

TEST(CommandLine, StateFolderThatCannotBeMadeIsRefused)
{
    EXPECT_EQ(rtif("up " + LEAF + " --state /proc/none").code, 1);
    EXPECT_EQ(errors_of("up " + LEAF + " --state /proc/none").substr(0, 10), "/proc/none");
}

TEST(CommandLine, OutputThatCannotBeWrittenIsRefused)
{
    EXPECT_EQ(rtif("up " + LEAF, ">/dev/full 2>/dev/null").code, 1);
}

TEST(CommandLine, UsageErrors)
{
    for (const char *arguments :
         {"", "up", "down", "up a b", "up a --chip other", "up a --nonsense", "up a --state"}) {
        EXPECT_EQ(rtif(arguments).code, 2) << arguments;
        EXPECT_NE(errors_of(arguments), "") << arguments;
    }
}

TEST(CommandLine, HelpOnEachLevel)
{
    EXPECT_EQ(rtif("--help").code, 0);
    EXPECT_NE(rtif("--help").out.find("up "), std::string::npos);
    EXPECT_EQ(rtif("up --help").code, 0);
    for (const char *option :
         {"--chip", "--json", "--calls", "--trace", "--state", "--then-down"}) {
        EXPECT_NE(rtif("up --help").out.find(option), std::string::npos) << option;
    }
    EXPECT_NE(rtif("run --help").out.find("--quiet"), std::string::npos);
    EXPECT_NE(rtif("shell --help").out.find("--chip"), std::string::npos);
    EXPECT_EQ(rtif("--version").out, "rtif 0.1.0\n");
}

TEST(CommandLine, WordsThatMakeNoSenseAreToldWithTheWayOut)
{
    EXPECT_EQ(errors_of("up"), "rtif up: config is required\n"
                               "Usage: rtif up [OPTIONS] config\n"
                               "Run 'rtif up --help' for more information.\n");
    EXPECT_EQ(errors_of("pakcet x"), "rtif: unknown command 'pakcet': did you mean 'packet'?\n"
                                     "Run 'rtif --help' for the list of commands.\n");
    EXPECT_EQ(errors_of("frobnicate"), "rtif: unknown command 'frobnicate'\n"
                                       "Run 'rtif --help' for the list of commands.\n");
    EXPECT_EQ(errors_of("--hlep"), "rtif: unknown option '--hlep': did you mean '--help'?\n"
                                   "Run 'rtif --help' for the list of commands.\n");
}

TEST(CommandLine, WithoutACommandTheListOfThemIsTold)
{
    const auto told = rtif("", "2>&1 >/dev/null");
    EXPECT_EQ(told.code, 2);
    EXPECT_EQ(told.out, "rtif: a command is missing\n\n" + rtif("--help").out);
}
