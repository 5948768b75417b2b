/*
 * subint_ports.h: where a subinterface lies: a port, or a trunk with its
 * members as the chip has them.
 */
#pragma once

#include "vlan/gport.h"

#include <fwmpd/wrappers.h>
#include <sdk/trunk.h>

inline constexpr uint32_t NO_TID = UINT32_MAX;

struct subint_ports {
    int unit;
    int port;     /**< physical road: SDK port; -1 on a port-channel */
    uint32_t tid; /**< trunk; NO_TID on a physical port */
    bool on_port_channel;
    int count; /**< members of the trunk */
    bcm_trunk_member_t members[TRUNK_MEMBERS];
};

/** Nothing known yet. */
inline subint_ports unknown_ports(int unit)
{
    subint_ports ports = {};
    ports.unit = unit;
    ports.port = -1;
    ports.tid = NO_TID;
    return ports;
}

/** Reads the trunk's members from the chip; gives the SDK's code, which leaves a count of 0. */
inline int read_members(subint_ports &ports)
{
    bcm_trunk_info_t info;
    bcm_trunk_info_t_init(&info);
    (void)fwmpd_trident_batch_flush();
    return bcm_trunk_get(ports.unit, static_cast<int>(ports.tid), &info, TRUNK_MEMBERS,
                         ports.members, &ports.count);
}

/** Members to walk, whatever the chip's count says. */
inline int walked_members(const subint_ports &ports)
{
    return ports.count < TRUNK_MEMBERS ? ports.count : TRUNK_MEMBERS;
}
