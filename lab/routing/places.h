/*
 * places.h: the port that a host is behind: the interface's own, or, of a VLAN
 * interface, the one that is named, that a static entry or the traffic has, or
 * the only one that there is. routing.h asks for each neighbour.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "routing/records.h"

#include "chip/pipeline/l2_table.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lab::routing
{

/** Where frames to a host leave. */
struct Place {
    int gport = 0;          ///< a port or a trunk, as a generic port
    std::uint16_t vlan = 0; ///< VLAN where it isn't the interface's, else 0
    std::string name;       ///< "Ethernet4", "PortChannel1"
};

/** Finds places. What it was made of must outlive it. */
class Places
{
public:
    Places(const config::Description &config, const l3lif::Layer &layer,
           const simswitch::chip::pipeline::L2Table &l2)
        : config_(config), layer_(layer), l2_(l2)
    {
    }

    /**
     * The place of a host.
     *
     * @param neighbor   the host
     * @param interface  the plan of its interface, which is no tunnel
     * @param reason     receives why there is none, as a sentence's part
     */
    std::optional<Place> of(const Neighbor &neighbor, const l3lif::LifPlan &interface,
                            std::string &reason) const;
    /** The ports and port-channels of a VLAN and its secondaries, each once. */
    std::vector<std::string> members_of(std::uint16_t vlan) const;
    /** A port or port-channel as a generic port; nothing for one that can't be used. */
    std::optional<int> gport_of(std::string_view name) const;

private:
    struct Candidate {
        std::uint16_t vlan = 0;
        const config::VlanMember *member = nullptr;
    };

    std::vector<std::uint16_t> vlans_of(std::uint16_t primary) const;
    std::vector<Candidate> candidates(std::uint16_t primary) const;
    std::string name_of(int gport) const;
    std::optional<Place> learned(const Neighbor &neighbor, std::uint16_t primary) const;
    std::optional<Place> on_vlan(const Neighbor &neighbor, std::uint16_t primary,
                                 std::string &reason) const;

    const config::Description &config_;
    const l3lif::Layer &layer_;
    const simswitch::chip::pipeline::L2Table &l2_;
};

} // namespace lab::routing
