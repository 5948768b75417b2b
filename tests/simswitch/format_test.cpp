/*
 * format_test.cpp: what each kind of argument looks like in the journal.
 */
#include "journal/format.h"

#include "rtifhal_types.h"

#include <array>
#include <gtest/gtest.h>
#include <initializer_list>

namespace simswitch
{

namespace
{

bcm_pbmp_t ports(std::initializer_list<unsigned> members)
{
    bcm_pbmp_t set{};
    for (const unsigned port : members) {
        set.pbits[port / 32] |= 1U << (port % 32);
    }
    return set;
}

template <std::size_t N> void fill(std::uint8_t (&bytes)[N], std::uint8_t first)
{
    for (std::uint8_t &byte : bytes) {
        byte = first++;
    }
}

} // namespace

TEST(Format, NumbersAreDecimalAndWordsOfBitsHex)
{
    EXPECT_EQ(format_value(-6), "-6");
    EXPECT_EQ(format_value(std::int16_t{-3}), "-3");
    EXPECT_EQ(format_value(std::uint16_t{4094}), "4094");
    EXPECT_EQ(format_value(std::uint8_t{255}), "255");
    EXPECT_EQ(format_value(true), "1");
    EXPECT_EQ(format_value(std::size_t{24}), "24");
    EXPECT_EQ(format_value(std::int64_t{-24}), "-24");
    EXPECT_EQ(format_value(std::uint32_t{0x1a000001}), "0x1a000001");
    EXPECT_EQ(format_value(std::uint32_t{0}), "0x0");
}

TEST(Format, TextsAreQuotedAndKeepALineWhole)
{
    const char *none = nullptr;
    EXPECT_EQ(format_value("fwm"), "\"fwm\"");
    EXPECT_EQ(format_value(std::string("")), "\"\"");
    EXPECT_EQ(format_value(none), "null");
    EXPECT_EQ(format_value("a\n\t\r\"\\\x1b"), R"("a\n\t\r\"\\\x1b")");
    EXPECT_EQ(format_value(Word{"store"}), "store");
}

TEST(Format, PortSetsPrintThreeNeighboursAsARange)
{
    EXPECT_EQ(format_value(ports({})), "{}");
    EXPECT_EQ(format_value(ports({0, 5, 9, 10, 11, 12})), "{0,5,9-12}");
    EXPECT_EQ(format_value(ports({1, 2})), "{1,2}");
    EXPECT_EQ(format_value(ports({1, 2, 3})), "{1-3}");
    EXPECT_EQ(format_value(ports({30, 31, 32, 33, 255})), "{30-33,255}");
    EXPECT_EQ(format_value(ports({253, 254, 255})), "{253-255}");
}

TEST(Format, MacHasTwoDigitsAByte)
{
    bcm_mac_t mac{};
    fill(mac, 0x0e);
    EXPECT_EQ(format_value(mac), "0e:0f:10:11:12:13");
}

TEST(Format, Station)
{
    bcm_l2_station_t station{};
    station.flags = 0x1c;
    fill(station.dst_mac, 0x10);
    fill(station.dst_mac_mask, 0xfa);
    station.vlan = 100;
    station.vlan_mask = 0xFFF;
    station.src_port = 5;
    station.src_port_mask = 127;
    EXPECT_EQ(format_value(station), "{flags=0x1c mac=10:11:12:13:14:15/fa:fb:fc:fd:fe:ff "
                                     "vlan=100/4095 port=5/127}");
}

TEST(Format, L3Interface)
{
    bcm_l3_intf_t intf{};
    intf.l3a_flags = 0x40;
    intf.l3a_intf_id = 3;
    fill(intf.l3a_mac_addr, 0);
    intf.l3a_vid = 4094;
    intf.l3a_vrf = 1;
    intf.l3a_mtu = 1500;
    intf.l3a_ttl = 2;
    intf.l3a_tunnel_idx = 4;
    EXPECT_EQ(format_value(intf), "{flags=0x40 id=3 mac=00:01:02:03:04:05 vid=4094 vrf=1 mtu=1500 "
                                  "ttl=2 tunnel=4}");
    EXPECT_EQ(format_value(&intf), format_value(intf));
}

TEST(Format, L3Ingress)
{
    bcm_l3_ingress_t ingress{};
    ingress.flags = 6;
    ingress.vrf = 1;
    ingress.urpf_mode = 2;
    ingress.intf_class = 64;
    ingress.ipmc_intf_id = 3;
    ingress.qos_map_id = 5;
    EXPECT_EQ(format_value(ingress), "{flags=0x6 vrf=1 urpf=2 class=64 ipmc=3 qos=5}");
}

TEST(Format, L3EgressAndGroup)
{
    bcm_l3_egress_t egress{};
    egress.flags = 0x100;
    egress.intf = 3;
    fill(egress.mac_addr, 1);
    egress.vlan = 2;
    egress.module = 4;
    egress.port = 5;
    egress.trunk = 6;
    egress.encap_id = 7;
    EXPECT_EQ(format_value(egress), "{flags=0x100 intf=3 mac=01:02:03:04:05:06 vlan=2 module=4 "
                                    "port=5 trunk=6 encap=7}");
    bcm_l3_egress_ecmp_t ecmp{};
    ecmp.ecmp_intf = 200000;
    EXPECT_EQ(format_value(ecmp), "{flags=0x0 id=200000}");
}

TEST(Format, RouteOfIPv4)
{
    bcm_l3_route_t route{};
    route.l3a_flags = 0x4100;
    route.l3a_vrf = 1;
    route.l3a_intf = 100000;
    EXPECT_EQ(format_value(route), "{flags=0x4100 vrf=1 net=0.0.0.0/0 intf=100000}");
    route.l3a_subnet = 0x0a010200;
    route.l3a_ip_mask = 0xFFFFFF00;
    EXPECT_EQ(format_value(route), "{flags=0x4100 vrf=1 net=10.1.2.0/24 intf=100000}");
}

TEST(Format, RouteOfIPv6)
{
    bcm_l3_route_t route{};
    route.l3a_flags = 0x20100;
    EXPECT_EQ(format_value(route), "{flags=0x20100 vrf=0 net=::/0 intf=0}");
    route.l3a_ip6_net[0] = 0x20;
    route.l3a_ip6_net[1] = 0x01;
    route.l3a_ip6_mask[0] = 0xFF;
    route.l3a_ip6_mask[1] = 0xF0;
    route.l3a_ip6_mask[2] = 0xFF;
    EXPECT_EQ(format_value(route), "{flags=0x20100 vrf=0 net=2001::/12 intf=0}");
}

TEST(Format, VlanRecords)
{
    bcm_vlan_control_vlan_t control{};
    control.vc_vrf = 1;
    control.vc_ingress_if = 3;
    control.vc_flags = 0x278;
    control.vc_class = 4;
    control.vc_urpf_mode = 2;
    EXPECT_EQ(format_value(control), "{vrf=1 iif=3 flags=0x278 class=4 urpf=2}");
    bcm_vlan_block_t block{};
    block.unknown_multicast = ports({0, 5});
    block.unknown_unicast = ports({6});
    block.broadcast = ports({7});
    EXPECT_EQ(format_value(block), "{kmc={} umc={0,5} uuc={6} bc={7}}");
}

TEST(Format, TranslationAction)
{
    bcm_vlan_action_set_t action{};
    action.new_outer_vlan = 4094;
    action.ingress_if = 5;
    action.ot_outer = 2;
    action.dt_outer = 1;
    EXPECT_EQ(format_value(&action), "{vlan=4094 iif=5 ot_outer=2 dt_outer=1}");
}

TEST(Format, TrunkRecords)
{
    bcm_trunk_info_t info{};
    info.psc = 9;
    info.dlf_index = -1;
    info.mc_index = -1;
    info.ipmc_index = -1;
    EXPECT_EQ(format_value(info), "{flags=0x0 psc=9 ipmc_psc=0 dlf=-1 mc=-1 ipmc=-1 size=0}");
    bcm_trunk_member_t member{};
    member.gport = 0x8000005;
    EXPECT_EQ(format_value(member), "{flags=0x0 gport=0x8000005}");
    const std::array members = {member, member};
    EXPECT_EQ(format_value(std::span<const bcm_trunk_member_t>(members)),
              "[{flags=0x0 gport=0x8000005},{flags=0x0 gport=0x8000005}]");
    EXPECT_EQ(format_value(std::span<const bcm_trunk_member_t>()), "[]");
    fwm_pc_sdb_value_t value{.ifindex = 0x20029000, .tid = 42};
    EXPECT_EQ(format_value(&value), "{ifindex=0x20029000 tid=42}");
}

TEST(Format, PointersAreNamed)
{
    l3lif lif{};
    lif.ifindex = 0x1a000001;
    avl_tree_t tree{};
    avl_node_t node{};
    const int other = 0;
    EXPECT_EQ(format_arguments(&lif, &tree, &node, &other), "lif(0x1a000001), tree, node, record");
    EXPECT_EQ(format_value(static_cast<const l3lif *>(nullptr)), "null");
    EXPECT_EQ(format_value(static_cast<const avl_tree_t *>(nullptr)), "null");
    EXPECT_EQ(format_value(static_cast<const void *>(nullptr)), "null");
    EXPECT_EQ(format_value(static_cast<const bcm_l3_intf_t *>(nullptr)), "null");
}

TEST(Format, Lists)
{
    const std::array ids = {1, 2, 3};
    EXPECT_EQ(format_value(std::span<const int>(ids)), "[1,2,3]");
    EXPECT_EQ(format_value(std::span<const int>()), "[]");
    EXPECT_EQ(format_arguments(), "");
    EXPECT_EQ(format_arguments(0, "a"), "0, \"a\"");
}

TEST(Format, OutputsAreJoinedByABlank)
{
    std::string outputs;
    append_output(outputs, "info", "{a=1}");
    append_output(outputs, "count", "2");
    EXPECT_EQ(outputs, "info={a=1} count=2");
}

} // namespace simswitch
