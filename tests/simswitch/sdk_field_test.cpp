/*
 * sdk_field_test.cpp: the SDK's functions that make a field group and an entry:
 * what each does to the chip, what it refuses, and its line in the journal.
 *
 * sdk_test.cpp has the edits of an entry that is there, chip_field_test.cpp the
 * tables themselves.
 */
#include "sdk/convert.h"
#include "switch.h"

#include <gmock/gmock.h>
#include <sdk/field.h>

namespace simswitch
{

namespace
{

using Calls = std::vector<std::string>;

constexpr int GROUP = 11;

struct SdkField : testing::Test {
    Switch host;

    std::string last_reason() const { return host.journal.records().back().reason; }
    std::string last_call() const { return host.journal.calls().back(); }
    /** A group with an entry; gives the entry. */
    int made()
    {
        bcm_field_entry_t entry = 0;
        EXPECT_EQ(bcm_field_group_create_id(0, {}, 0, GROUP), 0);
        EXPECT_EQ(bcm_field_entry_create(0, GROUP, &entry), 0);
        return static_cast<int>(entry);
    }
    std::string text_of(int entry) const
    {
        return chip::text(*host.chip.field_entries.find(entry));
    }
};

} // namespace

TEST_F(SdkField, GroupIsMadeWithItsQualifiers)
{
    bcm_field_qset_t qualifiers{};
    qualifiers.w[0] = 1U << 13;
    qualifiers.w[2] = 1U << 18;
    EXPECT_EQ(bcm_field_group_create_id(0, qualifiers, -2, GROUP), 0);
    EXPECT_EQ(*host.chip.field_groups.find(GROUP),
              (chip::FieldGroup{.priority = -2, .qualifiers = {13, 82}}));
    EXPECT_EQ(host.journal.calls(),
              Calls{"bcm_field_group_create_id(0, qualifiers {13 82}, -2, 11) = 0"});
    EXPECT_EQ(host.wrappers.chip_writes(), 1U);
    int enable = 0;
    EXPECT_EQ(bcm_field_group_enable_get(0, GROUP, &enable), 0);
    EXPECT_EQ(enable, 1);
}

TEST_F(SdkField, QualifiersGoToTheLastBitOfTheSet)
{
    bcm_field_qset_t qualifiers{};
    qualifiers.w[0] = 1;
    qualifiers.w[16] = 0x80000000;
    EXPECT_EQ(bcm_field_group_create_id(0, qualifiers, 0, GROUP), 0);
    EXPECT_EQ(host.chip.field_groups.find(GROUP)->qualifiers, (std::set<int>{0, 543}));
}

TEST_F(SdkField, GroupIsRefusedForItsIdAndForWantOfRoom)
{
    EXPECT_EQ(bcm_field_group_create_id(0, {}, 0, -1), -4);
    EXPECT_EQ(bcm_field_group_create_id(0, {}, 0, chip::SUP_GROUP), -8);
    EXPECT_EQ(last_reason(), "field group 1 exists already");
    EXPECT_EQ(bcm_field_group_create_id(1, {}, 0, GROUP), -3);
    EXPECT_EQ(host.chip.field_groups.find(GROUP), nullptr);
    EXPECT_EQ(bcm_field_group_create_id(0, {}, 0, 0), 0);
    for (int group = 100; host.chip.field_groups.size() < 16; ++group) {
        ASSERT_EQ(bcm_field_group_create_id(0, {}, 0, group), 0);
    }
    EXPECT_EQ(bcm_field_group_create_id(0, {}, 0, GROUP), -6);
    EXPECT_EQ(last_reason(), "field group table full: 16 of 16");
    EXPECT_EQ(bcm_field_group_create_id(0, {}, 0, 100), -8); // a full table isn't looked at first
}

TEST_F(SdkField, EntryIsMadeWithoutAMatchAndNotInstalled)
{
    const int entry = made();
    EXPECT_EQ(entry, chip::FIRST_FIELD_ENTRY);
    EXPECT_EQ(last_call(), "bcm_field_entry_create(0, 11) = 0 [entry=8192]");
    EXPECT_EQ(text_of(entry), "group 11 not installed, copy ()");
    EXPECT_EQ(host.wrappers.chip_writes(), 1U) << "the group alone is a write";
}

TEST_F(SdkField, EntryIsRefusedWithoutAGroupAndForWantOfRoom)
{
    Switch small({.limits = {.field_entries = 6}});
    bcm_field_entry_t entry = 77;
    EXPECT_EQ(bcm_field_entry_create(0, GROUP, &entry), -7);
    EXPECT_EQ(small.journal.records().back().reason, "field group 11 does not exist");
    EXPECT_EQ(bcm_field_entry_create(1, chip::SUP_GROUP, &entry), -3);
    EXPECT_EQ(entry, 77U);
    EXPECT_EQ(bcm_field_entry_create(0, chip::SUP_GROUP, &entry), 0);
    EXPECT_EQ(entry, 8192U);
    entry = 77;
    EXPECT_EQ(bcm_field_entry_create(0, chip::SUP_GROUP, &entry), -6);
    EXPECT_EQ(small.journal.records().back().reason, "field entry table full: 6 of 6");
    EXPECT_EQ(bcm_field_entry_create(0, GROUP, &entry), -7); // the group is looked at first
    EXPECT_EQ(entry, 77U);
}

TEST_F(SdkField, L3RoutableCountsWithItsMaskAlone)
{
    const int entry = made();
    EXPECT_EQ(bcm_field_qualify_L3Routable(0, entry, 0, 1), 0);
    EXPECT_EQ(last_call(), "bcm_field_qualify_L3Routable(0, 8192, 0, 1) = 0");
    EXPECT_EQ(text_of(entry), "group 11 not installed, copy (l3-routable 0)");
    EXPECT_EQ(bcm_field_qualify_L3Routable(0, entry, 1, 1), 0);
    EXPECT_EQ(text_of(entry), "group 11 not installed, copy (l3-routable 1)");
    EXPECT_EQ(bcm_field_qualify_L3Routable(0, entry, 1, 0), 0);
    EXPECT_EQ(text_of(entry), "group 11 not installed, copy ()");
}

TEST_F(SdkField, L3RoutableRefusesOtherBitsAndUnknownEntries)
{
    const int entry = made();
    EXPECT_EQ(bcm_field_qualify_L3Routable(0, entry, 2, 1), -4);
    EXPECT_EQ(last_reason(), "data or mask of the L3-routable qualifier 2 is not in 0..1");
    EXPECT_EQ(bcm_field_qualify_L3Routable(0, entry, 0, 255), -4);
    EXPECT_EQ(bcm_field_qualify_L3Routable(0, 9, 0, 1), -7);
    EXPECT_EQ(bcm_field_qualify_L3Routable(1, entry, 0, 1), -3);
    EXPECT_EQ(text_of(entry), "group 11 not installed, copy ()");
}

TEST_F(SdkField, ActionIsAddedOnce)
{
    const int entry = made();
    EXPECT_EQ(bcm_field_action_add(0, entry, chip::ACTION_DROP, 0, 0), 0);
    EXPECT_EQ(last_call(), "bcm_field_action_add(0, 8192, 39, 0x0, 0x0) = 0");
    EXPECT_EQ(bcm_field_action_add(0, entry, chip::ACTION_DROP, 0, 0), -8);
    EXPECT_EQ(last_reason(), "field entry 8192 has action 39 already");
    EXPECT_EQ(bcm_field_action_add(0, 127, chip::ACTION_REDIRECT_PORTS, 0, 0), -8);
    EXPECT_EQ(bcm_field_action_add(0, 9, chip::ACTION_DROP, 0, 0), -7);
    EXPECT_EQ(bcm_field_action_add(1, entry, chip::ACTION_DROP, 0, 0), -3);
    EXPECT_EQ(text_of(entry), "group 11 not installed, copy (action 39)");
}

TEST_F(SdkField, InstallMakesTheCopyTheRule)
{
    const int entry = made();
    bcm_field_action_add(0, entry, chip::ACTION_DROP, 0, 0);
    bcm_field_qualify_InPorts(0, entry, sdk::to_sdk(chip::PortSet{5}),
                              sdk::to_sdk(chip::PortSet{5, 6}));
    const auto writes = host.wrappers.chip_writes();
    EXPECT_FALSE(host.chip.field_entries.find(entry)->installed);
    EXPECT_EQ(bcm_field_entry_install(0, entry), 0);
    EXPECT_EQ(last_call(), "bcm_field_entry_install(0, 8192) = 0");
    EXPECT_EQ(host.wrappers.chip_writes(), writes + 1);
    EXPECT_EQ(text_of(entry), "group 11 installed (in-ports {5}/{5,6} action 39) copy the same");
    bcm_field_qualify_L3Routable(0, entry, 0, 1);
    EXPECT_EQ(text_of(entry), "group 11 installed (in-ports {5}/{5,6} action 39) copy (in-ports "
                              "{5}/{5,6} l3-routable 0 action 39)");
    EXPECT_EQ(bcm_field_entry_install(0, entry), 0);
    EXPECT_EQ(text_of(entry),
              "group 11 installed (in-ports {5}/{5,6} l3-routable 0 action 39) copy the same");
}

TEST_F(SdkField, InstallRefusesUnknownEntriesAndUnits)
{
    EXPECT_EQ(bcm_field_entry_install(0, 9), -7);
    EXPECT_EQ(last_reason(), "field entry 9 does not exist");
    EXPECT_EQ(bcm_field_entry_install(1, 127), -3);
    EXPECT_EQ(host.wrappers.chip_writes(), 0U);
}

} // namespace simswitch
