/*
 * l3pc_trunk_test.cpp: a port joins a port-channel's trunk: which trunks are
 * created, what an existing one is told, what the chip may refuse.
 *
 * l3pc_road_test.cpp has the road that this is a part of.
 */
#include "support/member_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::l3pc_trunk
{

namespace
{

using namespace member_road;

const std::string STEP = "rtifhal_alloc_l3pc_add";
const std::string MEMBER_ADD = "fwmpd_bcm_trunk_member_add";

Message entered(int create)
{
    return trace(STEP, fmt::format("tid = 8 tport = 5 create = {}\n", create));
}

/** What stands before the creation of a trunk, the normal one too. */
Messages creating()
{
    return {
        trace(STEP, "BAD BAD BAD BAD BAD \n"),
        report(STEP, "calling bcm_trunk_create_id(unit=0, tid=8)\n"),
    };
}

Message get_failed(const char *text)
{
    return report(STEP, fmt::format("bcm_trunk_get(unit=0, tid=8) failed: {}\n", text));
}

Message member_add_failed(const char *text)
{
    return report(STEP, fmt::format("bcm_trunk_member_add failed for TRUNK 8 PORT 5: {}\n", text));
}

class TrunkJoin : public LibraryTest
{
protected:
    explicit TrunkJoin(const simswitch::Options &options = {}) : LibraryTest(options) {}

    /** Trunk 8 is in the chip, with those members. */
    void trunk_with(const std::vector<int> &ports)
    {
        simswitch::chip::Trunk trunk = {.psc = 9};
        for (const int port : ports) {
            trunk.members.push_back({.gport = 0x8000000 | port});
        }
        ASSERT_TRUE(sw.chip.trunks.create(TRUNK, trunk).ok());
    }
    std::string last_call() const { return calls().empty() ? std::string() : calls().back(); }
};

class TrunkJoinOnTrident2 : public TrunkJoin
{
protected:
    TrunkJoinOnTrident2() : TrunkJoin({.chip = Kind::trident2}) {}
};

} // namespace

TEST_F(TrunkJoin, FirstMemberCreatesTheTrunkWithItsId)
{
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    expect_calls(trunk_created(Kind::trident, FIRST));
    expect_messages(join({Messages{entered(1)}, creating()}));
}

TEST_F(TrunkJoinOnTrident2, FirstMemberCreatesTheTrunkWithADynamicSize)
{
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    expect_calls(trunk_created(Kind::trident2, FIRST));
    expect_messages(join({Messages{entered(1)}, creating()}));
}

TEST_F(TrunkJoinOnTrident2, ChipHasTheTrunkAfterTheRequest)
{
    rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1);
    sw.end_request();
    const simswitch::chip::Trunk *trunk = sw.chip.trunks.find(TRUNK);
    ASSERT_NE(trunk, nullptr);
    EXPECT_EQ(trunk->psc, 15);
    EXPECT_EQ(trunk->dynamic_size, 256);
    ASSERT_EQ(trunk->members.size(), 1U);
    EXPECT_EQ(trunk->members[0].gport, 0x8000005);
}

TEST_F(TrunkJoin, AnyNonzeroCreateIsOne)
{
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, -2), 0);
    expect_calls(trunk_created(Kind::trident, FIRST));
}

TEST_F(TrunkJoin, MissingTrunkIsNotCreatedWithoutCreate)
{
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), -7);
    expect_calls({"bcm_trunk_info_t_init()", called::flush(), "bcm_trunk_get(0, 8, 32) = -7"});
    expect_messages(join({Messages{entered(0)}, creating()}));
}

TEST_F(TrunkJoin, RefusedCreationHandsItsCodeUp)
{
    fail("bcm_trunk_create", -6);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), -6);
    EXPECT_EQ(last_call(), "bcm_trunk_create(0, 0x10, 8) = -6");
    expect_reports({creating()[1], report(STEP, fmt::format("bcm_trunk_create_id(8) failed: {}\n",
                                                            _shr_errmsg[6]))});
}

TEST_F(TrunkJoin, CreationThatAnswersPositivelyGoesOn)
{
    fail("bcm_trunk_create", 1);
    fail("fwmpd_bcm_trunk_set", 0);
    fail(MEMBER_ADD, 0);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    expect_reports({creating()[1]});
}

TEST_F(TrunkJoin, TrunkThatIsThereAfterAllCountsAsNewAndLosesItsMembers)
{
    trunk_with({9});
    fail("bcm_trunk_get", -7);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    EXPECT_EQ(calls_of({"bcm_trunk_create", "fwmpd_bcm_trunk_set", MEMBER_ADD}),
              (Calls{"bcm_trunk_create(0, 0x10, 8) = -8",
                     "fwmpd_bcm_trunk_set(0, 8, " + trunk_info(Kind::trident) + ", 0, []) = 0",
                     MEMBER_ADD + "(0, 8, " + member_of_trunk(FIRST) + ") = 0"}));
    expect_reports({creating()[1]});
    sw.end_request();
    ASSERT_EQ(sw.chip.trunks.find(TRUNK)->members.size(), 1U);
    EXPECT_EQ(sw.chip.trunks.find(TRUNK)->members[0].gport, 0x8000005);
}

TEST_F(TrunkJoin, RefusedPropertiesAreReportedAndTheMemberIsAdded)
{
    fail("fwmpd_bcm_trunk_set", -4);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    EXPECT_EQ(last_call(), MEMBER_ADD + "(0, 8, " + member_of_trunk(FIRST) + ") = 0");
    expect_reports({creating()[1], report(STEP, fmt::format("bcm_trunk_set(8) failed(create): {}\n",
                                                            _shr_errmsg[4]))});
}

TEST_F(TrunkJoin, PropertiesThatAnswerPositivelyAreNoRefusal)
{
    fail("fwmpd_bcm_trunk_set", 1);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    expect_reports({creating()[1]});
}

TEST_F(TrunkJoin, TrunkThatCantBeReadHandsItsCodeUp)
{
    for (const int create : {0, 1}) {
        start();
        fail("bcm_trunk_get", -4);
        EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, create), -4);
        EXPECT_EQ(last_call(), "bcm_trunk_get(0, 8, 32) = -4");
        expect_messages({entered(create), get_failed(_shr_errmsg[4])});
    }
}

TEST_F(TrunkJoin, ExistingTrunkIsReportedAsAFailureWithTheTextOfSuccessOnCreate)
{
    trunk_with({9});
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    expect_messages({entered(1), get_failed(_shr_errmsg[0])});
    EXPECT_EQ(last_call(), MEMBER_ADD + "(0, 8, " + member_of_trunk(FIRST) + ") = 0");
    EXPECT_EQ(calls_of({"bcm_trunk_create", "fwmpd_bcm_trunk_set"}), Calls{});
}

TEST_F(TrunkJoin, TrunkReadWithAPositiveAnswerIsReportedWithThatText)
{
    fail("bcm_trunk_get", 5);
    fail(MEMBER_ADD, 0);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1), 0);
    expect_reports({get_failed(_shr_errmsg[19])});
}

TEST_F(TrunkJoin, TrunkReadWithAPositiveAnswerIsJoinedInSilenceWithoutCreate)
{
    fail("bcm_trunk_get", 5);
    fail(MEMBER_ADD, 0);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    expect_messages({entered(0)});
}

TEST_F(TrunkJoin, ExistingTrunkIsJoinedInSilenceWithoutCreate)
{
    trunk_with({9});
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    expect_calls(trunk_joined(Kind::trident, FIRST, {9}));
    expect_messages({entered(0)});
}

TEST_F(TrunkJoin, MemberThatIsInTheTrunkIsAddedAgain)
{
    trunk_with({FIRST});
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    EXPECT_EQ(last_call(), MEMBER_ADD + "(0, 8, " + member_of_trunk(FIRST) + ") = -8");
    expect_messages({entered(0), member_add_failed(_shr_errmsg[8])});
}

TEST_F(TrunkJoin, MemberOfAnEmptyGportIsNotTakenForTheNewOne)
{
    simswitch::chip::Trunk trunk;
    trunk.members.push_back({.gport = 0});
    ASSERT_TRUE(sw.chip.trunks.create(TRUNK, trunk).ok());
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    EXPECT_EQ(sw.journal.count(MEMBER_ADD), 1U);
    expect_messages({entered(0)});
}

TEST_F(TrunkJoin, FullTrunkIsReportedOnly)
{
    std::vector<int> ports;
    for (int port = 11; port < 43; ++port) {
        ports.push_back(port);
    }
    trunk_with(ports);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    expect_messages({entered(0), member_add_failed(_shr_errmsg[6])});
}

TEST_F(TrunkJoin, RefusedMemberIsReportedOnly)
{
    trunk_with({9});
    fail(MEMBER_ADD, -4);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    expect_messages({entered(0), member_add_failed(_shr_errmsg[4])});
}

TEST_F(TrunkJoin, MemberThatAnswersPositivelyIsReportedToo)
{
    trunk_with({9});
    fail(MEMBER_ADD, 1);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 0), 0);
    expect_messages({entered(0), member_add_failed(_shr_errmsg[19])});
}

TEST_F(TrunkJoin, ModulePortHoldsTheUnitAndElevenBitsOfThePort)
{
    fail("bcm_trunk_get", 0);
    fail(MEMBER_ADD, 0);
    EXPECT_EQ(rtifhal_alloc_l3pc_add(3, TRUNK, 2048 + 9, 0), 0);
    EXPECT_EQ(last_call(), MEMBER_ADD + "(3, 8, {flags=0x0 gport=0x8001809}) = 0");
}

TEST_F(TrunkJoin, QueuedMembersAreSeenWhenTheNextOneJoins)
{
    rtifhal_alloc_l3pc_add(0, TRUNK, FIRST, 1);
    start();
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, TRUNK, SECOND, 0), 0);
    expect_calls(trunk_joined(Kind::trident, SECOND, {FIRST}));
}

TEST_F(TrunkJoin, MessagesShowTheIdInHexAndInDecimal)
{
    EXPECT_EQ(rtifhal_alloc_l3pc_add(0, 26, FIRST, 0), -7);
    EXPECT_EQ(messages().at(0), trace(STEP, "tid = 1a tport = 5 create = 0\n"));
    expect_reports({report(STEP, "calling bcm_trunk_create_id(unit=0, tid=26)\n")});
}

TEST_F(TrunkJoin, MemberEntriesOnlyTrace)
{
    const auto main = port_channel(7);
    EXPECT_EQ(rtifhal_trident_add_l3pc_member(main->get(), 0x10400000, 2), 0);
    EXPECT_EQ(rtifhal_trident_del_l3pc_member(main->get(), 0x10400000), 0);
    expect_calls({});
    const std::string add = "rtifhal_trident_add_l3pc_member";
    const std::string del = "rtifhal_trident_del_l3pc_member";
    expect_messages({
        trace(add, "\n" + add + ": L3LIF: 0x20007000, 0x10400000, 2\n"),
        trace(del, "\n" + del + ": L3LIF: 0x20007000, 0x10400000\n"),
    });
}

TEST_F(TrunkJoin, MemberEntriesRefuseNoInterface)
{
    EXPECT_EQ(rtifhal_trident_add_l3pc_member(nullptr, 0x10400000, 2), -1);
    EXPECT_EQ(rtifhal_trident_del_l3pc_member(nullptr, 0x10400000), -1);
    expect_calls({});
    expect_messages({});
}

} // namespace rtifhal_test::l3pc_trunk
