/*
 * member_port_test.cpp: a port's way into VLAN 4094 and out of it without a
 * routed interface: both ways, the group that they bring up, what they leave
 * alone, and interfaces that are no ports.
 *
 * member_port_failure_test.cpp has the steps that may fail.
 */
#include "support/l3_objects.h"
#include "support/member_port.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <cstring>
#include <vector>

namespace rtifhal_test::member_port
{

namespace
{

using namespace member_port;

/** The accounting as bytes. */
std::vector<unsigned char> accounting()
{
    std::vector<unsigned char> bytes(sizeof rtifhal_port_vlan + sizeof rtifhal_vlan_type_count);
    std::memcpy(bytes.data(), rtifhal_port_vlan, sizeof rtifhal_port_vlan);
    std::memcpy(bytes.data() + sizeof rtifhal_port_vlan, rtifhal_vlan_type_count,
                sizeof rtifhal_vlan_type_count);
    return bytes;
}

class MemberPort : public MemberPortTest
{
protected:
    /** What the steps for a port are called with when a platform takes any. */
    void any_port_is_taken()
    {
        for (const char *function : {"fwmpd_bcm_port_stp_set", "fwmpd_bcm_stg_stp_set",
                                     "fwmpd_bcm_port_untagged_vlan_set"}) {
            sw.journal.arm({.function = function, .code = 0, .forever = true});
        }
    }

    int stp_state(int group, std::size_t port) const
    {
        return sw.chip.stgs.find(group)->states.at(port);
    }
};

class MemberPortOnTrident2 : public MemberPortTest
{
protected:
    MemberPortOnTrident2() : MemberPortTest({.chip = Kind::trident2}) {}
};

} // namespace

TEST_F(MemberPort, FirstPortBringsTheGroupUpAndGoesIn)
{
    EXPECT_EQ(in(), 0);
    expect_calls(join({begins(*lif, PORT), brings_group_up(), goes_in(PORT),
                       refreshed_controls_calls(ROUTED, "0x0")}));
    expect_messages(join({Messages{entered(*lif, PORT, 0)}, group_is_up(PORT), Messages{done()}}));
    EXPECT_EQ(l3_stg, GROUP);
    EXPECT_EQ(l3_stg_allocated, 1U);
}

TEST_F(MemberPort, FirstCallBringsTheGroupUpEvenToTakeAPortOut)
{
    EXPECT_EQ(out(), 0);
    expect_calls(join({begins(*lif, PORT), brings_group_up(), goes_out(PORT),
                       refreshed_controls_calls(ROUTED, "0x0")}));
    expect_messages(join({Messages{entered(*lif, PORT, 1)}, group_is_up(PORT), Messages{done()}}));
    EXPECT_EQ(l3_stg, GROUP);
    EXPECT_EQ(l3_stg_allocated, 1U);
}

TEST_F(MemberPortOnTrident2, TakesTheSameRoads)
{
    EXPECT_EQ(in(), 0);
    EXPECT_EQ(out(), 0);
    expect_calls(join({begins(*lif, PORT), brings_group_up(), goes_in(PORT),
                       refreshed_controls_calls(ROUTED, "0x0"), begins(*lif, PORT), Calls{FLUSH},
                       goes_out(PORT), refreshed_controls_calls(ROUTED, "0x0")}));
}

TEST_F(MemberPort, LaterPortGoesInWithoutAGroup)
{
    group_was_up();
    EXPECT_EQ(in(), 0);
    expect_calls(join({begins(*lif, PORT), Calls{FLUSH}, goes_in(PORT),
                       refreshed_controls_calls(ROUTED, "0x0")}));
    expect_messages({entered(*lif, PORT, 0), done()});
}

TEST_F(MemberPort, LaterPortGoesOutWithTwoStpCallsTheSecondOnTheGroupOfVlan1)
{
    group_was_up();
    EXPECT_EQ(out(), 0);
    expect_calls(join({begins(*lif, PORT), Calls{FLUSH}, goes_out(PORT),
                       refreshed_controls_calls(ROUTED, "0x0")}));
    expect_messages({entered(*lif, PORT, 1), done()});
}

TEST_F(MemberPort, AnyNonzeroWordTakesThePortOut)
{
    group_was_up();
    EXPECT_EQ(rtifhal_init_member_port(lif->lif.ifindex, -7), 0);
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_vlan_port_remove"), 1U);
    EXPECT_EQ(messages().front(), entered(*lif, PORT, -7));
}

TEST_F(MemberPort, GroupThatARoutedPortBroughtUpIsTaken)
{
    ASSERT_EQ(rtifhal_vlan_create(0, ROUTED, 9), 0);
    start();
    EXPECT_EQ(in(), 0);
    EXPECT_EQ(calls_of({"fwmpd_allocate_stg", "bcm_stg_vlan_add"}), Calls{});
}

TEST_F(MemberPort, RoutedPortTakesTheGroupThatWasBroughtUpHere)
{
    group_was_up();
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    EXPECT_EQ(calls_of({"fwmpd_allocate_stg", "bcm_stg_vlan_add"}), Calls{});
    EXPECT_EQ(l3_stg, GROUP);
}

TEST_F(MemberPort, RestoreModeLeavesTheGroupAloneWhateverItsNumber)
{
    for (const int group : {0, 17}) {
        l3_stg = group;
        l3_stg_allocated = 0;
        g_fwm_pss_restore_mode = 1;
        ASSERT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
        start();
        EXPECT_EQ(in(), 0);
        EXPECT_EQ(out(), 0);
        EXPECT_EQ(calls_of({"fwmpd_allocate_stg", "bcm_stg_vlan_add"}), Calls{});
        EXPECT_EQ(sw.journal.count("fwmpd_bcm_vlan_port_add"), 1U);
        EXPECT_EQ(l3_stg, group);
    }
}

TEST_F(MemberPort, CpuGoesInAsThePlatformNumbersIt)
{
    group_was_up();
    fwmpd_asic_cpu_port = 70;
    EXPECT_EQ(in(), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_add"}),
              Calls{"fwmpd_bcm_vlan_port_add(0, 4094, {5,70}, {5}) = 0"});
}

TEST_F(MemberPort, CpuStaysWhenThePortGoesOut)
{
    group_was_up();
    fwmpd_asic_cpu_port = 70;
    EXPECT_EQ(out(), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_remove"}),
              Calls{"fwmpd_bcm_vlan_port_remove(0, 4094, {5}) = 0"});
}

TEST_F(MemberPort, LowHalfOfTheWordOfVlan1sGroupCounts)
{
    group_was_up();
    fail("fwmpd_get_vlan_stg", 0x7fff0000 | GROUP);
    EXPECT_EQ(out(), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_stg_stp_set"}), Calls{"fwmpd_bcm_stg_stp_set(0, 2, 5, 1) = 0"});
}

TEST_F(MemberPort, AccountingStaysAsItIs)
{
    const auto empty = accounting();
    EXPECT_EQ(in(), 0);
    EXPECT_TRUE(accounting() == empty);
    EXPECT_EQ(out(), 0);
    EXPECT_TRUE(accounting() == empty);
}

TEST_F(MemberPort, RoutedPortKeepsItsBitWhenItIsTakenOutHere)
{
    ASSERT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    const auto before = accounting();
    EXPECT_EQ(out(), 0);
    EXPECT_TRUE(accounting() == before);
    EXPECT_TRUE(vlan_road::holds(PORT, ROUTED));
}

TEST_F(MemberPort, InbandPathIsPreparedAtEveryCall)
{
    in();
    in();
    fail("fwmpd_inband_init", -1); // nobody looks at it
    EXPECT_EQ(out(), 0);
    EXPECT_EQ(sw.host.inband_inits, 2U);
    EXPECT_EQ(sw.journal.count("fwmpd_inband_init"), 3U);
}

TEST_F(MemberPort, ControlsComeFromTheChipAndNotFromTheCache)
{
    group_was_up();
    sw.chip.vlans.set_controls(ROUTED, {.flags = 0x278});
    fwmpd_bcm_vlan_control_vlan_get_from_cache(ROUTED)->vc_flags = 0x5;
    start();
    EXPECT_EQ(in(), 0);
    expect_calls(join({begins(*lif, PORT), Calls{FLUSH}, goes_in(PORT),
                       refreshed_controls_calls(ROUTED, "0x278")}));
    EXPECT_EQ(messages().back(), done("0x278"));
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(ROUTED)->vc_flags, 0x278U);
}

TEST_F(MemberPort, ChipHasThePortInAndForwarding)
{
    EXPECT_EQ(in(), 0);
    sw.end_request();
    const simswitch::chip::Vlan *vlan = sw.chip.vlans.find(ROUTED);
    EXPECT_EQ(vlan->members.text(), "{0,5}");
    EXPECT_EQ(vlan->untagged.text(), "{5}");
    EXPECT_EQ(vlan->stg, GROUP);
    EXPECT_EQ(sw.chip.ports.find(PORT)->untagged_vlan, ROUTED);
    EXPECT_EQ(stp_state(GROUP, PORT), 4);
}

TEST_F(MemberPort, ChipHasThePortOutAndBlockingButKeepsItsDefaultVlan)
{
    in();
    EXPECT_EQ(out(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.vlans.find(ROUTED)->members.text(), "{0}");
    EXPECT_EQ(sw.chip.vlans.find(ROUTED)->untagged.text(), "{}");
    EXPECT_EQ(sw.chip.ports.find(PORT)->untagged_vlan, ROUTED);
    EXPECT_EQ(stp_state(1, PORT), 1);
}

TEST_F(MemberPort, SubinterfaceStandsForItsPort)
{
    group_was_up();
    const auto sub = subinterface(*lif, 10);
    EXPECT_EQ(rtifhal_init_member_port(sub->lif.ifindex, 0), 0);
    expect_calls(join({begins(*sub, PORT), Calls{FLUSH}, goes_in(PORT),
                       refreshed_controls_calls(ROUTED, "0x0")}));
}

TEST_F(MemberPort, InterfaceThatIsNoPortGoesOnAsMinusOneUntilThePlatformRefuses)
{
    const auto vlan = svi(100);
    EXPECT_EQ(rtifhal_init_member_port(vlan->lif.ifindex, 0), -1);
    expect_calls(join({begins_without_port(*vlan, 9), brings_group_up(),
                       Calls{"fwmpd_bcm_vlan_port_add(0, 4094, {0}, {}) = 0",
                             "fwmpd_bcm_port_stp_set(0, -1, 4) = -4"}}));
    expect_messages(join(
        {Messages{entered(*vlan, -1, 0)}, group_is_up(-1),
         Messages{report(INIT, fmt::format("stp set(4094,-1) failed: {}\n", _shr_errmsg[4]))}}));
}

TEST_F(MemberPort, InterfaceThatIsNoPortIsRefusedOnTheWayOutToo)
{
    group_was_up();
    const auto channel = port_channel(7);
    EXPECT_EQ(rtifhal_init_member_port(channel->lif.ifindex, 1), -1);
    expect_calls(join({begins_without_port(*channel, 22),
                       Calls{FLUSH, "fwmpd_bcm_vlan_port_remove(0, 4094, {}) = 0",
                             "fwmpd_bcm_port_stp_set(0, -1, 0) = -4"}}));
    expect_messages(
        {entered(*channel, -1, 1),
         report(INIT, fmt::format("port stp set(4094,-1) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(MemberPort, PlatformThatTakesAnyPortIsCalledWithMinusOne)
{
    group_was_up();
    any_port_is_taken();
    const auto vlan = svi(100);
    EXPECT_EQ(rtifhal_init_member_port(vlan->lif.ifindex, 0), 0);
    EXPECT_EQ(rtifhal_init_member_port(vlan->lif.ifindex, 1), 0);
    EXPECT_EQ(
        calls_of({"fwmpd_bcm_port_stp_set", "fwmpd_bcm_stg_stp_set",
                  "fwmpd_bcm_port_untagged_vlan_set"}),
        (Calls{"fwmpd_bcm_port_stp_set(0, -1, 4) = 0",
               "fwmpd_bcm_port_untagged_vlan_set(0, -1, 4094) = 0",
               "fwmpd_bcm_port_stp_set(0, -1, 0) = 0", "fwmpd_bcm_stg_stp_set(0, 1, -1, 1) = 0"}));
}

TEST_F(MemberPort, PortThatCantBeReadIsMinusOneToo)
{
    group_was_up();
    fail("if_index_get_port", -1);
    EXPECT_EQ(in(), -1);
    EXPECT_EQ(messages().front(), entered(*lif, -1, 0));
    EXPECT_EQ(calls().back(), "fwmpd_bcm_port_stp_set(0, -1, 4) = -4");
}

TEST_F(MemberPort, PortBeyondTheBitmapGoesToThePlatformWithoutABit)
{
    group_was_up();
    any_port_is_taken();
    const auto last = port(256);
    EXPECT_EQ(rtifhal_init_member_port(last->lif.ifindex, 0), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_add", "fwmpd_bcm_port_stp_set"}),
              (Calls{"fwmpd_bcm_vlan_port_add(0, 4094, {0}, {}) = 0",
                     "fwmpd_bcm_port_stp_set(0, 256, 4) = 0"}));
}

} // namespace rtifhal_test::member_port
