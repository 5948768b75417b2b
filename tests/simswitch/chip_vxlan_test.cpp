/*
 * chip_vxlan_test.cpp: the chip's VXLAN virtual ports.
 */
#include "chip/chip.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

struct ChipVxlan : testing::Test {
    VxlanPorts ports{3};

    /** A virtual port of VPN 28673 on port 5. */
    static VxlanPort on_vlan(int vlan)
    {
        return {.vpn = 28673, .criteria = 2, .match_port = 5, .match_vlan = vlan};
    }
    /** Creates it; gives its id. */
    int created(const VxlanPort &port)
    {
        int id = -1;
        EXPECT_THAT(ports.create(port, id), Done());
        return id;
    }
};

} // namespace

TEST_F(ChipVxlan, IdsAreFrom1)
{
    EXPECT_EQ(created(on_vlan(100)), 1);
    EXPECT_EQ(created(on_vlan(101)), 2);
    EXPECT_EQ(*ports.find(1), on_vlan(100));
    EXPECT_EQ(ports.find(0), nullptr);
    EXPECT_EQ(ports.size(), 2U);
}

TEST_F(ChipVxlan, LowestFreeIdComesFirst)
{
    for (int vlan = 100; vlan < 103; ++vlan) {
        created(on_vlan(vlan));
    }
    EXPECT_THAT(ports.remove(28673, 2), Done());
    EXPECT_THAT(ports.remove(28673, 1), Done());
    EXPECT_EQ(created(on_vlan(200)), 1);
    EXPECT_EQ(created(on_vlan(201)), 2);
}

TEST_F(ChipVxlan, FullTableRefuses)
{
    for (int vlan = 100; vlan < 103; ++vlan) {
        created(on_vlan(vlan));
    }
    int id = -1;
    EXPECT_THAT(ports.create(on_vlan(103), id), Refused(-6, "VXLAN port table full: 3 of 3"));
    EXPECT_EQ(id, -1);
}

TEST_F(ChipVxlan, SecondOneThatMatchesTheSameIsRefused)
{
    created(on_vlan(100));
    VxlanPort other = on_vlan(100);
    other.vpn = 28674;
    other.vn_id = 9;
    other.flags = 1;
    int id = -1;
    EXPECT_THAT(ports.create(other, id), Refused(-8, "VXLAN port 1 matches the same"));
    EXPECT_EQ(id, -1);
    other.criteria = 3;
    EXPECT_EQ(created(other), 2);
    other.match_port = 6;
    EXPECT_EQ(created(other), 3);
}

TEST_F(ChipVxlan, PortAndVlanHaveARange)
{
    VxlanPort port = on_vlan(4095);
    port.match_port = 255;
    created(port);
    created(on_vlan(0)); // any VLAN
    int id = -1;
    port.match_port = 256;
    EXPECT_THAT(ports.create(port, id), Refused(-4, "port 256 is not in 0..255"));
    EXPECT_THAT(ports.create(on_vlan(4096), id), Refused(-4, "VLAN 4096 is not in 0..4095"));
    EXPECT_EQ(id, -1);
}

TEST_F(ChipVxlan, IsRemovedByItsVpnAndItsId)
{
    created(on_vlan(100));
    EXPECT_THAT(ports.remove(28674, 1), Refused(-7, "VXLAN port 1 is in VPN 28673, not in 28674"));
    EXPECT_THAT(ports.remove(28673, 2), Refused(-7, "VXLAN port 2 does not exist"));
    EXPECT_THAT(ports.remove(28673, 1), Done());
    EXPECT_THAT(ports.remove(28673, 1), Refused(-7, "VXLAN port 1 does not exist"));
    EXPECT_EQ(ports.size(), 0U);
}

TEST_F(ChipVxlan, TextShowsAllOfIt)
{
    EXPECT_EQ(text(VxlanPort{.if_index = 0x1a000000,
                             .vpn = 28673,
                             .vn_id = 5000,
                             .mc_index = 0xcafe,
                             .egress_if = 12,
                             .flags = 0x2f,
                             .criteria = 2,
                             .match_port = 5,
                             .match_vlan = 100}),
              "vpn 28673 vn 5000 port 5 vlan 100 criteria 2 flags 0x2f egress 12 multicast 0xcafe "
              "of 0x1a000000");
}

TEST_F(ChipVxlan, CopyOfTheTableBringsIdsBack)
{
    EXPECT_THAT(ports.restore(2, on_vlan(100)), Done());
    EXPECT_THAT(ports.restore(0, on_vlan(101)),
                Refused(-4, "VXLAN port 0 is not in 1..2147483647"));
    EXPECT_THAT(ports.restore(3, on_vlan(100)), Refused(-8, "VXLAN port 2 matches the same"));
    EXPECT_EQ(created(on_vlan(101)), 1);
    EXPECT_EQ(created(on_vlan(102)), 3);
    ports.clear();
    EXPECT_EQ(created(on_vlan(100)), 1);
}

TEST_F(ChipVxlan, EachKindHasItsRoom)
{
    EXPECT_EQ(Chip(Kind::trident).limits().vxlan_ports, 4096U);
    EXPECT_EQ(Chip(Kind::trident2).limits().vxlan_ports, 16384U);
    Chip small(Kind::trident, {.vxlan_ports = 1});
    int id = 0;
    EXPECT_THAT(small.vxlan_ports.create(on_vlan(100), id), Done());
    EXPECT_THAT(small.vxlan_ports.create(on_vlan(101), id),
                Refused(-6, "VXLAN port table full: 1 of 1"));
}

} // namespace simswitch::chip
