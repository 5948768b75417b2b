/*
 * fhrp_mac_add_failure_test.cpp: each step of a virtual MAC's add that can
 * fail: only a missing interface, type or port is told to the caller.
 *
 * fhrp_mac_add_test.cpp has the roads on which all goes well.
 */
#include "support/fhrp_roads.h"

#include "services/ifindex.h"

#include <fmt/format.h>

namespace rtifhal_test::fhrp_mac_add_failure
{

namespace
{

using namespace fhrp_road;
namespace if_index = simswitch::if_index;

const std::string ON_PORT = station("0x3c", VMAC, "4094/4095", "5/127");
const Message NOT_SAVED = trace(ADD, "Failed to save addr info in hash table\n");
const Message PORT_FOUND = trace(ADD, "L3 physical interface port 5\n");

class FhrpMacAddFailure : public FhrpTest
{
protected:
    explicit FhrpMacAddFailure(const simswitch::Options &options = {}) : FhrpTest(options) {}

    void expect_nothing_installed() const
    {
        EXPECT_EQ(stations(), Calls{});
        EXPECT_EQ(kept(), Calls{});
    }

    /** The calls of an add on the port up to the station, which the chip took. */
    static Calls installed(const Lif &lif)
    {
        return join({add_begins(lif, if_index::TYPE_PORT), Calls{sub_asked(lif)}, port_asked(lif),
                     station_added(ON_PORT, 1)});
    }
};

class FhrpMacFullChip : public FhrpMacAddFailure
{
protected:
    FhrpMacFullChip() : FhrpMacAddFailure({.limits = {.stations = 1}}) {}
};

} // namespace

TEST_F(FhrpMacAddFailure, UnknownInterfaceIsReportedBeforeItsTypeIsRead)
{
    const Lif lif(if_index::port(4));
    EXPECT_EQ(add(lif), -1);
    expect_calls({called::unit(), "l3lif_find_lif_from_ifindex(0x10400000) = null"});
    expect_messages({report(ADD, "failed to get l3lif from if_index\n")});
}

TEST_F(FhrpMacAddFailure, UnreadableUnknownIndexIsAMissingInterface)
{
    EXPECT_EQ(rtifhal_trident_fhrp_mac_add(VMAC.bytes, 0), -1);
    expect_calls({called::unit(), "l3lif_find_lif_from_ifindex(0x0) = null"});
    expect_messages({report(ADD, "failed to get l3lif from if_index\n")});
}

TEST_F(FhrpMacAddFailure, UnknownTypeIsReported)
{
    const Lif &lif = known_port();
    fail("if_index_get_type", 1);
    EXPECT_EQ(add(lif), -1);
    expect_calls({called::unit(), "l3lif_find_lif_from_ifindex(0x10400000) = record",
                  called::no_type(lif, 1)});
    expect_messages({report(ADD, "failed to get if type from if_index\n")});
    expect_nothing_installed();
}

TEST_F(FhrpMacAddFailure, AnyNonzeroResultOfTheTypeIsAFailure)
{
    const Lif &lif = known_port();
    fail("if_index_get_type", -1);
    EXPECT_EQ(add(lif), -1);
    EXPECT_EQ(calls().back(), called::no_type(lif, -1));
}

TEST_F(FhrpMacAddFailure, PortWithoutAPortNumberIsReported)
{
    const Lif &lif = known_port();
    fail("if_index_get_port", 1);
    EXPECT_EQ(add(lif), -1);
    EXPECT_EQ(calls().back(), "if_index_get_port(0x10400000) = 1");
    expect_messages({report(ADD, "failed to get port from if_index for L3 physical interface\n")});
    expect_nothing_installed();
}

TEST_F(FhrpMacAddFailure, PortWhoseTypeIsLostOnTheWayIsReported)
{
    const Lif &lif = known_port();
    fail("if_index_get_type", 1, 2);
    EXPECT_EQ(add(lif), -1);
    EXPECT_EQ(calls().back(), called::no_type(lif, 1));
    expect_messages({report(ADD, "failed to get port from if_index for L3 physical interface\n")});
    expect_nothing_installed();
}

TEST_F(FhrpMacAddFailure, SubinterfaceWithoutAPortIsReportedBehindItsVlan)
{
    const Lif &lif = known(subinterface(known_port(), 10));
    fail("if_index_get_port", 1);
    EXPECT_EQ(add(lif), -1);
    expect_calls(join({add_begins(lif, if_index::TYPE_PORT), Calls{sub_asked(lif)},
                       Calls{called::type(lif, if_index::TYPE_PORT),
                             "if_index_get_port(" + lif.index() + ") = 1"}}));
    expect_messages({trace(ADD, "Sub interface vlan 0\n"),
                     report(ADD, "failed to get port from if_index for sub interface\n")});
    expect_nothing_installed();
}

TEST_F(FhrpMacAddFailure, RefusedStationIsReportedAndReturnsZeroAndKeepsNothing)
{
    const Lif &lif = known_port();
    fail("bcm_l2_station_add", -6);
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_PORT), Calls{sub_asked(lif)}, port_asked(lif),
                       station_refused(ON_PORT, -6)}));
    expect_messages({PORT_FOUND, failed(ADD, -6)});
    EXPECT_EQ(fhrp_mac_hash, nullptr);
}

TEST_F(FhrpMacFullChip, FullTableOfStationsReturnsZeroAndKeepsTheFirst)
{
    const Lif &lif = known_port();
    added(lif);
    EXPECT_EQ(add(lif, OTHER), 0);
    expect_reports({failed(ADD, -6, OTHER)});
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
    EXPECT_EQ(rtifhal_fhrp_mac_present(lif.lif.ifindex, OTHER.bytes, ROUTED), 0);
}

TEST_F(FhrpMacAddFailure, PositiveResultOfTheStationAddIsASuccess)
{
    const Lif &lif = known_port();
    fail("bcm_l2_station_add", 1);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(kept().size(), 1U);
    expect_reports({});
}

TEST_F(FhrpMacAddFailure, RefusedFlushStopsNothing)
{
    const Lif &lif = known_port();
    fail("fwmpd_trident_batch_flush", -1);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
    expect_reports({});
}

TEST_F(FhrpMacAddFailure, EntryWithoutMemoryLeavesTheStationAndReturnsZero)
{
    const Lif &lif = known_port();
    simswitch::services::Heap::fail_allocation(1);
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({installed(lif), Calls{"malloc(16) = null"}}));
    expect_messages({PORT_FOUND, now_at(ADD, 1), NOT_SAVED});
    EXPECT_EQ(fhrp_mac_hash, nullptr);
    EXPECT_EQ(stations(), Calls{in_chip(1, ON_PORT)});
}

TEST_F(FhrpMacAddFailure, TreeThatCantBeMadeGivesTheEntryBack)
{
    const Lif &lif = known_port();
    fail("avl_create", -1);
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({installed(lif), Calls{"malloc(16) = record", "avl_create(compare, 0) = null",
                                             "free(record)"}}));
    expect_messages({PORT_FOUND, now_at(ADD, 1), NOT_SAVED});
    EXPECT_EQ(fhrp_mac_hash, nullptr);
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
    EXPECT_EQ(stations(), Calls{in_chip(1, ON_PORT)});
}

TEST_F(FhrpMacAddFailure, TreeThatCouldntBeMadeIsMadeByTheNext)
{
    const Lif &lif = known_port();
    fail("avl_create", -1);
    add(lif);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 2)});
}

TEST_F(FhrpMacAddFailure, RefusedInsertLeavesStationAndRecordAndReturnsZero)
{
    const Lif &lif = known_port();
    fail("avl_insert", -6);
    EXPECT_EQ(add(lif), 0);
    expect_calls(
        join({installed(lif), Calls{"malloc(16) = record", "avl_create(compare, 0) = record",
                                    "avl_insert(tree, record) = -6"}}));
    expect_messages({PORT_FOUND, now_at(ADD, 1), NOT_SAVED});
    EXPECT_EQ(kept(), Calls{});
    EXPECT_EQ(sw.heap.live_blocks(), 1U);
    EXPECT_EQ(stations(), Calls{in_chip(1, ON_PORT)});
}

TEST_F(FhrpMacAddFailure, AnyNonzeroResultOfTheInsertIsAFailure)
{
    const Lif &lif = known_port();
    fail("avl_insert", 1);
    EXPECT_EQ(add(lif), 0);
    expect_messages({PORT_FOUND, now_at(ADD, 1), NOT_SAVED});
}

TEST_F(FhrpMacAddFailure, NullMacIsRefusedWithoutACall)
{
    const Lif &lif = known_port();
    EXPECT_EQ(rtifhal_trident_fhrp_mac_add(nullptr, lif.lif.ifindex), -1);
    expect_calls({});
    expect_messages({});
}

} // namespace rtifhal_test::fhrp_mac_add_failure
