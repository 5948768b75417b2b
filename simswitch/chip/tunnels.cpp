/*
 * tunnels.cpp: the table of tunnel initiators.
 */
#include "chip/tunnels.h"

#include "chip/refusal.h"

#include <fmt/format.h>
#include <limits>

namespace simswitch::chip
{

namespace
{

std::string address_text(std::uint32_t address)
{
    return fmt::format("{}.{}.{}.{}", address >> 24, (address >> 16) & 0xff, (address >> 8) & 0xff,
                       address & 0xff);
}

Outcome check(const Tunnel &tunnel)
{
    if (tunnel.index < 1) {
        return out_of_range("tunnel index", tunnel.index, 1, std::numeric_limits<int>::max());
    }
    return {};
}

Outcome not_bound(int interface)
{
    return {ERROR_NOT_FOUND,
            fmt::format("no tunnel initiator is bound to L3 interface {}", interface)};
}

} // namespace

std::string text(const Tunnel &tunnel)
{
    return fmt::format("index {} {} -> {}", tunnel.index, address_text(tunnel.source_ip),
                       address_text(tunnel.dest_ip));
}

Outcome Tunnels::create(int interface, const Tunnel &tunnel)
{
    if (Outcome refused = check(tunnel); !refused.ok()) {
        return refused;
    }
    if (table_.has(interface)) {
        return {ERROR_EXISTS,
                fmt::format("L3 interface {} has a tunnel initiator already", interface)};
    }
    if (table_.size() >= limit_) {
        return table_full("tunnel initiator", limit_);
    }
    Outcome bound = interfaces_.set_tunnel(interface, tunnel.index);
    if (bound.ok()) {
        table_.put(interface, tunnel);
    }
    return bound;
}

Outcome Tunnels::remove(int interface)
{
    if (!table_.erase(interface)) {
        return not_bound(interface);
    }
    // The interface may have gone first; then there is no index left to clear.
    interfaces_.set_tunnel(interface, 0);
    return {};
}

Outcome Tunnels::set(int interface, const Tunnel &tunnel)
{
    if (Outcome refused = check(tunnel); !refused.ok()) {
        return refused;
    }
    if (!table_.has(interface)) {
        return not_bound(interface);
    }
    table_.put(interface, tunnel);
    interfaces_.set_tunnel(interface, tunnel.index);
    return {};
}

Outcome Tunnels::restore(int id, const Tunnel &record)
{
    // Its interface has the index already, or has gone since.
    if (Outcome refused = check(record); !refused.ok()) {
        return refused;
    }
    if (table_.size() >= limit_) {
        return table_full("tunnel initiator", limit_);
    }
    table_.put(id, record);
    return {};
}

} // namespace simswitch::chip
