/*
 * world.h: the switch on which requests are measured: a few interfaces that stand, and one of
 * each kind that comes and goes.
 *
 * There is one world a process, for one chip: the library's tables are the process's own.
 * requests.h has what is done in it.
 */
#pragma once

#include "null_platform.h"

#include <rtifhal_trident.h>

#include <array>
#include <cstdint>
#include <vector>

namespace floor_bench
{

/** Something that routes, with the properties that the layer above set. */
struct Lif {
    l3lif lif{};
    l3lif_pi_ctxt properties{};
};

/** A subinterface of a port-channel, programmed by way of a record of the port-channel. */
struct ChannelSub : Lif {
    l3lif view{};
};

/** A kind of interface, in the order in which the standing ones are kept. */
enum class Kind : std::uint8_t { port, port_channel, svi, subinterface, tunnel };
inline constexpr std::size_t KINDS = 5;

/** VLANs of the world. */
inline constexpr std::uint16_t VLAN_PRIMARY = 100;
inline constexpr std::uint16_t VLAN_SECONDARY = 101;
inline constexpr std::uint16_t VLAN_NEW_SECONDARY = 102;
inline constexpr std::uint16_t VLAN_STANDING = 110;
inline constexpr std::uint16_t VLAN_GUEST = 210;
inline constexpr std::uint16_t VLAN_SUBINTERFACE = 300;
inline constexpr std::uint16_t VLAN_GUEST_SUBINTERFACE = 301;
inline constexpr std::uint16_t VLAN_GUEST_CHANNEL_SUB = 302;

/** Paths of the default route with several. */
inline constexpr std::uint32_t ROUTE_PATHS = 4;

class World
{
public:
    /** Brings the standing interfaces up. */
    explicit World(null_platform::Chip chip);
    World(const World &) = delete;
    World &operator=(const World &) = delete;

    Lif &standing(Kind kind) { return standing_[static_cast<std::size_t>(kind)]; }

    /** Puts the library's interface numbers back to those of the standing interfaces. */
    void restore_numbers();

    /**
     * Addresses that are the same at each call: interfaces, trees, tables. A recorded call names
     * them by their place here.
     */
    std::vector<const void *> objects() const;

    Lif primary;                  /**< SVI of a private VLAN's primary */
    Lif standing_member;          /**< of the standing port-channel */
    Lif guest_port;               /**< those below come and go */
    Lif guest_channel;            /**< with one member */
    Lif guest_member;             /**< of the port-channel above */
    Lif second_member;            /**< of the standing port-channel */
    Lif guest_svi;                /**< on a VLAN of its own */
    Lif guest_sub;                /**< on a port of its own */
    ChannelSub guest_channel_sub; /**< on the standing port-channel */
    Lif guest_tunnel;
    int router_mac = -1; /**< station of the router MAC that comes and goes */

private:
    void set_up_channels();
    void set_up_subinterfaces();
    void bring_up();
    void make_default_routes();

    std::array<Lif, KINDS> standing_;
    Lif sub_main_;       /**< port of the standing subinterface */
    Lif guest_sub_main_; /**< port of the subinterface that comes and goes */
    std::array<Lif, ROUTE_PATHS> path_ports_;
    l3iif_bitmap_t numbers_{};
    l3iif_bitmap_t held_back_{};
};

} // namespace floor_bench
