/*
 * chip_snapshot_test.cpp: what a chip holds, and what differs.
 */
#include "chip/chip.h"
#include "chip/snapshot.h"

#include <gtest/gtest.h>

namespace simswitch::chip
{

TEST(Snapshot, FreshChipHoldsWhatTheBootPutsThere)
{
    const Chip chip;
    const Snapshot lines = snapshot(chip);
    ASSERT_EQ(lines.size(), 9U);
    EXPECT_EQ(lines.at(0).substr(0, 30), "VLAN 1: stg 1 members {0-104} ");
    EXPECT_EQ(lines.at(1), "STG 0: forwarding {0-104} blocking {} listening {} learning {}");
    EXPECT_EQ(lines.at(2), "STG 1: forwarding {0-104} blocking {} listening {} learning {}");
    EXPECT_EQ(lines.at(3), "field group 1: priority 1 qualifiers 13");
    EXPECT_TRUE(same_state(chip, Chip()));
}

TEST(Snapshot, EveryTableShowsUp)
{
    Chip chip;
    const Snapshot before = snapshot(chip);
    int id = 0;
    chip.stations.create({}, id);
    chip.l3_interfaces.create(3, {});
    chip.l3_ingresses.create(3, {});
    chip.vlans.create(100);
    chip.stgs.create(id);
    chip.ports.set_control(5, PORT_CONTROL_IP4, 1);
    chip.vlan_translations.create({.gport = 0x8000005, .outer_vlan = 100}, {});
    chip.trunks.create(42, {});
    chip.egresses.create({}, id);
    chip.multipath_groups.create({{id}}, id);
    chip.routes.set(ip4_key(1, 0, 0), {.next_hop = id, .multipath = true});
    chip.field_groups.create(11, {});
    chip.field_entries.create(11, id);
    chip.switch_controls.set(230, 1);
    chip.tunnels.create(3, {.index = 1});
    chip.vxlan_ports.create({.vpn = 28673}, id);
    const std::vector<std::string> lines = changes(before, snapshot(chip));
    EXPECT_EQ(lines.size(), 16U);
    EXPECT_EQ(lines.at(14), "+ tunnel of L3 interface 3: index 1 0.0.0.0 -> 0.0.0.0");
    EXPECT_EQ(lines.back(), "+ VXLAN port 1: vpn 28673 vn 0 port 0 vlan 0 criteria 0 flags 0x0 "
                            "egress 0 multicast 0x0 of 0x0");
    EXPECT_FALSE(same_state(chip, Chip()));
}

TEST(Snapshot, ChangedObjectIsGoneAndNew)
{
    Chip chip;
    chip.switch_controls.set(230, 1);
    const Snapshot before = snapshot(chip);
    chip.switch_controls.set(230, 2);
    EXPECT_EQ(changes(before, snapshot(chip)),
              (std::vector<std::string>{"- switch control 230: 1", "+ switch control 230: 2"}));
}

TEST(Snapshot, BackAtTheStartNothingDiffers)
{
    Chip chip;
    const Snapshot before = snapshot(chip);
    chip.vlans.create(100);
    chip.ports.set_untagged_vlan(5, 100);
    chip.ports.set_untagged_vlan(5, 1);
    chip.vlans.remove(100);
    EXPECT_TRUE(changes(before, snapshot(chip)).empty());
    EXPECT_TRUE(same_state(chip, Chip()));
}

TEST(Snapshot, SameStateSeesVxlanPorts)
{
    Chip other;
    int id = 0;
    ASSERT_TRUE(other.vxlan_ports.create({}, id).ok());
    EXPECT_FALSE(same_state(Chip(), other));
    EXPECT_FALSE(same_state(other, Chip()));
}

TEST(Snapshot, SameStateSeesFieldsWithoutALine)
{
    Chip one;
    const Chip other;
    one.vlans.set_controls(1, {.rest = {1}});
    EXPECT_TRUE(changes(snapshot(one), snapshot(other)).empty());
    EXPECT_FALSE(same_state(one, other));
}

} // namespace simswitch::chip
