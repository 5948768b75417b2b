/*
 * wire_test.cpp: the switch of examples/ping.json with Ethernet0 on an interface:
 * frames go in and out, and what happens to interfaces is told. In namespaces of
 * their own; examples/ping.sh has whole hosts.
 */
#include "commands/wire.h"
#include "session/state.h"
#include "session/verbs.h"
#include "session_run.h"
#include "wire/report.h"
#include "wire/wire.h"
#include "wire_space.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tins/tins.h>

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using lab::wire::PortSocket;
using lab::wire::Read;
using lab::wire::Wire;
using lab_test::in_namespace;
using lab_test::shell;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

const std::string HOST = "02:00:00:00:0a:09";
const std::string SWITCH = "02:00:00:00:0b:01";

/** The switch with its Ethernet0 on sw0. */
struct Running {
    Running() : hardware((rtifhal_test::reset_library(), simswitch::Options{}))
    {
        lab::session::run_up(state, {"ping.json", "open"});
        wire.emplace(state, std::vector<lab::wire::Binding>{{"Ethernet0", "sw0"}},
                     [this](std::string_view line) { told.emplace_back(line); });
    }
    /** Sends frames from the host, then lets the switch do what there is to do. */
    void forward(const std::vector<Bytes> &frames)
    {
        for (const Bytes &frame : frames) {
            EXPECT_EQ(host.send(frame), lab::wire::Sent::done);
        }
        wire->run(milliseconds(20));
    }
    /** The frames that have come back to the host. */
    std::vector<Bytes> received()
    {
        std::vector<Bytes> frames;
        while (host.read() == Read::frame) {
            frames.emplace_back(host.frame().begin(), host.frame().end());
        }
        return frames;
    }

    simswitch::Switch hardware;
    lab::session::State state{hardware, {}, lab_test::EXAMPLES};
    PortSocket host{"host0"};
    std::vector<std::string> told;
    std::optional<Wire> wire;
};

Bytes arp_request(const std::string &target)
{
    auto frame = Tins::ARP::make_arp_request(target, "10.0.0.9", HOST);
    return frame.serialize();
}

Bytes packet(const std::string &to)
{
    auto frame = Tins::EthernetII(SWITCH, HOST) / Tins::IP(to, "10.0.0.9") / Tins::UDP(53, 4000) /
                 Tins::RawPDU("x");
    return frame.serialize();
}

TEST(WireRun, AnswersComeBackOnTheInterface)
{
    in_namespace([] {
        Running run;
        run.wire->tell_frames();
        run.forward({arp_request("10.0.0.1")});
        const auto frames = run.received();
        ASSERT_EQ(frames.size(), 1U);
        const Tins::EthernetII reply(frames[0].data(),
                                     static_cast<std::uint32_t>(frames[0].size()));
        EXPECT_EQ(reply.dst_addr().to_string(), HOST);
        EXPECT_EQ(reply.rfind_pdu<Tins::ARP>().sender_hw_addr().to_string(), SWITCH);
        EXPECT_THAT(run.told, ElementsAre("Ethernet0  ARP who has 10.0.0.1 from 10.0.0.9, 60 "
                                          "bytes: to the CPU: ARP on a routed interface; out "
                                          "Ethernet0"));
        const auto port = run.wire->ports().at(0);
        EXPECT_EQ(port.in, (lab::packet::Traffic{1, 60}));
        EXPECT_EQ(port.out.frames, 1U);
        EXPECT_TRUE(run.wire->works());
    });
}

TEST(WireRun, WhatLeavesOnPortsWithoutAnInterfaceIsCounted)
{
    in_namespace([] {
        Running run;
        lab::session::run_neighbor(run.state, {"add", "Ethernet4", "10.0.1.9", HOST});
        run.forward({packet("10.0.1.9"), packet("192.0.2.1")});
        EXPECT_TRUE(run.received().empty());
        EXPECT_TRUE(run.told.empty());
        EXPECT_EQ(run.wire->unbound(), 1U);
        std::ostringstream out;
        print_text(*run.wire, out);
        EXPECT_EQ(out.str(), "PORT       INTERFACE  IN  OUT  NOT SENT  TOO LONG  MISSED  STATE\n"
                             "Ethernet0  sw0         2    0         0         0       0\n"
                             "1 frame left on ports that are on no interface\n"
                             "\n"
                             "FATE     FRAMES  FIRST  REASON\n"
                             "sent          1      1  routed\n"
                             "dropped       1      2  no route to its destination\n");
    });
}

TEST(WireRun, TimesOfTheCpuAreKept)
{
    in_namespace([] {
        Running run;
        // 10.0.0.10 isn't known: it is asked for at once, and again after a second.
        EXPECT_EQ(run.host.send(packet("10.0.0.10")), lab::wire::Sent::done);
        run.wire->run(milliseconds(1100));
        const auto frames = run.received();
        ASSERT_EQ(frames.size(), 2U);
        EXPECT_EQ(frames[0], frames[1]);
    });
}

TEST(WireRun, ALinkThatIsDownIsToldAndComesBack)
{
    in_namespace([] {
        Running run;
        ASSERT_TRUE(shell("ip link set sw0 down"));
        run.forward({});
        EXPECT_THAT(run.told, ElementsAre("Ethernet0: sw0 is down; nothing goes in or out until "
                                          "it is up"));
        ASSERT_TRUE(shell("ip link set sw0 up"));
        run.told.clear();
        // The kernel drops what is sent before it has taken note of the carrier.
        std::size_t answers = 0;
        for (int attempt = 0; attempt < 50 && answers == 0; ++attempt) {
            EXPECT_EQ(run.host.send(arp_request("10.0.0.1")), lab::wire::Sent::done);
            run.wire->run(milliseconds(100));
            answers = run.received().size();
        }
        run.wire->run(milliseconds(400));
        EXPECT_THAT(run.told, ElementsAre("Ethernet0: sw0 is up again"));
        EXPECT_GE(answers, 1U);
    });
}

TEST(WireRun, AnInterfaceThatIsRemovedEndsItsPort)
{
    in_namespace([] {
        Running run;
        ASSERT_TRUE(shell("ip link del host0"));
        run.wire->run(std::chrono::seconds(5));
        EXPECT_EQ(run.told.back(), "no port is left");
        EXPECT_THAT(run.told, testing::Contains("Ethernet0: sw0 is gone: the port ends"));
        EXPECT_FALSE(run.wire->works());
        EXPECT_EQ(lab::wire::json_of(*run.wire)["ports"][0]["ended"], "sw0 is gone");
    });
}

TEST(WireRun, FramesThatWereMergedAreToldOnce)
{
    in_namespace([] {
        ASSERT_TRUE(shell("ip link set host0 mtu 9000"));
        ASSERT_TRUE(shell("ip link set sw0 mtu 9000"));
        Running run;
        const Bytes big(4000, 2);
        EXPECT_EQ(run.host.send(big), lab::wire::Sent::done);
        EXPECT_EQ(run.host.send(big), lab::wire::Sent::done);
        ASSERT_TRUE(shell("ip link set sw0 mtu 1500"));
        run.forward({});
        EXPECT_EQ(run.wire->ports().at(0).merged, 2U);
        ASSERT_EQ(run.told.size(), 1U);
        EXPECT_THAT(run.told[0], HasSubstr("ethtool -K IF gro off gso off tso off"));
    });
}

TEST(WireRun, JsonLinesTellReadyAndEnd)
{
    in_namespace([] {
        rtifhal_test::reset_library();
        simswitch::Switch hardware;
        std::ostringstream out;
        std::ostringstream err;
        lab::commands::WireOptions options;
        options.config = lab_test::EXAMPLES / "ping.json";
        options.ports = {{"Ethernet0", "sw0"}};
        options.json = true;
        options.lasts = milliseconds(5);
        EXPECT_EQ(lab::commands::wire_on(hardware, options, {out, err}), 0);
        EXPECT_EQ(err.str(), "");
        std::istringstream lines(out.str());
        std::vector<nlohmann::json> events;
        for (std::string line; std::getline(lines, line);) {
            events.push_back(nlohmann::json::parse(line));
        }
        ASSERT_EQ(events.size(), 2U);
        EXPECT_EQ(events[0]["event"], "ready");
        EXPECT_EQ(events[0]["ports"],
                  nlohmann::json::array({{{"port", "Ethernet0"}, {"interface", "sw0"}}}));
        EXPECT_EQ(events[1]["event"], "end");
        EXPECT_EQ(events[1]["ports"][0]["in"]["frames"], 0);
        EXPECT_EQ(events[1]["cpu"], nlohmann::json::object());
    });
}

} // namespace
