/*
 * l3_cache_test.cpp: L3 interfaces and ingress objects in the wrappers, and
 * what the platform layer tells of the chip.
 */
#include "fwm/wrappers.h"
#include "switch.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

constexpr std::uint32_t WITH_ID = 0x40;
constexpr std::uint32_t REPLACE = 0x100;

struct L3Cache : testing::Test {
    Switch host{{.limits = {.l3_interfaces = 2, .l3_ingresses = 2}, .state_dir = {}}};

    static int create(int id, std::uint32_t flags, bcm_vlan_t vlan = 4094)
    {
        bcm_l3_intf_t intf{};
        intf.l3a_flags = flags;
        intf.l3a_intf_id = id;
        intf.l3a_vid = vlan;
        return rtifhal_bcm_l3_intf_create(0, &intf);
    }
    static int write_ingress(int iif, int vrf)
    {
        bcm_l3_ingress_t ingress{};
        ingress.vrf = vrf;
        return rtifhal_bcm_l3_ingress_create(0, &ingress, &iif);
    }
    std::string last_reason() const { return host.journal.records().back().reason; }
};

} // namespace

TEST_F(L3Cache, InterfaceReachesTheChipAtTheFlush)
{
    EXPECT_EQ(create(3, WITH_ID), 0);
    EXPECT_EQ(host.chip.l3_interfaces.find(3), nullptr);
    host.end_request();
    ASSERT_NE(host.chip.l3_interfaces.find(3), nullptr);
    EXPECT_EQ(host.chip.l3_interfaces.find(3)->vlan, 4094);
    EXPECT_EQ(host.chip.l3_interfaces.find(3)->flags, 0U);
}

TEST_F(L3Cache, TakenIdNeedsTheReplaceFlag)
{
    create(3, WITH_ID, 10);
    EXPECT_EQ(create(3, WITH_ID, 20), -8);
    EXPECT_EQ(last_reason(), "L3 interface 3 exists already");
    EXPECT_EQ(create(3, WITH_ID | REPLACE, 30), 0);
    host.end_request();
    EXPECT_EQ(host.chip.l3_interfaces.find(3)->vlan, 30);
}

TEST_F(L3Cache, ReplaceCreatesWhereThereIsNone)
{
    EXPECT_EQ(create(3, REPLACE), 0);
    host.end_request();
    EXPECT_NE(host.chip.l3_interfaces.find(3), nullptr);
}

TEST_F(L3Cache, WithoutAnIdTheLowestFreeOneIsGiven)
{
    create(0, WITH_ID);
    bcm_l3_intf_t intf{};
    EXPECT_EQ(rtifhal_bcm_l3_intf_create(0, &intf), 0);
    EXPECT_EQ(intf.l3a_intf_id, 1);
    EXPECT_EQ(host.journal.records().back().outputs, "id=1");
}

TEST_F(L3Cache, FullTableRefusesAtOnce)
{
    create(3, WITH_ID);
    create(4, WITH_ID);
    EXPECT_EQ(create(5, WITH_ID), -6);
    EXPECT_EQ(last_reason(), "L3 interface table full: 2 of 2");
    EXPECT_EQ(create(4, WITH_ID | REPLACE), 0);
    host.end_request();
    EXPECT_EQ(host.chip.l3_interfaces.size(), 2U);
}

TEST_F(L3Cache, ArgumentsOutOfRange)
{
    EXPECT_EQ(create(8192, WITH_ID), -4);
    EXPECT_EQ(create(-1, WITH_ID | REPLACE), -4);
    EXPECT_EQ(create(3, WITH_ID, 4096), -4);
    EXPECT_EQ(write_ingress(8192, 1), -4);
    EXPECT_EQ(host.wrappers.pending(), 0U);
}

TEST_F(L3Cache, DeleteOfAnUnknownInterfaceIsRefusedBeforeTheFlush)
{
    bcm_l3_intf_t intf{};
    intf.l3a_intf_id = 3;
    EXPECT_EQ(rtifhal_bcm_l3_intf_delete(0, &intf), -7);
    create(3, WITH_ID);
    EXPECT_EQ(rtifhal_bcm_l3_intf_delete(0, &intf), 0);
    EXPECT_EQ(rtifhal_bcm_l3_intf_delete(0, &intf), -7);
    EXPECT_EQ(host.wrappers.flush().text, "2 writes");
    EXPECT_EQ(host.chip.l3_interfaces.size(), 0U);
}

TEST_F(L3Cache, WhatTheCacheDoesntKnowTheChipRefusesAtTheFlush)
{
    host.chip.l3_interfaces.create(3, {});
    EXPECT_EQ(create(3, WITH_ID), 0);
    EXPECT_EQ(host.wrappers.flush().text,
              "1 write, 1 refused: l3 interface 3 create: L3 interface 3 exists already");
}

TEST_F(L3Cache, IngressIsCachedAtOnceAndWrittenAtTheFlush)
{
    EXPECT_EQ(rtifhal_bcm_l3_ingress_get_from_cache(3), nullptr);
    EXPECT_EQ(write_ingress(3, 7), 0);
    ASSERT_NE(rtifhal_bcm_l3_ingress_get_from_cache(3), nullptr);
    EXPECT_EQ(rtifhal_bcm_l3_ingress_get_from_cache(3)->vrf, 7);
    EXPECT_EQ(host.chip.l3_ingresses.find(3), nullptr);
    host.end_request();
    EXPECT_EQ(host.chip.l3_ingresses.find(3)->vrf, 7);
}

TEST_F(L3Cache, IngressIsRewrittenUnderItsNumber)
{
    write_ingress(3, 7);
    EXPECT_EQ(write_ingress(3, 8), 0);
    EXPECT_EQ(write_ingress(4, 9), 0);
    EXPECT_EQ(write_ingress(5, 9), -6);
    host.end_request();
    EXPECT_EQ(host.chip.l3_ingresses.find(3)->vrf, 8);
    EXPECT_EQ(host.chip.l3_ingresses.size(), 2U);
}

TEST_F(L3Cache, DestroyedIngressIsGoneFromCacheAndChip)
{
    EXPECT_EQ(rtifhal_bcm_l3_ingress_destroy(0, 0), -7);
    EXPECT_EQ(last_reason(), "L3 ingress object 0 does not exist");
    write_ingress(3, 7);
    EXPECT_EQ(rtifhal_bcm_l3_ingress_destroy(0, 3), 0);
    EXPECT_EQ(rtifhal_bcm_l3_ingress_get_from_cache(3), nullptr);
    host.end_request();
    EXPECT_EQ(host.chip.l3_ingresses.size(), 0U);
}

TEST_F(L3Cache, RebuiltCachesHoldWhatTheChipHolds)
{
    host.chip.l3_interfaces.create(3, {});
    host.chip.l3_ingresses.create(3, {.vrf = 7});
    host.chip.vlans.set_controls(1, {.vrf = 5});
    host.chip.vlans.set_blocks(1, {.broadcast = {5}});
    host.wrappers.rebuild_caches();
    EXPECT_EQ(create(3, WITH_ID), -8);
    EXPECT_EQ(host.wrappers.l3_ingress(3)->vrf, 7);
    EXPECT_EQ(host.wrappers.vlan_controls(1)->vc_vrf, 5U);
    EXPECT_EQ(host.wrappers.vlan_blocks(1).broadcast.pbits[0], 1U << 5);
}

TEST_F(L3Cache, CallsInTheJournal)
{
    write_ingress(3, 7);
    rtifhal_bcm_l3_ingress_get_from_cache(3);
    rtifhal_bcm_l3_ingress_get_from_cache(4);
    EXPECT_EQ(host.journal.calls(),
              (std::vector<std::string>{
                  "rtifhal_bcm_l3_ingress_create(0, {flags=0x0 vrf=7 urpf=0 class=0 ipmc=0 qos=0}, "
                  "3) = 0",
                  "rtifhal_bcm_l3_ingress_get_from_cache(3) = record",
                  "rtifhal_bcm_l3_ingress_get_from_cache(4) = null"}));
}

TEST(Platform, TellsTheChipsKindAndSizes)
{
    Switch host({.chip = chip::Kind::trident2, .limits = {.rule_region = 64}, .state_dir = {}});
    int size = 0;
    EXPECT_EQ(rtifhal_get_bcm_unit(0), 0);
    EXPECT_NE(bcm_pd_is_device_trident2(), 0);
    EXPECT_EQ(fwmpd_trident_get_sup_tcam_default_size(&size), 0);
    EXPECT_EQ(size, 64);
    EXPECT_EQ(host.journal.calls().back(),
              "fwmpd_trident_get_sup_tcam_default_size() = 0 [size=64]");
}

TEST(Platform, NumbersPortsFromOne)
{
    Switch host;
    EXPECT_EQ(bcm_pd_is_device_trident2(), 0);
    EXPECT_EQ(fwmpd_asic_cpu_port, 0);
    EXPECT_EQ(fwmpd_pif_to_asic_port(0), 1);
    EXPECT_EQ(fwmpd_pif_to_asic_port(103), 104);
}

TEST(Platform, InbandSetUpIsCounted)
{
    Switch host;
    EXPECT_EQ(fwmpd_inband_init(), 0);
    EXPECT_EQ(fwmpd_inband_init(), 0);
    EXPECT_EQ(host.host.inband_inits, 2U);
}

TEST(Platform, AllocatesGroupsAtOnceUntilNoneIsLeft)
{
    Switch host({.limits = {.stgs = 2}, .state_dir = {}});
    int stg = 0;
    EXPECT_EQ(fwmpd_allocate_stg(4094, &stg), 0);
    EXPECT_EQ(stg, 2);
    EXPECT_NE(host.chip.stgs.find(2), nullptr);
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
    EXPECT_EQ(fwmpd_allocate_stg(4094, &stg), -6);
    EXPECT_EQ(stg, 2);
}

TEST(Platform, TellsTheGroupOfAVlan)
{
    Switch host;
    int stg = 0;
    host.chip.stgs.create(stg);
    host.chip.vlans.create(100);
    host.chip.stgs.add_vlan(stg, 100);
    EXPECT_EQ(fwmpd_get_vlan_stg(100), 2);
    EXPECT_EQ(fwmpd_get_vlan_stg(1), 1);
    EXPECT_EQ(fwmpd_get_vlan_stg(200), 0);
    EXPECT_EQ(host.journal.records().back().reason, "VLAN 200 does not exist");
}

} // namespace simswitch
