/*
 * neighbors.cpp: see neighbors.h.
 */
#include "cpu/neighbors.h"

#include "config/networks.h"
#include "cpu/own.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace lab::cpu
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

bool is_station(const config::Mac &mac)
{
    return (mac[0] & 1U) == 0 && mac != config::Mac{};
}

/** The interface's own MAC, from which neighbours are solicited. */
config::Mac mac_of(const l3lif::Layer &layer, const routing::OwnAddress &own)
{
    const l3lif::Interface *interface = layer.routed().find(own.interface);
    return interface != nullptr ? interface->lif->plan().mac : own.mac;
}

} // namespace

Neighbors::Key Neighbors::key_of(const std::string &interface, const config::IpAddress &address)
{
    Key key{interface, {}};
    key.second[0] = address.ipv6 ? 1 : 0;
    std::copy(address.bytes.begin(), address.bytes.end(), key.second.begin() + 1);
    return key;
}

const routing::Neighbor *Neighbors::find(const std::string &interface,
                                         const config::IpAddress &address) const
{
    const auto &all = routing_.neighbors();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto &neighbor) {
        return neighbor.interface == interface && neighbor.address == address;
    });
    return found != all.end() ? &*found : nullptr;
}

/** Makes a neighbour known; false when that isn't done, which is counted. */
bool Neighbors::store(const routing::Neighbor &neighbor)
{
    const Key key = key_of(neighbor.interface, neighbor.address);
    const routing::Neighbor *known = find(neighbor.interface, neighbor.address);
    if (known != nullptr) {
        const auto before = learned_.find(key);
        if (before == learned_.end() || before->second.stored != *known) {
            if (known->mac != neighbor.mac) {
                counters_.count(Ignored::static_neighbor);
            }
            return true;
        }
        if (before->second.told == neighbor) {
            return true;
        }
    } else if (routing_.neighbors().size() >= NEIGHBORS_MAX) {
        counters_.count(Ignored::neighbors_full);
        return false;
    }
    try {
        routing_.set_neighbor(neighbor);
    } catch (const std::runtime_error &) {
        counters_.count(Ignored::neighbor_refused);
        return false;
    }
    const routing::Neighbor *stored = find(neighbor.interface, neighbor.address);
    learned_[key] = {neighbor, stored != nullptr ? *stored : neighbor};
    counters_.count(Done::learned);
    return true;
}

void Neighbors::learn(const Arrival &arrival, const Party &host, std::chrono::milliseconds now)
{
    if (!is_station(host.mac) || !host.address.is_unicast()) {
        counters_.count(Ignored::bad_source);
        return;
    }
    if (config::is_link_local(host.address)) {
        return; // nothing is routed to it
    }
    if (own_in_vrf(routing_, arrival, host.address) || is_own_mac(routing_, arrival, host.mac)) {
        counters_.count(Ignored::own_claimed);
        return;
    }
    const auto network = routing_.network_of(arrival.vrf, host.address);
    if (!network || network->interface != arrival.interface ||
        is_network_end(*network, host.address)) {
        counters_.count(Ignored::not_on_link);
        return;
    }
    routing::Neighbor neighbor{arrival.interface, host.address, host.mac, {}, 0};
    if (arrival.kind == config::Kind::svi) {
        neighbor.vlan = arrival.in_secondary ? arrival.vlan : std::uint16_t{0};
        // The chip has just learned behind which port it is.
        neighbor.port = routing_.port_of(neighbor);
    }
    if (store(neighbor)) {
        send_on(key_of(neighbor.interface, neighbor.address), now);
    }
}

void Neighbors::wait(const Received &in, std::chrono::milliseconds now)
{
    const auto gateway = routing_.gateway_of(in.arrival.vrf, in.to());
    const auto network = gateway ? routing_.network_of(in.arrival.vrf, *gateway) : std::nullopt;
    if (!gateway || !network) {
        icmp_.report(in, Report::no_network, now);
        return;
    }
    if (is_network_end(*network, *gateway) || routing_.own(in.arrival.vrf, *gateway)) {
        counters_.count(Ignored::group);
        return;
    }
    if (is_sending_on_) {
        counters_.count(Ignored::still_unknown);
        return;
    }
    const Key key = key_of(network->interface, *gateway);
    auto found = wanted_.find(key);
    const bool is_new = found == wanted_.end();
    if (is_new && wanted_.size() >= WAITING_NEIGHBORS) {
        counters_.count(Ignored::waiting_full);
        return;
    }
    if (is_new) {
        found = wanted_.emplace(key, Wanted{*gateway, *network, {}, 0, now}).first;
    }
    Wanted &wanted = found->second;
    if (wanted.packets.size() >= WAITING_PACKETS) {
        wanted.packets.pop_front();
        counters_.count(Ignored::queue_full);
    }
    wanted.packets.push_back({in.arrival, {in.frame.bytes.begin(), in.frame.bytes.end()}});
    counters_.count(Done::waited);
    if (is_new) {
        ask(wanted, now);
    }
}

void Neighbors::ask(Wanted &wanted, std::chrono::milliseconds now)
{
    const bool ip6 = wanted.address.ipv6;
    const auto links = links_of(hardware_, layer_, wanted.own.interface, ip6, wanted.questions);
    ++wanted.questions;
    wanted.due = now + QUESTION_INTERVAL;
    if (links.empty()) {
        counters_.count(Ignored::no_way_out);
        return;
    }
    const config::Mac mac = mac_of(layer_, wanted.own);
    for (const Link &link : links) {
        send_(link.port,
              ip6 ? neighbor_solicitation(link, {mac, link_local_of(mac)}, wanted.address)
                  : arp_request(link, {wanted.own.mac, wanted.own.prefix.address}, wanted.address));
    }
    counters_.count(Done::asked);
}

void Neighbors::send_on(const Key &key, std::chrono::milliseconds now)
{
    auto found = wanted_.extract(key);
    if (found.empty()) {
        return;
    }
    // What the chip then hands back must not wait here again, or it would go round.
    is_sending_on_ = true;
    for (const Packet &packet : found.mapped().packets) {
        counters_.count(Done::resumed);
        again_(packet.arrival.link.port, packet.frame, now);
    }
    is_sending_on_ = false;
}

void Neighbors::give_up(const Key &key, std::chrono::milliseconds now)
{
    const auto found = wanted_.extract(key);
    for (const Packet &packet : found.mapped().packets) {
        Received in{packet.arrival, {}};
        pipeline::parse(packet.frame, in.frame);
        icmp_.report(in, Report::no_host, now);
    }
}

void Neighbors::tick(std::chrono::milliseconds now)
{
    std::vector<Key> due;
    for (const auto &[key, wanted] : wanted_) {
        if (wanted.due <= now) {
            due.push_back(key);
        }
    }
    for (const Key &key : due) {
        Wanted &wanted = wanted_.at(key);
        if (find(key.first, wanted.address) != nullptr) {
            send_on(key, now); // somebody else has made it known
        } else if (wanted.questions < QUESTIONS) {
            ask(wanted, now);
        } else {
            give_up(key, now);
        }
    }
}

std::optional<std::chrono::milliseconds> Neighbors::next_due() const
{
    std::optional<std::chrono::milliseconds> next;
    for (const auto &[key, wanted] : wanted_) {
        next = next ? std::min(*next, wanted.due) : wanted.due;
    }
    return next;
}

} // namespace lab::cpu
