/*
 * lifecycle_test.cpp: random lifecycles against the naive model, and that a lie is found and told
 * in a short script.
 *
 * The seed is always the same, so that a run can be repeated; RC_PARAMS="seed=7" takes another,
 * and model_walk goes on for as long as one likes.
 */
#include "model/check.h"

#include "rtifhal_data.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace model_test
{

namespace
{

using simswitch::chip::Kind;

constexpr std::uint64_t SEED = 20240229;

/** "seed=7" of RC_PARAMS, or the seed of the tests. */
std::uint64_t seed()
{
    const char *params = std::getenv("RC_PARAMS");
    const std::string text = params == nullptr ? "" : params;
    const std::size_t found = text.find("seed=");
    return found == std::string::npos ? SEED : std::strtoull(&text[found + 5], nullptr, 10);
}

CheckOptions options_of(Kind chip)
{
    CheckOptions options;
    options.chip = chip;
    options.seed = seed();
    return options;
}

/** A script as `rtif run` replays it. */
int replay(const Checked &checked, const std::string &chip)
{
    const std::string command = std::string(RTIFHAL_RTIF) + " run --chip " + chip + " " +
                                checked.out.string() + " >/dev/null 2>&1";
    return WEXITSTATUS(std::system(command.c_str())); // NOLINT(cert-env33-c)
}

} // namespace

class Lifecycles : public testing::TestWithParam<Kind>
{
protected:
    std::string chip() const { return GetParam() == Kind::trident2 ? "trident2" : "trident"; }
};

INSTANTIATE_TEST_SUITE_P(Chips, Lifecycles, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) {
                             return info.param == Kind::trident ? "Trident" : "Trident2";
                         });

TEST_P(Lifecycles, ComeToWhatTheModelSays)
{
    CheckOptions options = options_of(GetParam());
    options.lifecycles = 22;
    options.draw = {.faults = false, .restarts = false};
    const Checked checked = check_lifecycles(options);
    EXPECT_EQ(checked.text, "");
    EXPECT_GE(checked.steps, 700U);
}

TEST_P(Lifecycles, ComeToItWithFailingCallsToo)
{
    CheckOptions options = options_of(GetParam());
    options.draw = {.faults = true, .restarts = false};
    const Checked checked = check_lifecycles(options);
    EXPECT_EQ(checked.text, "");
    EXPECT_GE(checked.steps, 300U);
    EXPECT_GE(checked.faults, 20U);
}

TEST_P(Lifecycles, ComeToItAcrossRestarts)
{
    CheckOptions options = options_of(GetParam());
    options.lifecycles = 8;
    options.length = 60;
    const Checked checked = check_lifecycles(options);
    EXPECT_EQ(checked.text, "");
    EXPECT_GE(checked.restarts, 1U);
}

TEST_P(Lifecycles, TakeNumbersThatWereHeldBackWhenNoneIsFree)
{
    CheckOptions options = options_of(GetParam());
    options.draw = {.faults = true, .restarts = false};
    options.walk.numbers_left = 4;
    options.lifecycles = 12;
    options.length = 100;
    const Checked checked = check_lifecycles(options);
    EXPECT_EQ(checked.text, "");
    EXPECT_GE(checked.steps, 100U);
}

TEST_P(Lifecycles, AreShrunkToAShortScriptThatReplays)
{
    CheckOptions options = options_of(GetParam());
    options.walk.meddle = [](const Step &step, simswitch::chip::Chip &chip) {
        if (step.line() == "del Vlan200") {
            chip.vlans.remove(200);
        }
    };
    options.lifecycles = 200;
    const Checked checked = check_lifecycles(options);
    ASSERT_FALSE(checked.shortest.differences.empty());
    EXPECT_LE(checked.shortest.steps, 1U) << checked.text;
    EXPECT_NE(checked.text.find("del Vlan200\n"), std::string::npos) << checked.text;
}

TEST_P(Lifecycles, ALieOfTheModelIsAScriptThatFails)
{
    CheckOptions options = options_of(GetParam());
    options.walk.lies = true;
    const Checked checked = check_lifecycles(options);
    EXPECT_LE(checked.shortest.steps, 3U) << checked.text;
    EXPECT_EQ(replay(checked, chip()), 1) << checked.text;
}

} // namespace model_test
