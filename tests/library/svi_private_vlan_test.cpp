/*
 * svi_private_vlan_test.cpp: what an SVI's coming and going means for the
 * secondaries of its VLAN: who is asked, which pairs are visited, what the
 * secondaries get.
 *
 * pvlan_svi_secondary_test.cpp has what is done to one secondary.
 */
#include "support/pvlan_roads.h"

#include "rtifhal_kelvo_trident/kinds/svi.h"

#include <functional>

namespace rtifhal_test::svi_private_vlan
{

namespace
{

using namespace svi_road;
using namespace pvlan_road;
using fhrp_road::Role;
using fhrp_road::role_asked;

class SviPrivateVlan : public PvlanTest
{
protected:
    /** The pairs of the tests: two of the primary, one of another one. */
    void all_announced()
    {
        announced({{VLAN, SECONDARY}, {OTHER_PRIMARY, OTHER_SECONDARY}, {VLAN, SECOND}});
    }
    /** The calls behind the question whether the VLAN is a primary. */
    Calls mirroring() const { return calls_after(calls(), role_asked(VLAN, Role::primary).back()); }
    /** The walk visits each secondary of the primary in the table's order. */
    static Calls visits(const std::function<Calls(int)> &visit)
    {
        Calls walk = {fhrp_road::WALK};
        for (const std::uint32_t secondary : fhrp_road::secondaries_in_order(VLAN)) {
            const Calls one = visit(static_cast<int>(secondary));
            walk.insert(walk.end(), one.begin(), one.end());
        }
        return walk;
    }
    void mirror(std::uint32_t add) { rtifhal_handle_pvlan_svi(lif->get(), add); }
};

} // namespace

TEST_F(SviPrivateVlan, UpVisitsEveryPairOfThePrimary)
{
    all_announced();
    EXPECT_EQ(add(), 0);
    const Calls walk = visits([](int vlan) { return mirrored(VLAN, vlan, IIF, 0x200); });
    EXPECT_EQ(walk.size(), 15U);
    EXPECT_EQ(mirroring(), join({walk, ordinary_end(), ingress_and_egress_added(*lif)}));
    expect_reports({});
}

TEST_F(SviPrivateVlan, UpIsInTheChipAfterTheRequest)
{
    all_announced();
    add();
    for (const std::uint16_t secondary : {SECONDARY, SECOND}) {
        const simswitch::chip::VlanControls controls = in_the_chip(secondary);
        EXPECT_EQ(controls.flags, 0xA00U); // snooping off, which only the chip knows
        EXPECT_EQ(controls.ingress_if, 3U);
        EXPECT_EQ(controls.vrf, 7U);
        EXPECT_EQ(controls.intf_class, 0U);
    }
    EXPECT_EQ(in_the_chip(OTHER_SECONDARY).flags, SWITCHED);
    EXPECT_EQ(in_the_chip(OTHER_SECONDARY).ingress_if, 0U);
}

TEST_F(SviPrivateVlan, DownTakesItBackFromEveryPair)
{
    all_announced();
    is_up();
    EXPECT_EQ(del(), 0);
    const Calls walk =
        visits([](int vlan) { return taken_back_in_two_writes(VLAN, vlan, IIF, 0x278); });
    EXPECT_EQ(mirroring(), join({walk, object_deleted(), record_released(),
                                 Calls{called::unstore(*lif), vlan_stored(VLAN)}}));
    for (const std::uint16_t secondary : {SECONDARY, SECOND}) {
        const simswitch::chip::VlanControls controls = in_the_chip(secondary);
        EXPECT_EQ(controls.flags, 0xA78U);
        EXPECT_EQ(controls.ingress_if, 0U);
        EXPECT_EQ(controls.vrf, 7U);
    }
    EXPECT_EQ(in_the_chip(OTHER_SECONDARY).flags, SWITCHED);
}

TEST_F(SviPrivateVlan, PairsStayForTheSvisReturn)
{
    all_announced();
    is_parked();
    EXPECT_EQ(fhrp_road::pairs_in_order().size(), 3U);
    EXPECT_EQ(add(0), 0);
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 3U);
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA40U); // the mark of the settling stays
}

TEST_F(SviPrivateVlan, WalkSaysWhichVlan)
{
    all_announced();
    mirror(1);
    expect_messages({trace(MIRROR, "Vlan 100\n")});
}

TEST_F(SviPrivateVlan, RefusedSecondaryStopsNeitherTheWalkNorTheAdd)
{
    all_announced();
    const auto order = fhrp_road::secondaries_in_order(VLAN);
    const auto first = static_cast<std::uint16_t>(order.at(0));
    const auto second = static_cast<std::uint16_t>(order.at(1));
    sw.wrappers.forget_vlan_control(first);
    EXPECT_EQ(add(), 0);
    expect_reports({report(SECONDARY_UPDATE, not_in_cache(first))});
    EXPECT_EQ(in_the_chip(second).ingress_if, 3U);
}

TEST_F(SviPrivateVlan, RefusedSecondaryIsNotTheDeletesAffair)
{
    all_announced();
    is_up();
    fail_when("fwmpd_bcm_vlan_control_vlan_set", "0, 101, " + record(0, 0x278), -4);
    EXPECT_EQ(del(), 0);
    expect_reports({report(SECONDARY_UPDATE, "bcm_vlan_control_vlan_set(101) failed\n")});
    EXPECT_EQ(in_the_chip(SECOND).ingress_if, 0U);
}

TEST_F(SviPrivateVlan, FailedIngressObjectIsMirroredAllTheSame)
{
    announced({{VLAN, SECONDARY}});
    fail("fwmpd_bcm_vlan_control_vlan_set", -6, 2);
    EXPECT_EQ(add(), -6);
    EXPECT_EQ(mirroring(), join({Calls{fhrp_road::WALK}, mirrored(VLAN, SECONDARY, IIF, 0x200),
                                 ordinary_end()}));
}

TEST_F(SviPrivateVlan, PrimaryWithoutAPairIsWalkedInVain)
{
    announced({{OTHER_PRIMARY, OTHER_SECONDARY}});
    mirror(1);
    expect_calls(join({role_asked(VLAN, Role::primary), Calls{fhrp_road::WALK}}));
}

TEST_F(SviPrivateVlan, TableThatWasNeverMadeIsHandedOver)
{
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(mirroring(), join({Calls{"g_hash_table_foreach(null)"}, ordinary_end(),
                                 ingress_and_egress_added(*lif)}));
    start();
    EXPECT_EQ(del(), 0);
    EXPECT_EQ(mirroring().front(), "g_hash_table_foreach(null)");
    expect_reports({});
}

TEST_F(SviPrivateVlan, PrimaryAsItsOwnSecondaryOpensAllFamiliesAndKeepsItsInterface)
{
    announced({{VLAN, VLAN}});
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(mirroring(),
              join({Calls{fhrp_road::WALK, cache_asked(VLAN), cache_asked(VLAN), called::unit(),
                          written(VLAN, controls(1, IIF, 0x400200, 6))},
                    written_directly(VLAN, controls(1, IIF, 0x400A00, 6)), ordinary_end(),
                    ingress_and_egress_added(*lif)}));
    expect_reports({});
}

TEST_F(SviPrivateVlan, PrimaryAsItsOwnSecondaryIsSettledWithoutTheSviThatGoes)
{
    announced({{VLAN, VLAN}});
    is_up();
    EXPECT_EQ(del(), 0);
    // Closed before: the first write has nothing to settle.
    EXPECT_EQ(
        mirroring(),
        join({Calls{fhrp_road::WALK, cache_asked(VLAN), cache_asked(VLAN), called::unit(),
                    cache_asked(VLAN), called::flush(), written(VLAN, controls(1, 0, 0x400278, 0))},
              written_directly(VLAN, controls(1, 0, 0x400A78, 0)), object_deleted(),
              record_released(), Calls{called::unstore(*lif), vlan_stored(VLAN)}}));
    expect_reports({});
}

TEST_F(SviPrivateVlan, SecondaryIsNotWalked)
{
    all_announced();
    vlan_is(VLAN, Role::secondary);
    mirror(1);
    expect_calls(role_asked(VLAN, Role::secondary));
    expect_messages({trace(MIRROR, "Vlan 100\n"), trace(MIRROR, "Vlan 100 is not primary\n")});
}

TEST_F(SviPrivateVlan, VlanInNoPrivateVlanIsNotWalked)
{
    all_announced();
    vlan_is(VLAN, Role::plain);
    mirror(0);
    expect_calls(role_asked(VLAN, Role::plain));
    expect_messages({trace(MIRROR, "Vlan 100\n"), trace(MIRROR, "Vlan 100 is not primary\n")});
}

TEST_F(SviPrivateVlan, VlanUnknownToTheForwardingManagerIsReportedAndTheAddGoesOn)
{
    all_announced();
    vlan_is(VLAN, Role::unknown);
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(calls_after(calls(), role_asked(VLAN, Role::unknown).back()),
              join({ordinary_end(), ingress_and_egress_added(*lif)}));
    expect_reports({report(MIRROR, "failed to get pi_vlan for vlan 100\n")});
}

TEST_F(SviPrivateVlan, VlanUnknownToTheForwardingManagerIsReportedAndTheDeleteGoesOn)
{
    is_up();
    vlan_is(VLAN, Role::unknown);
    EXPECT_EQ(del(), 0);
    expect_reports({report(MIRROR, "failed to get pi_vlan for vlan 100\n")});
    EXPECT_EQ(calls().back(), vlan_stored(VLAN));
}

TEST_F(SviPrivateVlan, WalkGoesByTheOtherVlanFieldThanTheRest)
{
    all_announced();
    switched_vlan(OTHER_PRIMARY);
    vlan_is(OTHER_PRIMARY, Role::primary);
    lif->lif.vlan = OTHER_PRIMARY; // while the encapsulation VLAN is 100
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(calls_after(calls(), role_asked(OTHER_PRIMARY, Role::primary).back()),
              join({Calls{fhrp_road::WALK}, mirrored(OTHER_PRIMARY, OTHER_SECONDARY, 0, 0x200),
                    ordinary_end(), ingress_and_egress_added(*lif)}));
    EXPECT_EQ(in_the_chip(SECONDARY).flags, SWITCHED);
}

TEST_F(SviPrivateVlan, PrimariesAreToldApartIn32Bits)
{
    announced({{0x10000U + VLAN, SECONDARY}});
    mirror(1);
    expect_calls(join({role_asked(VLAN, Role::primary), Calls{fhrp_road::WALK}}));
}

TEST_F(SviPrivateVlan, VisitorPassesOverOtherPrimaries)
{
    pvlan_svi_pair pair = {OTHER_PRIMARY, OTHER_SECONDARY};
    pvlan_svi_filter filter = {VLAN, 1};
    rtifhal_pvlan_svi_visit_pair(&pair, &pair, &filter);
    expect_calls({});
    expect_messages({});
}

TEST_F(SviPrivateVlan, VisitorHandsTheFiltersFlagOn)
{
    pvlan_svi_pair pair = {VLAN, SECONDARY};
    pvlan_svi_filter filter = {VLAN, 0};
    rtifhal_pvlan_svi_visit_pair(&pair, &pair, &filter);
    expect_calls(taken_back(VLAN, SECONDARY, 0x278));
    start();
    filter.add = 1;
    rtifhal_pvlan_svi_visit_pair(&pair, &pair, &filter);
    expect_calls(mirrored(VLAN, SECONDARY, 0, 0x240));
}

} // namespace rtifhal_test::svi_private_vlan
