/*
 * layer.h: the platform-independent layer above the library, as far as the lab
 * plays it: it owns the routed interfaces, brings them up and takes them down
 * request by request, and keeps what each request did.
 *
 * Beside it: lif.h the record of one interface, readback.h what the chip then
 * holds, leftovers.h what a teardown left.
 */
#pragma once

#include "config/description.h"
#include "l3lif/lif.h"

#include "switch.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lab::l3lif
{

/** What one request to the library did. */
struct Request {
    int code = 0;                   ///< what the library returned
    std::vector<std::string> calls; ///< platform calls in order, as the journal has them
    std::vector<simswitch::fwm::Message> messages; ///< the library's messages in order
    std::string refused_writes; ///< what the chip refused when the queue was written out; or empty

    /** The last error message without its line end, or what the chip refused; empty for none. */
    std::string last_error() const;
};

/** An interface and the requests that it was the subject of. */
struct Interface {
    std::unique_ptr<Lif> lif;
    Request up;
    Request down; ///< empty until it is taken down
};

/** Whether the layer brings interfaces of a kind up. */
bool supports(config::Kind kind);

/** The layer above. */
class Layer
{
public:
    /** The number of a router MAC that the chip didn't take. */
    static constexpr int NO_STATION = 0xFFFF;

    /** @param hardware  the switch that stands in for the platform; must outlive this */
    explicit Layer(simswitch::Switch &hardware) : hardware_(hardware) {}

    /** Installs the router MAC; the code is the station's number, NO_STATION when refused. */
    const Request &add_router_mac(const config::Mac &mac);
    /** Brings an interface of a supported kind up. The reference stays good. */
    const Interface &bring_up(LifPlan plan);
    /**
     * Takes everything down for good, the last one that came up first, the
     * router MAC at the end. False when the library reported a failure.
     */
    bool take_down();

    /** The interfaces in the order in which they came up. */
    const std::vector<std::unique_ptr<Interface>> &interfaces() const { return interfaces_; }
    const Request &router_mac() const { return router_mac_; }
    const Request &router_mac_removal() const { return router_mac_removal_; }

private:
    template <class Work> Request run(const std::string &name, Work &&work);

    simswitch::Switch &hardware_;
    std::vector<std::unique_ptr<Interface>> interfaces_;
    Request router_mac_;
    Request router_mac_removal_;
    std::optional<int> station_;
};

/** The plans of all interfaces of supported kinds, tunnels last. */
std::vector<LifPlan> plans_of(const config::Description &description);

} // namespace lab::l3lif
