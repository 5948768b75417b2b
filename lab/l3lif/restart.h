/*
 * restart.h: what the layer above does when the forwarding process has started
 * again on a state folder that an earlier process left, however that one ended.
 *
 * Three kinds of start: a restore leaves the chip as it is and rebuilds the
 * software side from the store; a fast restart finds an empty chip and brings
 * the configuration up anew, default routes with it; a cold start finds an
 * empty chip and nothing else.
 *
 * A restart needs a library as it is after loading, and a switch that was just
 * opened on the folder. bring_up.h has the ordinary start, docs/restart.md
 * tells what survives which restart.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "l3lif/progress.h"

#include "services/messages.h"
#include "switch.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lab::l3lif
{

/** The kinds of start. */
enum class RestartMode : std::uint8_t { restore, fast, cold };

/** "restore", "fast", "cold". */
std::string_view mode_name(RestartMode mode);

/** A port in a VLAN. */
struct PortInVlan {
    int port = 0;
    int vlan = 0;

    bool operator==(const PortInVlan &) const = default;
};

/** A stored interface that was restored, and what came back with it. */
struct RestoredInterface {
    const Interface *interface = nullptr; ///< the layer's
    std::uint32_t ifindex = 0;  ///< what it is stored under: its port-channel's for a subinterface
    int iif = 0;                ///< its number in the chip; 0 for none
    bool iif_taken = false;     ///< the number is taken in the library's table
    bool was_preserved = false; ///< the number was held back until its owner came back
    std::vector<PortInVlan> ports;  ///< what the library counts again as VLANs of ports
    std::vector<PortInVlan> cached; ///< what has joined the cached ports of VLANs
    bool is_vlan_svi = false;       ///< its VLAN counts as one with an SVI again
    Request request;                ///< the restore
    Request replay = {};            ///< its add in restore mode; empty where there was none
    bool was_replayed = false;
    bool in_config = false; ///< the configuration has it; false without one
};

/** An interface that came up on a fast restart, and what the chip then had. */
struct FastStep {
    const Interface *interface = nullptr; ///< the layer's
    std::size_t routes = 0;               ///< default routes
    std::size_t next_hops = 0;            ///< egress objects
    bool asked = false;                   ///< bcm_usd was asked for its adjacencies
};

/** What a restart came to. */
struct RestartResult {
    RestartMode mode = RestartMode::restore;
    Request globals;                           ///< restore: the global context
    std::vector<int> preserved;                ///< numbers that came back as held back
    std::vector<RestoredInterface> interfaces; ///< restore: in the store's order
    std::vector<std::uint16_t> l2_vlans;       ///< restore: VLANs that the L2 side has marked again
    std::uint64_t chip_writes = 0; ///< that the chip has taken from begin to end of the restart
    std::vector<FastStep> steps;   ///< fast: the interfaces in the order of coming up
    /** fast: what bcm_usd was asked for, in order. */
    std::vector<simswitch::services::AdjacencyRequest> adjacencies = {};
};

/**
 * Plays the layer above after a restart.
 *
 * Restore: restore mode is set; the global context, then each stored interface
 * is restored; with a configuration its adds that are allowed in restore mode
 * follow (router MAC and ports), and the L2 side marks its VLANs; then restore
 * mode ends. Nothing is written to the chip. What the configuration has and the
 * store hasn't is left to complete().
 *
 * Fast and cold: chip and store begin empty, and the configuration is brought
 * up as at an ordinary start; fast with the fast-restart flag, which stays set,
 * and a request for the adjacencies of each interface that is up.
 *
 * @param hardware  just opened
 * @param layer     of that switch, without interfaces; owns them afterwards
 * @param mode      kind of start
 * @param config    the configuration; null for none, in restore mode only
 * @param progress  told of each stored interface, or of all that is brought up
 * @throws std::invalid_argument when it is null and the mode needs one
 * @throws std::runtime_error when the state folder can't be read or takes nothing more
 */
RestartResult restart(simswitch::Switch &hardware, Layer &layer, RestartMode mode,
                      const config::Description *config = nullptr, const Progress &progress = {});

/** What the restore reports of a subinterface that is stored under its port-channel's ifindex. */
inline constexpr std::string_view NO_MEMBERS = "Error - PC tree empty ";
/** The request of a completion whose code is a station. */
inline constexpr std::string_view ADD_ROUTER_MAC = "add the router MAC";

/** A request that was made after a restore. */
struct LateRequest {
    std::string asked;
    Request request;
    bool failed = false;
};

/** What was brought up after a restore, beside what had been restored. */
struct Completion {
    std::vector<LateRequest> requests; ///< in their order
    std::uint64_t chip_writes = 0;

    /** Whether each of them has worked. */
    bool ok() const;
};

/**
 * Brings up what the configuration has and a restore has not brought back.
 *
 * An interface that the store knows nothing of and the chip has all the same
 * is taken over under the number that it has there: a port-channel whose
 * record that of its subinterface has replaced, or one whose store failed. L3
 * interfaces that then are nobody's are cleared, as their numbers would be
 * handed out and refused. What is left is brought up: the router MAC if the
 * chip has none of that address, VLANs, interfaces, and all private-VLAN pairs
 * and virtual MACs, which no store keeps. An interface of which the chip has a
 * part only, as its add was cut short, is programmed again under its number.
 *
 * @param layer     that a restore has filled
 * @param progress  told of each interface
 */
Completion complete(simswitch::Switch &hardware, Layer &layer, const config::Description &config,
                    const Progress &progress = {});

} // namespace lab::l3lif
