/*
 * ingress_svi_tie_test.cpp: how an SVI's L3 ingress object is tied to its VLAN,
 * and the snooping flag that only the chip has.
 *
 * ingress_ties_test.cpp has the other kinds.
 */
#include "support/ingress_tie.h"

#include <fwmpd/l3_cache.h>
#include <sdk/error.h>

namespace rtifhal_test::ingress_svi_tie
{

namespace
{

constexpr const char *CREATE = "rtifhal_l3_ing_create";
constexpr int VLAN = 100;

/** An SVI on VLAN 100, whose controls aren't all 0. */
class IngressTieOfSvi : public IngressTie
{
protected:
    IngressTieOfSvi()
    {
        bcm_vlan_create(0, VLAN);
        bcm_vlan_control_vlan_t control = {};
        control.vc_flags = 0x278;
        control.vc_class = 2;
        fwmpd_bcm_vlan_control_vlan_set(0, VLAN, control);
        sw.end_request();
        lif->with_record(TIED_IIF);
        start();
    }

    static bcm_vlan_control_vlan_t &cached()
    {
        return *fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN);
    }
    /** The calls of the tie up to the write through the wrapper. */
    static Calls mapping_calls(int code)
    {
        return {"fwmpd_bcm_vlan_control_vlan_get_from_cache(100) = record",
                "fwmpd_bcm_vlan_control_vlan_set(0, 100, {vrf=1 iif=7 flags=0x278 class=6 urpf=0})"
                " = " +
                    std::to_string(code)};
    }
    /** The calls of the tie when the snooping flag is answered with `code`. */
    static Calls whole_tie(int code)
    {
        Calls calls = mapping_calls(0);
        calls.insert(
            calls.end(),
            {"fwmpd_trident_vlan_bvcvt_store(100) = 0", "bcm_vlan_control_vlan_t_init()",
             called::flush(),
             "bcm_vlan_control_vlan_set(0, 100, {vrf=1 iif=7 flags=0xa78 class=6 urpf=0}) = " +
                 std::to_string(code)});
        return calls;
    }

    std::unique_ptr<Lif> lif = svi(VLAN);
};

} // namespace

TEST_F(IngressTieOfSvi, VlanIsMappedAndTheSnoopingFlagGoesStraightToTheChip)
{
    EXPECT_EQ(create(*lif), 0);
    expect_calls(with_object(*lif, 9, whole_tie(0)));
    EXPECT_EQ(tie_messages(),
              Messages({trace(CREATE, "Mapping vid 100 to iif 7\n"), success(*lif, -1)}));
}

TEST_F(IngressTieOfSvi, SnoopingFlagReachesTheChipAndNeverTheCache)
{
    create(*lif);
    EXPECT_EQ(cached().vc_flags, 0x278U);
    sw.end_request();
    ASSERT_NE(sw.chip.vlans.find(VLAN), nullptr);
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->controls.flags, 0xA78U);
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->controls.ingress_if, 7U);
}

TEST_F(IngressTieOfSvi, NextWriteThroughTheWrapperDropsTheSnoopingFlag)
{
    create(*lif);
    fwmpd_bcm_vlan_control_vlan_set(0, VLAN, cached());
    sw.end_request();
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->controls.flags, 0x278U);
}

TEST_F(IngressTieOfSvi, VrfAndReversePathModeStandInTheVlanToo)
{
    lif->properties.vrf = 12;
    lif->properties.urpf_mode = 3;
    create(*lif);
    EXPECT_EQ(cached().vc_vrf, 12U);
    EXPECT_EQ(cached().vc_urpf_mode, 2U);
    EXPECT_EQ(cached().vc_class, 6U);
    EXPECT_EQ(cached().vc_ingress_if, 7U);
}

TEST_F(IngressTieOfSvi, WholeRecordOfTheVlanGoesToTheChip)
{
    cached().reserved[0] = 0xAAAA;
    cached().reserved[32] = 0xBBBB;
    create(*lif);
    sw.end_request();
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->controls.rest[0], 0xAAAAU);
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->controls.rest[32], 0xBBBBU);
}

TEST_F(IngressTieOfSvi, VlanIsTheEncapsulationVlanAndNotTheOwnOne)
{
    lif->lif.vlan = 200;
    create(*lif);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_set"}), Calls({mapping_calls(0)[1]}));
}

TEST_F(IngressTieOfSvi, VlanIsThatOfThePortChannelThatIsWorkedOn)
{
    const auto main = port_channel(7);
    main->with_record(TIED_IIF).lif.si_encap_vlan = VLAN;
    lif->lif.si_encap_vlan = 200;
    lif->lif.main_l3lif = main->get();
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_set"}), Calls({mapping_calls(0)[1]}));
}

TEST_F(IngressTieOfSvi, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(create(*lif), -3); // this chip has no other unit
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_control_vlan_set(3, 100, {vrf=1 iif=7 flags=0x278 "
                              "class=6 urpf=0}) = -3");
}

TEST_F(IngressTieOfSvi, PositiveAnswerToTheVlanRecordIsNoFailure)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", 1);
    EXPECT_EQ(create(*lif), 0);
    expect_reports({});
    EXPECT_EQ(sw.journal.count("bcm_vlan_control_vlan_set"), 1U);
}

TEST_F(IngressTieOfSvi, RefusedObjectDoesNotStopTheTie)
{
    fail("rtifhal_bcm_l3_ingress_create", -6);
    EXPECT_EQ(create(*lif), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_set", "bcm_vlan_control_vlan_set"}).size(),
              2U);
}

TEST_F(IngressTieOfSvi, VlanThatTheCacheDoesNotHaveFails)
{
    fail("fwmpd_bcm_vlan_control_vlan_get_from_cache", 0);
    EXPECT_EQ(create(*lif), -1);
    expect_calls(with_object(*lif, 9, {"fwmpd_bcm_vlan_control_vlan_get_from_cache(100) = null"}));
    EXPECT_EQ(tie_messages(),
              Messages({report(CREATE, "fwmpd_bcm_vlan_control_vlan_get_from_cache(100)"
                                       " returned NULL\n")}));
}

TEST_F(IngressTieOfSvi, RefusedVlanRecordIsHandedUpAndTheCacheKeepsTheNewValues)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(create(*lif), -4);
    expect_calls(with_object(*lif, 9, mapping_calls(-4)));
    EXPECT_EQ(tie_messages(),
              Messages({trace(CREATE, "Mapping vid 100 to iif 7\n"),
                        report(CREATE, std::string("fwmpd_bcm_vlan_control_vlan_set("
                                                   "100) failed: ") +
                                           _shr_errmsg[4] + "\n")}));
    EXPECT_EQ(cached().vc_ingress_if, 7U);
    EXPECT_EQ(cached().vc_class, 6U);
    EXPECT_NE(rtifhal_bcm_l3_ingress_get_from_cache(TIED_IIF), nullptr);
}

TEST_F(IngressTieOfSvi, RefusedSnoopingFlagIsReportedAndTheTieStands)
{
    fail("bcm_vlan_control_vlan_set", -7);
    EXPECT_EQ(create(*lif), 0);
    expect_calls(with_object(*lif, 9, whole_tie(-7)));
    expect_reports({report(CREATE, std::string("fwmpd_bcm_vlan_control_vlan_set(100) "
                                               "BCM_VLAN_IGMP_SNOOP_DISABLE failed: ") +
                                       _shr_errmsg[7] + "\n")});
    EXPECT_EQ(messages().back(), success(*lif, -1));
}

TEST_F(IngressTieOfSvi, PositiveAnswerToTheSnoopingFlagIsReportedToo)
{
    fail("bcm_vlan_control_vlan_set", 1);
    EXPECT_EQ(create(*lif), 0);
    expect_reports({report(CREATE, std::string("fwmpd_bcm_vlan_control_vlan_set(100) "
                                               "BCM_VLAN_IGMP_SNOOP_DISABLE failed: ") +
                                       _shr_errmsg[19] + "\n")});
}

TEST_F(IngressTieOfSvi, RefusedStoreOfTheVlanIsNotLookedAt)
{
    fail("fwmpd_trident_vlan_bvcvt_store", -9);
    EXPECT_EQ(create(*lif), 0);
    expect_reports({});
    EXPECT_EQ(sw.journal.count("bcm_vlan_control_vlan_set"), 1U);
}

} // namespace rtifhal_test::ingress_svi_tie
