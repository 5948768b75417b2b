/*
 * svi_add_test.cpp: the interface step of an SVI's add: which property drives
 * which flag of the VLAN, which VRF and MTU stand where, and what each step
 * that fails leaves behind.
 *
 * svi_road_test.cpp has the road without failures.
 */
#include "support/handed_over.h"
#include "support/l3port_roads.h"
#include "support/svi_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <utility>

namespace rtifhal_test::svi_add
{

namespace
{

using namespace svi_road;

constexpr std::uint32_t IP4_OFF = 0x8;
constexpr std::uint32_t IP6_OFF = 0x10;
constexpr std::uint32_t IP4_MC_OFF = 0x20;
constexpr std::uint32_t ROUTING_OFF = IP4_OFF | IP6_OFF | IP4_MC_OFF;
constexpr std::uint32_t SVI_SEEN = 0x400000;

const std::string INGRESS = "rtifhal_l3_ing_create";

class SviAdd : public SviTest
{
protected:
    /** What the interface step wrote to the L3 interface table. */
    Calls objects() const { return calls_of({"rtifhal_bcm_l3_intf_create"}); }
    static Calls one_object(const std::string &rest)
    {
        return {"rtifhal_bcm_l3_intf_create(0, " + object("0x40", rest) + ") = 0"};
    }
    /** The VRF and the MTU that the step handed to the L3 interface's create. */
    std::pair<int, int> handed_over()
    {
        const HandedOver watch;
        EXPECT_EQ(step_add(), 0);
        if (!HandedOver::record()) {
            ADD_FAILURE() << "no record was handed over; is rtifhal_l3_intf_create wrapped?";
            return {-1, -1};
        }
        return {HandedOver::record()->l3a_vrf, HandedOver::record()->l3a_mtu};
    }
};

/** Which families are on. */
struct Families {
    std::uint32_t ipv4;
    std::uint32_t multicast;
    std::uint32_t ipv6;
    std::uint32_t off; ///< bits of those that are not
};

class SviAddFamilies : public SviAdd, public ::testing::WithParamInterface<Families>
{
};

} // namespace

TEST_P(SviAddFamilies, EachPropertyDrivesItsOwnBitOnly)
{
    const Families &families = GetParam();
    lif->properties.ipv4_en = families.ipv4;
    lif->properties.ipv4_mc_en = families.multicast;
    lif->properties.ipv6_en = families.ipv6;
    flags_were(0);
    EXPECT_EQ(step_add(), 0);
    EXPECT_EQ(cached().vc_flags, families.off | SVI_SEEN);
    flags_were(0xFFBFF7FF); // all but the two bits that this doesn't test
    EXPECT_EQ(step_add(0), 0);
    EXPECT_EQ(cached().vc_flags, (0xFFFFF7FFU & ~ROUTING_OFF) | families.off);
}

INSTANTIATE_TEST_SUITE_P(
    All, SviAddFamilies,
    ::testing::Values(Families{0, 0, 0, ROUTING_OFF}, Families{1, 0, 0, IP4_MC_OFF | IP6_OFF},
                      Families{0, 1, 0, IP4_OFF | IP6_OFF}, Families{0, 0, 1, IP4_OFF | IP4_MC_OFF},
                      Families{1, 1, 0, IP6_OFF}, Families{1, 0, 1, IP4_MC_OFF},
                      Families{0, 1, 1, IP4_OFF}, Families{1, 1, 1, 0},
                      Families{2, 0x80000000, 7, 0}));

TEST_F(SviAdd, Ipv6AloneClosesIpv4AndTakesTheIpv6VrfForItsOwnRecord)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.vrf = 0;
    lif->properties.ipv6_vrf = 9;
    EXPECT_EQ(handed_over(), std::pair(9, 1500));
    EXPECT_EQ(cached().vc_flags & ROUTING_OFF, IP4_OFF | IP4_MC_OFF);
    // The object's create has a rule of its own, which doesn't look at ipv6_vrf.
    EXPECT_EQ(objects(), one_object("vrf=1 mtu=1500"));
    EXPECT_EQ(cached().vc_vrf, 9U);
}

TEST_F(SviAdd, VrfOfTheRecordAsksForNoFamily)
{
    lif->properties.ipv4_en = 0;
    lif->properties.vrf = 5;
    lif->properties.ipv6_vrf = 9;
    EXPECT_EQ(handed_over(), std::pair(5, 1500));
    EXPECT_EQ(objects(), one_object("vrf=5 mtu=1500"));
    // The ingress object's rule does ask, and the VLAN takes its VRF from there.
    const Calls ingress = calls_of({"rtifhal_bcm_l3_ingress_create"});
    ASSERT_EQ(ingress.size(), 1U);
    EXPECT_NE(ingress.front().find(" vrf=0 "), std::string::npos) << ingress.front();
    EXPECT_EQ(cached().vc_vrf, 0U);
}

TEST_F(SviAdd, VrfOfTheRecordIsThatOfIpv4AlsoForIpv6Alone)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.vrf = 5;
    lif->properties.ipv6_vrf = 9;
    EXPECT_EQ(handed_over(), std::pair(5, 1500));
    EXPECT_EQ(cached().vc_vrf, 9U);
}

TEST_F(SviAdd, NoVrfAtAllIsVrfOne)
{
    lif->properties.vrf = 0;
    lif->properties.ipv6_vrf = 0;
    EXPECT_EQ(handed_over(), std::pair(1, 1500));
    EXPECT_EQ(objects(), one_object("vrf=1 mtu=1500"));
}

TEST_F(SviAdd, MtuIsHandedOn)
{
    lif->properties.mtu = 9216;
    EXPECT_EQ(handed_over(), std::pair(1, 9216));
    EXPECT_EQ(objects(), one_object("vrf=1 mtu=9216"));
}

TEST_F(SviAdd, NoMtuIs1500)
{
    lif->properties.mtu = 0;
    EXPECT_EQ(handed_over(), std::pair(1, 1500));
    EXPECT_EQ(objects(), one_object("vrf=1 mtu=1500"));
}

TEST_F(SviAdd, RecordNamesTheVlan)
{
    const HandedOver watch;
    step_add();
    ASSERT_TRUE(HandedOver::record().has_value());
    EXPECT_EQ(HandedOver::record()->l3a_vid, VLAN);
    EXPECT_EQ(HandedOver::record()->l3a_intf_id, 0); // left to the object's create
}

TEST_F(SviAdd, RecordOfALiveSviNamesItsNumber)
{
    is_up();
    const HandedOver watch;
    EXPECT_EQ(step_add(0), 0);
    ASSERT_TRUE(HandedOver::record().has_value());
    EXPECT_EQ(HandedOver::record()->l3a_intf_id, IIF);
}

TEST_F(SviAdd, WithoutPropertiesTheFamilyBitsStay)
{
    lif->without_properties();
    flags_were(0x30);
    const HandedOver watch;
    EXPECT_EQ(step_add(), -1); // no ingress object without properties
    ASSERT_TRUE(HandedOver::record().has_value());
    EXPECT_EQ(HandedOver::record()->l3a_vrf, 1);
    EXPECT_EQ(HandedOver::record()->l3a_mtu, 1500);
    EXPECT_EQ(objects(), one_object("vrf=1 mtu=1500"));
    EXPECT_EQ(cached().vc_flags, 0x400030U);
    EXPECT_EQ(cached().vc_class, 2U);
    expect_reports({
        report(INGRESS, "Failed to get l3lif pd context for intf 0x30000064"),
        report(SVI_ADD, "ing create(100) failed\n"),
    });
}

TEST_F(SviAdd, WithoutPropertiesAFamilyIsSwitchedNeitherOnNorOff)
{
    lif->without_properties();
    for (const std::uint32_t before : {0U, IP4_OFF, IP6_OFF, IP4_MC_OFF, ROUTING_OFF}) {
        flags_were(before);
        step_add();
        EXPECT_EQ(cached().vc_flags, before | SVI_SEEN) << before;
    }
}

TEST_F(SviAdd, MplsAndForeignBitsAreLeftAlone)
{
    flags_were(0x8238 & ~0x200U);
    EXPECT_EQ(step_add(), 0);
    EXPECT_EQ(cached().vc_flags, 0x408030U);
    flags_were(0x8238);
    EXPECT_EQ(step_add(0), 0);
    EXPECT_EQ(cached().vc_flags, 0x408230U);
}

TEST_F(SviAdd, ForeignClassBitsStay)
{
    cached().vc_class = 0x11;
    EXPECT_EQ(step_add(), 0);
    EXPECT_EQ(cached().vc_class, 0x17U);
}

TEST_F(SviAdd, VlanIsTheEncapsulationVlanAndNoOther)
{
    lif->lif.vlan = 200;
    lif->lif.int_vlan = 300;
    EXPECT_EQ(step_add(), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_get_from_cache", "fwmpd_trident_get_bvbt",
                        "fwmpd_trident_vlan_bvcvt_store"}),
              (Calls{cache_asked(VLAN), "fwmpd_trident_get_bvbt(100) = record", cache_asked(VLAN),
                     vlan_stored(VLAN), vlan_stored(VLAN)}));
    EXPECT_EQ(objects(), one_object("vrf=1 mtu=1500"));
}

TEST_F(SviAdd, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_svi_add(nullptr, 1), -1);
    expect_calls({});
    expect_messages({report(SVI_ADD, "Got l3lif as null\n")});
}

TEST_F(SviAdd, ProgrammingAgainNeedsAContext)
{
    EXPECT_EQ(step_add(0), -1);
    expect_calls({called::unit(), called::intf_init()});
    expect_messages({trace(SVI_ADD, "Begin " + SVI_ADD + " for vlan 100\n"),
                     report(SVI_ADD, "l3lif_pd_ctxt(100) NULL\n")});
}

TEST_F(SviAdd, ProgrammingAgainWithoutARecordIsRefusedInSilence)
{
    lif->with_bare_context();
    EXPECT_EQ(step_add(0), -1);
    expect_calls({called::unit(), called::intf_init()});
    expect_reports({});
}

TEST_F(SviAdd, VlanThatTheCacheDoesntHaveIsRefused)
{
    sw.wrappers.forget_vlan_control(VLAN);
    EXPECT_EQ(step_add(), -1);
    expect_calls({called::unit(), called::intf_init(), cache_asked(VLAN, false)});
    expect_reports(
        {report(SVI_ADD, "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) returned NULL\n")});
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(SviAdd, RefusedVlanRecordIsReportedAndNotSeen)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(step_add(), 0);
    expect_calls(join({flags_opened(-4), use_taken(), object_created(*lif), ingress_tied(*lif),
                       not_mirrored(), ordinary_end()}));
    expect_reports({report(
        SVI_ADD, fmt::format("bcm_vlan_control_vlan_set(100) failed: {}\n", _shr_errmsg[4]))});
    EXPECT_EQ(messages()[3], trace(SVI_ADD, "Set To Sup Flags(100) : 0x400230\n"));
}

TEST_F(SviAdd, PositiveAnswerToTheVlanRecordIsNoFailure)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", 1);
    EXPECT_EQ(step_add(), 0);
    expect_reports({});
}

TEST_F(SviAdd, RefusedFloodBlockIsReportedAndNotSeen)
{
    fail("fwmpd_bcm_vlan_block_set", -6);
    EXPECT_EQ(step_add(), 0);
    expect_calls(join({flags_opened(), use_taken(-6), object_created(*lif), ingress_tied(*lif),
                       not_mirrored(), ordinary_end()}));
    expect_reports(use_refused(SVI_ADD));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(SviAdd, RefusedInterfaceOfALiveSviIsReportedAndNotSeen)
{
    is_up();
    fail("rtifhal_bcm_l3_intf_create", -4);
    EXPECT_EQ(step_add(0), 0);
    EXPECT_EQ(calls_after(calls(), "rtifhal_bcm_l3_intf_create(0, " + object("0x140") + ") = -4"),
              join({ingress_tied(*lif, Kind::trident, true), not_mirrored(), ordinary_end()}));
    expect_reports({
        report("rtifhal_l3_intf_create",
               fmt::format("rtifhal_bcm_l3_intf_create(0x30000064) failed: {}\n", _shr_errmsg[4])),
        report(SVI_ADD, "itf create(100) failed\n"),
    });
}

TEST_F(SviAdd, RefusedInterfaceOfANewSviLeavesTheIngressObjectWithoutANumber)
{
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(step_add(), -1);
    EXPECT_EQ(calls_after(calls(), called::type(*lif, 9)), join({not_mirrored(), ordinary_end()}));
    expect_reports({
        report("rtifhal_l3_intf_create",
               fmt::format("rtifhal_bcm_l3_intf_create(0x30000064) failed: {}\n", _shr_errmsg[6])),
        report(SVI_ADD, "itf create(100) failed\n"),
        report(SVI_ADD, "ing create(100) failed\n"),
    });
    EXPECT_FALSE(in_use(IIF));
    EXPECT_EQ(cached().vc_class, 2U); // what was done before stays
}

TEST_F(SviAdd, CodeOfARefusedTieIsReturnedAtTheEnd)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -6, 2); // the first one is the flags
    EXPECT_EQ(step_add(), -6);
    EXPECT_EQ(calls_after(calls(), written(VLAN, controls(1, IIF, ROUTED_IP4, 6), -6)),
              join({not_mirrored(), ordinary_end()}));
    expect_reports({
        report(INGRESS,
               fmt::format("fwmpd_bcm_vlan_control_vlan_set(100) failed: {}\n", _shr_errmsg[6])),
        report(SVI_ADD, "ing create(100) failed\n"),
    });
}

TEST_F(SviAdd, VlanThatVanishesBeforeTheTieIsReturnedAsAFailure)
{
    fail("fwmpd_bcm_vlan_control_vlan_get_from_cache", 0, 2);
    EXPECT_EQ(step_add(), -1);
    EXPECT_EQ(reports().back(), report(SVI_ADD, "ing create(100) failed\n"));
    EXPECT_EQ(sw.journal.count("fwmpd_trident_vlan_bvcvt_store"), 1U);
}

TEST_F(SviAdd, RefusedIngressObjectIsNotSeenEither)
{
    fail("rtifhal_bcm_l3_ingress_create", -6);
    EXPECT_EQ(step_add(), 0);
    expect_reports(
        {report(INGRESS, fmt::format("bcm_l3_ing_create(30000064) failed: {}\n", _shr_errmsg[6]))});
    EXPECT_EQ(cached().vc_ingress_if, 3U);
}

TEST_F(SviAdd, FastRestartPublishesEvenWhenTheIngressObjectFailed)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1;
    fail("fwmpd_bcm_vlan_control_vlan_set", -6, 2);
    EXPECT_EQ(step_add(), -6);
    EXPECT_EQ(calls_after(calls(), vlan_stored(VLAN)), l3port_road::fast_restart(*lif));
}

TEST_F(SviAdd, EveryStepFailingStillRunsToTheEnd)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    fail("fwmpd_bcm_vlan_block_set", -4);
    fail("rtifhal_bcm_l3_intf_create", -4);
    EXPECT_EQ(step_add(), -1);
    EXPECT_EQ(calls_after(calls(), use_taken(-4).back()),
              join({Calls{called::inband_init(),
                          fmt::format("malloc({}) = record", sizeof(l3lif_pd_ctxt)),
                          fmt::format("malloc({}) = record", sizeof(l3_pd)),
                          "rtifhal_bcm_l3_intf_create(0, " + object("0x40") + ") = -4",
                          called::inband_init(), called::ingress_init(), called::unit(),
                          called::type(*lif, 9)},
                    not_mirrored(), ordinary_end()}));
    expect_reports(join({
        Messages{report(
            SVI_ADD, fmt::format("bcm_vlan_control_vlan_set(100) failed: {}\n", _shr_errmsg[4]))},
        use_refused(SVI_ADD),
        Messages{report("rtifhal_l3_intf_create",
                        fmt::format("rtifhal_bcm_l3_intf_create(0x30000064) failed: {}\n",
                                    _shr_errmsg[4])),
                 report(SVI_ADD, "itf create(100) failed\n"),
                 report(SVI_ADD, "ing create(100) failed\n")},
    }));
}

TEST_F(SviAdd, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 1);
    step_add(); // this chip has no second unit
    EXPECT_EQ(calls()[3], "fwmpd_bcm_vlan_control_vlan_set(1, 100, " +
                              controls(0, 0, ROUTED_IP4, 2) + ") = -3");
}

} // namespace rtifhal_test::svi_add
