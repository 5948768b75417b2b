/*
 * l3_cache.cpp: L3 interfaces and ingress objects in the wrappers, and their
 * C functions (fwmpd/l3_cache.h).
 *
 * Of interfaces the cache keeps which ids are taken; of ingress objects it
 * keeps the records, which routed interfaces read back and write again.
 */
#include <fwmpd/l3_cache.h>

#include "chip/refusal.h"
#include "fwm/wrappers.h"
#include "journal/call.h"
#include "sdk/access.h"
#include "sdk/convert.h"
#include "switch.h"

#include <algorithm>

namespace simswitch::fwm
{

namespace
{

constexpr const char *INTERFACE = "L3 interface";
constexpr const char *INGRESS = "L3 ingress object";

Outcome check_id(const char *kind, int id)
{
    if (id < 0 || id > chip::LAST_IIF) {
        return chip::out_of_range(kind, id, 0, chip::LAST_IIF);
    }
    return {};
}

} // namespace

int Wrappers::lowest_free_l3_interface()
{
    while (l3_interfaces_.contains(l3_interfaces_from_)) {
        ++l3_interfaces_from_;
    }
    return l3_interfaces_from_;
}

Outcome Wrappers::create_l3_interface(bcm_l3_intf_t &intf)
{
    const bool replace = (intf.l3a_flags & sdk::L3_INTF_REPLACE) != 0;
    const bool with_id = replace || (intf.l3a_flags & sdk::L3_INTF_WITH_ID) != 0;
    const int id = with_id ? intf.l3a_intf_id : lowest_free_l3_interface();
    const bool taken = l3_interfaces_.contains(id);
    if (intf.l3a_vid > chip::LAST_VLAN) {
        return chip::out_of_range("VLAN", intf.l3a_vid, 0, chip::LAST_VLAN);
    }
    if (Outcome refused = with_id ? check_id(INTERFACE, id) : Outcome{}; !refused.ok()) {
        return refused;
    }
    if (taken && !replace) {
        return chip::existing(INTERFACE, id);
    }
    if (!taken && l3_interfaces_.size() >= chip_.limits().l3_interfaces) {
        return chip::table_full(INTERFACE, chip_.limits().l3_interfaces);
    }
    l3_interfaces_.insert(id);
    intf.l3a_intf_id = id;
    push(L3InterfaceWrite{id, replace, sdk::to_chip(intf)});
    return {};
}

Outcome Wrappers::delete_l3_interface(int id)
{
    if (l3_interfaces_.erase(id) == 0) {
        return chip::unknown(INTERFACE, id);
    }
    l3_interfaces_from_ = std::min(l3_interfaces_from_, id);
    push(L3InterfaceDelete{id});
    return {};
}

Outcome Wrappers::create_l3_ingress(const bcm_l3_ingress_t &ingress, int iif)
{
    if (Outcome refused = check_id(INGRESS, iif); !refused.ok()) {
        return refused;
    }
    if (!l3_ingresses_.contains(iif) && l3_ingresses_.size() >= chip_.limits().l3_ingresses) {
        return chip::table_full(INGRESS, chip_.limits().l3_ingresses);
    }
    l3_ingresses_[iif] = ingress;
    push(L3IngressWrite{iif, sdk::to_chip(ingress)});
    return {};
}

Outcome Wrappers::destroy_l3_ingress(int iif)
{
    if (l3_ingresses_.erase(iif) == 0) {
        return chip::unknown(INGRESS, iif);
    }
    push(L3IngressDestroy{iif});
    return {};
}

bcm_l3_ingress_t *Wrappers::l3_ingress(int iif)
{
    auto it = l3_ingresses_.find(iif);
    return it == l3_ingresses_.end() ? nullptr : &it->second;
}

} // namespace simswitch::fwm

using namespace simswitch;

extern "C" {

int rtifhal_get_bcm_unit(int chip)
{
    Call call(Layer::service, __func__, chip);
    return call.run([] { return sdk::UNIT; });
}

int rtifhal_bcm_l3_intf_create(int unit, bcm_l3_intf_t *intf)
{
    Call call(Layer::wrapper, __func__, unit, intf);
    return call.run([&]() -> Outcome {
        const int asked_id = intf->l3a_intf_id;
        Outcome outcome = sdk::check_unit(unit);
        if (outcome.ok()) {
            outcome = Switch::current().wrappers.create_l3_interface(*intf);
        }
        if (intf->l3a_intf_id != asked_id) {
            call.out("id", intf->l3a_intf_id);
        }
        return outcome;
    });
}

int rtifhal_bcm_l3_intf_delete(int unit, bcm_l3_intf_t *intf)
{
    Call call(Layer::wrapper, __func__, unit, intf);
    return call.run([&]() -> Outcome {
        Outcome outcome = sdk::check_unit(unit);
        return outcome.ok() ? Switch::current().wrappers.delete_l3_interface(intf->l3a_intf_id)
                            : outcome;
    });
}

int rtifhal_bcm_l3_ingress_create(int unit, bcm_l3_ingress_t *ingress, int *iif)
{
    Call call(Layer::wrapper, __func__, unit, ingress, *iif);
    return call.run([&]() -> Outcome {
        Outcome outcome = sdk::check_unit(unit);
        return outcome.ok() ? Switch::current().wrappers.create_l3_ingress(*ingress, *iif)
                            : outcome;
    });
}

int rtifhal_bcm_l3_ingress_destroy(int unit, int iif)
{
    Call call(Layer::wrapper, __func__, unit, iif);
    return call.run([&]() -> Outcome {
        Outcome outcome = sdk::check_unit(unit);
        return outcome.ok() ? Switch::current().wrappers.destroy_l3_ingress(iif) : outcome;
    });
}

bcm_l3_ingress_t *rtifhal_bcm_l3_ingress_get_from_cache(int iif)
{
    Call call(Layer::wrapper, __func__, iif);
    return call.run_pointer([&] { return Switch::current().wrappers.l3_ingress(iif); });
}

} // extern "C"
