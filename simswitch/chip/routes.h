/*
 * routes.h: the routes: VRF and prefix to a next hop or a multipath group. A
 * prefix of length 0 is the VRF's default route.
 */
#pragma once

#include "chip/multipath_groups.h"

#include <span>
#include <tuple>

namespace simswitch::chip
{

/** What a route matches. An IPv4 address is in the first four bytes. */
struct RouteKey {
    int vrf = 0;                         ///< VRF
    bool ip6 = false;                    ///< IPv6, else IPv4
    std::array<std::uint8_t, 16> net{};  ///< prefix, network order, bits outside the mask cleared
    std::array<std::uint8_t, 16> mask{}; ///< mask, network order

    bool operator==(const RouteKey &) const = default;
    friend bool operator<(const RouteKey &a, const RouteKey &b)
    {
        return std::tie(a.vrf, a.ip6, a.net, a.mask) < std::tie(b.vrf, b.ip6, b.net, b.mask);
    }
};

/** Where a route leads. */
struct Route {
    std::uint32_t flags = 0; ///< the SDK's route flags
    int next_hop = 0;        ///< egress object, or multipath group
    bool multipath = false;  ///< the next hop is a group

    bool operator==(const Route &) const = default;
};

/** The key of an IPv4 route; address and mask in host order. */
RouteKey ip4_key(int vrf, std::uint32_t net, std::uint32_t mask);
/** The key of an IPv6 route; prefix and mask of 16 bytes. */
RouteKey ip6_key(int vrf, std::span<const std::uint8_t, 16> net,
                 std::span<const std::uint8_t, 16> mask);

/** "vrf 1 0.0.0.0/0". */
std::string text(const RouteKey &key);
/** "egress 100000 flags 0x100" or "group 200000 flags 0x4100". */
std::string text(const Route &route);

/** The table of routes. */
class Routes
{
public:
    /** `egresses` and `groups` must outlive this. */
    Routes(std::size_t limit, const Egresses &egresses, const MultipathGroups &groups)
        : limit_(limit), egresses_(egresses), groups_(groups)
    {
    }

    /** Adds a route. -6 when the table is full; -7 no such next hop; -8 the prefix has one. */
    Outcome create(const RouteKey &key, const Route &route);
    /** Removes a route. -7 when there is none. */
    Outcome remove(const RouteKey &key);
    /** Adds a route or replaces the one of this VRF and prefix. -6 and -7 as create. */
    Outcome set(const RouteKey &key, const Route &route);

    /** The route of exactly this prefix, null when there is none. */
    const Route *find(const RouteKey &key) const;
    std::size_t size() const { return table_.size(); }
    const std::map<RouteKey, Route> &all() const { return table_; }

    // For who keeps a copy of the table across a restart.

    /** Empties the table. */
    void clear();
    /** Puts an entry of the copy in; its next hop may have gone since. */
    Outcome restore(const RouteKey &id, const Route &record);
    /** Which entries were written. */
    Changes<RouteKey> &changes() { return changes_; }
    /** Grows with each write. */
    std::uint64_t generation() const { return changes_.generation(); }

private:
    Outcome check(const Route &route) const;

    std::size_t limit_;
    const Egresses &egresses_;
    const MultipathGroups &groups_;
    std::map<RouteKey, Route> table_;
    Changes<RouteKey> changes_;
};

} // namespace simswitch::chip
