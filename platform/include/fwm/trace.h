/*
 * fwm/trace.h: where the forwarding manager takes diagnostics.
 *
 * Every trace point goes to the trace buffer; errors go to the error buffer
 * too; where the stream is open, a line goes there.
 */
#ifndef FWM_TRACE_H
#define FWM_TRACE_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The stream for diagnostics, or null; opened and closed by the host. */
extern FILE *dbg_out_file;

/**
 * Adds a trace point to the trace buffer.
 *
 * @param file      source file
 * @param function  function that the trace point stands in
 * @param line      source line
 * @param zero      0
 * @param format    text with printf conversions, its arguments behind it
 */
void fwm_ds_trace_add(const char *file, const char *function, int line, int zero,
                      const char *format, ...) __attribute__((format(printf, 5, 6)));

/**
 * Adds an error to the error buffer.
 *
 * @param file      source file
 * @param function  function that the trace point stands in
 * @param line      source line
 * @param format    text with printf conversions, its arguments behind it
 */
void fwm_ds_add(const char *file, const char *function, int line, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

/**
 * Gives the text of a trace level.
 *
 * @param level  104 trace, 102 error
 * @return the text, never null, the host's own
 */
const char *fwm_debug_elem_descr(int level);

/**
 * Gives the present time as text for the stream's prefix.
 *
 * @return the text, without a line end, never null, the host's own
 */
const char *fwm_ctime(void);

/** Flushes the stream where the host wants it flushed, after each line written. */
void fwm_check_flush_dbg_out_file(void);

#ifdef __cplusplus
}
#endif

#endif
