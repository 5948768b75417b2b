/*
 * restore_svi_test.cpp: the restore of an SVI: its VLAN's cached controls, and
 * that the VLAN is an SVI's.
 */
#include "support/restore_roads.h"

#include <fmt/format.h>

#include <cstring>

namespace rtifhal_test::restore_svi
{

namespace
{

using namespace restore_road;

constexpr int IIF = 7;
constexpr std::uint16_t VLAN = 100;

std::string cache_asked(int vlan, bool found = true)
{
    return fmt::format("fwmpd_bcm_vlan_control_vlan_get_from_cache({}) = {}", vlan,
                       found ? "record" : "null");
}

/** Which families route, and in which VRFs. */
struct Vrfs {
    std::uint32_t ipv4_en;
    std::uint32_t ipv6_en;
    std::uint16_t vrf;
    std::uint16_t ipv6_vrf;
    std::uint32_t expected;
};

class RestoreSvi : public RestoreTest
{
protected:
    RestoreSvi()
    {
        globals_restored();
        cached() = {.vc_vrf = 99,
                    .vc_ingress_if = 98,
                    .vc_flags = 0x400230,
                    .vc_class = 6,
                    .vc_urpf_mode = 97,
                    .reserved = {1, 2, 3}};
    }

    bcm_vlan_control_vlan_t &cached(int vlan = VLAN) { return *sw.wrappers.vlan_controls(vlan); }

    /** The record that is expected, with all that a restore leaves alone. */
    static bcm_vlan_control_vlan_t controls(std::uint32_t vrf, std::uint32_t iif,
                                            std::uint32_t urpf)
    {
        return {.vc_vrf = vrf,
                .vc_ingress_if = iif,
                .vc_flags = 0x400230,
                .vc_class = 6,
                .vc_urpf_mode = urpf,
                .reserved = {1, 2, 3}};
    }

    void expect_cached(const bcm_vlan_control_vlan_t &expected)
    {
        EXPECT_EQ(std::memcmp(&cached(), &expected, sizeof expected), 0)
            << "vrf " << cached().vc_vrf << " iif " << cached().vc_ingress_if << " flags "
            << cached().vc_flags << " class " << cached().vc_class << " urpf "
            << cached().vc_urpf_mode;
    }

    std::unique_ptr<Lif> lif = svi(VLAN);
};

} // namespace

TEST_F(RestoreSvi, NumberVrfAndReversePathModeGoIntoTheCachedRecordOnly)
{
    lif->properties.vrf = 5;
    lif->properties.urpf_mode = 3;
    lif->lif.int_vlan = VLAN;
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 9), cache_asked(VLAN)});
    expect_messages({entered(*lif, VLAN, VLAN)});
    expect_cached(controls(5, IIF, 2));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
    EXPECT_EQ(lif->lif.int_vlan, VLAN);
    EXPECT_EQ(all_in_use(), "0-2 7 3584-8191");
}

TEST_F(RestoreSvi, OnlyTheSvisUseIsCounted)
{
    restore(lif->with_record(IIF));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
    EXPECT_EQ(rtifhal_vlan_type_count[VLAN].l2_vlan, 0);
    EXPECT_EQ(rtifhal_is_vlan_svi(ROUTED), 0);
    EXPECT_EQ(count_of_port_vlans(), 0);
}

TEST_F(RestoreSvi, ReversePathModesAreTheIngressObjects)
{
    const std::vector<std::pair<std::uint8_t, std::uint32_t>> modes = {{0, 0}, {1, 0}, {2, 1},
                                                                       {3, 2}, {4, 0}, {255, 0}};
    lif->with_record(IIF);
    for (const auto &[mode, expected] : modes) {
        lif->properties.urpf_mode = mode;
        cached().vc_urpf_mode = 97;
        EXPECT_EQ(restore(*lif), 0);
        EXPECT_EQ(cached().vc_urpf_mode, expected) << "urpf_mode " << int{mode};
    }
}

TEST_F(RestoreSvi, VrfIsThatOfTheFirstFamilyThatRoutes)
{
    lif->with_record(IIF);
    for (const Vrfs &row :
         {Vrfs{1, 0, 5, 6, 5}, Vrfs{1, 1, 5, 6, 5}, Vrfs{2, 0, 5, 6, 5}, Vrfs{0, 1, 5, 6, 6},
          Vrfs{0, 8, 5, 6, 6}, Vrfs{1, 0, 0, 6, 1}, Vrfs{1, 1, 0, 6, 1}, Vrfs{0, 1, 5, 0, 1},
          Vrfs{0, 0, 5, 6, 0}, Vrfs{0, 0, 0, 0, 0}}) {
        lif->properties.ipv4_en = row.ipv4_en;
        lif->properties.ipv6_en = row.ipv6_en;
        lif->properties.vrf = row.vrf;
        lif->properties.ipv6_vrf = row.ipv6_vrf;
        cached().vc_vrf = 99;
        EXPECT_EQ(restore(*lif), 0);
        EXPECT_EQ(cached().vc_vrf, row.expected)
            << fmt::format("ipv4_en {} ipv6_en {} vrf {} ipv6_vrf {}", row.ipv4_en, row.ipv6_en,
                           row.vrf, row.ipv6_vrf);
    }
}

TEST_F(RestoreSvi, MulticastRoutingAloneIsNoFamily)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv4_mc_en = 1;
    lif->properties.vrf = 5;
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    EXPECT_EQ(cached().vc_vrf, 0U);
}

TEST_F(RestoreSvi, WithoutPropertiesModeIs0AndVrf1)
{
    lif->properties.vrf = 5;
    lif->properties.urpf_mode = 3;
    EXPECT_EQ(restore(lif->with_record(IIF).without_properties()), 0);
    expect_calls({called::type(*lif, 9), cache_asked(VLAN)});
    expect_cached(controls(1, IIF, 0));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
}

TEST_F(RestoreSvi, WithoutARecordTheCachedIngressInterfaceStays)
{
    lif->properties.vrf = 5;
    for (const bool bare : {false, true}) {
        const auto other = svi(VLAN);
        other->properties = lif->properties;
        EXPECT_EQ(restore(bare ? other->with_bare_context() : *other), 0);
        expect_cached(controls(5, 98, 0));
    }
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
    EXPECT_EQ(all_in_use(), "0-2 3584-8191");
}

TEST_F(RestoreSvi, ParkedNumberIsNotTheVlansIngressInterface)
{
    lif->properties.vrf = 5;
    EXPECT_EQ(restore(lif->with_parked(50)), 0);
    expect_calls({called::type(*lif, 9), cache_asked(VLAN)});
    expect_cached(controls(5, 0, 0));
    EXPECT_FALSE(in_use(50));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
}

TEST_F(RestoreSvi, WithoutACachedRecordOnlyTheNumberIsTakenUp)
{
    sw.wrappers.forget_vlan_control(VLAN);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 9), cache_asked(VLAN, false)});
    expect_messages({entered(*lif, VLAN, 0)});
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestoreSvi, VlanIsTheEncapsulationVlanAndNotTheOwnOne)
{
    lif->lif.vlan = 200;
    lif->lif.int_vlan = 300;
    cached(200).vc_vrf = 42;
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 9), cache_asked(VLAN)});
    EXPECT_EQ(cached(200).vc_vrf, 42U);
    EXPECT_EQ(rtifhal_is_vlan_svi(200), 0);
    EXPECT_EQ(lif->lif.int_vlan, 300);
}

TEST_F(RestoreSvi, WithoutAnEncapsulationVlanThereIsNoRecordToChange)
{
    lif->lif.si_encap_vlan = 0;
    cached(ROUTED).vc_vrf = 42;
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 9), cache_asked(0, false)});
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    EXPECT_EQ(cached(ROUTED).vc_vrf, 42U);
    EXPECT_EQ(rtifhal_is_vlan_svi(ROUTED), 0);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestoreSvi, VlanAbove4095HasNoRecord)
{
    lif->lif.si_encap_vlan = 4096;
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 9), cache_asked(4096, false)});
    expect_reports({});
}

TEST_F(RestoreSvi, RefusedTypeLeavesTheRecordAlone)
{
    fail("if_index_get_type", -1);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::no_type(*lif)});
    expect_reports(
        {report(RESTORE, "bcm_l3_ing_create(" + lif->decimal() + ") get type failed\n")});
    expect_cached(controls(99, 98, 97));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(RestoreSvi, HeldBackNumberIsInUseAgain)
{
    globals_restored({50});
    EXPECT_EQ(restore(lif->with_record(50)), 0);
    EXPECT_TRUE(in_use(50));
    EXPECT_FALSE(held_back(50));
    EXPECT_TRUE(held_back_in_config(50));
    EXPECT_EQ(cached().vc_ingress_if, 50U);
}

} // namespace rtifhal_test::restore_svi
