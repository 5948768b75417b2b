/*
 * l3.cpp: the null platform's L3 interfaces, ingress objects, next hops and tunnels.
 */
#include "calls.h"
#include "tables.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/vxlan.h>
#include <sdk/tunnel.h>

using namespace null_platform;
using recording::in;
using recording::keyed;
using recording::out;

namespace
{

constexpr int NOT_FOUND = -7;

Interface *find_interface(int id)
{
    const auto index = static_cast<std::size_t>(id);
    return index < NUMBERS && tables.interfaces[index].exists ? &tables.interfaces[index] : nullptr;
}

Ingress *find_ingress(int iif)
{
    const auto index = static_cast<std::size_t>(iif);
    return index < NUMBERS && tables.ingress[index].exists ? &tables.ingress[index] : nullptr;
}

} // namespace

extern "C" {

int rtifhal_get_bcm_unit(int chip)
{
    CALLED(rtifhal_get_bcm_unit, chip);
    return 0;
}

void bcm_l3_intf_t_init(bcm_l3_intf_t *intf)
{
    CALLED(bcm_l3_intf_t_init, out(intf));
    *intf = {};
}

int bcm_l3_intf_get(int unit, bcm_l3_intf_t *intf)
{
    CALLED(bcm_l3_intf_get, unit, keyed(intf, intf->l3a_intf_id));
    const Interface *const found = find_interface(intf->l3a_intf_id);
    if (found == nullptr) {
        return NOT_FOUND;
    }
    *intf = found->object;
    return 0;
}

int rtifhal_bcm_l3_intf_create(int unit, bcm_l3_intf_t *intf)
{
    CALLED(rtifhal_bcm_l3_intf_create, unit, in(intf));
    const auto index = static_cast<std::size_t>(intf->l3a_intf_id);
    if (index >= NUMBERS) {
        return -4;
    }
    tables.interfaces[index] = {true, *intf};
    return 0;
}

int rtifhal_bcm_l3_intf_delete(int unit, bcm_l3_intf_t *intf)
{
    CALLED(rtifhal_bcm_l3_intf_delete, unit, in(intf));
    Interface *const found = find_interface(intf->l3a_intf_id);
    if (found == nullptr) {
        return NOT_FOUND;
    }
    found->exists = false;
    return 0;
}

void bcm_l3_ingress_t_init(bcm_l3_ingress_t *ingress)
{
    CALLED(bcm_l3_ingress_t_init, out(ingress));
    *ingress = {};
}

int bcm_l3_ingress_get(int unit, int iif, bcm_l3_ingress_t *ingress)
{
    CALLED(bcm_l3_ingress_get, unit, iif, out(ingress));
    const Ingress *const found = find_ingress(iif);
    if (found == nullptr) {
        return NOT_FOUND;
    }
    *ingress = found->object;
    return 0;
}

int rtifhal_bcm_l3_ingress_create(int unit, bcm_l3_ingress_t *ingress, int *iif)
{
    CALLED(rtifhal_bcm_l3_ingress_create, unit, in(ingress), in(iif));
    const auto index = static_cast<std::size_t>(*iif);
    if (index >= NUMBERS) {
        return -4;
    }
    tables.ingress[index] = {true, *ingress};
    return 0;
}

int rtifhal_bcm_l3_ingress_destroy(int unit, int iif)
{
    CALLED(rtifhal_bcm_l3_ingress_destroy, unit, iif);
    Ingress *const found = find_ingress(iif);
    if (found == nullptr) {
        return NOT_FOUND;
    }
    found->exists = false;
    return 0;
}

bcm_l3_ingress_t *rtifhal_bcm_l3_ingress_get_from_cache(int iif)
{
    CALLED(rtifhal_bcm_l3_ingress_get_from_cache, iif);
    Ingress *const found = find_ingress(iif);
    return GIVES(found != nullptr ? &found->object : nullptr);
}

void bcm_l3_egress_t_init(bcm_l3_egress_t *egress)
{
    CALLED(bcm_l3_egress_t_init, out(egress));
    *egress = {};
}

int bcm_l3_egress_create(int unit, uint32_t flags, bcm_l3_egress_t *egress, int *egress_id)
{
    CALLED(bcm_l3_egress_create, unit, flags, in(egress), out(egress_id));
    *egress_id = tables.egress_ids.take();
    return *egress_id >= 0 ? 0 : -6;
}

int bcm_l3_egress_destroy(int unit, int egress_id)
{
    CALLED(bcm_l3_egress_destroy, unit, egress_id);
    tables.egress_ids.give_back(egress_id);
    return 0;
}

int bcm_l3_egress_multipath_create(int unit, uint32_t flags, int count, int *egress_ids,
                                   int *group_id)
{
    CALLED(bcm_l3_egress_multipath_create, unit, flags, count,
           in(egress_ids, static_cast<std::size_t>(count) * sizeof *egress_ids), out(group_id));
    *group_id = tables.group_ids.take();
    return *group_id >= 0 ? 0 : -6;
}

void bcm_l3_egress_ecmp_t_init(bcm_l3_egress_ecmp_t *ecmp)
{
    CALLED(bcm_l3_egress_ecmp_t_init, out(ecmp));
    *ecmp = {};
}

int bcm_l3_egress_ecmp_destroy(int unit, bcm_l3_egress_ecmp_t *ecmp)
{
    CALLED(bcm_l3_egress_ecmp_destroy, unit, in(ecmp));
    tables.group_ids.give_back(ecmp->ecmp_intf);
    return 0;
}

void bcm_l3_route_t_init(bcm_l3_route_t *route)
{
    CALLED(bcm_l3_route_t_init, out(route));
    *route = {};
}

int bcm_l3_route_add(int unit, bcm_l3_route_t *route)
{
    CALLED(bcm_l3_route_add, unit, in(route));
    return 0;
}

int bcm_tunnel_initiator_clear(int unit, bcm_l3_intf_t *intf)
{
    CALLED(bcm_tunnel_initiator_clear, unit, in(intf));
    return 0;
}

int rtifhal_bcm_vxlan_port_create(int unit, uint32_t if_index, void *vpn, void *egress, void *port,
                                  uintptr_t context)
{
    CALLED(rtifhal_bcm_vxlan_port_create, unit, if_index, recording::handle(vpn),
           recording::handle(egress), recording::handle(port), context);
    return 0;
}

int rtifhal_bcm_vxlan_port_delete(int unit, uintptr_t vpn, uintptr_t port, uintptr_t context)
{
    CALLED(rtifhal_bcm_vxlan_port_delete, unit, vpn, port, context);
    return 0;
}
}
