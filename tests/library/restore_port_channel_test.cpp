/*
 * restore_port_channel_test.cpp: the restore of a port-channel and of its
 * subinterfaces: the members go into the cached ports of the VLAN, and nowhere
 * else.
 */
#include "support/restore_roads.h"

#include <fmt/format.h>

namespace rtifhal_test::restore_port_channel
{

namespace
{

using namespace restore_road;

constexpr int IIF = 7;
constexpr std::uint16_t CHANNEL = 7;
constexpr std::uint16_t VLAN = 100;
const std::string FIRST = "avl_get_first(tree) = record";
const std::string NEXT = "avl_get_next(tree, node) = record";
const std::string LAST = "avl_get_next(tree, node) = null";

Message member_found(int port)
{
    return trace(RESTORE, fmt::format(" port {} ", port));
}

Message tree_empty(const Lif &lif)
{
    return report(RESTORE, "Error - PC tree empty " + lif.hex() + "\n");
}

class RestorePortChannel : public RestoreTest
{
protected:
    RestorePortChannel()
    {
        globals_restored();
        lif->with_record(IIF);
        lif->lif.pc_member_tree = tree.get();
    }

    /** Gives the port-channel a member port. */
    const Lif &with_member(unsigned sdk_port)
    {
        members.push_back(port(sdk_port));
        EXPECT_TRUE(tree.insert(members.back()->get()));
        return *members.back();
    }

    simswitch::services::Tree tree;
    std::vector<std::unique_ptr<Lif>> members;
    std::unique_ptr<Lif> lif = port_channel(CHANNEL);
};

} // namespace

TEST_F(RestorePortChannel, MembersJoinTheCachedPortsOfTheRoutedVlanInTheTreesOrder)
{
    const Lif &second = with_member(9);
    const Lif &first = with_member(5);
    EXPECT_EQ(restore(*lif), 0);
    expect_calls({called::type(*lif, 22), FIRST, called::port_of(first, 5), cached_port(ROUTED, 5),
                  NEXT, called::port_of(second, 9), cached_port(ROUTED, 9), LAST});
    expect_messages({entered(*lif, 0, 0), member_found(5), member_found(9)});
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{5,9}");
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    EXPECT_EQ(all_in_use(), "0-2 7 3584-8191");
}

TEST_F(RestorePortChannel, MembersHaveNoVlanInThePortsTable)
{
    with_member(5);
    restore(*lif);
    EXPECT_EQ(count_of_port_vlans(), 0);
}

TEST_F(RestorePortChannel, TheMembersOwnRecordsAreLeftAlone)
{
    with_member(5);
    restore(*lif);
    EXPECT_EQ(members.front()->lif.int_vlan, 0);
    EXPECT_EQ(members.front()->lif.lif_state, 0U);
}

TEST_F(RestorePortChannel, MembersAreAskedForTheirPortWithoutACheckOfTheirKind)
{
    with_member(5);
    restore(*lif);
    EXPECT_EQ(sw.journal.count("if_index_get_type"), 1U);
}

TEST_F(RestorePortChannel, MemberWithoutAPortCountsAsPort1)
{
    Lif odd(simswitch::if_index::svi(9));
    ASSERT_TRUE(tree.insert(odd.get()));
    EXPECT_EQ(restore(*lif), 0);
    expect_messages({entered(*lif, 0, 0), member_found(1)});
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{1}");
}

TEST_F(RestorePortChannel, RefusedPortOfAMemberCountsAsPort1)
{
    with_member(5);
    with_member(9);
    fail("if_index_get_port", -1);
    EXPECT_EQ(restore(*lif), 0);
    expect_messages({entered(*lif, 0, 0), member_found(1), member_found(9)});
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{1,9}");
}

TEST_F(RestorePortChannel, RefusedCacheDoesntStopTheWalk)
{
    with_member(5);
    with_member(9);
    fail("fwmpd_bcm_set_vlan_pbmp", -4);
    EXPECT_EQ(restore(*lif), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_set_vlan_pbmp"}),
              (Calls{cached_port(ROUTED, 5, -4), cached_port(ROUTED, 9)}));
    expect_reports({});
}

TEST_F(RestorePortChannel, ManyMembersAreAllWalked)
{
    for (unsigned sdk_port = 1; sdk_port <= 40; ++sdk_port) {
        with_member(sdk_port);
    }
    EXPECT_EQ(restore(*lif), 0);
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{1-40}");
    EXPECT_EQ(messages().size(), 41U);
}

TEST_F(RestorePortChannel, EmptyTreeTakesOnlyTheNumber)
{
    EXPECT_EQ(restore(*lif), 0);
    expect_calls({called::type(*lif, 22), "avl_get_first(tree) = null"});
    expect_messages({entered(*lif, 0, 0)});
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestorePortChannel, MissingTreeIsReportedAndIsNoFailure)
{
    lif->lif.pc_member_tree = nullptr;
    EXPECT_EQ(restore(*lif), 0);
    expect_calls({called::type(*lif, 22)});
    expect_messages({entered(*lif, 0, 0), tree_empty(*lif)});
    EXPECT_EQ(lif->hex(), "20007000");
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestorePortChannel, WithoutARecordTheMembersAreStillCached)
{
    with_member(5);
    Lif bare(lif->lif.ifindex);
    bare.lif.pc_member_tree = tree.get();
    EXPECT_EQ(restore(bare.with_bare_context()), 0);
    expect_messages({entered(bare, 0, 0), member_found(5)});
    EXPECT_EQ(all_in_use(), "0-2 3584-8191");
}

TEST_F(RestorePortChannel, RefusedTypeLeavesTheMembersAlone)
{
    with_member(5);
    fail("if_index_get_type", -1);
    EXPECT_EQ(restore(*lif), 0);
    expect_calls({called::no_type(*lif)});
    expect_reports(
        {report(RESTORE, "bcm_l3_ing_create(" + lif->decimal() + ") get type failed\n")});
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestorePortChannel, SubinterfaceWithoutMembersOfItsOwnIsReported)
{
    with_member(5);
    const auto sub = subinterface(*lif, 10);
    EXPECT_EQ(restore(sub->with_record(8)), 0);
    expect_calls({called::type(*sub, 22)});
    expect_messages({entered(*sub, VLAN, 0), tree_empty(*sub)});
    EXPECT_EQ(sub->lif.int_vlan, 0);
    EXPECT_TRUE(in_use(8));
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(VLAN).text(), "{}");
}

TEST_F(RestorePortChannel, SubinterfaceWithMembersCachesThemInItsEncapsulationVlan)
{
    const Lif &member = with_member(5);
    const auto sub = subinterface(*lif, 10);
    sub->lif.pc_member_tree = tree.get();
    EXPECT_EQ(restore(sub->with_record(8)), 0);
    expect_calls(
        {called::type(*sub, 22), FIRST, called::port_of(member, 5), cached_port(VLAN, 5), LAST});
    expect_messages({entered(*sub, VLAN, 0), member_found(5)});
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(VLAN).text(), "{5}");
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
}

TEST_F(RestorePortChannel, SubinterfaceTakesItsOwnNumberAndNotItsMainInterfaces)
{
    const auto sub = subinterface(*lif, 10);
    restore(sub->with_record(8));
    EXPECT_EQ(all_in_use(), "0-2 8 3584-8191");
}

} // namespace rtifhal_test::restore_port_channel
