/*
 * chip_authors_test.cpp: whose request put an entry of the chip there.
 */
#include "chip/chip.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

using Names = std::vector<std::string>;

struct ChipAuthors : testing::Test {
    ChipAuthors() { chip.track_authors(); }

    Chip chip;
};

} // namespace

TEST_F(ChipAuthors, EachOnceInTheOrderOfTheirFirstWrites)
{
    chip.vlans.create(100);
    {
        const Authors::Scope author(chip.authors, "add A");
        chip.vlans.add_ports(100, {5}, {});
        chip.vlans.add_ports(100, {6}, {});
    }
    {
        const Authors::Scope author(chip.authors, "add B");
        chip.vlans.add_ports(100, {7}, {});
    }
    {
        const Authors::Scope author(chip.authors, "add A");
        chip.vlans.set_controls(100, {.flags = 1});
    }
    chip.vlans.set_stg(100, 1);
    EXPECT_EQ(chip.authors.of("vlan", "100"), (Names{"add A", "add B"}));
    EXPECT_EQ(chip.authors.of("vlan", "1"), Names{});
    EXPECT_EQ(chip.authors.of("stg", "100"), Names{});
}

TEST_F(ChipAuthors, OfScopesInEachOtherTheInnerCounts)
{
    const Authors::Scope outer(chip.authors, "outer");
    {
        const Authors::Scope inner(chip.authors, "inner");
        chip.ports.set_untagged_vlan(5, 4094);
    }
    EXPECT_EQ(chip.authors.of("port", "5"), Names{"inner"});
    chip.ports.set_discard(5, 1);
    EXPECT_EQ(chip.authors.of("port", "5"), (Names{"inner", "outer"}));
}

TEST_F(ChipAuthors, WhoPutsAnEntryInAgainBeginsANewList)
{
    const auto write = [this](const std::string &name, auto work) {
        const Authors::Scope author(chip.authors, name);
        EXPECT_THAT(work(), Done());
    };
    const TranslationKey key{module_port(0, 5), KEY_TYPE_PORT_OUTER, 100, ANY_INNER_VLAN};
    // The inner VLAN 0 finds the entry of one tag.
    const TranslationKey found_by{module_port(0, 5), KEY_TYPE_PORT_OUTER, 100, 0};
    const RouteKey prefix = ip4_key(1, 0x0a000000, 0xff000000);
    int egress = 0;
    write("first", [&] { return chip.egresses.create({.interface = 7}, egress); });
    write("first", [&] { return chip.vlan_translations.create(key, {}); });
    write("second", [&] { return chip.vlan_translations.set(found_by, {.ingress_if = 7}); });
    write("first", [&] { return chip.routes.create(prefix, {.next_hop = egress}); });
    write("second", [&] { return chip.routes.set(prefix, {.next_hop = egress}); });
    write("first", [&] { return chip.l3_ingresses.set(7, {}); });
    const std::vector<std::pair<const char *, std::string>> entries = {
        {"vlan_translation", text(key)}, {"route", text(prefix)}, {"l3_ingress", "7"}};
    EXPECT_EQ(chip.authors.of("vlan_translation", text(key)), (Names{"first", "second"}));
    EXPECT_EQ(chip.authors.of("route", "vrf 1 10.0.0.0/8"), (Names{"first", "second"}));
    EXPECT_EQ(chip.authors.of("egress", "100000"), Names{"first"});

    write("third", [&] { return chip.vlan_translations.remove(found_by); });
    write("third", [&] { return chip.routes.remove(prefix); });
    write("third", [&] { return chip.l3_ingresses.remove(7); });
    for (const auto &[table, id] : entries) {
        EXPECT_EQ(chip.authors.of(table, id), Names{}) << table;
    }
    write("fourth", [&] { return chip.vlan_translations.create(key, {}); });
    write("fourth", [&] { return chip.routes.create(prefix, {.next_hop = egress}); });
    write("fourth", [&] { return chip.l3_ingresses.set(7, {}); });
    for (const auto &[table, id] : entries) {
        EXPECT_EQ(chip.authors.of(table, id), Names{"fourth"}) << table;
    }
}

TEST_F(ChipAuthors, APowerCycleForgetsAllAndGoesOnNoting)
{
    const Authors::Scope author(chip.authors, "add A");
    chip.switch_controls.set(230, 1);
    chip.vlans.set_stg(DEFAULT_VLAN, DEFAULT_STG);
    EXPECT_EQ(chip.authors.of("vlan", "1"), Names{"add A"});
    chip.power_cycle();
    EXPECT_EQ(chip.authors.of("vlan", "1"), Names{});
    EXPECT_EQ(chip.authors.of("switch_control", "230"), Names{});
    chip.switch_controls.set(230, 1);
    EXPECT_EQ(chip.authors.of("switch_control", "230"), Names{"add A"});
}

TEST(ChipAuthorsUntracked, NothingIsNoted)
{
    Chip chip;
    const Authors::Scope author(chip.authors, "add A");
    chip.vlans.create(100);
    EXPECT_EQ(chip.authors.of("vlan", "100"), Names{});
    chip.track_authors();
    chip.vlans.set_stg(100, 1);
    EXPECT_EQ(chip.authors.of("vlan", "100"), Names{"add A"});
}

} // namespace simswitch::chip
