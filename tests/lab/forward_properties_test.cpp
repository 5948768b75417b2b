/*
 * forward_properties_test.cpp: each property of each kind of interface, as
 * packets meet it.
 */
#include "forward.h"

namespace
{

using lab_test::chip_name;
using lab_test::Kind;
using lab_test::peer;
using lab_test::Place;
using lab_test::routed;

const std::string UNROUTED = "dropped: no route to its destination";
const std::string OFF = "dropped: not routable: routing of its kind is off";
const std::string ASTRAY = "dropped: the reverse path of its source doesn't lead here";
const std::string NO_PACKET = "dropped: not routable: no IP packet";
const std::string LABELLED = "dropped: label-switched, and there are no labels";
const std::string TOO_LONG = "cpu: longer than the MTU of the L3 interface";

constexpr const char *RED_4 = "10.0.36.9"; // behind Ethernet36 in the VRF red, number 2
constexpr const char *UNKNOWN_4 = "192.0.2.9";
constexpr const char *UNKNOWN_6 = "2001:db8:ffff::9";

class ForwardProperty : public lab_test::ForwardOnBothChips
{
protected:
    /** Does something with each kind of interface that packets come in by. */
    template <class Work> void for_each_way_in(Work work)
    {
        for (const Place &place : lab_test::places()) {
            if (std::string_view(place.label) != "tunnel") {
                do_with(place, work);
            }
        }
    }
    /** Does something with each kind of interface that packets leave by. */
    template <class Work> void for_each_way_out(Work work)
    {
        for (const Place &place : lab_test::places()) {
            do_with(place, work);
        }
    }
    const Place &place() const { return *place_; }
    bool is(std::string_view label) const { return label == place().label; }
    bool is_subinterface() const { return std::string_view(place().label).starts_with("sub"); }
    bool is_on_trident() const { return GetParam() == Kind::trident; }
    const std::string &here(bool ip6) const { return ip6 ? place().ip6 : place().ip4; }
    static const std::string &there(bool ip6) { return ip6 ? peer().ip6 : peer().ip4; }

    void set(const std::string &words) { run({fmt::format("set {} {}", place().name, words)}); }
    /** From any source behind the interface to an address. */
    std::string in(const std::string &source, const std::string &target)
    {
        return send(fmt::format("{} --ip {} {}", place().in, source, target));
    }
    /** What a packet to the peer comes to. */
    std::string arrives(const std::string &source) const
    {
        const bool ip6 = source.find(':') != std::string::npos;
        return routed(peer(), source, there(ip6));
    }
    /** A packet to the peer that isn't routed: an SVI's VLAN bridges it. */
    std::string refused(bool ip6, const std::string &why) const
    {
        return is("svi") ? fmt::format("Ethernet16 untagged: 02:00:00:00:00:fe > {}, {} > {} ttl "
                                       "64, and cpu",
                                       lab_test::OWN_MAC, here(ip6), there(ip6))
                         : why;
    }
    void expect_families(bool ip4, bool ip6)
    {
        EXPECT_EQ(from_to(place(), peer()), ip4 ? arrives(here(false)) : refused(false, OFF));
        EXPECT_EQ(from_to(place(), peer(), true), ip6 ? arrives(here(true)) : refused(true, OFF));
        // What is off concerns what comes in.
        EXPECT_EQ(from_to(peer(), place()), routed(place(), there(false), here(false)));
        EXPECT_EQ(from_to(peer(), place(), true), routed(place(), there(true), here(true)));
    }
    std::string labelled()
    {
        return send(fmt::format("{} --mpls 100 --ip {} {}", place().in, here(false), there(false)));
    }

private:
    template <class Work> void do_with(const Place &place, Work work)
    {
        SCOPED_TRACE(place.label);
        place_ = &place;
        work();
    }

    const Place *place_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Chips, ForwardProperty, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return chip_name(info.param); });

} // namespace

TEST_P(ForwardProperty, VrfsReachTheirOwnAlone)
{
    for_each_way_in([&] {
        set("vrf 2");
        EXPECT_EQ(from_to(place(), peer()), UNROUTED);
        EXPECT_EQ(from_to(place(), peer(), true), UNROUTED);
        EXPECT_EQ(from_to(peer(), place()), UNROUTED);
        EXPECT_EQ(from_to(peer(), place(), true), UNROUTED);
        EXPECT_EQ(in(here(false), RED_4),
                  fmt::format("Ethernet36 untagged: {} > 02:aa:00:00:00:36, {} > {} ttl 63",
                              lab_test::OWN_MAC, here(false), RED_4));
        EXPECT_EQ(send(fmt::format("--in Ethernet36 --ip {} {}", RED_4, here(false))),
                  routed(place(), RED_4, here(false)));
        set("vrf 1");
        EXPECT_EQ(in(here(false), RED_4), UNROUTED);
        expect_families(true, true);
    });
}

TEST_P(ForwardProperty, FamilyThatIsOffIsntRouted)
{
    for_each_way_in([&] {
        // A Trident switches families by its ports, which a subinterface shares with others.
        const bool stays = is_subinterface() && is_on_trident();
        set("ipv6 off");
        expect_families(true, stays);
        set("ipv4 off");
        // Without any family its ingress object is in no VRF.
        EXPECT_EQ(from_to(place(), peer()), stays ? UNROUTED : refused(false, OFF));
        EXPECT_EQ(from_to(place(), peer(), true), stays ? UNROUTED : refused(true, OFF));
        set("ipv6 on");
        expect_families(stays, true);
        set("ipv4 on");
        expect_families(true, true);
    });
}

TEST_P(ForwardProperty, ReversePathStrictTakesSourcesOfTheInterfaceAlone)
{
    for_each_way_in([&] {
        set("urpf strict");
        for (const std::string &own : {here(false), here(true)}) {
            const bool ip6 = own == here(true);
            EXPECT_EQ(in(own, there(ip6)), arrives(own));
        }
        for (const std::string &source :
             {there(false), std::string(RED_4), std::string(UNKNOWN_4)}) {
            EXPECT_EQ(in(source, there(false)), ASTRAY) << source;
        }
        for (const std::string &source : {there(true), std::string(UNKNOWN_6)}) {
            EXPECT_EQ(in(source, there(true)), ASTRAY) << source;
        }
    });
}

TEST_P(ForwardProperty, ReversePathLooseTakesSourcesThatHaveARoute)
{
    for_each_way_in([&] {
        set("urpf loose");
        for (const std::string &source : {here(false), there(false)}) {
            EXPECT_EQ(in(source, there(false)), arrives(source)) << source;
        }
        EXPECT_EQ(in(there(true), there(true)), arrives(there(true)));
        for (const std::string source : {RED_4, UNKNOWN_4}) {
            EXPECT_EQ(in(source, there(false)), ASTRAY) << source;
        }
        EXPECT_EQ(in(UNKNOWN_6, there(true)), ASTRAY);
    });
}

TEST_P(ForwardProperty, ReversePathOffTakesAnySource)
{
    for_each_way_in([&] {
        for (const char *mode : {"strict", "loose"}) {
            set(fmt::format("urpf {}", mode));
            set("urpf off");
            for (const std::string source : {RED_4, UNKNOWN_4}) {
                EXPECT_EQ(in(source, there(false)), arrives(source)) << source;
            }
            EXPECT_EQ(in(UNKNOWN_6, there(true)), arrives(UNKNOWN_6));
        }
    });
}

TEST_P(ForwardProperty, LabelsAreSwitchedWhereMplsIsOn)
{
    for_each_way_in([&] {
        const std::string bridged = fmt::format("Ethernet16 untagged: 02:00:00:00:00:fe > {}, type "
                                                "0x8847, and cpu",
                                                lab_test::OWN_MAC);
        EXPECT_EQ(labelled(), is("svi") ? bridged : NO_PACKET);
        set("mpls on");
        // A subinterface's port follows when its main interface is set.
        EXPECT_EQ(labelled(), is_subinterface() ? NO_PACKET : LABELLED);
        set("mpls off");
        EXPECT_EQ(labelled(), is("svi") ? bridged : NO_PACKET);
    });
}

TEST_P(ForwardProperty, LongestPacketLeavesAndTheNextLongerGoesToTheCpu)
{
    for_each_way_out([&] {
        constexpr int MTU = 1400;
        constexpr int ETHERNET = 14;
        set(fmt::format("mtu {}", MTU));
        for (const bool ip6 : {false, true}) {
            const auto of_size = [&](int bytes) {
                return send(fmt::format("--in Ethernet4 --size {} --ip {} {}", bytes + ETHERNET,
                                        there(ip6), here(ip6)));
            };
            EXPECT_EQ(of_size(MTU), routed(place(), there(ip6), here(ip6)));
            EXPECT_EQ(of_size(MTU + 1), TOO_LONG);
        }
        // It is the way out that counts.
        if (!is("tunnel")) {
            EXPECT_EQ(send(fmt::format("{} --size {} --ip {} {}", place().in, MTU + 100,
                                       here(false), there(false))),
                      arrives(here(false)));
        }
        set("mtu 9000");
        EXPECT_EQ(send(fmt::format("--in Ethernet4 --size {} --ip {} {}", MTU + 100, there(false),
                                   here(false))),
                  routed(place(), there(false), here(false)));
    });
}

TEST_P(ForwardProperty, MainInterfacesNextSetBringsItsPortsInLineWithASubinterface)
{
    const Place &sub = lab_test::place("subinterface_of_port_channel");
    run({"set PortChannel3.20 ipv6 off", "set PortChannel3.20 mpls on",
         "set PortChannel3 class off"});
    EXPECT_EQ(from_to(sub, peer(), true), OFF);
    EXPECT_EQ(from_to(sub, peer()), routed(peer(), sub.ip4, peer().ip4));
    for (const std::string &member : sub.ports) {
        EXPECT_EQ(send(fmt::format("--in {} --vlan 20 --mpls 100 --ip {} {}", member, sub.ip4,
                                   peer().ip4)),
                  LABELLED)
            << member;
    }
}
