/*
 * l3_interfaces.cpp: the table of L3 interfaces.
 */
#include "chip/l3_interfaces.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "L3 interface";

Outcome check_id(int id)
{
    if (id < 0 || id > LAST_IIF) {
        return out_of_range(KIND, id, 0, LAST_IIF);
    }
    return {};
}

Outcome check(int id, const L3Interface &interface)
{
    if (interface.vlan > LAST_VLAN) {
        return out_of_range("VLAN", interface.vlan, 0, LAST_VLAN);
    }
    return check_id(id);
}

} // namespace

std::string text(const L3Interface &interface)
{
    return fmt::format("mac {} vlan {} vrf {} mtu {} ttl {} tunnel {} flags {:#x}",
                       text(interface.mac), interface.vlan, interface.vrf, interface.mtu,
                       interface.ttl, interface.tunnel, interface.flags);
}

Outcome L3Interfaces::create(int id, const L3Interface &interface)
{
    if (Outcome refused = check(id, interface); !refused.ok()) {
        return refused;
    }
    if (table_.has(id)) {
        return existing(KIND, id);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    table_.put(id, interface);
    return {};
}

Outcome L3Interfaces::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown(KIND, id);
    }
    return {};
}

Outcome L3Interfaces::set(int id, const L3Interface &interface)
{
    if (!table_.has(id)) {
        return create(id, interface);
    }
    if (Outcome refused = check(id, interface); !refused.ok()) {
        return refused;
    }
    table_.put(id, interface);
    return {};
}

Outcome L3Interfaces::set_tunnel(int id, int tunnel)
{
    L3Interface *interface = table_.edit(id);
    if (interface == nullptr) {
        return unknown(KIND, id);
    }
    interface->tunnel = tunnel;
    return {};
}

Outcome L3Interfaces::get(int id, L3Interface &interface) const
{
    if (Outcome refused = check_id(id); !refused.ok()) {
        return refused;
    }
    const L3Interface *found = table_.find(id);
    if (found == nullptr) {
        return unknown(KIND, id);
    }
    interface = *found;
    return {};
}

} // namespace simswitch::chip
