/*
 * tunnel_add_test.cpp: a tunnel interface coming up, first and again: an L3
 * interface without a port.
 *
 * tunnel_delete_test.cpp has the way down.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"
#include "support/lif.h"
#include "support/misread.h"
#include "support/vlan_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::tunnel_add
{

namespace
{

constexpr int IIF = 3;
constexpr std::uint32_t UNTOUCHED = 9;

const std::string ENTRY = "rtifhal_trident_add_l3tun";
const std::string STEP = "rtifhal_l3tun_add";
const std::string OPENS_ROUTING = "bcm_switch_control_set(0, 232, 1) = 0";

/** A dispatcher finds out what the interface is. */
Calls kind_asked(const Lif &lif)
{
    return {called::type(lif, 24), called::is_port_channel(lif, 0), called::is_sub(lif, 0)};
}

Calls creates_object(const std::string &record)
{
    return {"rtifhal_bcm_l3_intf_create(0, " + record + ") = 0"};
}

std::string object(const std::string &flags, int vlan = 4094, int tunnel = 0)
{
    return fmt::format("{{flags={} id=3 mac=00:11:22:33:44:55 vid={} vrf=1 mtu=1500 ttl=0 "
                       "tunnel={}}}",
                       flags, vlan, tunnel);
}

Calls writes_ingress(const Lif &lif, Kind chip, bool cached = false)
{
    const std::string flags = chip == Kind::trident2 ? "0x486" : "0x6";
    return join({
        kind_asked(lif),
        Calls{called::ingress_init(), called::unit(), called::type(lif, 24)},
        cached ? Calls{called::from_cache(IIF)} : Calls{},
        Calls{
            called::trident2(chip == Kind::trident2 ? 1 : 0),
            called::write_ingress("{flags=" + flags + " vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
            called::is_tunnel(lif, 1),
        },
    });
}

Calls adds_egress(const Lif &lif)
{
    return join({kind_asked(lif), Calls{"bcm_l3_egress_t_init()", called::unit(),
                                        "fwmpd_bcm_switch_control_set(0, 230, 1) = 0"}});
}

Calls first_add(const Lif &lif, Kind chip)
{
    return join({
        Calls{called::unit(), called::intf_init(), OPENS_ROUTING, called::inband_init(),
              fmt::format("malloc({}) = record", sizeof(l3lif_pd_ctxt)),
              fmt::format("malloc({}) = record", sizeof(l3_pd))},
        creates_object(object("0x40")),
        Calls{called::store(lif)},
        writes_ingress(lif, chip),
        adds_egress(lif),
    });
}

class TunnelAdd : public LibraryTest
{
protected:
    TunnelAdd()
    {
        l3iif_table_init();
        lif->lif.lif_state = UNTOUCHED;
        start();
    }
    /** The tunnel is up with the number 3. */
    void brought_up()
    {
        ASSERT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 0);
        sw.end_request();
        start();
    }

    std::unique_ptr<Lif> lif = tunnel(1);
};

class TunnelAddOnTrident2 : public Trident2Test
{
};

} // namespace

TEST_F(TunnelAdd, MakesItsObjectsAndTouchesNoPortAndNoVlan)
{
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 0);
    expect_calls(first_add(*lif, Kind::trident));
    EXPECT_EQ(lif->lif.int_vlan, 4094);
    EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
}

TEST_F(TunnelAddOnTrident2, MakesTheSameObjects)
{
    const auto lif = tunnel(1);
    l3iif_table_init();
    start();
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 0);
    expect_calls(first_add(*lif, Kind::trident2));
}

TEST_F(TunnelAdd, LeavesEveryMessage)
{
    rtifhal_trident_add_l3tun(lif->get(), 1);
    const std::string create = "rtifhal_l3_intf_create";
    const std::string ingress = "rtifhal_l3_ing_create";
    expect_messages({
        trace(ENTRY, "L3LIF: 0x40000001, 1\n"),
        trace(STEP, " Entry: create - 1\n"),
        trace(create, "inl3lif->ifindex = 40000001 l3lif->ifindex = 40000001 create = 1\n"),
        trace(create, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
        trace(create, "Allocating l3lif_pd_ctxt\n"),
        trace(create, "Allocating l3_pd\n"),
        trace(create, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
        trace(create, "Created l3-intf with intf-id as 0x3\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (0x40000001)\n"),
        trace("rtifhal_trident_add_ingress",
              "\nrtifhal_trident_add_ingress: L3LIF: 0x40000001, 0, 1\n"),
        trace(ingress, "inl3lif->ifindex = 40000001 l3lif->ifindex = 40000001\n"),
        trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        trace(ingress, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
        trace(ingress, " rtifhal_bcm_l3_ing_create(0x40000001) iif 3, vrf 1 rpf 0 class 64\n"),
        trace(ingress, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                       "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                       "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
        trace(ingress, "bcm_l3_ing_create(40000001) success: -1, 3\n"),
        trace("rtifhal_trident_add_egress",
              "\nrtifhal_trident_add_egress: L3LIF: 0x40000001, 0, 1\n"),
    });
}

TEST_F(TunnelAdd, ForcesIp4On)
{
    lif->properties.ipv4_en = 0;
    rtifhal_trident_add_l3tun(lif->get(), 1);
    EXPECT_EQ(lif->properties.ipv4_en, 1U);
}

TEST_F(TunnelAdd, ForcesIp4OnAtALaterAddToo)
{
    brought_up();
    lif->properties.ipv4_en = 0;
    rtifhal_trident_add_l3tun(lif->get(), 0);
    EXPECT_EQ(lif->properties.ipv4_en, 1U);
}

TEST_F(TunnelAdd, ForcesIp4OnEvenWhenItFailsThen)
{
    lif->properties.ipv4_en = 0;
    fail("bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), -1);
    EXPECT_EQ(lif->properties.ipv4_en, 1U);
}

TEST_F(TunnelAdd, LaterAddStartsFromTheObjectInTheChip)
{
    brought_up();
    ASSERT_TRUE(sw.chip.tunnels.create(IIF, {.index = 6}).ok());
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 0), 0);
    expect_calls(join({
        Calls{called::unit(), called::intf_init(), called::flush(),
              "bcm_l3_intf_get(0, 3) = 0 [intf=" + object("0x0", 4094, 6) + "]", OPENS_ROUTING},
        creates_object(object("0x140", 4094, 6)),
        Calls{called::store(*lif)},
        writes_ingress(*lif, Kind::trident, true),
        adds_egress(*lif),
    }));
}

TEST_F(TunnelAdd, LaterAddLeavesEveryMessage)
{
    brought_up();
    rtifhal_trident_add_l3tun(lif->get(), 0);
    const std::string create = "rtifhal_l3_intf_create";
    const std::string ingress = "rtifhal_l3_ing_create";
    expect_messages({
        trace(ENTRY, "L3LIF: 0x40000001, 0\n"),
        trace(STEP, " Entry: create - 0\n"),
        trace(create, "inl3lif->ifindex = 40000001 l3lif->ifindex = 40000001 create = 0\n"),
        trace(create, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace(create, "Reusing l3a_intf_id from existind pd ctxt 3\n"),
        trace(create, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
        trace(create, "Created l3-intf with intf-id as 0x3\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (0x40000001)\n"),
        trace("rtifhal_trident_add_ingress",
              "\nrtifhal_trident_add_ingress: L3LIF: 0x40000001, 0, 0\n"),
        trace(ingress, "inl3lif->ifindex = 40000001 l3lif->ifindex = 40000001\n"),
        trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"),
        trace(ingress, "Get l3_iif for iif 3\n"),
        trace(ingress, "ipmc_intf_id = 0 class 40 flags = 6\n"),
        trace(ingress, "vrf = 1 ipv4_en = 1 ipv6_en = 0, ipmc_l3iif = 0 ipv4_mc_en = 0\n"),
        trace("rtifhal_get_class_id", " Return 64 | l3_pd->acl_qos_label_ingress(0)\n"),
        trace(ingress, " rtifhal_bcm_l3_ing_create(0x40000001) iif 3, vrf 1 rpf 0 class 64\n"),
        trace(ingress, "Before calling bcm_l3_ingress_create - iif:3, l3_iif.flags:0x6, "
                       "l3_iif.vrf:1, l3_iif.urpf_mode:0, l3_iif.intf_class:64, "
                       "l3_iif.ipmc_intf_id:0, l3_iif.qos_map_id:0\n"),
        trace(ingress, "bcm_l3_ing_create(40000001) success: -1, 3\n"),
        trace("rtifhal_trident_add_egress",
              "\nrtifhal_trident_add_egress: L3LIF: 0x40000001, 0, 0\n"),
    });
}

TEST_F(TunnelAdd, LaterAddTakesMacVlanAndMtuFromTheRecord)
{
    brought_up();
    lif->lif.mac[5] = 0x77;
    lif->lif.int_vlan = 200;
    lif->properties.mtu = 9216;
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 0), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_create"}),
              creates_object("{flags=0x140 id=3 mac=00:11:22:33:44:77 vid=200 vrf=1 mtu=9216 "
                             "ttl=0 tunnel=0}"));
    EXPECT_EQ(lif->lif.int_vlan, 200);
}

TEST_F(TunnelAdd, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_add_l3tun(nullptr, 1), -1);
    expect_calls({});
}

TEST_F(TunnelAdd, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_l3tun_add(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({trace(STEP, " Entry: create - 1\n"), report(STEP, " Got l3lif as null")});
}

TEST_F(TunnelAdd, PropertiesMissingAreNotFollowed)
{
    lif->without_properties();
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), -1);
    EXPECT_EQ(reports().back(), report(ENTRY, "L3LIF failed to add egr if: 0x40000001, 0, 1\n"));
}

TEST_F(TunnelAdd, LaterAddNeedsAContext)
{
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), -1);
    expect_calls({called::unit(), called::intf_init()});
    expect_reports({report(STEP, "unable to get itf(" + lif->decimal() + ") pd_ctxt NULL\n")});
}

TEST_F(TunnelAdd, LaterAddWithoutARecordIsRefusedInSilence)
{
    lif->with_bare_context();
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), -1);
    EXPECT_EQ(calls_of({"bcm_l3_intf_get", "bcm_switch_control_set"}), Calls{});
    expect_reports({});
}

TEST_F(TunnelAdd, ObjectThatCantBeReadStopsALaterAdd)
{
    lif->with_record(7);
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 7) = -7");
    expect_reports(
        {report(STEP, fmt::format("itf get ({}) failed: {}\n", lif->decimal(), _shr_errmsg[7]))});
}

TEST_F(TunnelAdd, ParkedTunnelIsLookedForUnderTheNumberZero)
{
    lif->with_parked(7);
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 0) = -7");
}

TEST_F(TunnelAdd, ObjectOfAnotherNumberStopsALaterAdd)
{
    brought_up();
    const MisreadInterface other(4);
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), -1);
    EXPECT_EQ(calls_of({"bcm_switch_control_set"}), Calls{});
    expect_reports({report(STEP, "itf get (3) mismatch\n")});
}

TEST_F(TunnelAdd, RefusedSwitchControlStopsBeforeTheObject)
{
    fail("bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), -1);
    EXPECT_EQ(calls().back(), "bcm_switch_control_set(0, 232, 1) = -4");
    expect_reports({
        report(STEP, fmt::format("itf set (0) failed: {}\n", _shr_errmsg[4])),
        report(ENTRY, "L3LIF failed to add itf: 0x40000001, 1\n"),
    });
}

TEST_F(TunnelAdd, PositiveAnswersAreNoRefusals)
{
    brought_up();
    fail("bcm_l3_intf_get", 1);
    fail("bcm_switch_control_set", 1);
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), 0);
    expect_reports({});
}

TEST_F(TunnelAdd, RefusedSwitchControlOfALaterAddNamesTheLiveNumber)
{
    brought_up();
    fail("bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_l3tun_add(lif->get(), 0), -1);
    expect_reports({report(STEP, fmt::format("itf set (3) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(TunnelAdd, RefusedObjectStopsBeforeTheIngressStep)
{
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), -1);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create"}), Calls{});
    expect_reports({
        report("rtifhal_l3_intf_create",
               fmt::format("rtifhal_bcm_l3_intf_create(0x40000001) failed: {}\n", _shr_errmsg[6])),
        report(STEP, "itf create(" + lif->decimal() + ") failed\n"),
        report(ENTRY, "L3LIF failed to add itf: 0x40000001, 1\n"),
    });
}

TEST_F(TunnelAdd, FailedIngressCreationIsNotSeen)
{
    brought_up();
    sw.journal.arm({.function = "rtifhal_bcm_l3_ingress_get_from_cache"});
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 0), 0);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_switch_control_set(0, 230, 1) = 0");
}

TEST_F(TunnelAdd, KindThatCantBeReadHandsItsValueUp)
{
    fail("if_index_get_type", 5);
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 5);
    EXPECT_EQ(calls().back(), called::no_type(*lif, 5));
    expect_reports({report(ENTRY, "L3LIF failed to add ing if: 0x40000001, 0, 1\n")});
}

TEST_F(TunnelAdd, PositiveAnswerOfTheEgressStepIsHandedUpAsAFailure)
{
    fail("fwmpd_bcm_switch_control_set", 1);
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 1);
    expect_reports({report(ENTRY, "L3LIF failed to add egr if: 0x40000001, 0, 1\n")});
}

TEST_F(TunnelAdd, FailedEgressStepHandsItsValueUp)
{
    fail("fwmpd_bcm_switch_control_set", -16);
    EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), -16);
    expect_reports({
        report("rtifhal_l3_egr_create",
               fmt::format("itf set egr (3) failed: {}\n", _shr_errmsg[16])),
        report(ENTRY, "L3LIF failed to add egr if: 0x40000001, 0, 1\n"),
    });
}

} // namespace rtifhal_test::tunnel_add
