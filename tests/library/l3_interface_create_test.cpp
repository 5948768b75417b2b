/*
 * l3_interface_create_test.cpp: creating an interface's L3 interface object:
 * what it is made of, where its number comes from, what a refusal leaves.
 *
 * l3_interface_states_test.cpp has its whole life.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <sdk/error.h>

#include <cstring>

namespace rtifhal_test::l3_interface_create
{

namespace
{

constexpr const char *CREATE = "rtifhal_l3_intf_create";
constexpr int TABLE_FULL = -6;

std::string full_text()
{
    return _shr_errmsg[-TABLE_FULL];
}

/** The call that writes an object of the default MAC. */
std::string write_object(int id, const std::string &flags = "0x40", int vid = 4094,
                         const std::string &rest = "vrf=1 mtu=1500")
{
    return "rtifhal_bcm_l3_intf_create(0, {flags=" + flags + " id=" + std::to_string(id) +
           " mac=00:11:22:33:44:55 vid=" + std::to_string(vid) + " " + rest + " ttl=0 tunnel=0})";
}

class L3InterfaceCreate : public LibraryTest
{
protected:
    L3InterfaceCreate()
    {
        l3iif_table_init();
        start();
    }

    static int create(Lif &lif, bcm_l3_intf_t *object = nullptr)
    {
        return rtifhal_l3_intf_create(0, lif.get(), object, 1);
    }
    static int program_again(Lif &lif, bcm_l3_intf_t *object = nullptr)
    {
        return rtifhal_l3_intf_create(0, lif.get(), object, 0);
    }
    /** The calls that write an L3 interface object. */
    std::vector<std::string> written() const { return calls_of({"rtifhal_bcm_l3_intf_create"}); }
    /** A port whose internal VLAN is set. */
    static std::unique_ptr<Lif> ready_port(unsigned sdk_port = 5)
    {
        auto lif = port(sdk_port);
        lif->lif.int_vlan = 4094;
        return lif;
    }
};

std::vector<std::string> only(std::string call)
{
    return {std::move(call)};
}

} // namespace

TEST_F(L3InterfaceCreate, FirstCreationTakesANumberMakesTheRecordsAndStoresTheInterface)
{
    const auto lif = ready_port();
    EXPECT_EQ(create(*lif), 0);
    expect_calls({called::intf_init(), called::inband_init(), "malloc(16) = record",
                  "malloc(12) = record", write_object(3) + " = 0", called::store(*lif)});
    expect_messages({
        trace(CREATE, "inl3lif->ifindex = " + lif->hex() + " l3lif->ifindex = " + lif->hex() +
                          " create = 1\n"),
        trace(CREATE, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
        trace(CREATE, "Allocating l3lif_pd_ctxt\n"),
        trace(CREATE, "Allocating l3_pd\n"),
        trace(CREATE, " Calling bcm_l3_intf_create for 4094 intf-id 3, mtu 1500, vrf 1\n"),
        trace(CREATE, "Created l3-intf with intf-id as 0x3\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (" + lif->index() + ")\n"),
    });
}

TEST_F(L3InterfaceCreate, FirstCreationLeavesAZeroedRecordWithTheLiveNumber)
{
    const auto lif = ready_port();
    create(*lif);
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt->unused_owned, nullptr);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 0);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 0);
    EXPECT_TRUE(in_use(3));
}

TEST_F(L3InterfaceCreate, GivenObjectIsWhatTheInterfaceStartsFromAndComesBack)
{
    const auto lif = ready_port();
    bcm_l3_intf_t object = {};
    object.l3a_flags = 0x8000;
    object.l3a_tunnel_idx = 7;
    object.l3a_ttl = 9;
    object.l3a_vrf = 5;
    EXPECT_EQ(create(*lif, &object), 0);
    EXPECT_EQ(calls().front(), called::inband_init());
    EXPECT_EQ(written(),
              only("rtifhal_bcm_l3_intf_create(0, {flags=0x8040 id=3 "
                   "mac=00:11:22:33:44:55 vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=7}) = 0"));
    EXPECT_EQ(object.l3a_intf_id, 3);
    EXPECT_EQ(object.l3a_flags, 0x8040U);
    EXPECT_EQ(object.l3a_ttl, 0);
    EXPECT_EQ(object.l3a_mtu, 1500);
}

TEST_F(L3InterfaceCreate, GivenObjectStaysAsItWasWhenTheChipRefuses)
{
    const auto lif = ready_port();
    bcm_l3_intf_t object = {};
    object.l3a_ttl = 9;
    const bcm_l3_intf_t before = object;
    fail("rtifhal_bcm_l3_intf_create", TABLE_FULL);
    EXPECT_EQ(create(*lif, &object), -1);
    EXPECT_EQ(std::memcmp(&object, &before, sizeof object), 0);
}

TEST_F(L3InterfaceCreate, GroupBitOfTheMacIsClearedInTheObjectOnly)
{
    const auto lif = ready_port();
    lif->lif.mac[0] = 0x03;
    create(*lif);
    EXPECT_EQ(written(), only("rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=02:11:22:33:44:55"
                              " vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}) = 0"));
    EXPECT_EQ(lif->lif.mac[0], 0x03);
}

TEST_F(L3InterfaceCreate, UnsetInternalVlanIsReportedAndWrittenBackAs4094)
{
    const auto lif = port(5);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(written(), only(write_object(3) + " = 0"));
    EXPECT_EQ(lif->lif.int_vlan, 4094);
    expect_reports({report(CREATE, "No int_vlan set in l3iif for intf " + lif->index() + "\n")});
    EXPECT_EQ(messages()[2], trace(CREATE, "create internal_vlan = 4094 si_encap_vlan = 0\n"));
}

TEST_F(L3InterfaceCreate, InternalVlanThatIsSetIsTaken)
{
    const auto lif = port(5);
    lif->lif.int_vlan = 700;
    create(*lif);
    EXPECT_EQ(written(), only(write_object(3, "0x40", 700) + " = 0"));
    expect_reports({});
}

TEST_F(L3InterfaceCreate, EncapsulationVlanGoesBeforeTheInternalOne)
{
    const auto lif = ready_port();
    lif->lif.si_encap_vlan = 100;
    create(*lif);
    EXPECT_EQ(written(), only(write_object(3, "0x40", 100) + " = 0"));
    EXPECT_EQ(messages()[1], trace(CREATE, "create internal_vlan = 4094 si_encap_vlan = 100\n"));
}

TEST_F(L3InterfaceCreate, EncapsulationVlanDoesNotStopTheInternalOneFromBeingSet)
{
    const auto lif = port(5);
    lif->lif.si_encap_vlan = 100;
    create(*lif);
    EXPECT_EQ(written(), only(write_object(3, "0x40", 100) + " = 0"));
    EXPECT_EQ(lif->lif.int_vlan, 4094);
}

TEST_F(L3InterfaceCreate, VrfAndMtuComeFromTheProperties)
{
    const auto lif = ready_port();
    lif->properties.vrf = 12;
    lif->properties.mtu = 9216;
    create(*lif);
    EXPECT_EQ(written(), only(write_object(3, "0x40", 4094, "vrf=12 mtu=9216") + " = 0"));
}

TEST_F(L3InterfaceCreate, VrfAndMtuOfZeroCountAsOneAnd1500)
{
    const auto lif = ready_port();
    lif->properties.vrf = 0;
    lif->properties.mtu = 0;
    create(*lif);
    EXPECT_EQ(written(), only(write_object(3) + " = 0"));
}

TEST_F(L3InterfaceCreate, InterfaceWithoutPropertiesGetsVrf1AndMtu1500)
{
    const auto lif = ready_port();
    lif->without_properties();
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(written(), only(write_object(3) + " = 0"));
}

TEST_F(L3InterfaceCreate, VrfOfTheObjectDoesNotOutliveMissingProperties)
{
    const auto lif = ready_port();
    bcm_l3_intf_t object = {};
    object.l3a_vrf = 9;
    object.l3a_mtu = 600;
    lif->without_properties();
    create(*lif, &object);
    EXPECT_EQ(written(), only(write_object(3) + " = 0"));
}

TEST_F(L3InterfaceCreate, PendingLabelMovesIntoTheRecord)
{
    const auto lif = ready_port();
    lif->properties.acl_qos_label_pending = 0x123;
    create(*lif);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 0x123);
    EXPECT_EQ(lif->properties.acl_qos_label_pending, 0);
}

TEST_F(L3InterfaceCreate, LabelStaysWhenNoneIsPending)
{
    const auto lif = ready_port();
    lif->with_record(7).record()->acl_qos_label_ingress = 9;
    program_again(*lif);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 9);
}

TEST_F(L3InterfaceCreate, RefusedCreationGivesTheNumberBackAndKeepsTheRecords)
{
    const auto lif = ready_port();
    fail("rtifhal_bcm_l3_intf_create", TABLE_FULL);
    EXPECT_EQ(create(*lif), -1);
    expect_calls({called::intf_init(), called::inband_init(), "malloc(16) = record",
                  "malloc(12) = record", write_object(3) + " = -6", called::inband_init()});
    expect_reports({report(CREATE, "rtifhal_bcm_l3_intf_create(" + lif->index() +
                                       ") failed: " + full_text() + "\n")});
    EXPECT_FALSE(in_use(3));
    EXPECT_FALSE(held_back(3));
    ASSERT_NE(lif->record(), nullptr);
    EXPECT_EQ(lif->record()->l3intf_id, 0);
}

TEST_F(L3InterfaceCreate, LabelThatMovedBeforeARefusedCreationStaysMoved)
{
    const auto lif = ready_port();
    lif->properties.acl_qos_label_pending = 0x77;
    fail("rtifhal_bcm_l3_intf_create", TABLE_FULL);
    EXPECT_EQ(create(*lif), -1);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 0x77);
    EXPECT_EQ(lif->properties.acl_qos_label_pending, 0);
}

TEST_F(L3InterfaceCreate, PositiveAnswerOfTheChipIsASuccess)
{
    const auto lif = ready_port();
    fail("rtifhal_bcm_l3_intf_create", 2);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    expect_reports({});
}

TEST_F(L3InterfaceCreate, RefusedStoreIsReportedAndTheCreationStillSucceeds)
{
    const auto lif = ready_port();
    fail("rtifhal_pss_l3port_store", -9);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    expect_reports({report("rtifhal_trident_l3port_add_pss",
                           "Failed to store to pss for ifidx (" + lif->index() + ")\n")});
}

TEST_F(L3InterfaceCreate, NoNumberLeftIsTakenToTheSystemLogAndLeavesNothing)
{
    const auto lif = ready_port();
    std::memset(l3lif_l3iif_table.bits, 0xFF, sizeof l3lif_l3iif_table.bits);
    EXPECT_EQ(create(*lif), -1);
    expect_calls({called::intf_init(), called::inband_init(),
                  "snprintf_if_index(256, " + lif->index() + ") = \"Ethernet1/5\"",
                  "syslog(2, \"Interface Ethernet1/5 has not been created ,hardware l3lif has "
                  "exhausted \\n\")"});
    expect_reports({report("rtifhal_alloc_l3iif", "Failed to create l3iif"),
                    report(CREATE, "Failed to create l3iif for intf " + lif->index() + "\n")});
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceCreate, NoNumberLeftLeavesExistingRecordsAsTheyWere)
{
    const auto lif = ready_port();
    lif->with_parked(300);
    std::memset(l3lif_l3iif_table.bits, 0xFF, sizeof l3lif_l3iif_table.bits);
    EXPECT_EQ(create(*lif), -1);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 1U);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 300);
}

TEST_F(L3InterfaceCreate, ContextThatCannotBeAllocatedKeepsTheNumber)
{
    const auto lif = ready_port();
    fail("malloc", 0);
    EXPECT_EQ(create(*lif), -1);
    expect_calls({called::intf_init(), called::inband_init(), "malloc(16) = null"});
    expect_reports({report(CREATE, "rtifhal_l3_intf_create:Failed to allocate memory")});
    EXPECT_TRUE(in_use(3));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceCreate, RecordThatCannotBeAllocatedLeavesABareContextAndKeepsTheNumber)
{
    const auto lif = ready_port();
    fail("malloc", 0, 2);
    EXPECT_EQ(create(*lif), -1);
    expect_calls(
        {called::intf_init(), called::inband_init(), "malloc(16) = record", "malloc(12) = null"});
    expect_reports({report(
        CREATE, "rtifhal_l3_intf_create:Failed to create L3PD context for intf " + lif->index())});
    EXPECT_TRUE(in_use(3));
    ASSERT_NE(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(lif->record(), nullptr);
}

TEST_F(L3InterfaceCreate, ContextWithoutARecordGivesTheNumberBackAndFailsSilently)
{
    const auto lif = ready_port();
    lif->with_bare_context();
    EXPECT_EQ(create(*lif), -1);
    expect_calls({called::intf_init(), called::inband_init(), called::inband_init()});
    expect_reports({});
    EXPECT_FALSE(in_use(3));
    EXPECT_EQ(lif->record(), nullptr);
}

TEST_F(L3InterfaceCreate, ParkedNumberInThePreserveTableIsReused)
{
    const auto lif = ready_port();
    lif->with_parked(300);
    hold_back(300);
    EXPECT_EQ(create(*lif), 0);
    expect_calls({called::intf_init(), called::store_globals(), write_object(300) + " = 0",
                  called::store(*lif)});
    const std::string hex = lif->hex();
    expect_messages({
        trace(CREATE, "inl3lif->ifindex = " + hex + " l3lif->ifindex = " + hex + " create = 1\n"),
        trace(CREATE, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace(CREATE, "Reusing l3a_intf_id 300\n"),
        trace(CREATE, " Calling bcm_l3_intf_create for 4094 intf-id 12c, mtu 1500, vrf 1\n"),
        trace(CREATE, "Created l3-intf with intf-id as 0x12c\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (" + lif->index() + ")\n"),
    });
    EXPECT_TRUE(in_use(300));
    EXPECT_FALSE(held_back(300));
    EXPECT_FALSE(held_back_in_config(300));
    EXPECT_EQ(lif->record()->l3intf_id, 300);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 0);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
}

TEST_F(L3InterfaceCreate, ParkedNumberOutsideThePreserveTableIsNotReused)
{
    const auto lif = ready_port();
    lif->with_parked(300);
    take(300);
    EXPECT_EQ(create(*lif), 0);
    expect_calls({called::intf_init(), called::inband_init(), write_object(3) + " = 0",
                  called::store(*lif)});
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    EXPECT_TRUE(in_use(300));
}

TEST_F(L3InterfaceCreate, ParkedNumberThatNoTableHasIsNotReused)
{
    const auto lif = ready_port();
    lif->with_parked(9000);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(lif->record()->l3intf_id, 3);
}

TEST_F(L3InterfaceCreate, ReusedNumberGoesBackByPlainFreeWhenTheChipRefuses)
{
    const auto lif = ready_port();
    lif->with_parked(300);
    hold_back(300);
    fail("rtifhal_bcm_l3_intf_create", TABLE_FULL);
    EXPECT_EQ(create(*lif), -1);
    expect_calls({called::intf_init(), called::store_globals(), write_object(300) + " = -6",
                  called::inband_init()});
    EXPECT_FALSE(in_use(300));
    EXPECT_FALSE(held_back(300));
    EXPECT_EQ(lif->record()->prev_l3_if_index, 300);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 1U);
}

TEST_F(L3InterfaceCreate, NewNumberWithAnExistingRecordAllocatesNothing)
{
    const auto lif = ready_port();
    lif->with_record(7).record()->acl_qos_label_ingress = 9;
    EXPECT_EQ(create(*lif), 0);
    expect_calls({called::intf_init(), called::inband_init(), write_object(3) + " = 0",
                  called::store(*lif)});
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 9);
}

TEST_F(L3InterfaceCreate, ProgrammingAgainReplacesTheObjectUnderItsNumber)
{
    const auto lif = ready_port();
    lif->with_record(7);
    EXPECT_EQ(program_again(*lif), 0);
    expect_calls({called::intf_init(), write_object(7, "0x140") + " = 0", called::store(*lif)});
    expect_messages({
        trace(CREATE, "inl3lif->ifindex = " + lif->hex() + " l3lif->ifindex = " + lif->hex() +
                          " create = 0\n"),
        trace(CREATE, "create internal_vlan = 4094 si_encap_vlan = 0\n"),
        trace(CREATE, "Reusing l3a_intf_id from existind pd ctxt 7\n"),
        trace(CREATE, " Calling bcm_l3_intf_create for 4094 intf-id 7, mtu 1500, vrf 1\n"),
        trace(CREATE, "Created l3-intf with intf-id as 0x7\n"),
        trace("rtifhal_trident_l3port_add_pss",
              "calling rtifhal_pss_l3port_store, lif (" + lif->index() + ")\n"),
    });
}

TEST_F(L3InterfaceCreate, ProgrammingAgainWithoutAContextOrRecordFails)
{
    for (const bool bare : {false, true}) {
        const auto lif = ready_port();
        if (bare) {
            lif->with_bare_context();
        }
        start();
        EXPECT_EQ(program_again(*lif), -1);
        expect_calls({called::intf_init()});
        expect_reports({report(CREATE, " NULL l3lif pd context for intf " + lif->index())});
    }
}

TEST_F(L3InterfaceCreate, RefusedProgrammingAgainTouchesNeitherNumberNorRecord)
{
    const auto lif = ready_port();
    lif->with_parked(300);
    take(300);
    fail("rtifhal_bcm_l3_intf_create", TABLE_FULL);
    EXPECT_EQ(program_again(*lif), -1);
    expect_calls({called::intf_init(), write_object(300, "0x140") + " = -6"});
    expect_reports({report(CREATE, "rtifhal_bcm_l3_intf_create(" + lif->index() +
                                       ") failed: " + full_text() + "\n")});
    EXPECT_TRUE(in_use(300));
    EXPECT_EQ(lif->record()->brcm_prog_complete, 1U);
    EXPECT_EQ(lif->record()->l3intf_id, 0);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 300);
}

TEST_F(L3InterfaceCreate, NumberZeroIsNoParkedNumber)
{
    const auto lif = ready_port();
    lif->with_record(0);
    hold_back(0);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    EXPECT_TRUE(held_back(0));
}

TEST_F(L3InterfaceCreate, AnyNonzeroFlagIsAFirstCreation)
{
    const auto lif = ready_port();
    fail("rtifhal_bcm_l3_intf_create", TABLE_FULL);
    EXPECT_EQ(rtifhal_l3_intf_create(0, lif->get(), nullptr, -1), -1);
    EXPECT_FALSE(in_use(3));
    EXPECT_EQ(rtifhal_l3_intf_create(0, lif->get(), nullptr, -1), 0);
    EXPECT_EQ(written().back(), write_object(3) + " = 0");
}

TEST_F(L3InterfaceCreate, UnitIsTheCallers)
{
    const auto lif = ready_port();
    EXPECT_EQ(rtifhal_l3_intf_create(3, lif->get(), nullptr, 1), -1); // this chip has unit 0 only
    EXPECT_EQ(written(), only("rtifhal_bcm_l3_intf_create(3, {flags=0x40 id=3 mac=00:11:22:33:44:55"
                              " vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}) = -3"));
}

TEST_F(L3InterfaceCreate, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_l3_intf_create(0, nullptr, nullptr, 1), -1);
    expect_calls({});
}

} // namespace rtifhal_test::l3_interface_create
