/*
 * forward_vlans_test.cpp: what VLANs do to frames: private VLANs with the MACs of
 * their primary, flooding and what it stays out of, the drop rule.
 */
#include "forward.h"

#include "chip/stgs.h"

namespace
{

namespace chip = simswitch::chip;
using lab_test::chip_name;
using lab_test::Kind;
using lab_test::peer;
using lab_test::place;
using lab_test::Place;
using lab_test::routed;

const std::string TO_CPU_MEMBER = "cpu: the CPU is in its VLAN";
const std::string NOBODY = "dropped: nobody else in its VLAN gets it";

// Hosts of the private VLAN 200: behind the primary's port, behind the secondary's.
const Place PRIMARY = {"primary",         "Vlan200",           "--in Ethernet44", "10.0.200.9",
                       "2001:db8:200::9", "02:aa:00:00:02:00", "untagged",        {"Ethernet44"}};
const Place SECONDARY = {"secondary",   "Vlan200",          "--in Ethernet48",
                         "10.0.200.11", "2001:db8:200::11", "02:aa:00:00:02:01",
                         "untagged",    {"Ethernet48"}};
constexpr const char *VIRTUAL_4 = "00:00:5e:00:01:08";
constexpr const char *VIRTUAL_6 = "00:00:5e:00:02:08";

/** A frame and what becomes of it. */
struct Fate {
    std::string words;
    std::string end;
};

constexpr int ETHERNET52 = 14;
constexpr int VLAN_OF_SUBINTERFACE = 20;

class ForwardVlans : public lab_test::ForwardOnBothChips
{
protected:
    void expect(const std::vector<Fate> &fates)
    {
        for (const Fate &fate : fates) {
            EXPECT_EQ(send(fate.words), fate.end) << fate.words;
        }
    }
    std::string to_mac(const Place &from, const std::string &mac, bool ip6 = false)
    {
        return send(fmt::format("{} --dmac {} --ip {} {}", from.in, mac, ip6 ? from.ip6 : from.ip4,
                                ip6 ? peer().ip6 : peer().ip4));
    }
    /** The packet of a host in the secondary has left to the peer. */
    static std::string arrived(bool ip6 = false)
    {
        return ip6 ? routed(peer(), SECONDARY.ip6, peer().ip6)
                   : routed(peer(), SECONDARY.ip4, peer().ip4);
    }
};

INSTANTIATE_TEST_SUITE_P(Chips, ForwardVlans, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return chip_name(info.param); });

// What is flooded: each kind of destination.
constexpr const char *BROADCAST = "ff:ff:ff:ff:ff:ff";
constexpr const char *STRANGER = "02:00:00:00:99:99";
constexpr const char *GROUP = "01:00:5e:01:02:03";

/** A packet between two hosts that aren't the switch's, as it looks in between. */
std::string between(std::string_view mac)
{
    return fmt::format("02:00:00:00:00:fe > {}, 192.0.2.1 > 192.0.2.2 ttl 64", mac);
}
std::string flood_of(std::string_view in, std::string_view mac)
{
    return fmt::format("--in {} --dmac {} --ip 192.0.2.1 192.0.2.2", in, mac);
}

} // namespace

TEST_P(ForwardVlans, HostInASecondaryReachesTheVirtualMacsAndTheRoutersOwn)
{
    EXPECT_EQ(to_mac(SECONDARY, VIRTUAL_4), arrived());
    EXPECT_EQ(to_mac(SECONDARY, VIRTUAL_6, true), arrived(true));
    EXPECT_EQ(to_mac(SECONDARY, "router"), arrived());
    EXPECT_EQ(to_mac(SECONDARY, "router", true), arrived(true));
    EXPECT_EQ(to_mac(SECONDARY, "00:00:5e:00:01:09"), TO_CPU_MEMBER) << "another group's";
    EXPECT_EQ(to_mac(PRIMARY, VIRTUAL_4), routed(peer(), PRIMARY.ip4, peer().ip4));
}

TEST_P(ForwardVlans, PacketToAHostInASecondaryLeavesThere)
{
    for (const bool ip6 : {false, true}) {
        EXPECT_EQ(from_to(peer(), SECONDARY, ip6), routed(SECONDARY, ip6 ? peer().ip6 : peer().ip4,
                                                          ip6 ? SECONDARY.ip6 : SECONDARY.ip4));
        EXPECT_EQ(traffic.result().vlan, 201);
    }
    EXPECT_EQ(from_to(peer(), PRIMARY), routed(PRIMARY, peer().ip4, PRIMARY.ip4));
    EXPECT_EQ(traffic.result().vlan, 200);
    EXPECT_EQ(from_to(SECONDARY, PRIMARY), routed(PRIMARY, SECONDARY.ip4, PRIMARY.ip4));
    EXPECT_EQ(from_to(PRIMARY, SECONDARY), routed(SECONDARY, PRIMARY.ip4, SECONDARY.ip4));
}

TEST_P(ForwardVlans, SecondaryIsRoutedAsLongAsThePairAndThePrimaryAreThere)
{
    const auto expect_routed = [&](bool is_routed) {
        for (const char *mac : {VIRTUAL_4, "router"}) {
            EXPECT_EQ(to_mac(SECONDARY, mac), is_routed ? arrived() : TO_CPU_MEMBER) << mac;
        }
    };
    run({"pvlan del 200 201"});
    expect_routed(false);
    run({"pvlan add 200 201"});
    expect_routed(true);
    run({"del Vlan200"});
    expect_routed(false);
    EXPECT_EQ(from_to(peer(), SECONDARY), "dropped: no route to its destination");
    run({"add Vlan200"});
    expect_routed(true);
    run({fmt::format("vmac del Vlan200 {}", VIRTUAL_4)});
    EXPECT_EQ(to_mac(SECONDARY, VIRTUAL_4), TO_CPU_MEMBER);
    EXPECT_EQ(to_mac(SECONDARY, "router"), arrived());
}

TEST_P(ForwardVlans, VlanOfASubinterfaceFloodsToNobody)
{
    // A port that somebody left in it: what its members send is translated out of it.
    const auto vlan = *hardware.chip.vlans.find(VLAN_OF_SUBINTERFACE);
    hardware.chip.vlans.add_ports(VLAN_OF_SUBINTERFACE, {ETHERNET52}, {});
    hardware.chip.stgs.set_state(vlan.stg, ETHERNET52, chip::STP_FORWARDING);
    for (const char *mac : {BROADCAST, STRANGER, GROUP}) {
        EXPECT_EQ(send(flood_of("Ethernet52 --vlan 20", mac)), NOBODY) << mac;
    }
    // It is the masks that hold them back.
    hardware.chip.vlans.set_blocks(VLAN_OF_SUBINTERFACE, {});
    for (const char *mac : {BROADCAST, STRANGER, GROUP}) {
        const std::string end = send(flood_of("Ethernet52 --vlan 20", mac));
        EXPECT_EQ(end.substr(end.find(" tagged")), " tagged 20: " + between(mac) + ", and cpu");
    }
}

TEST_P(ForwardVlans, FloodOfABridgedVlanStaysOutOfTheSubinterfacesPort)
{
    // Ethernet24.10 is in VLAN 10 too. The CPU was in it with the L2 side, before anything
    // was routed there, and only unknown groups are held back from it.
    const std::string cpu = ", and cpu";
    expect({
        {flood_of("Ethernet52", BROADCAST), "Ethernet56 tagged 10: " + between(BROADCAST) + cpu},
        {flood_of("Ethernet52", STRANGER), "Ethernet56 tagged 10: " + between(STRANGER) + cpu},
        {flood_of("Ethernet52", GROUP), "Ethernet56 tagged 10: " + between(GROUP)},
        {flood_of("Ethernet56 --vlan 10", BROADCAST),
         "Ethernet52 untagged: " + between(BROADCAST) + cpu},
    });
    hardware.chip.vlans.set_blocks(10, {});
    EXPECT_EQ(send(flood_of("Ethernet52", BROADCAST)),
              "Ethernet24 tagged 10, Ethernet56 tagged 10: " + between(BROADCAST) + cpu);
}

TEST_P(ForwardVlans, SubinterfaceThatGoesAndComesBackIsKeptOutOfTheFloodAgain)
{
    const std::string flooded = "Ethernet56 tagged 10: " + between(STRANGER) + ", and cpu";
    for (const std::string step : {"del Ethernet24.10", "add Ethernet24.10"}) {
        run({step});
        EXPECT_EQ(send(flood_of("Ethernet52", STRANGER)), flooded) << step;
    }
    const Place &sub = place("subinterface");
    EXPECT_EQ(from_to(sub, peer()), routed(peer(), sub.ip4, peer().ip4));
}

TEST_P(ForwardVlans, FloodOfAnSviStaysInItsVlan)
{
    const std::string cpu = ", and cpu";
    expect({
        {flood_of("Ethernet20 --vlan 100", STRANGER),
         "Ethernet16 untagged: " + between(STRANGER) + cpu},
        {flood_of("Ethernet20 --vlan 100", GROUP), "Ethernet16 untagged: " + between(GROUP)},
        {"--in Ethernet16 --arp 10.0.100.9 10.0.100.1",
         "Ethernet20 tagged 100: 02:00:00:00:00:fe > ff:ff:ff:ff:ff:ff, type 0x0806, and cpu"},
        {flood_of("Ethernet48", STRANGER), TO_CPU_MEMBER},
    });
}

TEST_P(ForwardVlans, StationsAndGroupsThatAreKnownGetTheirFramesAlone)
{
    auto &l2 = traffic.pipeline.l2();
    send(flood_of("Ethernet56 --vlan 30 --smac 02:00:00:00:99:99", BROADCAST));
    EXPECT_EQ(send(flood_of("Ethernet52 --vlan 30", STRANGER)),
              "Ethernet56 tagged 30: " + between(STRANGER));
    EXPECT_EQ(send(flood_of("Ethernet52", STRANGER)),
              "Ethernet56 tagged 10: " + between(STRANGER) + ", and cpu")
        << "it is known in VLAN 30";
    ASSERT_TRUE(l2.add_group(10, {0x01, 0, 0x5e, 1, 2, 3}, {ETHERNET52}).ok());
    EXPECT_EQ(send(flood_of("Ethernet56 --vlan 10", GROUP)),
              "Ethernet52 untagged: " + between(GROUP));
    EXPECT_EQ(send(flood_of("Ethernet52", GROUP)), NOBODY);
}

TEST_P(ForwardVlans, WhatRoutedPortsDontRouteReachesNoOtherPort)
{
    for (const std::string in :
         {"Ethernet0", "Ethernet12", "Ethernet24 --vlan 10", "Ethernet60 --vlan 20"}) {
        expect(
            {{flood_of(in, STRANGER), "dropped: not routable: its destination MAC is no station's"},
             {flood_of(in, GROUP), "dropped: not routable: sent to a group"},
             {flood_of(in, BROADCAST), "cpu: an IPv4 broadcast on a routed interface"}});
    }
}

TEST_P(ForwardVlans, DropRuleTakesWhatIsntRoutableOnItsPort)
{
    const Place &port = place("port");
    const std::string dropped = "dropped: a field entry drops it";
    run({"drop add Ethernet16", "drop add Ethernet20"});
    expect({
        {flood_of("Ethernet16", STRANGER), dropped},
        {flood_of("Ethernet16", GROUP), dropped},
        {"--in Ethernet16 --ip 10.0.100.9 10.0.4.9", routed(peer(), "10.0.100.9", peer().ip4)},
        {"--in Ethernet16 --ip 2001:db8:100::9 2001:db8:4::9",
         routed(peer(), "2001:db8:100::9", peer().ip6)},
        // What goes to the CPU was taken before.
        {"--in Ethernet16 --arp 10.0.100.9 10.0.100.1", "cpu: ARP on a routed interface"},
        // A later port of the rule isn't in its mask; others have nothing to do with it.
        {flood_of("Ethernet20 --vlan 100", STRANGER),
         "Ethernet16 untagged: " + between(STRANGER) + ", and cpu"},
        {flood_of("Ethernet52 --vlan 30", STRANGER),
         "Ethernet56 tagged 30: " + between(STRANGER) + ", and cpu"},
    });
    EXPECT_EQ(from_to(port, peer()), routed(peer(), port.ip4, peer().ip4));
}
