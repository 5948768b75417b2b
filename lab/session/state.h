/*
 * state.h: all that a session has at hand when a command runs: the switch, the
 * layer above, the configuration that is up, what the last command did.
 *
 * The commands (interface_verbs.h, address_verbs.h, session_verbs.h) work on it;
 * session.h owns it.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "l3lif/restart.h"
#include "packet/explanation.h"
#include "routing/routing.h"
#include "session/last_request.h"
#include "session/scene.h"
#include "session/table.h"

#include "chip/pipeline/pipeline.h"
#include "switch.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/** What a command came to. */
struct Outcome {
    std::string summary;    ///< one line: "done, 45 calls"
    std::string shown = {}; ///< what it shows, with its line ends
    bool refused = false;   ///< the library refused something
    bool asked = false;     ///< it asked the library for something: a new last request
    bool looked = false;    ///< it looked at the last request's code or messages
    bool quit = false;      ///< the session ends
    /** The process ends, and another one begins so. */
    std::optional<l3lif::RestartMode> restart = {};
};

/** A configuration that is at hand. */
struct GivenConfig {
    std::string name; ///< for messages
    std::string text;
};

/** A session's state. */
struct State {
    simswitch::Switch &hardware;
    std::filesystem::path state_dir = {}; ///< folder of chip and store; empty: in memory
    std::filesystem::path folder = {};    ///< what relative paths of files start from
    Width width = 0;                      ///< of the terminal; 0 for none
    l3lif::Layer layer{hardware};
    simswitch::chip::pipeline::Pipeline pipeline{hardware.chip};
    routing::Routing routing{hardware, layer, pipeline.l2()};
    std::optional<GivenConfig> given_config = {};   ///< `up` takes it in place of its file
    std::optional<config::Description> config = {}; ///< once one is up
    LastRequest last = {};
    std::optional<packet::Explanation> packet = {}; ///< the last packet, once there was one
    bool can_restart = false;   ///< who runs the session can end its process and begin another
    bool tells_packets = false; ///< `packet` shows the whole trace, not its end alone
    bool colour = false;        ///< what is shown goes to a terminal that wants colours
    std::vector<std::string> notes = {};         ///< what the start has to say, until it is told
    std::vector<std::string> told_problems = {}; ///< what the routes lack, as far as it was told

    /** The switch with the names of its numbers, as it is now. */
    Scene scene() const;
    /** The names of the interfaces that can be added and deleted. */
    std::vector<std::string> interface_names() const;
    /** An interface by its name. @throws UsageError for an unknown one, with the nearest */
    l3lif::Interface &interface(std::string_view name) const;
    /** The names of the configuration's ports that the chip has. */
    std::vector<std::string> port_names() const;
    /** A port of the configuration by its name. @throws UsageError for an unknown one */
    const config::Port &port(std::string_view name) const;
    /** The ifindex of a port or an interface. @throws UsageError for an unknown one */
    std::uint32_t ifindex(std::string_view name) const;
    /** A VLAN of the configuration, by number or name. @throws UsageError for an unknown one */
    std::uint16_t vlan(std::string_view word) const;
    /**
     * Brings the routes in line with the interfaces.
     *
     * @return the problems that weren't there before, a line each
     */
    std::string sync_routing();
    /** Keeps what a command asked as the last request, brings the routes in line with what it did,
     * and tells how it went. */
    Outcome finish(const std::string &command, std::vector<Step> steps);
};

/** Reads a MAC. @throws UsageError for anything else, and for a group address */
config::Mac parse_mac(std::string_view word);

} // namespace lab::session
