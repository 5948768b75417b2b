/*
 * store_test.cpp: what the persistent store keeps, and for how long.
 */
#include "services/store.h"

#include "services/tree.h"
#include "state_dir.h"
#include "switch.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>
#include <fwmpd/pss.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace simswitch::services
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

std::vector<std::uint32_t> fields(const l3lif_pi_ctxt &p)
{
    return {p.ipv4_en,
            p.ipv4_mc_en,
            p.ipv6_en,
            p.l3_prop_word_7,
            p.urpf_mode,
            p.vrf,
            p.ipv6_vrf,
            p.mtu,
            p.ingress_flag_word,
            p.l3_prop_word_8,
            p.acl_qos_label_pending,
            p.class_high_bit,
            p.mpls_en};
}

std::vector<std::uint32_t> fields(const l3_pd &pd)
{
    return {pd.brcm_prog_complete, pd.l3intf_id, pd.prev_l3_if_index, pd.acl_qos_label_ingress};
}

/** An interface with all its records. */
struct FullInterface {
    FullInterface()
    {
        lif.ifindex = 0x20007000;
        lif.int_vlan = 4094;
        lif.vlan = 12;
        lif.si_encap_vlan = 100;
        lif.tid = 0xFFFFFFFF;
        lif.mac[0] = 0xAB;
        lif.mac[5] = 0xCD;
        lif.pc_member_tree = members.get();
        lif.l3lif_pi_ctxt = &properties;
        lif.l3lif_pd_ctxt = &context;
        context.l3_pd = &hardware;
    }

    l3lif lif{};
    l3lif_pi_ctxt properties{.ipv4_en = 1,
                             .ipv4_mc_en = 2,
                             .ipv6_en = 3,
                             .l3_prop_word_7 = 0xFFFFFFFF,
                             .urpf_mode = 5,
                             .vrf = 6,
                             .ipv6_vrf = 7,
                             .mtu = 8,
                             .ingress_flag_word = 9,
                             .l3_prop_word_8 = 10,
                             .acl_qos_label_pending = 11,
                             .class_high_bit = 12,
                             .mpls_en = 13};
    l3_pd hardware{.brcm_prog_complete = 1,
                   .l3intf_id = 2,
                   .prev_l3_if_index = 3,
                   .acl_qos_label_ingress = 65535};
    l3lif_pd_ctxt context{};
    Tree members;
};

} // namespace

TEST(Store, InterfaceComesBackWithAllItsFields)
{
    FullInterface full;
    std::uint32_t member_9 = 9;
    std::uint32_t member_3 = 3;
    full.members.insert(&member_9);
    full.members.insert(&member_3);
    Store store;
    EXPECT_TRUE(store.store_interface(full.lif).ok());

    const auto rows = store.stored_interfaces();
    ASSERT_EQ(rows.size(), 1U);
    const StoredInterface &row = rows[0];
    EXPECT_EQ(row.ifindex, full.lif.ifindex);
    EXPECT_EQ(row.int_vlan, 4094);
    EXPECT_EQ(row.vlan, 12);
    EXPECT_EQ(row.si_encap_vlan, 100);
    EXPECT_EQ(row.tid, 0xFFFFFFFF);
    EXPECT_THAT(row.mac, ElementsAre(0xAB, 0, 0, 0, 0, 0xCD));
    ASSERT_TRUE(row.properties && row.hardware && row.members);
    EXPECT_EQ(fields(*row.properties), fields(full.properties));
    EXPECT_EQ(fields(*row.hardware), fields(full.hardware));
    EXPECT_THAT(*row.members, ElementsAre(3, 9));
}

TEST(Store, MissingRecordsStayMissing)
{
    l3lif lif{};
    lif.ifindex = 5;
    l3lif_pd_ctxt bare{};
    Store store;
    store.store_interface(lif);
    lif.ifindex = 6;
    lif.l3lif_pd_ctxt = &bare;
    store.store_interface(lif);
    for (const StoredInterface &row : store.stored_interfaces()) {
        EXPECT_FALSE(row.properties || row.hardware || row.members) << row.ifindex;
    }
}

TEST(Store, EmptyMemberTreeIsNotAMissingOne)
{
    FullInterface full;
    Store store;
    store.store_interface(full.lif);
    EXPECT_EQ(store.stored_interfaces()[0].members, std::vector<std::uint32_t>{});
}

TEST(Store, StoringAgainReplacesMembersToo)
{
    FullInterface full;
    std::uint32_t member_3 = 3;
    std::uint32_t member_4 = 4;
    Store store;
    full.members.insert(&member_3);
    full.members.insert(&member_4);
    store.store_interface(full.lif);
    full.members.erase(&member_3);
    full.lif.int_vlan = 7;
    store.store_interface(full.lif);
    const auto rows = store.stored_interfaces();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].int_vlan, 7);
    EXPECT_THAT(*rows[0].members, ElementsAre(4));
}

TEST(Store, RowsComeInTheOrderOfTheirIfindex)
{
    Store store;
    l3lif lif{};
    for (const std::uint32_t ifindex : {0xF0000000U, 1U, 0x20000000U}) {
        lif.ifindex = ifindex;
        store.store_interface(lif);
    }
    std::vector<std::uint32_t> order;
    for (const StoredInterface &row : store.stored_interfaces()) {
        order.push_back(row.ifindex);
    }
    EXPECT_THAT(order, ElementsAre(1, 0x20000000, 0xF0000000));
    EXPECT_EQ(store.stored_interface(0x20000000)->ifindex, 0x20000000U);
    EXPECT_FALSE(store.stored_interface(2));
}

TEST(Store, DeletingTwiceIsNoFailure)
{
    FullInterface full;
    Store store;
    store.store_interface(full.lif);
    EXPECT_EQ(store.delete_interface(full.lif.ifindex).code, 0);
    EXPECT_TRUE(store.stored_interfaces().empty());
    EXPECT_EQ(store.delete_interface(full.lif.ifindex).code, 0);
}

TEST(Store, GlobalConfigurationIsKeptWhole)
{
    Store store;
    EXPECT_FALSE(store.global_config());
    GlobalConfig config{};
    config.front() = 1;
    config.back() = 2;
    EXPECT_TRUE(store.store_global_config(config.data()).ok());
    EXPECT_EQ(store.global_config(), config);
}

TEST(Store, ClearTakesAllAway)
{
    FullInterface full;
    const GlobalConfig config{42};
    Store store;
    store.store_interface(full.lif);
    store.store_global_config(config.data());
    EXPECT_TRUE(store.clear().ok());
    EXPECT_TRUE(store.stored_interfaces().empty());
    EXPECT_FALSE(store.global_config());
}

TEST(Store, FolderIsMadeAndOutlivesTheStore)
{
    const StateDir dir;
    const auto path = dir.path() / "a" / "b";
    {
        FullInterface full;
        const GlobalConfig config{42};
        state::Folder folder(path);
        Store store(&folder);
        store.store_interface(full.lif);
        store.store_global_config(config.data());
    }
    state::Folder folder(path);
    Store again(&folder);
    EXPECT_EQ(again.stored_interfaces().size(), 1U);
    EXPECT_EQ((*again.global_config())[0], 42);
}

TEST(Store, WhatACallHasStoredSurvivesTheKillOfTheProcess)
{
    const StateDir dir;
    killed_after([&] {
        FullInterface full;
        static state::Folder folder(dir.path());
        static Store store(&folder);
        store.store_interface(full.lif);
    });
    state::Folder folder(dir.path());
    Store store(&folder);
    EXPECT_EQ(store.stored_interfaces().size(), 1U);
}

TEST(Store, ChangedRowIsDamage)
{
    for (const char *change :
         {"UPDATE l3port SET vlan = 13", "UPDATE l3port SET mac = 'x'",
          "UPDATE l3port SET members = '[3'", "INSERT INTO global_config VALUES (1, X'00', 0)"}) {
        const StateDir dir;
        {
            FullInterface full;
            state::Folder folder(dir.path());
            Store(&folder).store_interface(full.lif);
        }
        dir.sql("store.sqlite", change);
        state::Folder folder(dir.path());
        EXPECT_THAT([&] { Store store(&folder); },
                    ThrowsMessage<state::Error>(HasSubstr("store.sqlite: table")))
            << change;
    }
}

TEST(Store, AfterAFailureNothingMoreIsTaken)
{
    const StateDir dir;
    state::Folder folder(dir.path());
    Store store(&folder);
    FullInterface full;
    folder.fail("the disk is full");
    const Outcome outcome = store.store_interface(full.lif);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_THAT(outcome.reason, HasSubstr("the disk is full"));
    EXPECT_TRUE(store.stored_interfaces().empty());
}

TEST(StoreCalls, AreJournaledWithTheirHandle)
{
    Switch sw;
    FullInterface full;
    EXPECT_EQ(rtifhal_pss_l3port_store(g_fwm_pss_context, 1, &full.lif), 0);
    EXPECT_EQ(rtifhal_pss_l3port_delete(g_fwm_pss_context, 1, 5), 0);
    EXPECT_EQ(fwmpd_pss_globalc_store(g_fwm_pss_context, fwmpd_global_config, 1), 0);
    EXPECT_THAT(sw.journal.calls(),
                ElementsAre("rtifhal_pss_l3port_store(store, 1, lif(0x20007000)) = 0",
                            "rtifhal_pss_l3port_delete(store, 1, 0x5) = 0",
                            "fwmpd_pss_globalc_store(store, config, 1) = 0"));
    EXPECT_EQ(sw.journal.records()[0].layer, Layer::store);
    EXPECT_EQ(sw.store.stored_interfaces().size(), 1U);
}

TEST(StoreCalls, OtherHandleOrNothingToStoreIsRefused)
{
    Switch sw;
    FullInterface full;
    int other = 0;
    EXPECT_EQ(rtifhal_pss_l3port_store(nullptr, 1, &full.lif), ERROR_PARAM);
    EXPECT_EQ(rtifhal_pss_l3port_store(&other, 1, &full.lif), ERROR_PARAM);
    EXPECT_EQ(rtifhal_pss_l3port_store(g_fwm_pss_context, 1, nullptr), ERROR_PARAM);
    EXPECT_EQ(fwmpd_pss_globalc_store(g_fwm_pss_context, nullptr, 1), ERROR_PARAM);
    EXPECT_EQ(sw.journal.records()[0].reason, "the handle is not that of the store");
    EXPECT_TRUE(sw.store.stored_interfaces().empty());
}

TEST(StoreCalls, InjectedFaultStoresNothing)
{
    Switch sw;
    FullInterface full;
    sw.journal.arm({.function = "rtifhal_pss_l3port_store", .code = -1});
    EXPECT_EQ(rtifhal_pss_l3port_store(g_fwm_pss_context, 1, &full.lif), -1);
    EXPECT_TRUE(sw.store.stored_interfaces().empty());
}

TEST(StoreCalls, HandleFollowsTheCurrentSwitch)
{
    Switch outer;
    {
        Switch inner;
        EXPECT_EQ(g_fwm_pss_context, inner.store.context());
        fwmpd_global_config[44] = 1;
        g_fwm_pss_restore_mode = 1;
    }
    EXPECT_EQ(g_fwm_pss_context, outer.store.context());
    Switch fresh;
    EXPECT_EQ(fwmpd_global_config[44], 0);
    EXPECT_EQ(g_fwm_pss_restore_mode, 0);
}

} // namespace simswitch::services
