/*
 * subint_chip_test.cpp: what the chip holds of subinterfaces: their VLAN is
 * only a key, shared by all ports that use it, and the translation tells whose
 * a frame is.
 *
 * The calls that lead there are in subint_add_test.cpp and its neighbours.
 */
#include "support/subint_roads.h"

#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include "chip/translation_lookup.h"

namespace rtifhal_test::subint_chip
{

namespace
{

using namespace subint_road;
using simswitch::chip::find_translation;

/** Ports 5 and 6, each with a subinterface of VLAN 100. */
class SubintsInOneVlan : public SubintOnPort
{
protected:
    SubintsInOneVlan()
    {
        rtifhal_vlan_create(0, 4094, 6);
        main6->lif.subint_tree = subs6.get();
        sw.directory.add(main6->get());
        sub6 = subinterface(*main6, 10);
        subs6.insert(sub6->get());
        brought_up(*sub);
        brought_up(*sub6);
    }
    void taken_down(Lif &subinterface)
    {
        EXPECT_EQ(rtifhal_trident_del_subint(subinterface.get(), 0, 1), 0);
        sw.end_request();
    }
    std::string members() const
    {
        const auto *vlan = sw.chip.vlans.find(VLAN);
        return vlan == nullptr ? "no VLAN" : vlan->members.text();
    }
    /** The ingress interface of a frame with that tag, 0 where none is told. */
    int ingress_of(int port, int vlan = VLAN) const
    {
        const auto found = find_translation(sw.chip, port, vlan);
        return found ? found->action.ingress_if : 0;
    }

    simswitch::services::Tree subs6;
    std::unique_ptr<Lif> main6 = port(6);
    std::unique_ptr<Lif> sub6;
};

/** A subinterface of port-channel 7 with members 5, 6 and 9. */
class SubintOnMembers : public SubintOnPortChannel
{
protected:
    SubintOnMembers() { brought_up(); }
};

} // namespace

TEST_F(SubintsInOneVlan, ShareTheVlanThatCountsBoth)
{
    EXPECT_EQ(members(), "{0,5,6}");
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->untagged.text(), "{}");
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 2);
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->blocks.broadcast.text(), "{0,5,6}");
}

TEST_F(SubintsInOneVlan, AreToldApartByTheirTranslations)
{
    EXPECT_EQ(sw.chip.vlan_translations.size(), 2U);
    EXPECT_EQ(ingress_of(5), sub->record()->l3intf_id);
    EXPECT_EQ(ingress_of(6), sub6->record()->l3intf_id);
    EXPECT_NE(ingress_of(5), ingress_of(6));
    EXPECT_EQ(ingress_of(5, 101), 0);
}

TEST_F(SubintsInOneVlan, EachHasItsObjects)
{
    for (const int iif : {3, 4}) {
        ASSERT_NE(sw.chip.l3_interfaces.find(iif), nullptr);
        EXPECT_NE(sw.chip.l3_ingresses.find(iif), nullptr);
    }
    EXPECT_EQ(sw.chip.ports.vlan_control(5, 14), 8);
    EXPECT_EQ(sw.chip.ports.vlan_control(6, 14), 8);
}

TEST_F(SubintsInOneVlan, FrameIsRoutedInTheInternalVlan)
{
    const auto found = find_translation(sw.chip, 5, VLAN);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->action.new_outer_vlan, 4094);
    EXPECT_EQ(found->action.outer_tag_action, 2);
    EXPECT_EQ(found->key.inner_vlan, 65535);
}

TEST_F(SubintsInOneVlan, FirstToGoLeavesTheVlanToTheOther)
{
    taken_down(*sub);
    EXPECT_EQ(members(), "{0,6}");
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
    EXPECT_EQ(ingress_of(5), 0);
    EXPECT_EQ(ingress_of(6), 4);
    EXPECT_EQ(sw.chip.l3_interfaces.find(3), nullptr);
}

TEST_F(SubintsInOneVlan, SecondToGoEndsTheVlan)
{
    taken_down(*sub);
    taken_down(*sub6);
    EXPECT_EQ(members(), "no VLAN");
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
    EXPECT_EQ(sw.chip.vlan_translations.size(), 0U);
    EXPECT_EQ(sw.chip.vlans.find(4094)->members.text(), "{0,5,6}");
    EXPECT_EQ(sw.chip.l3_interfaces.find(4), nullptr);
    EXPECT_EQ(sw.chip.l3_ingresses.find(4), nullptr);
}

TEST_F(SubintsInOneVlan, OneThatComesBackMakesTheVlanAnew)
{
    taken_down(*sub);
    taken_down(*sub6);
    brought_up(*sub6);
    EXPECT_EQ(members(), "{0,6}");
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->stg, 2);
    EXPECT_EQ(ingress_of(6), sub6->record()->l3intf_id);
}

TEST_F(SubintOnMembers, OneTranslationServesEveryMember)
{
    EXPECT_EQ(sw.chip.vlan_translations.size(), 1U);
    for (const int member : {5, 6, 9}) {
        const auto found = find_translation(sw.chip, member, VLAN);
        ASSERT_TRUE(found) << member;
        EXPECT_EQ(found->key.gport, 0xc000029);
        EXPECT_EQ(found->action.ingress_if, IIF);
        EXPECT_EQ(sw.chip.ports.vlan_control(member, 14), 8);
    }
    EXPECT_FALSE(find_translation(sw.chip, 7, VLAN));
}

TEST_F(SubintOnMembers, VlanCountsEveryMember)
{
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->members.text(), "{0,5,6,9}");
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 3);
    EXPECT_EQ(sw.chip.l3_interfaces.size(), 1U);
}

TEST_F(SubintOnMembers, DeleteLeavesNothingOfIt)
{
    EXPECT_EQ(del(*sub, 1), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.vlan_translations.size(), 0U);
    EXPECT_EQ(sw.chip.vlans.find(VLAN), nullptr);
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
    EXPECT_EQ(sw.chip.l3_interfaces.size(), 0U);
    EXPECT_EQ(sw.chip.l3_ingresses.size(), 0U);
    ASSERT_NE(sw.chip.trunks.find(TRUNK), nullptr);
    EXPECT_EQ(sw.chip.trunks.find(TRUNK)->members.size(), 3U);
}

TEST_F(SubintOnMembers, TrunkThatCantBeReadLeavesTheChipWithVlanAndTranslation)
{
    fail("bcm_trunk_get", -7);
    EXPECT_EQ(del(*sub, 1), 0);
    sw.end_request();
    EXPECT_TRUE(find_translation(sw.chip, 6, VLAN));
    EXPECT_NE(sw.chip.vlans.find(VLAN), nullptr);
    EXPECT_NE(sw.chip.l3_interfaces.find(IIF), nullptr);
    EXPECT_EQ(sub->lif.lif_state, 4U);
}

} // namespace rtifhal_test::subint_chip
