/*
 * property_tunnel_test.cpp: a tunnel is brought into line with its changed
 * properties: both of its objects are written again, and the tunnel initiator
 * that the object has stays in it.
 *
 * property_subint_test.cpp has the same for subinterfaces.
 */
#include "support/misread.h"
#include "support/setter_roads.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::property_tunnel
{

namespace
{

using namespace setter_road;

const std::string SET_TUNNEL = "rtifhal_set_kelvo_l3_property_l3tun";

std::string object(const std::string &flags, int tunnel = 0)
{
    return fmt::format("{{flags={} id=3 mac=00:11:22:33:44:55 vid=4094 vrf=1 mtu=1500 ttl=0 "
                       "tunnel={}}}",
                       flags, tunnel);
}

/** Tunnel 1 is up: IPv4 on, VRF 1, MTU 1500. */
class PropertyOfTunnel : public LibraryTest
{
protected:
    explicit PropertyOfTunnel(Kind chip = Kind::trident) : LibraryTest({.chip = chip})
    {
        l3iif_table_init();
        EXPECT_EQ(rtifhal_trident_add_l3tun(lif->get(), 1), 0);
        sw.end_request();
        start();
    }

    static int set_of(Lif &other) { return rtifhal_set_kelvo_l3_property_l3tun(other.get()); }
    int set() { return set_of(*lif); }
    static Message entered() { return trace(SET_TUNNEL, " Entry: - \n"); }
    static Message object_failed() { return report(SET_TUNNEL, "int create(3) failed\n"); }
    static Message ingress_failed() { return report(SET_TUNNEL, "ing create(3) failed\n"); }

    /** Two flushes in a row, on a tunnel only. */
    static Calls object_read(int tunnel = 0)
    {
        return {called::unit(),  called::intf_init(), called::intf_init(),
                called::flush(), called::flush(),     object_answered(object("0x0", tunnel))};
    }
    Calls object_rewritten(int tunnel = 0) const
    {
        return {fmt::format("{}(0, {}) = 0", WRITE_INTERFACE, object("0x140", tunnel)),
                called::store(*lif)};
    }
    Calls ingress_rewritten(Kind chip = Kind::trident) const
    {
        return {called::ingress_init(),
                called::unit(),
                called::type(*lif, 24),
                called::from_cache(IIF),
                called::trident2(chip == Kind::trident2 ? 1 : 0),
                called::write_ingress(ip4_ingress(chip), IIF),
                called::is_tunnel(*lif, 1)};
    }
    Calls road(Kind chip = Kind::trident) const
    {
        return join({object_read(), object_rewritten(), ingress_rewritten(chip)});
    }

    std::unique_ptr<Lif> lif = tunnel(1);
};

class PropertyOfTunnelOnTrident2 : public PropertyOfTunnel
{
protected:
    PropertyOfTunnelOnTrident2() : PropertyOfTunnel(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyOfTunnel, BothObjectsAreWrittenAgainAfterTwoFlushes)
{
    EXPECT_EQ(set(), 0);
    expect_calls(road());
}

TEST_F(PropertyOfTunnel, EveryMessageOfTheRoad)
{
    set();
    expect_messages(join({Messages{entered()}, object_messages(*lif, lif->hex(), 4094, 0),
                          ingress_messages(*lif, lif->hex()), Messages{ingress_done(*lif)}}));
}

TEST_F(PropertyOfTunnelOnTrident2, BothObjectsAreWrittenAgainAfterTwoFlushes)
{
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident2));
}

TEST_F(PropertyOfTunnelOnTrident2, IngressObjectIsToldOfTheFamiliesAndTheFlagWord)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.ipv6_vrf = 7;
    lif->properties.ingress_flag_word = 1;
    set();
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x8426 vrf=7 urpf=0 class=64 ipmc=0 qos=0}", IIF)});
}

TEST_F(PropertyOfTunnel, Ipv4IsNotForcedOnAsTheAddDoes)
{
    lif->properties.ipv4_en = 0;
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(lif->properties.ipv4_en, 0U);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 0);
}

TEST_F(PropertyOfTunnel, InitiatorStaysBoundToTheObject)
{
    ASSERT_TRUE(sw.chip.tunnels.create(IIF, {.index = 5, .source_ip = 1, .dest_ip = 2}).ok());
    EXPECT_EQ(set(), 0);
    expect_calls(join({object_read(5), object_rewritten(5), ingress_rewritten()}));
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->tunnel, 5);
    EXPECT_NE(sw.chip.tunnels.find(IIF), nullptr);
}

TEST_F(PropertyOfTunnel, ObjectIsReadWithWhatStillWaitsInTheQueue)
{
    bcm_l3_intf_t waiting = {};
    waiting.l3a_flags = 0x140;
    waiting.l3a_intf_id = IIF;
    waiting.l3a_tunnel_idx = 9;
    ASSERT_EQ(rtifhal_bcm_l3_intf_create(0, &waiting), 0);
    set();
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->tunnel, 9);
}

TEST_F(PropertyOfTunnel, ChipFollowsTheWholeContext)
{
    lif->properties = setter_road::EVERYTHING_ON;
    EXPECT_EQ(set(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->vrf, 5);
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 5);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->urpf_mode, 2);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->intf_class, 0xE1);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->ipmc_intf, IIF);
}

TEST_F(PropertyOfTunnel, RoadIsTheSameInRestoreModeOnAFastRestartAndUnderAnSdnAgent)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    lif->properties.mpls_en = 1;
    EXPECT_EQ(set(), 0);
    expect_calls(road());
}

TEST_F(PropertyOfTunnel, NumberRecordAndStateStayAsTheyAre)
{
    lif->lif.lif_state = 9;
    set();
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 0);
    EXPECT_EQ(lif->lif.lif_state, 9U);
    EXPECT_EQ(lif->lif.int_vlan, 4094);
}

TEST_F(PropertyOfTunnel, NullInterfaceIsRefusedAfterTheEntryWithoutACall)
{
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_l3tun(nullptr), -1);
    expect_calls({});
    expect_messages({entered(), report(SET_TUNNEL, " Got l3lif as null")});
}

TEST_F(PropertyOfTunnel, MissingContextRecordOrPropertiesLookLikeSuccess)
{
    const auto no_context = tunnel(2);
    const auto no_record = tunnel(2);
    no_record->with_bare_context();
    const auto no_properties = tunnel(2);
    no_properties->with_record(12).without_properties();
    for (Lif *other : {no_context.get(), no_record.get(), no_properties.get()}) {
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init()});
        expect_messages({entered(), report(SET_TUNNEL, " Got l3lif pd as null")});
    }
}

TEST_F(PropertyOfTunnel, InterfaceWithoutALiveNumberLooksLikeSuccess)
{
    const auto no_number = tunnel(2);
    no_number->with_record(0);
    const auto parked = tunnel(2);
    parked->with_parked(12);
    for (Lif *other : {no_number.get(), parked.get()}) {
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init(), called::intf_init()});
        expect_messages({entered(), report(SET_TUNNEL, " Got l3lif intf as null")});
    }
}

TEST_F(PropertyOfTunnel, RefusedReadIsNotLookedAt)
{
    fail(READ_INTERFACE, -7);
    EXPECT_EQ(set(), 0);
    Calls expected = road();
    std::ranges::replace(expected, object_answered(object("0x0")),
                         std::string("bcm_l3_intf_get(0, 3) = -7"));
    expect_calls(expected);
    expect_reports({});
}

TEST_F(PropertyOfTunnel, AnswerOfAnotherObjectIsNotLookedAt)
{
    const MisreadInterface answer(9, 4);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls_of({WRITE_INTERFACE}), Calls{object_rewritten(4).front()});
    expect_reports({});
}

TEST_F(PropertyOfTunnel, RefusedInterfaceIsReportedAndTheIngressObjectWrittenAllTheSame)
{
    fail(WRITE_INTERFACE, -6);
    EXPECT_EQ(set(), 0);
    expect_calls(
        join({object_read(), Calls{fmt::format("{}(0, {}) = -6", WRITE_INTERFACE, object("0x140"))},
              ingress_rewritten()}));
    expect_reports({object_refused(lif->index(), -6), object_failed()});
}

TEST_F(PropertyOfTunnel, IngressObjectThatTheCacheLacksIsReportedAndDoesNotShow)
{
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    expect_calls(join({object_read(), object_rewritten(),
                       Calls{called::ingress_init(), called::unit(), called::type(*lif, 24),
                             called::from_cache(IIF, false)}}));
    expect_reports({ingress_not_cached(), ingress_failed()});
}

TEST_F(PropertyOfTunnel, BothObjectsMayFail)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    expect_reports({object_refused(lif->index(), -6), object_failed(), ingress_not_cached(),
                    ingress_failed()});
}

TEST_F(PropertyOfTunnel, IngressObjectThatTheChipRefusesIsNoFailureOfItsCreate)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(set(), 0);
    expect_reports({report(CREATE_INGRESS, fmt::format("bcm_l3_ing_create({}) failed: {}\n",
                                                       lif->hex(), _shr_errmsg[6]))});
}

} // namespace rtifhal_test::property_tunnel
