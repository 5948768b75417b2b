/*
 * pvlan_svi_secondary_test.cpp: one secondary's VLAN record as it follows the
 * primary's SVI: what is copied, what decides whether routing stays, which
 * writes reach the chip, what a refusal leaves.
 *
 * Beside it: pvlan_svi_pair_test.cpp and pvlan_svi_stations_test.cpp have the
 * pairs that lead here, svi_private_vlan_test.cpp the SVI that does.
 */
#include "support/pvlan_roads.h"

#include <fwmpd/platform.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <ostream>

namespace rtifhal_test::pvlan_svi_secondary
{

namespace
{

using namespace pvlan_road;
using svi_road::cache_asked;
using svi_road::controls;
using svi_road::IIF;
using svi_road::written;
using svi_road::written_directly;

constexpr std::uint32_t OLD_IIF = 5;
constexpr std::uint32_t HIGH_WORD = 0x10000;

class PvlanSviSecondary : public PvlanTest
{
protected:
    PvlanSviSecondary()
    {
        cached(PRIMARY).vc_ingress_if = IIF;
        cached(SECONDARY).vc_ingress_if = OLD_IIF;
    }

    static int mirror() { return rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, 1); }
    static int take_back() { return rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, 0); }
    /** The secondary's flags, and who uses it. */
    static void secondary_is(std::uint32_t flags, int subint_count, int svi)
    {
        cached(SECONDARY).vc_flags = flags;
        rtifhal_vlan_type_count[SECONDARY].subint_count = subint_count;
        rtifhal_vlan_type_count[SECONDARY].svi = svi;
    }
};

/** What decides over a secondary's routing, and what comes of it. */
struct Row {
    int subint_count;
    int svi;
    std::uint32_t before; ///< the flags
    std::uint32_t after;
    const char *said; ///< null where the flags aren't written on their own
};

std::ostream &operator<<(std::ostream &stream, const Row &row)
{
    return stream << row.subint_count << " subinterfaces, svi " << row.svi << ", flags "
                  << fmt::format("{:#x}", row.before);
}

class PvlanSviRouting : public PvlanSviSecondary, public ::testing::WithParamInterface<Row>
{
};

constexpr const char *ENABLING = "Enabling v4/v6 routing on vlan 101\n";
constexpr const char *DISABLING = "Disabling v4/v6 routing on vlan 101\n";

} // namespace

TEST_P(PvlanSviRouting, IsSettledByWhatElseTheVlanCarries)
{
    const Row &row = GetParam();
    secondary_is(row.before, row.subint_count, row.svi);
    EXPECT_EQ(take_back(), 0);
    expect_calls(row.said != nullptr
                     ? taken_back_in_two_writes(PRIMARY, SECONDARY, OLD_IIF, row.after)
                     : taken_back(PRIMARY, SECONDARY, row.after));
    Messages expected = uses_told(SECONDARY, row.subint_count, row.svi);
    if (row.said != nullptr) {
        expected.push_back(trace(ROUTING, row.said));
    }
    expect_messages(expected);
    EXPECT_EQ(cached(SECONDARY).vc_flags, row.after);
    EXPECT_EQ(in_the_chip(SECONDARY).flags, row.after | 0x800);
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Subinterfaces, PvlanSviRouting,
    ::testing::Values(Row{1, 0, 0x238, 0x240, ENABLING}, Row{1, 0, 0x10, 0x40, ENABLING},
                      Row{3, 1, 0x8, 0x40, ENABLING}, Row{-1, 0, 0x20, 0x40, ENABLING},
                      Row{1, 0, 0x200, 0x240, nullptr}, Row{2, 1, 0x40, 0x40, nullptr}));
INSTANTIATE_TEST_SUITE_P(
    NoUser, PvlanSviRouting,
    ::testing::Values(Row{0, 0, 0, 0x78, DISABLING}, Row{0, 0, 0x240, 0x278, DISABLING},
                      Row{0, 0, 0x8000, 0x8078, DISABLING}, Row{0, 0, 0x238, 0x278, nullptr},
                      Row{0, 0, 0x8, 0x48, nullptr}, Row{0, 0, 0x10, 0x50, nullptr},
                      Row{0, 0, 0x20, 0x60, nullptr}));
INSTANTIATE_TEST_SUITE_P(OwnSvi, PvlanSviRouting,
                         ::testing::Values(Row{0, 1, 0, 0x40, nullptr},
                                           Row{0, 1, 0x38, 0x78, nullptr},
                                           Row{0, 2, 0x10, 0x50, nullptr}));

TEST_F(PvlanSviSecondary, IngressInterfaceIsMirroredAndRoutingSwitchedOn)
{
    EXPECT_EQ(mirror(), 0);
    expect_calls(mirrored(PRIMARY, SECONDARY, IIF, 0x200));
    expect_messages({});
    EXPECT_EQ(cached(SECONDARY).vc_flags, 0x200U);
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA00U);
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 3U);
}

TEST_F(PvlanSviSecondary, NothingElseIsCopied)
{
    bcm_vlan_control_vlan_t &primary = cached(PRIMARY);
    primary.vc_vrf = 12;
    primary.vc_flags = 0x400230;
    primary.vc_class = 6;
    primary.vc_urpf_mode = 2;
    cached(SECONDARY).vc_class = 16;
    cached(SECONDARY).vc_urpf_mode = 1;
    EXPECT_EQ(mirror(), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_set"}),
              Calls{written(SECONDARY, controls(OWN_VRF, IIF, 0x200, 16, 1))});
    EXPECT_EQ(primary.vc_flags, 0x400230U);
}

TEST_F(PvlanSviSecondary, UsesOfTheVlanDontMatterOnTheWayUp)
{
    secondary_is(0x278, 1, 1);
    EXPECT_EQ(mirror(), 0);
    expect_calls(mirrored(PRIMARY, SECONDARY, IIF, 0x240));
}

TEST_F(PvlanSviSecondary, AnyNonzeroFlagMirrors)
{
    EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, 0x80000000), 0);
    expect_calls(mirrored(PRIMARY, SECONDARY, IIF, 0x200));
}

TEST_F(PvlanSviSecondary, SdnAgentAndTheChipsKindChangeNothing)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    secondary_is(0, 0, 0);
    EXPECT_EQ(take_back(), 0);
    expect_calls(taken_back_in_two_writes(PRIMARY, SECONDARY, OLD_IIF, 0x78));
}

TEST_F(PvlanSviSecondary, L2UseIsOnlyTold)
{
    secondary_is(0, 0, 0);
    rtifhal_vlan_type_count[SECONDARY].l2_vlan = 0;
    EXPECT_EQ(take_back(), 0);
    expect_messages(join({uses_told(SECONDARY, 0, 0, 0), Messages{trace(ROUTING, DISABLING)}}));
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0x878U);
}

TEST_F(PvlanSviSecondary, PrimaryThatTheCacheDoesntHaveIsRefused)
{
    sw.wrappers.forget_vlan_control(PRIMARY);
    for (const std::uint32_t add : {1U, 0U}) {
        start();
        EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, add), -1);
        expect_calls({cache_asked(PRIMARY, false)});
        expect_messages({report(SECONDARY_UPDATE, not_in_cache(PRIMARY))});
    }
    EXPECT_EQ(cached(SECONDARY).vc_ingress_if, OLD_IIF);
}

TEST_F(PvlanSviSecondary, SecondaryThatTheCacheDoesntHaveIsRefused)
{
    sw.wrappers.forget_vlan_control(SECONDARY);
    for (const std::uint32_t add : {1U, 0U}) {
        start();
        EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, add), -1);
        expect_calls({cache_asked(PRIMARY), cache_asked(SECONDARY, false)});
        expect_messages({report(SECONDARY_UPDATE, not_in_cache(SECONDARY))});
    }
}

TEST_F(PvlanSviSecondary, VlanOutOfRangeIsRefused)
{
    EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, 5000, 0), -1);
    expect_calls({cache_asked(PRIMARY), cache_asked(5000, false)});
    expect_messages({report(SECONDARY_UPDATE, not_in_cache(5000))});
}

TEST_F(PvlanSviSecondary, SecondaryThatVanishesBeforeItsFlagsAreSettledOnlyLosesItsInterface)
{
    secondary_is(0, 0, 0);
    fail("fwmpd_bcm_vlan_control_vlan_get_from_cache", 0, 3);
    EXPECT_EQ(take_back(), 0);
    expect_calls(join({Calls{cache_asked(PRIMARY), cache_asked(SECONDARY), called::unit(),
                             cache_asked(SECONDARY, false), written(SECONDARY, record(0, 0))},
                       written_directly(SECONDARY, record(0, 0x800))}));
    expect_messages({uses_told(SECONDARY).front(), report(ROUTING, not_in_cache(SECONDARY))});
}

TEST_F(PvlanSviSecondary, RefusedFlagsAreNotFlushedAndTheInterfaceGoesAllTheSame)
{
    secondary_is(0, 0, 0);
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(take_back(), 0);
    expect_calls(join(
        {Calls{cache_asked(PRIMARY), cache_asked(SECONDARY), called::unit(), cache_asked(SECONDARY),
               written(SECONDARY, record(OLD_IIF, 0x78), -4), written(SECONDARY, record(0, 0x78))},
         written_directly(SECONDARY, record(0, 0x878))}));
    expect_reports({report(ROUTING, "bcm_vlan_control_vlan_set failed for VLAN: 101\n")});
}

TEST_F(PvlanSviSecondary, PositiveAnswerToTheFlagsIsAFailureToo)
{
    secondary_is(0x38, 1, 0);
    fail("fwmpd_bcm_vlan_control_vlan_set", 1);
    EXPECT_EQ(take_back(), 0);
    expect_reports({report(ROUTING, "bcm_vlan_control_vlan_set failed for VLAN: 101\n")});
    EXPECT_EQ(sw.journal.count("fwmpd_trident_batch_flush"), 1U); // the direct write's own
}

TEST_F(PvlanSviSecondary, RefusedRecordEndsTheMirroring)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(mirror(), -1);
    expect_calls({cache_asked(PRIMARY), cache_asked(SECONDARY), called::unit(),
                  written(SECONDARY, record(IIF, 0x200), -4)});
    expect_messages({report(SECONDARY_UPDATE, "bcm_vlan_control_vlan_set(101) failed\n")});
    EXPECT_EQ(cached(SECONDARY).vc_ingress_if, 3U); // changed in place, not undone
}

TEST_F(PvlanSviSecondary, RefusedRecordEndsTheTakingBackAfterTheFlags)
{
    secondary_is(0, 0, 0);
    fail("fwmpd_bcm_vlan_control_vlan_set", 1, 2);
    EXPECT_EQ(take_back(), -1);
    EXPECT_EQ(calls().back(), written(SECONDARY, record(0, 0x78), 1));
    expect_reports({report(SECONDARY_UPDATE, "bcm_vlan_control_vlan_set(101) failed\n")});
}

TEST_F(PvlanSviSecondary, RefusedDirectWriteIsOnlyReported)
{
    fail("bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(mirror(), 0);
    expect_messages(
        {report(SECONDARY_UPDATE,
                fmt::format("bcm_vlan_control_vlan_set(101) failed: {}\n", _shr_errmsg[4]))});
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0x200U);
}

TEST_F(PvlanSviSecondary, PositiveAnswerToTheDirectWriteIsReportedToo)
{
    fail("bcm_vlan_control_vlan_set", 1);
    EXPECT_EQ(mirror(), 0);
    expect_messages(
        {report(SECONDARY_UPDATE,
                fmt::format("bcm_vlan_control_vlan_set(101) failed: {}\n", _shr_errmsg[19]))});
}

TEST_F(PvlanSviSecondary, DirectWriteGoesToAUnitOfItsOwn)
{
    fwmpd_trident_unit = 2;
    EXPECT_EQ(mirror(), 0);
    expect_calls(join({Calls{cache_asked(PRIMARY), cache_asked(SECONDARY), called::unit(),
                             written(SECONDARY, record(IIF, 0x200))},
                       written_directly(SECONDARY, record(IIF, 0xA00), -3, 2)}));
    expect_reports(
        {report(SECONDARY_UPDATE,
                fmt::format("bcm_vlan_control_vlan_set(101) failed: {}\n", _shr_errmsg[3]))});
}

TEST_F(PvlanSviSecondary, WrappersWriteGoesToThePlatformsUnit)
{
    fail("rtifhal_get_bcm_unit", 1);
    EXPECT_EQ(take_back(), -1);
    EXPECT_EQ(calls().back(),
              "fwmpd_bcm_vlan_control_vlan_set(1, 101, " + record(0, 0x278) + ") = -3");
}

TEST_F(PvlanSviSecondary, CacheNeverLearnsOfTheSnoopingFlag)
{
    for (const std::uint32_t add : {1U, 0U, 1U, 1U, 0U}) {
        EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, SECONDARY, add), 0);
        EXPECT_EQ(cached(SECONDARY).vc_flags & 0x800, 0U);
        EXPECT_EQ(in_the_chip(SECONDARY).flags & 0x800, 0x800U);
    }
}

TEST_F(PvlanSviSecondary, WayUpAndBackKeepsTheMark)
{
    mirror();
    take_back();
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA78U);
    mirror();
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA40U);
}

TEST_F(PvlanSviSecondary, DirectWriteKeepsTheWholeRecord)
{
    cached(SECONDARY).reserved[32] = 0xDEAD;
    EXPECT_EQ(mirror(), 0);
    EXPECT_EQ(in_the_chip(SECONDARY).rest[32], 0xDEADU);
}

TEST_F(PvlanSviSecondary, PrimaryItselfAsItsSecondaryKeepsItsInterfaceUntilItIsTakenBack)
{
    EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, PRIMARY, 1), 0);
    EXPECT_EQ(in_the_chip(PRIMARY).ingress_if, 3U);
    EXPECT_EQ(in_the_chip(PRIMARY).flags, 0xA00U);
    EXPECT_EQ(rtifhal_pvlan_svi_update_secondary(PRIMARY, PRIMARY, 0), 0);
    EXPECT_EQ(in_the_chip(PRIMARY).ingress_if, 0U);
}

TEST_F(PvlanSviSecondary, WordsAreCutToAVlanWhereACallTakesOne)
{
    secondary_is(0x38, 1, 0);
    rtifhal_pvlan_svi_update_secondary(HIGH_WORD + PRIMARY, HIGH_WORD + SECONDARY, 0);
    expect_calls(taken_back_in_two_writes(PRIMARY, SECONDARY, OLD_IIF, 0x40));
}

} // namespace rtifhal_test::pvlan_svi_secondary
