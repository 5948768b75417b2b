/*
 * flood_block_test.cpp: the users of a VLAN and its block masks: who may make
 * it flood where, and when it ends.
 */
#include "support/library_test.h"
#include "support/vlan_roads.h"

#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <journal/format.h>
#include <sdk/error.h>
#include <sdk/vlan.h>

#include <fmt/format.h>

namespace rtifhal_test::flood_block
{

namespace
{

constexpr std::uint16_t VLAN = 100;
constexpr int ROUTED = 1;
constexpr int SVI = 2;
constexpr int L2 = 3;
constexpr std::uint32_t UNTOUCHED = 77;

const std::string OPERATION = "rtifhal_subintf_block_set";
const std::string WRITE_MASKS = "fwmpd_bcm_vlan_block_set";
const std::string END_VLAN = "fwmpd_bcm_vlan_destroy";

int take_on(int type, int port = 0)
{
    return rtifhal_subintf_block_set(VLAN, type, port, 1, nullptr);
}
int give_up(int type, int port = 0, std::uint32_t *no_users = nullptr)
{
    return rtifhal_subintf_block_set(VLAN, type, port, 0, no_users);
}

const rtifhal_vlan_type_count_entry_t &uses()
{
    return rtifhal_vlan_type_count[VLAN];
}

std::string block_record()
{
    return simswitch::format_value(fwmpd_trident_get_bvbt(VLAN));
}

/** The calls up to the masks: all operations begin so. */
const Calls START = {
    "rtifhal_get_bcm_unit(0) = 0",
    "fwmpd_trident_batch_flush() = 0",
    "fwmpd_trident_get_bvbt(100) = record",
};

Calls writes(const std::string &block, int code = 0)
{
    return {fmt::format("{}(0, {}, {}) = {}", WRITE_MASKS, VLAN, block, code)};
}

Calls ends(int code = 0)
{
    return {fmt::format("{}(0, {}) = {}", END_VLAN, VLAN, code)};
}

const Calls EMPTIES = {"bcm_vlan_block_t_init()"};
const Calls FINDS_NO_PORT = {"_shr_pbmp_bmnull({}) = 1"};

class FloodBlock : public LibraryTest
{
protected:
    FloodBlock()
    {
        bcm_vlan_create(0, VLAN);
        start();
    }

    /** The calls of some users before the stretch that is looked at. */
    void used_by(const std::vector<std::pair<int, int>> &types_and_ports)
    {
        for (const auto &[type, port] : types_and_ports) {
            ASSERT_EQ(take_on(type, port), 0);
        }
        start();
    }
    /** Port 5 alone stands in the masks, so that a step that adds the CPU shows. */
    void masks_were_without_the_cpu()
    {
        bcm_vlan_block_t &block = *fwmpd_trident_get_bvbt(VLAN);
        block = {};
        block.unknown_multicast.pbits[0] = 1U << 5;
        block.unknown_unicast = block.broadcast = block.unknown_multicast;
        start();
    }
};

} // namespace

TEST_F(FloodBlock, FirstRoutedUseKeepsEverythingFromTheCpuAndThePort)
{
    EXPECT_EQ(take_on(ROUTED, 5), 0);
    expect_calls(first_use_calls(VLAN, 5));
    expect_messages(first_use_messages(VLAN, 5));
    EXPECT_EQ(uses().subint_count, 1);
    EXPECT_EQ(simswitch::format_value(uses().l3pbmp), "{5}");
}

TEST_F(FloodBlock, FirstUseEmptiesAllFourSetsOfAStaleRecord)
{
    bcm_vlan_block_t &block = *fwmpd_trident_get_bvbt(VLAN);
    block.known_multicast.pbits[0] = block.unknown_multicast.pbits[1] = 0x200;
    block.unknown_unicast.pbits[7] = block.broadcast.pbits[0] = 0x80000002;
    take_on(ROUTED, 5);
    EXPECT_EQ(block_record(), masks("{0,5}"));
}

TEST_F(FloodBlock, SecondPortJoinsTheMasks)
{
    used_by({{ROUTED, 5}});
    EXPECT_EQ(take_on(ROUTED, 6), 0);
    expect_calls(join({START, writes(masks("{0,5,6}")), popcounts({5, 6})}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 1 port = 6 set = 1\n"),
        trace(OPERATION, "UMCB Remove CPU from UMC and add 6 to Blk lists\n"),
        trace(OPERATION, "UMCB Calling bcm_vlan_block_set for 100\n"),
        trace(OPERATION, "rtifhal_subintf_block_set SET lvtc->subint_count:2 pbmp_count:2 \n"),
    });
    EXPECT_EQ(uses().subint_count, 2);
}

TEST_F(FloodBlock, SecondUseOnTheSamePortCountsOnce)
{
    used_by({{ROUTED, 5}});
    EXPECT_EQ(take_on(ROUTED, 5), 0);
    expect_calls(join({START, writes(masks("{0,5}")), popcounts({5})}));
    EXPECT_EQ(uses().subint_count, 1);
}

TEST_F(FloodBlock, LaterUseLeavesTheFirstSetAlone)
{
    used_by({{ROUTED, 5}});
    fwmpd_trident_get_bvbt(VLAN)->known_multicast.pbits[0] = 0x200;
    take_on(ROUTED, 6);
    give_up(ROUTED, 5);
    EXPECT_EQ(block_record(), "{kmc={9} umc={0,6} uuc={0,6} bc={0,6}}");
}

TEST_F(FloodBlock, LaterUseAddsTheCpuToTheSecondSetOnly)
{
    used_by({{ROUTED, 5}});
    *fwmpd_trident_get_bvbt(VLAN) = {};
    take_on(ROUTED, 6);
    EXPECT_EQ(block_record(), "{kmc={} umc={0,6} uuc={6} bc={6}}");
}

TEST_F(FloodBlock, CpuIsNeverTakenOutOfAnySet)
{
    used_by({{ROUTED, 5}, {ROUTED, 6}, {SVI, 0}, {L2, 0}});
    EXPECT_EQ(block_record(), masks("{0,5,6}"));
    give_up(ROUTED, 5);
    give_up(ROUTED, 6);
    give_up(SVI);
    give_up(L2);
    EXPECT_EQ(block_record(), masks("{0}"));
}

TEST_F(FloodBlock, CpuPortIsThePlatforms)
{
    fwmpd_asic_cpu_port = 70;
    take_on(ROUTED, 5);
    EXPECT_EQ(block_record(), masks("{5,70}"));
}

TEST_F(FloodBlock, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 1);
    EXPECT_EQ(take_on(ROUTED, 5), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_block_set(1, 100, " + masks("{0,5}") + ") = -3");
}

TEST_F(FloodBlock, SviAsFirstUserBlocksTheCpu)
{
    EXPECT_EQ(take_on(SVI, 9), 0);
    expect_calls(join({START, EMPTIES, writes(masks("{0}"))}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 2 port = 9 set = 1\n"),
        trace(OPERATION, "UMCB Adding CPU to blk masks for vlan:100\n"),
        trace(OPERATION, "UMCB Calling bcm_vlan_block_set for 100\n"),
    });
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
}

TEST_F(FloodBlock, L2UseWritesNothingToTheChip)
{
    EXPECT_EQ(take_on(L2, 9), 0);
    expect_calls(join({START, EMPTIES}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 3 port = 9 set = 1\n"),
        trace(OPERATION, "UMCB Adding CPU to blk masks for vlan:100\n"),
    });
    EXPECT_EQ(uses().l2_vlan, 1);
    EXPECT_EQ(block_record(), masks("{0}"));
}

TEST_F(FloodBlock, RoutedUseAfterAnSviOrTheL2SideEmptiesNothing)
{
    used_by({{SVI, 0}, {L2, 0}});
    take_on(ROUTED, 5);
    expect_calls(join({START, writes(masks("{0,5}")), popcounts({5})}));
}

TEST_F(FloodBlock, UnknownTypeOnlyPreparesTheRecord)
{
    EXPECT_EQ(take_on(7, 5), 0);
    expect_calls(join({START, EMPTIES}));
    EXPECT_EQ(uses().subint_count + uses().svi + uses().l2_vlan, 0);
}

TEST_F(FloodBlock, RefusedMasksLeaveTheCountsAndChangeTheRecord)
{
    fail(WRITE_MASKS, -4);
    EXPECT_EQ(take_on(ROUTED, 5), -1);
    expect_calls(join({START, EMPTIES, writes(masks("{0,5}"), -4)}));
    expect_reports({report(OPERATION, "bcm_vlan_block_set failed for vid 100\n")});
    EXPECT_EQ(uses().subint_count, 0);
    EXPECT_EQ(simswitch::format_value(uses().l3pbmp), "{}");
    EXPECT_EQ(block_record(), masks("{0,5}"));
}

TEST_F(FloodBlock, RefusedMasksOfAnSviLeaveItsMark)
{
    fail(WRITE_MASKS, 1); // any nonzero answer is a refusal
    EXPECT_EQ(take_on(SVI), -1);
    expect_reports({report(OPERATION, "bcm_vlan_block_set failed for vid 100\n")});
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(FloodBlock, LastRoutedUseEndsTheVlan)
{
    used_by({{ROUTED, 5}});
    EXPECT_EQ(give_up(ROUTED, 5), 0);
    expect_calls(last_use_calls(VLAN, 5));
    expect_messages(last_use_messages(VLAN, 5));
    EXPECT_EQ(uses().subint_count, 0);
    EXPECT_EQ(simswitch::format_value(uses().l3pbmp), "{}");
}

TEST_F(FloodBlock, LastRoutedUseAddsTheCpuBeforeTheVlanEnds)
{
    used_by({{ROUTED, 5}});
    masks_were_without_the_cpu();
    EXPECT_EQ(give_up(ROUTED, 5), 0);
    EXPECT_EQ(calls_of({WRITE_MASKS, END_VLAN}),
              join({writes("{kmc={} umc={0} uuc={} bc={}}"), ends()}));
}

TEST_F(FloodBlock, OneOfTwoPortsLeavesTheVlanStanding)
{
    used_by({{ROUTED, 5}, {ROUTED, 6}});
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(give_up(ROUTED, 5, &no_users), 0);
    expect_calls(join({START, writes(masks("{0,6}")), popcounts({6})}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 1 port = 5 set = 0\n"),
        trace(OPERATION, "rtifhal_subintf_block_set RESET BCM_PBMP_MEMBER lvtc->subint_count:2\n"),
        trace(OPERATION, "rtifhal_subintf_block_set RESET lvtc->subint_count:1\n"),
        trace(OPERATION, " UMCB Remove Port 5 in all blk mask for:100\n"),
        trace(OPERATION, "UMCB Calling bcm_vlan_block_set 100\n"),
        trace(OPERATION, "\n pbmp_count 1"),
    });
    EXPECT_EQ(no_users, UNTOUCHED);
}

TEST_F(FloodBlock, LastRoutedUseUnderAnSviLeavesVlanAndCpuAlone)
{
    used_by({{SVI, 0}, {ROUTED, 5}});
    masks_were_without_the_cpu();
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(give_up(ROUTED, 5, &no_users), 0);
    expect_calls(join({START, writes(masks("{}")), popcounts({}), FINDS_NO_PORT}));
    EXPECT_EQ(no_users, UNTOUCHED);
    EXPECT_EQ(uses().svi, 1);
}

TEST_F(FloodBlock, LastRoutedUseBesideTheL2SideAddsTheCpuAndLeavesTheVlan)
{
    used_by({{L2, 0}, {ROUTED, 5}});
    masks_were_without_the_cpu();
    EXPECT_EQ(give_up(ROUTED, 5), 0);
    EXPECT_EQ(calls_of({WRITE_MASKS, END_VLAN}), writes("{kmc={} umc={0} uuc={} bc={}}"));
}

TEST_F(FloodBlock, LastSviEndsTheVlan)
{
    used_by({{SVI, 0}});
    EXPECT_EQ(give_up(SVI), 0);
    expect_calls(join({START, writes(masks("{0}")), popcounts({}), FINDS_NO_PORT, ends()}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 2 port = 0 set = 0\n"),
        trace(OPERATION, "UMCB Add CPU to vblk 100\n"),
        trace(OPERATION, "UMCB Calling bcm_vlan_block_set 100\n"),
        trace(OPERATION, "\n pbmp_count 0"),
        trace(OPERATION, " UMCB Calling bcm_vlan_destroy 100\n"),
    });
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(FloodBlock, SviBesideTheL2SideLeavesTheVlan)
{
    used_by({{SVI, 0}, {L2, 0}});
    EXPECT_EQ(give_up(SVI), 0);
    expect_calls(join({START, writes(masks("{0}")), popcounts({}), FINDS_NO_PORT}));
}

TEST_F(FloodBlock, LastL2UseDestroysNothingAndTellsThatNobodyIsLeft)
{
    used_by({{L2, 0}});
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(give_up(L2, 0, &no_users), 0);
    expect_calls(join({START, popcounts({}), FINDS_NO_PORT}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 3 port = 0 set = 0\n"),
        trace(OPERATION, "UMCB Add CPU to vblk 100\n"),
        trace(OPERATION, "\n pbmp_count 0"),
    });
    EXPECT_EQ(no_users, 1U);
    EXPECT_EQ(uses().l2_vlan, 0);
}

TEST_F(FloodBlock, LastL2UseTakesNoPlaceToTellItIn)
{
    used_by({{L2, 0}});
    EXPECT_EQ(give_up(L2), 0);
    EXPECT_EQ(calls_of({WRITE_MASKS, END_VLAN}), Calls{});
}

TEST_F(FloodBlock, LastRoutedUseTellsThatNobodyIsLeft)
{
    used_by({{ROUTED, 5}});
    std::uint32_t no_users = UNTOUCHED;
    give_up(ROUTED, 5, &no_users);
    EXPECT_EQ(no_users, 1U);
}

TEST_F(FloodBlock, UnknownTypeGivenUpOnAnUnusedVlanDestroysNothing)
{
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(give_up(7, 5, &no_users), 0);
    expect_calls(join({START, popcounts({}), FINDS_NO_PORT}));
    EXPECT_EQ(no_users, 1U);
}

TEST_F(FloodBlock, UseThatWasNotThereChangesNoCountAndLeavesTheMasks)
{
    used_by({{ROUTED, 5}});
    fwmpd_trident_get_bvbt(VLAN)->broadcast.pbits[0] |= 0x40;
    start();
    EXPECT_EQ(give_up(ROUTED, 6), 0);
    expect_calls(join({START, writes(masks("{0,5}")), popcounts({5})}));
    expect_messages({
        trace(OPERATION, "\n\n UMCB Vlan = 100 type = 1 port = 6 set = 0\n"),
        trace(OPERATION, "rtifhal_subintf_block_set RESET lvtc->subint_count:1\n"),
        trace(OPERATION, " UMCB Remove Port 6 in all blk mask for:100\n"),
        trace(OPERATION, "UMCB Calling bcm_vlan_block_set 100\n"),
        trace(OPERATION, "\n pbmp_count 1"),
    });
    EXPECT_EQ(uses().subint_count, 1);
}

TEST_F(FloodBlock, UseThatWasNotThereEndsAnUnusedVlan)
{
    EXPECT_EQ(give_up(ROUTED, 6), 0);
    EXPECT_EQ(calls_of({END_VLAN}), ends());
    EXPECT_EQ(uses().subint_count, 0);
}

TEST_F(FloodBlock, RefusedMasksOnTheWayOutKeepTheVlanAndTheNewCounts)
{
    used_by({{ROUTED, 5}});
    fail(WRITE_MASKS, 1); // any nonzero answer is a refusal
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(give_up(ROUTED, 5, &no_users), -1);
    expect_calls(join({START, writes(masks("{0}"), 1)}));
    expect_reports({report(OPERATION, "bcm_vlan_block_set failed for vid 100\n")});
    EXPECT_EQ(uses().subint_count, 0);
    EXPECT_EQ(simswitch::format_value(uses().l3pbmp), "{}");
    EXPECT_EQ(no_users, UNTOUCHED);
}

TEST_F(FloodBlock, RefusedMasksOfAnSviOnTheWayOutKeepTheVlan)
{
    used_by({{SVI, 0}});
    fail(WRITE_MASKS, -4);
    EXPECT_EQ(give_up(SVI), -1);
    expect_calls(join({START, writes(masks("{0}"), -4)}));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(FloodBlock, RefusedEndIsReportedWithTheSdksText)
{
    used_by({{ROUTED, 5}});
    fail(END_VLAN, -7);
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(give_up(ROUTED, 5, &no_users), -1);
    expect_reports({report(
        OPERATION, fmt::format(" bcm_vlan_destroy failing for vid 100: {}\n", _shr_errmsg[7]))});
    EXPECT_EQ(no_users, 1U);
}

TEST_F(FloodBlock, PositiveAnswerToTheEndIsARefusal)
{
    used_by({{SVI, 0}});
    fail(END_VLAN, 3);
    EXPECT_EQ(give_up(SVI), -1);
    expect_reports({report(
        OPERATION, fmt::format(" bcm_vlan_destroy failing for vid 100: {}\n", _shr_errmsg[19]))});
}

TEST_F(FloodBlock, PortSetIsASecondWitnessOfTheCount)
{
    rtifhal_vlan_type_count[VLAN].l3pbmp.pbits[2] = 0x1;
    EXPECT_EQ(give_up(SVI), 0);
    expect_calls(join({START, writes("{kmc={} umc={0} uuc={} bc={}}"), popcounts({64}),
                       Calls{"_shr_pbmp_bmnull({64}) = 0"}}));
}

TEST_F(FloodBlock, NextFirstUseAfterTheEndEmptiesTheRecordAgain)
{
    used_by({{ROUTED, 5}});
    give_up(ROUTED, 5);
    fwmpd_trident_get_bvbt(VLAN)->known_multicast.pbits[0] = 0x200;
    take_on(ROUTED, 6);
    EXPECT_EQ(block_record(), masks("{0,6}"));
    EXPECT_EQ(uses().subint_count, 1);
}

TEST_F(FloodBlock, HighestPortOfASetCounts)
{
    EXPECT_EQ(take_on(ROUTED, 255), 0);
    EXPECT_EQ(simswitch::format_value(uses().l3pbmp), "{255}");
    EXPECT_EQ(uses().subint_count, 1);
}

namespace
{

class PortOutsideTheSets : public FloodBlock, public ::testing::WithParamInterface<int>
{
};

} // namespace

TEST_P(PortOutsideTheSets, IsNoUseAndStandsInNoMask)
{
    EXPECT_EQ(take_on(ROUTED, GetParam()), 0);
    expect_calls(join({START, EMPTIES, writes(masks("{0}")), popcounts({})}));
    EXPECT_EQ(uses().subint_count, 0);
    start();
    EXPECT_EQ(give_up(ROUTED, GetParam()), 0);
    expect_calls(join({START, writes(masks("{0}")), popcounts({}), FINDS_NO_PORT, ends()}));
    EXPECT_EQ(uses().subint_count, 0);
}

INSTANTIATE_TEST_SUITE_P(FloodBlock, PortOutsideTheSets, ::testing::Values(-1, 256, 300, 1 << 30));

namespace
{

class VlanOutsideTheTable : public FloodBlock, public ::testing::WithParamInterface<std::uint16_t>
{
};

} // namespace

TEST_P(VlanOutsideTheTable, IsMarkedByNobody)
{
    EXPECT_EQ(rtifhal_subintf_block_set(GetParam(), L2, 0, 1, nullptr), 0);
    std::uint32_t no_users = UNTOUCHED;
    EXPECT_EQ(rtifhal_subintf_block_set(GetParam(), 7, 0, 0, &no_users), 0);
    EXPECT_EQ(no_users, 1U);
}

TEST_P(VlanOutsideTheTable, IsRefusedByThePlatform)
{
    EXPECT_EQ(rtifhal_subintf_block_set(GetParam(), ROUTED, 5, 1, nullptr), -1);
    EXPECT_EQ(rtifhal_subintf_block_set(GetParam(), SVI, 0, 0, nullptr), -1);
    const Message refused =
        report(OPERATION, fmt::format("bcm_vlan_block_set failed for vid {}\n", GetParam()));
    expect_reports({refused, refused});
}

INSTANTIATE_TEST_SUITE_P(FloodBlock, VlanOutsideTheTable, ::testing::Values(4096, 65535));

} // namespace rtifhal_test::flood_block
