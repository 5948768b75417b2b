/*
 * layer.cpp: see layer.h.
 */
#include "l3lif/layer.h"

#include "rtifhal_trident.h"
#include "services/ifindex.h"

#include <fmt/format.h>

namespace lab::l3lif
{

namespace
{

namespace if_index = simswitch::if_index;

/** The library's pair of functions for a kind. */
struct Pair {
    int (*add)(::l3lif *, int);
    int (*del)(::l3lif *, int);
};

/** The pair of a kind; null for one that isn't supported. */
const Pair *pair_of(config::Kind kind)
{
    static constexpr Pair port = {rtifhal_trident_add_l3port, rtifhal_trident_del_l3port};
    static constexpr Pair tunnel = {rtifhal_trident_add_l3tun, rtifhal_trident_del_l3tun};
    switch (kind) {
    case config::Kind::port:
        return &port;
    case config::Kind::tunnel:
        return &tunnel;
    case config::Kind::port_channel:
    case config::Kind::svi:
    case config::Kind::subinterface:
        break;
    }
    return nullptr;
}

/** Messages begin and end with line ends, for the log that they were made for. */
std::string trimmed(const std::string &text)
{
    const std::size_t first = text.find_first_not_of(" \n");
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

LifPlan plan_of(const config::RoutedInterface &interface, const config::Description &description)
{
    const config::Port &port = description.ports.find(interface.name)->second;
    LifPlan plan;
    plan.kind = interface.kind;
    plan.name = interface.name;
    plan.table = interface.table;
    plan.ifindex = if_index::port(port.chip_port - 1);
    plan.chip_port = static_cast<int>(port.chip_port);
    plan.mac = interface.mac.value_or(description.device_mac);
    plan.vrf = interface.vrf;
    plan.mtu = port.mtu;
    plan.ipv4 = interface.routes(false);
    plan.ipv6 = interface.routes(true);
    plan.mpls = interface.mpls;
    return plan;
}

LifPlan plan_of(const config::Tunnel &tunnel, unsigned number,
                const config::Description &description)
{
    LifPlan plan;
    plan.kind = config::Kind::tunnel;
    plan.name = tunnel.name;
    plan.table = tunnel.table;
    plan.ifindex = if_index::tunnel(number);
    plan.mac = description.device_mac;
    plan.ipv4 = true;
    return plan;
}

} // namespace

std::string Request::last_error() const
{
    for (auto message = messages.rbegin(); message != messages.rend(); ++message) {
        if (message->level == simswitch::fwm::LEVEL_ERROR) {
            return trimmed(message->text);
        }
    }
    return refused_writes;
}

bool supports(config::Kind kind)
{
    return pair_of(kind) != nullptr;
}

template <class Work> Request Layer::run(const std::string &name, Work &&work)
{
    Request request;
    hardware_.trace.clear();
    hardware_.journal.begin_request(name);
    const std::size_t first = hardware_.journal.records().size();
    request.code = work();
    // The end of a request writes out what still waits in the queue.
    const auto report = hardware_.wrappers.flush();
    if (report.refused != 0) {
        request.refused_writes = report.text;
    }
    request.calls = hardware_.journal.calls(first);
    const auto &messages = hardware_.trace.messages();
    request.messages.assign(messages.begin(), messages.end());
    return request;
}

const Request &Layer::add_router_mac(const config::Mac &mac)
{
    router_mac_ = run(fmt::format("add router MAC {}", config::mac_text(mac)),
                      [&mac] { return rtifhal_trident_rmac_add(mac.data()); });
    if (router_mac_.code != NO_STATION) {
        station_ = router_mac_.code;
    }
    return router_mac_;
}

const Interface &Layer::bring_up(LifPlan plan)
{
    auto interface = std::make_unique<Interface>();
    interface->lif = std::make_unique<Lif>(hardware_, std::move(plan));
    Lif &lif = *interface->lif;
    interface->up = run(fmt::format("add {}", lif.plan().name),
                        [&lif] { return pair_of(lif.plan().kind)->add(lif.record(), 1); });
    interfaces_.push_back(std::move(interface));
    return *interfaces_.back();
}

bool Layer::take_down()
{
    bool clean = true;
    for (auto interface = interfaces_.rbegin(); interface != interfaces_.rend(); ++interface) {
        Lif &lif = *(*interface)->lif;
        Request &down = (*interface)->down;
        down = run(fmt::format("delete {}", lif.plan().name),
                   [&lif] { return pair_of(lif.plan().kind)->del(lif.record(), 1); });
        clean = clean && down.code == 0 && down.last_error().empty();
    }
    if (station_) {
        const int station = *station_;
        router_mac_removal_ = run(fmt::format("delete router MAC at station {}", station),
                                  [station] { return rtifhal_trident_rmac_del(station); });
        clean = clean && router_mac_removal_.code == 0;
        station_.reset();
    }
    return clean;
}

std::vector<LifPlan> plans_of(const config::Description &description)
{
    std::vector<LifPlan> plans;
    for (const auto &interface : description.interfaces) {
        if (supports(interface.kind)) {
            plans.push_back(plan_of(interface, description));
        }
    }
    for (const auto &tunnel : description.tunnels) {
        const auto number = static_cast<unsigned>(&tunnel - description.tunnels.data()) + 1;
        plans.push_back(plan_of(tunnel, number, description));
    }
    return plans;
}

} // namespace lab::l3lif
