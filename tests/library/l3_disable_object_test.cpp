/*
 * l3_disable_object_test.cpp: an interface stops routing while it stays in
 * place: its ingress object is read from the chip and written again with a
 * fixed set of flags.
 *
 * l3_disable_failure_test.cpp has what goes wrong, l3_disable_mpls_test.cpp the
 * step that takes MPLS off the interface's VLAN.
 */
#include "support/property_port_roads.h"
#include "support/setter_roads.h"
#include "support/subint_roads.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>

#include <fmt/format.h>

namespace rtifhal_test::l3_disable_object
{

namespace
{

using setter_road::IIF;
using setter_road::ip4_ingress;

constexpr std::uint32_t ROUTING_OFF = 0x5E2;

const std::string DISABLE = "rtifhal_trident_l3_disable";

std::string found(const Lif &lif)
{
    return "l3lif_find_lif_from_ifindex(" + lif.index() + ") = record";
}

/** The calls up to the write; the object as the chip has it. */
Calls object_read(const Lif &lif, const std::string &ingress)
{
    return {found(lif), called::ingress_init(), called::unit(),
            fmt::format("bcm_l3_ingress_get(0, 3) = 0 [ingress={}]", ingress)};
}

/** The whole road of an interface without MPLS; rest: "vrf=1 …}". */
Calls road(const Lif &lif, const std::string &ingress)
{
    const std::string rest = ingress.substr(ingress.find(' '));
    return join(
        {object_read(lif, ingress), Calls{called::write_ingress("{flags=0x5e2" + rest, IIF)}});
}

/** Port 5 is up under the number 3, and the layer above knows it. */
class L3Disable : public property_road::PortTest
{
protected:
    explicit L3Disable(Kind chip = Kind::trident) : PortTest(chip) { sw.directory.add(lif->get()); }

    int disable() const { return rtifhal_trident_l3_disable(lif->lif.ifindex); }
    const simswitch::chip::L3Ingress &in_the_chip()
    {
        sw.end_request();
        return *sw.chip.l3_ingresses.find(IIF);
    }
};

class L3DisableOnTrident2 : public L3Disable
{
protected:
    L3DisableOnTrident2() : L3Disable(Kind::trident2) {}
};

class L3DisableOfSvi : public setter_road::SviSetterTest
{
protected:
    L3DisableOfSvi() { sw.directory.add(lif->get()); }
};

class L3DisableOfChannelSubint : public subint_road::SubintOnPortChannel
{
};

} // namespace

TEST_F(L3Disable, ObjectIsReadFromTheChipAndWrittenWithRoutingOff)
{
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, ip4_ingress(Kind::trident)));
    EXPECT_EQ(in_the_chip().flags, ROUTING_OFF);
}

TEST_F(L3Disable, EveryMessageOfTheRoad)
{
    // The number and the multicast interface are those before the read.
    disable();
    expect_messages({trace(DISABLE, "l3_if_index = 0x3 ipmc_intf_id = 0x0 iif = 0x0\n"),
                     trace(DISABLE, "ipmc_intf_id = 0 class 40 flags = 2\n")});
}

TEST_F(L3DisableOnTrident2, ObjectIsReadFromTheChipAndWrittenWithTheSameFlags)
{
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, ip4_ingress(Kind::trident2)));
    EXPECT_EQ(in_the_chip().flags, ROUTING_OFF);
}

TEST_F(L3Disable, FlagsAreFixedWhateverThePropertiesSay)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.ingress_flag_word = 1;
    EXPECT_EQ(disable(), 0);
    EXPECT_EQ(in_the_chip().flags, ROUTING_OFF);
}

TEST_F(L3DisableOnTrident2, FlagsAreFixedWhateverThePropertiesSay)
{
    for (const std::uint32_t word : {0U, 1U}) {
        lif->properties.ipv4_en = word;
        lif->properties.ipv6_en = word;
        lif->properties.ingress_flag_word = word;
        set();
        sw.end_request();
        EXPECT_EQ(disable(), 0);
        EXPECT_EQ(in_the_chip().flags, ROUTING_OFF) << word;
    }
}

TEST_F(L3Disable, RestOfTheObjectIsWhatTheChipHas)
{
    const simswitch::chip::L3Ingress object = {.flags = 0x6,
                                               .vrf = 9,
                                               .urpf_mode = 2,
                                               .intf_class = 0xE3,
                                               .ipmc_intf = 3,
                                               .qos_map = 7,
                                               .reserved = {0xAAAA, 0xBBBB}};
    ASSERT_TRUE(sw.chip.l3_ingresses.set(IIF, object).ok());
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, "{flags=0x6 vrf=9 urpf=2 class=227 ipmc=3 qos=7}"));
    EXPECT_EQ(messages().back(), trace(DISABLE, "ipmc_intf_id = 3 class e3 flags = 2\n"));
    auto expected = object;
    expected.flags = ROUTING_OFF;
    EXPECT_EQ(in_the_chip(), expected);
}

TEST_F(L3Disable, WhatStillWaitsInTheQueueIsNotSeen)
{
    // The read goes to the chip and no flush before it: the change is lost.
    lif->properties.vrf = 9;
    lif->properties.class_high_bit = 1;
    set();
    start();
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, ip4_ingress(Kind::trident)));
    EXPECT_EQ(in_the_chip().vrf, 1);
    EXPECT_EQ(in_the_chip().intf_class, 64);
}

TEST_F(L3Disable, WhatTheCacheHasIsNotLookedAt)
{
    rtifhal_bcm_l3_ingress_get_from_cache(IIF)->vrf = 9;
    start();
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, ip4_ingress(Kind::trident)));
}

TEST_F(L3Disable, PortsControlsStay)
{
    const auto port = sw.chip.ports.get(property_road::PORT);
    disable();
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.get(property_road::PORT), port);
    EXPECT_EQ(sw.chip.ports.control(property_road::PORT, 67), IIF);
}

TEST_F(L3DisableOfSvi, VlansControlsStay)
{
    const auto controls = in_the_chip();
    start();
    EXPECT_EQ(rtifhal_trident_l3_disable(lif->lif.ifindex), 0);
    expect_calls(road(*lif, ip4_ingress(Kind::trident)));
    EXPECT_EQ(in_the_chip(), controls);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->flags, ROUTING_OFF);
}

TEST_F(L3Disable, SetterBringsRoutingBack)
{
    disable();
    sw.end_request();
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(in_the_chip().flags, 0x6U);
}

TEST_F(L3DisableOnTrident2, SetterBringsRoutingBack)
{
    disable();
    sw.end_request();
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(in_the_chip().flags, 0x486U);
}

TEST_F(L3DisableOfSvi, SetterBringsRoutingBack)
{
    rtifhal_trident_l3_disable(lif->lif.ifindex);
    sw.end_request();
    EXPECT_EQ(set(1, 1), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->flags, 0x6U);
}

TEST_F(L3Disable, SecondOneReadsTheFlagsOfTheFirst)
{
    disable();
    sw.end_request();
    start();
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, "{flags=0x5e2 vrf=1 urpf=0 class=64 ipmc=0 qos=0}"));
}

TEST_F(L3Disable, RoadIsTheSameInRestoreModeAndOnAFastRestart)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    EXPECT_EQ(disable(), 0);
    expect_calls(road(*lif, ip4_ingress(Kind::trident)));
}

TEST_F(L3DisableOfChannelSubint, OwnRecordTellsTheNumberAndNotThePortChannels)
{
    sub->with_record(IIF);
    sw.directory.add(sub->get());
    ASSERT_TRUE(sw.chip.l3_ingresses.create(IIF, {.flags = 0x6, .vrf = 1}).ok());
    start();
    EXPECT_EQ(rtifhal_trident_l3_disable(sub->lif.ifindex), 0);
    expect_calls(road(*sub, "{flags=0x6 vrf=1 urpf=0 class=0 ipmc=0 qos=0}"));
}

} // namespace rtifhal_test::l3_disable_object
