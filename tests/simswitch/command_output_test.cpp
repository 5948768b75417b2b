/*
 * command_output_test.cpp: what diagnostic commands print.
 */
#include "switch.h"

#include <services/cmd.h>

#include <gmock/gmock.h>

namespace simswitch
{

namespace
{

using Calls = std::vector<std::string>;

struct CommandOutputTest : testing::Test {
    Switch host;
};

} // namespace

TEST_F(CommandOutputTest, LinesComeAsTheyWereWritten)
{
    auto &output = host.command_outputs.open();
    EXPECT_EQ(cmd_prt(&output, "one\n", 0), 0);
    EXPECT_EQ(cmd_prt(&output, "two, 100%d \"x\"", 0), 0);
    EXPECT_EQ(cmd_prt(&output, "", 0), 0);
    EXPECT_EQ(output.lines(), (Calls{"one\n", "two, 100%d \"x\"", ""}));
    EXPECT_EQ(output.text(), "one\ntwo, 100%d \"x\"");
    EXPECT_EQ(host.journal.calls(), (Calls{
                                        R"(cmd_prt(command, "one\n", 0) = 0)",
                                        R"(cmd_prt(command, "two, 100%d \"x\"", 0) = 0)",
                                        R"(cmd_prt(command, "", 0) = 0)",
                                    }));
}

TEST_F(CommandOutputTest, EachCommandHasItsOwn)
{
    auto &first = host.command_outputs.open();
    auto &second = host.command_outputs.open();
    cmd_prt(&second, "second", 0);
    cmd_prt(&first, "first", 0);
    EXPECT_EQ(first.text(), "first");
    EXPECT_EQ(second.text(), "second");
}

TEST_F(CommandOutputTest, HandleThatIsNoneIsRefused)
{
    int other = 0;
    EXPECT_EQ(cmd_prt(&other, "line", 0), -4);
    EXPECT_EQ(host.journal.records().back().reason, "this is no command's output, or it is closed");
    EXPECT_EQ(cmd_prt(nullptr, "line", 0), -4);
}

TEST_F(CommandOutputTest, ClosedOneIsRefusedAndTheOthersStay)
{
    const void *const gone = &host.command_outputs.open();
    auto &open = host.command_outputs.open();
    host.command_outputs.close(gone);
    host.command_outputs.close(gone);
    EXPECT_EQ(cmd_prt(const_cast<void *>(gone), "line", 0), -4);
    EXPECT_EQ(cmd_prt(&open, "line", 0), 0);
    EXPECT_EQ(open.text(), "line");
}

TEST_F(CommandOutputTest, FaultPrintsNothing)
{
    auto &output = host.command_outputs.open();
    host.journal.arm({.function = "cmd_prt", .code = -9});
    EXPECT_EQ(cmd_prt(&output, "line", 0), -9);
    EXPECT_TRUE(output.lines().empty());
}

TEST_F(CommandOutputTest, OutputsGoWithTheirSwitch)
{
    const void *const handle = &host.command_outputs.open();
    const Switch other;
    EXPECT_EQ(cmd_prt(const_cast<void *>(handle), "line", 0), -4);
}

TEST_F(CommandOutputTest, PlaceBetweenTwoLinesIsNoughtAtFirst)
{
    printf_curr_idx = 7;
    const Switch other;
    EXPECT_EQ(printf_curr_idx, 0);
}

} // namespace simswitch
