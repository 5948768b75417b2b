/*
 * property_port_set_test.cpp: a routed port is brought into line with its
 * changed properties: what is called, in which order, and what the chip has
 * afterwards.
 *
 * property_port_controls_test.cpp has what each control of the port is made of,
 * property_port_failure_test.cpp what goes wrong.
 */
#include "support/property_port_roads.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>

#include <map>

namespace rtifhal_test::property_port_set
{

namespace
{

using namespace property_road;
using member_road::port_asked;
using member_road::port_opened;

class PropertyOfPort : public PortTest
{
protected:
    using PortTest::PortTest;

    /** The whole road with those values of the controls and that ingress object. */
    Calls road(Kind chip, const std::vector<int> &values, const std::string &record) const
    {
        return join({Calls{called::unit(), called::intf_init()}, port_asked(*lif, PORT),
                     Calls{called::intf_init(), called::flush(), called::flush(), object_read()},
                     object_rewritten(*lif), port_asked(*lif, PORT), port_opened(PORT, values),
                     port_ingress_rewritten(*lif, record, chip)});
    }
    /** The road of IPv4 alone. */
    Calls ip4_road(Kind chip) const { return road(chip, {1, 0, 0, 0, 0}, ingress(chip)); }
};

class PropertyOfPortOnTrident2 : public PropertyOfPort
{
protected:
    PropertyOfPortOnTrident2() : PropertyOfPort(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyOfPort, ObjectIsRewrittenThenTheControlsThenTheIngressObject)
{
    EXPECT_EQ(set(), 0);
    expect_calls(ip4_road(Kind::trident));
}

TEST_F(PropertyOfPort, EveryMessageOfTheRoad)
{
    set();
    expect_messages(join({Messages{trace(SET_PORT, " Entry: - \n")},
                          object_rewritten_messages(*lif), port_ingress_rewritten_messages(*lif)}));
}

TEST_F(PropertyOfPortOnTrident2, ObjectIsRewrittenThenTheControlsThenTheIngressObject)
{
    EXPECT_EQ(set(), 0);
    expect_calls(ip4_road(Kind::trident2));
}

TEST_F(PropertyOfPortOnTrident2, IngressObjectIsToldOfTheFamiliesAndTheFlagWord)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.ipv6_vrf = 7;
    lif->properties.ingress_flag_word = 1;
    set();
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x8426 vrf=7 urpf=0 class=64 ipmc=0 qos=0}", IIF)});
}

TEST_F(PropertyOfPort, SecondSetRepeatsTheWholeRoad)
{
    set();
    sw.end_request();
    start();
    EXPECT_EQ(set(), 0);
    expect_calls(ip4_road(Kind::trident));
}

TEST_F(PropertyOfPort, RoadIsTheSameInRestoreModeOnAFastRestartAndUnderAnSdnAgent)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    lif->properties.mpls_en = 1;
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident, {1, 0, 0, 0, 1}, ingress(Kind::trident)));
}

TEST_F(PropertyOfPort, TreeOfSubinterfacesIsWalkedOnceBetweenTheLookUpAndTheControls)
{
    subs.add(*lif, 10);
    subs.add(*lif, 20);
    EXPECT_EQ(set(), 0);
    expect_calls(join({Calls{called::unit(), called::intf_init()}, port_asked(*lif, PORT),
                       Calls{called::intf_init(), called::flush(), called::flush(), object_read()},
                       object_rewritten(*lif), port_asked(*lif, PORT),
                       Calls{"avl_get_first(tree) = record", "avl_get_next(tree, node) = record",
                             "avl_get_next(tree, node) = null"},
                       port_opened(PORT, {1, 0, 0, 0, 0}),
                       port_ingress_rewritten(*lif, ingress(Kind::trident), Kind::trident)}));
}

TEST_F(PropertyOfPort, ObjectIsReadWithWhatStillWaitsInTheQueue)
{
    // A field of the object that comes from no property: it has to last.
    bcm_l3_intf_t waiting = {};
    waiting.l3a_flags = 0x140;
    waiting.l3a_intf_id = IIF;
    waiting.l3a_tunnel_idx = 9;
    ASSERT_EQ(rtifhal_bcm_l3_intf_create(0, &waiting), 0);
    set();
    EXPECT_EQ(calls_of({WRITE_INTERFACE}).back(), object_rewritten(*lif, 9).front());
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->tunnel, 9);
}

TEST_F(PropertyOfPort, QueueIsFlushedTwiceBeforeTheReadAndNowhereElse)
{
    set();
    EXPECT_EQ(calls_of({"fwmpd_trident_batch_flush", READ_INTERFACE}),
              (Calls{called::flush(), called::flush(), object_read()}));
}

TEST_F(PropertyOfPort, ChipFollowsTheWholeContext)
{
    lif->properties = Properties{.ipv4_en = 1,
                                 .ipv4_mc_en = 1,
                                 .ipv6_en = 1,
                                 .urpf_mode = 3,
                                 .vrf = 5,
                                 .mtu = 9000,
                                 .acl_qos_label_pending = 0x21,
                                 .class_high_bit = 1,
                                 .mpls_en = 1};
    ASSERT_TRUE(sw.chip.ports.set_control(PORT, 11, 1).ok());
    EXPECT_EQ(set(), 0);
    sw.end_request();
    const auto *object = sw.chip.l3_interfaces.find(IIF);
    EXPECT_EQ(object->vrf, 5);
    EXPECT_EQ(object->mtu, 9000);
    const auto *ingress = sw.chip.l3_ingresses.find(IIF);
    EXPECT_EQ(ingress->vrf, 5);
    EXPECT_EQ(ingress->urpf_mode, 2);
    EXPECT_EQ(ingress->intf_class, 0xE1);
    EXPECT_EQ(ingress->ipmc_intf, IIF);
    EXPECT_EQ(sw.chip.ports.get(PORT).controls,
              (std::map<int, int>{{8, 1}, {9, 1}, {10, 1}, {14, 1}, {67, IIF}}));
}

TEST_F(PropertyOfPort, ChipLosesWhatThePropertiesNoLongerHave)
{
    lif->properties.ipv6_en = 1;
    lif->properties.mpls_en = 1;
    set();
    lif->properties = {};
    EXPECT_EQ(set(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.get(PORT).controls, (std::map<int, int>{{67, IIF}}));
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 0);
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->vrf, 1);
}

TEST_F(PropertyOfPort, NumberAndRecordStayAsTheyAre)
{
    set();
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 0);
    EXPECT_EQ(lif->lif.lif_state, 3U);
    EXPECT_TRUE(in_use(IIF));
    EXPECT_FALSE(in_use(IIF + 1));
}

} // namespace rtifhal_test::property_port_set
