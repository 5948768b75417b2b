/*
 * road.h: the requests of a configuration in their order, one step each: what
 * it asks of the library, and how the layer above takes it back and asks again.
 *
 * A road begins with a world of its own, a switch and a layer. roads.h has the
 * roads of a configuration; run.h makes one call of one step fail.
 */
#pragma once

#include "config/description.h"
#include "faults/processes.h"
#include "l3lif/layer.h"
#include "l3lif/request.h"

#include "switch.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lab::faults
{

/** A switch on which a road runs, and the layer above it. */
struct World {
    /** @param config  must outlive this. @param options  how the switch is built */
    World(const config::Description &config, const simswitch::Options &options);

    std::shared_ptr<void> kept = {}; ///< what has to outlive the switch, such as its folder
    const config::Description &config;
    simswitch::Switch hardware;
    l3lif::Layer layer{hardware};
    std::map<std::string, int> vxlan_ports = {}; ///< by the interface that they belong to
};

/** A request that was made to take something back, or to make it again. */
struct Again {
    std::string asked;
    l3lif::Request request;
    bool gives_station = false; ///< its code is a station's number
    bool must_work = false;     ///< it makes something: it has to return 0

    /** Whether its code says that it was done. */
    bool done() const;
};

/** A request on a road. */
struct Step {
    std::string kind;         ///< "add a port": what the step is of many like it
    std::string variant = {}; ///< "number kept": how it differs from others of its kind; or empty
    std::string asked;        ///< "add Ethernet0"
    std::function<l3lif::Request(World &)> make;
    std::function<std::vector<Again>(World &)> again = {}; ///< takes it back and makes it again
    bool gives_station = false;                            ///< its code is a station's number
    bool swept = true; ///< its calls are made to fail; else it only goes by
    /** Done before it, in each process that makes it; may be empty. */
    std::function<void()> before = {};
};

/** The steps of a road. */
struct Road {
    std::string name; ///< "life", "fast restart", "restore"
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    /**
     * Done once in the process that goes the road, before its steps are looked at; may be empty.
     * Throws std::runtime_error where the machine doesn't allow the road.
     */
    std::function<void(Road &)> prepare = {};
    /** Makes the world in which the first step is made. */
    std::function<std::unique_ptr<World>()> begin;
    /** Whether each fault needs a world from the beginning on: it can't be copied with the process.
     */
    bool from_begin = false;
    std::vector<Step> steps = {};
};

} // namespace lab::faults
