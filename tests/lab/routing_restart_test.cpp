/*
 * routing_restart_test.cpp: what the layers that own the routes do after a
 * restart with what an earlier process has left in the chip: what they want of
 * it they take over, the rest goes.
 */
#include "restart_run.h"
#include "routing/routing.h"
#include "session/session.h"
#include "up_run.h"

#include "chip/pipeline/pipeline.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lab_test
{

namespace
{

namespace chip = simswitch::chip;

/** All that is told of a chip's ways, a line each. */
std::vector<std::string> ways_of(const chip::Chip &chip)
{
    std::vector<std::string> lines;
    for (const auto &[key, route] : chip.routes.all()) {
        lines.push_back(fmt::format("{} {}", chip::text(key), chip::text(route)));
    }
    for (const auto &[id, group] : chip.multipath_groups.all()) {
        lines.push_back(fmt::format("{} {}", id, chip::text(group)));
    }
    for (const auto &[id, egress] : chip.egresses.all()) {
        lines.push_back(fmt::format("{} {}", id, chip::text(egress)));
    }
    for (const auto &[interface, tunnel] : chip.tunnels.all()) {
        lines.push_back(fmt::format("{} {}", interface, chip::text(tunnel)));
    }
    return lines;
}

class RoutingRestart : public testing::TestWithParam<Kind>
{
protected:
    /** A process with packets.json up, which does some lines and ends. */
    std::vector<std::string> before(const std::vector<std::string> &lines,
                                    const std::function<void(chip::Chip &)> &also = {})
    {
        rtifhal_test::reset_library();
        simswitch::Switch hardware({.chip = GetParam(), .state_dir = state});
        lab::session::Session session(hardware, state, source_path("examples"));
        session.execute("up packets.json");
        for (const std::string &line : lines) {
            session.execute(line);
        }
        if (also) {
            also(hardware.chip);
            hardware.save();
        }
        return ways_of(hardware.chip);
    }
    /** The next process restores and goes on as the layer above would. */
    void restart()
    {
        session.reset();
        next.reset();
        rtifhal_test::reset_library();
        next.emplace(simswitch::Options{.chip = GetParam(), .state_dir = state});
        session = lab::session::Session::after_restart(*next, state, {});
        session->restart(lab::l3lif::RestartMode::restore);
    }
    std::vector<std::string> ways() { return ways_of(next->chip); }

    Folder folder;
    std::filesystem::path state = folder.path / "state";
    std::optional<simswitch::Switch> next;
    std::unique_ptr<lab::session::Session> session;
};

INSTANTIATE_TEST_SUITE_P(Chips, RoutingRestart, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) {
                             return info.param == Kind::trident ? "Trident" : "Trident2";
                         });

} // namespace

TEST_P(RoutingRestart, WhatIsWantedIsTakenOverAsItIs)
{
    const auto wanted = before({});
    EXPECT_GT(wanted.size(), 40U);
    restart();
    EXPECT_EQ(ways(), wanted);
    restart();
    EXPECT_EQ(ways(), wanted);
}

TEST_P(RoutingRestart, WhatIsTakenOverIsOwned)
{
    before({});
    restart();
    session->execute("expect route 10.60.0.0/16 to = 10.0.4.9,10.0.8.9,10.0.36.9");
    session->execute("del Ethernet44");
    session->execute("neighbor del Ethernet0 10.0.0.9");
    session->execute("route del 10.80.0.0/16");
    session->execute("route del 10.60.0.0/16");
    const auto after = ways();
    session.reset();
    next.reset();
    // As if all of it had been done by the process that wrote it.
    std::filesystem::remove_all(state);
    EXPECT_EQ(before({"del Ethernet44", "neighbor del Ethernet0 10.0.0.9", "route del 10.80.0.0/16",
                      "route del 10.60.0.0/16"}),
              after);
}

TEST_P(RoutingRestart, WhatOnlyTheEarlierProcessKnewOfGoes)
{
    const auto wanted = before({});
    std::filesystem::remove_all(state);
    before({"neighbor add Ethernet4 10.0.4.55 02:00:00:00:04:55",
            "route add 10.61.0.0/16 via 10.0.4.9 10.0.4.55", "route add 10.62.0.0/16 blackhole"});
    restart();
    EXPECT_EQ(ways(), wanted);
}

TEST_P(RoutingRestart, AHostWhoseInterfaceHadAnotherNumberIsWrittenAnew)
{
    constexpr int EARLIER = 99;
    const auto wanted = before({});
    std::filesystem::remove_all(state);
    before({}, [](chip::Chip &chip) {
        for (const auto &[id, egress] : chip.egresses.all()) {
            if (egress.mac == lab::config::Mac{2, 0, 0, 4, 0x10, 9}) {
                chip::Egress other = egress;
                other.interface = EARLIER;
                ASSERT_TRUE(chip.egresses.set(id, other).ok());
            }
        }
    });
    restart();
    const auto all = next->chip.egresses.all();
    EXPECT_EQ(
        std::ranges::count_if(all, [](const auto &one) { return one.second.interface == EARLIER; }),
        0);
    EXPECT_EQ(ways().size(), wanted.size());
    session->execute("expect route 10.4.10.9/32 to = 10.4.10.9");
}

TEST_P(RoutingRestart, ADefaultRouteThatNobodyWantsStaysWithItsWays)
{
    int egress = 0;
    int group = 0;
    const chip::RouteKey key = chip::ip4_key(2, 0, 0);
    before({}, [&](chip::Chip &chip) {
        ASSERT_TRUE(chip.egresses.create({.interface = 3, .port = 1}, egress).ok());
        ASSERT_TRUE(chip.multipath_groups.create({{egress}}, group).ok());
        ASSERT_TRUE(chip.routes.create(key, {0, group, true}).ok());
        // One to which nothing leads is nobody's.
        int other = 0;
        ASSERT_TRUE(chip.egresses.create({.interface = 4, .port = 1}, other).ok());
        ASSERT_TRUE(chip.multipath_groups.create({{other}}, other).ok());
    });
    restart();
    ASSERT_NE(next->chip.routes.find(key), nullptr);
    EXPECT_EQ(next->chip.routes.find(key)->next_hop, group);
    EXPECT_EQ(next->chip.multipath_groups.find(group)->members, std::vector<int>{egress});
    EXPECT_NE(next->chip.egresses.find(egress), nullptr);
    EXPECT_EQ(next->chip.egresses.find(egress + 1), nullptr);
    EXPECT_EQ(next->chip.multipath_groups.find(group + 1), nullptr);
}

TEST_P(RoutingRestart, WhatIsTheSameIsNotWrittenAgain)
{
    before({});
    Process process(GetParam(), state);
    const auto config = lab::config::read_config(lab::l3lif::kept_config(state));
    lab::l3lif::restart(process.hardware, process.layer, lab::l3lif::RestartMode::restore, &config);
    lab::l3lif::complete(process.hardware, process.layer, config);
    chip::pipeline::Pipeline pipeline(process.hardware.chip);
    lab::routing::Routing routing(process.hardware, process.layer, pipeline.l2());
    routing.configure(config);
    routing.take_over();
    const auto written = process.hardware.chip.routes.generation();
    routing.sync();
    EXPECT_EQ(process.hardware.chip.routes.generation(), written);
    EXPECT_EQ(routing.problems(), std::vector<std::string>{});
}

} // namespace lab_test
