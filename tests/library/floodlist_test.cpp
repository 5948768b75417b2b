/*
 * floodlist_test.cpp: a port that turns L2 or L3 in all field entries at the
 * top of the rule memory, and the size from which those are counted back.
 * Beside it: floodlist_entry_test.cpp, the edits of one entry.
 */
#include "support/flood_list.h"

#include "rtifhal_kelvo_trident/field/floodlist.h"
#include "services/directory.h"

#include <l3lif/l3lif_layer.h>

#include <fmt/format.h>

#include <cstring>

namespace rtifhal_test::floodlist
{

namespace
{

using namespace field_call;
using simswitch::services::Directory;

using FloodList = FloodListTest;

constexpr const char *NO_SIZE = "fwmpd_trident_get_sup_tcam_default_size() = -1";

Message size_report(int code)
{
    const std::string name = "rtifhal_brcm_tcam_sup_default_size";
    return report(name,
                  fmt::format("{}: FWMPD sup tcam size fetch returned error {}\n", name, code));
}

class RuleMemorySize : public FloodList
{
};

TEST_F(RuleMemorySize, IsFetchedOnce)
{
    EXPECT_EQ(rtifhal_brcm_tcam_sup_default_size(), 128);
    EXPECT_EQ(rtifhal_brcm_tcam_sup_default_size(), 128);
    expect_calls({SIZE});
    expect_messages({});
    EXPECT_EQ(tcam_sup_size_stale, 0);
}

TEST_F(RuleMemorySize, IsAskedForAgainUntilItIsKnown)
{
    fail("fwmpd_trident_get_sup_tcam_default_size", -1);
    fail("fwmpd_trident_get_sup_tcam_default_size", 3, 2);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(rtifhal_brcm_tcam_sup_default_size(), 128);
    }
    expect_reports({size_report(-1), size_report(3)});
    EXPECT_EQ(calls().size(), 3U);
}

TEST_F(RuleMemorySize, IsTheLastOneKnownAfterAFailure)
{
    tcam_sup_default_size = 77;
    fail("fwmpd_trident_get_sup_tcam_default_size", -1);
    EXPECT_EQ(rtifhal_brcm_tcam_sup_default_size(), 77);
    EXPECT_EQ(tcam_sup_size_stale, 1);
}

class PortChange : public FloodList
{
protected:
    using FloodList::FloodList;

    /** All edits of port 5, which turns routed, over entries that have it. */
    static std::vector<Lines> edits_of_port_5()
    {
        return {
            flood_edit(125, FRONT, FRONT_BUT_5),    flood_edit(123, FRONT, FRONT_BUT_5),
            flood_edit(124, FRONT, FRONT_BUT_5),    flood_edit(127, FRONT, FRONT_BUT_5),
            flood_edit(120, FRONT, FRONT_BUT_5),    in_ports_edit(123, FRONT, FRONT_BUT_5),
            in_ports_edit(124, FRONT, FRONT_BUT_5), in_ports_edit(120, FRONT, FRONT_BUT_5),
        };
    }
};

TEST_F(PortChange, RoutedPortLeavesFiveFloodListsAndThreeInPortSets)
{
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), 0);
    expect_calls(joined({{UNIT, SIZE}, joined(edits_of_port_5())}));

    std::vector<Message> expected = {trace("rtifhal_update_llm_acl_floodlist",
                                           " Update IFP default redirect bmp with port 5 l3:1\n")};
    for (const int entry : {125, 123, 124, 127, 120}) {
        expected.push_back(trace("rtifhal_add_remove_port_to_floodlist",
                                 fmt::format("Tcam index = {} l3 = 1 port = 5\n", entry)));
    }
    for (const int entry : {123, 124, 120}) {
        expected.push_back(trace("rtifhal_add_remove_port_from_inports",
                                 fmt::format("Tcam index = {} l3 = 1 port = 5\n", entry)));
    }
    expect_messages(expected);
}

TEST_F(PortChange, SwitchedPortComesBackEverywhere)
{
    rtifhal_update_llm_acl_floodlist(5, 0);
    const auto before = sw.chip.field_entries.all();
    start();
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 7), 0);
    EXPECT_NE(sw.chip.field_entries.all(), before);
    EXPECT_EQ(messages().front(), trace("rtifhal_update_llm_acl_floodlist",
                                        " Update IFP default redirect bmp with port 5 l3:0\n"));
    for (const int entry : {127, 125, 124, 123, 120}) {
        EXPECT_EQ(installed(entry).port_actions.at(32).text(), FRONT) << entry;
    }
    for (const int entry : {124, 123, 120}) {
        EXPECT_EQ(installed(entry).in_ports->data.text(), FRONT) << entry;
    }
}

TEST_F(PortChange, EntriesOfTheLayerAboveComeBetweenFloodListsAndInPorts)
{
    Directory::set_flood_entry(0, 900);
    Directory::set_flood_entry(5, 903);
    Directory::set_flood_entry(95, 901);
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), 0);

    auto edits = edits_of_port_5();
    edits.insert(edits.begin() + 5, {edit_of_unknown(900, "{}"), edit_of_unknown(903, "{}"),
                                     edit_of_unknown(901, "{}")});
    expect_calls(joined({{UNIT, SIZE}, joined(edits)}));
}

TEST_F(PortChange, AllNinetySixEntriesOfTheLayerAboveAreEdited)
{
    std::vector<int> expected = {125, 123, 124, 127, 120};
    for (unsigned slot = 0; slot < 96; ++slot) {
        Directory::set_flood_entry(slot, 1000 + slot);
        expected.push_back(static_cast<int>(1000 + slot));
    }
    rtifhal_update_llm_acl_floodlist(5, 0);
    EXPECT_EQ(entries_of("bcm_field_action_ports_add"), expected);
    EXPECT_EQ(entries_of("bcm_field_qualify_InPorts"), (std::vector<int>{123, 124, 120}));
}

TEST_F(PortChange, EntryOfTheLayerAboveIsEditedWhereverItStandsAlone)
{
    for (unsigned slot = 0; slot < 96; ++slot) {
        Directory::set_flood_entry(slot, 1);
        start();
        rtifhal_update_llm_acl_floodlist(5, 0);
        EXPECT_EQ(entries_of("bcm_field_action_ports_add"),
                  (std::vector<int>{125, 123, 124, 127, 120, 1}))
            << slot;
        Directory::set_flood_entry(slot, 0);
    }
}

TEST_F(PortChange, WordsBeforeTheEntriesOfTheLayerAboveAreNotLookedAt)
{
    std::memset(l3lif_global_data, 0xFF, 672);
    rtifhal_update_llm_acl_floodlist(5, 0);
    expect_calls(joined({{UNIT, SIZE}, joined(edits_of_port_5())}));
}

TEST_F(PortChange, ResultIsThatOfTheLastReinstallAlone)
{
    fail("bcm_field_entry_reinstall", -11, 8);
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), -11);
    fail("bcm_field_entry_reinstall", -11, 7);
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 1), 0);
}

TEST_F(PortChange, FailureOfAnEntryLeavesTheOthersToBeDone)
{
    for (const char *function : {"bcm_field_action_ports_get", "bcm_field_action_remove",
                                 "bcm_field_action_ports_add", "bcm_field_qualify_InPorts_get",
                                 "bcm_field_qualifier_delete", "bcm_field_qualify_InPorts"}) {
        start();
        sw.journal.arm({.function = function, .forever = true});
        EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), 0) << function;
        EXPECT_EQ(entries_of("bcm_field_entry_reinstall"),
                  (std::vector<int>{125, 123, 124, 127, 120, 123, 124, 120}))
            << function;
        sw.journal.disarm();
    }
    expect_reports({});
}

TEST_F(PortChange, SizeIsAskedForBeforeEachEntryUntilItIsKnown)
{
    sw.journal.arm({.function = "fwmpd_trident_get_sup_tcam_default_size", .forever = true});
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), 0);
    std::vector<Lines> parts = {{UNIT}};
    for (const auto &edit : edits_of_port_5()) {
        parts.push_back({NO_SIZE});
        parts.push_back(edit);
    }
    expect_calls(joined(parts));
    expect_reports(std::vector<Message>(8, size_report(-1)));
}

TEST_F(PortChange, SizeThatBecomesKnownHalfWayMovesTheEntriesFromThereOn)
{
    tcam_sup_default_size = 1008;
    fail("fwmpd_trident_get_sup_tcam_default_size", -1);
    rtifhal_update_llm_acl_floodlist(5, 0);
    EXPECT_EQ(entries_of("bcm_field_action_ports_add"),
              (std::vector<int>{1005, 123, 124, 127, 120}));
}

TEST_F(PortChange, SizeIsNotAskedForAgainAtTheNextChange)
{
    rtifhal_update_llm_acl_floodlist(5, 0);
    rtifhal_update_llm_acl_floodlist(6, 0);
    EXPECT_EQ(sw.journal.count("fwmpd_trident_get_sup_tcam_default_size"), 1U);
}

TEST_F(PortChange, OnlyTheLowEightBitsOfAPortCount)
{
    rtifhal_update_llm_acl_floodlist(300, 0);
    for (const int entry : {127, 125, 124, 123, 120}) {
        EXPECT_EQ(installed(entry).port_actions.at(32).text(), "{1-43,45-104}") << entry;
    }
    EXPECT_EQ(messages().at(1).text, "Tcam index = 125 l3 = 1 port = 44\n");
}

TEST_F(PortChange, OfThePlatformTurnsItsNumberIntoAPortAndFlushesFirst)
{
    EXPECT_EQ(rtifhal_l2port_fld_chg(4, 0), 0);
    expect_calls(
        joined({{"fwmpd_pif_to_asic_port(4) = 5", "fwmpd_trident_batch_flush() = 0", UNIT, SIZE},
                joined(edits_of_port_5())}));
}

TEST_F(PortChange, OfThePlatformHandsTheKindAndTheResultOn)
{
    rtifhal_l2port_fld_chg(4, 0);
    start();
    fail("bcm_field_entry_reinstall", -11, 8);
    EXPECT_EQ(rtifhal_l2port_fld_chg(4, 1), -11);
    EXPECT_EQ(calls().at(5), "bcm_field_action_ports_add(0, 125, 32, {1-104}) = 0");
}

TEST_F(PortChange, OfThePlatformTakesTheLowEightBitsOfAPort)
{
    fail("fwmpd_pif_to_asic_port", 300);
    rtifhal_l2port_fld_chg(4, 0);
    EXPECT_FALSE(floods_to(125, 44));
    EXPECT_TRUE(floods_to(125, 5));
}

class PortChangeOnTrident2 : public PortChange
{
protected:
    PortChangeOnTrident2() : PortChange({.chip = Kind::trident2}) {}
};

TEST_F(PortChangeOnTrident2, CountsTheEntriesBackFromTheLargerSize)
{
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), 0);
    EXPECT_EQ(entries_of("bcm_field_action_ports_add"),
              (std::vector<int>{253, 251, 252, 255, 248}));
    EXPECT_EQ(entries_of("bcm_field_qualify_InPorts"), (std::vector<int>{251, 252, 248}));
}

class PortChangeInASmallRegion : public PortChange
{
protected:
    PortChangeInASmallRegion() : PortChange({.limits = {.rule_region = 64}}) {}
};

TEST_F(PortChangeInASmallRegion, GoesByTheSizeThatWasFetched)
{
    EXPECT_EQ(rtifhal_update_llm_acl_floodlist(5, 0), 0);
    EXPECT_EQ(entries_of("bcm_field_action_ports_add"), (std::vector<int>{61, 59, 60, 63, 56}));
}

} // namespace

} // namespace rtifhal_test::floodlist
