/*
 * pipeline_rules_test.cpp: what goes to the CPU by itself, and what the entries
 * of the field processor do.
 */
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

namespace
{

constexpr Mac OSPF_MAC = {0x01, 0x00, 0x5e, 0x00, 0x00, 0x05};

struct PipelineRules : PipelineTest {
    PipelineRules()
    {
        router_mac();
        routed_port(5, 7);
        routed_port(6, 8);
        route("10.9.0.0/16", next_hop(8, 6));
        svi(100, 9, {0, 10, 11});
    }
    /** An entry of a group that drops what isn't routable from some ports. */
    int drop_rule(int priority, const InPorts &in_ports)
    {
        chip.field_groups.create(11, {priority, {QUALIFIER_IN_PORTS, QUALIFIER_L3_ROUTABLE}});
        int id = 0;
        chip.field_entries.create(11, id);
        chip.field_entries.set_l3_routable(id, false);
        chip.field_entries.set_in_ports(id, in_ports);
        chip.field_entries.add_action(id, ACTION_DROP);
        chip.field_entries.install(id);
        return id;
    }
    static Bytes arp(const Mac &to, std::vector<int> tags = {})
    {
        return plain_frame(TYPE_ARP, {.to = to, .tags = std::move(tags)});
    }
};

} // namespace

TEST_F(PipelineRules, ArpOnARoutedPortIsTheCpus)
{
    EXPECT_EQ(send(5, arp(BROADCAST)), "TO CPU: ARP on a routed interface");
    EXPECT_EQ(send(5, arp(ROUTER_MAC)), "TO CPU: ARP on a routed interface");
    EXPECT_EQ(send(5, arp(OTHER_MAC)), "DROPPED: not routable: no IP packet");
}

TEST_F(PipelineRules, ArpInAnSvisVlanIsEverybodysWhateverTheMasksSay)
{
    chip.vlans.set_blocks(100, {.broadcast = {0}});
    EXPECT_EQ(send(10, arp(BROADCAST, {100})), "SENT port 11 tagged 100: flooded in its VLAN; a "
                                               "copy TO CPU: ARP on a routed interface");
    EXPECT_EQ(send(10, arp(ROUTER_MAC, {100})), "TO CPU: ARP on a routed interface");
}

TEST_F(PipelineRules, AStationWithoutTheArpClassGetsNoArp)
{
    Station record = *chip.stations.find(FIRST_STATION);
    record.flags = 0xc;
    chip.stations.set(FIRST_STATION, record);
    EXPECT_EQ(send(5, arp(ROUTER_MAC)), "DROPPED: not routable: no IP packet");
}

TEST_F(PipelineRules, NeighbourDiscoveryGoesToTheCpuWhenControl89SaysSo)
{
    const Bytes solicitation = ip_frame({.to = {0x33, 0x33, 0xff, 0, 0, 1},
                                         .source = "fe80::2",
                                         .destination = "ff02::1:ff00:1",
                                         .protocol = PROTOCOL_ICMP6,
                                         .source_port = 135 << 8});
    EXPECT_EQ(send(5, solicitation), "DROPPED: nobody else in its VLAN gets it");
    chip.switch_controls.set(SWITCH_CONTROL_ND_TO_CPU, 1);
    EXPECT_EQ(send(5, solicitation), "TO CPU: neighbour discovery on a routed interface");
}

TEST_F(PipelineRules, PacketsToALinkLocalAddressOrOfABroadcastAreTheCpus)
{
    EXPECT_EQ(send(5, ip_frame({.source = "fe80::2", .destination = "fe80::1"})),
              "TO CPU: a link-local packet on a routed interface");
    EXPECT_EQ(send(5, ip_frame({.to = BROADCAST, .destination = "255.255.255.255"})),
              "TO CPU: an IPv4 broadcast on a routed interface");
}

TEST_F(PipelineRules, LinkLocalMulticastIsRedirectedToTheFloodListWithinItsVlan)
{
    const Bytes hello = ip_frame({.to = OSPF_MAC, .tags = {100}, .destination = "224.0.0.5"});
    EXPECT_EQ(send(10, hello), "SENT port 11 tagged 100: redirected by a field entry; a copy TO "
                               "CPU: a link-local packet on a routed interface");
    EXPECT_THAT(line(Stage::field), testing::StartsWith("HIT field_entry 120 group 1: in-ports"));

    off_flood_lists(11);
    EXPECT_EQ(send(10, hello), "TO CPU: a link-local packet on a routed interface");
}

TEST_F(PipelineRules, AnEditThatWasntInstalledChangesNothing)
{
    const int entry = 128 - 8; // the first that link-local multicast meets
    chip.field_entries.remove_action(entry, ACTION_REDIRECT_PORTS);
    const Bytes hello = ip_frame({.to = OSPF_MAC, .tags = {100}, .destination = "224.0.0.5"});
    EXPECT_THAT(send(10, hello), testing::StartsWith("SENT port 11 tagged 100: redirected"));
}

TEST_F(PipelineRules, TheDropRuleDropsWhatIsNotRoutableOnItsPorts)
{
    svi(200, 12, {0, 13, 14});
    drop_rule(0, {{13}, {13}});
    const Bytes bridged = plain_frame(0x1234, {.tags = {200}});
    EXPECT_EQ(send(13, bridged), "DROPPED: a field entry drops it");
    EXPECT_THAT(send(14, bridged), testing::StartsWith("SENT port 13 tagged 200"));
    EXPECT_EQ(send(13, ip_frame({.tags = {200}})), "SENT port 6 untagged: routed");
    EXPECT_EQ(send(13, arp(BROADCAST, {200})), "TO CPU: ARP on a routed interface");
}

TEST_F(PipelineRules, APortThatIsNotInTheMaskIsNotMetAndNamedAsNearest)
{
    svi(200, 12, {0, 13, 14});
    const int id = drop_rule(0, {{13, 14}, {13}});
    EXPECT_EQ(send(13, plain_frame(0x1234, {.tags = {200}})), "DROPPED: a field entry drops it");
    EXPECT_THAT(send(14, plain_frame(0x1234, {.tags = {200}})), testing::StartsWith("SENT"));
    EXPECT_EQ(line(Stage::field), fmt::format("MISS field_entry {} does not match", id));
    const auto at = std::find_if(trace.lines().begin(), trace.lines().end(),
                                 [](const Line &line) { return line.stage == Stage::field; });
    EXPECT_EQ(at->nearest, fmt::format("field entry {}: port 14 is among its in-ports, but not in "
                                       "their mask",
                                       id));
}

TEST_F(PipelineRules, GroupsThatAreOffOrGoneAndEntriesThatWerentInstalledDontCount)
{
    drop_rule(0, {{10}, {10}});
    const Bytes frame = plain_frame(0x1234, {.tags = {100}});
    EXPECT_EQ(send(10, frame), "DROPPED: a field entry drops it");
    chip.field_groups.set_enabled(11, false);
    EXPECT_THAT(send(10, frame), testing::StartsWith("SENT"));
    chip.field_groups.set_enabled(11, true);
    EXPECT_EQ(send(10, frame), "DROPPED: a field entry drops it");
    chip.field_groups.remove(11);
    EXPECT_THAT(send(10, frame), testing::StartsWith("SENT"));
}

TEST_F(PipelineRules, ADropBeatsARedirectAndTheHigherGroupsRedirectComesFirst)
{
    const auto redirect = [this](int group, int priority, int port) {
        chip.field_groups.create(group, {priority, {}});
        int id = 0;
        chip.field_entries.create(group, id);
        chip.field_entries.add_port_action(id, ACTION_REDIRECT_PORTS, {port});
        chip.field_entries.install(id);
    };
    chip.vlans.add_ports(100, {12}, {});
    redirect(20, 5, 11);
    redirect(21, 9, 12);
    EXPECT_EQ(send(10, plain_frame(0x1234, {.tags = {100}})),
              "SENT port 12 tagged 100: redirected by a field entry");
    drop_rule(0, {{10}, {10}});
    EXPECT_EQ(send(10, plain_frame(0x1234, {.tags = {100}})), "DROPPED: a field entry drops it");
}

TEST_F(PipelineRules, ARedirectedPacketIsNotRouted)
{
    chip.field_groups.create(20, {5, {}});
    int id = 0;
    chip.field_entries.create(20, id);
    chip.field_entries.add_port_action(id, ACTION_REDIRECT_PORTS, {11});
    chip.field_entries.install(id);
    const Bytes frame = ip_frame({.tags = {100}});
    EXPECT_EQ(send(10, frame), "SENT port 11 tagged 100: redirected by a field entry");
    EXPECT_EQ(got(11), frame);
}

TEST_F(PipelineRules, NeighbourDiscoverysGroupSeesNothingElse)
{
    chip.field_groups.create(ND_GROUP, {3, {}});
    int id = 0;
    chip.field_entries.create(ND_GROUP, id);
    chip.field_entries.add_action(id, ACTION_DROP);
    chip.field_entries.install(id);
    EXPECT_EQ(send(5, ip_frame()), "SENT port 6 untagged: routed");
    EXPECT_EQ(send(5, ip_frame({.source = "2001:db8::2",
                                .destination = "2001:db8::1",
                                .protocol = PROTOCOL_ICMP6,
                                .source_port = 135 << 8})),
              "DROPPED: a field entry drops it");
}

} // namespace simswitch::chip::pipeline
