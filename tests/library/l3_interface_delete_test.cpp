/*
 * l3_interface_delete_test.cpp: taking an interface's L3 interface object away,
 * and finishing an interface that was taken down before.
 *
 * l3_interface_create_test.cpp has the other direction.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <fwmpd/l3_cache.h>

#include <cstdlib>

namespace rtifhal_test::l3_interface_delete
{

namespace
{

constexpr const char *DELETE = "rtifhal_l3_intf_delete";
constexpr const char *DESTROY = "rtifhal_l3_destroy";
constexpr int LIVE = 300;

/** The release of a record and its context. */
const std::string RELEASE = "mtrack_free(record)";

/** The object that a delete makes up for itself. */
std::string bare_object(int id)
{
    return "{flags=0x0 id=" + std::to_string(id) +
           " mac=00:00:00:00:00:00 vid=0 vrf=0 mtu=0 ttl=0 tunnel=0}";
}

std::string delete_object(int id, int code)
{
    return "rtifhal_bcm_l3_intf_delete(0, " + bare_object(id) + ") = " + std::to_string(code);
}

Message store_table_entered()
{
    return trace("l3iif_table_init", " l3iif_table_init called with :1 \n");
}

/** A live port of number 300 and a parked one. */
class L3InterfaceDelete : public LibraryTest
{
protected:
    L3InterfaceDelete()
    {
        l3iif_table_init();
        take(LIVE);
        lif->with_record(LIVE);
        parked->with_parked(LIVE);
        bcm_l3_intf_t object = {};
        object.l3a_flags = 0x40;
        object.l3a_intf_id = LIVE;
        rtifhal_bcm_l3_intf_create(0, &object);
        start();
    }

    static int take_down(Lif &lif) { return rtifhal_l3_intf_delete(lif.get(), nullptr, 0); }
    static int destroy(Lif &lif) { return rtifhal_l3_intf_delete(lif.get(), nullptr, 1); }

    std::unique_ptr<Lif> lif = port(5);
    std::unique_ptr<Lif> parked = port(6);
};

class L3InterfaceFinish : public L3InterfaceDelete
{
};

} // namespace

TEST_F(L3InterfaceDelete, TakingDownParksTheNumberAndUnstoresTheInterface)
{
    EXPECT_EQ(take_down(*lif), 0);
    expect_calls(
        {called::unit(), called::intf_init(), delete_object(LIVE, 0), called::unstore(*lif)});
    expect_messages({trace(DELETE, "l3lif->ifindex = " + lif->hex() + " destroy = 0\n"),
                     trace(DELETE, "intf-delete for " + lif->hex() + "\n")});
    EXPECT_EQ(lif->record()->brcm_prog_complete, 1U);
    EXPECT_EQ(lif->record()->l3intf_id, 0);
    EXPECT_EQ(lif->record()->prev_l3_if_index, LIVE);
    EXPECT_TRUE(in_use(LIVE));
    EXPECT_FALSE(held_back(LIVE));
}

TEST_F(L3InterfaceDelete, DestroyHoldsTheNumberBackAndReleasesTheRecords)
{
    EXPECT_EQ(destroy(*lif), 0);
    expect_calls({called::unit(), called::intf_init(), delete_object(LIVE, 0),
                  called::inband_init(), called::store_globals(), RELEASE, RELEASE,
                  called::unstore(*lif)});
    expect_messages({trace(DELETE, "l3lif->ifindex = " + lif->hex() + " destroy = 1\n"),
                     trace(DELETE, "intf-delete for " + lif->hex() + "\n"), store_table_entered(),
                     trace("rtifhal_free_l3iif", " iif_index = 12c preserve = 1\n"),
                     trace(DELETE, "intf-pd-ctx deleted for " + lif->hex() + "\n")});
    EXPECT_TRUE(in_use(LIVE));
    EXPECT_TRUE(held_back(LIVE));
    EXPECT_TRUE(held_back_in_config(LIVE));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceDelete, GivenObjectNamesTheInterfaceAndStaysAsItWas)
{
    bcm_l3_intf_t object = {};
    object.l3a_intf_id = LIVE;
    object.l3a_vid = 4094;
    EXPECT_EQ(rtifhal_l3_intf_delete(lif->get(), &object, 0), 0);
    expect_calls({called::unit(),
                  "rtifhal_bcm_l3_intf_delete(0, {flags=0x0 id=300 mac=00:00:00:00:00:00 vid=4094 "
                  "vrf=0 mtu=0 ttl=0 tunnel=0}) = 0",
                  called::unstore(*lif)});
    EXPECT_EQ(object.l3a_intf_id, LIVE);
    EXPECT_EQ(lif->record()->prev_l3_if_index, LIVE);
}

TEST_F(L3InterfaceDelete, NumberOfTheGivenObjectIsParkedWhateverTheRecordSays)
{
    bcm_l3_intf_t object = {};
    object.l3a_intf_id = 41;
    rtifhal_l3_intf_delete(lif->get(), &object, 0);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 41);
}

TEST_F(L3InterfaceDelete, RefusedDeleteInTheChipIsNotLookedAt)
{
    fail("rtifhal_bcm_l3_intf_delete", -7);
    EXPECT_EQ(take_down(*lif), 0);
    EXPECT_EQ(lif->record()->prev_l3_if_index, LIVE);
    expect_reports({});
}

TEST_F(L3InterfaceDelete, RefusedRemovalFromTheStoreIsReportedAndTheDeleteSucceeds)
{
    fail("rtifhal_pss_l3port_delete", -9);
    EXPECT_EQ(take_down(*lif), 0);
    expect_reports({report("rtifhal_trident_l3port_del_pss",
                           "failed to delete pss for ifidx (" + lif->index() + ")\n")});
}

TEST_F(L3InterfaceDelete, MissingContextIsReportedWithTheWordCreate)
{
    const auto bare = port(7);
    EXPECT_EQ(destroy(*bare), -1);
    expect_calls({called::unit()});
    expect_messages(
        {trace(DELETE, "l3lif->ifindex = " + bare->hex() + " destroy = 1\n"),
         report(DELETE, "Failed to create l3lif pd context for intf " + bare->index())});
}

TEST_F(L3InterfaceDelete, MissingRecordFailsSilently)
{
    const auto bare = port(7);
    EXPECT_EQ(destroy(bare->with_bare_context()), -1);
    expect_calls({called::unit()});
    expect_messages({trace(DELETE, "l3lif->ifindex = " + bare->hex() + " destroy = 1\n")});
    EXPECT_NE(bare->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceDelete, SecondDeleteSendsNothingAndUnstoresAgain)
{
    take_down(*lif);
    start();
    EXPECT_EQ(take_down(*lif), 0);
    expect_calls({called::unit(), called::intf_init(), called::unstore(*lif)});
    expect_messages({trace(DELETE, "l3lif->ifindex = " + lif->hex() + " destroy = 0\n")});
}

TEST_F(L3InterfaceDelete, TakingDownAndDestroyingSendsOneDeleteToTheChip)
{
    take_down(*lif);
    destroy(*lif);
    EXPECT_EQ(sw.journal.count("rtifhal_bcm_l3_intf_delete"), 1U);
    EXPECT_EQ(sw.journal.count("rtifhal_pss_l3port_delete"), 2U);
}

TEST_F(L3InterfaceDelete, DestroyOfAParkedInterfaceWithoutAnObjectLeavesItsNumberTaken)
{
    EXPECT_EQ(destroy(*parked), 0);
    expect_calls({called::unit(), called::intf_init(), called::inband_init(), RELEASE, RELEASE,
                  called::unstore(*parked)});
    expect_messages({trace(DELETE, "l3lif->ifindex = " + parked->hex() + " destroy = 1\n"),
                     store_table_entered(),
                     trace(DELETE, "intf-pd-ctx deleted for " + parked->hex() + "\n")});
    EXPECT_TRUE(in_use(LIVE));
    EXPECT_FALSE(held_back(LIVE));
    EXPECT_EQ(parked->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceDelete, DestroyOfAParkedInterfaceHoldsTheNumberOfTheObjectBack)
{
    bcm_l3_intf_t object = {};
    object.l3a_intf_id = LIVE;
    EXPECT_EQ(rtifhal_l3_intf_delete(parked->get(), &object, 1), 0);
    expect_calls({called::unit(), called::inband_init(), called::store_globals(), RELEASE, RELEASE,
                  called::unstore(*parked)});
    EXPECT_TRUE(held_back(LIVE));
}

TEST_F(L3InterfaceDelete, NumberThatNobodyTookIsReportedAndTheDestroyGoesOn)
{
    const auto stray = port(7);
    EXPECT_EQ(destroy(stray->with_record(500)), 0);
    expect_reports({report("rtifhal_free_l3iif", " Invalid l3iif_index = 1f4\n")});
    EXPECT_EQ(stray->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(calls().back(), called::unstore(*stray));
}

TEST_F(L3InterfaceDelete, FirstWordOfTheContextIsReleasedWhereItIsSet)
{
    lif->lif.l3lif_pd_ctxt->unused_owned = std::malloc(8);
    start();
    EXPECT_EQ(destroy(*lif), 0);
    EXPECT_EQ(calls_of({"mtrack_free"}), std::vector<std::string>({RELEASE, RELEASE, RELEASE}));
}

TEST_F(L3InterfaceDelete, SubinterfaceOfAPortChannelIsDeletedByItsOwnRecord)
{
    const auto main = port_channel(7);
    main->with_record(41);
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(take_down(sub->with_record(LIVE)), 0);
    expect_calls(
        {called::unit(), called::intf_init(), delete_object(LIVE, 0), called::unstore(*sub)});
    EXPECT_EQ(sub->record()->prev_l3_if_index, LIVE);
    EXPECT_EQ(main->record()->l3intf_id, 41);
}

TEST_F(L3InterfaceDelete, AnyNonzeroFlagDestroys)
{
    EXPECT_EQ(rtifhal_l3_intf_delete(lif->get(), nullptr, -1), 0);
    EXPECT_TRUE(held_back(LIVE));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceDelete, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(take_down(*lif), 0); // this chip has no other unit
    expect_calls({"rtifhal_get_bcm_unit(0) = 3", called::intf_init(),
                  "rtifhal_bcm_l3_intf_delete(3, " + bare_object(LIVE) + ") = -3",
                  called::unstore(*lif)});
}

TEST_F(L3InterfaceDelete, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_l3_intf_delete(nullptr, nullptr, 1), -1);
    expect_calls({});
}

TEST_F(L3InterfaceFinish, DestroysTheIngressObjectHoldsTheNumberBackAndReleases)
{
    bcm_l3_ingress_t ingress = {};
    int iif = LIVE;
    rtifhal_bcm_l3_ingress_create(0, &ingress, &iif);
    start();
    EXPECT_EQ(rtifhal_l3_destroy(parked->get()), 0);
    expect_calls({called::unit(), called::type(*parked, 26), called::destroy_ingress(LIVE),
                  called::inband_init(), called::store_globals(), RELEASE, RELEASE});
    expect_messages({trace(DESTROY, "Entering rtifhal_l3_destroy, lif " + parked->index() + "\n"),
                     trace(DESTROY, "iftype = 1a iif = 12c prev_l3_if_index = 12c\n"),
                     store_table_entered(),
                     trace("rtifhal_free_l3iif", " iif_index = 12c preserve = 1\n")});
    EXPECT_TRUE(held_back(LIVE));
    EXPECT_EQ(parked->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceFinish, ValueOfTheIngressObjectIsHandedUpAfterTheWholeRoad)
{
    fail("rtifhal_bcm_l3_ingress_destroy", -7);
    EXPECT_EQ(rtifhal_l3_destroy(parked->get()), -7);
    EXPECT_TRUE(held_back(LIVE));
    EXPECT_EQ(parked->lif.l3lif_pd_ctxt, nullptr);
    expect_reports({});
}

TEST_F(L3InterfaceFinish, UnknownTypeIsReportedAndPrintedAsZero)
{
    for (const int code : {-1, 1}) {
        const auto unknown = port(6);
        unknown->with_parked(LIVE);
        start();
        fail("if_index_get_type", code);
        EXPECT_EQ(rtifhal_l3_destroy(unknown->get()), -7); // there is no ingress object
        expect_calls({called::unit(), called::no_type(*unknown, code),
                      called::destroy_ingress(LIVE, -7), called::inband_init(),
                      called::store_globals(), RELEASE, RELEASE});
        expect_reports(
            {report(DESTROY, "bcm_l3_ing_create(" + unknown->decimal() + ") get type failed\n")});
        EXPECT_EQ(messages()[2], trace(DESTROY, "iftype = 0 iif = 12c prev_l3_if_index = 12c\n"));
        EXPECT_TRUE(held_back(LIVE));
    }
}

TEST_F(L3InterfaceFinish, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(rtifhal_l3_destroy(parked->get()), -3);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}),
              std::vector<std::string>({"rtifhal_bcm_l3_ingress_destroy(3, 300) = -3"}));
}

TEST_F(L3InterfaceFinish, LiveInterfaceHasNoParkedNumberToGiveBack)
{
    rtifhal_l3_destroy(lif->get());
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}).size(), 1U);
    EXPECT_EQ(messages()[1], trace(DESTROY, "iftype = 1a iif = 0 prev_l3_if_index = 0\n"));
    EXPECT_TRUE(in_use(LIVE));
    EXPECT_FALSE(held_back(LIVE));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceFinish, NeitherMissingRecordNorMissingContextIsFollowed)
{
    const auto no_context = port(7);
    const auto no_record = port(8);
    no_record->with_bare_context();
    for (Lif *bare : {no_context.get(), no_record.get()}) {
        start();
        EXPECT_EQ(rtifhal_l3_destroy(bare->get()), -1);
        expect_calls({called::unit(), called::type(*bare, 26)});
        expect_reports({});
    }
}

TEST_F(L3InterfaceFinish, SubinterfaceOfAPortChannelIsFinishedByItsOwnRecord)
{
    const auto main = port_channel(7);
    main->with_parked(41);
    const auto sub = subinterface(*main, 10);
    rtifhal_l3_destroy(sub->with_parked(LIVE).get());
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}),
              std::vector<std::string>({called::destroy_ingress(LIVE, -7)}));
    EXPECT_NE(main->record(), nullptr);
    EXPECT_EQ(sub->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceFinish, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_l3_destroy(nullptr), -1);
    expect_calls({});
}

} // namespace rtifhal_test::l3_interface_delete
