/*
 * property_subint_test.cpp: a subinterface is brought into line with its
 * changed properties: both of its objects are written again, and no port and
 * no VLAN. On a port-channel the objects are those of the record that stands
 * for it as the main interface.
 *
 * property_tunnel_test.cpp has the same for tunnels.
 */
#include "support/misread.h"
#include "support/setter_roads.h"
#include "support/subint_roads.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::property_subint
{

namespace
{

using setter_road::FROM_CACHE;
using setter_road::IIF;
using setter_road::ip4_ingress;
using setter_road::READ_INTERFACE;
using setter_road::WRITE_INGRESS;
using setter_road::WRITE_INTERFACE;
using subint_road::VLAN;

const std::string SET_SUBINT = "rtifhal_set_kelvo_l3_property_subint";

/** The object is read. */
Calls object_read()
{
    return {called::unit(), called::intf_init(), called::intf_init(), called::flush(),
            setter_road::object_answered(subint_road::object("0x0"))};
}

/** The ingress object is written again and tied to nothing. */
Calls ingress_rewritten(const Lif &sub, const Lif &main, Kind chip, const std::string &record)
{
    const bool on_channel = sub.lif.ifindex >> 28 == 2;
    return {called::ingress_init(),
            called::unit(),
            called::type(sub, on_channel ? 22 : 26),
            called::is_port_channel(main, on_channel ? 1 : 0),
            called::from_cache(IIF),
            called::trident2(chip == Kind::trident2 ? 1 : 0),
            called::write_ingress(record, IIF),
            called::is_tunnel(sub, 0),
            called::is_sub(sub, 1)};
}

/** Subinterface 10 of port 5 is up: IPv4 on, VRF 1, MTU 1500. */
class PropertyOfSubint : public subint_road::SubintOnPort
{
protected:
    explicit PropertyOfSubint(Kind chip = Kind::trident) : SubintOnPort(chip) { brought_up(*sub); }

    static int set_of(Lif &other) { return rtifhal_set_kelvo_l3_property_subint(other.get()); }
    int set() { return set_of(*sub); }
    /** The objects' main interface isn't a port-channel. */
    Calls object_rewritten() const
    {
        return join({Calls{called::is_port_channel(*main, 0)},
                     subint_road::object_written_again(sub->text())});
    }
    Calls road(Kind chip) const
    {
        return join({object_read(), object_rewritten(),
                     ingress_rewritten(*sub, *main, chip, ip4_ingress(chip))});
    }
    /** The object's create says it of every subinterface on a port. */
    Message no_port_channel() const
    {
        return report("rtifhal_l3_intf_create",
                      "No context set in l3iif for intf " + main->index() + "\n");
    }
    static Message object_failed() { return report(SET_SUBINT, "int create(3) failed\n"); }
    static Message ingress_failed() { return report(SET_SUBINT, "ing create(3) failed\n"); }
};

class PropertyOfSubintOnTrident2 : public PropertyOfSubint
{
protected:
    PropertyOfSubintOnTrident2() : PropertyOfSubint(Kind::trident2) {}
};

/** Subinterface 10 of port-channel 7 with the members 5, 6 and 9 is up. */
class PropertyOfChannelSubint : public subint_road::SubintOnPortChannel
{
protected:
    explicit PropertyOfChannelSubint(Kind chip = Kind::trident)
        : SubintOnPortChannel({5, 6, 9}, chip)
    {
        brought_up();
    }

    int set() { return rtifhal_set_kelvo_l3_property_subint(sub->get()); }
    Calls road(Kind chip) const
    {
        return join({object_read(), Calls{called::is_port_channel(*main, 1)},
                     subint_road::object_written_again(sub->view_text()),
                     ingress_rewritten(*sub, *main, chip, ip4_ingress(chip))});
    }
};

class PropertyOfChannelSubintOnTrident2 : public PropertyOfChannelSubint
{
protected:
    PropertyOfChannelSubintOnTrident2() : PropertyOfChannelSubint(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyOfSubint, BothObjectsAreWrittenAgainAfterOneFlush)
{
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident));
}

TEST_F(PropertyOfSubint, EveryMessageOfTheRoadAndNoneOfTheEntry)
{
    set();
    expect_messages(join({Messages{no_port_channel()},
                          setter_road::object_messages(*sub, sub->hex(), VLAN, VLAN),
                          setter_road::ingress_messages(*sub, sub->hex()),
                          Messages{setter_road::ingress_done(*sub)}}));
}

TEST_F(PropertyOfSubintOnTrident2, BothObjectsAreWrittenAgainAfterOneFlush)
{
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident2));
}

TEST_F(PropertyOfSubintOnTrident2, IngressObjectIsToldOfTheFamiliesAndTheFlagWord)
{
    sub->properties.ipv4_en = 0;
    sub->properties.ingress_flag_word = 1;
    set();
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x84a6 vrf=0 urpf=0 class=64 ipmc=0 qos=0}", IIF)});
}

TEST_F(PropertyOfSubint, ChipFollowsTheWholeContextAndThePortsControlsStay)
{
    const auto controls = sw.chip.ports.get(subint_road::PORT).controls;
    const auto vlan = *sw.chip.vlans.find(VLAN);
    sub->properties = setter_road::EVERYTHING_ON;
    EXPECT_EQ(set(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->vrf, 5);
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 5);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->urpf_mode, 2);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->intf_class, 0xE1);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->ipmc_intf, IIF);
    EXPECT_EQ(sw.chip.ports.get(subint_road::PORT).controls, controls);
    EXPECT_EQ(*sw.chip.vlans.find(VLAN), vlan);
}

TEST_F(PropertyOfSubint, PropertiesOfTheMainInterfaceDoNotCount)
{
    main->properties.vrf = 9;
    main->properties.mtu = 9000;
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident));
}

TEST_F(PropertyOfSubint, ObjectIsReadWithWhatStillWaitsInTheQueue)
{
    // A field of the object that comes from no property: it has to last.
    bcm_l3_intf_t waiting = {};
    waiting.l3a_flags = 0x140;
    waiting.l3a_intf_id = IIF;
    waiting.l3a_tunnel_idx = 9;
    ASSERT_EQ(rtifhal_bcm_l3_intf_create(0, &waiting), 0);
    set();
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->tunnel, 9);
}

TEST_F(PropertyOfSubint, RoadIsTheSameInRestoreModeOnAFastRestartAndUnderAnSdnAgent)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    sub->properties.mpls_en = 1;
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident));
}

TEST_F(PropertyOfChannelSubint, ObjectsAreThoseOfTheRecordThatStandsForThePortChannel)
{
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident));
}

TEST_F(PropertyOfChannelSubintOnTrident2, ObjectsAreThoseOfTheRecordThatStandsForThePortChannel)
{
    EXPECT_EQ(set(), 0);
    expect_calls(road(Kind::trident2));
}

TEST_F(PropertyOfChannelSubint, EveryMessageOfTheRoad)
{
    set();
    const std::string ingress = "rtifhal_l3_ing_create";
    expect_messages(join({
        Messages{trace("rtifhal_l3_intf_create",
                       "context set in l3iif for intf " + main->index() + "\n")},
        setter_road::object_messages(*sub, main->hex(), VLAN, VLAN),
        Messages{trace(ingress, "main ifindex = " + main->hex() + "\n")},
        setter_road::ingress_messages(*sub, main->hex()),
        Messages{setter_road::ingress_done(*sub)},
    }));
}

TEST_F(PropertyOfChannelSubint, OwnNumberIsReadAndTheObjectsOfThePortChannelAreWritten)
{
    // A port-channel that is a main interface of its own, with another number.
    ASSERT_EQ(rtifhal_l3_intf_create(0, main->get(), nullptr, 1), 0);
    ASSERT_EQ(rtifhal_l3_ing_create(main->get(), 1), 0);
    sw.end_request();
    main->properties.vrf = 8;
    sub->lif.main_l3lif = main->get();
    start();
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls_of({READ_INTERFACE}).size(), 1U);
    EXPECT_TRUE(calls_of({READ_INTERFACE}).at(0).starts_with("bcm_l3_intf_get(0, 3) = 0"));
    EXPECT_EQ(calls_of({WRITE_INTERFACE}),
              Calls{WRITE_INTERFACE + "(0, {flags=0x140 id=4 mac=00:11:22:33:44:55 vid=4094 vrf=8 "
                                      "mtu=1500 ttl=0 tunnel=0}) = 0"});
    EXPECT_EQ(calls_of({WRITE_INGRESS}),
              Calls{called::write_ingress("{flags=0x6 vrf=8 urpf=0 class=64 ipmc=0 qos=0}", 4)});
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
}

TEST_F(PropertyOfChannelSubint, NoMemberOfTheTrunkIsTouched)
{
    sub->properties.ipv6_en = 1;
    sub->properties.mpls_en = 1;
    set();
    EXPECT_EQ(calls_of({"fwmpd_bcm_port_control_set", "bcm_trunk_get"}), Calls{});
}

TEST_F(PropertyOfSubint, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_subint(nullptr), -1);
    expect_calls({});
    expect_messages({report(SET_SUBINT, " Got l3lif as null")});
}

TEST_F(PropertyOfSubint, MissingContextRecordOrPropertiesLookLikeSuccess)
{
    const auto no_context = subinterface(*main, 11);
    const auto no_record = subinterface(*main, 11);
    no_record->with_bare_context();
    const auto no_properties = subinterface(*main, 11);
    no_properties->with_record(12).without_properties();
    for (Lif *other : {no_context.get(), no_record.get(), no_properties.get()}) {
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init()});
        expect_messages({report(SET_SUBINT, " Got l3lif pd as null")});
    }
}

TEST_F(PropertyOfSubint, InterfaceWithoutALiveNumberLooksLikeSuccess)
{
    const auto no_number = subinterface(*main, 11);
    no_number->with_record(0);
    const auto parked = subinterface(*main, 11);
    parked->with_parked(12);
    for (Lif *other : {no_number.get(), parked.get()}) {
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init(), called::intf_init()});
        expect_messages({report(SET_SUBINT, " Got l3lif intf as null")});
    }
}

TEST_F(PropertyOfSubint, RefusedReadIsNotLookedAt)
{
    fail(READ_INTERFACE, -7);
    EXPECT_EQ(set(), 0);
    Calls expected = road(Kind::trident);
    std::ranges::replace(expected, setter_road::object_answered(subint_road::object("0x0")),
                         std::string("bcm_l3_intf_get(0, 3) = -7"));
    expect_calls(expected);
    expect_reports({no_port_channel()});
}

TEST_F(PropertyOfSubint, AnswerOfAnotherObjectIsNotLookedAt)
{
    const MisreadInterface answer(9, 4);
    EXPECT_EQ(set(), 0);
    const std::string written = calls_of({WRITE_INTERFACE}).at(0);
    EXPECT_NE(written.find(" id=3 "), std::string::npos) << written;
    EXPECT_NE(written.find(" tunnel=4}"), std::string::npos) << written;
    expect_reports({no_port_channel()});
}

TEST_F(PropertyOfSubint, RefusedInterfaceIsReportedAndTheIngressObjectWrittenAllTheSame)
{
    fail(WRITE_INTERFACE, -6);
    EXPECT_EQ(set(), 0);
    expect_calls(
        join({object_read(),
              Calls{called::is_port_channel(*main, 0),
                    fmt::format("{}(0, {}) = -6", WRITE_INTERFACE, subint_road::object("0x140"))},
              ingress_rewritten(*sub, *main, Kind::trident, ip4_ingress(Kind::trident))}));
    expect_reports(
        {no_port_channel(), setter_road::object_refused(sub->index(), -6), object_failed()});
}

TEST_F(PropertyOfSubint, IngressObjectThatTheCacheLacksIsReportedAndDoesNotShow)
{
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    expect_calls(join({object_read(), object_rewritten(),
                       Calls{called::ingress_init(), called::unit(), called::type(*sub, 26),
                             called::is_port_channel(*main, 0), called::from_cache(IIF, false)}}));
    expect_reports({no_port_channel(), setter_road::ingress_not_cached(), ingress_failed()});
}

TEST_F(PropertyOfSubint, BothObjectsMayFail)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    expect_reports({no_port_channel(), setter_road::object_refused(sub->index(), -6),
                    object_failed(), setter_road::ingress_not_cached(), ingress_failed()});
}

TEST_F(PropertyOfSubint, IngressObjectThatTheChipRefusesIsNoFailureOfItsCreate)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(set(), 0);
    expect_reports({no_port_channel(), report("rtifhal_l3_ing_create",
                                              fmt::format("bcm_l3_ing_create({}) failed: {}\n",
                                                          sub->hex(), _shr_errmsg[6]))});
}

} // namespace rtifhal_test::property_subint
