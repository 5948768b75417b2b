/*
 * vxlan_wrappers_test.cpp: the platform layer's VXLAN virtual ports: which words
 * of the records it reads, and what it leaves in the journal.
 */
#include "switch.h"

#include <fwmpd/vxlan.h>

#include <array>
#include <cstring>
#include <gmock/gmock.h>

namespace simswitch
{

namespace
{

using Calls = std::vector<std::string>;

constexpr std::uint32_t IF_INDEX = 0x1a000000;

struct VxlanWrappers : testing::Test {
    Switch host;
    std::array<std::uint32_t, 4> vpn{0xdead0001, 5000, 28673, 0xcafe};
    std::array<std::uint32_t, 2> egress{0xdead0002, 12};
    std::array<unsigned char, 34> port{};

    VxlanWrappers()
    {
        put(4, 0x2fU);
        put(24, 5U);
        put(28, 2U);
        put(32, std::uint16_t{100});
    }
    template <class Value> void put(std::size_t offset, Value value)
    {
        std::memcpy(port.data() + offset, &value, sizeof value);
    }
    std::uint32_t first_word() const
    {
        std::uint32_t word = 0;
        std::memcpy(&word, port.data(), sizeof word);
        return word;
    }
    int create(int unit = 0)
    {
        return rtifhal_bcm_vxlan_port_create(unit, IF_INDEX, vpn.data(), egress.data(), port.data(),
                                             66);
    }
    std::string last_reason() const { return host.journal.records().back().reason; }
};

} // namespace

TEST_F(VxlanWrappers, CreateReadsTheToldWordsAndStoresTheId)
{
    EXPECT_EQ(create(), 0);
    EXPECT_EQ(*host.chip.vxlan_ports.find(1), (chip::VxlanPort{.if_index = IF_INDEX,
                                                               .vpn = 28673,
                                                               .vn_id = 5000,
                                                               .mc_index = 0xcafe,
                                                               .egress_if = 12,
                                                               .flags = 0x2f,
                                                               .criteria = 2,
                                                               .match_port = 5,
                                                               .match_vlan = 100}));
    EXPECT_EQ(first_word(), 1U);
    EXPECT_EQ(host.journal.calls(),
              Calls{"rtifhal_bcm_vxlan_port_create(0, 0x1a000000, vpn 28673 vn 5000 port 5 vlan "
                    "100 criteria 2 flags 0x2f egress 12 multicast 0xcafe of 0x1a000000, 66) = 0 "
                    "[id=1]"});
}

TEST_F(VxlanWrappers, GoToTheChipAtOnce)
{
    create();
    EXPECT_EQ(host.wrappers.pending(), 0U);
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
    EXPECT_EQ(create(), -8);
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
    rtifhal_bcm_vxlan_port_delete(0, 28673, 1, 0);
    EXPECT_EQ(host.wrappers.chip_writes(), 2U);
}

TEST_F(VxlanWrappers, RefusedCreateLeavesTheRecordAlone)
{
    put(0, 0x77777777U);
    put(24, 256U);
    EXPECT_EQ(create(), -4);
    EXPECT_EQ(last_reason(), "port 256 is not in 0..255");
    put(24, 5U);
    EXPECT_EQ(create(1), -3);
    host.journal.arm({.function = "rtifhal_bcm_vxlan_port_create", .code = -9});
    EXPECT_EQ(create(), -9);
    EXPECT_EQ(first_word(), 0x77777777U);
    EXPECT_EQ(host.chip.vxlan_ports.size(), 0U);
}

TEST_F(VxlanWrappers, FullTableRefuses)
{
    Switch small({.limits = {.vxlan_ports = 1}});
    EXPECT_EQ(create(), 0);
    put(32, std::uint16_t{101});
    EXPECT_EQ(create(), -6);
}

TEST_F(VxlanWrappers, DeleteNamesVpnAndPort)
{
    create();
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(0, 28674, 1, 66), -7);
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(0, 28673, 2, 66), -7);
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(1, 28673, 1, 66), -3);
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(0, 28673, 1, 66), 0);
    EXPECT_EQ(host.journal.calls().back(), "rtifhal_bcm_vxlan_port_delete(0, 28673, 1, 66) = 0");
    EXPECT_EQ(host.chip.vxlan_ports.size(), 0U);
}

TEST_F(VxlanWrappers, WordsThatDontFitNameNoPort)
{
    create();
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(0, 28673, 0x100000001, 0), -7);
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(0, 0x100000000 + 28673, 1, 0), -7);
    EXPECT_EQ(rtifhal_bcm_vxlan_port_delete(0, 28673, 0xffffffff, 0), -7);
    EXPECT_EQ(host.chip.vxlan_ports.size(), 1U);
}

} // namespace simswitch
