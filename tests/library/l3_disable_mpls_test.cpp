/*
 * l3_disable_mpls_test.cpp: an interface that stops routing takes MPLS off its
 * VLAN too, before its ingress object is closed: that step writes the object
 * open once more.
 *
 * l3_disable_object_test.cpp has the road without MPLS.
 */
#include "support/property_port_roads.h"
#include "support/setter_roads.h"
#include "support/subint_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::l3_disable_mpls
{

namespace
{

using namespace setter_road;
using svi_road::ROUTED_IP4;

constexpr std::uint32_t MPLS_OFF = 0x200;

const std::string DISABLE = "rtifhal_trident_l3_disable";

/** The object is found and read, before the step. */
Calls begun(const Lif &lif, Kind chip)
{
    return {"l3lif_find_lif_from_ifindex(" + lif.index() + ") = record", called::ingress_init(),
            called::unit(), "bcm_l3_ingress_get(0, 3) = 0 [ingress=" + ip4_ingress(chip) + "]"};
}

/** The object is closed. */
std::string closed(int code = 0)
{
    return called::write_ingress("{flags=0x5e2 vrf=1 urpf=0 class=64 ipmc=0 qos=0}", IIF, code);
}

/** The messages before the step. */
Messages begun_messages()
{
    return {trace(DISABLE, "l3_if_index = 0x3 ipmc_intf_id = 0x0 iif = 0x0\n"),
            trace(DISABLE, "ipmc_intf_id = 0 class 40 flags = 2\n")};
}

Message mpls_failed(const Lif &lif, int code)
{
    return report(DISABLE, fmt::format("vlan control set failure for {} err: {}\n", lif.hex(),
                                       _shr_errmsg[static_cast<std::size_t>(-code)]));
}

/** The SVI of VLAN 100 is up with MPLS, which its VLAN has too. */
class L3DisableMpls : public SviSetterTest
{
protected:
    explicit L3DisableMpls(Kind chip = Kind::trident) : SviSetterTest(chip)
    {
        lif->properties.mpls_en = 1;
        EXPECT_EQ(set(18, 1), 0);
        sw.end_request();
        sw.directory.add(lif->get());
        start();
    }

    int disable() const { return rtifhal_trident_l3_disable(lif->lif.ifindex); }
    Calls road(Kind chip) const
    {
        const VlanRecord off = {.flags = ROUTED_IP4};
        return join({begun(*lif, chip), whole_svi_road(*lif, chip, off, off), Calls{closed()}});
    }
    /** Without the step. */
    Calls short_road() const { return join({begun(*lif, Kind::trident), Calls{closed()}}); }
    std::uint32_t ingress_flags()
    {
        sw.end_request();
        return sw.chip.l3_ingresses.find(IIF)->flags;
    }
};

class L3DisableMplsOnTrident2 : public L3DisableMpls
{
protected:
    L3DisableMplsOnTrident2() : L3DisableMpls(Kind::trident2) {}
};

/** Port 5, whose internal VLAN is 4094. */
class L3DisableMplsOfPort : public property_road::PortTest
{
protected:
    L3DisableMplsOfPort()
    {
        lif->properties.mpls_en = 1;
        sw.directory.add(lif->get());
    }

    int disable() const { return rtifhal_trident_l3_disable(lif->lif.ifindex); }
};

/** Subinterface 10 of port 5, whose internal VLAN is the one that it is in, 100. */
class L3DisableMplsOfSubint : public subint_road::SubintOnPort
{
protected:
    L3DisableMplsOfSubint()
    {
        brought_up(*sub);
        sub->properties.mpls_en = 1;
        sw.directory.add(sub->get());
        start();
    }
};

} // namespace

TEST_F(L3DisableMpls, VlanLosesMplsBeforeTheObjectIsClosed)
{
    EXPECT_EQ(disable(), 0);
    expect_calls(road(Kind::trident));
    EXPECT_EQ(cached().vc_flags, ROUTED_IP4);
    EXPECT_EQ(ingress_flags(), 0x5E2U);
    EXPECT_EQ(in_the_chip().flags, ROUTED_IP4 | SNOOPING_OFF);
}

TEST_F(L3DisableMpls, EveryMessageOfTheRoad)
{
    disable();
    expect_messages(
        join({begun_messages(), svi_messages(*lif, 18, ROUTED_IP4 & ~MPLS_OFF, ROUTED_IP4)}));
}

TEST_F(L3DisableMplsOnTrident2, VlanLosesMplsBeforeTheObjectIsClosed)
{
    EXPECT_EQ(disable(), 0);
    expect_calls(road(Kind::trident2));
    EXPECT_EQ(ingress_flags(), 0x5E2U);
    EXPECT_EQ(in_the_chip().flags, ROUTED_IP4 | SNOOPING_OFF);
}

TEST_F(L3DisableMpls, OnlyTheWordOneIsMpls)
{
    for (const std::uint32_t word : {0U, 2U, 0x101U, 0xFFFFFFFFU}) {
        lif->properties.mpls_en = word;
        start();
        EXPECT_EQ(disable(), 0);
        EXPECT_EQ(calls_of({WRITE_VLAN, WRITE_VLAN_DIRECTLY, WRITE_INTERFACE}), Calls{}) << word;
        EXPECT_EQ(calls_of({WRITE_INGRESS}), Calls{closed()}) << word;
        EXPECT_EQ(cached().vc_flags & MPLS_OFF, 0U) << word;
    }
}

TEST_F(L3DisableMpls, StepIsTheSdnAgentsWhereThereIsOne)
{
    for (const std::uint32_t agent : {1U, 2U}) {
        fwmpd_asic_sdn_agent_enabled = agent;
        start();
        EXPECT_EQ(disable(), 0);
        EXPECT_EQ(calls_of({WRITE_VLAN, WRITE_VLAN_DIRECTLY, WRITE_INTERFACE}), Calls{});
        EXPECT_EQ(calls_of({WRITE_INGRESS}), Calls{closed()});
    }
    EXPECT_EQ(cached().vc_flags & MPLS_OFF, 0U);
}

TEST_F(L3DisableMpls, WithoutMplsTheVlanIsNotTouched)
{
    lif->properties.mpls_en = 0;
    EXPECT_EQ(disable(), 0);
    expect_calls(short_road());
    expect_messages(begun_messages());
}

TEST_F(L3DisableMpls, ContextKeepsMplsForTheWayBack)
{
    disable();
    EXPECT_EQ(lif->properties.mpls_en, 1U);
}

TEST_F(L3DisableMpls, InterfaceWithoutAVlanIsReportedAndClosedAllTheSame)
{
    lif->lif.int_vlan = 0;
    EXPECT_EQ(disable(), 0);
    expect_calls(
        join({begun(*lif, Kind::trident), Calls{called::unit(), called::intf_init(), closed()}}));
    expect_messages(
        join({begun_messages(),
              Messages{report(SET_SVI, " Got int-vlan as invalid for intf " + lif->index()),
                       mpls_failed(*lif, -1)}}));
    EXPECT_EQ(ingress_flags(), 0x5E2U);
}

TEST_F(L3DisableMplsOfPort, PortWithoutAVlanIsReportedAndClosedAllTheSame)
{
    lif->lif.int_vlan = 0;
    EXPECT_EQ(disable(), 0);
    expect_reports({report(SET_SVI, " Got int-vlan as invalid for intf " + lif->index()),
                    mpls_failed(*lif, -1)});
    EXPECT_EQ(calls().back(), closed());
}

TEST_F(L3DisableMplsOfPort, StepIsMadeForAPortTooAndClosesItsInternalVlan)
{
    EXPECT_EQ(disable(), 0);
    const std::string record = "{vrf=0 iif=0 flags=0x200 class=0 urpf=0}";
    expect_calls(join({
        begun(*lif, Kind::trident),
        Calls{called::unit(), called::intf_init(), called::intf_init(), called::intf_init(),
              called::flush(), property_road::object_read(), svi_road::cache_asked(4094),
              svi_road::written(4094, record)},
        svi_road::written_directly(4094, "{vrf=0 iif=0 flags=0xa00 class=0 urpf=0}"),
        property_road::object_rewritten(*lif),
        property_road::port_ingress_rewritten(*lif, ip4_ingress(Kind::trident), Kind::trident),
        Calls{closed()},
    }));
    expect_reports({});
}

TEST_F(L3DisableMplsOfSubint, StepIsMadeForASubinterfaceTooOnItsVlan)
{
    EXPECT_EQ(rtifhal_trident_l3_disable(sub->lif.ifindex), 0);
    expect_calls(join({
        begun(*sub, Kind::trident),
        Calls{called::unit(), called::intf_init(), called::intf_init(), called::intf_init(),
              called::flush(), object_answered(subint_road::object("0x0")),
              svi_road::cache_asked(100),
              svi_road::written(100, "{vrf=0 iif=0 flags=0x278 class=0 urpf=0}")},
        svi_road::written_directly(100, "{vrf=0 iif=0 flags=0xa78 class=0 urpf=0}"),
        Calls{called::is_port_channel(*main, 0)},
        subint_road::object_written_again(sub->text()),
        Calls{called::ingress_init(), called::unit(), called::type(*sub, 26),
              called::is_port_channel(*main, 0), called::from_cache(IIF), called::trident2(0),
              called::write_ingress(ip4_ingress(Kind::trident), IIF), called::is_tunnel(*sub, 0),
              called::is_sub(*sub, 1), closed()},
    }));
    expect_reports(
        {report(CREATE_INTERFACE, "No context set in l3iif for intf " + main->index() + "\n")});
}

TEST_F(L3DisableMpls, VlanThatTheCacheLacksIsReportedAndTheObjectClosedAllTheSame)
{
    sw.wrappers.forget_vlan_control(svi_road::VLAN);
    EXPECT_EQ(disable(), 0);
    expect_calls(join({begun(*lif, Kind::trident), svi_object_read(),
                       Calls{svi_road::cache_asked(svi_road::VLAN, false), closed()}}));
    expect_reports({report(SET_SVI, "fwmpd_bcm_vlan_control_vlan_get(100) returned NULLs\n"),
                    mpls_failed(*lif, -1)});
}

TEST_F(L3DisableMpls, CodeOfTheStepIsSaidAndIsNotTheResult)
{
    fail(WRITE_VLAN, -5, 2);
    EXPECT_EQ(disable(), 0);
    EXPECT_EQ(messages().back(), mpls_failed(*lif, -5));
    EXPECT_EQ(calls().back(), closed());
    EXPECT_EQ(ingress_flags(), 0x5E2U);
}

TEST_F(L3DisableMpls, StepThatOnlyReportsIsNoFailure)
{
    fail(WRITE_VLAN_DIRECTLY, -4);
    EXPECT_EQ(disable(), 0);
    EXPECT_EQ(std::ranges::count(reports(), DISABLE, &Message::function), 0);
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(L3DisableMpls, StepAndObjectMayBothFailAndTheObjectsCodeIsTheResult)
{
    // The step's own write of the object comes first and doesn't count.
    fail(WRITE_VLAN, -5, 2);
    fail(WRITE_INGRESS, -6, 2);
    EXPECT_EQ(disable(), -6);
    EXPECT_EQ(calls().back(), closed(-6));
    const Messages said = reports();
    ASSERT_GE(said.size(), 2U);
    EXPECT_EQ(said[said.size() - 2], mpls_failed(*lif, -5));
    EXPECT_EQ(said.back(), report(DISABLE, fmt::format("bcm_l3_ing_create({}) failed: {}\n",
                                                       lif->hex(), _shr_errmsg[6])));
}

TEST_F(L3DisableMpls, ObjectIsTheOneOfBeforeTheStep)
{
    // The step writes the object from the context; what is closed was read before that.
    lif->properties.vrf = 9;
    EXPECT_EQ(disable(), 0);
    EXPECT_EQ(calls_of({WRITE_INGRESS}),
              (Calls{called::write_ingress("{flags=0x6 vrf=9 urpf=0 class=64 ipmc=0 qos=0}", IIF),
                     closed()}));
    EXPECT_EQ(in_the_chip().vrf, 9U);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 1);
}

} // namespace rtifhal_test::l3_disable_mpls
