/*
 * forward_restart_test.cpp: packets after a restart: the same as before when the
 * chip is restored, by the default routes after a fast one.
 */
#include "forward.h"

#include "l3lif/restart.h"
#include "restart_run.h"
#include "routing/routing.h"
#include "session/words.h"
#include "support/private_pss.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace
{

using lab_test::chip_name;
using lab_test::flow_number;
using lab_test::Kind;
using lab_test::Lab;
using lab_test::Lines;
using lab_test::peer;
using lab_test::Place;
using lab_test::Process;

/** A frame, and what became of it before the restart. */
struct Sample {
    std::string words;
    lab::packet::MadeFrame frame;
    std::string end;
};

/** Packets of all kinds of interface, in both directions, and others. */
Lines all_words()
{
    Lines all = {
        "--in Ethernet48 --dmac 00:00:5e:00:01:08 --ip 10.0.200.11 10.0.4.9",
        "--in Ethernet4 --ip 10.0.4.9 10.0.200.11",
        "--in Ethernet36 --ip 10.0.36.9 10.0.40.9",
        "--in Ethernet36 --ip 10.0.36.9 10.0.4.9",
        "--in Ethernet20 --vlan 100 --ip 10.0.4.9 10.0.4.9",
        "--in Ethernet4 --size 1500 --ip 10.0.4.9 10.0.1.9",
        "--in Ethernet0 --mpls 9 --ip 10.0.0.9 10.0.4.9",
        "--in Ethernet4 --ip 10.0.4.9 10.0.0.1",
        "--in Ethernet52 --dmac broadcast --ip 192.0.2.1 192.0.2.2",
        "--in Ethernet0 --dmac 02:00:00:00:99:99 --ip 10.0.0.9 10.0.4.9",
    };
    for (const Place &place : lab_test::places()) {
        all.push_back(fmt::format("{} --ip {} {}", peer().in, peer().ip4, place.ip4));
        all.push_back(fmt::format("{} --ip {} {}", peer().in, peer().ip6, place.ip6));
        if (*place.in != '\0') {
            all.push_back(fmt::format("{} --ip {} {}", place.in, place.ip4, peer().ip4));
            all.push_back(fmt::format("{} --ip {} {}", place.in, place.ip6, peer().ip6));
        }
    }
    return all;
}

class ForwardRestore : public testing::TestWithParam<Kind>
{
protected:
    /** A session that does some lines and ends; what its packets came to stays. */
    void before(const Lines &lines)
    {
        Lab lab(GetParam(), folder.path / "state");
        lab.run(lines);
        for (const std::string &words : all_words()) {
            samples.push_back({words, lab.frame(words), lab.send(words)});
        }
        config = lab.session.state().config.value();
    }
    void expect_same(lab_test::Traffic &traffic, const std::string &when) const
    {
        for (const Sample &sample : samples) {
            EXPECT_EQ(traffic.send(sample.frame.port, sample.frame.bytes), sample.end)
                << sample.words << " " << when;
        }
    }
    /** Restarts, and sends the packets again: before and after the routes are written anew. */
    void restart_and_expect_same()
    {
        Process process(GetParam(), folder.path / "state");
        lab::l3lif::restart(process.hardware, process.layer, lab::l3lif::RestartMode::restore,
                            &config);
        lab_test::Traffic traffic(process.hardware, config);
        expect_same(traffic, "restored");
        EXPECT_TRUE(lab::l3lif::complete(process.hardware, process.layer, config).ok());
        expect_same(traffic, "completed");
        lab::routing::Routing routing(process.hardware, process.layer, traffic.pipeline.l2());
        routing.configure(config);
        routing.sync();
        EXPECT_EQ(routing.problems(), Lines{});
        expect_same(traffic, "with its routes written anew");
    }

    lab_test::Folder folder;
    lab::config::Description config;
    std::vector<Sample> samples;
};

INSTANTIATE_TEST_SUITE_P(Chips, ForwardRestore, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return chip_name(info.param); });

} // namespace

TEST_P(ForwardRestore, PacketsFareAsBefore)
{
    before({});
    restart_and_expect_same();
}

TEST_P(ForwardRestore, PropertiesThatWereSetCountAsBefore)
{
    before({"set Vlan100 urpf strict", "set PortChannel1 mtu 1400", "set Ethernet0 mpls on",
            "set Ethernet24.10 vrf 2", "set PortChannel3.20 urpf strict", "disable Ethernet40",
            "set Ethernet36 ipv4 off", "vmac del Vlan200 00:00:5e:00:01:08"});
    // A restore without what comes after it: that would put the file's virtual MAC back.
    Process process(GetParam(), folder.path / "state");
    lab::l3lif::restart(process.hardware, process.layer, lab::l3lif::RestartMode::restore, &config);
    lab_test::Traffic traffic(process.hardware, config);
    expect_same(traffic, "restored");
}

TEST_P(ForwardRestore, InterfacesThatAreDeletedAfterwardsForwardNoMore)
{
    before({});
    Process process(GetParam(), folder.path / "state");
    lab::l3lif::restart(process.hardware, process.layer, lab::l3lif::RestartMode::restore, &config);
    lab::l3lif::complete(process.hardware, process.layer, config);
    lab_test::Traffic traffic(process.hardware, config);
    lab::routing::Routing routing(process.hardware, process.layer, traffic.pipeline.l2());
    routing.configure(config);
    routing.sync();
    for (const Place &place : lab_test::places()) {
        lab::l3lif::Interface *interface = process.layer.routed().find(place.name);
        ASSERT_NE(interface, nullptr) << place.name;
        const auto words = fmt::format("{} --ip {} {}", peer().in, peer().ip4, place.ip4);
        const auto sample = std::ranges::find(samples, words, &Sample::words);
        const auto again = [&] { return traffic.send(sample->frame.port, sample->frame.bytes); };
        process.layer.take_down(*interface, false);
        routing.sync();
        EXPECT_EQ(again(), "dropped: no route to its destination") << place.name;
        process.layer.bring_up(*interface);
        routing.sync();
        EXPECT_EQ(again(), sample->end) << place.name;
    }
}

namespace
{

constexpr const char *TARGET_4 = "198.51.100.7";
constexpr const char *TARGET_6 = "2001:db8:ffff::7";

/** A switch after a fast restart: default routes over its first ports, the last is the way in. */
class ForwardDefaultRoute : public testing::TestWithParam<std::tuple<Kind, unsigned>>
{
protected:
    void SetUp() override
    {
        if (!pss.obstacle().empty()) {
            GTEST_SKIP() << pss.obstacle();
        }
        hardware.system.fast_restart = true;
        files.put("ports.json", config());
        files.put("routes.json", fmt::format("[{}, {}]", route("ipv4"), route("ipv6")));
        files.run({.routes = files.file("routes.json"),
                   .out = rtifhal_test::PrivatePss::folder() / "default_route.txt"});
        // Interfaces of a route that aren't up yet are complained of.
        const std::string up = session.execute("up ports.json open").summary;
        EXPECT_NE(up.find(fmt::format("{0} of {0} interfaces up", count() + 1)), std::string::npos)
            << up;
    }
    static unsigned count() { return std::get<unsigned>(GetParam()); }
    static std::string config()
    {
        Lines ports;
        Lines rows;
        for (unsigned i = 0; i <= count(); ++i) {
            ports.push_back(fmt::format("\"Ethernet{}\": {{}}", i));
            rows.push_back(fmt::format(R"("Ethernet{0}|10.0.{0}.1/24": {{}},
                "Ethernet{0}|2001:db8:{0}::1/64": {{}})",
                                       i));
        }
        return fmt::format(R"({{"PORT": {{{}}}, "INTERFACE": {{{}}}}})", fmt::join(ports, ", "),
                           fmt::join(rows, ", "));
    }
    static std::string route(const std::string &family)
    {
        Lines paths;
        for (unsigned i = 1; i <= count(); ++i) {
            paths.push_back(fmt::format(
                R"({{"interface": "Ethernet1/{0}", "mac": "02:00:00:00:01:0{0}"}})", i));
        }
        return fmt::format(R"({{"family": "{}", "paths": [{}]}})", family, fmt::join(paths, ", "));
    }
    /** A flow's packet from the last port. */
    std::string send(lab_test::Traffic &traffic, bool ip6, int sport, const std::string &more = "")
    {
        const auto frame =
            lab::packet::make_frame(lab::packet::read_frame_words(lab::session::split(fmt::format(
                                        "--in Ethernet{} --ip {} {} --sport {} {}", count(),
                                        source(ip6), ip6 ? TARGET_6 : TARGET_4, sport, more))),
                                    session.state());
        return traffic.send(frame.port, frame.bytes);
    }
    static std::string source(bool ip6)
    {
        return ip6 ? fmt::format("2001:db8:{}::9", count()) : fmt::format("10.0.{}.9", count());
    }

    rtifhal_test::PrivatePss pss;
    lab_test::RoutesRun files;
    simswitch::Switch hardware{
        (rtifhal_test::reset_library(), simswitch::Options{.chip = std::get<Kind>(GetParam())})};
    lab::session::Session session{hardware, {}, files.folder.path};
};

INSTANTIATE_TEST_SUITE_P(Paths, ForwardDefaultRoute,
                         testing::Combine(testing::Values(Kind::trident, Kind::trident2),
                                          testing::Values(1U, 2U, 3U, 8U)),
                         [](const auto &info) {
                             return fmt::format("{}_{}", chip_name(std::get<Kind>(info.param)),
                                                std::get<unsigned>(info.param));
                         });

} // namespace

TEST_P(ForwardDefaultRoute, FlowsSpreadOverItsPathsAndKeepTheirs)
{
    lab_test::Traffic traffic(hardware, session.state().config.value());
    const int first = 10000;
    for (const bool ip6 : {false, true}) {
        const std::string target = ip6 ? TARGET_6 : TARGET_4;
        std::set<std::size_t> taken;
        for (int sport = first; sport < first + 64; ++sport) {
            const std::size_t path = flow_number(source(ip6), target, sport) % count();
            const std::string left = fmt::format(
                "Ethernet{} untagged: 02:00:00:00:00:01 > 02:00:00:00:01:0{}, {} > {} ttl ", path,
                path + 1, source(ip6), target);
            EXPECT_EQ(send(traffic, ip6, sport), left + "63");
            EXPECT_EQ(send(traffic, ip6, sport, "--ttl 9 --size 300"), left + "8");
            taken.insert(path);
        }
        EXPECT_EQ(taken.size(), count());
    }
}

TEST_P(ForwardDefaultRoute, LongerPrefixesCountFirst)
{
    lab_test::Traffic traffic(hardware, session.state().config.value());
    session.execute("neighbor add Ethernet0 10.0.0.9 02:aa:00:00:00:00");
    session.execute(fmt::format("route add {}/32 via 10.0.0.9", TARGET_4));
    EXPECT_EQ(send(traffic, false, 10000),
              fmt::format("Ethernet0 untagged: 02:00:00:00:00:01 > 02:aa:00:00:00:00, {} > {} ttl "
                          "63",
                          source(false), TARGET_4));
    session.execute(fmt::format("route del {}/32", TARGET_4));
    EXPECT_NE(send(traffic, false, 10000).find("02:00:00:00:01:0"), std::string::npos);
}
