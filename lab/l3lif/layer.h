/*
 * layer.h: the platform-independent layer above the library, as far as the lab
 * plays it: it owns the routed interfaces, brings them up and takes them down
 * request by request, and keeps what each request did.
 *
 * Beside it: plans.h what there is to bring up, lif.h the record of one interface, readback.h what
 * the chip then holds, leftovers.h what a teardown left.
 */
#pragma once

#include "config/description.h"
#include "l3lif/lif.h"

#include "services/tree.h"
#include "switch.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::l3lif
{

/** What one request to the library did. */
struct Request {
    int code = 0;                   ///< what the library returned
    std::vector<std::string> calls; ///< platform calls in order, as the journal has them
    std::vector<simswitch::fwm::Message> messages; ///< the library's messages in order
    std::string_view expected = {}; ///< start of an error message that is none here; or empty
    std::string refused_writes; ///< what the chip refused when the queue was written out; or empty

    /** Adds what a later request for the same interface did; the first failing code stays. */
    void append(Request next);
    /** The last error message without its line end, or what the chip refused; empty for none. */
    std::string last_error() const;
};

/** An interface and the requests that it was the subject of. */
struct Interface {
    std::unique_ptr<Lif> lif;
    std::vector<std::unique_ptr<Lif>> members; ///< a port-channel's, in the order of joining
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
    /**
     * Brings an interface of a supported kind up, a port-channel member by
     * member. The reference stays good. A subinterface whose main interface
     * isn't up gets a record of it that is only registered.
     */
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
    Request add(Interface &interface);
    Request add_members(Interface &interface);
    Request add_subinterface(Lif &lif);
    Request remove(Interface &interface);
    Request remove_members(Interface &interface);
    Request remove_subinterface(Lif &lif);
    void file_under_main(Lif &lif);
    void become_main(Lif &lif);

    simswitch::Switch &hardware_;
    std::map<std::uint32_t, simswitch::services::Tree> subinterfaces_; ///< by main interface
    std::map<std::uint32_t, std::unique_ptr<Lif>> bare_mains_; ///< registered and not routed
    std::vector<std::unique_ptr<Interface>> interfaces_;
    Request router_mac_;
    Request router_mac_removal_;
    std::optional<int> station_;
};

} // namespace lab::l3lif
