/*
 * trace.h: the one trace frame, through which every diagnostic goes, and the
 * texts of SDK codes.
 *
 * TRACE and REPORT stand directly in the function that the message names. A
 * procedure whose body is split into steps uses TRACE_OF and REPORT_OF in its
 * steps, so that an operator always reads the name of the whole operation.
 */
#pragma once

#include <fwm/trace.h>
#include <services/debug.h>
#include <stddef.h>
#include <stdint.h>

/** The source file that a trace point names: one for each of the two units. */
inline constexpr char RTIFHAL_UNIT[] = "asic/forwarding-sw/l3lif/pd_trident/rtifhal_kelvo_trident";
inline constexpr char RTIFHAL_UNIT_PSS[] =
    "asic/forwarding-sw/l3lif/pd_trident/rtifhal_kelvo_trident_pss";

/** Trace levels. */
inline constexpr int LEVEL_TRACE = 104;
inline constexpr int LEVEL_ERROR = 102;

/** Event type of the library in the history. */
inline constexpr int HISTORY_EVENT_TYPE = 0x730000;

/** Where a trace point stands. */
struct trace_point {
    int level;
    const char *file;
    const char *function;
    int line;
};

/**
 * The text of an SDK code.
 *
 * @param rc  the code
 * @return entry -rc of _shr_errmsg for -18..0, entry 19 for any other
 */
const char *rtifhal_errtext(int rc);

/**
 * Hands the text to the history.
 *
 * @param level   trace level
 * @param format  the text, its arguments behind it; cut at 511 characters
 */
void rtifhal_trace_history(int level, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/** Only lets the compiler hold a trace point's arguments against its text. */
int rtifhal_trace_check(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Without optimisation it is a function, so that coverage counts its branches once.
#ifdef __OPTIMIZE__
#define RTIFHAL_IN_PLACE [[gnu::always_inline]] inline
#else
#define RTIFHAL_IN_PLACE inline
#endif

/** Writes a line to the stream, which is open. The point comes in pieces: it needs no memory. */
template <class... Args>
[[gnu::noinline, gnu::cold]] void rtifhal_trace_stream(int point_level, const char *function,
                                                       int line, const char *format, Args... args)
{
    const char *level = fwm_debug_elem_descr(point_level);
    const char *time = fwm_ctime();
    fprintf(dbg_out_file, "[%s]%s: %s(%d): ", time, level, function, line);
    fprintf(dbg_out_file, format, args...);
    fwm_check_flush_dbg_out_file();
}

/**
 * The trace frame: hands one diagnostic to the trace buffer, for errors to the
 * error buffer, to the stream where it is open, to the history and the debug
 * output where they want it. It changes nothing and can't fail.
 *
 * It stands in the code of each trace point: most of what the library does is
 * to trace, and the three calls that always come are then the whole of it.
 */
template <class... Args>
RTIFHAL_IN_PLACE void rtifhal_trace(const trace_point &point, const char *format, Args... args)
{
    fwm_ds_trace_add(point.file, point.function, point.line, 0, format, args...);
    if (point.level == LEVEL_ERROR) {
        fwm_ds_add(point.file, point.function, point.line, format, args...);
    }
    if (dbg_out_file != nullptr) [[unlikely]] {
        rtifhal_trace_stream(point.level, point.function, point.line, format, args...);
    }
    if (sdwrap_hist_event_subtype_check(HISTORY_EVENT_TYPE, point.level) == 0) [[unlikely]] {
        rtifhal_trace_history(point.level, format, args...);
    }
    if (sdwrap_chk_int(point.level, 0, 0, 1) != 0) [[unlikely]] {
        buginf(1, sdwrap_dbg_modname, 0, format, args...);
    }
}

#ifndef RTIFHAL_TRACE_UNIT
#define RTIFHAL_TRACE_UNIT RTIFHAL_UNIT
#endif

#define RTIFHAL_TRACE_POINT(level, function, ...)                                                  \
    do {                                                                                           \
        static_assert(sizeof(rtifhal_trace_check(__VA_ARGS__)) != 0);                              \
        rtifhal_trace(trace_point{level, RTIFHAL_TRACE_UNIT, function, __LINE__}, __VA_ARGS__);    \
    } while (false)

/** A trace, level 104, in the function that it names. */
#define TRACE(...) RTIFHAL_TRACE_POINT(LEVEL_TRACE, __func__, __VA_ARGS__)
/** An error report, level 102, in the function that it names. */
#define REPORT(...) RTIFHAL_TRACE_POINT(LEVEL_ERROR, __func__, __VA_ARGS__)
/** A trace, and an error report, of a procedure that is exported under several names. */
#define TRACE_NAMED(name, ...) RTIFHAL_TRACE_POINT(LEVEL_TRACE, name, __VA_ARGS__)
#define REPORT_NAMED(name, ...) RTIFHAL_TRACE_POINT(LEVEL_ERROR, name, __VA_ARGS__)
/** A trace in a step of `operation`, a declared function. */
#define TRACE_OF(operation, ...)                                                                   \
    RTIFHAL_TRACE_POINT(LEVEL_TRACE, (static_cast<void>(&operation), #operation), __VA_ARGS__)
/** An error report in a step of `operation`, a declared function. */
#define REPORT_OF(operation, ...)                                                                  \
    RTIFHAL_TRACE_POINT(LEVEL_ERROR, (static_cast<void>(&operation), #operation), __VA_ARGS__)
