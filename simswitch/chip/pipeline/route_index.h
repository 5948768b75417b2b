/*
 * route_index.h: the longest prefix that matches an address.
 *
 * A trie a VRF and family, four address bits a step. A prefix stands in the
 * node in which it ends, under each of the four-bit values that it covers, so a
 * look-up takes one step a nibble and never goes back. The table of routes
 * (routes.h) stays the truth: when it was written to, the trie is made anew.
 *
 * A route whose mask has a hole is no prefix. It is kept out and never matches.
 */
#pragma once

#include "chip/pipeline/frame.h"
#include "chip/routes.h"

#include <unordered_map>
#include <vector>

namespace simswitch::chip::pipeline
{

/** A route with its key. */
struct FoundRoute {
    RouteKey key{};
    Route route{};
    int length = 0; ///< bits of its prefix
};

/** The number of leading ones when a mask has nothing but those, else -1. */
int prefix_length(const RouteKey &key);

/** How many leading bits two addresses have in common, up to 32 or 128. */
int common_bits(bool ip6, const Address &a, const Address &b);

/** The tries of all VRFs. */
class RouteIndex
{
public:
    /** Makes the tries anew when the table was written to since the last time. */
    void refresh(const Routes &routes);

    /**
     * Looks the longest matching prefix up.
     *
     * @param vrf      the VRF; a route of another one never matches
     * @param ip6      IPv6, else IPv4
     * @param address  the address, an IPv4 one in the first four bytes
     * @return the route, null when none matches; good until the next refresh
     */
    const FoundRoute *find(int vrf, bool ip6, const Address &address) const;

    /** The number of routes that can match. */
    std::size_t size() const { return routes_.size(); }

private:
    struct Slot {
        std::int32_t child = 0;  ///< next node, 0 for none: node 0 is nobody's child
        std::int32_t route = -1; ///< longest prefix that ends here
    };
    using Node = std::array<Slot, 16>;
    struct Root {
        std::int32_t node = 0;
        std::int32_t default_route = -1;
    };

    static std::int64_t root_key(int vrf, bool ip6)
    {
        return std::int64_t{vrf} * 2 + (ip6 ? 1 : 0);
    }
    std::int32_t new_node();
    void insert(std::int32_t route);

    std::uint64_t generation_ = 0;
    std::vector<FoundRoute> routes_;
    std::vector<Node> nodes_;
    std::unordered_map<std::int64_t, Root> roots_;
};

} // namespace simswitch::chip::pipeline
