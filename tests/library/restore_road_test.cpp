/*
 * restore_road_test.cpp: a restart as a whole: one process brings interfaces
 * up and ends, the next one takes them up from the store and goes on with them
 * as if it had made them itself.
 *
 * restore_global_test.cpp and its neighbours have the single steps.
 */
#include "support/l3port_roads.h"
#include "support/member_roads.h"
#include "support/restore_roads.h"
#include "support/subint_roads.h"
#include "support/svi_roads.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <fwm/state.h>

#include <cstring>

namespace rtifhal_test::restore_road
{

namespace
{

using namespace restore_road;
namespace chip = simswitch::chip;

constexpr int PORT = l3port_road::PORT;
constexpr int IIF = 3;

/** The next process has restored its global context; start() stands right behind that. */
void next_process(simswitch::Switch &sw)
{
    restart(sw);
    ASSERT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    sw.journal.clear();
    sw.trace.clear();
}

/** Restores all that is stored, in the order of the ifindex. */
std::vector<std::unique_ptr<StoredLif>> all_restored(simswitch::Switch &sw)
{
    std::vector<std::unique_ptr<StoredLif>> restored;
    for (const auto &stored : sw.store.stored_interfaces()) {
        restored.push_back(std::make_unique<StoredLif>(stored));
        EXPECT_EQ(rtifhal_trident_l3port_restore(restored.back()->lif->get()), 0);
    }
    return restored;
}

/** Port 5 is up under the number 3, by a process that has ended since. */
class RestoreRoad : public LibraryTest
{
protected:
    explicit RestoreRoad(const simswitch::Options &options = {}) : LibraryTest(options)
    {
        l3iif_table_init();
        up(*first_life);
    }

    void up(Lif &lif)
    {
        EXPECT_EQ(rtifhal_trident_add_l3port(lif.get(), 1), 0);
        sw.end_request();
    }

    /** The port as the next process has it, out of restore mode. */
    std::unique_ptr<StoredLif> taken_over()
    {
        next_process(sw);
        auto stored = from_store(sw, first_life->lif.ifindex);
        EXPECT_EQ(rtifhal_trident_l3port_restore(stored->lif->get()), 0);
        EXPECT_EQ(rtifhal_trident_add_l3port(stored->lif->get(), 1), 0);
        g_fwm_pss_restore_mode = 0;
        start();
        return stored;
    }

    std::unique_ptr<Lif> first_life = port(PORT);
};

class RestoreRoadOnTrident2 : public RestoreRoad
{
protected:
    RestoreRoadOnTrident2() : RestoreRoad({.chip = Kind::trident2}) {}
};

class RestoreSubintRoad : public subint_road::SubintOnPort
{
};

class RestoreMemberRoad : public member_road::MemberTest
{
};

class RestoreSviRoad : public svi_road::SviTest
{
};

} // namespace

TEST_F(RestoreRoad, RestoreAndAddMakeNoCallThatReachesTheChip)
{
    const chip::Snapshot before = chip::snapshot(sw.chip);
    const std::uint64_t writes = sw.chip.writes;
    next_process(sw);
    const auto stored = from_store(sw, first_life->lif.ifindex);
    EXPECT_EQ(rtifhal_trident_l3port_restore(stored->lif->get()), 0);
    EXPECT_EQ(rtifhal_trident_add_l3port(stored->lif->get(), 1), 0);
    expect_calls(port_restored(*stored->lif, ROUTED, PORT));
    expect_messages({entered(*stored->lif, 0, ROUTED), port_found(ROUTED, PORT, IIF),
                     trace("rtifhal_trident_add_l3port",
                           "\nrtifhal_trident_add_l3port: L3LIF: 0x10400000, 1\n")});
    EXPECT_EQ(stored->lif->lif.lif_state, 3U);
    EXPECT_EQ(sw.chip.writes, writes);
    EXPECT_EQ(sw.wrappers.pending(), 0U);
    EXPECT_EQ(chip::changes(before, chip::snapshot(sw.chip)), Calls{});
}

TEST_F(RestoreRoad, ProgrammingAgainFindsTheChipAsItShouldBe)
{
    const chip::Snapshot before = chip::snapshot(sw.chip);
    const auto stored = taken_over();
    EXPECT_EQ(rtifhal_trident_add_l3port(stored->lif->get(), 0), 0);
    sw.end_request();
    EXPECT_EQ(chip::changes(before, chip::snapshot(sw.chip)), Calls{});
    expect_reports({});
}

TEST_F(RestoreRoad, DeleteMakesTheCallsOfAPortThatSawNoRestart)
{
    const auto stored = taken_over();
    EXPECT_EQ(rtifhal_trident_del_l3port(stored->lif->get(), 1), 0);
    expect_calls(l3port_road::down(*stored->lif, Kind::trident));
    expect_reports({});
    EXPECT_TRUE(held_back(IIF));
    EXPECT_EQ(vlans_of(PORT), std::vector<unsigned>{});
}

TEST_F(RestoreRoadOnTrident2, DeleteMakesTheCallsOfAPortThatSawNoRestart)
{
    const auto stored = taken_over();
    EXPECT_EQ(rtifhal_trident_del_l3port(stored->lif->get(), 1), 0);
    expect_calls(l3port_road::down(*stored->lif, Kind::trident2));
    expect_reports({});
}

TEST_F(RestoreRoad, NumbersOfLiveAndOfDestroyedInterfacesAreTaken)
{
    const auto gone = port(6);
    const auto live = port(7);
    up(*gone);
    up(*live);
    ASSERT_EQ(rtifhal_trident_del_l3port(gone->get(), 1), 0);
    next_process(sw);
    EXPECT_EQ(all_in_use(), "0-2 4 3584-8191");
    EXPECT_EQ(all_restored(sw).size(), 2U);
    EXPECT_EQ(all_in_use(), "0-5 3584-8191");
    EXPECT_EQ(all_held_back(), "4");
    EXPECT_EQ(next_number(), 6);
    take_all_free();
    EXPECT_EQ(next_number(), 4);
    EXPECT_EQ(next_number(), -1);
}

TEST_F(RestoreRoad, NextInterfaceGetsANumberOfItsOwn)
{
    const auto stored = taken_over();
    const auto next = port(6);
    up(*next);
    EXPECT_EQ(next->record()->l3intf_id, 4);
    EXPECT_EQ(stored->lif->record()->l3intf_id, IIF);
    EXPECT_EQ(sw.chip.l3_interfaces.size(), 2U);
}

TEST_F(RestoreRoad, RoutedGroupIsNotAllocatedASecondTime)
{
    taken_over();
    const auto next = port(6);
    up(*next);
    EXPECT_EQ(calls_of({"fwmpd_allocate_stg", "bcm_stg_vlan_add"}), Calls{});
    EXPECT_EQ(l3_stg_allocated, 1U);
    EXPECT_EQ(l3_stg, 0);
}

TEST_F(RestoreRoad, NewVlanJoinsGroup0BecauseTheGroupsIdWasNotRestored)
{
    taken_over();
    EXPECT_EQ(rtifhal_vlan_create(0, 100, PORT), 0);
    sw.end_request();
    EXPECT_EQ(calls_of({"fwmpd_allocate_stg", "bcm_stg_vlan_add"}),
              Calls{"bcm_stg_vlan_add(0, 0, 100) = 0"});
    EXPECT_EQ(sw.chip.stgs.vlans_of(0), std::vector<int>{100});
    EXPECT_EQ(sw.chip.stgs.vlans_of(2), std::vector<int>{ROUTED});
    EXPECT_EQ(sw.chip.stgs.find(0)->states.at(PORT), 4);
    expect_reports({});
}

TEST_F(RestoreRoad, UnwrittenQueueOfTheLastProcessIsNotMadeUpFor)
{
    const auto late = port(6);
    ASSERT_EQ(rtifhal_trident_add_l3port(late->get(), 1), 0);
    ASSERT_NE(sw.wrappers.pending(), 0U);
    sw.wrappers.drop_pending();
    const chip::Snapshot before = chip::snapshot(sw.chip);
    next_process(sw);
    all_restored(sw);
    EXPECT_EQ(chip::changes(before, chip::snapshot(sw.chip)), Calls{});
    EXPECT_EQ(sw.wrappers.pending(), 0U);
}

TEST_F(RestoreSubintRoad, PortHoldsItsEncapsulationVlanAgain)
{
    brought_up(*sub);
    const chip::Snapshot before = chip::snapshot(sw.chip);
    next_process(sw);
    const auto restored = all_restored(sw);
    ASSERT_EQ(restored.size(), 1U);
    expect_calls(port_restored(*restored.front()->lif, subint_road::VLAN, PORT));
    EXPECT_EQ(vlans_of(PORT), std::vector<unsigned>{subint_road::VLAN});
    EXPECT_EQ(restored.front()->lif->lif.int_vlan, sub->lif.int_vlan);
    EXPECT_TRUE(in_use(IIF));
    EXPECT_EQ(chip::changes(before, chip::snapshot(sw.chip)), Calls{});
}

TEST_F(RestoreMemberRoad, MembersAreCachedAsTheChipHasThem)
{
    simswitch::services::Tree tree;
    ASSERT_TRUE(tree.insert(first->get()));
    ASSERT_TRUE(tree.insert(second->get()));
    main->lif.pc_member_tree = tree.get();
    both_up();
    const chip::Snapshot before = chip::snapshot(sw.chip);
    next_process(sw);
    const auto restored = all_restored(sw);
    ASSERT_EQ(restored.size(), 1U);
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{5,6}");
    EXPECT_TRUE(in_use(IIF));
    EXPECT_EQ(count_of_port_vlans(), 0);
    EXPECT_EQ(chip::changes(before, chip::snapshot(sw.chip)), Calls{});
    expect_reports({});
}

TEST_F(RestoreSviRoad, CachedRecordIsWhatTheLastProcessLeftInTheChip)
{
    lif->properties.vrf = 5;
    lif->properties.urpf_mode = 3;
    is_up();
    const chip::Snapshot before = chip::snapshot(sw.chip);
    next_process(sw);
    const bcm_vlan_control_vlan_t left = cached();
    EXPECT_EQ(all_restored(sw).size(), 1U);
    EXPECT_EQ(std::memcmp(&cached(), &left, sizeof left), 0);
    EXPECT_EQ(cached().vc_vrf, 5U);
    EXPECT_EQ(cached().vc_urpf_mode, 2U);
    EXPECT_EQ(cached().vc_ingress_if, 3U);
    EXPECT_EQ(rtifhal_is_vlan_svi(svi_road::VLAN), 1);
    EXPECT_EQ(chip::changes(before, chip::snapshot(sw.chip)), Calls{});
}

} // namespace rtifhal_test::restore_road
