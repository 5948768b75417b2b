/*
 * subint_port_controls_test.cpp: the port controls that a subinterface sets
 * whatever its main interface says, and that the last one gives back before it
 * goes.
 *
 * subint_delete_test.cpp and subint_delete_port_channel_test.cpp have the whole
 * way down.
 */
#include "support/subint_roads.h"

#include <fmt/format.h>

namespace rtifhal_test::subint_port_controls
{

namespace
{

using namespace subint_road;

const std::string DIRECT = "bcm_port_control_set";

/** The three controls of port 5 with those values. */
Calls restored(int ip4, int ip4_mc, int ip6)
{
    return {fmt::format("{}(0, 5, 8, {}) = 0", DIRECT, ip4),
            fmt::format("{}(0, 5, 10, {}) = 0", DIRECT, ip4_mc),
            fmt::format("{}(0, 5, 9, {}) = 0", DIRECT, ip6)};
}

class SubintPortControls : public SubintOnPort
{
protected:
    int restore() { return rtifhal_subint_restore_port_l3(sub->lif.ifindex, PORT); }
    /** The controls of the chip's port 5 that this is about. */
    std::vector<int> chip_controls() const
    {
        return {sw.chip.ports.control(PORT, 8), sw.chip.ports.control(PORT, 10),
                sw.chip.ports.control(PORT, 9), sw.chip.ports.control(PORT, 11)};
    }
};

class SubintPortControlsOfMembers : public SubintOnPortChannel
{
};

} // namespace

TEST_F(SubintPortControls, LastSubinterfaceGivesThoseOfTheMainInterfaceBack)
{
    main->properties.ipv4_mc_en = 1;
    EXPECT_EQ(restore(), 0);
    expect_calls(join({main_asked(*sub, *main), Calls{called::unit()}, restored(1, 1, 0)}));
    expect_messages({});
}

TEST_F(SubintPortControls, EachHasItsOwnProperty)
{
    main->properties.ipv4_en = 0;
    main->properties.ipv6_en = 1;
    restore();
    EXPECT_EQ(calls_of({DIRECT}), restored(0, 0, 1));
}

TEST_F(SubintPortControls, OnlyAPropertyOfOneIsOn)
{
    main->properties.ipv4_en = 2;
    main->properties.ipv4_mc_en = 0xFFFFFFFF;
    main->properties.ipv6_en = 3;
    restore();
    EXPECT_EQ(calls_of({DIRECT}), restored(0, 0, 0));
}

TEST_F(SubintPortControls, OneOfTwoSubinterfacesGivesNothingBack)
{
    const auto other = another(11, 200);
    EXPECT_EQ(restore(), 0);
    expect_calls(main_asked(*sub, *main));
}

TEST_F(SubintPortControls, NoSubinterfaceInTheTreeGivesNothingBack)
{
    subs.erase(sub->get());
    EXPECT_EQ(restore(), 0);
    expect_calls(main_asked(*sub, *main));
}

TEST_F(SubintPortControls, ResultIsThatOfTheLastOne)
{
    fail_when(DIRECT, "0, 5, 8, 1", -4);
    fail_when(DIRECT, "0, 5, 10, 0", -4);
    EXPECT_EQ(restore(), 0);
    EXPECT_EQ(sw.journal.count(DIRECT), 3U);
    fail_when(DIRECT, "0, 5, 9, 0", -16);
    EXPECT_EQ(restore(), -16);
}

TEST_F(SubintPortControls, RefusalDoesNotStopTheDelete)
{
    brought_up(*sub);
    sw.journal.arm({.function = DIRECT, .code = -4, .forever = true});
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    EXPECT_EQ(sw.journal.count(DIRECT), 3U);
    EXPECT_EQ(sub->lif.lif_state, 4U);
}

TEST_F(SubintPortControls, UnknownMainInterfaceGivesNothingBack)
{
    sw.directory.remove(main->lif.ifindex);
    EXPECT_EQ(restore(), 0);
    EXPECT_EQ(calls_of({DIRECT, "rtifhal_get_bcm_unit"}), Calls{});
}

TEST_F(SubintPortControls, MainInterfaceWithoutATreeGivesNothingBack)
{
    main->lif.subint_tree = nullptr;
    EXPECT_EQ(restore(), 0);
    EXPECT_EQ(calls_of({DIRECT, "rtifhal_get_bcm_unit"}), Calls{});
}

TEST_F(SubintPortControls, MainInterfaceWithoutPropertiesHasAllOff)
{
    main->without_properties();
    EXPECT_EQ(restore(), 0);
    EXPECT_EQ(calls_of({DIRECT}), restored(0, 0, 0));
}

TEST_F(SubintPortControls, ChipRoutesBothFamiliesWhileASubinterfaceIsUp)
{
    main->properties = {};
    brought_up(*sub);
    EXPECT_EQ(chip_controls(), (std::vector<int>{1, 1, 1, 0}));
    EXPECT_EQ(sw.chip.ports.get(PORT).untagged_vlan, 4094);
}

TEST_F(SubintPortControls, ChipIsBackWhenTheLastOfTwoHasGone)
{
    const auto other = another(11, 200);
    brought_up(*sub);
    brought_up(*other);
    ASSERT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    subs.erase(sub->get());
    sw.end_request();
    EXPECT_EQ(chip_controls(), (std::vector<int>{1, 1, 1, 0}));
    ASSERT_EQ(rtifhal_trident_del_subint(other->get(), 0, 1), 0);
    sw.end_request();
    EXPECT_EQ(chip_controls(), (std::vector<int>{1, 0, 0, 0}));
}

TEST_F(SubintPortControls, FourthControlIsNotGivenBack)
{
    brought_up(*sub);
    sw.chip.ports.set_control(PORT, 11, 1);
    ASSERT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    sw.end_request();
    EXPECT_EQ(chip_controls(), (std::vector<int>{1, 0, 0, 1}));
}

TEST_F(SubintPortControls, TheyComeBackBeforeTheTranslationGoes)
{
    brought_up(*sub);
    rtifhal_trident_del_subint(sub->get(), 0, 1);
    EXPECT_EQ(calls_of({DIRECT, UNTRANSLATE}),
              join({restored(1, 0, 0), untranslated(MODULE_PORT_5)}));
}

TEST_F(SubintPortControlsOfMembers, EachMembersComeBackBeforeItsDelete)
{
    brought_up();
    del(*sub, 1);
    Calls seen;
    for (const std::string &call : calls_of({DIRECT, "fwmpd_bcm_vlan_port_remove"})) {
        // Function and port tell them apart.
        seen.push_back(call.substr(0, call.find(')')));
    }
    EXPECT_EQ(seen,
              (Calls{"bcm_port_control_set(0, 5, 8, 1", "bcm_port_control_set(0, 5, 10, 0",
                     "bcm_port_control_set(0, 5, 9, 0", "fwmpd_bcm_vlan_port_remove(0, 100, {5}",
                     "bcm_port_control_set(0, 6, 8, 1", "bcm_port_control_set(0, 6, 10, 0",
                     "bcm_port_control_set(0, 6, 9, 0", "fwmpd_bcm_vlan_port_remove(0, 100, {6}",
                     "bcm_port_control_set(0, 9, 8, 1", "bcm_port_control_set(0, 9, 10, 0",
                     "bcm_port_control_set(0, 9, 9, 0", "fwmpd_bcm_vlan_port_remove(0, 100, {9}"}));
}

} // namespace rtifhal_test::subint_port_controls
