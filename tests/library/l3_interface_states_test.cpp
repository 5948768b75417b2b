/*
 * l3_interface_states_test.cpp: the life of an interface's L3 interface object,
 * one test for each way from one state into another, and whose record a
 * subinterface works on.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include <fwm/state.h>

#include <cstring>

namespace rtifhal_test::l3_interface_states
{

namespace
{

constexpr const char *CREATE = "rtifhal_l3_intf_create";

/** A record's state, and what is left in hardware and tables of its number. */
void expect_created(Lif &lif, int iif)
{
    ASSERT_NE(lif.record(), nullptr);
    EXPECT_EQ(lif.record()->brcm_prog_complete, 0U);
    EXPECT_EQ(lif.record()->l3intf_id, iif);
    EXPECT_EQ(lif.record()->prev_l3_if_index, 0);
    EXPECT_TRUE(in_use(static_cast<unsigned>(iif)));
    EXPECT_FALSE(held_back(static_cast<unsigned>(iif)));
}

void expect_taken_down(Lif &lif, int iif)
{
    ASSERT_NE(lif.record(), nullptr);
    EXPECT_EQ(lif.record()->brcm_prog_complete, 1U);
    EXPECT_EQ(lif.record()->l3intf_id, 0);
    EXPECT_EQ(lif.record()->prev_l3_if_index, iif);
    EXPECT_TRUE(in_use(static_cast<unsigned>(iif)));
}

class L3InterfaceStates : public LibraryTest
{
protected:
    L3InterfaceStates()
    {
        l3iif_table_init();
        lif->lif.int_vlan = 4094;
        start();
    }

    int create() { return rtifhal_l3_intf_create(0, lif->get(), nullptr, 1); }
    int program_again() { return rtifhal_l3_intf_create(0, lif->get(), nullptr, 0); }
    int take_down() { return rtifhal_l3_intf_delete(lif->get(), nullptr, 0); }
    int destroy() { return rtifhal_l3_intf_delete(lif->get(), nullptr, 1); }
    /** Whether the chip has an L3 interface of that number, once the queue is out. */
    bool in_chip(int iif)
    {
        sw.end_request();
        return sw.chip.l3_interfaces.find(iif) != nullptr;
    }

    std::unique_ptr<Lif> lif = port(5);
};

/** First creations of a process, before any number was asked for. */
template <class Base> class FirstL3Interface : public Base
{
protected:
    int number_of_first()
    {
        EXPECT_EQ(rtifhal_l3_intf_create(0, lif->get(), nullptr, 1), 0);
        return lif->record()->l3intf_id;
    }

    std::unique_ptr<Lif> lif = port(5);
};

class FirstL3InterfaceOnTrident : public FirstL3Interface<LibraryTest>
{
protected:
    FirstL3InterfaceOnTrident() { g_fwm_pss_restore_mode = 0; }
    ~FirstL3InterfaceOnTrident() override { g_fwm_pss_restore_mode = 0; }
};

class FirstL3InterfaceOnTrident2 : public FirstL3Interface<Trident2Test>
{
};

/** Subinterfaces, whose main interface has what they lack. */
class L3InterfaceOfSubinterface : public LibraryTest
{
protected:
    L3InterfaceOfSubinterface()
    {
        l3iif_table_init();
        start();
    }

    static int create(Lif &lif) { return rtifhal_l3_intf_create(0, lif.get(), nullptr, 1); }
    static int program_again(Lif &lif) { return rtifhal_l3_intf_create(0, lif.get(), nullptr, 0); }
    /** The messages of a creation behind the choice of the record. */
    static std::vector<Message> made(const Lif &in_hand, const Lif &worked_on,
                                     const std::string &vlans, const std::string &object)
    {
        return {
            trace(CREATE, "inl3lif->ifindex = " + in_hand.hex() +
                              " l3lif->ifindex = " + worked_on.hex() + " create = 1\n"),
            trace(CREATE, "create " + vlans + "\n"),
            trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
            trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
            trace(CREATE, "Allocating l3lif_pd_ctxt\n"),
            trace(CREATE, "Allocating l3_pd\n"),
            trace(CREATE, " Calling bcm_l3_intf_create for " + object + "\n"),
            trace(CREATE, "Created l3-intf with intf-id as 0x3\n"),
            trace("rtifhal_trident_l3port_add_pss",
                  "calling rtifhal_pss_l3port_store, lif (" + worked_on.index() + ")\n"),
        };
    }
    static std::unique_ptr<Lif> unlike(std::unique_ptr<Lif> main)
    {
        main->lif.mac[5] = 0x77;
        main->lif.int_vlan = 701;
        main->lif.si_encap_vlan = 702;
        main->properties.vrf = 8;
        main->properties.mtu = 4000;
        return main;
    }
};

} // namespace

TEST_F(L3InterfaceStates, NoRecordCreateMakesItCreated)
{
    EXPECT_EQ(create(), 0);
    expect_created(*lif, 3);
    EXPECT_TRUE(in_chip(3));
}

TEST_F(L3InterfaceStates, CreatedProgrammedAgainStaysCreatedWithTheObjectReplaced)
{
    create();
    lif->properties.mtu = 9000;
    EXPECT_EQ(program_again(), 0);
    expect_created(*lif, 3);
    ASSERT_TRUE(in_chip(3));
    EXPECT_EQ(sw.chip.l3_interfaces.find(3)->mtu, 9000);
}

TEST_F(L3InterfaceStates, CreatedProgrammedTwiceSendsTheReplaceFlagBothTimes)
{
    create();
    start();
    program_again();
    program_again();
    const auto written = calls_of({"rtifhal_bcm_l3_intf_create"});
    ASSERT_EQ(written.size(), 2U);
    for (const auto &call : written) {
        EXPECT_NE(call.find("{flags=0x140 id=3 "), std::string::npos) << call;
    }
    expect_created(*lif, 3);
}

TEST_F(L3InterfaceStates, CreatedTakenDownParksTheNumber)
{
    create();
    EXPECT_EQ(take_down(), 0);
    expect_taken_down(*lif, 3);
    EXPECT_FALSE(held_back(3));
    EXPECT_FALSE(in_chip(3));
}

TEST_F(L3InterfaceStates, CreatedDestroyedIsGoneWithTheNumberHeldBack)
{
    create();
    EXPECT_EQ(destroy(), 0);
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(in_use(3));
    EXPECT_TRUE(held_back(3));
    EXPECT_FALSE(in_chip(3));
}

TEST_F(L3InterfaceStates, TakenDownProgrammedAgainComesBackUnderItsNumber)
{
    create();
    take_down();
    EXPECT_EQ(program_again(), 0);
    expect_created(*lif, 3);
    EXPECT_TRUE(in_chip(3));
}

TEST_F(L3InterfaceStates, TakenDownCreatedGetsANewNumberAndTheParkedOneStaysTaken)
{
    create();
    take_down();
    EXPECT_EQ(create(), 0);
    expect_created(*lif, 4);
    EXPECT_TRUE(in_use(3));
    EXPECT_FALSE(held_back(3));
}

TEST_F(L3InterfaceStates, TakenDownCreatedTakesTheParkedNumberOutOfThePreserveTable)
{
    create();
    take_down();
    hold_back(3);
    EXPECT_EQ(create(), 0);
    expect_created(*lif, 3);
    EXPECT_FALSE(held_back_in_config(3));
}

TEST_F(L3InterfaceStates, TakenDownDestroyedIsGoneWithNothingSentAndTheNumberLeftTaken)
{
    create();
    take_down();
    start();
    EXPECT_EQ(destroy(), 0);
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(sw.journal.count("rtifhal_bcm_l3_intf_delete"), 0U);
    EXPECT_TRUE(in_use(3));
    EXPECT_FALSE(held_back(3));
}

TEST_F(L3InterfaceStates, TakenDownDestroyedHoldsTheNumberOfTheCallersObjectBack)
{
    create();
    take_down();
    take(9);
    bcm_l3_intf_t object = {};
    object.l3a_intf_id = 9;
    EXPECT_EQ(rtifhal_l3_intf_delete(lif->get(), &object, 1), 0);
    EXPECT_TRUE(held_back(9));
    EXPECT_FALSE(held_back(3));
}

TEST_F(L3InterfaceStates, TakenDownFinishedIsGoneWithItsIngressObjectAndTheNumberHeldBack)
{
    create();
    rtifhal_l3_ing_create(lif->get(), 1);
    take_down();
    EXPECT_EQ(rtifhal_l3_destroy(lif->get()), 0);
    sw.end_request();
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(sw.chip.l3_ingresses.find(3), nullptr);
    EXPECT_TRUE(held_back(3));
}

TEST_F(L3InterfaceStates, InterfaceIsStoredAtEachCreationAndUnstoredAtEachDelete)
{
    create();
    program_again();
    take_down();
    program_again();
    destroy();
    EXPECT_EQ(
        calls_of({"rtifhal_pss_l3port_store", "rtifhal_pss_l3port_delete"}),
        std::vector<std::string>({called::store(*lif), called::store(*lif), called::unstore(*lif),
                                  called::store(*lif), called::unstore(*lif)}));
}

TEST_F(L3InterfaceStates, SecondDestroyFindsNoContext)
{
    create();
    destroy();
    start();
    EXPECT_EQ(destroy(), -1);
    expect_calls({called::unit()});
}

TEST_F(FirstL3InterfaceOnTrident, TakesNumberThreeOrTheFourthAboveTheSdnAgentsRange)
{
    EXPECT_EQ(number_of_first(), 3);
    reset_library();
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(number_of_first(), 1667);
}

TEST_F(FirstL3InterfaceOnTrident2, TakesNumberThreeOrTheFourthAboveTheSdnAgentsRange)
{
    EXPECT_EQ(number_of_first(), 3);
    reset_library();
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(number_of_first(), 3331);
}

TEST_F(FirstL3InterfaceOnTrident, RestoreModeLeavesTheInbandPathAlone)
{
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(number_of_first(), 3);
    EXPECT_EQ(sw.journal.count("fwmpd_inband_init"), 0U);
}

TEST_F(L3InterfaceOfSubinterface, OnAPortItReportsAndCreatesItsOwnObject)
{
    const auto main = unlike(port(5));
    const auto sub = subinterface(*main, 10);
    sub->lif.int_vlan = 4094;
    EXPECT_EQ(create(*sub), 0);
    expect_calls({called::intf_init(), called::is_port_channel(*main, 0), called::inband_init(),
                  "malloc(16) = record", "malloc(12) = record",
                  "rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=00:11:22:33:44:55 vid=100 "
                  "vrf=1 mtu=1500 ttl=0 tunnel=0}) = 0",
                  called::store(*sub)});
    auto expected = made(*sub, *sub, "internal_vlan = 4094 si_encap_vlan = 100",
                         "100 intf-id 3, mtu 1500, vrf 1");
    expected.insert(expected.begin(),
                    report(CREATE, "No context set in l3iif for intf " + main->index() + "\n"));
    expect_messages(expected);
    expect_created(*sub, 3);
    EXPECT_EQ(main->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelTheMainInterfaceIsCreatedAndStored)
{
    const auto main = unlike(port_channel(7));
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(create(*sub), 0);
    expect_calls({called::intf_init(), called::is_port_channel(*main, 1), called::inband_init(),
                  "malloc(16) = record", "malloc(12) = record",
                  "rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=00:11:22:33:44:77 vid=702 "
                  "vrf=8 mtu=4000 ttl=0 tunnel=0}) = 0",
                  called::store(*main)});
    auto expected = made(*sub, *main, "internal_vlan = 701 si_encap_vlan = 702",
                         "702 intf-id 3, mtu 4000, vrf 8");
    expected.insert(expected.begin(),
                    trace(CREATE, "context set in l3iif for intf " + main->index() + "\n"));
    expect_messages(expected);
    expect_created(*main, 3);
    EXPECT_EQ(sub->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelTheMainInterfacesLabelMoves)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    main->properties.acl_qos_label_pending = 5;
    sub->properties.acl_qos_label_pending = 6;
    create(*sub);
    EXPECT_EQ(main->record()->acl_qos_label_ingress, 5);
    EXPECT_EQ(main->properties.acl_qos_label_pending, 0);
    EXPECT_EQ(sub->properties.acl_qos_label_pending, 6);
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelTheMainInterfacesInternalVlanIsWrittenBack)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    create(*sub);
    EXPECT_EQ(main->lif.int_vlan, 4094);
    EXPECT_EQ(sub->lif.int_vlan, 0);
    expect_reports({report(CREATE, "No int_vlan set in l3iif for intf " + main->index() + "\n")});
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelMessagesOfFailureNameTheMainInterface)
{
    const auto main = unlike(port_channel(7));
    const auto sub = subinterface(*main, 10);
    std::memset(l3lif_l3iif_table.bits, 0xFF, sizeof l3lif_l3iif_table.bits);
    EXPECT_EQ(create(*sub), -1);
    EXPECT_EQ(calls_of({"snprintf_if_index"}),
              std::vector<std::string>(
                  {"snprintf_if_index(256, " + main->index() + ") = \"port-channel7\""}));
    expect_reports({report("rtifhal_alloc_l3iif", "Failed to create l3iif"),
                    report(CREATE, "Failed to create l3iif for intf " + main->index() + "\n")});
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelProgrammingAgainTakesTheMainInterfacesNumber)
{
    const auto main = unlike(port_channel(7));
    const auto sub = subinterface(*main, 10);
    main->with_parked(41);
    EXPECT_EQ(program_again(sub->with_record(9)), 0);
    EXPECT_EQ(main->record()->l3intf_id, 41);
    EXPECT_EQ(main->record()->brcm_prog_complete, 0U);
    EXPECT_EQ(sub->record()->l3intf_id, 9);
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelTheMainInterfacesMissingRecordCounts)
{
    const auto main = unlike(port_channel(7));
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(program_again(sub->with_record(9)), -1);
    expect_calls({called::intf_init(), called::is_port_channel(*main, 1)});
    expect_reports({report(CREATE, " NULL l3lif pd context for intf " + main->index())});
}

TEST_F(L3InterfaceOfSubinterface, OnAPortChannelOwnPropertiesDoNotCount)
{
    const auto main = unlike(port_channel(7));
    const auto sub = subinterface(*main, 10);
    main->without_properties();
    sub->properties.vrf = 12;
    EXPECT_EQ(create(*sub), 0);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_create"}),
              std::vector<std::string>(
                  {"rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=00:11:22:33:44:77 vid=702 "
                   "vrf=1 mtu=1500 ttl=0 tunnel=0}) = 0"}));
}

TEST_F(L3InterfaceOfSubinterface, MemberPortOfAPortChannelWorksOnThePortChannelToo)
{
    const auto main = unlike(port_channel(7));
    const auto member = port(5);
    member->lif.main_l3lif = main->get();
    EXPECT_EQ(create(*member), 0);
    expect_created(*main, 3);
    EXPECT_EQ(member->lif.l3lif_pd_ctxt, nullptr);
}

} // namespace rtifhal_test::l3_interface_states
