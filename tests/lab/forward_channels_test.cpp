/*
 * forward_channels_test.cpp: port-channels and their subinterfaces: frames come
 * in on each member, flows spread over the members, members come and go.
 */
#include "forward.h"

#include "rtifhal_kinds.h"

#include <array>
#include <set>

namespace
{

using lab_test::chip_name;
using lab_test::flow_number;
using lab_test::Kind;
using lab_test::Lines;
using lab_test::peer;
using lab_test::Place;
using lab_test::place;
using lab_test::routed;

/** Each kind that has a trunk under it, in turn. */
const std::array<const Place *, 2> CHANNELS = {&place("port_channel"),
                                               &place("subinterface_of_port_channel")};
constexpr int FLOWS = 24;
constexpr int FIRST_PORT = 10000;

class ForwardChannels : public lab_test::ForwardOnBothChips
{
protected:
    static std::string tag(const Place &of)
    {
        return std::string_view(of.tag) == "untagged" ? "" : "--vlan 20 ";
    }
    std::string in_on(const std::string &member, const Place &of)
    {
        return send(fmt::format("--in {} {}--ip {} {}", member, tag(of), of.ip4, peer().ip4));
    }
    /** Flows to a host leave on these members, as their numbers say. */
    void expect_spread(const Place &to, const Lines &members)
    {
        std::set<std::string> seen;
        for (int sport = FIRST_PORT; sport < FIRST_PORT + FLOWS; ++sport) {
            const std::size_t chosen =
                (flow_number(peer().ip4, to.ip4, sport) / 256) % members.size();
            const std::string words =
                fmt::format("--in Ethernet4 --ip {} {} --sport {}", peer().ip4, to.ip4, sport);
            EXPECT_EQ(send(words), routed(to, peer().ip4, to.ip4, members[chosen])) << words;
            seen.insert(members[chosen]);
        }
        EXPECT_EQ(seen.size(), members.size());
    }
    /** The record of a port-channel's member. */
    ::l3lif *member(const std::string &channel, const std::string &port) const
    {
        for (const auto &lif : session.state().interface(channel).members) {
            if (lif->plan().name == port) {
                return lif->record();
            }
        }
        ADD_FAILURE() << port << " is no member of " << channel;
        return nullptr;
    }
    void leaves(const std::string &channel, const std::string &port)
    {
        EXPECT_EQ(rtifhal_trident_del_l3pc(member(channel, port), 0), 0);
        hardware.end_request();
    }
    void joins(const std::string &channel, const std::string &port)
    {
        EXPECT_EQ(rtifhal_trident_add_l3pc(member(channel, port), 0), 0);
        hardware.end_request();
    }
};

INSTANTIATE_TEST_SUITE_P(Chips, ForwardChannels, testing::Values(Kind::trident, Kind::trident2),
                         [](const auto &info) { return chip_name(info.param); });

} // namespace

TEST_P(ForwardChannels, FramesComeInOnEachMember)
{
    for (const Place *channel : CHANNELS) {
        for (const std::string &port : channel->ports) {
            EXPECT_EQ(in_on(port, *channel), routed(peer(), channel->ip4, peer().ip4)) << port;
        }
    }
}

TEST_P(ForwardChannels, FlowsLeaveOnAllMembersByTheirNumber)
{
    for (const Place *channel : CHANNELS) {
        expect_spread(*channel, channel->ports);
    }
}

TEST_P(ForwardChannels, FlowKeepsItsMember)
{
    for (const Place *channel : CHANNELS) {
        const std::string first = from_to(peer(), *channel);
        for (const char *more : {"--ttl 9", "--size 200", "--smac 02:00:00:00:00:99"}) {
            const std::string again =
                send(fmt::format("--in Ethernet4 --ip {} {} {}", peer().ip4, channel->ip4, more));
            EXPECT_EQ(again.substr(0, again.find(':')), first.substr(0, first.find(':'))) << more;
        }
    }
}

TEST_P(ForwardChannels, MemberThatLeavesTakesNoPartAndComesBackLast)
{
    for (const Place *channel : CHANNELS) {
        const std::string main =
            lab_test::Lines{"PortChannel1", "PortChannel3"}.at(channel == CHANNELS[0] ? 0 : 1);
        const std::string gone = channel->ports.front();
        Lines left(channel->ports.begin() + 1, channel->ports.end());
        leaves(main, gone);
        EXPECT_EQ(in_on(gone, *channel), "dropped: the port isn't in its VLAN");
        for (const std::string &port : left) {
            EXPECT_EQ(in_on(port, *channel), routed(peer(), channel->ip4, peer().ip4)) << port;
        }
        expect_spread(*channel, left);
        joins(main, gone);
        left.push_back(gone);
        for (const std::string &port : left) {
            EXPECT_EQ(in_on(port, *channel), routed(peer(), channel->ip4, peer().ip4)) << port;
        }
        expect_spread(*channel, left);
    }
}

TEST_P(ForwardChannels, SubinterfaceAddedWhileAMemberIsAwayIsOnItWhenItJoins)
{
    const Place &sub = place("subinterface_of_port_channel");
    run({"del PortChannel3.20"});
    leaves("PortChannel3", "Ethernet32");
    run({"add PortChannel3.20"});
    expect_spread(sub, {"Ethernet28", "Ethernet60"});
    joins("PortChannel3", "Ethernet32");
    EXPECT_EQ(in_on("Ethernet32", sub), routed(peer(), sub.ip4, peer().ip4));
    expect_spread(sub, {"Ethernet28", "Ethernet60", "Ethernet32"});
}
