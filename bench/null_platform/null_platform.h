/*
 * null_platform.h: a platform that does next to nothing, under the library in benchmarks.
 *
 * It defines every function and datum that the library imports. Each function adds one to a
 * counter and succeeds; it keeps only what the library reads back: L3 interfaces, ingress
 * objects, VLANs with their controls and block masks, trunks, stations, field entries, trees.
 * All of it is in tables under the number that it goes by, so that no call takes longer with
 * more interfaces; a tree takes logarithmic time. Nothing is checked that the library doesn't
 * rely on, nothing is written anywhere, and diagnostics go nowhere.
 *
 * Who links `rtifhal_static` and `null_platform` plays the layer above:
 *
 *     null_platform::reset(null_platform::Chip::trident);
 *     l3lif_pi_ctxt properties{.ipv4_en = 1};
 *     l3lif port{.ifindex = null_platform::port_ifindex(7), .l3lif_pi_ctxt = &properties};
 *     null_platform::make_known(port);           // found by its ifindex from now on
 *     rtifhal_trident_add_l3port(&port, 1);
 *     std::uint64_t calls = null_platform::calls();
 *     rtifhal_trident_del_l3port(&port, 1);
 *     null_platform::forget(port);
 *
 * An SVI's VLAN needs nothing beforehand; a member of a port-channel is a record of its port
 * whose main_l3lif is the port-channel's. A subinterface is put into its main interface's
 * subint_tree, a member's ifindex into the port-channel's pc_member_tree, by avl_insert.
 *
 * reset() doesn't reach into the library: its tables begin anew in a new process.
 */
#pragma once

#include <rtifhal_types.h>

#include <cstdint>

namespace null_platform
{

enum class Chip : std::uint8_t { trident, trident2 };

/** What a VLAN is in a private VLAN. */
enum class PrivateVlan : std::uint8_t { none, primary, secondary };

/** Ports of the chip; the SDK's port number is one more. */
inline constexpr std::uint32_t PORTS = 104;
/** Port-channels and tunnels, numbered from 0. */
inline constexpr std::uint32_t PORT_CHANNELS = 1024;
inline constexpr std::uint32_t TUNNELS = 8192;
/** VLAN ids, and with them SVIs and the subinterfaces of one main interface. */
inline constexpr std::uint32_t VLANS = 4096;

/**
 * Makes the chip empty, forgets all interfaces, and puts counters and modes to 0.
 *
 * @param chip  what the chip says that it is
 */
void reset(Chip chip);

/** @param port  0 to 103  @return its ifindex */
std::uint32_t port_ifindex(std::uint32_t port);

/** @param channel  0 to 1023  @return the port-channel's ifindex; its trunk id is channel + 1 */
std::uint32_t port_channel_ifindex(std::uint32_t channel);

/** @param vlan  1 to 4095  @return its SVI's ifindex */
std::uint32_t svi_ifindex(std::uint32_t vlan);

/** @param tunnel  0 to 8191  @return its ifindex */
std::uint32_t tunnel_ifindex(std::uint32_t tunnel);

/**
 * The ifindex of a subinterface.
 *
 * @param main    ifindex of a port or a port-channel
 * @param number  1 to 4095
 */
std::uint32_t subinterface_ifindex(std::uint32_t main, std::uint32_t number);

/** Lets the library find an interface by its ifindex, and by its int_vlan once that is set. */
void make_known(struct l3lif &l3lif);

/** Takes an interface out again, by its ifindex and its int_vlan. */
void forget(const struct l3lif &l3lif);

/** Makes the VLAN known to the forwarding manager, and what it is in a private VLAN. */
void set_private_vlan(std::uint16_t vlan, PrivateVlan kind);

/** Whether this is a fast restart; not after a reset. */
void set_fast_restart(bool fast);

/** Puts the id of a field entry that floods to ports into the layer above's slot, 0 to 95. */
void set_flood_entry(std::uint32_t slot, std::uint32_t entry);

/** @return the calls of the platform since the last reset, libc's and GLib's not among them */
std::uint64_t calls();

} // namespace null_platform
