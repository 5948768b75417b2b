/*
 * stgs.cpp: the table of spanning tree groups.
 */
#include "chip/stgs.h"

#include "chip/refusal.h"

#include <algorithm>
#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "spanning tree group";

constexpr int FREE_STG = 0; ///< the group for VLANs without spanning tree

Outcome check(int port, int state)
{
    if (!is_port(port)) {
        return out_of_range("port", port, 0, LAST_PORT);
    }
    if (state < STP_DISABLED || state > STP_FORWARDING) {
        return out_of_range("spanning tree state", state, STP_DISABLED, STP_FORWARDING);
    }
    return {};
}

} // namespace

PortSet Stg::in_state(int state) const
{
    PortSet ports;
    for (int port = 0; port <= LAST_PORT; ++port) {
        if (states.at(static_cast<std::size_t>(port)) == state) {
            ports.add(port);
        }
    }
    return ports;
}

std::string text(const Stg &stg)
{
    return fmt::format("forwarding {} blocking {} listening {} learning {}",
                       stg.in_state(STP_FORWARDING).text(), stg.in_state(STP_BLOCKING).text(),
                       stg.in_state(2).text(), stg.in_state(3).text());
}

Stgs::Stgs(std::size_t limit, Vlans &vlans) : limit_(limit), vlans_(vlans)
{
    Stg open;
    for (int port = CPU_PORT; port <= LAST_FRONT_PORT; ++port) {
        open.states.at(static_cast<std::size_t>(port)) = STP_FORWARDING;
    }
    table_.put(FREE_STG, open);
    table_.put(DEFAULT_STG, open);
}

Outcome Stgs::create(int &stg)
{
    // Group 0 isn't one of them.
    if (table_.size() > limit_) {
        return table_full(KIND, limit_);
    }
    stg = ids_.take();
    table_.put(stg, {});
    return {};
}

Outcome Stgs::remove(int stg)
{
    if (stg == FREE_STG) {
        return {ERROR_PARAM, "spanning tree group 0 is the chip's own and stays"};
    }
    if (stg == DEFAULT_STG) {
        return {ERROR_PARAM, "spanning tree group 1 is the default group and stays"};
    }
    if (!table_.has(stg)) {
        return unknown(KIND, stg);
    }
    for (int vlan : vlans_of(stg)) {
        vlans_.set_stg(vlan, DEFAULT_STG);
    }
    table_.erase(stg);
    ids_.give_back(stg);
    return {};
}

Outcome Stgs::add_vlan(int stg, int vlan)
{
    if (!table_.has(stg)) {
        return unknown(KIND, stg);
    }
    if (vlans_.find(vlan) == nullptr) {
        return unknown("VLAN", vlan);
    }
    return vlans_.set_stg(vlan, stg);
}

Outcome Stgs::set_state(int stg, int port, int state)
{
    if (Outcome refused = check(port, state); !refused.ok()) {
        return refused;
    }
    Stg *found = table_.edit(stg);
    if (found == nullptr) {
        return unknown(KIND, stg);
    }
    found->states.at(static_cast<std::size_t>(port)) = static_cast<std::uint8_t>(state);
    return {};
}

Outcome Stgs::set_state_of_port(int port, int state)
{
    if (Outcome refused = check(port, state); !refused.ok()) {
        return refused;
    }
    for (const auto &[stg, vlans] : vlans_.groups_of_port(port)) {
        if (Outcome refused = set_state(stg, port, state); !refused.ok()) {
            return refused;
        }
    }
    return {};
}

std::vector<int> Stgs::vlans_of(int stg) const
{
    std::vector<int> ids;
    vlans_.for_each([&](int id, const Vlan &vlan) {
        if (vlan.stg == stg) {
            ids.push_back(id);
        }
    });
    std::sort(ids.begin(), ids.end());
    return ids;
}

Outcome Stgs::restore(int id, const Stg &record)
{
    const int last = DEFAULT_STG + static_cast<int>(limit_) - 1;
    if (id < FREE_STG || id > last) {
        return out_of_range(KIND, id, FREE_STG, last);
    }
    for (const std::uint8_t state : record.states) {
        if (Outcome refused = check(CPU_PORT, state); !refused.ok()) {
            return refused;
        }
    }
    table_.put(id, record);
    if (id != FREE_STG) {
        ids_.take(id);
    }
    return {};
}

} // namespace simswitch::chip
