/*
 * sweep_test.cpp: the quick sweep of examples/faults.json on each chip, held
 * against docs/failures.md; `./dev faults` does the whole one. And the command.
 */
#include "faults/faults_world.h"

#include "commands/command_line.h"
#include "commands/faults.h"
#include "faults/page.h"
#include "faults/sweep.h"
#include "session/errors.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace faults_test
{

namespace
{

using lab::faults::SweepOptions;
using simswitch::chip::Kind;

const std::string CONFIG =
    (std::filesystem::path(RTIFHAL_SOURCE_DIR) / "examples" / "faults.json").string();

int rtif_sweep(std::vector<const char *> words, std::string &out, std::string &err)
{
    std::ostringstream out_stream;
    std::ostringstream err_stream;
    words.insert(words.begin(), {"rtif", "sweep"});
    const int code = lab::commands::run(static_cast<int>(words.size()), words.data(),
                                        {.out = out_stream, .err = err_stream});
    out = out_stream.str();
    err = err_stream.str();
    return code;
}

class QuickSweep : public testing::TestWithParam<Kind>
{
};

} // namespace

TEST_P(QuickSweep, IsAsThePageOfFailuresTells)
{
    const SweepOptions options{.chips = {GetParam()}, .codes = {-1}, .quick = true};
    const auto result = lab::faults::sweep(example(), options);
    EXPECT_GT(result.outcomes.size(), 300U);
    EXPECT_TRUE(result.sees_allocations);
    EXPECT_EQ(result.broken(), 0U);
    const auto lines = untold(failures_page(), result.outcomes);
    EXPECT_EQ(lines.size(), 0U) << "'./dev faults --write' makes docs/failures.md anew\n"
                                << fmt::format("{}", fmt::join(lines, "\n"));
}

INSTANTIATE_TEST_SUITE_P(BothChips, QuickSweep, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) {
                             return info.param == Kind::trident2 ? "Trident2" : "Trident";
                         });

TEST(Sweep, SharesMakeTheSameOutcomesInTheSameOrder)
{
    SweepOptions options{
        .chips = {Kind::trident}, .request = "delete a router MAC", .codes = {-1, -6}};
    const auto alone = lab::faults::sweep(example(), options);
    options.jobs = 3;
    const auto shared = lab::faults::sweep(example(), options);
    ASSERT_EQ(alone.outcomes.size(), 16U) << "four calls, two codes, once and for ever";
    ASSERT_EQ(shared.outcomes.size(), alone.outcomes.size());
    for (std::size_t i = 0; i < alone.outcomes.size(); ++i) {
        EXPECT_EQ(to_line(shared.outcomes[i]), to_line(alone.outcomes[i]));
    }
    EXPECT_EQ(alone.requests, shared.requests);
}

TEST(SweepCommand, PrintsRowsAndTotals)
{
    std::string out;
    std::string err;
    EXPECT_EQ(rtif_sweep({CONFIG.c_str(), "--chip", "trident", "--request", "delete a router MAC",
                          "--codes", "-1"},
                         out, err),
              lab::commands::EXIT_DONE);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, CONFIG + R"(

delete a router MAC
CALL                         FAILS        RESULT  THEN     DELETED AND ADDED AGAIN
fwmpd_trident_batch_flush 1  -1, Trident  0       goes on  works
bcm_l2_station_delete 1      -1, Trident  -1      goes on  works
    says l2_station_delete failed(E) for idx:N
    leaves other settings of the port
bcm_port_control_set 1-2     -1, Trident  0       goes on  works
    leaves other settings of the port

1 request of 1 kind; 8 failures made; 0 in which something breaks
1 call of 1 function left out, as they can't fail
)");
}

TEST(SweepCommand, RefusesWhatMakesNoSense)
{
    std::string out;
    std::string err;
    EXPECT_EQ(rtif_sweep({CONFIG.c_str(), "--request", "add a prot"}, out, err),
              lab::commands::EXIT_USAGE);
    EXPECT_EQ(err, "unknown request 'add a prot': did you mean 'add a port'?\n");
    EXPECT_EQ(rtif_sweep({CONFIG.c_str(), "--codes", "-1,7"}, out, err), lab::commands::EXIT_USAGE);
    EXPECT_NE(err.find("'7' is no code that a call fails with: give numbers from -1 to -99"),
              std::string::npos)
        << err;
    EXPECT_EQ(rtif_sweep({"nosuch.json"}, out, err), lab::commands::EXIT_REFUSED);
    EXPECT_EQ(rtif_sweep({CONFIG.c_str(), "--jobs", "0"}, out, err), lab::commands::EXIT_USAGE);
}

TEST(SweepCommand, ReadsCodes)
{
    using lab::commands::parse_codes;
    EXPECT_EQ(parse_codes("-1"), std::vector<int>{-1});
    EXPECT_EQ(parse_codes("-1,-6,-99"), (std::vector<int>{-1, -6, -99}));
    for (const char *wrong : {"", "1", "-100", "0", "-1,,-2", "-1 ", "x"}) {
        EXPECT_THROW(parse_codes(wrong), lab::session::UsageError) << wrong;
    }
}

} // namespace faults_test
