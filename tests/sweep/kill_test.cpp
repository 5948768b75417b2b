/*
 * kill_test.cpp: some moments of the sweep, for every day; `./dev sweep` goes
 * through all of them. Those around the writes that must stand or fall with
 * each other, object and record of an interface, are all here.
 */
#include "sweep/engine/differences.h"
#include "sweep/engine/point.h"

#include "config/reader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace sweep
{

namespace
{

using simswitch::chip::Kind;

struct Case {
    Kind chip;
    Direction direction;
};

lab::config::Description example(const std::string &name)
{
    return lab::config::read_config(std::filesystem::path(RTIFHAL_SOURCE_DIR) / "examples" /
                                    (name + ".json"));
}

/** Calls that write what a restart starts from. */
bool is_turning_point(std::string_view call)
{
    static constexpr std::array<std::string_view, 7> CALLS = {
        " bcm_l2_station_add(",         " bcm_port_control_set(0, 0, 8, ",
        " rtifhal_bcm_l3_intf_create(", " rtifhal_bcm_l3_intf_delete(",
        " rtifhal_pss_l3port_store(",   " rtifhal_pss_l3port_delete(",
        " fwmpd_pss_globalc_store("};
    return std::ranges::any_of(
        CALLS, [call](std::string_view name) { return call.find(name) != std::string_view::npos; });
}

void check_points(const Road &road, const Lines &moments, const std::set<std::size_t> &points)
{
    const Lines expected = brought_up_at_once(road);
    ASSERT_FALSE(expected.empty());
    for (const std::size_t moment : points) {
        const Found found = check_point(road, moment, expected);
        EXPECT_TRUE(found.failures.empty())
            << name(road) << " killed at moment " << moment << ": " << moments.at(moment)
            << "\n    " << fmt::format("{}", fmt::join(found.failures, "\n    "));
    }
}

constexpr std::array<Case, 4> CASES = {{{Kind::trident, Direction::up},
                                        {Kind::trident, Direction::down},
                                        {Kind::trident2, Direction::up},
                                        {Kind::trident2, Direction::down}}};

/** "TridentUp". */
std::string case_name(const testing::TestParamInfo<Case> &info)
{
    std::string text = name({info.param.chip, info.param.direction, nullptr});
    text[text.find(' ') + 1] = info.param.direction == Direction::up ? 'U' : 'D';
    std::erase(text, ' ');
    return text;
}

class KilledAt : public testing::TestWithParam<Case>
{
};

} // namespace

TEST_P(KilledAt, SomeMomentsOfEverything)
{
    const auto config = example("everything");
    const Road road{GetParam().chip, GetParam().direction, &config};
    const Lines moments = moments_of(road);
    const std::size_t points = road.direction == Direction::up ? 6 : 3;
    std::set<std::size_t> chosen;
    for (std::size_t i = 0; i <= points; ++i) {
        chosen.insert(i * (moments.size() - 1) / points);
    }
    check_points(road, moments, chosen);
}

TEST_P(KilledAt, WhereObjectAndRecordPart)
{
    const auto config = example("kinds");
    const Road road{GetParam().chip, GetParam().direction, &config};
    const Lines moments = moments_of(road);
    std::set<std::size_t> chosen;
    for (std::size_t moment = 0; moment < moments.size(); ++moment) {
        // A call may be the last one at two moments: as it writes, and when it has returned.
        if (is_turning_point(moments[moment]) &&
            (moment + 1 == moments.size() || moments[moment + 1] != moments[moment])) {
            chosen.insert(moment);
        }
    }
    EXPECT_GE(chosen.size(), 14U) << "an object and a record of each interface";
    check_points(road, moments, chosen);
}

INSTANTIATE_TEST_SUITE_P(Moments, KilledAt, testing::ValuesIn(CASES), case_name);

} // namespace sweep
