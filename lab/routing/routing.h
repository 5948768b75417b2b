/*
 * routing.h: routes and neighbours as the other layers of a switch write them
 * into the chip, which the lab plays: connected networks and the switch's own
 * addresses, static routes, neighbours.
 *
 * What there is to route follows the interfaces: sync() compares what the chip
 * should have, as the interfaces stand, with what was written before, and writes
 * the difference. A route to a host that isn't known leads to the CPU, which
 * asks for it; so does one to an address of the switch. Routes that others have
 * written, a restart's default routes among them, stay until a route of the same
 * prefix is wanted here.
 *
 * Beside it: records.h has addresses, neighbours and routes as records, view.h
 * the interfaces as the chip has them, ways.h the hosts that lead somewhere,
 * places.h the ports that hosts are behind; plan.h says what the chip should
 * hold, chip_writer.h writes it.
 */
#pragma once

#include "config/address.h"
#include "config/description.h"
#include "l3lif/layer.h"
#include "routing/chip_writer.h"
#include "routing/errors.h"
#include "routing/records.h"
#include "routing/view.h"

#include "chip/pipeline/l2_table.h"
#include "switch.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::routing
{

/** The layers that own addresses, neighbours and routes. */
class Routing
{
public:
    /**
     * @param hardware  the switch whose chip is written; must outlive this, as the others
     * @param layer     the interfaces
     * @param l2        where stations are; gets a configuration's static ones
     */
    Routing(simswitch::Switch &hardware, const l3lif::Layer &layer,
            simswitch::chip::pipeline::L2Table &l2);
    Routing(const Routing &) = delete;
    Routing &operator=(const Routing &) = delete;

    /**
     * Takes over addresses, static routes, neighbours and static MACs of a
     * configuration, in place of those of an earlier one. sync() writes them.
     */
    void configure(const config::Description &config);
    /**
     * After a restart that left the chip as it was: the next sync() takes over what an earlier
     * process has written, and removes what isn't wanted any more; see ChipWriter::take_over.
     */
    void take_over() { writer_.take_over(); }
    /** Brings the chip in line with the interfaces as they stand. A second one writes nothing. */
    void sync();

    /**
     * Makes a host known, new or in place of the one of this interface and address; then syncs.
     *
     * @throws UnknownName for an interface or port that there isn't
     * @throws Error for an address that can't be on the interface, or an SVI's host of which
     *         nobody knows behind which port it is
     */
    void set_neighbor(const Neighbor &neighbor);
    /** Forgets a host, then syncs. False when it wasn't known. */
    bool remove_neighbor(std::string_view interface, const config::IpAddress &address);
    /**
     * Adds a static route, new or in place of the one of this VRF and prefix; then syncs.
     *
     * @param route  bits behind its prefix's length are ignored; at most 64 next hops
     * @throws UnknownName for an interface that there isn't
     * @throws Error for a gateway that no network of the VRF has, or of the other family
     */
    void add_route(const StaticRoute &route);
    /** Removes a static route, then syncs. False when there is none. */
    bool remove_route(std::uint16_t vrf, const config::Prefix &prefix);

    /** The switch's addresses on interfaces that are up, as of the last sync. */
    const std::vector<OwnAddress> &addresses() const { return addresses_; }
    /** The hosts that are known, in the order in which they became so. */
    const std::vector<Neighbor> &neighbors() const { return neighbors_; }
    /** The static routes, in the order in which they came. */
    const std::vector<StaticRoute> &routes() const { return routes_; }
    /** What couldn't be written or resolved at the last sync, one sentence each. */
    const std::vector<std::string> &problems() const { return problems_; }

    /** The address of the switch that this is, if it is one. */
    std::optional<OwnAddress> own(std::uint16_t vrf, const config::IpAddress &address) const;
    /**
     * By which interface an address is reached directly: the longest own network
     * that contains it, or a static route to an interface alone, which gives an
     * address of that interface.
     */
    std::optional<OwnAddress> network_of(std::uint16_t vrf, const config::IpAddress &address) const;
    /**
     * The host to ask for, for a destination: itself on an own network, else a
     * gateway of the longest static route, one that isn't known first; nothing
     * when there is no route or a black hole. For a route into a tunnel it is
     * the host on the way to the tunnel's end.
     */
    std::optional<config::IpAddress> gateway_of(std::uint16_t vrf,
                                                const config::IpAddress &address) const;

    /**
     * What an egress object that was written here is for: "10.0.0.9", "CPU", "black hole".
     *
     * @param egress  its id
     * @return empty for another's
     */
    std::string next_hop_text(int egress) const;
    /** The id of a known host's egress object; 0 when it has none. */
    int egress_of(const Neighbor &neighbor) const;
    /**
     * The port or port-channel that a known host is behind, as it would be written.
     *
     * @return empty when it can't be told
     */
    std::string port_of(const Neighbor &neighbor) const;

    /** The ports that hosts of a VLAN interface may be behind; none for another interface. */
    std::vector<std::string> ports_of(std::string_view interface) const;

private:
    simswitch::Switch &hardware_;
    const l3lif::Layer &layer_;
    simswitch::chip::pipeline::L2Table &l2_;
    config::Description config_;
    std::vector<Neighbor> neighbors_;
    std::vector<StaticRoute> routes_;
    std::vector<InterfaceView> interfaces_; ///< as of the last sync
    std::vector<OwnAddress> addresses_;     ///< as of the last sync
    std::vector<std::string> notes_;        ///< what configure() couldn't do
    std::vector<std::string> problems_;
    ChipWriter writer_;
};

} // namespace lab::routing
