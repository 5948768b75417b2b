/*
 * script_run.h: scripts in a process of their own, for what the library keeps
 * as long as its process lives, such as the drop rule.
 */
#pragma once

#include "restart_run.h"
#include "session_run.h"
#include "up_run.h"

#include <fmt/format.h>

#include <fstream>
#include <string>

namespace lab_test
{

/** Runs a text as a script with `rtif run`; `up` finds files of a folder. */
inline CommandRun run_script(const std::string &text, const std::string &chip = "trident",
                             const std::filesystem::path &folder = EXAMPLES)
{
    const Folder own;
    const auto script = own.path / "script";
    std::ofstream(script) << text;
    return rtif(fmt::format("run --chip {} - <{}", chip, script.string()),
                fmt::format("cd {}; ", folder.string()));
}

/** Scripts on both kinds of chip. */
class ScriptTest : public ::testing::TestWithParam<const char *>
{
protected:
    /** Runs a script behind `up kinds.json`. */
    CommandRun run(const std::string &text) const
    {
        return run_script("up kinds.json\n" + text, GetParam());
    }
    /** Runs one that must do. */
    void expect_done(const std::string &text) const
    {
        const CommandRun done = run(text);
        EXPECT_EQ(done.code, 0) << done.out;
    }
};

} // namespace lab_test
