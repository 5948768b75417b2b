/*
 * rtifhal_diag.h: dumps for the diagnostic command, and a port's way into
 * VLAN 4094 without a routed interface.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_DIAG_H
#define RTIFHAL_DIAG_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Prints the virtual MACs of a routed port. For the diagnostic command.
 *
 * @param command  where to, a line each; null: to the trace
 * @param prefix   what each line begins with
 * @param l3lif    the interface
 * @return 0; -1, reported, for a null interface or one that isn't a port
 */
RTIFHAL_EXPORT int rtifhal_trident_dump_l3lif(void *command, const char *prefix,
                                              const struct l3lif *l3lif);

/**
 * Prints the tables of interface numbers: those that aren't free, then those
 * held back. For the diagnostic command.
 *
 * @param ignored  not looked at
 * @param command  where to; null: to the trace
 */
RTIFHAL_EXPORT void rtifhal_kelvo_dump_global_info(uint32_t ignored, void *command);

/**
 * Prints a bitmap as ranges, such as 1-3,7, in lines of at most 62 characters
 * of list. For the dump above and the diagnostic command.
 *
 * @param bitmap   the bitmap; null prints nothing
 * @param command  where to; null: to the trace
 */
RTIFHAL_EXPORT void fwm_dump_bitmap(const l3iif_bitmap_t *bitmap, void *command);

/**
 * Puts a port into VLAN 4094, untagged, forwarding, as its default VLAN, or
 * takes it out. The uses of the VLAN aren't counted. For the layers above.
 *
 * @param ifindex  the port; what isn't a port isn't noticed
 * @param clear    0: in; nonzero: out
 * @return 0; -1 at the first step that fails, nothing undone
 */
RTIFHAL_EXPORT int rtifhal_init_member_port(uint32_t ifindex, int clear);

#ifdef __cplusplus
}
#endif

#endif
