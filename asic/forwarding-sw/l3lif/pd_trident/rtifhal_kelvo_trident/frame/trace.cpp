/*
 * trace.cpp: the texts of SDK codes, and the history's record of a diagnostic.
 *
 * The frame itself is in trace.h: the platform's sinks take a text with its
 * arguments, which only the place of the trace point knows.
 */
#include "frame/trace.h"

#include <sdk/error.h>
#include <stdarg.h>

namespace
{

/** Lowest code with a text of its own, negated. */
constexpr uint32_t LAST_TEXT = 18;
/** Entry of all other codes. */
constexpr uint32_t TEXT_OF_OTHERS = 19;

/** The level word and the text's zero byte. */
constexpr int HISTORY_OVERHEAD = 5;

struct history_record {
    uint32_t level;
    char text[512];
};

} // namespace

const char *rtifhal_errtext(int rc)
{
    const uint32_t above_lowest = static_cast<uint32_t>(rc) + LAST_TEXT;
    return _shr_errmsg[above_lowest <= LAST_TEXT ? LAST_TEXT - above_lowest : TEXT_OF_OTHERS];
}

void rtifhal_trace_history(int level, const char *format, ...)
{
    history_record record;
    record.level = static_cast<uint32_t>(level);

    va_list arguments;
    va_start(arguments, format);
    const int full_length = vsnprintf(record.text, sizeof record.text, format, arguments);
    va_end(arguments);

    const int room = static_cast<int>(sizeof record.text) - 1;
    const int length = full_length < room ? full_length : room;
    sdwrap_hist_event(HISTORY_EVENT_TYPE, length + HISTORY_OVERHEAD, &record);
}
