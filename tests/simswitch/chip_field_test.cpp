/*
 * chip_field_test.cpp: field groups and entries.
 */
#include "chip/chip.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

struct ChipField : testing::Test {
    FieldGroups groups{2};
    FieldEntries entries{8, 128, groups};
};

std::vector<int> ids_of(const FieldEntries &entries)
{
    std::vector<int> ids;
    for (const auto &[id, entry] : entries.all()) {
        ids.push_back(id);
    }
    return ids;
}

} // namespace

TEST_F(ChipField, PlatformEntriesAreThereAtBoot)
{
    EXPECT_EQ(ids_of(entries), (std::vector<int>{120, 123, 124, 125, 127}));
    EXPECT_EQ(text(*entries.find(127)), "group 1 installed (action 32 {1-104}) copy the same");
    EXPECT_EQ(text(*entries.find(123)),
              "group 1 installed (in-ports {1-104}/{0-255} action 32 {1-104}) copy the same");
    for (int without : {125, 127}) {
        EXPECT_FALSE(entries.find(without)->copy.in_ports.has_value()) << without;
    }
}

TEST_F(ChipField, TheyLieAtTheTopOfTheRegion)
{
    EXPECT_EQ(ids_of(Chip(Kind::trident2).field_entries),
              (std::vector<int>{248, 251, 252, 253, 255}));
    EXPECT_EQ(ids_of(Chip(Kind::trident, {.rule_region = 64}).field_entries),
              (std::vector<int>{56, 59, 60, 61, 63}));
}

TEST_F(ChipField, EditReachesTheChipWithTheInstall)
{
    entries.remove_action(127, ACTION_REDIRECT_PORTS);
    entries.add_port_action(127, ACTION_REDIRECT_PORTS, {1, 2});
    EXPECT_EQ(entries.find(127)->installed->port_actions.at(32), PortSet::front());
    EXPECT_THAT(entries.install(127), Done());
    EXPECT_EQ(entries.find(127)->installed->port_actions.at(32), (PortSet{1, 2}));
}

TEST_F(ChipField, ActionMustBeTakenOutBeforeItIsAdded)
{
    EXPECT_THAT(entries.add_port_action(127, 32, {}),
                Refused(-8, "field entry 127 has action 32 already"));
    EXPECT_THAT(entries.remove_action(127, 32), Done());
    EXPECT_THAT(entries.remove_action(127, 32), Refused(-7, "field entry 127 has no action 32"));
    EXPECT_THAT(entries.add_port_action(127, 32, {}), Done());
}

TEST_F(ChipField, QualifierIsReadFromTheCopy)
{
    const InPorts wanted{PortSet{7}, PortSet::all()};
    InPorts read;
    EXPECT_THAT(entries.remove_qualifier(124, QUALIFIER_IN_PORTS), Done());
    EXPECT_THAT(entries.get_in_ports(124, read),
                Refused(-7, "field entry 124 has no qualifier 13"));
    EXPECT_THAT(entries.remove_qualifier(124, 13),
                Refused(-7, "field entry 124 has no qualifier 13"));
    EXPECT_THAT(entries.set_in_ports(124, wanted), Done());
    EXPECT_THAT(entries.get_in_ports(124, read), Done());
    EXPECT_EQ(read, wanted);
}

TEST_F(ChipField, UnknownEntryIsRefusedByEveryOperation)
{
    const auto refused = Refused(-7, "field entry 9 does not exist");
    PortSet ports;
    InPorts in_ports;
    EXPECT_THAT(entries.remove(9), refused);
    EXPECT_THAT(entries.add_port_action(9, 32, {}), refused);
    EXPECT_THAT(entries.add_action(9, ACTION_DROP), refused);
    EXPECT_THAT(entries.remove_action(9, 32), refused);
    EXPECT_THAT(entries.set_in_ports(9, {}), refused);
    EXPECT_THAT(entries.set_l3_routable(9, true), refused);
    EXPECT_THAT(entries.remove_qualifier(9, 13), refused);
    EXPECT_THAT(entries.install(9), refused);
    EXPECT_THAT(entries.get_port_action(9, 32, ports), refused);
    EXPECT_THAT(entries.get_in_ports(9, in_ports), refused);
}

TEST_F(ChipField, NewEntryIsNotInstalled)
{
    int entry = 0;
    EXPECT_THAT(groups.create(11, {0, {QUALIFIER_IN_PORTS, QUALIFIER_L3_ROUTABLE}}), Done());
    EXPECT_THAT(entries.create(11, entry), Done());
    EXPECT_EQ(entry, FIRST_FIELD_ENTRY);
    entries.set_l3_routable(entry, false);
    entries.add_action(entry, ACTION_DROP);
    EXPECT_EQ(text(*entries.find(entry)), "group 11 not installed, copy (l3-routable 0 action 39)");
    entries.install(entry);
    EXPECT_EQ(entries.find(entry)->installed, entries.find(entry)->copy);
}

TEST_F(ChipField, GroupAndEntryTablesRefuseWhenFull)
{
    EXPECT_THAT(groups.create(11, {}), Done());
    EXPECT_THAT(groups.create(11, {}), Refused(-8, "field group 11 exists already"));
    EXPECT_THAT(groups.create(12, {}), Refused(-6, "field group table full: 2 of 2"));
    EXPECT_THAT(groups.remove(12), Refused(-7, "field group 12 does not exist"));
    int entry = 0;
    EXPECT_THAT(entries.create(12, entry), Refused(-7, "field group 12 does not exist"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(entries.create(11, entry), Done());
    }
    EXPECT_THAT(entries.create(11, entry), Refused(-6, "field entry table full: 8 of 8"));
}

} // namespace simswitch::chip
