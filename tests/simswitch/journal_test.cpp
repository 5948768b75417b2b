/*
 * journal_test.cpp: the list of calls, its lines, and the injected faults.
 */
#include "journal/call.h"
#include "switch.h"

#include <services/system.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

using testing::ElementsAre;

/** A platform function of this test's own: takes a port, gives twice the port. */
int probe(int port)
{
    Call call(Layer::sdk, __func__, 0, port);
    return call.run([&] { return 2 * port; });
}

int probe_refusing(int port)
{
    Call call(Layer::wrapper, __func__, port);
    return call.run([&]() -> Outcome { return {ERROR_FULL, "table full: 512 of 512"}; });
}

int *probe_pointer(int *pointer)
{
    Call call(Layer::service, __func__);
    return call.run_pointer([&] { return pointer; });
}

void probe_sink(const char *text)
{
    Call call(TraceSink{}, __func__, text);
    call.run_void([] {});
}

class JournalTest : public testing::Test
{
protected:
    Switch sw;
    Journal &journal = sw.journal;
};

} // namespace

TEST_F(JournalTest, CallsAreKeptInOrderWithArgumentsAndResult)
{
    probe(5);
    probe_refusing(6);
    EXPECT_THAT(journal.calls(), ElementsAre("probe(0, 5) = 10", "probe_refusing(6) = -6"));
}

TEST_F(JournalTest, CallsFromAnIndexOn)
{
    probe(1);
    const std::size_t from = journal.records().size();
    probe(2);
    EXPECT_THAT(journal.calls(from), ElementsAre("probe(0, 2) = 4"));
    EXPECT_TRUE(journal.calls(from + 1).empty());
}

TEST_F(JournalTest, OutputsFollowTheResultInBrackets)
{
    Call call(Layer::sdk, "get", 0);
    call.run([&] {
        call.out("id", 7);
        call.out("flags", std::uint32_t{0x40});
        return 0;
    });
    EXPECT_THAT(journal.calls(), ElementsAre("get(0) = 0 [id=7 flags=0x40]"));
}

TEST_F(JournalTest, VoidCallHasNoResult)
{
    Call call(Layer::sdk, "init");
    call.run_void([] {});
    EXPECT_THAT(journal.calls(), ElementsAre("init()"));
}

TEST_F(JournalTest, PointersArePrintedAsRecordOrNull)
{
    int record = 0;
    EXPECT_EQ(probe_pointer(&record), &record);
    EXPECT_EQ(probe_pointer(nullptr), nullptr);
    EXPECT_THAT(journal.calls(), ElementsAre("probe_pointer() = record", "probe_pointer() = null"));
}

TEST_F(JournalTest, TraceSinksAreRecordedButAreNoCalls)
{
    probe_sink("hello");
    EXPECT_TRUE(journal.calls().empty());
    ASSERT_EQ(journal.records().size(), 1U);
    EXPECT_TRUE(journal.records()[0].trace_sink);
    EXPECT_EQ(journal.records()[0].text(), "probe_sink(\"hello\")");
}

TEST_F(JournalTest, CountIsPerFunction)
{
    probe(1);
    probe(2);
    probe_refusing(3);
    EXPECT_EQ(journal.count("probe"), 2U);
    EXPECT_EQ(journal.count("prob"), 0U);
}

TEST_F(JournalTest, ClearForgetsRecordsButNumbersGoOn)
{
    probe(1);
    journal.clear();
    EXPECT_TRUE(journal.records().empty());
    probe(2);
    EXPECT_EQ(journal.records()[0].sequence, 2U);
}

TEST_F(JournalTest, KeepingTheRequestForgetsEarlierOnesAndTheSinks)
{
    journal.keep(Keep::request);
    probe(1);
    journal.begin_request("add Ethernet0");
    probe_sink("hello");
    probe(2);
    EXPECT_THAT(journal.calls(), ElementsAre("probe(0, 2) = 4"));
    ASSERT_EQ(journal.records().size(), 1U);
    EXPECT_EQ(journal.records()[0].sequence, 3U) << "numbers go on as if all were kept";
    EXPECT_EQ(journal.records()[0].request, 1U);
}

TEST_F(JournalTest, CallsAreCountedWhateverIsKept)
{
    probe(1);
    probe_sink("hello");
    journal.keep(Keep::request);
    probe(2);
    journal.begin_request("add Ethernet0");
    probe(3);
    probe_sink("hello");
    EXPECT_EQ(journal.calls_made(), 3U);
}

TEST_F(JournalTest, FaultsHitSinksAndCallsWhateverIsKept)
{
    journal.keep(Keep::request);
    journal.arm({.function = "probe_sink"});
    journal.arm({.function = "probe", .code = -6, .nth = 2});
    probe_sink("hello");
    ASSERT_EQ(journal.records().size(), 1U);
    EXPECT_EQ(journal.records()[0].reason, "injected");
    journal.begin_request("add Ethernet0");
    EXPECT_EQ(probe(1), 2);
    journal.begin_request("add Ethernet4");
    EXPECT_EQ(probe(1), -6);
}

TEST_F(JournalTest, LineHasSequenceLayerTextReasonAndRequest)
{
    probe(1);
    EXPECT_EQ(journal.begin_request("add Ethernet0"), 1U);
    probe_refusing(2);
    EXPECT_EQ(journal.line(journal.records()[0]), "000001 sdk      probe(0, 1) = 2");
    EXPECT_EQ(journal.line(journal.records()[1]),
              "000002 wrapper  probe_refusing(2) = -6  (table full: 512 of 512)  "
              "#1 add Ethernet0");
}

TEST_F(JournalTest, RequestsAreNumberedFrom1)
{
    EXPECT_EQ(journal.begin_request("first"), 1U);
    EXPECT_EQ(journal.begin_request("second"), 2U);
    EXPECT_EQ(journal.request_name(2), "second");
    EXPECT_EQ(journal.request_name(0), "");
    EXPECT_EQ(journal.request_name(3), "");
}

TEST_F(JournalTest, FaultHitsTheNthCallOnce)
{
    journal.arm({.function = "probe", .code = -7, .nth = 2});
    EXPECT_EQ(probe(1), 2);
    probe_refusing(1);
    EXPECT_EQ(probe(2), -7);
    EXPECT_EQ(probe(3), 6);
    EXPECT_THAT(journal.calls(), ElementsAre("probe(0, 1) = 2", "probe_refusing(1) = -6",
                                             "probe(0, 2) = -7", "probe(0, 3) = 6"));
    EXPECT_EQ(journal.records()[2].reason, "injected");
}

TEST_F(JournalTest, FaultForeverHitsFromTheNthCallOn)
{
    journal.arm({.function = "probe", .code = -7, .nth = 2, .forever = true});
    EXPECT_EQ(probe(1), 2);
    EXPECT_EQ(probe(1), -7);
    EXPECT_EQ(probe(1), -7);
    journal.disarm();
    EXPECT_EQ(probe(1), 2);
}

TEST_F(JournalTest, FaultByPredicateCountsOnlyTheCallsThatItLikes)
{
    journal.arm({.function = "probe", .code = -1, .nth = 2, .when = [](std::string_view arguments) {
                     return arguments == "0, 5";
                 }});
    EXPECT_EQ(probe(5), 10);
    EXPECT_EQ(probe(6), 12);
    EXPECT_EQ(probe(5), -1);
}

TEST_F(JournalTest, FaultOfAnyFunctionPassesTheTraceSinksBy)
{
    journal.arm({.code = -2, .nth = 2});
    EXPECT_EQ(probe(1), 2);
    probe_sink("not counted");
    EXPECT_EQ(probe_refusing(1), -2);
}

TEST_F(JournalTest, FaultByNameReachesATraceSinkToo)
{
    journal.arm({.function = "probe_sink"});
    probe_sink("lost");
    EXPECT_EQ(journal.records()[0].reason, "injected");
}

TEST_F(JournalTest, EarlierFaultWinsAndBothCount)
{
    journal.arm({.function = "probe", .code = -1});
    journal.arm({.function = "probe", .code = -2, .nth = 2});
    EXPECT_EQ(probe(1), -1);
    EXPECT_EQ(probe(1), -2);
    EXPECT_EQ(probe(1), 2);
}

TEST_F(JournalTest, FaultMakesAPointerNull)
{
    int record = 0;
    journal.arm({.function = "probe_pointer", .code = 0});
    EXPECT_EQ(probe_pointer(&record), nullptr);
    EXPECT_EQ(probe_pointer(&record), &record);
}

TEST_F(JournalTest, FaultsStayOverAClear)
{
    journal.arm({.function = "probe", .code = -9, .nth = 2});
    probe(1);
    journal.clear();
    EXPECT_EQ(probe(1), -9);
}

TEST(CurrentSwitch, IsTheOneMadeLastThatStillLives)
{
    EXPECT_EQ(Switch::find_current(), nullptr);
    auto first = std::make_unique<Switch>();
    EXPECT_EQ(Switch::find_current(), first.get());
    auto second = std::make_unique<Switch>();
    sysmgr_is_fastboot_restart();
    EXPECT_EQ(first->journal.records().size(), 0U);
    EXPECT_EQ(second->journal.records().size(), 1U);
    first.reset();
    EXPECT_EQ(Switch::find_current(), second.get());
    second.reset();
    EXPECT_EQ(Switch::find_current(), nullptr);
}

TEST(CurrentSwitchDeathTest, CallWithoutASwitchEndsWithAMessage)
{
    EXPECT_DEATH(sysmgr_is_fastboot_restart(), "without an embedded switch");
}

} // namespace simswitch
