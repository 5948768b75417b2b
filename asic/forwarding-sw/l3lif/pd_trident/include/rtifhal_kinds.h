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

#include <sdk/l3.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Brings a routed port up. For the layer above.
 *
 * @param l3lif   the port; lif_state becomes 3 on success
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0, also for a port-channel, to which nothing is done, and in restore
 *         mode, in which nothing is programmed; else the failing step's value
 */
RTIFHAL_EXPORT int rtifhal_trident_add_l3port(struct l3lif *l3lif, int create);

/**
 * Takes a routed port down. For the layer above.
 *
 * @param l3lif    the port; lif_state becomes 4
 * @param destroy  nonzero: for good; 0: record and number stay
 * @return 0, whatever failed
 */
RTIFHAL_EXPORT int rtifhal_trident_del_l3port(struct l3lif *l3lif, int destroy);

/**
 * The interface step of a routed port's add: opens the port for routing,
 * creates the L3 interface, puts the port into VLAN 4094. For
 * rtifhal_trident_add_l3port.
 *
 * @param l3lif   the port, may be null
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_add(struct l3lif *l3lif, int create);

/**
 * The interface step of a routed port's delete. For rtifhal_trident_del_l3port.
 *
 * @param l3lif    the port, may be null
 * @param destroy  nonzero: for good; 0: record and number stay
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_del(struct l3lif *l3lif, int destroy);

/**
 * Brings a member of a routed port-channel up. For the layer above.
 *
 * @param l3lif   the member; its main_l3lif is the port-channel. lif_state of
 *                both becomes 3, whatever failed
 * @param create  nonzero: a first creation, with the first member; 0: the same
 *                objects again
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_trident_add_l3pc(struct l3lif *l3lif, int create);

/**
 * Takes a member of a routed port-channel down, unless its lif_state is other
 * than 3. For the layer above.
 *
 * @param l3lif    the member; lif_state of it and its main_l3lif becomes 4 on
 *                 success
 * @param destroy  nonzero: for good, with the last member; 0: record and
 *                 number stay
 * @return 0, also when there was nothing to do; else the failing step's value;
 *         -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_del_l3pc(struct l3lif *l3lif, int destroy);

/**
 * The interface step of a member's add: joins the trunk, opens the port,
 * creates the L3 interface with the first member, joins VLAN 4094, and replays
 * the subinterfaces that the port-channel has already. For
 * rtifhal_trident_add_l3pc.
 *
 * @param l3lif   the member, may be null
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0; -1 or the failing step's own value
 */
RTIFHAL_EXPORT int rtifhal_trident_l3pc_add(struct l3lif *l3lif, int create);

/**
 * Puts a port into a trunk, which is created where it is missing. For the
 * member's add.
 *
 * @param unit    SDK unit
 * @param tid     trunk id
 * @param port    SDK port of the member
 * @param create  nonzero: a missing trunk is created
 * @return 0, also when the port was refused; -7 for a missing trunk with
 *         create 0; else the SDK's code
 */
RTIFHAL_EXPORT int rtifhal_alloc_l3pc_add(int unit, int tid, int port, int create);

/**
 * The interface step of a member's delete. The trunk itself stays. For
 * rtifhal_trident_del_l3pc.
 *
 * @param l3lif    the member, may be null
 * @param destroy  nonzero: for good; 0: record and number stay
 * @return 0; -1 or the failing step's own value
 */
RTIFHAL_EXPORT int rtifhal_trident_l3pc_del(struct l3lif *l3lif, int destroy);

/**
 * Only traces: membership follows the member's own add. For the layer above.
 *
 * @param l3lif   the port-channel
 * @param member  ifindex of the member
 * @param flag    only printed
 * @return 0; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_add_l3pc_member(struct l3lif *l3lif, uint32_t member, int flag);

/**
 * Only traces: membership follows the member's own delete. For the layer above.
 *
 * @param l3lif   the port-channel
 * @param member  ifindex of the member
 * @return 0; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_del_l3pc_member(struct l3lif *l3lif, uint32_t member);

/**
 * Brings an SVI up: routing in its VLAN. For the layer above.
 *
 * @param l3lif   the SVI; si_encap_vlan and vlan are its VLAN. lif_state isn't
 *                kept
 * @param aux     only printed and handed on
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0; else the failing step's value; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_add_svi(struct l3lif *l3lif, int aux, int create);

/**
 * Takes an SVI down. For the layer above.
 *
 * @param l3lif    the SVI
 * @param aux      only printed and handed on
 * @param destroy  nonzero: for good; 0: record and number stay; one that was
 *                 taken down before is then destroyed
 * @return 0; else the failing step's value; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_del_svi(struct l3lif *l3lif, int aux, int destroy);

/**
 * The interface step of an SVI's add: opens the VLAN for routing, creates the
 * L3 interface and the ingress object, mirrors onto the secondaries of a
 * primary VLAN. For rtifhal_trident_add_svi.
 *
 * @param l3lif   the SVI, may be null
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return what the ingress object's create gave, whatever else failed; -1
 *         before that: no context, or no record of the VLAN
 */
RTIFHAL_EXPORT int rtifhal_trident_svi_add(struct l3lif *l3lif, int create);

/**
 * The interface step of an SVI's delete. For rtifhal_trident_del_svi.
 *
 * @param l3lif    the SVI, may be null
 * @param destroy  nonzero: for good; 0: record and number stay
 * @return what the L3 interface's delete gave; -1 before that: no context, no
 *         record of the VLAN, or a chip that has the number on another VLAN
 */
RTIFHAL_EXPORT int rtifhal_trident_svi_del(struct l3lif *l3lif, int destroy);

/**
 * Brings a subinterface of a port or a port-channel up. For the layer above.
 *
 * @param l3lif   the subinterface; lif_state becomes 3 on success
 * @param aux     only printed and handed on
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0; else the failing step's value; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_add_subint(struct l3lif *l3lif, int aux, int create);

/**
 * Takes a subinterface down. For the layer above.
 *
 * @param l3lif    the subinterface; lif_state becomes 4 on success
 * @param aux      only printed and handed on
 * @param destroy  nonzero: for good; 0: record and number stay; one that was
 *                 taken down before is then destroyed
 * @return 0; else the failing step's value; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_trident_del_subint(struct l3lif *l3lif, int aux, int destroy);

/**
 * The interface step of a subinterface's add, on its port or on each member of
 * its port-channel. For rtifhal_trident_add_subint.
 *
 * @param l3lif   the subinterface, may be null
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0, also for a port-channel without members; -1 at the first step
 *         that fails
 */
RTIFHAL_EXPORT int rtifhal_trident_subint_add(struct l3lif *l3lif, int create);

/**
 * The add on one port. For rtifhal_trident_subint_add.
 *
 * @param l3lif         the subinterface
 * @param port          SDK port
 * @param gport         the trunk's generic port; 0 on a physical port
 * @param intf          what the L3 interface starts from; a copy of this call's
 * @param intf_created  nonzero: an earlier member has made the L3 interface
 * @param create        nonzero: a first creation; 0: the same objects again
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_trident_subint_add_int(struct l3lif *l3lif, int port, bcm_gport_t gport,
                                                  bcm_l3_intf_t intf, int intf_created, int create);

/**
 * The interface step of a subinterface's delete. For
 * rtifhal_trident_del_subint.
 *
 * @param l3lif    the subinterface, may be null
 * @param destroy  nonzero: for good; 0: record and number stay
 * @return what the last port's delete gave; -1, or the port look-up's value
 */
RTIFHAL_EXPORT int rtifhal_trident_subint_del(struct l3lif *l3lif, int destroy);

/**
 * rtifhal_trident_subint_del under a second name, for callers outside the
 * library; its messages bear this name.
 *
 * @param l3lif    the subinterface, may be null
 * @param destroy  nonzero: for good; 0: record and number stay
 * @return as rtifhal_trident_subint_del
 */
RTIFHAL_EXPORT int rtifhal_subint_del(struct l3lif *l3lif, int destroy);

/**
 * The delete on one port. For rtifhal_trident_subint_del.
 *
 * @param l3lif        the subinterface
 * @param port         SDK port
 * @param gport        the trunk's generic port; 0 on a physical port
 * @param intf         the L3 interface as it was read
 * @param do_intf_del  nonzero: this port's delete takes the L3 interface away
 * @param destroy      nonzero: for good; 0: record and number stay
 * @return 0; -1 when the translation or the VLAN couldn't be left
 */
RTIFHAL_EXPORT int rtifhal_trident_subint_del_int(struct l3lif *l3lif, int port, bcm_gport_t gport,
                                                  bcm_l3_intf_t intf, int do_intf_del, int destroy);

/**
 * Gives a port the controls of its main interface back, when the last
 * subinterface goes. For the subinterface's delete.
 *
 * @param ifindex  the subinterface
 * @param port     SDK port
 * @return the last control's code; 0 where there is nothing to do
 */
RTIFHAL_EXPORT int rtifhal_subint_restore_port_l3(uint32_t ifindex, int port);

/**
 * Brings a tunnel interface up, with IPv4 forced on. For the layer above.
 *
 * @param l3lif   the tunnel, its properties set
 * @param create  nonzero: a first creation; 0: the same objects again
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
 * The interface step of a tunnel's add. For rtifhal_trident_add_l3tun.
 *
 * @param l3lif   the tunnel, may be null
 * @param create  nonzero: a first creation; 0: the same objects again
 * @return 0; -1 at the first step that fails
 */
RTIFHAL_EXPORT int rtifhal_l3tun_add(struct l3lif *l3lif, int create);

/**
 * The interface step of a tunnel's delete; clears the tunnel's initiator. For
 * rtifhal_trident_del_l3tun.
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
