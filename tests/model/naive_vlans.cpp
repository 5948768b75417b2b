/*
 * naive_vlans.cpp: see naive_vlans.h.
 */
#include "model/naive_vlans.h"

#include <fmt/format.h>

namespace model_test
{

void NaiveVlans::add_to(Facts &facts) const
{
    for (const auto &[vlan, members] : members_) {
        facts[fmt::format("vlan {} count", vlan)] = "1";
        facts[fmt::format("vlan {} ports", vlan)] = list_text(members);
        const auto found = uses_.find(vlan);
        const NaiveUses uses = found == uses_.end() ? NaiveUses{} : found->second;
        facts[fmt::format("vlan {} counted", vlan)] = list_text(uses.ports);
        facts[fmt::format("vlan {} svi", vlan)] = uses.svi ? "1" : "0";
        facts[fmt::format("vlan {} l2", vlan)] = uses.l2 ? "1" : "0";
    }
    for (const auto &[port, vlans] : held_) {
        if (!vlans.empty()) {
            facts[fmt::format("# VLANs that port {} holds", port)] = list_text(vlans);
        }
    }
}

} // namespace model_test
