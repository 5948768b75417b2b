/*
 * ingress_release_test.cpp: untying an interface from its L3 ingress object, and
 * the mapped mark of an SVI's VLAN.
 *
 * ingress_ties_test.cpp has the tying, relabel_test.cpp a new class label.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <fwmpd/l3_cache.h>

namespace rtifhal_test::ingress_release
{

namespace
{

constexpr const char *DELETE = "rtifhal_l3_ing_delete";
constexpr const char *LABEL = "rtifhal_l3_ing_update_vlan_label";
constexpr int IIF = 7;
constexpr int VLAN = 100;

/** The embedded switch has an ingress object of that number. */
void make_object(int iif)
{
    bcm_l3_ingress_t ingress = {};
    rtifhal_bcm_l3_ingress_create(0, &ingress, &iif);
}

class IngressDelete : public LibraryTest
{
protected:
    IngressDelete()
    {
        lif->with_record(IIF);
        make_object(IIF);
        start();
    }

    static int untie(Lif &lif) { return rtifhal_l3_ing_delete(lif.get(), 0); }
    static int destroy(Lif &lif) { return rtifhal_l3_ing_delete(lif.get(), 1); }
    /** The calls of a port's release, with what stands before the look-ups. */
    static std::vector<std::string> port_calls(const Lif &lif, std::vector<std::string> calls)
    {
        for (const auto &call :
             {called::is_tunnel(lif, 0), called::is_sub(lif, 0), called::type(lif, 26),
              called::port_of(lif, 5), called::port_control(5, 0)}) {
            calls.push_back(call);
        }
        return calls;
    }

    std::unique_ptr<Lif> lif = port(5);
};

/** An SVI on VLAN 100, mapped to number 7. */
class VlanLabel : public LibraryTest
{
protected:
    VlanLabel()
    {
        bcm_vlan_create(0, VLAN);
        bcm_vlan_control_vlan_t control = {};
        control.vc_vrf = 12;
        control.vc_ingress_if = IIF;
        control.vc_flags = 0x278;
        control.vc_class = 6;
        control.vc_urpf_mode = 2;
        fwmpd_bcm_vlan_control_vlan_set(0, VLAN, control);
        sw.end_request();
        start();
    }

    int update() { return rtifhal_l3_ing_update_vlan_label(lif->get()); }

    std::unique_ptr<Lif> lif = svi(VLAN);
};

} // namespace

TEST_F(IngressDelete, UntyingAPortKeepsTheObjectAndClearsTheControl)
{
    EXPECT_EQ(untie(*lif), 0);
    expect_calls(port_calls(*lif, {called::unit(), called::type(*lif, 26)}));
    // The text lacks a conversion letter: what stands behind it is read as one.
    expect_messages({trace(DELETE, "ifindex = " + lif->hex() + " destroy = 0\n"),
                     trace(DELETE, "iftype = 1a iif = 7 l3_if_index = 7\n"),
                     trace(DELETE, "L3 Phy \n"),
                     trace(DELETE, "L3Ingress L3 Phy or L3 PC port =  5if = 0\n")});
}

TEST_F(IngressDelete, DestroyingAPortsObjectClearsTheControlToo)
{
    EXPECT_EQ(destroy(*lif), 0);
    expect_calls(
        port_calls(*lif, {called::unit(), called::type(*lif, 26), called::destroy_ingress(IIF)}));
    expect_messages({trace(DELETE, "ifindex = " + lif->hex() + " destroy = 1\n"),
                     trace(DELETE, "iftype = 1a iif = 7 l3_if_index = 7\n"),
                     trace(DELETE, "L3 Phy \n"),
                     trace(DELETE, "L3Ingress L3 Phy or L3 PC port =  5if = 0\n")});
    EXPECT_EQ(rtifhal_bcm_l3_ingress_get_from_cache(IIF), nullptr);
}

TEST_F(IngressDelete, ParkedInterfaceIsReleasedByItsParkedNumber)
{
    make_object(300);
    const auto parked = port(5);
    parked->with_parked(300);
    start();
    EXPECT_EQ(destroy(*parked), 0);
    expect_calls(port_calls(
        *parked, {called::unit(), called::type(*parked, 26), called::destroy_ingress(300)}));
    EXPECT_EQ(messages()[1], trace(DELETE, "iftype = 1a iif = 12c l3_if_index = 0\n"));
}

TEST_F(IngressDelete, NumberZeroIsDestroyedLikeAnyOther)
{
    lif->record()->l3intf_id = 0;
    EXPECT_EQ(destroy(*lif), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}),
              std::vector<std::string>({called::destroy_ingress(0, -7)}));
}

TEST_F(IngressDelete, RefusedDestroyAndRefusedControlAreNotLookedAt)
{
    fail("rtifhal_bcm_l3_ingress_destroy", -7);
    fail("fwmpd_bcm_port_control_set", -16);
    EXPECT_EQ(destroy(*lif), 0);
    expect_reports({});
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_port_control_set"), 1U);
}

TEST_F(IngressDelete, UnknownTypeIsReportedAndCountsAsAPort)
{
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_type", code);
        EXPECT_EQ(untie(*lif), 0);
        expect_calls(port_calls(*lif, {called::unit(), called::no_type(*lif, code)}));
        expect_reports(
            {report(DELETE, "bcm_l3_ing_create(" + lif->decimal() + ") get type failed\n")});
        EXPECT_EQ(messages()[2], trace(DELETE, "iftype = 0 iif = 7 l3_if_index = 7\n"));
    }
}

TEST_F(IngressDelete, SviOfUnknownTypeGetsItsControlOnPortMinusOne)
{
    const auto vlan = svi(VLAN);
    fail("if_index_get_type", -1);
    EXPECT_EQ(untie(vlan->with_record(IIF)), 0);
    expect_calls({called::unit(), called::no_type(*vlan), called::is_tunnel(*vlan, 0),
                  called::is_sub(*vlan, 0), called::type(*vlan, 9),
                  called::port_control(-1, 0, -4)});
}

TEST_F(IngressDelete, AnyNonzeroFlagDestroys)
{
    EXPECT_EQ(rtifhal_l3_ing_delete(lif->get(), -1), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}),
              std::vector<std::string>({called::destroy_ingress(IIF)}));
    EXPECT_EQ(messages()[0], trace(DELETE, "ifindex = " + lif->hex() + " destroy = -1\n"));
}

TEST_F(IngressDelete, AnyNonzeroAnswerTellsTheKind)
{
    for (const char *kind : {"if_index_is_tunnel_intf", "if_index_is_sub_intf"}) {
        start();
        fail(kind, -1);
        EXPECT_EQ(untie(*lif), 0);
        EXPECT_EQ(calls().back(), std::string(kind) + "(" + lif->index() + ") = -1");
    }
}

TEST_F(IngressDelete, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(destroy(*lif), 0); // this chip has no other unit
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy", "fwmpd_bcm_port_control_set"}),
              std::vector<std::string>({"rtifhal_bcm_l3_ingress_destroy(3, 7) = -3",
                                        "fwmpd_bcm_port_control_set(3, 5, 67, 0) = -3"}));
}

TEST_F(IngressDelete, UnknownPortIsReportedAndMinusOneIsWritten)
{
    fail("if_index_get_port", 1);
    EXPECT_EQ(untie(*lif), 0);
    expect_calls({called::unit(), called::type(*lif, 26), called::is_tunnel(*lif, 0),
                  called::is_sub(*lif, 0), called::type(*lif, 26),
                  "if_index_get_port(" + lif->index() + ") = 1", called::port_control(-1, 0, -4)});
    expect_messages({trace(DELETE, "ifindex = " + lif->hex() + " destroy = 0\n"),
                     trace(DELETE, "iftype = 1a iif = 7 l3_if_index = 7\n"),
                     trace(DELETE, "L3 Phy \n"),
                     report(DELETE, "bcm_l3_ing_create(" + lif->decimal() + ") get port failed\n"),
                     trace(DELETE, "L3Ingress L3 Phy or L3 PC port = -1if = 0\n")});
}

TEST_F(IngressDelete, MissingContextIsReportedAndCountsAsSuccess)
{
    const auto bare = port(6);
    EXPECT_EQ(destroy(*bare), 0);
    expect_calls({called::unit(), called::type(*bare, 26)});
    expect_messages(
        {trace(DELETE, "ifindex = " + bare->hex() + " destroy = 1\n"),
         report(DELETE, "Failed to create l3lif pd context for intf " + bare->index())});
}

TEST_F(IngressDelete, MissingRecordFailsSilently)
{
    const auto bare = port(6);
    EXPECT_EQ(destroy(bare->with_bare_context()), -1);
    expect_calls({called::unit(), called::type(*bare, 26)});
    expect_messages({trace(DELETE, "ifindex = " + bare->hex() + " destroy = 1\n")});
}

TEST_F(IngressDelete, MissingPropertiesDoNotMatter)
{
    EXPECT_EQ(untie(lif->without_properties()), 0);
    expect_reports({});
    EXPECT_EQ(calls().back(), called::port_control(5, 0));
}

TEST_F(IngressDelete, PortChannelsMembersKeepTheirControl)
{
    const auto main = port_channel(7);
    sw.host.set_trunk_id(main->lif.ifindex, 41);
    simswitch::chip::Trunk trunk;
    trunk.members.push_back({.gport = 0x8000005});
    ASSERT_TRUE(sw.chip.trunks.create(41, trunk).ok());
    rtifhal_l3_ing_create(main->with_record(IIF).get(), 1);
    sw.end_request();
    start();
    EXPECT_EQ(destroy(*main), 0);
    expect_calls({called::unit(), called::type(*main, 22), called::destroy_ingress(IIF),
                  called::is_tunnel(*main, 0), called::is_sub(*main, 0), called::type(*main, 22),
                  called::port_control(-1, 0, -4)});
    expect_reports(
        {report(DELETE, "bcm_l3_ing_create(" + main->decimal() + ") get port failed\n")});
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.control(5, 67), IIF);
}

TEST_F(IngressDelete, SviEndsAfterTheDestroyByItsTypeAlone)
{
    const auto vlan = svi(VLAN);
    EXPECT_EQ(destroy(vlan->with_record(IIF)), 0);
    expect_calls({called::unit(), called::type(*vlan, 9), called::destroy_ingress(IIF)});
    expect_messages({trace(DELETE, "ifindex = " + vlan->hex() + " destroy = 1\n"),
                     trace(DELETE, "iftype = 9 iif = 7 l3_if_index = 7\n")});
}

TEST_F(IngressDelete, TunnelEndsAfterTheDestroy)
{
    const auto tun = tunnel(3);
    EXPECT_EQ(destroy(tun->with_record(IIF)), 0);
    expect_calls({called::unit(), called::type(*tun, 24), called::destroy_ingress(IIF),
                  called::is_tunnel(*tun, 1)});
    expect_messages({trace(DELETE, "ifindex = " + tun->hex() + " destroy = 1\n"),
                     trace(DELETE, "iftype = 18 iif = 7 l3_if_index = 7\n")});
}

TEST_F(IngressDelete, SubinterfaceOfAPortIsReleasedByItsOwnNumber)
{
    const auto sub = subinterface(*lif, 10);
    make_object(8);
    start();
    EXPECT_EQ(destroy(sub->with_record(8)), 0);
    expect_calls({called::unit(), called::type(*sub, 26), called::is_port_channel(*lif, 0),
                  called::destroy_ingress(8), called::is_tunnel(*sub, 0), called::is_sub(*sub, 1)});
}

TEST_F(IngressDelete, SubinterfaceOfAPortChannelIsReleasedByThePortChannelsNumber)
{
    const auto main = port_channel(7);
    main->with_record(IIF);
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(destroy(sub->with_record(8)), 0);
    expect_calls({called::unit(), called::type(*sub, 22), called::is_port_channel(*main, 1),
                  called::destroy_ingress(IIF), called::is_tunnel(*sub, 0),
                  called::is_sub(*sub, 1)});
    expect_messages({trace(DELETE, "ifindex = " + sub->hex() + " destroy = 1\n"),
                     trace(DELETE, "main ifindex = " + main->hex() + "\n"),
                     trace(DELETE, "iftype = 16 iif = 7 l3_if_index = 7\n")});
}

TEST_F(IngressDelete, SubinterfaceOfAPortChannelReportsTheMainInterfacesMissingContext)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(destroy(sub->with_record(8)), 0);
    expect_reports({report(DELETE, "Failed to create l3lif pd context for intf " + main->index())});
}

TEST_F(IngressDelete, MemberPortReportsItsPortWithThePortChannelsIfindex)
{
    const auto main = port_channel(7);
    main->with_record(IIF);
    lif->lif.main_l3lif = main->get();
    fail("if_index_get_port", 1);
    EXPECT_EQ(untie(*lif), 0);
    expect_reports(
        {report(DELETE, "bcm_l3_ing_create(" + main->decimal() + ") get port failed\n")});
}

TEST_F(IngressDelete, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_l3_ing_delete(nullptr, 1), -1);
    expect_calls({});
}

TEST_F(VlanLabel, MappedMarkGoesAndTheOtherFieldsStay)
{
    EXPECT_EQ(update(), 0);
    expect_calls({called::unit(), called::type(*lif, 9),
                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) = record",
                  "fwmpd_bcm_vlan_control_vlan_set(0, 100, {vrf=12 iif=7 flags=0x278 class=2 "
                  "urpf=2}) = 0",
                  "fwmpd_trident_vlan_bvcvt_store(100) = 0"});
    expect_messages(
        {trace(LABEL, "Entered rtifhal_l3_ing_update_vlan_label for " + lif->index() + "\n")});
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN)->vc_class, 2U);
}

TEST_F(VlanLabel, WriteDropsTheSnoopingFlagFromTheChip)
{
    bcm_vlan_control_vlan_t control = *fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN);
    control.vc_flags |= 0x800;
    bcm_vlan_control_vlan_set(0, VLAN, control);
    update();
    sw.end_request();
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->controls.flags, 0x278U);
}

TEST_F(VlanLabel, RefusedWriteAndRefusedStoreAreNotLookedAt)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    fail("fwmpd_trident_vlan_bvcvt_store", -9);
    EXPECT_EQ(update(), 0);
    EXPECT_EQ(sw.journal.count("fwmpd_trident_vlan_bvcvt_store"), 1U);
    expect_reports({});
}

TEST_F(VlanLabel, AnythingButAnSviIsLeftAlone)
{
    const auto other = port(5);
    const auto channel = port_channel(7);
    const auto tun = tunnel(3);
    const auto sub = subinterface(*other, 10); // its 802.1Q VLAN is the SVI's
    for (const auto &[kind, type] :
         {std::pair{other.get(), 26}, {channel.get(), 22}, {tun.get(), 24}, {sub.get(), 26}}) {
        start();
        EXPECT_EQ(rtifhal_l3_ing_update_vlan_label(kind->get()), 0);
        expect_calls({called::unit(), called::type(*kind, type)});
        expect_messages(
            {trace(LABEL, "Entered rtifhal_l3_ing_update_vlan_label for " + kind->index() + "\n")});
    }
}

TEST_F(VlanLabel, UnknownTypeFails)
{
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_type", code);
        EXPECT_EQ(update(), -1);
        expect_calls({called::unit(), called::no_type(*lif, code)});
        expect_reports({report(LABEL, " (" + lif->decimal() + ") get type failed\n")});
    }
}

TEST_F(VlanLabel, VlanThatTheCacheDoesNotHaveFails)
{
    fail("fwmpd_bcm_vlan_control_vlan_get_from_cache", 0);
    EXPECT_EQ(update(), -1);
    expect_calls({called::unit(), called::type(*lif, 9),
                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) = null"});
    expect_reports({report(LABEL, "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) returned "
                                  "NULL\n")});
}

TEST_F(VlanLabel, VlanIsTheEncapsulationVlanAndNotTheOwnOne)
{
    lif->lif.vlan = 200;
    EXPECT_EQ(update(), 0);
    EXPECT_EQ(calls().back(), "fwmpd_trident_vlan_bvcvt_store(100) = 0");
}

TEST_F(VlanLabel, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(update(), 0); // this chip has no other unit
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_set"}),
              std::vector<std::string>({"fwmpd_bcm_vlan_control_vlan_set(3, 100, {vrf=12 iif=7 "
                                        "flags=0x278 class=2 urpf=2}) = -3"}));
}

TEST_F(VlanLabel, NullInterfaceFailsSilently)
{
    EXPECT_EQ(rtifhal_l3_ing_update_vlan_label(nullptr), -1);
    expect_calls({called::unit()});
    expect_messages({});
}

} // namespace rtifhal_test::ingress_release
