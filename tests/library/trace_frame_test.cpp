/*
 * trace_frame_test.cpp: the trace frame: where each diagnostic goes and in
 * which order, and the texts of SDK codes.
 *
 * The frame is driven directly, and through functions that trace on an
 * ordinary day: giving a number back that isn't taken traces once and reports
 * once.
 */
#include "support/library_test.h"
#include "support/lif.h"

#include "rtifhal_kelvo_trident/frame/trace.h"

#include <sdk/error.h>

#include <climits>
#include <cstdio>

namespace rtifhal_test::trace_frame
{

namespace
{

constexpr int FREE_NUMBER = 0x1f3;
const std::string LONG_TEXT(600, 'x');

/** A stream without a buffer that keeps each write, and the sink called last before it. */
class WatchedStream
{
public:
    struct Write {
        std::string text;
        std::string after_sink;
    };

    explicit WatchedStream(const simswitch::Journal &journal) : journal_(journal)
    {
        cookie_io_functions_t functions = {};
        functions.write = [](void *self, const char *text, size_t size) {
            static_cast<WatchedStream *>(self)->keep({text, size});
            return static_cast<ssize_t>(size);
        };
        dbg_out_file = fopencookie(this, "w", functions);
        setvbuf(dbg_out_file, nullptr, _IONBF, 0);
    }
    ~WatchedStream()
    {
        fclose(dbg_out_file);
        dbg_out_file = nullptr;
    }
    WatchedStream(const WatchedStream &) = delete;
    WatchedStream &operator=(const WatchedStream &) = delete;

    std::vector<std::string> texts() const
    {
        std::vector<std::string> texts;
        for (const auto &write : writes) {
            texts.push_back(write.text);
        }
        return texts;
    }

    std::vector<Write> writes;

private:
    void keep(std::string text)
    {
        writes.push_back({std::move(text), journal_.records().back().function});
    }

    const simswitch::Journal &journal_;
};

class TraceFrame : public LibraryTest
{
protected:
    /** One point of that level, in a file, function and line of its own, with the text "id 7". */
    void point(int level) const { rtifhal_trace({level, "file", "place", 42}, "id %d", 7); }

    void want_all()
    {
        sw.trace.history_wanted = true;
        sw.trace.debug_output = true;
    }

    /** The names of the sinks called, in order. */
    std::vector<std::string> sinks() const
    {
        std::vector<std::string> names;
        for (const auto &record : sw.journal.records()) {
            EXPECT_TRUE(record.trace_sink) << record.function;
            names.push_back(record.function);
        }
        return names;
    }

    /** The arguments of the one call of a sink. */
    std::string arguments_of(const std::string &sink) const
    {
        std::string arguments = "not called";
        for (const auto &record : sw.journal.records()) {
            if (record.function == sink) {
                EXPECT_EQ(arguments, "not called") << sink << " is called twice";
                arguments = record.arguments;
            }
        }
        return arguments;
    }

    void expect_sinks(const std::vector<std::string> &expected) const
    {
        EXPECT_EQ(sinks(), expected);
    }
};

using Sinks = std::vector<std::string>;

} // namespace

TEST_F(TraceFrame, TraceThatNobodyWantsOnlyReachesTheBuffer)
{
    point(LEVEL_TRACE);
    expect_sinks({"fwm_ds_trace_add", "sdwrap_hist_event_subtype_check", "sdwrap_chk_int"});
    EXPECT_TRUE(sw.trace.history().empty());
    EXPECT_TRUE(sw.trace.debug_texts().empty());
}

TEST_F(TraceFrame, ErrorReachesTheErrorBufferRightAfterTheTraceBuffer)
{
    point(LEVEL_ERROR);
    expect_sinks(
        {"fwm_ds_trace_add", "fwm_ds_add", "sdwrap_hist_event_subtype_check", "sdwrap_chk_int"});
}

TEST_F(TraceFrame, ErrorThatAllWantGoesThroughTheSinksInOrder)
{
    want_all();
    const WatchedStream stream(sw.journal);
    point(LEVEL_ERROR);
    expect_sinks({"fwm_ds_trace_add", "fwm_ds_add", "fwm_debug_elem_descr", "fwm_ctime",
                  "fwm_check_flush_dbg_out_file", "sdwrap_hist_event_subtype_check",
                  "sdwrap_hist_event", "sdwrap_chk_int", "buginf"});
}

TEST_F(TraceFrame, TraceThatAllWantGoesThroughTheSameSinksButTheErrorBuffer)
{
    want_all();
    const WatchedStream stream(sw.journal);
    point(LEVEL_TRACE);
    expect_sinks({"fwm_ds_trace_add", "fwm_debug_elem_descr", "fwm_ctime",
                  "fwm_check_flush_dbg_out_file", "sdwrap_hist_event_subtype_check",
                  "sdwrap_hist_event", "sdwrap_chk_int", "buginf"});
}

TEST_F(TraceFrame, BothBuffersGetPlaceAndText)
{
    point(LEVEL_ERROR);
    EXPECT_EQ(arguments_of("fwm_ds_trace_add"), "\"file\", \"place\", 42, 0, \"id 7\"");
    EXPECT_EQ(arguments_of("fwm_ds_add"), "\"file\", \"place\", 42, \"id 7\"");
    ASSERT_EQ(sw.trace.messages().size(), 1U);
    const simswitch::fwm::Message expected = {102, "file", "place", 42, "id 7"};
    EXPECT_EQ(sw.trace.messages()[0], expected);
}

TEST_F(TraceFrame, LevelIsHandedToWhoAsksForIt)
{
    want_all();
    for (const int level : {LEVEL_TRACE, LEVEL_ERROR}) {
        start();
        const WatchedStream stream(sw.journal);
        point(level);
        const std::string text = std::to_string(level);
        EXPECT_EQ(arguments_of("fwm_debug_elem_descr"), text);
        EXPECT_EQ(arguments_of("sdwrap_hist_event_subtype_check"),
                  std::to_string(0x730000) + ", " + text);
        EXPECT_EQ(arguments_of("sdwrap_chk_int"), text + ", 0, 0, 1");
    }
}

TEST_F(TraceFrame, StreamGetsPrefixAndTextInTwoWritesBeforeTheFlush)
{
    const std::string prefix =
        std::string("[") + fwm_ctime() + "]" + fwm_debug_elem_descr(LEVEL_TRACE) + ": place(42): ";
    const WatchedStream stream(sw.journal);
    point(LEVEL_TRACE);
    EXPECT_EQ(stream.texts(), (std::vector<std::string>{prefix, "id 7"}));
    ASSERT_EQ(stream.writes.size(), 2U);
    EXPECT_EQ(stream.writes[0].after_sink, "fwm_ctime");
    EXPECT_EQ(stream.writes[1].after_sink, "fwm_ctime");
}

TEST_F(TraceFrame, StreamPrefixOfAnErrorBearsItsLevel)
{
    const std::string prefix =
        std::string("[") + fwm_ctime() + "]" + fwm_debug_elem_descr(LEVEL_ERROR) + ": place(42): ";
    EXPECT_STRNE(fwm_debug_elem_descr(LEVEL_ERROR), fwm_debug_elem_descr(LEVEL_TRACE));
    const WatchedStream stream(sw.journal);
    point(LEVEL_ERROR);
    EXPECT_EQ(stream.texts(), (std::vector<std::string>{prefix, "id 7"}));
}

TEST_F(TraceFrame, StreamGetsTheWholeOfALongText)
{
    const WatchedStream stream(sw.journal);
    rtifhal_trace({LEVEL_TRACE, "file", "place", 42}, "%s", LONG_TEXT.c_str());
    ASSERT_EQ(stream.writes.size(), 2U);
    EXPECT_EQ(stream.writes[1].text, LONG_TEXT);
}

TEST_F(TraceFrame, HistoryIsWantedAtResultZeroOnly)
{
    for (const int answer : {-1, 1, 256, INT_MIN}) {
        start();
        fail("sdwrap_hist_event_subtype_check", answer);
        point(LEVEL_ERROR);
        EXPECT_EQ(arguments_of("sdwrap_hist_event"), "not called") << answer;
    }
    start();
    fail("sdwrap_hist_event_subtype_check", 0);
    point(LEVEL_ERROR);
    EXPECT_NE(arguments_of("sdwrap_hist_event"), "not called");
}

TEST_F(TraceFrame, DebugOutputIsWantedAtAnyOtherResultThanZero)
{
    for (const int answer : {-1, 1, 256, INT_MIN}) {
        start();
        fail("sdwrap_chk_int", answer);
        point(LEVEL_TRACE);
        EXPECT_NE(arguments_of("buginf"), "not called") << answer;
    }
    start();
    fail("sdwrap_chk_int", 0);
    point(LEVEL_TRACE);
    EXPECT_EQ(arguments_of("buginf"), "not called");
}

TEST_F(TraceFrame, DebugOutputIsWrittenUnderTheProcessesName)
{
    sw.trace.debug_output = true;
    point(LEVEL_TRACE);
    EXPECT_EQ(arguments_of("buginf"),
              std::string("1, \"") + sdwrap_dbg_modname + "\", 0, \"id 7\"");
    const std::vector<simswitch::fwm::DebugText> expected = {{1, sdwrap_dbg_modname, "id 7"}};
    EXPECT_EQ(sw.trace.debug_texts(), expected);
}

TEST_F(TraceFrame, HistoryEventHoldsLevelAndText)
{
    sw.trace.history_wanted = true;
    point(LEVEL_ERROR);
    point(LEVEL_TRACE);
    const std::vector<simswitch::fwm::HistoryEvent> expected = {{0x730000, 9, 102, "id 7"},
                                                                {0x730000, 9, 104, "id 7"}};
    EXPECT_EQ(sw.trace.history(), expected);
}

TEST_F(TraceFrame, HistoryTextIsCutAt511Characters)
{
    sw.trace.history_wanted = true;
    for (const int size : {0, 510, 511, 512, 600}) {
        start();
        rtifhal_trace({LEVEL_TRACE, "file", "place", 42}, "%.*s", size, LONG_TEXT.c_str());
        const int cut = std::min(size, 511);
        ASSERT_EQ(sw.trace.history().size(), 1U);
        EXPECT_EQ(sw.trace.history()[0].text, std::string(static_cast<std::size_t>(cut), 'x'));
        EXPECT_EQ(sw.trace.history()[0].length, cut + 5);
    }
}

TEST_F(TraceFrame, OtherSinksGetTheWholeOfALongText)
{
    sw.trace.debug_output = true;
    rtifhal_trace({LEVEL_ERROR, "file", "place", 42}, "%s", LONG_TEXT.c_str());
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(messages()[0].text, LONG_TEXT);
    ASSERT_EQ(sw.trace.debug_texts().size(), 1U);
    EXPECT_EQ(sw.trace.debug_texts()[0].text, LONG_TEXT);
}

TEST_F(TraceFrame, EveryMessageOfAFunctionGoesThroughTheFrame)
{
    want_all();
    l3iif_table_init();
    start();
    const WatchedStream stream(sw.journal);
    EXPECT_EQ(rtifhal_free_l3iif(FREE_NUMBER, 0), -1);
    expect_messages({trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
                     report("rtifhal_free_l3iif", " Invalid l3iif_index = 1f3\n")});
    ASSERT_EQ(stream.writes.size(), 4U);
    EXPECT_EQ(stream.writes[3].text, " Invalid l3iif_index = 1f3\n");
    ASSERT_EQ(sw.trace.history().size(), 2U);
    EXPECT_EQ(sw.trace.history()[0].level, 104U);
    EXPECT_EQ(sw.trace.history()[1].level, 102U);
    EXPECT_EQ(sw.trace.debug_texts().size(), 2U);
}

// The points above are this file's own; here the library's are asked.
TEST_F(TraceFrame, PointOfTheLibraryHandsTheSameWordsOn)
{
    want_all();
    l3iif_table_init();
    start();
    l3iif_table_init();
    ASSERT_EQ(sw.trace.messages().size(), 1U);
    const simswitch::fwm::Message &message = sw.trace.messages()[0];
    const std::string quoted = R"(" l3iif_table_init called with :1 \n")";
    EXPECT_EQ(arguments_of("fwm_ds_trace_add"), "\"" + message.file + "\", \"l3iif_table_init\", " +
                                                    std::to_string(message.line) + ", 0, " +
                                                    quoted);
    EXPECT_EQ(arguments_of("sdwrap_chk_int"), "104, 0, 0, 1");
    EXPECT_EQ(arguments_of("buginf"),
              std::string("1, \"") + sdwrap_dbg_modname + "\", 0, " + quoted);
}

TEST_F(TraceFrame, SourceFileIsThePathOfTheUnit)
{
    const std::string unit = "asic/forwarding-sw/l3lif/pd_trident/rtifhal_kelvo_trident";
    l3iif_table_init();
    rtifhal_trident_rmac_del(12345);
    for (const auto &message : sw.trace.messages()) {
        EXPECT_EQ(message.file, unit);
    }
    sw.trace.clear();
    rtifhal_trident_l3port_add_pss(port(5)->get());
    ASSERT_EQ(sw.trace.messages().size(), 1U);
    EXPECT_EQ(sw.trace.messages()[0].file, unit + "_pss");
}

TEST_F(TraceFrame, LineIsThePointsOwn)
{
    l3iif_table_init();
    start();
    rtifhal_free_l3iif(FREE_NUMBER, 0);
    ASSERT_EQ(sw.trace.messages().size(), 2U);
    EXPECT_GT(sw.trace.messages()[0].line, 0);
    EXPECT_NE(sw.trace.messages()[0].line, sw.trace.messages()[1].line);
}

TEST(ErrorText, CodesFrom0DownToMinus18HaveEntriesOfTheirOwn)
{
    for (int code = 0; code >= -18; --code) {
        EXPECT_EQ(rtifhal_errtext(code), _shr_errmsg[-code]) << code;
    }
}

TEST(ErrorText, EveryOtherCodeHasEntry19)
{
    for (const int code : {-19, -20, 1, 2, 18, 19, -1000, INT_MAX, INT_MAX - 17, INT_MAX - 18,
                           INT_MAX - 1, INT_MIN, INT_MIN + 1, INT_MIN + 18, 0x7FFFFFED}) {
        EXPECT_EQ(rtifhal_errtext(code), _shr_errmsg[19]) << code;
    }
}

class SmallHelpers : public LibraryTest
{
};

TEST_F(SmallHelpers, ModuleIdOfAUnitIsTheUnit)
{
    for (const int unit : {0, 3, -1}) {
        int modid = 99;
        EXPECT_EQ(rtifhal_bcm_stk_my_modid_get(unit, &modid), 0);
        EXPECT_EQ(modid, unit);
    }
    expect_calls({});
}

TEST_F(SmallHelpers, QosMapIsAlways0)
{
    EXPECT_EQ(rtifhal_get_qosmap_id(), 0);
    expect_calls({});
}

TEST_F(SmallHelpers, InterfaceIsDeletedOnceItsRecordSaysSo)
{
    const auto live = port(5);
    const auto parked = port(6);
    live->with_record(7);
    parked->with_parked(8);
    for (const auto is_deleted : {rtifhal_is_lif_deleted, rtifhal_trident_del_subint_deleted}) {
        EXPECT_EQ(is_deleted(live->get()), 0);
        parked->record()->brcm_prog_complete = 1;
        EXPECT_NE(is_deleted(parked->get()), 0);
        parked->record()->brcm_prog_complete = 0x80000000;
        EXPECT_NE(is_deleted(parked->get()), 0);
    }
    expect_calls({});
    expect_messages({});
}

TEST_F(SmallHelpers, InterfaceWithoutRecordContextOrPointerIsNotDeleted)
{
    const auto without_context = port(5);
    const auto without_record = port(6);
    without_record->with_bare_context();
    for (const auto is_deleted : {rtifhal_is_lif_deleted, rtifhal_trident_del_subint_deleted}) {
        EXPECT_EQ(is_deleted(nullptr), 0);
        EXPECT_EQ(is_deleted(without_context->get()), 0);
        EXPECT_EQ(is_deleted(without_record->get()), 0);
    }
    expect_calls({});
    expect_messages({});
}

} // namespace rtifhal_test::trace_frame
