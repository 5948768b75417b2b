/*
 * families.cpp: see families.h.
 */
#include "l3lif/families.h"

#include "l3lif/property_requests.h"
#include "l3lif/readback.h"

#include "rtifhal_property.h"

#include <fmt/format.h>

#include <cstdint>
#include <string_view>
#include <utility>

namespace lab::l3lif
{

namespace
{

/** A family as a property. */
struct Family {
    std::string_view name;
    bool is_ipv6;
    std::uint32_t svi_id; ///< identifier for an SVI's setter
};

constexpr Family IPV4{"ipv4", false, RTIFHAL_PROP_IPV4};
constexpr Family IPV6{"ipv6", true, RTIFHAL_PROP_IPV6};

void open_family(const Family &family, Lif &lif, simswitch::Switch &hardware,
                 std::vector<OpenedFamily> &opened)
{
    const HardwareView view = read_back(hardware, lif);
    if (!view.missing.empty() || (family.is_ipv6 ? view.ipv6 : view.ipv4)) {
        return;
    }
    l3lif_pi_ctxt &properties = *lif.record()->l3lif_pi_ctxt;
    (family.is_ipv6 ? properties.ipv6_en : properties.ipv4_en) = 1;
    std::string asked = fmt::format("set {} {} on", lif.plan().name, family.name);
    Request request = set_property(hardware, lif, asked, family.svi_id, 1);
    opened.push_back({std::move(asked), std::move(request)});
}

} // namespace

std::vector<OpenedFamily> open_families(const config::Description &config, Layer &layer,
                                        simswitch::Switch &hardware)
{
    std::vector<OpenedFamily> opened;
    for (const config::RoutedInterface &row : config.interfaces) {
        Interface *interface = layer.routed().find(row.name);
        if (interface == nullptr || interface->standing() != Standing::up) {
            continue;
        }
        for (const Family &family : {IPV4, IPV6}) {
            if (row.routes(family.is_ipv6)) {
                open_family(family, *interface->lif, hardware, opened);
            }
        }
    }
    return opened;
}

} // namespace lab::l3lif
