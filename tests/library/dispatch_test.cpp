/*
 * dispatch_test.cpp: the four dispatchers through which every ingress and
 * egress step runs: which step each kind of interface gets, and whose value
 * comes back.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include "services/ifindex.h"

#include <fmt/format.h>

namespace rtifhal_test::dispatch
{

namespace
{

using Calls = std::vector<std::string>;
using Dispatcher = int (*)(l3lif *, int, int);

struct Named {
    const char *name;
    Dispatcher dispatch;
};

const Named ADD_INGRESS = {"rtifhal_trident_add_ingress", rtifhal_trident_add_ingress};
const Named DEL_INGRESS = {"rtifhal_trident_del_ingress", rtifhal_trident_del_ingress};
const Named ADD_EGRESS = {"rtifhal_trident_add_egress", rtifhal_trident_add_egress};
const Named DEL_EGRESS = {"rtifhal_trident_del_egress", rtifhal_trident_del_egress};
const std::vector<Named> ALL = {ADD_INGRESS, DEL_INGRESS, ADD_EGRESS, DEL_EGRESS};

constexpr int AUX = -21;
constexpr std::uint16_t IIF = 7;
constexpr std::uint16_t VLAN = 100;
constexpr int SDK_CODE = -4;

const std::string EGRESS_SET = "fwmpd_bcm_switch_control_set(0, 230, 1) = ";

std::string is_physical(const Lif &lif, int answer)
{
    return fmt::format("if_index_is_physical_interface({}) = {}", lif.index(), answer);
}

// The tests of a dispatcher, up to the one that holds.
Calls until_port_channel(const Lif &lif)
{
    return {called::type(lif, 22), called::is_port_channel(lif, 1)};
}
Calls until_subinterface(const Lif &lif, int type)
{
    return {called::type(lif, type), called::is_port_channel(lif, 0), called::is_sub(lif, 1)};
}
Calls until_type(const Lif &lif, int type)
{
    return {called::type(lif, type), called::is_port_channel(lif, 0), called::is_sub(lif, 0)};
}
Calls until_physical(const Lif &lif, int type, int answer)
{
    return {called::type(lif, type), called::is_port_channel(lif, 0), called::is_sub(lif, 0),
            is_physical(lif, answer)};
}

Calls operator+(Calls head, const Calls &tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

Calls egress_set(int result = 0)
{
    return {"bcm_l3_egress_t_init()", called::unit(), EGRESS_SET + std::to_string(result)};
}

Calls first(const Calls &calls, std::size_t count)
{
    return {calls.begin(), calls.begin() + static_cast<long>(std::min(count, calls.size()))};
}

Message entered(const Named &dispatcher, const Lif &lif, int flag, int aux = AUX)
{
    return trace(dispatcher.name,
                 fmt::format("\n{}: L3LIF: {}, {}, {}\n", dispatcher.name, lif.index(), aux, flag));
}

class Dispatch : public LibraryTest
{
protected:
    static std::unique_ptr<Lif> live(std::unique_ptr<Lif> lif)
    {
        lif->with_record(IIF);
        return lif;
    }

    /** The calls after the tests of a dispatcher that tell the kind. */
    Calls step() const
    {
        Calls after = calls();
        const Calls tests = {"if_index_get_type", "if_index_is_eth_port_channel_intf",
                             "if_index_is_sub_intf", "if_index_is_physical_interface"};
        for (const auto &test : tests) {
            if (!after.empty() && after.front().rfind(test, 0) == 0) {
                after.erase(after.begin());
            }
        }
        return after;
    }
};

} // namespace

TEST_F(Dispatch, EveryDispatcherTracesItsEntry)
{
    const auto lif = svi(VLAN);
    for (const auto &dispatcher : ALL) {
        start();
        dispatcher.dispatch(lif->get(), AUX, 3);
        ASSERT_FALSE(messages().empty());
        EXPECT_EQ(messages()[0], entered(dispatcher, *lif, 3));
    }
}

TEST_F(Dispatch, UnreadableTypeIsHandedUpWithoutAMessage)
{
    const auto lif = live(port(5));
    for (const auto &dispatcher : ALL) {
        for (const int code : {-1, -77, 5}) {
            start();
            fail("if_index_get_type", code);
            EXPECT_EQ(dispatcher.dispatch(lif->get(), AUX, 1), code);
            expect_calls({called::no_type(*lif, code)});
            expect_messages({entered(dispatcher, *lif, 1)});
        }
    }
}

TEST_F(Dispatch, InterfaceOfNoKnownKindIsRefusedAfterAllTests)
{
    Lif management(simswitch::if_index::management(0));
    management.with_record(IIF);
    for (const auto &dispatcher : ALL) {
        start();
        EXPECT_EQ(dispatcher.dispatch(management.get(), AUX, 1), -1);
        expect_calls(until_physical(management, 5, 0));
        expect_messages({entered(dispatcher, management, 1)});
    }
}

TEST_F(Dispatch, NullInterfaceIsRefusedWithoutACall)
{
    for (const auto &dispatcher : ALL) {
        EXPECT_EQ(dispatcher.dispatch(nullptr, AUX, 1), -1);
    }
    expect_calls({});
    expect_messages({});
}

TEST_F(Dispatch, IngressOfAPortIsWrittenAndTiedToThePort)
{
    const auto lif = live(port(5));
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 1), 0);
    expect_calls(
        until_physical(*lif, 26, 1) +
        Calls{called::ingress_init(), called::unit(), called::type(*lif, 26), called::trident2(0),
              called::write_ingress("{flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
              called::is_tunnel(*lif, 0), called::is_sub(*lif, 0), called::is_port_channel(*lif, 0),
              called::type(*lif, 26), called::port_of(*lif, 5), called::port_control(5, IIF)});
}

TEST_F(Dispatch, IngressCreateFlagReachesTheStep)
{
    const auto lif = live(port(5));
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 0), -1);
    EXPECT_EQ(calls().back(), called::from_cache(IIF, false));
    start();
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 2), 0);
    EXPECT_TRUE(calls_of({"rtifhal_bcm_l3_ingress_get_from_cache"}).empty());
}

TEST_F(Dispatch, IngressOfAPortIsUntiedAndDestroyedOnDestroyOnly)
{
    const auto lif = live(port(5));
    rtifhal_trident_add_ingress(lif->get(), AUX, 1);
    start();
    const Calls untied = {called::is_tunnel(*lif, 0), called::is_sub(*lif, 0),
                          called::type(*lif, 26), called::port_of(*lif, 5),
                          called::port_control(5, 0)};
    const Calls head = until_physical(*lif, 26, 1) + Calls{called::unit(), called::type(*lif, 26)};
    EXPECT_EQ(rtifhal_trident_del_ingress(lif->get(), AUX, 0), 0);
    expect_calls(head + untied);
    start();
    EXPECT_EQ(rtifhal_trident_del_ingress(lif->get(), AUX, 1), 0);
    expect_calls(head + Calls{called::destroy_ingress(IIF)} + untied);
}

TEST_F(Dispatch, EgressOfEveryKindIsTheSameSwitchControl)
{
    const auto channel = live(port_channel(41));
    const auto main_port = live(port(5));
    const auto sub = live(subinterface(*main_port, 3));
    const auto vlan = live(svi(VLAN));
    const auto tun = live(tunnel(1));

    EXPECT_EQ(rtifhal_trident_add_egress(channel->get(), AUX, 1), 0);
    expect_calls(until_port_channel(*channel) + egress_set());
    expect_messages({entered(ADD_EGRESS, *channel, 1)});
    start();
    EXPECT_EQ(rtifhal_trident_add_egress(sub->get(), AUX, 1), 0);
    expect_calls(until_subinterface(*sub, 26) + Calls{"bcm_l3_egress_t_init()", called::unit(),
                                                      called::is_port_channel(*main_port, 0),
                                                      EGRESS_SET + "0"});
    expect_messages({entered(ADD_EGRESS, *sub, 1)});
    start();
    EXPECT_EQ(rtifhal_trident_add_egress(vlan->get(), AUX, 1), 0);
    expect_calls(until_type(*vlan, 9) + egress_set());
    expect_messages({entered(ADD_EGRESS, *vlan, 1)});
    start();
    EXPECT_EQ(rtifhal_trident_add_egress(tun->get(), AUX, 1), 0);
    expect_calls(until_type(*tun, 24) + egress_set());
    expect_messages({entered(ADD_EGRESS, *tun, 1)});
    start();
    EXPECT_EQ(rtifhal_trident_add_egress(main_port->get(), AUX, 1), 0);
    expect_calls(until_physical(*main_port, 26, 1) + egress_set());
    expect_messages({entered(ADD_EGRESS, *main_port, 1)});
}

TEST_F(Dispatch, EgressResultOfEveryKindIsHandedUp)
{
    const auto channel = live(port_channel(41));
    const auto main_port = live(port(5));
    const auto sub = live(subinterface(*main_port, 3));
    const auto vlan = live(svi(VLAN));
    const auto tun = live(tunnel(1));
    for (const auto *lif : {&channel, &main_port, &sub, &vlan, &tun}) {
        for (const int code : {SDK_CODE, 3}) {
            start();
            fail("fwmpd_bcm_switch_control_set", code);
            EXPECT_EQ(rtifhal_trident_add_egress((*lif)->get(), AUX, 1), code);
            EXPECT_EQ(calls().back(), EGRESS_SET + std::to_string(code));
        }
    }
}

TEST_F(Dispatch, EgressDeleteOnlyLooksForTheContext)
{
    const auto channel = port_channel(41);
    const auto main_port = port(5);
    const auto sub = subinterface(*main_port, 3);
    const auto tun = tunnel(1);
    for (const auto *lif : {&channel, &main_port, &sub, &tun}) {
        start();
        EXPECT_EQ(rtifhal_trident_del_egress((*lif)->get(), AUX, 1), 0);
        EXPECT_TRUE(step().empty());
        expect_messages({entered(DEL_EGRESS, **lif, 1),
                         report("rtifhal_l3_egr_delete",
                                "Failed to delete l3lif pd context for intf " + (*lif)->index())});
    }
}

TEST_F(Dispatch, IngressOfPortChannelAndSubinterfaceIsCreatedWithoutFurtherTests)
{
    const auto channel = live(port_channel(41));
    EXPECT_EQ(rtifhal_trident_add_ingress(channel->get(), AUX, 1), 0);
    EXPECT_EQ(first(calls(), 3), until_port_channel(*channel) + Calls{called::ingress_init()});
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create"}).size(), 1U);

    const auto main_port = live(port(5));
    const auto sub = live(subinterface(*main_port, 3));
    start();
    EXPECT_EQ(rtifhal_trident_add_ingress(sub->get(), AUX, 1), 0);
    EXPECT_EQ(first(calls(), 4), until_subinterface(*sub, 26) + Calls{called::ingress_init()});
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_create"}).size(), 1U);
}

TEST_F(Dispatch, IngressOfPortChannelAndSubinterfaceIsDeletedWithoutFurtherTests)
{
    const auto channel = live(port_channel(41));
    EXPECT_EQ(rtifhal_trident_del_ingress(channel->get(), AUX, 1), 0);
    EXPECT_EQ(first(calls(), 3), until_port_channel(*channel) + Calls{called::unit()});
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}).size(), 1U);

    const auto main_port = live(port(5));
    const auto sub = live(subinterface(*main_port, 3));
    start();
    EXPECT_EQ(rtifhal_trident_del_ingress(sub->get(), AUX, 1), 0);
    EXPECT_EQ(first(calls(), 4), until_subinterface(*sub, 26) + Calls{called::unit()});
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}).size(), 1U);
}

TEST_F(Dispatch, IngressFailureOfEveryKindButSviAndTunnelIsHandedUp)
{
    const auto channel = port_channel(41);
    const auto main_port = port(5);
    const auto sub = subinterface(*main_port, 3);
    for (const auto *lif : {&channel, &main_port, &sub}) {
        (*lif)->with_bare_context();
        EXPECT_EQ(rtifhal_trident_add_ingress((*lif)->get(), AUX, 1), -1);
        EXPECT_EQ(rtifhal_trident_del_ingress((*lif)->get(), AUX, 1), -1);
    }
}

TEST_F(Dispatch, IngressOfATunnelIsTheObjectAlone)
{
    const auto lif = live(tunnel(1));
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 1), 0);
    expect_calls(until_type(*lif, 24) +
                 Calls{called::ingress_init(), called::unit(), called::type(*lif, 24),
                       called::trident2(0),
                       called::write_ingress("{flags=0x6 vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF),
                       called::is_tunnel(*lif, 1)});
    start();
    EXPECT_EQ(rtifhal_trident_del_ingress(lif->get(), AUX, 1), 0);
    expect_calls(until_type(*lif, 24) + Calls{called::unit(), called::type(*lif, 24),
                                              called::destroy_ingress(IIF),
                                              called::is_tunnel(*lif, 1)});
}

TEST_F(Dispatch, IngressFailureOfATunnelIsDroppedAndItsEgressFailureKept)
{
    const auto lif = tunnel(1);
    lif->with_bare_context();
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 1), 0);
    EXPECT_EQ(rtifhal_trident_del_ingress(lif->get(), AUX, 1), 0);
    EXPECT_EQ(rtifhal_trident_add_egress(lif->get(), AUX, 1), -1);
    start();
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->without_properties().get(), AUX, 1), 0);
    expect_reports({report("rtifhal_l3_ing_create",
                           "Failed to get l3lif pd context for intf " + lif->index())});
}

TEST_F(Dispatch, SviHasNothingToDoOnIngressAddAndEgressDelete)
{
    const auto lif = svi(VLAN);
    for (const auto &dispatcher : {ADD_INGRESS, DEL_EGRESS}) {
        start();
        EXPECT_EQ(dispatcher.dispatch(lif->get(), AUX, 1), 0);
        expect_calls(until_type(*lif, 9));
        expect_messages({entered(dispatcher, *lif, 1)});
    }
}

TEST_F(Dispatch, IngressDeleteOfAnSviOnlyTakesTheMappedMarkOff)
{
    const auto lif = live(svi(VLAN));
    const std::string unmapped = "{vrf=1 iif=7 flags=0x0 class=0 urpf=0}";
    rtifhal_l3_ing_create(lif->get(), 1);
    start();
    EXPECT_EQ(rtifhal_trident_del_ingress(lif->get(), AUX, 1), 0);
    expect_calls(until_type(*lif, 9) +
                 Calls{called::unit(), called::type(*lif, 9),
                       "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) = record",
                       "fwmpd_bcm_vlan_control_vlan_set(0, 100, " + unmapped + ") = 0",
                       "fwmpd_trident_vlan_bvcvt_store(100) = 0"});
    expect_messages({entered(DEL_INGRESS, *lif, 1),
                     trace("rtifhal_l3_ing_update_vlan_label",
                           "Entered rtifhal_l3_ing_update_vlan_label for " + lif->index() + "\n")});
}

TEST_F(Dispatch, IngressDeleteOfAnSviHandsTheRelabelsFailureUp)
{
    const auto lif = live(svi(VLAN));
    fail("fwmpd_bcm_vlan_control_vlan_get_from_cache", 0);
    EXPECT_EQ(rtifhal_trident_del_ingress(lif->get(), AUX, 1), -1);
}

TEST_F(Dispatch, PortChannelTestDecidesBeforeTheType)
{
    const auto lif = svi(VLAN);
    for (const int answer : {1, -1}) {
        start();
        fail("if_index_is_eth_port_channel_intf", answer);
        EXPECT_EQ(rtifhal_trident_del_egress(lif->get(), AUX, 1), 0);
        expect_calls({called::type(*lif, 9), called::is_port_channel(*lif, answer)});
        EXPECT_EQ(reports().size(), 1U);
    }
}

TEST_F(Dispatch, SubinterfaceTestDecidesBeforeTheType)
{
    const auto lif = tunnel(1);
    lif->with_bare_context();
    fail("if_index_is_sub_intf", 1);
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 1), -1);
    EXPECT_EQ(first(calls(), 4), until_subinterface(*lif, 24) + Calls{called::ingress_init()});
    start();
    fail("if_index_is_sub_intf", -1);
    EXPECT_EQ(rtifhal_trident_add_ingress(lif->get(), AUX, 1), -1);
}

TEST_F(Dispatch, AnyNonzeroAnswerMeansAPhysicalInterface)
{
    const auto lif = live(svi(VLAN));
    fail("if_index_get_type", 0);
    fail("if_index_is_physical_interface", -1);
    EXPECT_EQ(rtifhal_trident_add_egress(lif->get(), AUX, 1), 0);
    EXPECT_EQ(calls().back(), EGRESS_SET + "0");
}

TEST_F(Dispatch, AuxChangesNothingButTheTrace)
{
    const auto lif = live(port(5));
    const std::vector<std::pair<Named, int>> each = {
        {ADD_INGRESS, 1}, {DEL_INGRESS, 0}, {ADD_EGRESS, 1}, {DEL_EGRESS, 1}};
    for (const auto &[dispatcher, flag] : each) {
        start();
        dispatcher.dispatch(lif->get(), 0, flag);
        const Calls expected = calls();
        EXPECT_EQ(messages()[0], entered(dispatcher, *lif, flag, 0));
        start();
        dispatcher.dispatch(lif->get(), INT32_MAX, flag);
        expect_calls(expected);
        EXPECT_EQ(messages()[0], entered(dispatcher, *lif, flag, INT32_MAX));
    }
}

} // namespace rtifhal_test::dispatch
