/*
 * wrappers_test.cpp: the write queue and the caches of VLAN controls and block
 * masks.
 */
#include "chip/snapshot.h"
#include "fwm/wrappers.h"
#include "sdk/convert.h"
#include "switch.h"

#include <gmock/gmock.h>
#include <sdk/vlan.h>

namespace simswitch
{

namespace
{

struct Queue : testing::Test {
    Switch host;

    std::string last_reason() const { return host.journal.records().back().reason; }
};

const bcm_pbmp_t NO_PORTS{};
const bcm_pbmp_t PORT_5 = sdk::to_sdk(chip::PortSet{5});

} // namespace

TEST_F(Queue, ChipChangesAtTheFlush)
{
    EXPECT_EQ(fwmpd_bcm_port_control_set(0, 5, 67, 3), 0);
    EXPECT_EQ(host.chip.ports.control(5, 67), 0);
    EXPECT_EQ(host.wrappers.pending(), 1U);
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
    EXPECT_EQ(host.chip.ports.control(5, 67), 3);
    EXPECT_EQ(host.wrappers.pending(), 0U);
}

TEST_F(Queue, DirectReadBeforeTheFlushSeesTheOldChip)
{
    bcm_vlan_control_vlan_t control{};
    control.vc_vrf = 7;
    bcm_vlan_control_vlan_t read{};
    fwmpd_bcm_vlan_control_vlan_set(0, 1, control);
    bcm_vlan_control_vlan_get(0, 1, &read);
    EXPECT_EQ(read.vc_vrf, 0U);
    fwmpd_trident_batch_flush();
    bcm_vlan_control_vlan_get(0, 1, &read);
    EXPECT_EQ(read.vc_vrf, 7U);
}

TEST_F(Queue, WithoutAFlushADirectWriteIsOvertaken)
{
    bcm_vlan_control_vlan_t queued{};
    bcm_vlan_control_vlan_t direct{};
    queued.vc_flags = 0x278;
    direct.vc_flags = 0xa78;
    fwmpd_bcm_vlan_control_vlan_set(0, 1, queued);
    bcm_vlan_control_vlan_set(0, 1, direct);
    host.end_request();
    EXPECT_EQ(host.chip.vlans.find(1)->controls.flags, 0x278U);
}

TEST_F(Queue, WithoutAFlushADestroyedVlanStillExists)
{
    bcm_vlan_create(0, 100);
    fwmpd_bcm_vlan_destroy(0, 100);
    EXPECT_EQ(bcm_vlan_create(0, 100), -8);
    host.end_request();
    EXPECT_EQ(host.chip.vlans.find(100), nullptr);
}

TEST_F(Queue, EndOfRequestWritesWithoutAJournalLine)
{
    fwmpd_bcm_switch_control_set(0, 230, 1);
    const auto before = host.journal.calls();
    host.end_request();
    EXPECT_EQ(host.chip.switch_controls.get(230), 1);
    EXPECT_EQ(host.journal.calls(), before);
}

TEST_F(Queue, FullQueueFlushesItself)
{
    host.wrappers.set_capacity(2);
    fwmpd_bcm_port_control_set(0, 5, 8, 1);
    EXPECT_EQ(host.chip.ports.control(5, 8), 0);
    fwmpd_bcm_port_control_set(0, 5, 9, 1);
    EXPECT_EQ(host.chip.ports.control(5, 8), 1);
    EXPECT_EQ(host.wrappers.pending(), 0U);
    ASSERT_EQ(host.wrappers.own_flushes().size(), 1U);
    EXPECT_EQ(host.wrappers.own_flushes().front().text, "2 writes");
}

TEST_F(Queue, FlushTellsWhatItDid)
{
    fwmpd_trident_batch_flush();
    EXPECT_EQ(last_reason(), "");
    fwmpd_bcm_port_discard_set(0, 5, 1);
    fwmpd_trident_batch_flush();
    EXPECT_EQ(last_reason(), "1 write");
}

TEST_F(Queue, RefusedWriteIsToldAndTheRestIsDone)
{
    fwmpd_bcm_port_control_set(0, 5, 8, 1);
    EXPECT_EQ(fwmpd_bcm_vlan_port_add(0, 100, PORT_5, NO_PORTS), 0);
    fwmpd_bcm_port_control_set(0, 5, 9, 1);
    EXPECT_EQ(fwmpd_trident_batch_flush(), -7);
    EXPECT_EQ(last_reason(), "3 writes, 1 refused: vlan 100 add ports: VLAN 100 does not exist");
    EXPECT_EQ(host.chip.ports.control(5, 9), 1);
    EXPECT_EQ(host.wrappers.chip_writes(), 2U);
}

TEST_F(Queue, FirstRefusalGivesTheCode)
{
    bcm_l3_intf_t intf{};
    intf.l3a_flags = 0x40;
    intf.l3a_intf_id = 3;
    host.chip.l3_interfaces.create(3, {});
    host.wrappers.create_l3_interface(intf);
    fwmpd_bcm_vlan_destroy(0, 100);
    const fwm::FlushReport report = host.wrappers.flush();
    EXPECT_EQ(report.code, -8);
    EXPECT_EQ(report.writes, 2U);
    EXPECT_EQ(report.refused, 2U);
    EXPECT_EQ(report.text, "2 writes, 2 refused: l3 interface 3 create: L3 interface 3 exists "
                           "already; vlan 100 destroy: VLAN 100 does not exist");
}

TEST_F(Queue, ArgumentsOutOfRangeAreRefusedAtOnce)
{
    EXPECT_EQ(fwmpd_bcm_port_control_set(0, 256, 8, 1), -4);
    EXPECT_EQ(fwmpd_bcm_port_control_set(0, 5, 187, 1), -16);
    EXPECT_EQ(fwmpd_bcm_port_untagged_vlan_set(0, 5, 4096), -4);
    EXPECT_EQ(fwmpd_bcm_port_discard_set(0, 5, 9), -4);
    EXPECT_EQ(fwmpd_bcm_port_stp_set(0, 5, 9), -4);
    EXPECT_EQ(fwmpd_bcm_stg_stp_set(0, 1, 256, 4), -4);
    EXPECT_EQ(fwmpd_bcm_stg_stp_set(0, 9, 5, 4), -7);
    EXPECT_EQ(fwmpd_bcm_vlan_port_add(0, 4096, NO_PORTS, NO_PORTS), -4);
    EXPECT_EQ(fwmpd_bcm_vlan_port_remove(0, 0, NO_PORTS), -4);
    EXPECT_EQ(fwmpd_bcm_vlan_destroy(0, 4096), -4);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_set(0, 4096, {}), -4);
    EXPECT_EQ(fwmpd_bcm_switch_control_set(0, 1024, 1), -4);
    bcm_vlan_block_t block{};
    EXPECT_EQ(fwmpd_bcm_vlan_block_set(0, 4096, &block), -4);
    EXPECT_EQ(fwmpd_bcm_vlan_destroy(1, 100), -3);
    EXPECT_EQ(host.wrappers.pending(), 0U);
}

TEST_F(Queue, PortStateIsResolvedAtTheFlush)
{
    int stg = 0;
    host.chip.stgs.create(stg);
    host.chip.vlans.create(4094);
    host.chip.stgs.add_vlan(stg, 4094);
    fwmpd_bcm_vlan_port_add(0, 4094, PORT_5, PORT_5);
    fwmpd_bcm_port_stp_set(0, 5, 4);
    fwmpd_trident_batch_flush();
    EXPECT_EQ(host.chip.stgs.find(stg)->in_state(4), chip::PortSet{5});
}

TEST_F(Queue, EveryWriteReachesItsTable)
{
    bcm_vlan_block_t block{};
    block.broadcast = PORT_5;
    const auto before = chip::snapshot(host.chip);
    fwmpd_bcm_port_untagged_vlan_set(0, 5, 4094);
    fwmpd_bcm_port_discard_set(0, 5, 1);
    fwmpd_bcm_stg_stp_set(0, 1, 200, 1);
    fwmpd_bcm_vlan_block_set(0, 1, &block);
    fwmpd_bcm_vlan_port_remove(0, 1, PORT_5);
    host.wrappers.set_port_vlan_control(5, 14, 8);
    host.wrappers.add_translation({.gport = 0x8000001, .key_type = 8, .outer_vlan = 9}, {});
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
    EXPECT_EQ(host.chip.vlans.find(1)->blocks.broadcast, chip::PortSet{5});
    EXPECT_FALSE(host.chip.vlans.find(1)->members.has(5));
    EXPECT_THAT(
        chip::changes(before, chip::snapshot(host.chip)),
        testing::IsSupersetOf({
            "+ STG 1: forwarding {0-104} blocking {200} listening {} learning {}",
            "+ port 5: untagged 4094 discard 1 controls vlan-controls 14=8",
            "+ VLAN translation gport 0x8000001 type 8 outer 9 inner 0: vlan 0 iif 0 outer-tag 0",
        }));
    host.wrappers.remove_translation({.gport = 0x8000001, .key_type = 8, .outer_vlan = 9});
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
    EXPECT_EQ(host.chip.vlan_translations.size(), 0U);
}

TEST_F(Queue, PendingWritesInWordsAndDropped)
{
    bcm_vlan_block_t block{};
    fwmpd_bcm_port_control_set(0, 5, 67, 3);
    fwmpd_bcm_vlan_block_set(0, 1, &block);
    EXPECT_EQ(host.wrappers.pending_text(),
              (std::vector<std::string>{"port 5 control 67 = 3", "vlan 1 block masks"}));
    host.wrappers.drop_pending();
    host.end_request();
    EXPECT_EQ(host.wrappers.chip_writes(), 0U);
}

TEST_F(Queue, CachedControlsAreThereForEveryVlanBut0AndAbove4095)
{
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(0), nullptr);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(4096), nullptr);
    bcm_vlan_control_vlan_t *cached = fwmpd_bcm_vlan_control_vlan_get_from_cache(4095);
    ASSERT_NE(cached, nullptr);
    EXPECT_EQ(cached->vc_flags, 0U);
    EXPECT_EQ(
        host.journal.calls(),
        (std::vector<std::string>{"fwmpd_bcm_vlan_control_vlan_get_from_cache(0) = null",
                                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(4096) = null",
                                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(4095) = record"}));
}

TEST_F(Queue, CachedControlsAreChangedInPlaceBySetterAndDestroy)
{
    bcm_vlan_control_vlan_t *cached = fwmpd_bcm_vlan_control_vlan_get_from_cache(100);
    cached->vc_vrf = 3;
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(100), cached);
    EXPECT_EQ(cached->vc_vrf, 3U);
    EXPECT_EQ(host.wrappers.pending(), 0U);
    bcm_vlan_control_vlan_t other{};
    other.vc_vrf = 4;
    fwmpd_bcm_vlan_control_vlan_set(0, 100, other);
    EXPECT_EQ(cached->vc_vrf, 4U);
    fwmpd_bcm_vlan_destroy(0, 100);
    EXPECT_EQ(cached->vc_vrf, 0U);
}

TEST_F(Queue, ForgottenControlsAreNullUntilSet)
{
    host.wrappers.forget_vlan_control(100);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(100), nullptr);
    EXPECT_EQ(fwmpd_bcm_vlan_destroy(0, 100), 0);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(100), nullptr);
    fwmpd_bcm_vlan_control_vlan_set(0, 100, {});
    EXPECT_NE(fwmpd_bcm_vlan_control_vlan_get_from_cache(100), nullptr);
}

TEST_F(Queue, DirectControlWriteLeavesTheCacheAlone)
{
    bcm_vlan_control_vlan_t control{};
    control.vc_flags = 0x800;
    bcm_vlan_control_vlan_set(0, 1, control);
    EXPECT_EQ(host.wrappers.vlan_controls(1)->vc_flags, 0U);
}

TEST_F(Queue, BlockRecordsAreNeverNull)
{
    bcm_vlan_block_t *block = fwmpd_trident_get_bvbt(100);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(fwmpd_trident_get_bvbt(100), block);
    EXPECT_NE(fwmpd_trident_get_bvbt(0), block);
    EXPECT_EQ(fwmpd_trident_get_bvbt(4096), fwmpd_trident_get_bvbt(65535));
    EXPECT_NE(fwmpd_trident_get_bvbt(4096), fwmpd_trident_get_bvbt(4095));
    EXPECT_EQ(host.journal.calls().front(), "fwmpd_trident_get_bvbt(100) = record");
    host.journal.arm({.function = "fwmpd_trident_get_bvbt", .when = {}});
    EXPECT_NE(fwmpd_trident_get_bvbt(100), nullptr);
}

TEST_F(Queue, StoredVlansAreNoted)
{
    EXPECT_EQ(fwmpd_trident_vlan_bvcvt_store(100), 0);
    EXPECT_EQ(host.wrappers.stored_vlans(), std::vector<int>{100});
    EXPECT_EQ(host.wrappers.pending(), 0U);
}

TEST_F(Queue, InjectedFaultQueuesNothing)
{
    host.journal.arm({.function = "fwmpd_bcm_vlan_destroy", .code = -11, .when = {}});
    EXPECT_EQ(fwmpd_bcm_vlan_destroy(0, 1), -11);
    EXPECT_EQ(host.wrappers.pending(), 0U);
}

} // namespace simswitch
