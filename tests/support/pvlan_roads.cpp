/*
 * pvlan_roads.cpp: see pvlan_roads.h.
 */
#include "support/pvlan_roads.h"

#include "rtifhal_trident.h"

#include <fmt/format.h>

namespace rtifhal_test::pvlan_road
{

using svi_road::cache_asked;
using svi_road::written;
using svi_road::written_directly;

namespace
{

constexpr std::uint32_t SNOOPING_OFF = 0x800; // in the chip only

} // namespace

PvlanTest::PvlanTest(const simswitch::Options &options) : SviTest(options)
{
    for (const std::uint16_t secondary : {SECONDARY, SECOND, OTHER_SECONDARY}) {
        switched_vlan(secondary, svi_road::SWITCHED, OWN_VRF);
    }
    vlan_is(PRIMARY, fhrp_road::Role::primary);
}

void PvlanTest::primary_has_an_svi(std::uint32_t ingress_if)
{
    rtifhal_set_svi(PRIMARY);
    cached(PRIMARY).vc_ingress_if = ingress_if;
    start();
}

void PvlanTest::virtual_macs(const std::vector<fhrp_road::Address> &macs)
{
    sw.directory.add(lif->get());
    for (const fhrp_road::Address &mac : macs) {
        added(*lif, mac);
    }
}

std::string record(unsigned iif, std::uint32_t flags)
{
    return svi_road::controls(OWN_VRF, iif, flags, 0);
}

Calls mirrored(int primary, int secondary, unsigned iif, std::uint32_t flags)
{
    return join({Calls{cache_asked(primary), cache_asked(secondary), called::unit(),
                       written(secondary, record(iif, flags))},
                 written_directly(secondary, record(iif, flags | SNOOPING_OFF))});
}

Calls taken_back_in_two_writes(int primary, int secondary, unsigned iif, std::uint32_t flags)
{
    return join({Calls{cache_asked(primary), cache_asked(secondary), called::unit(),
                       cache_asked(secondary), written(secondary, record(iif, flags)),
                       called::flush(), written(secondary, record(0, flags))},
                 written_directly(secondary, record(0, flags | SNOOPING_OFF))});
}

Calls taken_back(int primary, int secondary, std::uint32_t flags)
{
    return join(
        {Calls{cache_asked(primary), cache_asked(secondary), called::unit(), cache_asked(secondary),
               called::flush(), written(secondary, record(0, flags))},
         written_directly(secondary, record(0, flags | SNOOPING_OFF))});
}

Message announced_pair(std::uint32_t primary, std::uint32_t secondary)
{
    return trace(UPDATE, fmt::format("Primary {}, Seconday {}\n", static_cast<int>(primary),
                                     static_cast<int>(secondary)));
}

Messages uses_told(int vlan, int subint_count, int svi, int l2_vlan)
{
    return {
        trace(ROUTING, fmt::format("------------------------------------vlan {}\n", vlan)),
        trace(ROUTING,
              fmt::format("SI = {}, svi = {}, l2_vlan = {}\n", subint_count, svi, l2_vlan)),
    };
}

std::string not_in_cache(int vlan)
{
    return fmt::format("fwmpd_bcm_vlan_control_vlan_get_from_cache({}) returned NULL\n", vlan);
}

} // namespace rtifhal_test::pvlan_road
