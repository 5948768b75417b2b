/*
 * pipeline_l2_table_test.cpp: learned and static L2 addresses.
 */
#include "chip/pipeline/l2_table.h"
#include "outcome_matchers.h"
#include "pipeline_frames.h"

#include <fmt/format.h>

namespace simswitch::chip::pipeline
{

namespace
{

constexpr Mac FIRST = {0, 0, 0, 0, 0, 1};
constexpr Mac SECOND = {0, 0, 0, 0, 0, 2};
constexpr Mac GROUP = {1, 0, 0x5e, 0, 1, 1};

} // namespace

TEST(PipelineL2, LearnsAndMoves)
{
    L2Table table;
    EXPECT_EQ(table.find(100, FIRST), nullptr);
    EXPECT_TRUE(table.learn(100, FIRST, 5));
    EXPECT_TRUE(table.learn(100, FIRST, 6));
    ASSERT_NE(table.find(100, FIRST), nullptr);
    EXPECT_EQ(table.find(100, FIRST)->gport, 6);
    EXPECT_EQ(table.find(101, FIRST), nullptr);
    EXPECT_EQ(table.size(), 1U);
}

TEST(PipelineL2, LearnsNoGroupAndNoVlanOutOfRange)
{
    L2Table table;
    EXPECT_FALSE(table.learn(100, GROUP, 5));
    EXPECT_FALSE(table.learn(0, FIRST, 5));
    EXPECT_FALSE(table.learn(4096, FIRST, 5));
    EXPECT_EQ(table.size(), 0U);
}

TEST(PipelineL2, AFullTableLearnsNothingNewButStillMoves)
{
    L2Table table(1);
    EXPECT_TRUE(table.learn(100, FIRST, 5));
    EXPECT_FALSE(table.learn(100, SECOND, 5));
    EXPECT_EQ(table.find(100, SECOND), nullptr);
    EXPECT_TRUE(table.learn(100, FIRST, 6));
    EXPECT_THAT(table.add_static(100, SECOND, 7), Refused(-6, "L2 address table full: 1 of 1"));
    EXPECT_THAT(table.add_static(100, FIRST, 7), Done());
}

TEST(PipelineL2, StaticOnesStay)
{
    L2Table table;
    EXPECT_THAT(table.add_static(100, FIRST, 5), Done());
    EXPECT_FALSE(table.learn(100, FIRST, 6));
    table.learn(100, SECOND, 5);
    table.flush();
    EXPECT_EQ(table.find(100, FIRST)->gport, 5);
    EXPECT_EQ(table.find(100, SECOND), nullptr);
    EXPECT_THAT(table.remove(100, FIRST), Done());
    EXPECT_THAT(table.remove(100, FIRST),
                Refused(-7, "L2 address 00:00:00:00:00:01 in VLAN 100 does not exist"));
}

TEST(PipelineL2, Groups)
{
    L2Table table;
    EXPECT_THAT(table.add_group(100, GROUP, {5, 6}), Done());
    EXPECT_EQ(*table.find_group(100, GROUP), (PortSet{5, 6}));
    EXPECT_EQ(table.find_group(101, GROUP), nullptr);
    EXPECT_THAT(table.remove(100, GROUP), Done());
    EXPECT_EQ(table.find_group(100, GROUP), nullptr);
}

TEST(PipelineL2, Refusals)
{
    L2Table table;
    EXPECT_THAT(table.add_static(100, GROUP, 5),
                Refused(-4, "01:00:5e:00:01:01 is a group address"));
    EXPECT_THAT(table.add_group(100, FIRST, {5}),
                Refused(-4, "00:00:00:00:00:01 is no group address"));
    EXPECT_THAT(table.add_static(4096, FIRST, 5), Refused(-4, "VLAN 4096 is not in 1..4095"));
}

TEST(PipelineL2, FlushOfOnePort)
{
    L2Table table;
    table.learn(100, FIRST, 5);
    table.learn(100, SECOND, 6);
    table.flush(5);
    EXPECT_EQ(table.find(100, FIRST), nullptr);
    EXPECT_NE(table.find(100, SECOND), nullptr);
}

TEST(PipelineL2, ListsInTheOrderOfVlanAndMac)
{
    L2Table table;
    table.learn(101, FIRST, 7);
    table.learn(100, SECOND, 6);
    table.learn(100, FIRST, 5);
    std::vector<std::string> lines;
    for (const L2Entry &entry : table.all()) {
        lines.push_back(fmt::format("{} {} {}", entry.vlan(), text(entry.mac()), entry.gport));
    }
    EXPECT_THAT(lines, testing::ElementsAre("100 00:00:00:00:00:01 5", "100 00:00:00:00:00:02 6",
                                            "101 00:00:00:00:00:01 7"));
}

TEST(PipelineL2, ManyComingAndGoingAreAllFound)
{
    L2Table table(64);
    std::map<int, int> expected;
    Numbers random(11);
    for (int i = 0; i < 20000; ++i) {
        const auto number = static_cast<int>(random() % 100);
        const Mac mac = {0, 0, 0, 0, 0, static_cast<std::uint8_t>(number)};
        if (random() % 2 == 0) {
            const bool fits = expected.contains(number) || expected.size() < 64;
            ASSERT_EQ(table.learn(7, mac, i), fits);
            if (fits) {
                expected[number] = i;
            }
        } else {
            ASSERT_EQ(table.remove(7, mac).ok(), expected.erase(number) == 1);
        }
        ASSERT_EQ(table.size(), expected.size());
    }
    for (const auto &[number, gport] : expected) {
        const L2Entry *entry = table.find(7, {0, 0, 0, 0, 0, static_cast<std::uint8_t>(number)});
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->gport, gport);
    }
    EXPECT_EQ(table.all().size(), expected.size());
}

} // namespace simswitch::chip::pipeline
