/*
 * tables.cpp: see tables.h.
 */
#include "page/tables.h"

#include "l3lif/interface_numbers.h"

#include "rtifhal_data.h"

namespace lab::page
{

namespace
{

// The first number that the chip keeps for itself.
constexpr int TRIDENT_NUMBERS_END = 3584;
constexpr int TRIDENT2_NUMBERS_END = 7680;

} // namespace

TableFill numbers_of(simswitch::chip::Kind chip)
{
    const int end =
        chip == simswitch::chip::Kind::trident2 ? TRIDENT2_NUMBERS_END : TRIDENT_NUMBERS_END;
    TableFill fill = {"interface_numbers", "Interface numbers (library)", 0,
                      static_cast<std::size_t>(end - l3lif::FIRST_IIF)};
    for (int number = l3lif::FIRST_IIF; number < end; ++number) {
        const bool taken = l3lif::is_set(l3lif_l3iif_table, number) &&
                           !l3lif::is_set(l3lif_l3iif_table_preserve, number);
        fill.used += taken ? 1U : 0U;
    }
    return fill;
}

std::vector<TableFill> tables_of(const simswitch::chip::Chip &chip)
{
    const simswitch::chip::Limits &limits = chip.limits();
    return {
        {"stations", "L2 stations", chip.stations.size(), limits.stations},
        {"l3_interfaces", "L3 interfaces", chip.l3_interfaces.size(), limits.l3_interfaces},
        {"l3_ingresses", "L3 ingress objects", chip.l3_ingresses.size(), limits.l3_ingresses},
        {"vlans", "VLANs", chip.vlans.size(), limits.vlans},
        // Group 0 stands beside the table.
        {"stgs", "Spanning tree groups", chip.stgs.size() - (chip.stgs.find(0) != nullptr ? 1 : 0),
         limits.stgs},
        {"vlan_translations", "VLAN translations", chip.vlan_translations.size(),
         limits.vlan_translations},
        {"trunks", "Trunks", chip.trunks.size(), limits.trunks},
        {"tunnels", "Tunnel initiators", chip.tunnels.size(), limits.tunnels},
        {"egresses", "Next hops", chip.egresses.size(), limits.egresses},
        {"multipath_groups", "Multipath groups", chip.multipath_groups.size(),
         limits.multipath_groups},
        {"routes", "Routes", chip.routes.size(), limits.routes},
        {"field_groups", "Field groups", chip.field_groups.size(), limits.field_groups},
        {"field_entries", "Field entries", chip.field_entries.size(), limits.field_entries},
        {"vxlan_ports", "VXLAN ports", chip.vxlan_ports.size(), limits.vxlan_ports},
    };
}

} // namespace lab::page
