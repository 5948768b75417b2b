/*
 * services/if_index.h: questions about an ifindex.
 *
 * The encoding of an ifindex is this service's own; the library never takes
 * one apart. Types: 5 management, 9 VLAN interface (SVI), 22 port-channel, 24
 * tunnel, 26 Ethernet port. A subinterface of a port has the port's type and
 * port.
 */
#ifndef SERVICES_IF_INDEX_H
#define SERVICES_IF_INDEX_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tells an interface's type.
 *
 * @param ifindex  the interface
 * @param type     receives the type; left alone on failure
 * @return 0; nonzero when the ifindex can't be read
 */
int if_index_get_type(uint32_t ifindex, uint8_t *type);

/**
 * Tells an interface's port.
 *
 * @param ifindex  an Ethernet port or its subinterface
 * @param port     receives the port, from 0; left alone on failure
 * @return 0; nonzero when the interface has no port
 */
int if_index_get_port(uint32_t ifindex, uint8_t *port);

/**
 * Tells an interface's subinterface number.
 *
 * @param ifindex  the interface
 * @param number   receives the number, 0 for a main interface; left alone on
 *                 failure
 * @return 0; nonzero when the interface can have no subinterfaces
 */
int if_index_get_sub_intf(uint32_t ifindex, uint16_t *number);

/**
 * Tells whether an interface is a port-channel or a subinterface of one.
 *
 * @param ifindex  the interface
 * @return nonzero if so, else 0
 */
int if_index_is_eth_port_channel_intf(uint32_t ifindex);

/**
 * Tells whether an interface is a subinterface of a port or port-channel.
 *
 * @param ifindex  the interface
 * @return nonzero if so, else 0
 */
int if_index_is_sub_intf(uint32_t ifindex);

/**
 * Tells whether an interface is a physical Ethernet port.
 *
 * @param ifindex  the interface
 * @return nonzero if so, else 0
 */
int if_index_is_physical_interface(uint32_t ifindex);

/**
 * Tells whether an interface is a tunnel.
 *
 * @param ifindex  the interface
 * @return nonzero if so, else 0
 */
int if_index_is_tunnel_intf(uint32_t ifindex);

/**
 * Tells a port-channel's channel number.
 *
 * @param ifindex  the port-channel, or its subinterface
 * @param number   receives the number; left alone on failure
 * @return 0; nonzero for what isn't on a port-channel; the library doesn't look at it
 */
int if_index_port_channel_get_channel_num(uint32_t ifindex, uint16_t *number);

/**
 * Tells the main interface of a subinterface.
 *
 * @param ifindex  a subinterface
 * @return its main interface; any other ifindex as it is
 */
uint32_t if_index_get_mainintf_from_subintf(uint32_t ifindex);

/**
 * Writes an interface's name.
 *
 * @param buffer   receives the name, always ended by a zero byte
 * @param size     room in the buffer in bytes
 * @param ifindex  the interface
 * @return the buffer
 */
char *snprintf_if_index(char *buffer, size_t size, uint32_t ifindex);

#ifdef __cplusplus
}
#endif

#endif
