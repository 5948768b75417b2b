/*
 * l3port_roads.h: what a routed port's add and delete call and say, in
 * stretches: SDK port 5 under the number 3, as lif.h builds it, in a table of
 * numbers that is set up, on a switch on which nothing is routed yet.
 */
#pragma once

#include "support/lif.h"
#include "support/vlan_roads.h"

namespace rtifhal_test::l3port_road
{

inline constexpr int PORT = 5;
inline constexpr int IIF = 3;

/** A first add as a whole; how the interface step ends depends on the kind of start. */
Calls up(const Lif &lif, Kind chip, const Calls &end_of_interface_step);
/** An add that programs the same objects again, VLAN 4094 among them. */
Calls up_again(const Lif &lif, Kind chip, const Calls &end_of_interface_step);
/** The end of the interface step on an ordinary start. */
Calls ordinary_start();
/** The end of the interface step on a fast restart without default routes. */
Calls fast_restart(const Lif &lif);
/** Egress and ingress step of a delete. */
Calls untied(const Lif &lif, bool destroy);
/** Which port it is. */
Calls port_asked(const Lif &lif);
/** The delete's look at the object. */
Calls object_read(const Lif &lif);
/** The delete's port controls, whose values don't mirror the add's. */
Calls port_closed();
/** The object goes. */
Calls object_deleted();
/** The number is held back, the records are freed. */
Calls record_released();
/** The port leaves VLAN 4094, its only one. */
Calls routed_vlan_left(Kind chip);
/** A final delete as a whole. */
Calls down(const Lif &lif, Kind chip);
/** The messages of a first add up to the end of its interface step. */
Messages interface_step_messages(Kind chip);
/** The messages of the two other steps; `create` as in the add. */
Messages ingress_and_egress_messages(int create = 1);
/** The messages of an add that programs a parked or live interface again. */
Messages up_again_messages(Kind chip);
/** The messages of a delete of a live interface. */
Messages down_messages(int destroy = 1);
/** The messages of a final delete of a parked one. */
Messages parked_down_messages();

} // namespace rtifhal_test::l3port_road
