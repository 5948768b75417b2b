/*
 * rtifhal_kinds.h: add and delete of each kind of routed interface.
 *
 * create nonzero is a first creation, 0 programs the same objects again.
 * destroy nonzero is for good, 0 keeps record and number for a later add with
 * create 0. Nothing is undone after a failure.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_KINDS_H
#define RTIFHAL_KINDS_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Brings a routed port up. For the layer above.
 *
 * @param l3lif   the port; lif_state becomes 3 on success
 * @param create  see above
 * @return 0, also for a port-channel, to which nothing is done, and in restore
 *         mode, in which nothing is programmed; else the failing step's value
 */
RTIFHAL_EXPORT int rtifhal_trident_add_l3port(struct l3lif *l3lif, int create);

/**
 * Takes a routed port down. For the layer above.
 *
 * @param l3lif    the port; lif_state becomes 4
 * @param destroy  see above
 * @return 0, whatever failed
 */
RTIFHAL_EXPORT int rtifhal_trident_del_l3port(struct l3lif *l3lif, int destroy);

/**
 * The interface step of a routed port's add: opens the port for routing,
 * creates the L3 interface, puts the port into VLAN 4094.
 *
 * @param l3lif   the port, may be null
 * @param create  see above
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_add(struct l3lif *l3lif, int create);

/**
 * The interface step of a routed port's delete.
 *
 * @param l3lif    the port, may be null
 * @param destroy  see above
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_del(struct l3lif *l3lif, int destroy);

/**
 * Brings a tunnel interface up, with IPv4 forced on. For the layer above.
 *
 * @param l3lif   the tunnel, its properties set
 * @param create  see above
 * @return 0; else the failing step's value; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_add_l3tun(struct l3lif *l3lif, int create);

/**
 * Takes a tunnel interface down, always for good. For the layer above.
 *
 * @param l3lif    the tunnel
 * @param destroy  only printed
 * @return 0, whatever failed
 */
RTIFHAL_EXPORT int rtifhal_trident_del_l3tun(struct l3lif *l3lif, int destroy);

/**
 * The interface step of a tunnel's add.
 *
 * @param l3lif   the tunnel, may be null
 * @param create  see above
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_l3tun_add(struct l3lif *l3lif, int create);

/**
 * The interface step of a tunnel's delete; clears the tunnel's initiator.
 *
 * @param l3lif    the tunnel, may be null
 * @param destroy  0: only reads the object and changes nothing
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_l3tun_del(struct l3lif *l3lif, int destroy);

#ifdef __cplusplus
}
#endif

#endif
