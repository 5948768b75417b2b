/*
 * vlan_mode_test.cpp: the switches of a port that gets its first VLAN or loses
 * its last one.
 */
#include "support/library_test.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/vlan/vlan.h"

namespace rtifhal_test::vlan_mode
{

namespace
{

constexpr int PORT = 5;

class PortMode : public LibraryTest
{
};
class PortModeOnTrident2 : public Trident2Test
{
};

} // namespace

TEST_F(PortMode, OnTurnsTranslationOnAndLeavesTheFloodLists)
{
    rtifhal_port_l3_mode_set(PORT, 1);
    expect_calls(mode_on_calls(Kind::trident, PORT));
    expect_messages(mode_on_messages(Kind::trident, PORT));
}

TEST_F(PortModeOnTrident2, OnOpensThePortForVxlanFirst)
{
    rtifhal_port_l3_mode_set(PORT, 1);
    expect_calls(mode_on_calls(Kind::trident2, PORT));
    expect_messages(mode_on_messages(Kind::trident2, PORT));
}

TEST_F(PortMode, OffTurnsTranslationOffAndTouchesNoFloodList)
{
    rtifhal_port_l3_mode_set(PORT, 0);
    expect_calls(mode_off_calls(Kind::trident, PORT));
    expect_messages(mode_off_messages(PORT));
}

TEST_F(PortModeOnTrident2, OffOpensThePortForVxlanToo)
{
    rtifhal_port_l3_mode_set(PORT, 0);
    expect_calls(mode_off_calls(Kind::trident2, PORT));
    expect_messages(mode_off_messages(PORT));
}

TEST_F(PortMode, AnyNonzeroValueIsOnAndIsHandedOnAsItIs)
{
    rtifhal_port_l3_mode_set(PORT, 7);
    EXPECT_EQ(calls_of({"bcm_vlan_control_port_set"}),
              (Calls{"bcm_vlan_control_port_set(0, 5, 2, 7) = 0",
                     "bcm_vlan_control_port_set(0, 5, 4, 7) = 0"}));
    EXPECT_EQ(calls_of({"bcm_field_entry_reinstall"}).size(), 8U);
}

TEST_F(PortModeOnTrident2, RefusedSwitchesAreSeenByNobody)
{
    fail("fwmpd_bcm_port_control_set", -16);
    sw.journal.arm({.function = "bcm_vlan_control_port_set", .code = -4, .forever = true});
    rtifhal_port_l3_mode_set(PORT, 1);
    EXPECT_EQ(calls_of({"bcm_vlan_control_port_set"}).size(), 2U);
    EXPECT_EQ(calls_of({"bcm_field_entry_reinstall"}).size(), 8U);
    expect_reports({});
}

TEST_F(PortModeOnTrident2, VxlanWritesAlwaysOneAndGivesTheWrappersAnswer)
{
    fail("fwmpd_bcm_port_control_set", -16);
    EXPECT_EQ(rtifhal_set_vxlan_enable(0, PORT, 0), -16);
    expect_calls(
        {"bcm_pd_is_device_trident2() = 1", "fwmpd_bcm_port_control_set(0, 5, 187, 1) = -16"});
    expect_messages({trace("rtifhal_set_vxlan_enable", "port = 5 value = 0\n")});
}

TEST_F(PortMode, VxlanIsNothingOnATrident)
{
    EXPECT_EQ(rtifhal_set_vxlan_enable(0, PORT, 1), 0);
    expect_calls({"bcm_pd_is_device_trident2() = 0"});
    expect_messages({trace("rtifhal_set_vxlan_enable", "port = 5 value = 1\n")});
}

TEST_F(PortMode, TranslationIsControlTwoThenFour)
{
    rtifhal_set_vlan_xlate(0, PORT, 1);
    expect_calls(
        {"bcm_vlan_control_port_set(0, 5, 2, 1) = 0", "bcm_vlan_control_port_set(0, 5, 4, 1) = 0"});
    expect_messages({trace("rtifhal_set_vlan_xlate", "port = 5 value = 1\n")});
}

TEST_F(PortMode, SwitchesAnswerForPortsOfTheChipOnly)
{
    rtifhal_set_vlan_xlate(0, -1, 1);
    expect_calls({"bcm_vlan_control_port_set(0, -1, 2, 1) = -4",
                  "bcm_vlan_control_port_set(0, -1, 4, 1) = -4"});
}

} // namespace rtifhal_test::vlan_mode
