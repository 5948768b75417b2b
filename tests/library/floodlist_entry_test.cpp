/*
 * floodlist_entry_test.cpp: the edits of one field entry at the top of the rule
 * memory: its flood list, its in-port set, and the copy of the model entry.
 * Beside it: floodlist_test.cpp, a port's change in all entries.
 */
#include "support/flood_list.h"

namespace rtifhal_test::floodlist_entry
{

namespace
{

using namespace field_call;

using FloodList = FloodListTest;

TEST_F(FloodList, RoutedPortLeavesTheRedirectPorts)
{
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 1, 5), 0);
    expect_calls(flood_edit(125, FRONT, FRONT_BUT_5));
    expect_messages(
        {trace("rtifhal_add_remove_port_to_floodlist", "Tcam index = 125 l3 = 1 port = 5\n")});
    EXPECT_FALSE(floods_to(125, 5));
}

TEST_F(FloodList, SwitchedPortJoinsTheRedirectPorts)
{
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 0, 200), 0);
    expect_calls(flood_edit(125, FRONT, "{1-104,200}"));
    expect_messages(
        {trace("rtifhal_add_remove_port_to_floodlist", "Tcam index = 125 l3 = 0 port = 200\n")});
    EXPECT_TRUE(floods_to(125, 200));
}

TEST_F(FloodList, PortThatIsInAlreadyIsWrittenAgain)
{
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 0, 5), 0);
    expect_calls(flood_edit(125, FRONT, FRONT));
}

TEST_F(FloodList, PortThatIsOutAlreadyIsWrittenAgain)
{
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 1, 200), 0);
    expect_calls(flood_edit(125, FRONT, FRONT));
}

TEST_F(FloodList, PortsAtTheEdgesOfAWord)
{
    for (const int port : {0, 31, 32, 63, 64, 255}) {
        rtifhal_add_remove_port_to_floodlist(0, 125, 1, port);
        EXPECT_FALSE(floods_to(125, port)) << port;
        rtifhal_add_remove_port_to_floodlist(0, 125, 0, port);
        EXPECT_TRUE(floods_to(125, port)) << port;
    }
    EXPECT_EQ(installed(125).port_actions.at(32).text(), "{0-104,255}");
}

TEST_F(FloodList, OnlyTheLowEightBitsOfAPortCount)
{
    rtifhal_add_remove_port_to_floodlist(0, 125, 1, 300);
    expect_calls(flood_edit(125, FRONT, "{1-43,45-104}"));
    start();
    rtifhal_add_remove_port_to_floodlist(0, 125, 0, -1);
    EXPECT_EQ(calls().at(2), "bcm_field_action_ports_add(0, 125, 32, {1-43,45-104,255}) = 0");
}

TEST_F(FloodList, AnyNonzeroWordMeansRouted)
{
    rtifhal_add_remove_port_to_floodlist(0, 125, -4, 5);
    EXPECT_FALSE(floods_to(125, 5));
}

TEST_F(FloodList, UnreadablePortsAreWrittenBackAsZeros)
{
    fail("bcm_field_action_ports_get", -1);
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 1, 5), 0);
    EXPECT_EQ(calls().at(2), "bcm_field_action_ports_add(0, 125, 32, {}) = 0");
}

TEST_F(FloodList, UnreadablePortsAreWrittenBackWithOnlyThePortThatJoins)
{
    fail("bcm_field_action_ports_get", -1);
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 0, 5), 0);
    EXPECT_EQ(calls().at(2), "bcm_field_action_ports_add(0, 125, 32, {5}) = 0");
}

TEST_F(FloodList, OnlyTheReinstallDecidesTheResult)
{
    for (const char *function : {"bcm_field_action_remove", "bcm_field_action_ports_add"}) {
        start();
        fail(function, -1);
        EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 1, 5), 0) << function;
        EXPECT_EQ(sw.journal.count("bcm_field_entry_reinstall"), 1U) << function;
    }
    fail("bcm_field_entry_reinstall", -11);
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(0, 125, 1, 5), -11);
    expect_reports({});
}

TEST_F(FloodList, UnitIsHandedOnAsItIs)
{
    EXPECT_EQ(rtifhal_add_remove_port_to_floodlist(2, 125, 1, 5), -3);
    EXPECT_EQ(calls().front(), "bcm_field_action_ports_get(2, 125, 32) = -3");
    EXPECT_EQ(calls().back(), "bcm_field_entry_reinstall(2, 125) = -3");
}

class InPorts : public FloodList
{
};

TEST_F(InPorts, RoutedPortLeavesTheData)
{
    EXPECT_EQ(rtifhal_add_remove_port_from_inports(0, 124, 1, 5), 0);
    expect_calls(in_ports_edit(124, FRONT, FRONT_BUT_5));
    expect_messages(
        {trace("rtifhal_add_remove_port_from_inports", "Tcam index = 124 l3 = 1 port = 5\n")});
    EXPECT_FALSE(installed(124).in_ports->data.has(5));
    EXPECT_TRUE(installed(124).in_ports->mask.has(5));
}

TEST_F(InPorts, SwitchedPortJoinsTheData)
{
    EXPECT_EQ(rtifhal_add_remove_port_from_inports(0, 124, 0, 200), 0);
    expect_calls(in_ports_edit(124, FRONT, "{1-104,200}"));
}

TEST_F(InPorts, EditThatChangesNothingIsWrittenAgain)
{
    rtifhal_add_remove_port_from_inports(0, 124, 0, 5);
    rtifhal_add_remove_port_from_inports(0, 124, 1, 200);
    expect_calls(joined({in_ports_edit(124, FRONT, FRONT), in_ports_edit(124, FRONT, FRONT)}));
}

TEST_F(InPorts, OnlyTheLowEightBitsOfAPortCount)
{
    rtifhal_add_remove_port_from_inports(0, 124, 1, 300);
    expect_calls(in_ports_edit(124, FRONT, "{1-43,45-104}"));
}

TEST_F(InPorts, UnreadableQualifierIsWrittenBackAsZeros)
{
    fail("bcm_field_qualify_InPorts_get", -1);
    EXPECT_EQ(rtifhal_add_remove_port_from_inports(0, 124, 1, 5), 0);
    EXPECT_EQ(calls().at(2), "bcm_field_qualify_InPorts(0, 124, {}, {}) = 0");
}

TEST_F(InPorts, UnreadableQualifierIsWrittenBackWithOnlyThePortThatJoins)
{
    fail("bcm_field_qualify_InPorts_get", -1);
    EXPECT_EQ(rtifhal_add_remove_port_from_inports(0, 124, 0, 5), 0);
    EXPECT_EQ(calls().at(2), "bcm_field_qualify_InPorts(0, 124, {5}, {}) = 0");
}

TEST_F(InPorts, OnlyTheReinstallDecidesTheResult)
{
    for (const char *function : {"bcm_field_qualifier_delete", "bcm_field_qualify_InPorts"}) {
        start();
        fail(function, -1);
        EXPECT_EQ(rtifhal_add_remove_port_from_inports(0, 124, 1, 5), 0) << function;
        EXPECT_EQ(sw.journal.count("bcm_field_entry_reinstall"), 1U) << function;
    }
    fail("bcm_field_entry_reinstall", -11);
    EXPECT_EQ(rtifhal_add_remove_port_from_inports(0, 124, 1, 5), -11);
    expect_reports({});
}

class LinkLocalEntry : public FloodList
{
};

TEST_F(LinkLocalEntry, TakesTheRedirectPortsOfTheModelEntry)
{
    rtifhal_add_remove_port_to_floodlist(0, 123, 1, 5);
    start();
    EXPECT_EQ(rtifhal_update_linklocal_entry(127), 0);
    expect_calls({UNIT, SIZE, "bcm_field_action_ports_get(0, 123, 32) = 0 [ports={1-4,6-104}]",
                  "bcm_field_action_remove(0, 127, 32) = 0",
                  "bcm_field_action_ports_add(0, 127, 32, {1-4,6-104}) = 0",
                  "bcm_field_entry_reinstall(0, 127) = 0"});
    expect_messages({});
    EXPECT_FALSE(floods_to(127, 5));
}

TEST_F(LinkLocalEntry, GetsNoPortsFromAModelThatCanNotBeRead)
{
    fail("bcm_field_action_ports_get", -1);
    EXPECT_EQ(rtifhal_update_linklocal_entry(127), 0);
    EXPECT_EQ(calls().at(4), "bcm_field_action_ports_add(0, 127, 32, {}) = 0");
}

TEST_F(LinkLocalEntry, CountsTheModelBackFrom128WhileTheSizeIsUnknown)
{
    fail("fwmpd_trident_get_sup_tcam_default_size", -1);
    EXPECT_EQ(rtifhal_update_linklocal_entry(127), 0);
    EXPECT_EQ(calls().at(2), "bcm_field_action_ports_get(0, 123, 32) = 0 [ports={1-104}]");
    expect_messages(
        {report("rtifhal_brcm_tcam_sup_default_size",
                "rtifhal_brcm_tcam_sup_default_size: FWMPD sup tcam size fetch returned error "
                "-1\n")});
}

TEST_F(LinkLocalEntry, OnlyTheReinstallDecidesTheResult)
{
    fail("bcm_field_action_remove", -1);
    fail("bcm_field_action_ports_add", -1);
    EXPECT_EQ(rtifhal_update_linklocal_entry(127), 0);
    EXPECT_EQ(rtifhal_update_linklocal_entry(999), -7);
    expect_reports({});
}

} // namespace

} // namespace rtifhal_test::floodlist_entry
