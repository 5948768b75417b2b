/*
 * state_tables_test.cpp: every table of the chip, and what the forwarding
 * manager keeps, comes back as it was.
 */
#include "chip/snapshot.h"
#include "outcome_matchers.h"
#include "state_dir.h"
#include "switch.h"

#include <fwm/state.h>
#include <fwmpd/wrappers.h>
#include <sdk/l3.h>

#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

using fwm::PrivateVlan;

struct StateTables : testing::Test {
    StateDir dir;
    std::optional<Switch> sw;

    StateTables() { reopen(); }
    /** Ends the switch and starts the next on its folder. */
    void reopen()
    {
        sw.reset();
        sw.emplace(Options{.chip = chip::Kind::trident2, .state_dir = dir.path()});
    }
    /** What reopen is to bring back: a plain copy of the chip in another switch's words. */
    chip::Snapshot reopened()
    {
        reopen();
        return chip::snapshot(sw->chip);
    }
};

/** Each table with entries whose fields all differ from what they are at first. */
void fill(chip::Chip &chip)
{
    int id = 0;
    chip.stations.create({.flags = 0xffffffff,
                          .mac = {1, 2, 3, 4, 5, 0xff},
                          .mac_mask = {0xff, 0xfe, 3, 4, 5, 6},
                          .vlan = 4095,
                          .vlan_mask = 0xfff,
                          .src_port = -1,
                          .src_port_mask = 7},
                         id);
    chip.l3_interfaces.create(8191, {0x10, -1, {1, 2, 3, 4, 5, 6}, 4094, 64, 9216, 3});
    chip.l3_ingresses.create(0, {0x20, 5, 2, 255, 65535, -3, {7, 0xffffffff}});
    chip.stgs.create(id);
    chip.stgs.set_state(id, 255, chip::STP_BLOCKING);
    chip.stgs.set_state(id, 3, 3);
    chip.vlans.create(4095);
    chip.vlans.add_ports(4095, {0, 5, 255}, {5});
    chip::VlanControls controls{1, 2, 0x80000000, 4, 5, {}};
    controls.rest[32] = 9;
    chip.vlans.set_controls(4095, controls);
    chip.vlans.set_blocks(4095, {{1}, {2, 3}, {4, 5, 6}, {200}});
    chip.stgs.add_vlan(id, 4095);
    chip.ports.set_control(5, chip::PORT_CONTROL_VXLAN, 1);
    chip.ports.set_control(5, chip::PORT_CONTROL_INGRESS, -7);
    chip.ports.set_vlan_control(5, 0, 3);
    chip.ports.set_untagged_vlan(5, 4095);
    chip.ports.set_discard(5, 3);
    chip.vlan_translations.create({chip::module_port(0, 5), 8, 100, chip::ANY_INNER_VLAN},
                                  {4094, 17, 2, 1});
    chip.vlan_translations.create({chip::trunk_gport(9), 8, 100, 0}, {1, 18, 0, 0});
    chip.trunks.create(65535, {1, 9, 3, 4, 5, 6, 7, {{1, chip::module_port(0, 5), 2, 3}, {}}});
    chip.egresses.create({1, 2, {1, 2, 3, 4, 5, 6}, 7, 8, 9, 10, 11, {}}, id);
    chip::Egress reserved;
    reserved.reserved[12] = 0xffffffff;
    int last = 0;
    chip.egresses.create(reserved, last);
    int group = 0;
    chip.multipath_groups.create({{id, last, id}}, group);
    chip.routes.create(chip::ip4_key(1, 0x0a000000, 0xff000000), {0x4100, group, true});
    const std::array<std::uint8_t, 16> ones{0xff, 0xff};
    chip.routes.create(chip::ip6_key(-1, ones, ones), {0, id, false});
    chip.field_groups.create(11, {-2, {13, 82}, false});
    chip.field_entries.create(11, id);
    chip.field_entries.add_action(id, chip::ACTION_DROP);
    chip.field_entries.add_port_action(id, chip::ACTION_REDIRECT_PORTS, {1, 2});
    chip.field_entries.set_in_ports(id, {{1}, {1, 2}});
    chip.field_entries.set_l3_routable(id, false);
    chip.field_entries.install(id);
    chip.switch_controls.set(230, -1);
    chip.tunnels.create(8191, {5, 0xffffffff, 1});
    chip.vxlan_ports.create({0xffffffff, 0xfffffffe, 0xfffffffd, 0xfffffffc, 0xfffffffb, 0xfffffffa,
                             0xfffffff9, 255, 4095},
                            id);
}

} // namespace

TEST_F(StateTables, FreshSwitchComesBackFresh)
{
    Switch fresh({.chip = chip::Kind::trident2});
    EXPECT_EQ(reopened(), chip::snapshot(fresh.chip));
    EXPECT_TRUE(chip::same_state(sw->chip, fresh.chip));
}

TEST_F(StateTables, EveryTableComesBackWithAllItsFields)
{
    fill(sw->chip);
    reopen();
    chip::Chip expected(chip::Kind::trident2);
    expected.field_groups.create(chip::ND_GROUP, {.enabled = false});
    fill(expected);
    EXPECT_EQ(chip::changes(chip::snapshot(expected), chip::snapshot(sw->chip)),
              std::vector<std::string>{});
    EXPECT_TRUE(chip::same_state(sw->chip, expected));
}

TEST_F(StateTables, WhatIsRemovedStaysAway)
{
    fill(sw->chip);
    reopen();
    chip::Chip &chip = sw->chip;
    chip.for_each_table([](const char *, auto &table) { EXPECT_FALSE(table.all().empty()); });
    chip.vxlan_ports.remove(0xfffffffe, 1);
    chip.tunnels.remove(8191);
    chip.field_entries.remove(chip::FIRST_FIELD_ENTRY);
    chip.field_entries.remove(248);
    chip.field_groups.remove(11);
    chip.routes.remove(chip::ip4_key(1, 0x0a000000, 0xff000000));
    chip.multipath_groups.remove(chip::FIRST_MULTIPATH_GROUP);
    chip.egresses.remove(chip::FIRST_EGRESS);
    chip.trunks.remove(65535);
    chip.vlan_translations.remove({chip::trunk_gport(9), 8, 100, 0});
    chip.ports.set_control(5, chip::PORT_CONTROL_VXLAN, 0);
    chip.vlans.remove(4095);
    chip.vlans.remove(1);
    chip.stgs.remove(2);
    chip.stations.remove(1);
    chip.l3_interfaces.remove(8191);
    chip.l3_ingresses.remove(0);
    chip.switch_controls.set(230, 0);
    const auto left = chip::snapshot(chip);
    EXPECT_EQ(reopened(), left);
}

TEST_F(StateTables, LowestFreeIdsAreGivenOutAgain)
{
    int id = 0;
    for (int i = 0; i < 3; ++i) {
        sw->chip.stations.create({}, id);
        sw->chip.egresses.create({}, id);
        sw->chip.stgs.create(id);
        sw->chip.vxlan_ports.create({.match_vlan = 100 + i}, id);
    }
    sw->chip.stations.remove(2);
    sw->chip.egresses.remove(chip::FIRST_EGRESS);
    sw->chip.stgs.remove(3);
    sw->chip.vxlan_ports.remove(0, 2);
    reopen();
    sw->chip.vxlan_ports.create({.match_vlan = 200}, id);
    EXPECT_EQ(id, 2);
    sw->chip.vxlan_ports.create({.match_vlan = 201}, id);
    EXPECT_EQ(id, 4);
    sw->chip.stations.create({}, id);
    EXPECT_EQ(id, 2);
    sw->chip.stations.create({}, id);
    EXPECT_EQ(id, 4);
    sw->chip.egresses.create({}, id);
    EXPECT_EQ(id, chip::FIRST_EGRESS);
    sw->chip.stgs.create(id);
    EXPECT_EQ(id, 3);
}

TEST_F(StateTables, EditsThatWereNotInstalledDieWithTheProcess)
{
    int fresh = 0;
    sw->chip.field_entries.create(chip::SUP_GROUP, fresh);
    sw->chip.field_entries.remove_action(255, chip::ACTION_REDIRECT_PORTS);
    reopen();
    EXPECT_EQ(sw->chip.field_entries.find(fresh), nullptr);
    chip::PortSet ports;
    EXPECT_THAT(sw->chip.field_entries.get_port_action(255, chip::ACTION_REDIRECT_PORTS, ports),
                Done());
    EXPECT_EQ(ports, chip::PortSet::front());
}

TEST_F(StateTables, DanglingReferencesComeBack)
{
    fill(sw->chip);
    sw->chip.egresses.remove(chip::FIRST_EGRESS);
    sw->chip.multipath_groups.remove(chip::FIRST_MULTIPATH_GROUP);
    sw->chip.l3_interfaces.remove(8191);
    sw->chip.field_groups.remove(11);
    const auto left = chip::snapshot(sw->chip);
    EXPECT_EQ(reopened(), left);
}

TEST_F(StateTables, GroupWithoutSpanningTreeKeepsItsStatesAndVlans)
{
    sw->chip.vlans.create(100);
    sw->chip.stgs.add_vlan(0, 100);
    sw->chip.stgs.set_state(0, 5, chip::STP_BLOCKING);
    reopen();
    EXPECT_EQ(sw->chip.stgs.vlans_of(0), std::vector<int>{100});
    EXPECT_EQ(sw->chip.stgs.find(0)->in_state(chip::STP_BLOCKING), chip::PortSet{5});
    EXPECT_THAT(sw->chip.stgs.remove(0),
                Refused(-4, "spanning tree group 0 is the chip's own and stays"));
    int id = 0;
    sw->chip.stgs.create(id);
    EXPECT_EQ(id, 2);
    sw->power_cycle();
    reopen();
    EXPECT_EQ(sw->chip.stgs.vlans_of(0), std::vector<int>{});
    EXPECT_EQ(text(*sw->chip.stgs.find(0)),
              "forwarding {0-104} blocking {} listening {} learning {}");
}

TEST_F(StateTables, ForwardingManagerKeepsItsMaps)
{
    sw->host.set_trunk_id(0x20029000, 42);
    sw->host.set_trunk_id(0x20030000, 65535);
    sw->host.forget_trunk_id(0x20030000);
    sw->host.vlans.add(100, PrivateVlan::primary);
    sw->host.vlans.add(101);
    sw->host.vlans.set_role(101, PrivateVlan::secondary);
    sw->host.vlans.add(102);
    sw->host.vlans.remove(102);
    reopen();
    EXPECT_EQ(sw->host.trunk_id(0x20029000), 42U);
    EXPECT_EQ(sw->host.trunk_id(0x20030000), std::nullopt);
    EXPECT_EQ(sw->host.vlans.all(), (std::map<int, PrivateVlan>{{100, PrivateVlan::primary},
                                                                {101, PrivateVlan::secondary}}));
}

TEST_F(StateTables, CachedVlanControlsAreThoseOfTheLastSetOrStore)
{
    bcm_vlan_control_vlan_t control{};
    control.vc_vrf = 7;
    for (bcm_vlan_t vlan = 100; vlan <= 103; ++vlan) {
        ASSERT_EQ(fwmpd_bcm_vlan_control_vlan_set(0, vlan, control), 0);
    }
    fwmpd_bcm_vlan_control_vlan_get_from_cache(101)->vc_vrf = 8;
    fwmpd_bcm_vlan_control_vlan_get_from_cache(102)->vc_vrf = 9;
    ASSERT_EQ(fwmpd_trident_vlan_bvcvt_store(102), 0);
    ASSERT_EQ(fwmpd_bcm_vlan_destroy(0, 103), 0);
    sw->wrappers.forget_vlan_control(104);
    reopen();
    const auto vrf = [](bcm_vlan_t vlan) {
        return fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan)->vc_vrf;
    };
    EXPECT_EQ(vrf(100), 7U);
    EXPECT_EQ(vrf(101), 7U) << "changed in place only";
    EXPECT_EQ(vrf(102), 9U);
    EXPECT_EQ(vrf(103), 0U);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(104), nullptr);
}

TEST_F(StateTables, CacheStandsOverTheChip)
{
    sw->wrappers.create_vlan(100, {.vrf = 1});
    sw->wrappers.create_vlan(101, {.vrf = 1});
    sw->end_request();
    bcm_vlan_control_vlan_t control{};
    control.vc_vrf = 2;
    ASSERT_EQ(fwmpd_bcm_vlan_control_vlan_set(0, 100, control), 0);
    sw->wrappers.drop_pending();
    reopen();
    EXPECT_EQ(sw->chip.vlans.find(100)->controls.vrf, 1U);
    EXPECT_EQ(sw->wrappers.vlan_controls(100)->vc_vrf, 2U);
    EXPECT_EQ(sw->wrappers.vlan_controls(101)->vc_vrf, 1U);
}

TEST_F(StateTables, CachesOfL3ObjectsComeFromTheChip)
{
    bcm_l3_ingress_t ingress{};
    ingress.vrf = 5;
    sw->wrappers.create_l3_ingress(ingress, 3);
    bcm_l3_intf_t intf{};
    sw->wrappers.create_l3_interface(intf);
    sw->end_request();
    reopen();
    EXPECT_EQ(sw->wrappers.l3_ingress(3)->vrf, 5);
    sw->wrappers.create_l3_interface(intf);
    EXPECT_EQ(intf.l3a_intf_id, 1);
}

TEST_F(StateTables, WritesAreCountedFromNoughtAgain)
{
    sw->wrappers.create_vlan(100);
    EXPECT_GT(sw->chip.writes, 0U);
    reopen();
    EXPECT_EQ(sw->chip.writes, 0U);
    EXPECT_EQ(sw->wrappers.pending(), 0U);
    EXPECT_TRUE(sw->journal.calls().empty());
}

TEST_F(StateTables, PowerCycleBeginsAnew)
{
    fill(sw->chip);
    sw->host.set_trunk_id(0x20029000, 42);
    sw->host.vlans.add(100);
    bcm_vlan_control_vlan_t control{};
    control.vc_vrf = 2;
    sw->wrappers.set_vlan_controls(100, control);
    sw->wrappers.forget_vlan_control(101);
    l3lif lif{};
    sw->store.store_interface(lif);
    reopen();
    sw->wrappers.set_port_control(5, 8, 1);
    sw->power_cycle();
    const auto expect_fresh = [this] {
        Switch fresh({.chip = chip::Kind::trident2});
        EXPECT_TRUE(chip::same_state(sw->chip, fresh.chip));
        EXPECT_EQ(chip::snapshot(sw->chip), chip::snapshot(fresh.chip));
        EXPECT_EQ(sw->wrappers.pending(), 0U);
        EXPECT_EQ(sw->wrappers.vlan_controls(100)->vc_vrf, 0U);
        EXPECT_NE(sw->wrappers.vlan_controls(101), nullptr);
        EXPECT_EQ(sw->host.trunk_id(0x20029000), std::nullopt);
        EXPECT_EQ(sw->host.vlans.size(), 0U);
        EXPECT_TRUE(sw->store.stored_interfaces().empty());
    };
    expect_fresh();
    reopen();
    expect_fresh();
}

} // namespace simswitch
