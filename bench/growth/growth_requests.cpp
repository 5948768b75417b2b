/*
 * growth_requests.cpp: the requests on a network of all kinds of interfaces, on SVIs alone, and
 * on the subinterfaces of one port or port-channel.
 *
 * growth_macs.cpp has virtual MACs and private-VLAN pairs, growth_changes.cpp what happens to
 * interfaces that are up.
 */
#include "growth_requests.h"

#include "growth_parts.h"

#include <array>

namespace bench
{

namespace
{

/** Ports, port-channels and tunnels that the mix of a network doesn't use. */
constexpr std::uint32_t OWN_PORT = 100;
constexpr std::uint32_t OWN_CHANNEL = 1000;
constexpr std::uint32_t OWN_TUNNEL = 8000;
constexpr std::uint32_t BATCH_PORT = 80;
constexpr std::uint32_t BATCH_CHANNEL = 1001;
constexpr std::uint32_t BATCH_TUNNEL = 8001;
constexpr std::uint32_t CHANNEL_MEMBER = 90;

/** VLANs that it doesn't use. */
constexpr std::uint16_t OWN_SVI = 2600;
constexpr std::uint16_t OWN_PRIMARY = 2601;
constexpr std::uint16_t BATCH_SVI = 2610;
constexpr std::uint16_t SECONDARY = 2650;
constexpr std::uint16_t OWN_SUBINTERFACE = 3900;
constexpr std::uint16_t BATCH_SUBINTERFACE = 3910;
constexpr std::uint16_t BATCH_CHANNEL_SUBINTERFACE = 3920;

/** Makes BATCH interfaces that aren't up, by their number. */
template <class Make> Interfaces batch_of(Make make)
{
    Interfaces made;
    for (std::uint16_t i = 0; i < BATCH; ++i) {
        made.push_back(&make(i));
    }
    return made;
}

std::uint16_t vlan(std::size_t number)
{
    return static_cast<std::uint16_t>(number);
}

/** One interface of each kind, up, for what happens to interfaces that are up. */
std::array<Standing, 6> standing_of_each_kind(Network &network)
{
    Interface &port = network.port(OWN_PORT);
    Interface &channel = network.port_channel(OWN_CHANNEL, CHANNEL_MEMBER);
    const std::array<Standing, 6> standing = {{
        {"port", &port},
        {"port-channel", &channel},
        {"SVI", &network.svi(OWN_SVI)},
        {"subinterface", &network.subinterface(port, OWN_SUBINTERFACE)},
        {"subinterface of a port-channel", &network.subinterface(channel, OWN_SUBINTERFACE + 1)},
        {"tunnel", &network.tunnel(OWN_TUNNEL)},
    }};
    for (const Standing &one : standing) {
        network.bring_up(*one.interface);
    }
    return standing;
}

void add_comings_and_goings(Requests &requests, Network &network, Interface &port,
                            Interface &channel)
{
    come_and_go(requests, network, "port", batch_of([&](std::uint32_t i) -> Interface & {
                    return network.port(BATCH_PORT + i);
                }));
    come_and_go(requests, network, "port-channel", batch_of([&](std::uint32_t i) -> Interface & {
                    return network.port_channel(BATCH_CHANNEL + i, BATCH_PORT + i);
                }));
    come_and_go(requests, network, "SVI", batch_of([&](std::uint16_t i) -> Interface & {
                    return network.svi(vlan(BATCH_SVI + i));
                }));
    come_and_go(requests, network, "subinterface", batch_of([&](std::uint16_t i) -> Interface & {
                    return network.subinterface(port, vlan(BATCH_SUBINTERFACE + i));
                }));
    come_and_go(requests, network, "subinterface of a port-channel",
                batch_of([&](std::uint16_t i) -> Interface & {
                    return network.subinterface(channel, vlan(BATCH_CHANNEL_SUBINTERFACE + i));
                }));
    come_and_go(requests, network, "tunnel", batch_of([&](std::uint32_t i) -> Interface & {
                    return network.tunnel(BATCH_TUNNEL + i);
                }));
}

Requests of_interfaces(Network &network, std::size_t count)
{
    const std::array<Standing, 6> standing = standing_of_each_kind(network);
    Interface &primary = network.svi(OWN_PRIMARY);
    make_primary(OWN_PRIMARY, SECONDARY);
    network.bring_up(primary);
    network.fill(count - BATCH);
    network.keep_numbers();

    Requests requests;
    add_comings_and_goings(requests, network, *standing[0].interface, *standing[1].interface);
    add_virtual_macs(requests, "virtual MAC of an SVI", *standing[2].interface, 0);
    add_virtual_macs(requests, "virtual MAC of a port", *standing[0].interface, 0);
    add_router_macs(requests);
    add_pairs(requests, OWN_PRIMARY, SECONDARY + 1);
    add_changes(requests, standing);
    add_restores(requests, network, standing);
    add_default_routes(requests, standing[0].interface->record.ifindex);
    return requests;
}

Requests of_svis(Network &network, std::size_t count)
{
    for (std::size_t number = 1; number <= count - BATCH; ++number) {
        network.bring_up(network.svi(vlan(number)));
    }
    network.keep_numbers();
    Requests requests;
    come_and_go(requests, network, "SVI", batch_of([&](std::uint16_t i) -> Interface & {
                    return network.svi(vlan(count - i));
                }));
    return requests;
}

/** Subinterfaces of `main`, which is up, all but the last BATCH of them. */
void bring_subinterfaces_up(Network &network, Interface &main, std::size_t count)
{
    for (std::size_t number = 1; number <= count - BATCH; ++number) {
        network.bring_up(network.subinterface(main, vlan(number)));
    }
    network.keep_numbers();
}

Requests of_one_main(Network &network, const char *kind, Interface &main, std::size_t count)
{
    network.bring_up(main);
    bring_subinterfaces_up(network, main, count);
    Requests requests;
    come_and_go(requests, network, kind, batch_of([&](std::uint16_t i) -> Interface & {
                    return network.subinterface(main, vlan(count - i));
                }));
    return requests;
}

} // namespace

const char *text(Subject subject)
{
    switch (subject) {
    case Subject::interfaces:
        return "interfaces";
    case Subject::svis:
        return "SVIs";
    case Subject::virtual_macs:
        return "virtual MACs";
    case Subject::pairs:
        return "pairs of one primary";
    case Subject::subinterfaces:
        return "subinterfaces of one port";
    case Subject::channel_subinterfaces:
        return "subinterfaces of one port-channel";
    }
    return "";
}

void come_and_go(Requests &requests, Network &network, const std::string &kind,
                 const Interfaces &batch)
{
    const auto appear = [&network, batch] {
        for (Interface *const interface : batch) {
            network.announce(*interface);
        }
    };
    const auto add = [&network, batch] {
        for (Interface *const interface : batch) {
            network.add(*interface);
        }
    };
    const auto remove = [&network, batch] {
        for (Interface *const interface : batch) {
            network.remove(*interface);
        }
    };
    const auto vanish = [&network, batch] {
        for (Interface *const interface : batch) {
            network.withdraw(*interface);
        }
        network.restore_numbers();
    };
    requests.push_back({kind + ": add", batch.size(), appear, add, [remove, vanish] {
                            remove();
                            vanish();
                        }});
    requests.push_back({kind + ": delete", batch.size(),
                        [appear, add] {
                            appear();
                            add();
                        },
                        remove, vanish});
}

Requests requests_of(Network &network, Subject subject, std::size_t count)
{
    switch (subject) {
    case Subject::interfaces:
        return of_interfaces(network, count);
    case Subject::svis:
        return of_svis(network, count);
    case Subject::virtual_macs:
        return of_virtual_macs(network, count);
    case Subject::pairs:
        return of_pairs(network, count);
    case Subject::subinterfaces: {
        Interface &port = network.port(OWN_PORT);
        Requests requests = of_one_main(network, "subinterface", port, count);
        add_port_change(requests, port);
        return requests;
    }
    case Subject::channel_subinterfaces: {
        Interface &channel = network.port_channel(OWN_CHANNEL, CHANNEL_MEMBER);
        Requests requests = of_one_main(network, "subinterface of a port-channel", channel, count);
        add_port_channel_change(requests, channel);
        return requests;
    }
    }
    return {};
}

} // namespace bench
