/*
 * holds_test.cpp: each thing that has to hold is broken on purpose, and found.
 */
#include "faults/faults_world.h"

#include "faults/holds.h"
#include "rtifhal_trident.h"

#include <gtest/gtest.h>

#include <string>

namespace faults_test
{

namespace
{

using lab::faults::broken_holds;

::l3_pd &hardware_of(World &world, const std::string &name)
{
    return *world.layer.routed().find(name)->lif->record()->l3lif_pd_ctxt->l3_pd;
}

Lines all_of(const World &world)
{
    Lines all = broken_holds(world, true);
    const Lines later = broken_holds(world, false);
    all.insert(all.end(), later.begin(), later.end());
    return all;
}

} // namespace

TEST(Holds, AllHoldWhenAllIsUp)
{
    EXPECT_EQ(when_up(all_of), Lines{});
}

TEST(Holds, ANumberThatIsGivenTwiceIsFound)
{
    const Lines broken = when_up([](World &world) {
        hardware_of(world, "Vlan100").l3intf_id = hardware_of(world, "Ethernet4").l3intf_id;
        return broken_holds(world, true);
    });
    EXPECT_EQ(broken, (Lines{"each number has one owner: Ethernet4 and Vlan100 have number 4"}));
}

TEST(Holds, ANumberInUseThatIsFreeIsFound)
{
    const Lines broken = when_up([](World &world) {
        l3lif_l3iif_table.bits[0] = 0xe0;
        return broken_holds(world, true);
    });
    EXPECT_EQ(broken.size(), 5U);
    EXPECT_EQ(broken.front(), "a number in use is taken: number 3 of Ethernet0 is free");
}

TEST(Holds, APortThatCountsAndIsNoMemberIsFound)
{
    const Lines broken = when_up([](World &world) {
        rtifhal_port_vlan[1].vlan_bitmap[10 / 8] |= 0x80U >> (10 % 8);
        return broken_holds(world, false);
    });
    EXPECT_EQ(broken,
              (Lines{"the ports that count are a VLAN's members: port 1 counts as a user of "
                     "VLAN 10 and isn't in it",
                     "a VLAN counts the ports that hold it: VLAN 10 counts 1 ports and 2 "
                     "hold it"}));
}

TEST(Holds, AMemberThatDoesNotCountIsFound)
{
    const Lines broken = when_up([](World &world) {
        simswitch::chip::PortSet ports;
        ports.add(9);
        world.hardware.wrappers.add_vlan_ports(4094, ports, {});
        world.hardware.end_request();
        return broken_holds(world, false);
    });
    EXPECT_EQ(broken,
              (Lines{"the ports that count are a VLAN's members: port 9 is in VLAN 4094 and "
                     "doesn't count"}));
}

TEST(Holds, AVlanInUseThatIsGoneIsFound)
{
    const Lines broken = when_up([](World &world) {
        world.hardware.wrappers.destroy_vlan(20);
        world.hardware.end_request();
        return broken_holds(world, false);
    });
    EXPECT_EQ(broken,
              (Lines{"a VLAN that counts as used is there: VLAN 20 counts as used and isn't in the "
                     "chip"}));
}

} // namespace faults_test
