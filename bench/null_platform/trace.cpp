/*
 * trace.cpp: the null platform's diagnostics, which go nowhere: the stream is closed, the
 * history wants no event and debug output is off. A text is neither printed nor looked at.
 */
#include "calls.h"

#include <fwm/trace.h>
#include <sdk/error.h>
#include <services/cmd.h>
#include <services/debug.h>

#include <cstdarg>

extern "C" {

FILE *dbg_out_file = nullptr;
const char *sdwrap_dbg_modname = "null";
int printf_curr_idx = 0;

const char *const _shr_errmsg[20] = {"code 0",  "code 1",  "code 2",  "code 3",  "code 4",
                                     "code 5",  "code 6",  "code 7",  "code 8",  "code 9",
                                     "code 10", "code 11", "code 12", "code 13", "code 14",
                                     "code 15", "code 16", "code 17", "code 18", "code 19"};

void fwm_ds_trace_add(const char *file, const char *function, int line, int zero,
                      const char *format, ...)
{
    CALLED_WITH_TEXT(fwm_ds_trace_add, format, recording::text(file), recording::text(function),
                     line, zero, recording::text(format));
}

void fwm_ds_add(const char *file, const char *function, int line, const char *format, ...)
{
    CALLED_WITH_TEXT(fwm_ds_add, format, recording::text(file), recording::text(function), line,
                     recording::text(format));
}

const char *fwm_debug_elem_descr(int level)
{
    CALLED(fwm_debug_elem_descr, level);
    return "level";
}

const char *fwm_ctime(void)
{
    CALLED(fwm_ctime);
    return "now";
}

void fwm_check_flush_dbg_out_file(void)
{
    CALLED(fwm_check_flush_dbg_out_file);
}

int sdwrap_hist_event_subtype_check(int type, int subtype)
{
    CALLED(sdwrap_hist_event_subtype_check, type, subtype);
    return 1;
}

void sdwrap_hist_event(int type, int length, const void *record)
{
    CALLED(sdwrap_hist_event, type, length,
           recording::in(record, static_cast<std::size_t>(length)));
}

int sdwrap_chk_int(int level, int a, int b, int c)
{
    CALLED(sdwrap_chk_int, level, a, b, c);
    return 0;
}

void buginf(int kind, const char *modname, int zero, const char *format, ...)
{
    CALLED_WITH_TEXT(buginf, format, kind, recording::text(modname), zero, recording::text(format));
}

int cmd_prt(void *handle, const char *text, int zero)
{
    CALLED(cmd_prt, recording::handle(handle), recording::text(text), zero);
    return 0;
}
}
