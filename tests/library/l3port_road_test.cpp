/*
 * l3port_road_test.cpp: the whole road of a routed port: up, down, down with
 * its record kept, up again, and what a fast restart and restore mode do
 * differently. Every call and every message, on both chips.
 *
 * l3port_add_test.cpp and l3port_delete_test.cpp have the single steps.
 */
#include "support/l3_objects.h"
#include "support/l3port_roads.h"
#include "support/library_test.h"
#include "support/lif.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <fwm/state.h>

namespace rtifhal_test::l3port_road
{

namespace
{

using namespace l3port_road;

class L3PortRoad : public LibraryTest
{
protected:
    L3PortRoad()
    {
        l3iif_table_init();
        start();
    }
    /** Brings a port up before the stretch that is looked at. */
    void brought_up(Lif &lif)
    {
        ASSERT_EQ(rtifhal_trident_add_l3port(lif.get(), 1), 0);
        sw.end_request();
        start();
    }
};

class L3PortRoadOnTrident2 : public Trident2Test
{
protected:
    L3PortRoadOnTrident2()
    {
        l3iif_table_init();
        start();
    }
};

} // namespace

TEST_F(L3PortRoad, UpMakesEveryCall)
{
    const auto lif = port(PORT);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    expect_calls(up(*lif, Kind::trident, ordinary_start()));
    EXPECT_EQ(lif->lif.lif_state, 3U);
    EXPECT_EQ(lif->lif.int_vlan, 4094);
}

TEST_F(L3PortRoad, UpLeavesEveryMessage)
{
    const auto lif = port(PORT);
    rtifhal_trident_add_l3port(lif->get(), 1);
    expect_messages(join({interface_step_messages(Kind::trident), ingress_and_egress_messages()}));
}

TEST_F(L3PortRoad, UpIsInTheChipAfterTheRequest)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    const simswitch::chip::Port chip_port = sw.chip.ports.get(PORT);
    EXPECT_EQ(chip_port.untagged_vlan, 4094);
    EXPECT_EQ(chip_port.controls, (std::map<int, int>{{8, 1}, {10, 1}, {67, IIF}}));
    EXPECT_NE(sw.chip.l3_interfaces.find(IIF), nullptr);
    EXPECT_NE(sw.chip.l3_ingresses.find(IIF), nullptr);
    EXPECT_EQ(sw.chip.vlans.find(4094)->members.text(), "{0,5}");
    EXPECT_EQ(sw.chip.stgs.find(2)->in_state(4).text(), "{5}");
}

TEST_F(L3PortRoadOnTrident2, UpMakesEveryCall)
{
    const auto lif = port(PORT);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    expect_calls(up(*lif, Kind::trident2, ordinary_start()));
}

TEST_F(L3PortRoadOnTrident2, UpLeavesTheSameMessages)
{
    const auto lif = port(PORT);
    rtifhal_trident_add_l3port(lif->get(), 1);
    expect_messages(join({interface_step_messages(Kind::trident2), ingress_and_egress_messages()}));
}

TEST_F(L3PortRoad, UpOnAFastRestartPublishesAndServesDefaultRoutes)
{
    const auto lif = port(PORT);
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    expect_calls(up(*lif, Kind::trident, fast_restart(*lif)));
    const std::string defaults = "rtifhal_trident_create_default_nh";
    expect_messages(join({interface_step_messages(Kind::trident),
                          Messages{trace(defaults, defaults + " start >>\n"),
                                   trace(defaults, defaults + " end >>\n")},
                          ingress_and_egress_messages()}));
}

TEST_F(L3PortRoad, UpInRestoreModeOnlyMarksTheInterface)
{
    const auto lif = port(PORT);
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    expect_calls({});
    expect_messages({trace("rtifhal_trident_add_l3port",
                           "\nrtifhal_trident_add_l3port: L3LIF: 0x10400000, 1\n")});
    EXPECT_EQ(lif->lif.lif_state, 3U);
    EXPECT_EQ(lif->lif.int_vlan, 0);
}

TEST_F(L3PortRoad, DownForGoodMakesEveryCall)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    EXPECT_EQ(rtifhal_trident_del_l3port(lif->get(), 1), 0);
    expect_calls(down(*lif, Kind::trident));
    EXPECT_EQ(lif->lif.lif_state, 4U);
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
}

TEST_F(L3PortRoad, DownForGoodLeavesEveryMessage)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    rtifhal_trident_del_l3port(lif->get(), 1);
    expect_messages(down_messages());
}

TEST_F(L3PortRoadOnTrident2, DownForGoodMakesEveryCall)
{
    const auto lif = port(PORT);
    rtifhal_trident_add_l3port(lif->get(), 1);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3port(lif->get(), 1), 0);
    expect_calls(down(*lif, Kind::trident2));
    start();
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(L3PortRoadOnTrident2, DownForGoodLeavesTheSameMessages)
{
    const auto lif = port(PORT);
    rtifhal_trident_add_l3port(lif->get(), 1);
    start();
    rtifhal_trident_del_l3port(lif->get(), 1);
    expect_messages(down_messages());
}

TEST_F(L3PortRoad, DownWithTheRecordKeptParksTheNumber)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    EXPECT_EQ(rtifhal_trident_del_l3port(lif->get(), 0), 0);
    expect_calls(
        join({untied(*lif, false), object_read(*lif), port_closed(), Calls{called::unit()},
              object_deleted(), Calls{called::unstore(*lif)}, routed_vlan_left(Kind::trident)}));
    EXPECT_EQ(lif->lif.lif_state, 4U);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 1U);
    EXPECT_EQ(lif->record()->prev_l3_if_index, IIF);
    EXPECT_FALSE(held_back(IIF));
}

TEST_F(L3PortRoad, DownWithTheRecordKeptLeavesEveryMessage)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    rtifhal_trident_del_l3port(lif->get(), 0);
    expect_messages(down_messages(0));
}

TEST_F(L3PortRoad, DownForGoodAfterThatLeavesEveryMessage)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    rtifhal_trident_del_l3port(lif->get(), 0);
    start();
    rtifhal_trident_del_l3port(lif->get(), 1);
    expect_messages(parked_down_messages());
}

TEST_F(L3PortRoad, DownForGoodAfterThatReadsAndDeletesNoObject)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    rtifhal_trident_del_l3port(lif->get(), 0);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3port(lif->get(), 1), 0);
    expect_calls(
        join({untied(*lif, true), Calls{called::unit()}, port_asked(*lif),
              Calls{called::intf_init(), called::flush()}, port_closed(), Calls{called::unit()},
              record_released(), Calls{called::unstore(*lif)}, routed_vlan_left(Kind::trident)}));
    EXPECT_TRUE(held_back(IIF));
    expect_reports({});
}

TEST_F(L3PortRoad, UpAgainProgramsTheSameObjectsUnderTheSameNumber)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    rtifhal_trident_del_l3port(lif->get(), 0);
    start();
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 0), 0);
    expect_calls(up_again(*lif, Kind::trident, ordinary_start()));
    EXPECT_EQ(lif->lif.lif_state, 3U);
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
}

TEST_F(L3PortRoad, UpAgainLeavesEveryMessage)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    rtifhal_trident_del_l3port(lif->get(), 0);
    start();
    rtifhal_trident_add_l3port(lif->get(), 0);
    expect_messages(up_again_messages(Kind::trident));
}

TEST_F(L3PortRoad, UpAgainWithoutADownBetweenProgramsEverythingAgain)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 0), 0);
    expect_calls(up_again(*lif, Kind::trident, ordinary_start()));
}

TEST_F(L3PortRoad, UpAgainOnAFastRestartServesDefaultRoutesToo)
{
    const auto lif = port(PORT);
    brought_up(*lif);
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 0), 0);
    expect_calls(up_again(*lif, Kind::trident, fast_restart(*lif)));
}

} // namespace rtifhal_test::l3port_road
