/*
 * trace_log_test.cpp: the platform's diagnostic sinks and the system log.
 */
#include "fwm/trace_log.h"

#include "switch.h"

#include <fwm/trace.h>
#include <services/debug.h>

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>

// What the linker puts in the place of syslog in an executable that wraps it.
extern "C" void __wrap_syslog(int priority, const char *format, ...);
extern "C" void __wrap___syslog_chk(int priority, int flag, const char *format, ...);

namespace simswitch::fwm
{

namespace
{

using testing::ElementsAre;

class TraceLogTest : public testing::Test
{
protected:
    Switch sw;
    TraceLog &log = sw.trace;
};

} // namespace

TEST_F(TraceLogTest, TraceIsKeptAtLevel104)
{
    fwm_ds_trace_add("unit", "place", 42, 0, "port %d\n", 7);
    EXPECT_THAT(log.messages(), ElementsAre(Message{104, "unit", "place", 42, "port 7\n"}));
}

TEST_F(TraceLogTest, ErrorIsOneMessageAtLevel102)
{
    fwm_ds_trace_add("unit", "place", 41, 0, "before");
    fwm_ds_trace_add("unit", "place", 42, 0, "port %d", 7);
    fwm_ds_add("unit", "place", 42, "port %d", 7);
    EXPECT_THAT(log.messages(), ElementsAre(Message{104, "unit", "place", 41, "before"},
                                            Message{102, "unit", "place", 42, "port 7"}));
}

TEST_F(TraceLogTest, ErrorOfAnotherPlaceIsAMessageOfItsOwn)
{
    fwm_ds_trace_add("unit", "place", 42, 0, "port");
    fwm_ds_add("unit", "place", 43, "port");
    EXPECT_THAT(log.texts(104), ElementsAre("port"));
    EXPECT_THAT(log.texts(102), ElementsAre("port"));
    EXPECT_EQ(log.messages()[1].line, 43);
}

TEST_F(TraceLogTest, RepeatedErrorIsKeptTwice)
{
    for (int i = 0; i < 2; ++i) {
        fwm_ds_trace_add("unit", "place", 42, 0, "again");
        fwm_ds_add("unit", "place", 42, "again");
    }
    EXPECT_THAT(log.texts(102), ElementsAre("again", "again"));
    EXPECT_TRUE(log.texts(104).empty());
}

TEST_F(TraceLogTest, ErrorsOnlyKeepsEachErrorAndTheLastMessage)
{
    log.errors_only = true;
    fwm_ds_trace_add("unit", "place", 41, 0, "before");
    fwm_ds_trace_add("unit", "place", 42, 0, "first");
    fwm_ds_add("unit", "place", 42, "first");
    fwm_ds_trace_add("unit", "place", 43, 0, "between");
    fwm_ds_trace_add("unit", "place", 44, 0, "second");
    fwm_ds_add("unit", "place", 44, "second");
    fwm_ds_trace_add("unit", "place", 45, 0, "behind");
    fwm_ds_trace_add("unit", "place", 46, 0, "last");
    EXPECT_THAT(log.messages(), ElementsAre(Message{102, "unit", "place", 42, "first"},
                                            Message{102, "unit", "place", 44, "second"},
                                            Message{104, "unit", "place", 46, "last"}));
}

TEST_F(TraceLogTest, LongTextsAreKeptWhole)
{
    for (const std::size_t size : {0U, 255U, 256U, 257U, 5000U}) {
        const std::string text(size, 'x');
        log.clear();
        fwm_ds_trace_add("unit", "place", 1, 0, "%s", text.c_str());
        EXPECT_EQ(log.messages()[0].text, text);
    }
}

TEST_F(TraceLogTest, OldestMessageIsForgottenWhenTheRingIsFull)
{
    for (std::size_t i = 0; i <= TraceLog::CAPACITY; ++i) {
        log.add_trace({.line = static_cast<int>(i)});
    }
    EXPECT_EQ(log.messages().size(), TraceLog::CAPACITY);
    EXPECT_EQ(log.messages().front().line, 1);
}

TEST_F(TraceLogTest, SinksAreRecordedButAreNoCalls)
{
    fwm_ds_trace_add("unit", "place", 42, 0, "port %d\n", 7);
    fwm_ds_add("unit", "place", 42, "port %d\n", 7);
    fwm_ctime();
    EXPECT_TRUE(sw.journal.calls().empty());
    ASSERT_EQ(sw.journal.records().size(), 3U);
    EXPECT_EQ(sw.journal.records()[0].text(),
              R"(fwm_ds_trace_add("unit", "place", 42, 0, "port 7\n"))");
    EXPECT_EQ(sw.journal.records()[1].text(), R"(fwm_ds_add("unit", "place", 42, "port 7\n"))");
    EXPECT_EQ(sw.journal.records()[2].text(), "fwm_ctime() = \"Thu Jan  1 00:00:00 1970\"");
}

TEST_F(TraceLogTest, LevelsHaveTexts)
{
    EXPECT_STREQ(fwm_debug_elem_descr(104), "TRACE");
    EXPECT_STREQ(fwm_debug_elem_descr(102), "ERROR");
}

TEST_F(TraceLogTest, TextsOfTheHostAreNeverNull)
{
    sw.journal.arm({.function = "fwm_ctime"});
    EXPECT_STREQ(fwm_ctime(), "");
}

TEST_F(TraceLogTest, StreamIsFlushed)
{
    char *text = nullptr;
    std::size_t size = 0;
    fwm_check_flush_dbg_out_file();
    dbg_out_file = open_memstream(&text, &size);
    (void)std::fputs("line", dbg_out_file);
    fwm_check_flush_dbg_out_file();
    EXPECT_STREQ(text, "line");
    (void)std::fclose(dbg_out_file);
    dbg_out_file = nullptr;
    std::free(text);
}

TEST_F(TraceLogTest, HistoryTakesEventsWhereItWantsThem)
{
    EXPECT_NE(sdwrap_hist_event_subtype_check(0x730000, 104), 0);
    log.history_wanted = true;
    EXPECT_EQ(sdwrap_hist_event_subtype_check(0x730000, 104), 0);
    struct {
        std::uint32_t level = 102;
        char text[8] = "port";
    } record;
    sdwrap_hist_event(0x730000, 9, &record);
    EXPECT_THAT(log.history(), ElementsAre(HistoryEvent{0x730000, 9, 102, "port"}));
}

TEST_F(TraceLogTest, HistoryRecordIsNotReadBeyondItsLength)
{
    const std::uint32_t level = 104;
    sdwrap_hist_event(1, 4, &level);
    sdwrap_hist_event(1, -1, &level);
    std::array<char, 7> record{};
    std::memcpy(record.data(), &level, sizeof level);
    std::memcpy(record.data() + sizeof level, "abc", 3);
    sdwrap_hist_event(1, 7, record.data());
    EXPECT_EQ(log.history()[0].text, "");
    EXPECT_EQ(log.history()[1].text, "");
    EXPECT_EQ(log.history()[2].text, "abc");
}

TEST_F(TraceLogTest, DebugOutputIsSwitchedOnByItsKnob)
{
    EXPECT_EQ(sdwrap_chk_int(104, 0, 0, 1), 0);
    log.debug_output = true;
    EXPECT_NE(sdwrap_chk_int(104, 0, 0, 1), 0);
    buginf(1, sdwrap_dbg_modname, 0, "port %d", 7);
    EXPECT_THAT(log.debug_texts(), ElementsAre(DebugText{1, "fwm", "port 7"}));
}

TEST_F(TraceLogTest, SystemLogIsKeptAndIsACall)
{
    __wrap_syslog(2, "port %d\n", 7);
    __wrap___syslog_chk(0, 1, "port %d", 8);
    EXPECT_THAT(log.syslog(), ElementsAre(SyslogLine{2, "port 7\n"}, SyslogLine{0, "port 8"}));
    EXPECT_THAT(sw.journal.calls(),
                ElementsAre(R"(syslog(2, "port 7\n"))", R"(syslog(0, "port 8"))"));
}

TEST_F(TraceLogTest, ClearForgetsAllButTheKnobs)
{
    log.debug_output = true;
    fwm_ds_trace_add("unit", "place", 42, 0, "port");
    sdwrap_hist_event(1, 0, nullptr);
    buginf(1, nullptr, 0, "port");
    __wrap_syslog(2, "port");
    log.clear();
    EXPECT_TRUE(log.messages().empty() && log.history().empty() && log.debug_texts().empty() &&
                log.syslog().empty());
    EXPECT_TRUE(log.debug_output);
}

} // namespace simswitch::fwm
