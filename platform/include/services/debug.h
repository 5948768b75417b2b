/*
 * services/debug.h: the system's history of events and its debug output.
 */
#ifndef SERVICES_DEBUG_H
#define SERVICES_DEBUG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The name under which this process writes debug output. */
extern const char *sdwrap_dbg_modname;

/**
 * Tells whether the history wants events of a type.
 *
 * @param type     event type; the library's is 0x730000
 * @param subtype  the trace level, 104 or 102
 * @return 0 when the event is wanted; nonzero when it isn't
 */
int sdwrap_hist_event_subtype_check(int type, int subtype);

/**
 * Records an event.
 *
 * @param type    event type
 * @param length  length of the record in bytes
 * @param record  the level as a 32-bit word, then the text with its zero byte
 */
void sdwrap_hist_event(int type, int length, const void *record);

/**
 * Tells whether debug output of a level is switched on.
 *
 * @param level  the trace level, 104 or 102
 * @param a      0
 * @param b      0
 * @param c      1
 * @return nonzero when it is on
 */
int sdwrap_chk_int(int level, int a, int b, int c);

/**
 * Writes debug output.
 *
 * @param kind     1
 * @param modname  sdwrap_dbg_modname
 * @param zero     0
 * @param format   text with printf conversions, its arguments behind it
 */
void buginf(int kind, const char *modname, int zero, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif

#endif
