/*
 * store_test.cpp: the write side of the persistent store: the global
 * configuration and the record of each interface.
 */
#include "support/library_test.h"
#include "support/lif.h"

namespace rtifhal_test::store
{

namespace
{

class Store : public LibraryTest
{
};

} // namespace

TEST_F(Store, InterfaceIsStoredWholeAfterATrace)
{
    const auto lif = port(5);
    EXPECT_EQ(rtifhal_trident_l3port_add_pss(lif->with_record(7).get()), 0);
    expect_calls({"rtifhal_pss_l3port_store(store, 1, " + lif->text() + ") = 0"});
    expect_messages({trace("rtifhal_trident_l3port_add_pss",
                           "calling rtifhal_pss_l3port_store, lif (" + lif->index() + ")\n")});
}

TEST_F(Store, InterfaceStoredAgainHasItsLatestRecord)
{
    const auto lif = port(5);
    rtifhal_trident_l3port_add_pss(lif->with_record(7).get());
    lif->record()->acl_qos_label_ingress = 291;
    rtifhal_trident_l3port_add_pss(lif->get());
    const auto stored = sw.store.stored_interface(lif->get()->ifindex);
    ASSERT_TRUE(stored && stored->hardware);
    EXPECT_EQ(stored->hardware->l3intf_id, 7);
    EXPECT_EQ(stored->hardware->acl_qos_label_ingress, 291);
}

TEST_F(Store, RefusedStoreOfAnInterfaceIsReportedAndHandedUp)
{
    const auto lif = port(5);
    fail("rtifhal_pss_l3port_store", -9);
    EXPECT_EQ(rtifhal_trident_l3port_add_pss(lif->with_record(7).get()), -9);
    expect_messages({trace("rtifhal_trident_l3port_add_pss",
                           "calling rtifhal_pss_l3port_store, lif (" + lif->index() + ")\n"),
                     report("rtifhal_trident_l3port_add_pss",
                            "Failed to store to pss for ifidx (" + lif->index() + ")\n")});
}

TEST_F(Store, PositiveResultOfTheStoreIsAFailureToo)
{
    const auto lif = port(5);
    fail("rtifhal_pss_l3port_store", 4);
    EXPECT_EQ(rtifhal_trident_l3port_add_pss(lif->with_record(7).get()), 4);
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(Store, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_l3port_add_pss(nullptr), -1);
    expect_calls({});
}

TEST_F(Store, InterfaceIsRemovedWithoutAMessage)
{
    const auto lif = port(5);
    rtifhal_trident_l3port_add_pss(lif->with_record(7).get());
    start();
    EXPECT_EQ(rtifhal_trident_l3port_del_pss(lif->get()->ifindex), 0);
    expect_calls({"rtifhal_pss_l3port_delete(store, 1, " + lif->index() + ") = 0"});
    expect_messages({});
    EXPECT_FALSE(sw.store.stored_interface(lif->get()->ifindex));
}

TEST_F(Store, RefusedRemovalIsReportedAndHandedUp)
{
    const auto lif = port(5);
    for (const int code : {-2, 3}) {
        start();
        fail("rtifhal_pss_l3port_delete", code);
        EXPECT_EQ(rtifhal_trident_l3port_del_pss(lif->get()->ifindex), code);
        expect_messages({report("rtifhal_trident_l3port_del_pss",
                                "failed to delete pss for ifidx (" + lif->index() + ")\n")});
    }
}

TEST_F(Store, EveryMessageNamesTheStoresUnit)
{
    const auto lif = port(5);
    fail("rtifhal_pss_l3port_store", -9);
    fail("rtifhal_pss_l3port_delete", -9);
    rtifhal_trident_l3port_add_pss(lif->with_record(7).get());
    rtifhal_trident_l3port_del_pss(lif->get()->ifindex);
    ASSERT_EQ(sw.trace.messages().size(), 3U);
    for (const auto &message : sw.trace.messages()) {
        EXPECT_EQ(message.file, "asic/forwarding-sw/l3lif/pd_trident/rtifhal_kelvo_trident_pss");
    }
}

TEST_F(Store, GlobalConfigurationIsStoredWholeWithoutAMessage)
{
    EXPECT_EQ(rtifhal_trident_pss_globalc_store(), 0);
    expect_calls({"fwmpd_pss_globalc_store(store, config, 1) = 0"});
    expect_messages({});
}

TEST_F(Store, RefusedStoreOfTheGlobalConfigurationIsHandedUpWithoutAMessage)
{
    for (const int code : {-5, 6}) {
        start();
        fail("fwmpd_pss_globalc_store", code);
        EXPECT_EQ(rtifhal_trident_pss_globalc_store(), code);
        expect_messages({});
    }
}

} // namespace rtifhal_test::store
