/*
 * trunk_wrappers_test.cpp: trunks and VLAN translations through the wrappers:
 * what waits for the flush, and what is refused at once.
 */
#include "chip/translation_lookup.h"
#include "switch.h"

#include <array>
#include <gmock/gmock.h>

namespace simswitch
{

namespace
{

using Calls = std::vector<std::string>;

constexpr int TRUNK = 8;
constexpr int PORT_5 = 0x8000005;
constexpr int PORT_6 = 0x8000006;
constexpr int TRUNK_PORT = 0xc000008;

bcm_trunk_member_t member(int gport)
{
    bcm_trunk_member_t made{};
    made.gport = gport;
    return made;
}

struct TrunkWrappers : testing::Test {
    TrunkWrappers()
    {
        int tid = TRUNK;
        bcm_trunk_create(0, 16, &tid);
        host.journal.clear();
    }

    std::string last_reason() const { return host.journal.records().back().reason; }
    std::vector<int> members() const
    {
        std::vector<int> gports;
        for (const auto &each : host.chip.trunks.find(TRUNK)->members) {
            gports.push_back(each.gport);
        }
        return gports;
    }
    /** Adds what the library adds for a subinterface. */
    static int translate(int gport, int outer)
    {
        bcm_vlan_action_set_t action{};
        action.new_outer_vlan = 4094;
        action.ingress_if = 5;
        action.ot_outer = 2;
        return fwmpd_bcm_vlan_translate_action_add(0, gport, 8, outer, 65535, &action);
    }

    Switch host;
};

} // namespace

TEST_F(TrunkWrappers, MembersComeAndGoAtTheFlush)
{
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5)), 0);
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_6)), 0);
    EXPECT_TRUE(members().empty());
    fwmpd_trident_batch_flush();
    EXPECT_EQ(members(), (std::vector{PORT_5, PORT_6}));
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, TRUNK, member(PORT_5)), 0);
    fwmpd_trident_batch_flush();
    EXPECT_EQ(members(), std::vector{PORT_6});
    EXPECT_EQ(host.journal.calls(),
              (Calls{"fwmpd_bcm_trunk_member_add(0, 8, {flags=0x0 gport=0x8000005}) = 0",
                     "fwmpd_bcm_trunk_member_add(0, 8, {flags=0x0 gport=0x8000006}) = 0",
                     "fwmpd_trident_batch_flush() = 0",
                     "fwmpd_bcm_trunk_member_delete(0, 8, {flags=0x0 gport=0x8000005}) = 0",
                     "fwmpd_trident_batch_flush() = 0"}));
}

TEST_F(TrunkWrappers, SetWritesPropertiesAndMembers)
{
    bcm_trunk_info_t info{};
    info.psc = 15;
    info.dynamic_size = 256;
    std::array both = {member(PORT_5), member(PORT_6)};
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, TRUNK, &info, 2, both.data()), 0);
    EXPECT_EQ(host.wrappers.pending_text(), Calls{"trunk 8 write, 2 members"});
    fwmpd_trident_batch_flush();
    EXPECT_EQ(host.chip.trunks.find(TRUNK)->psc, 15);
    EXPECT_EQ(host.chip.trunks.find(TRUNK)->dynamic_size, 256);
    EXPECT_EQ(members(), (std::vector{PORT_5, PORT_6}));
    EXPECT_EQ(host.journal.calls().front(),
              "fwmpd_bcm_trunk_set(0, 8, {flags=0x0 psc=15 ipmc_psc=0 dlf=0 mc=0 ipmc=0 size=256}, "
              "2, [{flags=0x0 gport=0x8000005},{flags=0x0 gport=0x8000006}]) = 0");
}

TEST_F(TrunkWrappers, SetWithoutMembersEmptiesTheTrunk)
{
    bcm_trunk_info_t info{};
    fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5));
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, TRUNK, &info, 0, nullptr), 0);
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, TRUNK, member(PORT_5)), -7);
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
    EXPECT_TRUE(members().empty());
    EXPECT_EQ(host.journal.calls()[1],
              "fwmpd_bcm_trunk_set(0, 8, {flags=0x0 psc=0 ipmc_psc=0 dlf=0 "
              "mc=0 ipmc=0 size=0}, 0, []) = 0");
}

TEST_F(TrunkWrappers, RefusalsQueueNothing)
{
    bcm_trunk_info_t info{};
    bcm_trunk_member_t one = member(PORT_5);
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, 9, one), -7);
    EXPECT_EQ(last_reason(), "trunk 9 does not exist");
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, 9, one), -7);
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, 9, &info, 0, nullptr), -7);
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, TRUNK, one), -7);
    EXPECT_EQ(last_reason(), "trunk 8 has no member 0x8000005");
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, 65536, &info, 0, nullptr), -4);
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, TRUNK, &info, 33, &one), -4);
    EXPECT_EQ(last_reason(), "number of trunk members 33 is not in 0..32");
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, TRUNK, &info, -1, &one), -4);
    EXPECT_EQ(fwmpd_bcm_trunk_set(0, TRUNK, &info, 1, nullptr), -4);
    EXPECT_EQ(last_reason(), "no members given, though their number is 1");
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(1, TRUNK, one), -3);
    EXPECT_EQ(host.wrappers.pending(), 0U);
}

TEST_F(TrunkWrappers, MemberThatOnlyWaitsIsAMemberAlready)
{
    fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5));
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5)), -8);
    EXPECT_EQ(last_reason(), "trunk 8 has member 0x8000005 already");
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, TRUNK, member(PORT_5)), 0);
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5)), 0);
    EXPECT_EQ(host.wrappers.pending_text(),
              (Calls{"trunk 8 add member 0x8000005", "trunk 8 delete member 0x8000005",
                     "trunk 8 add member 0x8000005"}));
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
}

TEST_F(TrunkWrappers, ThirtyThirdMemberIsRefused)
{
    for (int port = 1; port <= 32; ++port) {
        ASSERT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(0x8000000 | port)), 0);
    }
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(0x8000000 | 33)), -6);
    EXPECT_EQ(host.wrappers.pending(), 32U);
}

TEST_F(TrunkWrappers, CacheLearnsWhatTheChipHolds)
{
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, 9, member(PORT_6)), -7);
    int tid = 9;
    bcm_trunk_create(0, 16, &tid);
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, 9, member(PORT_6)), 0);
    host.chip.trunks.create(10, {.members = {{.gport = PORT_5}}});
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, 10, member(PORT_5)), -8);
    host.wrappers.drop_pending();
    host.wrappers.rebuild_caches();
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, 9, member(PORT_6)), -7) << "it never joined";
}

TEST_F(TrunkWrappers, TrunkThatCameAgainIsEmpty)
{
    fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5));
    fwmpd_trident_batch_flush();
    host.chip.trunks.remove(TRUNK);
    EXPECT_EQ(fwmpd_bcm_trunk_member_delete(0, TRUNK, member(PORT_5)), -7);
    host.chip.trunks.create(TRUNK, {});
    EXPECT_EQ(fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5)), 0);
}

TEST_F(TrunkWrappers, TranslationsByPortAndByTrunk)
{
    EXPECT_EQ(translate(PORT_5, 100), 0);
    EXPECT_EQ(translate(TRUNK_PORT, 200), 0);
    fwmpd_bcm_trunk_member_add(0, TRUNK, member(PORT_5));
    EXPECT_EQ(host.chip.vlan_translations.size(), 0U);
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
    const chip::TranslationAction action{
        .new_outer_vlan = 4094, .ingress_if = 5, .outer_tag_action = 2};
    EXPECT_EQ(chip::find_translation(host.chip, 5, 100)->action, action);
    EXPECT_EQ(chip::find_translation(host.chip, 5, 200)->action, action);
    EXPECT_EQ(host.journal.calls().front(),
              "fwmpd_bcm_vlan_translate_action_add(0, 0x8000005, 8, 100, 65535, {vlan=4094 iif=5 "
              "ot_outer=2 dt_outer=0}) = 0");
}

TEST_F(TrunkWrappers, DeleteWithInnerVlan0TakesTheTranslationOut)
{
    translate(TRUNK_PORT, 100);
    EXPECT_EQ(fwmpd_bcm_vlan_translate_action_delete(0, TRUNK_PORT, 8, 100, 0), 0);
    EXPECT_EQ(fwmpd_trident_batch_flush(), 0);
    EXPECT_EQ(host.chip.vlan_translations.size(), 0U);
    EXPECT_EQ(host.journal.calls()[1],
              "fwmpd_bcm_vlan_translate_action_delete(0, 0xc000008, 8, 100, 0) = 0");
}

TEST_F(TrunkWrappers, TranslationsKeyIsCheckedAtOnceTheTableAtTheFlush)
{
    EXPECT_EQ(translate(PORT_5, 4096), -4);
    EXPECT_EQ(translate(5, 100), -4);
    EXPECT_EQ(fwmpd_bcm_vlan_translate_action_delete(0, PORT_5, 8, 65535, 0), -4);
    EXPECT_EQ(host.wrappers.pending(), 0U);
    EXPECT_EQ(fwmpd_bcm_vlan_translate_action_delete(0, PORT_5, 8, 100, 0), 0);
    EXPECT_EQ(fwmpd_trident_batch_flush(), -7);
    translate(PORT_5, 100);
    EXPECT_EQ(translate(PORT_5, 100), 0);
    EXPECT_EQ(fwmpd_trident_batch_flush(), -8);
}

TEST_F(TrunkWrappers, VlanControlOfAPort)
{
    EXPECT_EQ(fwmpd_bcm_vlan_control_port_set(0, 5, 14, 8), 0);
    EXPECT_EQ(host.chip.ports.vlan_control(5, 14), 0);
    fwmpd_trident_batch_flush();
    EXPECT_EQ(host.chip.ports.vlan_control(5, 14), 8);
    EXPECT_EQ(fwmpd_bcm_vlan_control_port_set(0, 256, 14, 8), -4);
    EXPECT_EQ(host.journal.calls().front(), "fwmpd_bcm_vlan_control_port_set(0, 5, 14, 8) = 0");
}

} // namespace simswitch
