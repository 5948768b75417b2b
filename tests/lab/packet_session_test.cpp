/*
 * packet_session_test.cpp: packets in a session: what is shown, what can be
 * expected of the last one, what Tab offers.
 */
#include "packet_run.h"
#include "session/complete.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab_test
{

namespace
{

using Words = std::vector<std::string>;

class PacketSession : public PacketTest
{
protected:
    Words after(const std::string &line) const
    {
        return lab::session::complete(session.state(), line).words;
    }
};

TEST_F(PacketSession, TheEndIsOneLine)
{
    const auto outcome = run("packet --in Ethernet0 --ip 10.0.0.9 10.0.4.9");
    EXPECT_EQ(outcome.summary, "sent Ethernet4 untagged");
    EXPECT_EQ(outcome.shown, "");
    EXPECT_FALSE(outcome.asked);
    EXPECT_EQ(fate("--in Ethernet28 --arp 10.2.0.9 10.2.0.1"),
              "sent Ethernet32 tagged 200, a copy to the CPU");
    EXPECT_EQ(fate("--in Ethernet40 --ip 10.9.40.9 10.0.4.9"),
              "dropped: no route to its destination");
}

TEST_F(PacketSession, ShowPacketHasTheTraceOfTheLastOne)
{
    EXPECT_EQ(run("show packet").shown,
              "no packet yet: send one by packet --in PORT --ip SRC DST\n");
    run("packet --in Ethernet0 --ip 10.0.0.9 10.0.4.9");
    EXPECT_EQ(run("show packet").shown, text());
    EXPECT_EQ(problem("show packet 3"), "usage: show packet takes no key: it shows the last one");
}

TEST_F(PacketSession, AShellShowsTheWholeTraceAtOnce)
{
    session.tell_packets(false);
    const auto outcome = run("packet --in Ethernet0 --ip 10.0.0.9 10.0.4.9");
    EXPECT_EQ(outcome.summary, "");
    EXPECT_EQ(outcome.shown, text());
}

TEST_F(PacketSession, AllOfASentPacketCanBeExpected)
{
    run("packet --in Ethernet4.10 --ip 10.4.10.9 10.8.20.9");
    expect_met({"packet fate = sent", "packet port = Ethernet16", "packet tag = 20",
                "packet vlan = 20", "packet reason = routed", "packet in = Ethernet4",
                "packet interface = Ethernet4.10", "packet vrf = default",
                "packet route = 10.8.20.9/32", "packet ttl = 63", "packet hop-limit = -",
                "packet destination-mac = 02:00:00:08:20:09", "packet copy = -", "packet miss = -",
                "packet fate != dropped"});
}

TEST_F(PacketSession, ADroppedPacketHasItsReasonAndTheNearestEntry)
{
    run("packet --in Ethernet4 --vlan 11 --ip 10.4.10.9 10.0.4.9");
    expect_met({"packet fate = dropped", "packet port = -", "packet miss = \"VLAN translation\"",
                "packet nearest = \"translation Ethernet4 VLAN 10\"",
                "packet reason = \"no VLAN translation, and the port drops what misses\""});
}

TEST_F(PacketSession, WhatAPacketGotOnTopCanBeExpected)
{
    run("packet --in Ethernet0 --ip 10.0.0.9 10.70.1.1");
    expect_met({"packet outer-source = 10.0.0.1", "packet outer-destination = 10.0.4.77",
                "packet outer-protocol = 4"});
    run("packet --in Ethernet28 --arp 10.2.0.9 10.2.0.1");
    expect_met({"packet copy = \"ARP on a routed interface\""});
}

TEST_F(PacketSession, ExpectationsThatArentMetOrMakeNoSense)
{
    EXPECT_EQ(problem("expect packet fate = sent"), "usage: there was no packet yet");
    run("packet --in Ethernet0 --ip 10.0.0.9 10.0.4.9");
    EXPECT_EQ(problem("expect packet fate = dropped"),
              "unmet: expected packet fate = dropped seen sent");
    EXPECT_EQ(problem("expect packet hop-limit = 63"),
              "unmet: expected packet hop-limit = 63 seen nothing");
    EXPECT_EQ(problem("expect packet fat = sent").substr(0, 52),
              "usage: unknown field 'fat': did you mean 'fate'? (fi");
    EXPECT_EQ(problem("expect packet fate"),
              "usage: expect packet needs a field, = or !=, and a value, as in: expect packet fate "
              "= …");
    EXPECT_EQ(problem("expect no packet fate = sent").substr(0, 7), "usage: ");
    EXPECT_EQ(problem("expect packet = sent").substr(0, 7), "usage: ");
}

TEST_F(PacketSession, APacketTeachesNothing)
{
    const std::string back = "packet --in Ethernet32 --vlan 200 --dmac 02:00:00:00:00:fe "
                             "--ip 10.2.0.19 10.2.0.9";
    const auto before = session.state().hardware.chip.writes;
    run("packet --in Ethernet28 --dmac 02:00:00:02:00:19 --ip 10.2.0.9 10.2.0.19");
    EXPECT_EQ(run(back).summary, "sent Ethernet28 untagged, a copy to the CPU");
    EXPECT_EQ(told().reason_text, "flooded in its VLAN");
    EXPECT_EQ(session.state().hardware.chip.writes, before);
}

TEST_F(PacketSession, TabOffersOptionsNamesAndKnownAddresses)
{
    EXPECT_EQ(after("packet --s"), (Words{"--size", "--smac", "--sport"}));
    EXPECT_EQ(after("packet --in PortC"), (Words{"PortChannel0001", "PortChannel0001.20"}));
    EXPECT_EQ(after("packet --in Ethernet0 --in"), Words{});
    EXPECT_EQ(after("packet --in Ethernet0 --dmac r"), Words{"router"});
    EXPECT_EQ(after("packet --in Ethernet0 --proto "), (Words{"icmp", "tcp", "udp"}));
    EXPECT_EQ(after("packet --in Ethernet0 --ip 10.0.4."),
              (Words{"10.0.4.1", "10.0.4.9", "10.0.4.77"}));
    EXPECT_EQ(after("packet --in Ethernet0 --ip 10.0.0.9 10.0.36."),
              (Words{"10.0.36.1", "10.0.36.9"}));
    EXPECT_EQ(after("expect packet outer-s"), Words{"outer-source"});
    EXPECT_EQ(after("expect packet fate "), (Words{"!=", "="}));
    EXPECT_EQ(after("show pac"), Words{"packet"});
}

} // namespace

} // namespace lab_test
