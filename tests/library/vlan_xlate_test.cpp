/*
 * vlan_xlate_test.cpp: ingress VLAN translation: the key that a port looks up,
 * a translation that comes and goes, and the generic ports that they name.
 *
 * subint_chip_test.cpp has what the chip holds in the end.
 */
#include "support/library_test.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/vlan/gport.h"
#include "rtifhal_kelvo_trident/vlan/xlate.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::vlan_xlate
{

namespace
{

const std::string ENABLE = "rtifhal_vlan_xlate_enable";
const std::string ADD = "rtifhal_vlan_xlate";
const std::string DELETE = "rtifhal_vlan_del_xlate";
const std::string SDK_ENABLE = "fwmpd_bcm_vlan_control_port_set";
const std::string SDK_ADD = "fwmpd_bcm_vlan_translate_action_add";
const std::string SDK_DELETE = "fwmpd_bcm_vlan_translate_action_delete";
constexpr bcm_gport_t PORT_5 = 0x8000005;
constexpr bcm_gport_t TRUNK_8 = 0xc000008;

class VlanXlate : public LibraryTest
{
};

} // namespace

TEST_F(VlanXlate, PortLooksUpByPortAndOuterVlan)
{
    EXPECT_EQ(rtifhal_vlan_xlate_enable(0, 5), 0);
    expect_calls({SDK_ENABLE + "(0, 5, 14, 8) = 0"});
    expect_messages({trace(ENABLE, "port 5\n")});
}

TEST_F(VlanXlate, PortThatHasTheKeyGetsItAgain)
{
    rtifhal_vlan_xlate_enable(0, 5);
    EXPECT_EQ(rtifhal_vlan_xlate_enable(0, 5), 0);
    expect_calls({SDK_ENABLE + "(0, 5, 14, 8) = 0", SDK_ENABLE + "(0, 5, 14, 8) = 0"});
}

TEST_F(VlanXlate, UnitIsTheCallersOwn)
{
    rtifhal_vlan_xlate_enable(1, 5);
    rtifhal_vlan_del_xlate(1, PORT_5, 100, 0, 7);
    EXPECT_TRUE(calls().at(0).starts_with(SDK_ENABLE + "(1, 5, 14, 8)"));
    EXPECT_TRUE(calls().at(1).starts_with(SDK_DELETE + "(1, 0x8000005, 8, 100, 0)"));
}

TEST_F(VlanXlate, RefusedKeyIsReportedWithItsPort)
{
    fail(SDK_ENABLE, -4);
    EXPECT_EQ(rtifhal_vlan_xlate_enable(0, 5), -1);
    expect_messages({trace(ENABLE, "port 5\n"),
                     report(ENABLE, fmt::format("xlate enable (5) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(VlanXlate, PositiveAnswersAreNoRefusals)
{
    fail(SDK_ENABLE, 1);
    fail(SDK_ADD, 1);
    fail(SDK_DELETE, 1);
    EXPECT_EQ(rtifhal_vlan_xlate_enable(0, 5), 0);
    EXPECT_EQ(rtifhal_vlan_xlate(0, PORT_5, 100, 4094, 7), 0);
    EXPECT_EQ(rtifhal_vlan_del_xlate(0, PORT_5, 100, 0, 7), 0);
    expect_reports({});
}

TEST_F(VlanXlate, TranslationReplacesTheTagAndNamesTheInterface)
{
    EXPECT_EQ(rtifhal_vlan_xlate(0, PORT_5, 100, 4094, 7), 0);
    expect_calls(
        {"bcm_vlan_action_set_t_init()", SDK_ADD + "(0, 0x8000005, 8, 100, 65535, "
                                                   "{vlan=4094 iif=7 ot_outer=2 dt_outer=0}) = 0"});
    expect_messages({
        trace(ADD, "gport 8000005, old_vid 100, new_vid 4094, l3_iif 7\n"),
        trace(ADD, "xlate enable ( gport 8000005) from-vlan 100 to-vlan 4094 if 7\n"),
    });
}

TEST_F(VlanXlate, TranslationOfATrunkIsKeyedOnTheTrunk)
{
    EXPECT_EQ(rtifhal_vlan_xlate(0, TRUNK_8, 100, 4094, 7), 0);
    EXPECT_EQ(calls_of({SDK_ADD}), Calls{SDK_ADD + "(0, 0xc000008, 8, 100, 65535, "
                                                   "{vlan=4094 iif=7 ot_outer=2 dt_outer=0}) = 0"});
}

TEST_F(VlanXlate, EqualVlansLeaveTheTagActionAlone)
{
    EXPECT_EQ(rtifhal_vlan_xlate(0, PORT_5, 4094, 4094, 7), 0);
    EXPECT_EQ(calls_of({SDK_ADD}), Calls{SDK_ADD + "(0, 0x8000005, 8, 4094, 65535, "
                                                   "{vlan=4094 iif=7 ot_outer=0 dt_outer=0}) = 0"});
    EXPECT_EQ(messages().back(),
              trace(ADD, "xlate enable ( gport 8000005) from-vlan 4094 to-vlan 4094 if 7\n"));
}

TEST_F(VlanXlate, SixteenBitsOfTheVlanAreTheKey)
{
    rtifhal_vlan_xlate(0, PORT_5, 0x3ffff, 4094, 7);
    rtifhal_vlan_del_xlate(0, PORT_5, 0x3ffff, 0, 7);
    EXPECT_TRUE(
        calls_of({SDK_ADD}).at(0).starts_with(SDK_ADD + "(0, 0x8000005, 8, 65535, 65535, "));
    EXPECT_TRUE(
        calls_of({SDK_DELETE}).at(0).starts_with(SDK_DELETE + "(0, 0x8000005, 8, 65535, 0)"));
    EXPECT_EQ(messages().at(0),
              trace(ADD, "gport 8000005, old_vid 262143, new_vid 4094, l3_iif 7\n"));
}

TEST_F(VlanXlate, RefusedTranslationIsReportedOnce)
{
    fail(SDK_ADD, -6);
    EXPECT_EQ(rtifhal_vlan_xlate(0, PORT_5, 100, 4094, 7), -1);
    expect_messages({
        trace(ADD, "gport 8000005, old_vid 100, new_vid 4094, l3_iif 7\n"),
        report(ADD,
               fmt::format("xlate enable (134217733) 100 4094 7  failed: {}\n", _shr_errmsg[6])),
    });
}

TEST_F(VlanXlate, SecondTranslationOfTheSameKeyIsRefused)
{
    rtifhal_vlan_xlate(0, PORT_5, 100, 4094, 7);
    sw.end_request();
    rtifhal_vlan_xlate(0, PORT_5, 100, 4094, 8);
    sw.end_request();
    const auto *action = sw.chip.vlan_translations.find({PORT_5, 8, 100, 65535});
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(action->ingress_if, 7);
}

TEST_F(VlanXlate, DeleteNamesAnotherInnerVlanThanTheAdd)
{
    rtifhal_vlan_xlate(0, PORT_5, 100, 4094, 7);
    sw.end_request();
    start();
    EXPECT_EQ(rtifhal_vlan_del_xlate(0, PORT_5, 100, 0, 7), 0);
    expect_calls({SDK_DELETE + "(0, 0x8000005, 8, 100, 0) = 0"});
    expect_messages({trace(DELETE, "old-vlan 100 gport 8000005\n")});
    sw.end_request();
    EXPECT_EQ(sw.chip.vlan_translations.size(), 0U);
}

TEST_F(VlanXlate, DeleteLooksAtNoFurtherArgument)
{
    rtifhal_vlan_xlate(0, TRUNK_8, 100, 4094, 7);
    sw.end_request();
    start();
    EXPECT_EQ(rtifhal_vlan_del_xlate(0, TRUNK_8, 100, 4094, -1), 0);
    expect_calls({SDK_DELETE + "(0, 0xc000008, 8, 100, 0) = 0"});
}

TEST_F(VlanXlate, RefusedDeleteIsReportedWithItsVlan)
{
    fail(SDK_DELETE, -7);
    EXPECT_EQ(rtifhal_vlan_del_xlate(0, PORT_5, 100, 0, 7), -1);
    expect_messages({
        trace(DELETE, "old-vlan 100 gport 8000005\n"),
        report(DELETE,
               fmt::format("bcm_vlan_translate_action_del(100) failed: {}\n", _shr_errmsg[7])),
    });
}

TEST(GenericPort, ModulePortHasTheUnitAsItsModule)
{
    EXPECT_EQ(module_port(0, 5), 0x8000005);
    EXPECT_EQ(module_port(1, 5), 0x8000805);
    EXPECT_EQ(module_port(0x8001, 0x805), 0x8000805);
    EXPECT_EQ(module_port(0x7fff, 0x7ff), 0xbffffff);
}

TEST(GenericPort, TrunkHasTwentySixBits)
{
    EXPECT_EQ(trunk_gport(41), 0xc000029);
    EXPECT_EQ(trunk_gport(0), 0xc000000);
    EXPECT_EQ(trunk_gport(-1), 0xfffffff);
}

TEST(GenericPort, OnlyAModulePortHasAPort)
{
    EXPECT_EQ(port_of_gport(0x8000005), 5);
    EXPECT_EQ(port_of_gport(0x8000805), 5);
    EXPECT_EQ(port_of_gport(0xc000029), -1);
    EXPECT_EQ(port_of_gport(5), -1);
    EXPECT_EQ(port_of_gport(static_cast<bcm_gport_t>(0x88000005)), -1);
}

} // namespace rtifhal_test::vlan_xlate
