/*
 * accounting_test.cpp: the tables of which port holds which VLAN and who uses a
 * VLAN, and their accessors. flood_block has the writer of the uses.
 */
#include "support/library_test.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>

namespace rtifhal_test::accounting
{

namespace
{

constexpr std::uint16_t ABOVE_LAST_VLAN = 4096;

class VlanAccounting : public LibraryTest
{
};

bool all_zero(const void *memory, std::size_t size)
{
    const auto *bytes = static_cast<const unsigned char *>(memory);
    return std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
}

std::vector<int> ports_of(const bcm_pbmp_t &pbmp)
{
    std::vector<int> ports;
    for (int port = 0; port < 256; ++port) {
        if ((pbmp.pbits[port / 32] >> (port % 32) & 1U) != 0) {
            ports.push_back(port);
        }
    }
    return ports;
}

} // namespace

TEST_F(VlanAccounting, TablesHaveTheLayoutThatDebuggersReadThem)
{
    EXPECT_EQ(std::size(rtifhal_port_vlan), 105U);
    EXPECT_EQ(sizeof(rtifhal_port_vlan_entry_t), 4U + 512U);
    EXPECT_EQ(offsetof(rtifhal_port_vlan_entry_t, vlan_bitmap), 4U);
    EXPECT_EQ(std::size(rtifhal_vlan_type_count), 4096U);
    EXPECT_EQ(sizeof(rtifhal_vlan_type_count_entry_t), 4U + 32U + 4U + 4U);
    EXPECT_EQ(offsetof(rtifhal_vlan_type_count_entry_t, l3pbmp), 4U);
    EXPECT_EQ(offsetof(rtifhal_vlan_type_count_entry_t, svi), 36U);
    EXPECT_EQ(offsetof(rtifhal_vlan_type_count_entry_t, l2_vlan), 40U);
}

TEST_F(VlanAccounting, UntouchedVlanHasNoUses)
{
    for (const std::uint16_t vlan : std::initializer_list<std::uint16_t>{0, 1, 4094, 4095}) {
        EXPECT_EQ(rtifhal_is_vlan_svi(vlan), 0);
        EXPECT_EQ(rtifhal_subint_count_vlan(vlan), 0);
        EXPECT_TRUE(ports_of(rtifhal_l3pbmp_vlan(vlan)).empty());
    }
    expect_calls({});
    expect_messages({});
}

TEST_F(VlanAccounting, AccessorsReadTheEntryOfTheirVlan)
{
    rtifhal_vlan_type_count[4095].subint_count = 3;
    rtifhal_vlan_type_count[4095].l3pbmp.pbits[3] = 0x101;
    rtifhal_vlan_type_count[4095].svi = 1;
    EXPECT_EQ(rtifhal_subint_count_vlan(4095), 3);
    EXPECT_EQ(ports_of(rtifhal_l3pbmp_vlan(4095)), (std::vector<int>{96, 104}));
    EXPECT_EQ(rtifhal_is_vlan_svi(4095), 1);
    EXPECT_EQ(rtifhal_subint_count_vlan(4094), 0);
    EXPECT_EQ(rtifhal_is_vlan_svi(4094), 0);
}

TEST_F(VlanAccounting, PortsOfAVlanAreACopy)
{
    rtifhal_vlan_type_count[10].l3pbmp.pbits[0] = 0x20;
    bcm_pbmp_t copy = rtifhal_l3pbmp_vlan(10);
    pbmp_add(copy, 6);
    EXPECT_EQ(ports_of(copy), (std::vector<int>{5, 6}));
    EXPECT_EQ(ports_of(rtifhal_vlan_type_count[10].l3pbmp), (std::vector<int>{5}));
}

TEST_F(VlanAccounting, L2MarkSetTwiceIsStillOne)
{
    rtifhal_set_l2_vlan(100);
    rtifhal_set_l2_vlan(100);
    EXPECT_EQ(rtifhal_vlan_type_count[100].l2_vlan, 1);
    EXPECT_EQ(rtifhal_vlan_type_count[100].svi, 0);
    EXPECT_EQ(rtifhal_vlan_type_count[100].subint_count, 0);
    expect_calls({});
}

TEST_F(VlanAccounting, SviMarkSetTwiceIsStillOne)
{
    rtifhal_set_svi(100);
    rtifhal_set_svi(100);
    EXPECT_EQ(rtifhal_is_vlan_svi(100), 1);
    EXPECT_EQ(rtifhal_vlan_type_count[100].l2_vlan, 0);
    EXPECT_EQ(rtifhal_is_vlan_svi(99), 0);
    EXPECT_EQ(rtifhal_is_vlan_svi(101), 0);
    expect_calls({});
}

TEST_F(VlanAccounting, VlanAboveTheLastHasNoUsesAndTakesNone)
{
    for (const std::uint16_t vlan : {ABOVE_LAST_VLAN, std::uint16_t{65535}}) {
        rtifhal_set_l2_vlan(vlan);
        rtifhal_set_svi(vlan);
        EXPECT_EQ(rtifhal_is_vlan_svi(vlan), 0);
        EXPECT_EQ(rtifhal_subint_count_vlan(vlan), 0);
        EXPECT_TRUE(ports_of(rtifhal_l3pbmp_vlan(vlan)).empty());
    }
    EXPECT_TRUE(all_zero(rtifhal_vlan_type_count, sizeof rtifhal_vlan_type_count));
}

TEST_F(VlanAccounting, VlanOfAPortIsTheBitFromTheTopOfItsByte)
{
    set_port_vlan(104, 0);
    set_port_vlan(104, 10);
    set_port_vlan(104, 4095);
    EXPECT_EQ(rtifhal_port_vlan[104].vlan_bitmap[0], 0x80);
    EXPECT_EQ(rtifhal_port_vlan[104].vlan_bitmap[1], 0x20);
    EXPECT_EQ(rtifhal_port_vlan[104].vlan_bitmap[511], 0x01);
    EXPECT_EQ(count_port_vlans(104), 3);
    clear_port_vlan(104, 10);
    EXPECT_EQ(rtifhal_port_vlan[104].vlan_bitmap[1], 0);
    EXPECT_EQ(count_port_vlans(104), 2);
    EXPECT_TRUE(all_zero(rtifhal_port_vlan, 104 * sizeof rtifhal_port_vlan[0]));
}

TEST_F(VlanAccounting, VlansOfOneByteStandBesideEachOther)
{
    set_port_vlan(5, 100);
    set_port_vlan(5, 103);
    EXPECT_EQ(rtifhal_port_vlan[5].vlan_bitmap[12], 0x09);
    clear_port_vlan(5, 100);
    EXPECT_EQ(rtifhal_port_vlan[5].vlan_bitmap[12], 0x01);
}

TEST_F(VlanAccounting, EachVlanOfAPortIsCountedAlone)
{
    for (std::uint16_t vlan = 0; vlan < ABOVE_LAST_VLAN; ++vlan) {
        set_port_vlan(5, vlan);
        EXPECT_EQ(count_port_vlans(5), 1) << vlan;
        clear_port_vlan(5, vlan);
    }
    EXPECT_EQ(count_port_vlans(5), 0);
}

TEST_F(VlanAccounting, AllVlansOfAPortAreCountedAndNoneOfItsNeighbours)
{
    for (const int port : {4, 6}) {
        for (std::uint16_t vlan = 0; vlan < ABOVE_LAST_VLAN; ++vlan) {
            set_port_vlan(port, vlan);
        }
        EXPECT_EQ(count_port_vlans(port), 4096);
    }
    EXPECT_EQ(count_port_vlans(5), 0);
}

TEST_F(VlanAccounting, OnlyPorts0To104HaveAnEntry)
{
    EXPECT_TRUE(has_port_vlan_entry(0));
    EXPECT_TRUE(has_port_vlan_entry(104));
    for (const int port : {-1, 105, 256, 1 << 30, -(1 << 30)}) {
        EXPECT_FALSE(has_port_vlan_entry(port)) << port;
    }
}

TEST_F(VlanAccounting, VlanAboveTheLastHasNoBitInAPortsEntry)
{
    set_port_vlan(5, ABOVE_LAST_VLAN);
    set_port_vlan(5, 65535);
    EXPECT_TRUE(all_zero(rtifhal_port_vlan, sizeof rtifhal_port_vlan));
}

TEST_F(VlanAccounting, EachPortHasABitOfItsOwnInASet)
{
    for (int port = 0; port < 256; ++port) {
        bcm_pbmp_t pbmp = {};
        pbmp_add(pbmp, port);
        EXPECT_EQ(ports_of(pbmp), std::vector<int>{port});
        for (int other = 0; other < 256; ++other) {
            EXPECT_EQ(pbmp_has(pbmp, other), other == port) << port << ' ' << other;
        }
        pbmp_remove(pbmp, port);
        EXPECT_TRUE(ports_of(pbmp).empty()) << port;
    }
}

TEST_F(VlanAccounting, PortsOutside0To255HaveNoPlaceInASet)
{
    bcm_pbmp_t pbmp = {};
    for (const int port : {0, 31, 32, 255}) {
        pbmp_add(pbmp, port);
        EXPECT_TRUE(pbmp_has(pbmp, port));
    }
    for (const int port : {-1, 256, 1 << 30}) {
        pbmp_add(pbmp, port);
        pbmp_remove(pbmp, port);
        EXPECT_FALSE(pbmp_has(pbmp, port));
    }
    pbmp_remove(pbmp, 31);
    EXPECT_EQ(ports_of(pbmp), (std::vector<int>{0, 32, 255}));
}

} // namespace rtifhal_test::accounting
