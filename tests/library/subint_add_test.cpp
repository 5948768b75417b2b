/*
 * subint_add_test.cpp: a subinterface of a port comes up: every call and every
 * message, both chips, fast restart, and each step that can fail.
 *
 * subint_add_port_channel_test.cpp has the port-channel, subint_delete_test.cpp
 * the way down.
 */
#include "support/handed_over.h"
#include "support/subint_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::subint_add
{

namespace
{

using namespace subint_road;

const std::string ENTRY = "rtifhal_trident_add_subint";
const std::string STEP = "rtifhal_trident_subint_add";
const std::string ON_PORT = "rtifhal_trident_subint_add_int";
const std::string CREATE = "rtifhal_l3_intf_create";
const Calls ORDINARY_START = {"sysmgr_is_fastboot_restart() = 0"};

/** The interface step as a whole. */
Calls interface_step(const Lif &sub, const Lif &main, const Calls &end,
                     const std::string &vlan_flags = "0x278")
{
    return join({Calls{called::unit()}, port_asked(sub),
                 Calls{called::intf_init(), "fwmpd_bcm_switch_control_set(0, 232, 1) = 0"},
                 port_opened(PORT), Calls{called::is_port_channel(main, 0)},
                 object_created(sub.text()), vlan_made(PORT, vlan_flags), keyed(PORT),
                 translated(MODULE_PORT_5), end});
}

/** The same over what is there: the object is written again, the VLAN stays. */
Calls interface_step_again(const Lif &sub, const Lif &main)
{
    return join({Calls{called::unit()}, port_asked(sub),
                 Calls{called::intf_init(), "fwmpd_bcm_switch_control_set(0, 232, 1) = 0"},
                 port_opened(PORT), Calls{called::is_port_channel(main, 0)},
                 object_written_again(sub.text())});
}

/** The port's translation, and the end of the interface step. */
Messages translated_messages()
{
    return {
        trace("rtifhal_vlan_xlate_enable", "port 5\n"),
        trace("rtifhal_vlan_xlate", "gport 8000005, old_vid 100, new_vid 4094, l3_iif 3\n"),
        trace("rtifhal_vlan_xlate",
              "xlate enable ( gport 8000005) from-vlan 100 to-vlan 4094 if 3\n"),
        // The id is the one that the step began with.
        trace(STEP, "Created encap-vlan = 100 ifindex = 1040000a intf-id = 0 port = 5\n"),
    };
}

/** The ingress object, from the properties on. */
Messages ingress_written_messages()
{
    const std::string ingress = "rtifhal_l3_ing_create";
    return {
        trace(ingress, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
        trace(ingress, " rtifhal_bcm_l3_ing_create(0x1040000a) iif 3, vrf 1 rpf 0 class 64\n"),
        trace(ingress, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                       "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                       "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
        trace(ingress, "bcm_l3_ing_create(1040000a) success: -1, 3\n"),
    };
}

class SubintAdd : public SubintOnPort
{
protected:
    using SubintOnPort::SubintOnPort;

    /** The step on the port fails; the last report but one is `text`, then come the callers'. */
    void expect_failed_on_port(const std::string &text, int id = 0, int create = 1)
    {
        const std::vector<Message> seen = reports();
        const std::vector<Message> expected = {
            report(ON_PORT, text),
            report(STEP,
                   fmt::format("subint_add_int ({}, {:x}) port 5 failed: \n", sub->decimal(), id)),
            report(ENTRY, fmt::format("\n{}: L3LIF failed to add itf: {}, 2, {}\n", ENTRY,
                                      sub->index(), create)),
        };
        ASSERT_GE(seen.size(), expected.size());
        EXPECT_EQ(std::vector<Message>(seen.end() - 3, seen.end()), expected);
        EXPECT_EQ(sub->lif.lif_state, 0U);
    }
};

class SubintAddOnTrident2 : public SubintAdd
{
protected:
    SubintAddOnTrident2() : SubintAdd(Kind::trident2) {}
};

} // namespace

TEST_F(SubintAdd, UpMakesEveryCall)
{
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 0, 1), 0);
    expect_calls(join({interface_step(*sub, *main, ORDINARY_START),
                       ingress_and_egress(*sub, *main, Kind::trident)}));
    EXPECT_EQ(sub->lif.lif_state, 3U);
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
}

TEST_F(SubintAddOnTrident2, UpMakesEveryCall)
{
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 0, 1), 0);
    expect_calls(join({interface_step(*sub, *main, ORDINARY_START),
                       ingress_and_egress(*sub, *main, Kind::trident2)}));
}

TEST_F(SubintAdd, UpLeavesEveryMessage)
{
    rtifhal_trident_add_subint(sub->get(), 2, 1);
    const std::string ingress = "rtifhal_l3_ing_create";
    expect_messages(join({
        Messages{
            trace(ENTRY, "\nrtifhal_trident_add_subint: L3LIF: 0x1040000a, 2, 1\n"),
            trace(STEP, "ifindex = 1040000a create = 1\n"),
            trace(STEP, " bcm_port: 5 tid = -1\n"),
            trace(ON_PORT, " Entry: - \n"),
            trace(ON_PORT, "bcm_port = 5 intf-id = 0 intf_created = 0\n"),
            report(CREATE, "No context set in l3iif for intf 0x10400000\n"),
            trace(CREATE, "inl3lif->ifindex = 1040000a l3lif->ifindex = 1040000a create = 1\n"),
            trace(CREATE, "create internal_vlan = 100 si_encap_vlan = 100\n"),
            trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
            trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
            trace(CREATE, "Allocating l3lif_pd_ctxt\n"),
            trace(CREATE, "Allocating l3_pd\n"),
            trace(CREATE, " Calling bcm_l3_intf_create for 100 intf-id 3, mtu 1500, vrf 1\n"),
            trace(CREATE, "Created l3-intf with intf-id as 0x3\n"),
            trace("rtifhal_trident_l3port_add_pss",
                  "calling rtifhal_pss_l3port_store, lif (0x1040000a)\n"),
        },
        vlan_made_messages(PORT),
        translated_messages(),
        Messages{
            trace("rtifhal_trident_add_ingress",
                  "\nrtifhal_trident_add_ingress: L3LIF: 0x1040000a, 2, 1\n"),
            trace(ingress, "inl3lif->ifindex = 1040000a l3lif->ifindex = 1040000a\n"),
            trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        },
        ingress_written_messages(),
        Messages{trace("rtifhal_trident_add_egress",
                       "\nrtifhal_trident_add_egress: L3LIF: 0x1040000a, 2, 1\n")},
    }));
}

TEST_F(SubintAdd, UnderTheSdnAgentTheVlanKeepsOneFlagLess)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 1), 0);
    expect_calls(interface_step(*sub, *main, ORDINARY_START, "0x78"));
}

TEST_F(SubintAdd, CreateMakesTheEncapsulationVlanTheInternalOne)
{
    sub->lif.int_vlan = 7;
    rtifhal_trident_subint_add(sub->get(), 1);
    EXPECT_EQ(sub->lif.int_vlan, VLAN);
}

TEST_F(SubintAdd, WithoutCreateTheInternalVlanStays)
{
    brought_up(*sub);
    sub->lif.int_vlan = 7;
    rtifhal_trident_subint_add(sub->get(), 0);
    EXPECT_EQ(sub->lif.int_vlan, 7);
}

TEST_F(SubintAdd, MainInterfacesPropertiesDoNotEnterThePortsControls)
{
    main->properties = {};
    main->properties.mpls_en = 1;
    rtifhal_trident_subint_add(sub->get(), 1);
    EXPECT_EQ(calls_of({PORT_CONTROL}),
              (Calls{PORT_CONTROL + "(0, 5, 8, 1) = 0", PORT_CONTROL + "(0, 5, 10, 1) = 0",
                     PORT_CONTROL + "(0, 5, 9, 1) = 0", PORT_CONTROL + "(0, 5, 11, 0) = 0"}));
}

TEST_F(SubintAdd, ObjectHasTheSubinterfacesVrfAndMtu)
{
    sub->properties.vrf = 7;
    sub->properties.mtu = 9000;
    rtifhal_trident_subint_add(sub->get(), 1);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_create"}),
              Calls{"rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=00:11:22:33:44:55 vid=100 "
                    "vrf=7 mtu=9000 ttl=0 tunnel=0}) = 0"});
}

TEST_F(SubintAdd, RecordThatIsHandedOverHasThemAlready)
{
    const HandedOver watch;
    sub->properties.vrf = 7;
    sub->properties.mtu = 9000;
    rtifhal_trident_subint_add(sub->get(), 1);
    ASSERT_TRUE(HandedOver::record().has_value());
    EXPECT_EQ(HandedOver::record()->l3a_vrf, 7);
    EXPECT_EQ(HandedOver::record()->l3a_mtu, 9000);
    sub->properties.vrf = 0;
    sub->properties.mtu = 0;
    rtifhal_trident_subint_add(sub->get(), 0);
    EXPECT_EQ(HandedOver::record()->l3a_vrf, 1);
    EXPECT_EQ(HandedOver::record()->l3a_mtu, 1500);
}

TEST_F(SubintAdd, RecordThatIsHandedOverWithoutPropertiesHasTheDefaults)
{
    const HandedOver watch;
    sub->get()->l3lif_pi_ctxt = nullptr;
    rtifhal_trident_subint_add(sub->get(), 1);
    ASSERT_TRUE(HandedOver::record().has_value());
    EXPECT_EQ(HandedOver::record()->l3a_vrf, 1);
    EXPECT_EQ(HandedOver::record()->l3a_mtu, 1500);
}

TEST_F(SubintAdd, VrfAndMtuOfZeroAreOneAndFifteenHundred)
{
    sub->properties.vrf = 0;
    sub->properties.mtu = 0;
    rtifhal_trident_subint_add(sub->get(), 1);
    expect_calls(interface_step(*sub, *main, ORDINARY_START));
}

TEST_F(SubintAdd, WithoutPropertiesTheObjectHasTheDefaults)
{
    sub->without_properties();
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 1), 0);
    expect_calls(interface_step(*sub, *main, ORDINARY_START));
}

TEST_F(SubintAdd, VlanOfTheRoutedTrafficItselfIsTranslatedWithoutATagAction)
{
    const auto other = another(11, 4094);
    EXPECT_EQ(rtifhal_trident_subint_add(other->get(), 1), 0);
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{TRANSLATE + "(0, 0x8000005, 8, 4094, 65535, {vlan=4094 "
                                                       "iif=3 ot_outer=0 dt_outer=0}) = 0"});
}

TEST_F(SubintAdd, SecondSubinterfaceOfThePortSetsTheKeyAgain)
{
    brought_up(*sub);
    const auto other = another(11, 200);
    EXPECT_EQ(rtifhal_trident_subint_add(other->get(), 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_port_set", TRANSLATE}),
              join({keyed(PORT), Calls{TRANSLATE + "(0, 0x8000005, 8, 200, 65535, {vlan=4094 iif=4 "
                                                   "ot_outer=2 dt_outer=0}) = 0"}}));
}

TEST_F(SubintAdd, UpAgainWritesTheSameObjectsUnderTheSameNumber)
{
    brought_up(*sub);
    ASSERT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 0), 0);
    sw.end_request();
    start();
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 0, 0), 0);
    expect_calls(join({interface_step_again(*sub, *main), vlan_made(PORT), keyed(PORT),
                       translated(MODULE_PORT_5), ORDINARY_START,
                       ingress_and_egress(*sub, *main, Kind::trident, false)}));
    EXPECT_EQ(sub->lif.lif_state, 3U);
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
    EXPECT_EQ(sub->record()->brcm_prog_complete, 0U);
}

TEST_F(SubintAdd, UpAgainLeavesEveryMessage)
{
    brought_up(*sub);
    ASSERT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 0), 0);
    sw.end_request();
    start();
    rtifhal_trident_add_subint(sub->get(), 2, 0);
    const std::string ingress = "rtifhal_l3_ing_create";
    expect_messages(join({
        Messages{
            trace(ENTRY, "\nrtifhal_trident_add_subint: L3LIF: 0x1040000a, 2, 0\n"),
            trace(STEP, "ifindex = 1040000a create = 0\n"),
            trace(STEP, " bcm_port: 5 tid = -1\n"),
            trace(ON_PORT, " Entry: - \n"),
            // A parked record has no live number.
            trace(ON_PORT, "bcm_port = 5 intf-id = 0 intf_created = 0\n"),
            report(CREATE, "No context set in l3iif for intf 0x10400000\n"),
            trace(CREATE, "inl3lif->ifindex = 1040000a l3lif->ifindex = 1040000a create = 0\n"),
            trace(CREATE, "create internal_vlan = 100 si_encap_vlan = 100\n"),
            trace(CREATE, "Reusing l3a_intf_id from existind pd ctxt 3\n"),
            trace(CREATE, " Calling bcm_l3_intf_create for 100 intf-id 3, mtu 1500, vrf 1\n"),
            trace(CREATE, "Created l3-intf with intf-id as 0x3\n"),
            trace("rtifhal_trident_l3port_add_pss",
                  "calling rtifhal_pss_l3port_store, lif (0x1040000a)\n"),
        },
        vlan_made_messages(PORT),
        translated_messages(),
        Messages{trace("rtifhal_trident_add_ingress",
                       "\nrtifhal_trident_add_ingress: L3LIF: 0x1040000a, 2, 0\n"),
                 trace(ingress, "inl3lif->ifindex = 1040000a l3lif->ifindex = 1040000a\n"),
                 trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
                 trace(ingress, "Get l3_iif for iif 3\n"),
                 trace(ingress, "ipmc_intf_id = 0 class 40 flags = 6\n")},
        ingress_written_messages(),
        Messages{trace("rtifhal_trident_add_egress",
                       "\nrtifhal_trident_add_egress: L3LIF: 0x1040000a, 2, 0\n")},
    }));
}

TEST_F(SubintAdd, UpAgainPrintsTheLiveNumberOfTheRecord)
{
    sub->with_record(IIF);
    take(IIF);
    rtifhal_trident_subint_add(sub->get(), 0);
    EXPECT_EQ(messages().at(0), trace(STEP, "ifindex = 1040000a create = 0\n"));
    EXPECT_EQ(messages().at(3), trace(ON_PORT, "bcm_port = 5 intf-id = 3 intf_created = 0\n"));
    EXPECT_EQ(messages().back(),
              trace(STEP, "Created encap-vlan = 100 ifindex = 1040000a intf-id = 3 port = 5\n"));
}

TEST_F(SubintAdd, FastRestartPublishesAndServesDefaultRoutes)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 1), 0);
    expect_calls(interface_step(
        *sub, *main,
        {"sysmgr_is_fastboot_restart() = 1", "l3lif_update_sdb_for_intf(" + sub->text() + ") = 0",
         "sysmgr_is_fastboot_restart() = 1",
         "get_string_from_platform_inf(\"fwm\", \"skip_default_nh\", 15) = 0"}));
    EXPECT_EQ(sw.directory.updates(), std::vector<std::uint32_t>{sub->lif.ifindex});
}

TEST_F(SubintAdd, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_add_subint(nullptr, 0, 1), -1);
    EXPECT_EQ(rtifhal_trident_subint_add_int(nullptr, PORT, 0, {}, 0, 1), -1);
    expect_calls({});
}

TEST_F(SubintAdd, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_trident_subint_add(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({report(STEP, " Got l3lif as null\n")});
}

TEST_F(SubintAdd, InterfaceWithoutAPortIsRefused)
{
    const auto other = tunnel(1);
    EXPECT_EQ(rtifhal_trident_add_subint(other->get(), 2, 1), -1);
    expect_calls({called::unit(), called::is_port_channel(*other, 0), called::type(*other, 24)});
    expect_reports({
        report(STEP, " unable to get bcm port(" + other->index() + ")\n"),
        report(ENTRY,
               fmt::format("\n{}: L3LIF failed to add itf: {}, 2, 1\n", ENTRY, other->index())),
    });
    EXPECT_EQ(other->lif.lif_state, 0U);
}

TEST_F(SubintAdd, WithoutCreateThereMustBeAContext)
{
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 0), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({report(STEP, " Null l3lif_pd_ctxt(0x1040000a)\n")});
}

TEST_F(SubintAdd, WithoutCreateAContextWithoutARecordIsRefusedInSilence)
{
    sub->with_bare_context();
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 0), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({});
}

TEST_F(SubintAdd, RefusedSwitchControlStopsUnderTheId)
{
    fail("fwmpd_bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_switch_control_set(0, 232, 1) = -4");
    expect_reports({report(STEP, fmt::format("itf set (0) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(SubintAdd, RefusedSwitchControlOfALiveSubinterfacePrintsItsNumber)
{
    sub->with_record(7);
    fail("fwmpd_bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 0), -1);
    expect_reports({report(STEP, fmt::format("itf set (7) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(SubintAdd, PositiveSwitchControlIsNoRefusal)
{
    fail("fwmpd_bcm_switch_control_set", 1);
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 1), 0);
}

TEST_F(SubintAdd, RefusedPortControlsAndUntaggedVlanAreNotLookedAt)
{
    sw.journal.arm({.function = PORT_CONTROL, .code = -4, .forever = true});
    fail("fwmpd_bcm_port_untagged_vlan_set", -4);
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 1), 0);
    EXPECT_EQ(calls_of({PORT_CONTROL}).size(), 4U);
    expect_reports({report(CREATE, "No context set in l3iif for intf 0x10400000\n")});
}

TEST_F(SubintAdd, RefusedObjectStopsBeforeTheVlan)
{
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 1), -1);
    EXPECT_EQ(calls_of({"bcm_vlan_create", TRANSLATE}), Calls{});
    expect_failed_on_port("itf create(" + sub->decimal() + ") failed\n");
}

TEST_F(SubintAdd, RefusedVlanStopsBeforeTheTranslation)
{
    fail("bcm_vlan_create", -6);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 1), -1);
    EXPECT_EQ(calls().back(), "bcm_vlan_create(0, 100) = -6");
    expect_failed_on_port("itf vlan enable(" + sub->decimal() + ") failed\n");
    EXPECT_EQ(sub->record()->l3intf_id, IIF); // nothing is taken back
}

TEST_F(SubintAdd, RefusedKeyStopsBeforeTheTranslation)
{
    fail("fwmpd_bcm_vlan_control_port_set", -4);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_control_port_set(0, 5, 14, 8) = -4");
    expect_failed_on_port("itf xlate enable(" + sub->decimal() + ") failed\n");
}

TEST_F(SubintAdd, RefusedTranslationHasALeadingBlankInItsMessage)
{
    fail(TRANSLATE, -6);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 1), -1);
    EXPECT_EQ(calls().back(), translated(MODULE_PORT_5, IIF, -6).back());
    expect_failed_on_port(" itf xlate enable(" + sub->decimal() + ") failed\n");
}

TEST_F(SubintAdd, RefusalOfALiveSubinterfacePrintsItsNumberInHex)
{
    sub->with_record(26);
    fail("bcm_vlan_create", -6);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 0), -1);
    expect_failed_on_port("itf vlan enable(" + sub->decimal() + ") failed\n", 26, 0);
}

TEST_F(SubintAdd, FailedIngressStepKeepsTheState)
{
    // The first look-up of the type is that of the port, the second the dispatcher's.
    fail("if_index_get_type", 9, 2);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 1), 9);
    EXPECT_EQ(reports().back(),
              report(ENTRY,
                     fmt::format("\n{}: L3LIF failed to add if: {}, 2, 1\n", ENTRY, sub->index())));
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create"}), Calls{});
    EXPECT_EQ(sub->lif.lif_state, 0U);
}

TEST_F(SubintAdd, FailedEgressStepGivesItsOwnValue)
{
    fail_when("fwmpd_bcm_switch_control_set", "0, 230, 1", -16);
    EXPECT_EQ(rtifhal_trident_add_subint(sub->get(), 2, 1), -16);
    EXPECT_EQ(reports().back(),
              report(ENTRY,
                     fmt::format("\n{}: L3LIF failed to add if: {}, 2, 1\n", ENTRY, sub->index())));
    EXPECT_EQ(sub->lif.lif_state, 0U);
}

TEST_F(SubintAdd, CopyOfTheCallersRecordIsTheOnlyOneThatLearnsTheId)
{
    bcm_l3_intf_t intf = {};
    EXPECT_EQ(rtifhal_trident_subint_add_int(sub->get(), PORT, 0, intf, 0, 1), 0);
    EXPECT_EQ(intf.l3a_intf_id, 0);
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(MODULE_PORT_5).back()});
}

TEST_F(SubintAdd, PortWithAnObjectMadeBeforeTranslatesWithTheIdHandedIn)
{
    bcm_l3_intf_t intf = {};
    intf.l3a_intf_id = 9;
    EXPECT_EQ(rtifhal_trident_subint_add_int(sub->get(), PORT, 0, intf, 1, 1), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_create"}), Calls{});
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(MODULE_PORT_5, 9).back()});
}

} // namespace rtifhal_test::subint_add
