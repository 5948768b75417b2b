/*
 * vxlan_ports.cpp: the table of VXLAN virtual ports.
 */
#include "chip/vxlan_ports.h"

#include "chip/basics.h"
#include "chip/refusal.h"
#include "chip/vlans.h"

#include <fmt/format.h>
#include <limits>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "VXLAN port";

bool match_the_same(const VxlanPort &one, const VxlanPort &other)
{
    return one.criteria == other.criteria && one.match_port == other.match_port &&
           one.match_vlan == other.match_vlan;
}

} // namespace

std::string text(const VxlanPort &port)
{
    return fmt::format(
        "vpn {} vn {} port {} vlan {} criteria {} flags {:#x} egress {} multicast {:#x} of {:#x}",
        port.vpn, port.vn_id, port.match_port, port.match_vlan, port.criteria, port.flags,
        port.egress_if, port.mc_index, port.if_index);
}

Outcome VxlanPorts::create(const VxlanPort &port, int &id)
{
    if (Outcome refused = check(port); !refused.ok()) {
        return refused;
    }
    id = ids_.take();
    table_.put(id, port);
    return {};
}

Outcome VxlanPorts::remove(std::uint32_t vpn, int id)
{
    const VxlanPort *found = table_.find(id);
    if (found == nullptr) {
        return unknown(KIND, id);
    }
    if (found->vpn != vpn) {
        return {ERROR_NOT_FOUND,
                fmt::format("{} {} is in VPN {}, not in {}", KIND, id, found->vpn, vpn)};
    }
    table_.erase(id);
    ids_.give_back(id);
    return {};
}

Outcome VxlanPorts::restore(int id, const VxlanPort &record)
{
    if (id < 1) {
        return out_of_range(KIND, id, 1, std::numeric_limits<int>::max());
    }
    if (Outcome refused = check(record); !refused.ok()) {
        return refused;
    }
    table_.put(id, record);
    ids_.take(id);
    return {};
}

Outcome VxlanPorts::check(const VxlanPort &port) const
{
    if (port.match_port > static_cast<std::uint32_t>(LAST_PORT)) {
        return out_of_range("port", port.match_port, 0, LAST_PORT);
    }
    // VLAN 0 stands for any.
    if (port.match_vlan != 0 && !is_vlan(port.match_vlan)) {
        return out_of_range("VLAN", port.match_vlan, 0, LAST_VLAN);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    Outcome outcome;
    table_.for_each([&](int id, const VxlanPort &other) {
        if (match_the_same(port, other)) {
            outcome = {ERROR_EXISTS, fmt::format("{} {} matches the same", KIND, id)};
        }
    });
    return outcome;
}

} // namespace simswitch::chip
