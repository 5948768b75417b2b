/*
 * forward_nearest_test.cpp: a packet that misses is told which entry would have
 * matched, and the session's expectations see it.
 */
#include "forward.h"

#include "session/errors.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace
{

namespace pipeline = simswitch::chip::pipeline;
using lab_test::chip_name;
using lab_test::Kind;
using testing::EndsWith;
using testing::StartsWith;

/** A packet, the stage that it misses at, and what is said of the nearest entry there. */
struct Miss {
    const char *words;
    pipeline::Stage stage;
    const char *begins;
    const char *ends;
};

class ForwardNearest : public lab_test::ForwardOnBothChips
{
protected:
    /** The last packet's line of a stage at which it missed. */
    const lab::packet::ExplainedLine &missed(pipeline::Stage stage) const
    {
        static const lab::packet::ExplainedLine NONE;
        const auto &lines = session.state().packet->lines;
        const auto found = std::ranges::find_if(lines, [stage](const auto &line) {
            return line.stage == stage && line.mark == pipeline::Mark::miss;
        });
        return found == lines.end() ? NONE : *found;
    }
    void expect(const std::vector<Miss> &misses)
    {
        for (const Miss &miss : misses) {
            session.execute(fmt::format("packet {}", miss.words));
            const std::string &nearest = missed(miss.stage).nearest;
            EXPECT_THAT(nearest, StartsWith(miss.begins)) << miss.words;
            EXPECT_THAT(nearest, EndsWith(miss.ends)) << miss.words;
            const bool is_end = session.state().packet->verdict == pipeline::Verdict::dropped;
            EXPECT_EQ(session.state().packet->nearest, is_end ? nearest : "") << miss.words;
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Chips, ForwardNearest, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return chip_name(info.param); });

} // namespace

TEST_P(ForwardNearest, RouteOfAnotherVrf)
{
    expect({
        {"--in Ethernet36 --ip 10.0.36.9 10.0.4.9", pipeline::Stage::route,
         "route vrf 1 10.0.4.9/32 (", ", in another VRF"},
        {"--in Ethernet36 --ip 10.0.36.9 10.0.4.77", pipeline::Stage::route,
         "route vrf 1 10.0.4.0/24 (", ", in another VRF"},
        {"--in Ethernet4 --ip 10.0.4.9 10.0.36.9", pipeline::Stage::route,
         "route vrf 2 10.0.36.9/32 (", ", in another VRF"},
    });
    run({"set Ethernet0 urpf loose"});
    expect({{"--in Ethernet0 --ip 10.0.36.9 10.0.4.9", pipeline::Stage::reverse_path,
             "route vrf 2 10.0.36.9/32 (", ", in another VRF"}});
}

TEST_P(ForwardNearest, RouteThatIsOneBitOff)
{
    run({"route add 203.0.113.128/25 via 10.0.4.9", "route add 203.0.12.0/24 via 10.0.4.9"});
    expect({
        {"--in Ethernet0 --ip 10.0.0.9 203.0.113.127", pipeline::Stage::route,
         "route vrf 1 203.0.113.128/25 (", ")"},
        {"--in Ethernet0 --ip 10.0.0.9 10.31.0.9", pipeline::Stage::route,
         "route vrf 1 10.30.0.0/16 (", ")"},
        {"--in Ethernet0 --ip 2001:db8::9 2001:db8:31::9", pipeline::Stage::route,
         "route vrf 1 2001:db8:30::/48 (", ")"},
    });
}

TEST_P(ForwardNearest, StationOfAnotherVlanOrMac)
{
    expect({
        {"--in Ethernet16 --dmac 00:00:5e:00:01:08 --ip 10.0.100.9 10.0.4.9",
         pipeline::Stage::station, "station 2 (virtual MAC of Vlan200 00:00:5e:00:01:08 in VLAN",
         ", another VLAN"},
        {"--in Ethernet0 --dmac 00:00:5e:00:01:08 --ip 10.0.0.9 10.0.4.9", pipeline::Stage::station,
         "station 2 (virtual MAC of Vlan200 00:00:5e:00:01:08 in VLAN", ", another VLAN"},
        {"--in Ethernet0 --dmac 02:00:00:00:0f:02 --ip 10.0.0.9 10.0.4.9", pipeline::Stage::station,
         "station 1 (router MAC 02:00:00:00:0f:01", ", another MAC"},
    });
    run({"vmac add Ethernet0 00:00:5e:00:01:33"});
    EXPECT_EQ(send("--in Ethernet0 --dmac 00:00:5e:00:01:33 --ip 10.0.0.9 10.0.4.9"),
              lab_test::routed(lab_test::peer(), "10.0.0.9", "10.0.4.9"));
    expect({{"--in Ethernet4 --dmac 00:00:5e:00:01:33 --ip 10.0.4.9 10.0.0.9",
             pipeline::Stage::station,
             "station 6 (virtual MAC of Ethernet0 00:00:5e:00:01:33 in VLAN 4094 from Ethernet0 ",
             ", another port"}});
}

TEST_P(ForwardNearest, TranslationOfAnotherVlan)
{
    expect({
        {"--in Ethernet24 --vlan 11 --ip 10.0.10.9 10.0.4.9", pipeline::Stage::translation,
         "translation Ethernet24 VLAN 10", "VLAN 10"},
        {"--in Ethernet32 --vlan 21 --ip 10.0.20.9 10.0.4.9", pipeline::Stage::translation,
         "translation PortChannel3 VLAN 20", "VLAN 20"},
        {"--in Ethernet24 --vlan 20 --ip 10.0.10.9 10.0.4.9", pipeline::Stage::translation,
         "translation Ethernet24 VLAN 10", "VLAN 10"},
    });
}

TEST_P(ForwardNearest, VlansThatThePortIsIn)
{
    expect({
        {"--in Ethernet16 --vlan 30 --ip 10.0.100.9 10.0.4.9", pipeline::Stage::vlan,
         "Ethernet16 (port 5) is in VLAN", " 100"},
        {"--in Ethernet16 --vlan 77 --ip 10.0.100.9 10.0.4.9", pipeline::Stage::vlan,
         "Ethernet16 (port 5) is in VLAN", " 100"},
        {"--in Ethernet48 --vlan 200 --ip 10.0.200.11 10.0.4.9", pipeline::Stage::vlan,
         "Ethernet48 (port 13) is in VLAN", " 201"},
    });
}

TEST_P(ForwardNearest, ObjectsThatAreGone)
{
    hardware.chip.l3_interfaces.remove(iif("Ethernet0"));
    expect({{"--in Ethernet4 --ip 10.0.4.9 10.0.0.9", pipeline::Stage::l3_interface,
             "L3 interface 4 (Ethernet4: ", ")"}});
    hardware.chip.trunks.remove(1);
    expect({{"--in Ethernet4 --ip 10.0.4.9 10.0.1.9", pipeline::Stage::trunk,
             "trunk 2 (PortChannel3: ", ")"}});
}

TEST_P(ForwardNearest, LaterPortOfTheDropRule)
{
    run({"drop add Ethernet16", "drop add Ethernet20"});
    expect({{"--in Ethernet20 --vlan 100 --dmac 02:00:00:00:99:99 --ip 10.0.100.9 10.0.4.9",
             pipeline::Stage::field, "field entry 8192: Ethernet20 (port 6) is among its in-ports",
             "but not in their mask"}});
}

TEST_P(ForwardNearest, ExpectationsSeeTheEndOfAPacket)
{
    EXPECT_EQ(session.execute("packet --in Ethernet0 --ip 10.0.0.9 10.0.20.9").summary,
              fmt::format("sent {} tagged 20",
                          lab_test::place("subinterface_of_port_channel")
                              .ports[lab_test::flow_number("10.0.0.9", "10.0.20.9") / 256 % 3]));
    run({"expect packet fate = sent", "expect packet vlan = 20",
         "expect packet destination-mac = 02:aa:00:00:00:20", "expect packet ttl = 63",
         "expect packet route = 10.0.20.9/32", "packet --in Ethernet0 --ip 10.0.0.9 10.77.0.1",
         "expect packet fate = dropped", "expect packet reason = \"no route to its destination\"",
         "packet --in Ethernet0 --ip 10.0.0.9 10.0.4.1", "expect packet fate = cpu"});
    EXPECT_THROW(session.execute("expect packet fate = sent"), lab::session::Unmet);
}
