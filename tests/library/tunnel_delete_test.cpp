/*
 * tunnel_delete_test.cpp: a tunnel interface going down, which is always for
 * good: its initiator is cleared, its L3 interface deleted.
 *
 * tunnel_add_test.cpp has the way up.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"
#include "support/lif.h"
#include "support/misread.h"
#include "support/vlan_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <utility>

namespace rtifhal_test::tunnel_delete
{

namespace
{

constexpr int IIF = 3;
constexpr int INITIATOR = 6;
constexpr std::uint32_t UNTOUCHED = 9;

const std::string ENTRY = "rtifhal_trident_del_l3tun";
const std::string STEP = "rtifhal_l3tun_del";
const std::string CLEAR = "bcm_tunnel_initiator_clear";

std::string object(int tunnel)
{
    return fmt::format("{{flags=0x0 id=3 mac=00:11:22:33:44:55 vid=4094 vrf=1 mtu=1500 ttl=0 "
                       "tunnel={}}}",
                       tunnel);
}

/** A dispatcher finds out what the interface is. */
Calls kind_asked(const Lif &lif)
{
    return {called::type(lif, 24), called::is_port_channel(lif, 0), called::is_sub(lif, 0)};
}

Calls reads_object(int tunnel)
{
    return {called::unit(), called::intf_init(), called::flush(),
            "bcm_l3_intf_get(0, 3) = 0 [intf=" + object(tunnel) + "]"};
}

Calls deletes_object(const Lif &lif, int tunnel)
{
    return {
        called::unit(),        "rtifhal_bcm_l3_intf_delete(0, " + object(tunnel) + ") = 0",
        called::inband_init(), called::store_globals(),
        "mtrack_free(record)", "mtrack_free(record)",
        called::unstore(lif),
    };
}

Calls unties(const Lif &lif)
{
    return join({kind_asked(lif), kind_asked(lif),
                 Calls{called::unit(), called::type(lif, 24), called::destroy_ingress(IIF),
                       called::is_tunnel(lif, 1)}});
}

Calls clears(int code)
{
    return {fmt::format("{}(0, {}) = {}", CLEAR, object(INITIATOR), code)};
}

class TunnelDelete : public LibraryTest
{
protected:
    /** A tunnel that is up with the number 3. */
    TunnelDelete()
    {
        l3iif_table_init();
        rtifhal_trident_add_l3tun(lif->get(), 1);
        lif->lif.lif_state = UNTOUCHED;
        sw.end_request();
        start();
    }
    /** Its L3 interface has an initiator. */
    void bound() { ASSERT_TRUE(sw.chip.tunnels.create(IIF, {.index = INITIATOR}).ok()); }

    std::unique_ptr<Lif> lif = tunnel(1);
};

} // namespace

TEST_F(TunnelDelete, DestroysWhateverItIsTold)
{
    EXPECT_EQ(rtifhal_trident_del_l3tun(lif->get(), 0), 0);
    expect_calls(join({unties(*lif), reads_object(0), deletes_object(*lif, 0)}));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
    EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
}

TEST_F(TunnelDelete, LeavesEveryMessage)
{
    bound();
    rtifhal_trident_del_l3tun(lif->get(), 0);
    const std::string ingress = "rtifhal_l3_ing_delete";
    const std::string object = "rtifhal_l3_intf_delete";
    expect_messages({
        trace(ENTRY, "L3LIF: 0x40000001, 0\n"),
        trace("rtifhal_trident_del_egress",
              "\nrtifhal_trident_del_egress: L3LIF: 0x40000001, 0, 1\n"),
        trace("rtifhal_trident_del_ingress",
              "\nrtifhal_trident_del_ingress: L3LIF: 0x40000001, 0, 1\n"),
        trace(ingress, "ifindex = 40000001 destroy = 1\n"),
        trace(ingress, "iftype = 18 iif = 3 l3_if_index = 3\n"),
        trace(STEP, " Entry: destroy = 1\n"),
        trace(STEP, "ifindex = 40000001 main 0 destroy = 1\n"),
        trace(STEP, "tunnel_initiator_clear success\n"),
        trace(object, "l3lif->ifindex = 40000001 destroy = 1\n"),
        trace(object, "intf-delete for 40000001\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_free_l3iif", " iif_index = 3 preserve = 1\n"),
        trace(object, "intf-pd-ctx deleted for 40000001\n"),
    });
}

TEST_F(TunnelDelete, ClearsTheInitiatorBeforeTheObject)
{
    bound();
    EXPECT_EQ(rtifhal_trident_del_l3tun(lif->get(), 1), 0);
    expect_calls(
        join({unties(*lif), reads_object(INITIATOR), clears(0), deletes_object(*lif, INITIATOR)}));
    EXPECT_EQ(sw.chip.tunnels.find(IIF), nullptr);
}

TEST_F(TunnelDelete, InitiatorThatCantBeClearedDoesNotStopIt)
{
    bound();
    fail(CLEAR, -7);
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 1), 0);
    expect_calls(join({reads_object(INITIATOR), clears(-7), deletes_object(*lif, INITIATOR)}));
    expect_reports({report(STEP, fmt::format("tunnel_initiator_clear ({}) failed: {}\n",
                                             lif->decimal(), _shr_errmsg[7]))});
}

TEST_F(TunnelDelete, PositiveAnswerToTheClearIsASuccess)
{
    bound();
    fail(CLEAR, 1);
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 1), 0);
    EXPECT_EQ(messages().at(2), trace(STEP, "tunnel_initiator_clear success\n"));
}

TEST_F(TunnelDelete, InitiatorIsClearedOnUnitZeroWhateverTheUnitIs)
{
    sw.journal.arm({.function = "rtifhal_get_bcm_unit", .code = 1, .forever = true});
    const MisreadInterface bound_one(IIF, INITIATOR);
    rtifhal_l3tun_del(lif->get(), 1);
    EXPECT_EQ(calls_of({"bcm_l3_intf_get", CLEAR}),
              (Calls{"bcm_l3_intf_get(1, 3) = -3",
                     CLEAR + "(0, {flags=0x0 id=3 mac=00:00:00:00:00:00 vid=0 vrf=0 mtu=0 ttl=0 "
                             "tunnel=6}) = -7"}));
}

TEST_F(TunnelDelete, StepWithoutDestroyOnlyReads)
{
    bound();
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 0), 0);
    expect_calls(reads_object(INITIATOR));
    expect_messages({
        trace(STEP, " Entry: destroy = 0\n"),
        trace(STEP, "ifindex = 40000001 main 0 destroy = 0\n"),
        trace(STEP, "Not destroying l3_intf for ifindex 40000001\n"),
    });
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
}

TEST_F(TunnelDelete, ObjectOfAnotherNumberStopsTheStepWithoutDestroyToo)
{
    const MisreadInterface other(4);
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 0), -1);
    expect_reports({report(STEP, "itf get (3) mismatch\n")});
}

TEST_F(TunnelDelete, ObjectOfAnotherNumberStopsBeforeTheInitiator)
{
    const MisreadInterface other(4, INITIATOR);
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 1), -1);
    EXPECT_EQ(calls_of({CLEAR, "rtifhal_bcm_l3_intf_delete"}), Calls{});
    expect_reports({report(STEP, "itf get (3) mismatch\n")});
}

TEST_F(TunnelDelete, ObjectThatCantBeReadStopsTheStep)
{
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 1), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 3) = -7");
    expect_reports(
        {report(STEP, fmt::format("itf get ({}) failed: {}\n", lif->decimal(), _shr_errmsg[7]))});
}

TEST_F(TunnelDelete, PositiveAnswerToTheReadIsNoRefusal)
{
    fail("bcm_l3_intf_get", 1);
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 1), 0);
    expect_reports({});
}

TEST_F(TunnelDelete, ParkedTunnelIsLookedForUnderTheNumberZero)
{
    const auto other = tunnel(2);
    other->with_parked(7);
    EXPECT_EQ(rtifhal_l3tun_del(other->get(), 1), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 0) = -7");
}

TEST_F(TunnelDelete, NoInterfaceIsASuccessWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_del_l3tun(nullptr, 1), 0);
    expect_calls({});
}

TEST_F(TunnelDelete, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_l3tun_del(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({trace(STEP, " Entry: destroy = 1\n"),
                     report(STEP, " Got l3lif as or l3lif_pd_ctxt null")});
}

TEST_F(TunnelDelete, StepWithoutAContextSaysTheSame)
{
    const auto other = tunnel(2);
    EXPECT_EQ(rtifhal_l3tun_del(other->get(), 1), -1);
    expect_calls({called::unit()});
    expect_reports({report(STEP, " Got l3lif as or l3lif_pd_ctxt null")});
}

TEST_F(TunnelDelete, StepWithoutARecordIsRefusedInSilence)
{
    const auto other = tunnel(2);
    other->with_bare_context();
    EXPECT_EQ(rtifhal_l3tun_del(other->get(), 1), -1);
    EXPECT_EQ(calls_of({"bcm_l3_intf_get"}), Calls{});
    expect_reports({});
}

TEST_F(TunnelDelete, MainInterfaceStandsInTheTrace)
{
    const auto main = tunnel(9);
    lif->lif.main_l3lif = main->get();
    rtifhal_l3tun_del(lif->get(), 0);
    EXPECT_EQ(messages().at(1), trace(STEP, "ifindex = 40000001 main 40000009 destroy = 0\n"));
}

TEST_F(TunnelDelete, RecordThatGoesUnderWayIsReported)
{
    l3_pd *taken = nullptr;
    sw.journal.arm({.function = "bcm_l3_intf_get", .when = [&](std::string_view) {
                        taken = std::exchange(lif->lif.l3lif_pd_ctxt->l3_pd, nullptr);
                        return false;
                    }});
    EXPECT_EQ(rtifhal_l3tun_del(lif->get(), 1), -1);
    expect_reports({report(STEP, "itf delete(3) failed\n")});
    lif->lif.l3lif_pd_ctxt->l3_pd = taken;
}

TEST_F(TunnelDelete, EntryReportsEachFailedStepAndGoesOn)
{
    Lif unreadable(0);
    EXPECT_EQ(rtifhal_trident_del_l3tun(unreadable.get(), 1), 0);
    expect_calls({called::no_type(unreadable, 1), called::no_type(unreadable, 1), called::unit()});
    expect_reports({
        report(ENTRY, "L3LIF failed to del egr: 0x0, 0\n"),
        report(ENTRY, "L3LIF failed to del ing: 0x0, 0\n"),
        report(STEP, " Got l3lif as or l3lif_pd_ctxt null"),
        report(ENTRY, "L3LIF failed to del if: 0x0, 0\n"),
    });
}

} // namespace rtifhal_test::tunnel_delete
