/*
 * ifindex.h: how this switch numbers its interfaces, for those who make such
 * numbers; who only asks about one goes through the platform's
 * services/if_index.h, whose functions are defined beside this.
 *
 * The top four bits of an ifindex are its class, the rest depends on it:
 *
 *   1 Ethernet port    port (from 0) in bits 20..27, subinterface in 0..15, 0 for the port itself
 *   2 port-channel     channel in bits 12..27, subinterface in 0..11, 0 for the port-channel itself
 *   3 SVI              VLAN in bits 0..15
 *   4 tunnel, 5 management, 6 loopback    number in bits 0..27
 *
 * So port 0 is 0x10000000, its subinterface 10 is 0x1000000a, port-channel 7
 * is 0x20007000, the SVI of VLAN 100 is 0x30000064. Any other class can't be
 * read, 0 with it; nor can a port whose bits 16..19 are set.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace simswitch::if_index
{

/** The class of an ifindex. */
enum class Kind : std::uint8_t {
    port = 1,
    port_channel = 2,
    svi = 3,
    tunnel = 4,
    management = 5,
    loopback = 6,
};

// Types as if_index_get_type gives them; a subinterface has that of its main interface.
inline constexpr std::uint8_t TYPE_MANAGEMENT = 5;
inline constexpr std::uint8_t TYPE_SVI = 9;
inline constexpr std::uint8_t TYPE_LOOPBACK = 20;
inline constexpr std::uint8_t TYPE_PORT_CHANNEL = 22;
inline constexpr std::uint8_t TYPE_TUNNEL = 24;
inline constexpr std::uint8_t TYPE_PORT = 26;

// The highest subinterfaces. The platform hands their numbers out as 16 bits.
inline constexpr unsigned PORT_SUB_LAST = 65535;
inline constexpr unsigned CHANNEL_SUB_LAST = 4095;

/** What an ifindex says. */
struct Parts {
    Kind kind = Kind::port;
    unsigned number = 0; ///< port (from 0), channel, VLAN or number
    unsigned sub = 0;    ///< subinterface, 0 for a main interface

    bool operator==(const Parts &) const = default;
};

// Each of these throws std::out_of_range, with what and where in its text,
// for a number that doesn't fit.

/** An Ethernet port. @param zero_based  0 to 255; the chip's port is one more */
std::uint32_t port(unsigned zero_based);
/** A subinterface of a port. @param sub  1 to PORT_SUB_LAST */
std::uint32_t port_sub(unsigned zero_based, unsigned sub);
/** A port-channel. @param number  0 to 65535 */
std::uint32_t port_channel(unsigned number);
/** A subinterface of a port-channel. @param sub  1 to CHANNEL_SUB_LAST */
std::uint32_t port_channel_sub(unsigned number, unsigned sub);
/** A VLAN interface. @param vlan  0 to 65535, so that VLANs out of range can be tried */
std::uint32_t svi(unsigned vlan);
/** A tunnel. @param number  0 to 2^28 - 1 */
std::uint32_t tunnel(unsigned number);
/** A management interface. @param number  0 to 2^28 - 1 */
std::uint32_t management(unsigned number);
/** A loopback interface. @param number  0 to 2^28 - 1 */
std::uint32_t loopback(unsigned number);

/** Takes an ifindex apart; nothing when it can't be read. */
std::optional<Parts> parts(std::uint32_t ifindex);
/** The main interface of a subinterface; any other ifindex as it is. */
std::uint32_t main_interface(std::uint32_t ifindex);
/** The name: Ethernet1/5, Ethernet1/5.10, port-channel7, port-channel7.10, Vlan100, Tunnel3, mgmt0,
 * loopback0; "ifindex 0x0" for one that can't be read. */
std::string name(std::uint32_t ifindex);

} // namespace simswitch::if_index
