/*
 * directory_test.cpp: what the layer above answers.
 */
#include "services/directory.h"

#include "rtifhal_types.h"
#include "switch.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <l3lif/l3lif_layer.h>

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace simswitch::services
{

namespace
{

using testing::ElementsAre;

/** A registered interface with a live number. */
class DirectoryTest : public testing::Test
{
protected:
    DirectoryTest()
    {
        lif.ifindex = 0x10000000;
        lif.l3lif_pd_ctxt = &context;
        context.l3_pd = &hardware;
        hardware.l3intf_id = 7;
        directory.add(&lif);
    }

    /** The number of the interface, or the refusal's code. */
    std::int64_t iif(std::uint32_t ifindex)
    {
        l3lif_iif_info_t info{};
        const int code = l3lif_get_iif_for_ifindex_new(ifindex, &info);
        return code == 0 ? std::int64_t{info.l3iif} : -std::int64_t{code};
    }

    Switch sw;
    Directory &directory = sw.directory;
    l3lif lif{};
    l3lif_pd_ctxt context{};
    l3_pd hardware{};
    const std::int64_t not_ready = -std::int64_t{fwm::ERROR_INTERFACE_NOT_READY};
};

} // namespace

TEST_F(DirectoryTest, RegisteredInterfaceIsFoundUntilItIsRemoved)
{
    EXPECT_EQ(l3lif_find_lif_from_ifindex(lif.ifindex), &lif);
    EXPECT_EQ(l3lif_find_lif_from_ifindex(5), nullptr);
    EXPECT_THAT(directory.all(), ElementsAre(&lif));
    directory.remove(lif.ifindex);
    EXPECT_EQ(l3lif_find_lif_from_ifindex(lif.ifindex), nullptr);
    EXPECT_THAT(sw.journal.calls(), ElementsAre("l3lif_find_lif_from_ifindex(0x10000000) = record",
                                                "l3lif_find_lif_from_ifindex(0x5) = null",
                                                "l3lif_find_lif_from_ifindex(0x10000000) = null"));
}

TEST_F(DirectoryTest, InterfaceIsFoundByItsInternalVlan)
{
    l3lif other{};
    other.ifindex = 0x10100000;
    directory.add(&other);
    EXPECT_EQ(l3lif_find_lif_from_int_vlan(0), nullptr) << "no VLAN yet isn't a VLAN";
    lif.int_vlan = other.int_vlan = 100;
    EXPECT_EQ(l3lif_find_lif_from_int_vlan(100), &lif);
    EXPECT_EQ(l3lif_find_lif_from_int_vlan(101), nullptr);
    EXPECT_THAT(sw.journal.calls(), ElementsAre("l3lif_find_lif_from_int_vlan(0) = null",
                                                "l3lif_find_lif_from_int_vlan(100) = record",
                                                "l3lif_find_lif_from_int_vlan(101) = null"));
}

TEST_F(DirectoryTest, LiveInterfaceIsReadyUnderItsNumber)
{
    EXPECT_EQ(iif(lif.ifindex), 7);
    EXPECT_THAT(sw.journal.calls(),
                ElementsAre("l3lif_get_iif_for_ifindex_new(0x10000000) = 0 [l3iif=0x7]"));
}

TEST_F(DirectoryTest, ParkedInterfaceIsReadyUnderItsParkedNumber)
{
    hardware = {
        .brcm_prog_complete = 1, .l3intf_id = 0, .prev_l3_if_index = 9, .acl_qos_label_ingress = 0};
    EXPECT_EQ(iif(lif.ifindex), 9);
}

TEST_F(DirectoryTest, InterfaceWithoutRecordContextOrNumberIsNotReady)
{
    hardware.l3intf_id = 0;
    EXPECT_EQ(iif(lif.ifindex), not_ready);
    context.l3_pd = nullptr;
    EXPECT_EQ(iif(lif.ifindex), not_ready);
    lif.l3lif_pd_ctxt = nullptr;
    EXPECT_EQ(iif(lif.ifindex), not_ready);
    EXPECT_EQ(iif(5), not_ready);
    EXPECT_STREQ(fwm_syserr2str(fwm::ERROR_INTERFACE_NOT_READY), "interface not ready");
}

TEST_F(DirectoryTest, ReadinessCanBeTakenAndGivenBack)
{
    directory.set_ready(lif.ifindex, false);
    EXPECT_EQ(iif(lif.ifindex), not_ready);
    directory.set_ready(lif.ifindex, true);
    EXPECT_EQ(iif(lif.ifindex), 7);
}

TEST_F(DirectoryTest, NumberCanBeGivenWithoutARecord)
{
    directory.set_iif(5, 300);
    EXPECT_EQ(iif(5), 300);
    directory.set_ready(5, false);
    EXPECT_EQ(iif(5), not_ready);
}

TEST_F(DirectoryTest, RefusalLeavesTheAnswerAlone)
{
    l3lif_iif_info_t info{};
    info.l3iif = 88;
    EXPECT_NE(l3lif_get_iif_for_ifindex_new(5, &info), 0);
    EXPECT_EQ(info.l3iif, 88U);
}

TEST_F(DirectoryTest, InterfaceHasSubinterfacesWhileItsTreeHasEntries)
{
    EXPECT_EQ(rtifhal_if_has_si(lif.ifindex), 0);
    avl_tree_t tree{};
    lif.subint_tree = &tree;
    EXPECT_EQ(rtifhal_if_has_si(lif.ifindex), 0);
    tree.count = 1;
    EXPECT_EQ(rtifhal_if_has_si(lif.ifindex), 1);
    EXPECT_EQ(rtifhal_if_has_si(5), 0);
    EXPECT_EQ(sw.journal.calls()[2], "rtifhal_if_has_si(0x10000000) = 1");
}

TEST_F(DirectoryTest, PublishedInterfacesAreNoted)
{
    EXPECT_EQ(l3lif_update_sdb_for_intf(&lif), 0);
    EXPECT_EQ(l3lif_update_sdb_for_intf(nullptr), 0);
    EXPECT_THAT(directory.updates(), ElementsAre(lif.ifindex));
    EXPECT_THAT(sw.journal.calls(), ElementsAre("l3lif_update_sdb_for_intf(lif(0x10000000)) = 0",
                                                "l3lif_update_sdb_for_intf(null) = 0"));
}

TEST_F(DirectoryTest, FloodEntriesStandInTheLayersData)
{
    directory.set_flood_entry(0, 0x11);
    directory.set_flood_entry(95, 0x22);
    std::uint32_t word = 0;
    std::memcpy(&word, &l3lif_global_data[672], sizeof word);
    EXPECT_EQ(word, 0x11U);
    std::memcpy(&word, &l3lif_global_data[1052], sizeof word);
    EXPECT_EQ(word, 0x22U);
    EXPECT_THROW(Directory::set_flood_entry(96, 1), std::out_of_range);
    const Switch fresh;
    EXPECT_EQ(l3lif_global_data[672], 0);
}

TEST_F(DirectoryTest, ClearForgetsAll)
{
    directory.set_iif(5, 300);
    directory.clear();
    EXPECT_EQ(iif(5), not_ready);
    EXPECT_TRUE(directory.all().empty());
}

} // namespace simswitch::services
