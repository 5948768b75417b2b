/*
 * rtifhal_field.h: the flood lists and in-port sets of the field entries at the top
 * of the rule memory, and the rule that drops what isn't L3-routable.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_FIELD_H
#define RTIFHAL_FIELD_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#include <stddef.h>

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
 * Takes a port off an entry's redirect ports, or puts it there. For
 * rtifhal_l2port_fld_chg and the VLAN operations.
 *
 * @param unit   SDK unit
 * @param entry  field entry id
 * @param l3     nonzero: the port has become L3 and leaves; 0: it joins
 * @param port   SDK port, of which the low 8 bits count
 * @return the result of the reinstall, negative on failure
 */
RTIFHAL_EXPORT int rtifhal_add_remove_port_to_floodlist(int unit, int entry, int l3, int port);

/**
 * Takes a port out of an entry's in-port set, or puts it there. For
 * rtifhal_l2port_fld_chg and the VLAN operations.
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

/**
 * Drops what comes in on a port and isn't L3-routable. The rule is made with
 * the first port; later ones are folded into it, in the data alone. For
 * callers outside; a port never leaves.
 *
 * @param unit  SDK unit, of every field call
 * @param port  SDK port; one outside 0..255 has no place in the rule
 * @return 0; -1 at the first step that fails, reported, nothing undone
 */
RTIFHAL_EXPORT int rtifhal_install_ifp_drop(int unit, int port);

/**
 * Does nothing: a port never leaves the drop rule. For callers outside.
 *
 * @param unit  not looked at
 * @param port  not looked at
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_rm_ifp_drop(int unit, int port);

/**
 * Fills memory. For the drop rule's qualifier set.
 *
 * @param destination  where to
 * @param byte         the byte, of which the low 8 bits count
 * @param count        bytes; 0 writes nothing
 * @return the destination
 */
RTIFHAL_EXPORT void *sal_memset(void *destination, int byte, size_t count);

#ifdef __cplusplus
}
#endif

#endif
