/*
 * rtifhal_field.h: the flood lists and in-port sets of the field entries at the top
 * of the rule memory.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_FIELD_H
#define RTIFHAL_FIELD_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gives an entry the redirect ports of the model entry for link-local frames.
 * For the layers above.
 *
 * @param entry  field entry id
 * @return the result of the reinstall, negative on failure
 */
RTIFHAL_EXPORT int rtifhal_update_linklocal_entry(int entry);

/**
 * Takes a port off an entry's redirect ports, or puts it there.
 *
 * @param unit   SDK unit
 * @param entry  field entry id
 * @param l3     nonzero: the port has become L3 and leaves; 0: it joins
 * @param port   SDK port, of which the low 8 bits count
 * @return the result of the reinstall, negative on failure
 */
RTIFHAL_EXPORT int rtifhal_add_remove_port_to_floodlist(int unit, int entry, int l3, int port);

/**
 * Takes a port out of an entry's in-port set, or puts it there.
 *
 * @param unit   SDK unit
 * @param entry  field entry id
 * @param l3     nonzero: the port has become L3 and leaves; 0: it joins
 * @param port   SDK port, of which the low 8 bits count
 * @return the result of the reinstall, negative on failure
 */
RTIFHAL_EXPORT int rtifhal_add_remove_port_from_inports(int unit, int entry, int l3, int port);

/**
 * Tells the field entries that a port has turned L2 or L3. For the L2 side.
 *
 * @param pif  platform interface number of the port
 * @param l2   nonzero: it is L2 now; 0: it is L3
 * @return the result of the last reinstall, negative on failure
 */
RTIFHAL_EXPORT int rtifhal_l2port_fld_chg(int pif, int l2);

#ifdef __cplusplus
}
#endif

#endif
