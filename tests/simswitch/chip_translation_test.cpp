/*
 * chip_translation_test.cpp: VLAN translations, trunks, and the look-up over
 * both.
 */
#include "chip/chip.h"
#include "chip/translation_lookup.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

TranslationKey key(int outer, int inner)
{
    return {module_port(0, 5), KEY_TYPE_PORT_OUTER, outer, inner};
}

const TranslationAction TO_ROUTED{.new_outer_vlan = 4094, .ingress_if = 3, .outer_tag_action = 2};

} // namespace

TEST(VlanTranslations, DeleteWithInnerVlan0FindsTheSingleTaggedEntry)
{
    VlanTranslations translations(16384);
    EXPECT_THAT(translations.create(key(100, ANY_INNER_VLAN), TO_ROUTED), Done());
    EXPECT_EQ(*translations.find(key(100, 0)), TO_ROUTED);
    EXPECT_THAT(translations.remove(key(100, 0)), Done());
    EXPECT_EQ(translations.size(), 0U);
}

TEST(VlanTranslations, OtherKeysDontMatch)
{
    VlanTranslations translations(16384);
    translations.create(key(100, ANY_INNER_VLAN), TO_ROUTED);
    EXPECT_EQ(translations.find(key(100, 7)), nullptr);
    EXPECT_EQ(translations.find(key(101, 0)), nullptr);
    EXPECT_THAT(translations.remove(key(101, 0)),
                Refused(-7, "VLAN translation gport 0x8000005 type 8 outer 101 inner 0 does not "
                            "exist"));
}

TEST(VlanTranslations, TakenKeyIsRefusedAndSetReplaces)
{
    VlanTranslations translations(16384);
    translations.create(key(100, ANY_INNER_VLAN), TO_ROUTED);
    EXPECT_THAT(translations.create(key(100, ANY_INNER_VLAN), {}),
                Refused(-8, "VLAN translation gport 0x8000005 type 8 outer 100 inner 65535 exists "
                            "already"));
    EXPECT_THAT(translations.set(key(100, 0), {}), Done());
    EXPECT_EQ(*translations.find(key(100, ANY_INNER_VLAN)), TranslationAction{});
    EXPECT_EQ(translations.set(key(200, 0), {}).code, -7);
}

TEST(VlanTranslations, SizeAndRangeAreKept)
{
    VlanTranslations translations(1);
    EXPECT_THAT(translations.create(key(4096, 0), {}),
                Refused(-4, "outer VLAN 4096 is not in 0..4095"));
    EXPECT_THAT(translations.create(key(4095, 4096), {}),
                Refused(-4, "inner VLAN 4096 is not in 0..4095"));
    EXPECT_THAT(translations.create({.gport = 5, .outer_vlan = 1}, {}),
                Refused(-4, "generic port 0x5 is neither a module port nor a trunk"));
    translations.create(key(1, 0), {});
    EXPECT_THAT(translations.create(key(2, 0), {}),
                Refused(-6, "VLAN translation table full: 1 of 1"));
}

TEST(GenericPorts, KindStandsInTheHighBits)
{
    EXPECT_EQ(module_port(0, 5), 0x8000005);
    EXPECT_EQ(module_port(1, 5), 0x8000805);
    EXPECT_EQ(gport_kind(module_port(0, 5)), GPORT_MODULE_PORT);
    EXPECT_EQ(trunk_gport(42), 0xc00002a);
    EXPECT_EQ(gport_kind(trunk_gport(42)), GPORT_TRUNK);
}

TEST(Trunks, MembersComeAndGo)
{
    Trunks trunks(128);
    EXPECT_THAT(trunks.create(42, {.psc = 9}), Done());
    EXPECT_THAT(trunks.add_member(42, {.gport = module_port(0, 5)}), Done());
    EXPECT_THAT(trunks.add_member(42, {.gport = module_port(0, 6)}), Done());
    EXPECT_EQ(text(*trunks.find(42)), "psc 9 flags 0x0 members 0x8000005 0x8000006");
    EXPECT_THAT(trunks.remove_member(42, module_port(0, 5)), Done());
    Trunk read;
    EXPECT_THAT(trunks.get(42, read), Done());
    EXPECT_EQ(read.members, (std::vector<TrunkMember>{{.gport = module_port(0, 6)}}));
}

TEST(Trunks, AtMost32Members)
{
    Trunks trunks(128);
    trunks.create(1, {.members = std::vector<TrunkMember>(32)});
    EXPECT_THAT(trunks.add_member(1, {.gport = 7}),
                Refused(-6, "trunk member table full: 32 of 32"));
    EXPECT_THAT(trunks.set(1, {.members = std::vector<TrunkMember>(33)}),
                Refused(-4, "number of trunk members 33 is not in 0..32"));
}

TEST(Trunks, Refusals)
{
    Trunks trunks(1);
    Trunk untouched{.psc = 5};
    EXPECT_THAT(trunks.get(42, untouched), Refused(-7, "trunk 42 does not exist"));
    EXPECT_EQ(untouched.psc, 5);
    EXPECT_THAT(trunks.remove(42), Refused(-7, "trunk 42 does not exist"));
    EXPECT_THAT(trunks.create(65536, {}), Refused(-4, "trunk 65536 is not in 0..65535"));
    trunks.create(42, {});
    EXPECT_THAT(trunks.create(42, {}), Refused(-8, "trunk 42 exists already"));
    EXPECT_THAT(trunks.create(43, {}), Refused(-6, "trunk table full: 1 of 1"));
    EXPECT_THAT(trunks.remove_member(42, 7), Refused(-7, "trunk 42 has no member 0x7"));
    trunks.add_member(42, {.gport = 7});
    EXPECT_THAT(trunks.add_member(42, {.gport = 7}),
                Refused(-8, "trunk 42 has member 0x7 already"));
}

namespace
{

/** Ports 5 and 6 are in trunk 42. */
struct TranslationLookup : testing::Test {
    TranslationLookup()
    {
        chip.trunks.create(
            42, {.members = {{.gport = module_port(0, 5)}, {.gport = module_port(0, 6)}}});
    }

    TranslationKey add(int gport, int outer, int ingress_if)
    {
        const TranslationKey added{gport, KEY_TYPE_PORT_OUTER, outer, ANY_INNER_VLAN};
        chip.vlan_translations.create(added, {.new_outer_vlan = 4094, .ingress_if = ingress_if});
        return added;
    }

    Chip chip;
};

} // namespace

TEST_F(TranslationLookup, TrunksEntryHoldsForEachMember)
{
    const TranslationKey added = add(trunk_gport(42), 100, 3);
    for (const int port : {5, 6}) {
        const auto found = find_translation(chip, port, 100);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->key, added);
        EXPECT_EQ(found->action.ingress_if, 3);
    }
    EXPECT_FALSE(find_translation(chip, 7, 100)) << "port 7 is in no trunk";
    EXPECT_FALSE(find_translation(chip, 5, 101));
}

TEST_F(TranslationLookup, PortsOwnEntryGoesBeforeTheTrunks)
{
    add(trunk_gport(42), 100, 3);
    const TranslationKey own = add(module_port(0, 5), 100, 4);
    EXPECT_EQ(find_translation(chip, 5, 100)->key, own);
    EXPECT_EQ(find_translation(chip, 6, 100)->action.ingress_if, 3);
}

TEST_F(TranslationLookup, MemberThatLeftTheTrunkLosesItsTranslation)
{
    add(trunk_gport(42), 100, 3);
    chip.trunks.remove_member(42, module_port(0, 5));
    EXPECT_FALSE(find_translation(chip, 5, 100));
    EXPECT_TRUE(find_translation(chip, 6, 100));
}

TEST_F(TranslationLookup, PortInTwoTrunksCountsToTheLowest)
{
    chip.trunks.create(7, {.members = {{.gport = module_port(0, 5)}}});
    EXPECT_EQ(chip.trunks.trunk_of(module_port(0, 5)), 7);
    EXPECT_EQ(chip.trunks.trunk_of(module_port(0, 6)), 42);
    EXPECT_EQ(chip.trunks.trunk_of(module_port(0, 8)), std::nullopt);
}

} // namespace simswitch::chip
