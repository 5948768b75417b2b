/*
 * l3.cpp: L3 interfaces, next hops, multipath groups and routes (sdk/l3.h)
 * over chip/{l3_interfaces,egresses,multipath_groups,routes}.h.
 *
 * Interfaces and ingress objects are written by the wrappers only; see
 * fwm/l3_cache.cpp.
 */
#include "sdk/access.h"
#include "sdk/convert.h"

#include "chip/refusal.h"

#include <sdk/l3.h>

#include <span>

using namespace simswitch;

namespace
{

/** The ids of a group's members; none when the count can't be right. */
std::span<const int> member_ids(const int *ids, int count)
{
    if (ids == nullptr || count < 1 || count > static_cast<int>(chip::MULTIPATH_MEMBER_MAX)) {
        return {};
    }
    return {ids, static_cast<std::size_t>(count)};
}

} // namespace

extern "C" {

void bcm_l3_intf_t_init(bcm_l3_intf_t *intf)
{
    sdk::clear_record(__func__, intf);
}

int bcm_l3_intf_get(int unit, bcm_l3_intf_t *intf)
{
    Call call(Layer::sdk, __func__, unit, intf->l3a_intf_id);
    return sdk::read(call, unit, [&](const chip::Chip &chip) {
        chip::L3Interface found;
        Outcome outcome = chip.l3_interfaces.get(intf->l3a_intf_id, found);
        if (outcome.ok()) {
            *intf = sdk::to_sdk(intf->l3a_intf_id, found);
            call.out("intf", *intf);
        }
        return outcome;
    });
}

void bcm_l3_ingress_t_init(bcm_l3_ingress_t *ingress)
{
    sdk::clear_record(__func__, ingress);
}

int bcm_l3_ingress_get(int unit, int iif, bcm_l3_ingress_t *ingress)
{
    Call call(Layer::sdk, __func__, unit, iif);
    return sdk::read(call, unit, [&](const chip::Chip &chip) -> Outcome {
        const chip::L3Ingress *found = chip.l3_ingresses.find(iif);
        if (found == nullptr) {
            return chip::unknown("L3 ingress object", iif);
        }
        *ingress = sdk::to_sdk(*found);
        call.out("ingress", *ingress);
        return {};
    });
}

void bcm_l3_egress_t_init(bcm_l3_egress_t *egress)
{
    sdk::clear_record(__func__, egress);
}

int bcm_l3_egress_create(int unit, uint32_t flags, bcm_l3_egress_t *egress, int *egress_id)
{
    Call call(Layer::sdk, __func__, unit, flags, egress);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        Outcome outcome = chip.egresses.create(sdk::to_chip(*egress), *egress_id);
        if (outcome.ok()) {
            call.out("id", *egress_id);
        }
        return outcome;
    });
}

int bcm_l3_egress_destroy(int unit, int egress_id)
{
    Call call(Layer::sdk, __func__, unit, egress_id);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.egresses.remove(egress_id); });
}

int bcm_l3_egress_multipath_create(int unit, uint32_t flags, int count, int *egress_ids,
                                   int *group_id)
{
    const std::span<const int> ids = member_ids(egress_ids, count);
    Call call(Layer::sdk, __func__, unit, flags, count, ids);
    return sdk::write(call, unit, [&](chip::Chip &chip) -> Outcome {
        if (ids.empty()) {
            return chip::out_of_range("number of group members", count, 1,
                                      chip::MULTIPATH_MEMBER_MAX);
        }
        Outcome outcome = chip.multipath_groups.create({{ids.begin(), ids.end()}}, *group_id);
        if (outcome.ok()) {
            call.out("id", *group_id);
        }
        return outcome;
    });
}

void bcm_l3_egress_ecmp_t_init(bcm_l3_egress_ecmp_t *ecmp)
{
    sdk::clear_record(__func__, ecmp);
}

int bcm_l3_egress_ecmp_destroy(int unit, bcm_l3_egress_ecmp_t *ecmp)
{
    Call call(Layer::sdk, __func__, unit, ecmp);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        return chip.multipath_groups.remove(ecmp->ecmp_intf);
    });
}

void bcm_l3_route_t_init(bcm_l3_route_t *route)
{
    sdk::clear_record(__func__, route);
}

int bcm_l3_route_add(int unit, bcm_l3_route_t *route)
{
    Call call(Layer::sdk, __func__, unit, route);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        return chip.routes.set(sdk::route_key(*route), sdk::to_chip(*route));
    });
}

} // extern "C"
