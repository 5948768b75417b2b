/*
 * vlan_records.cpp: the forwarding manager's VLANs, and the C functions that
 * ask about them (fwm/vlan.h).
 */
#include "fwm/vlan_records.h"

#include "chip/basics.h"
#include "chip/refusal.h"
#include "journal/call.h"
#include "switch.h"

#include <fwm/vlan.h>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Switch;

namespace simswitch::fwm
{

namespace
{

constexpr const char *KIND = "VLAN record";
constexpr int INSTANCE = 1;

} // namespace

Outcome VlanDirectory::add(int vlan, PrivateVlan role)
{
    if (!chip::is_vlan(vlan)) {
        return chip::out_of_range(KIND, vlan, 1, chip::LAST_VLAN);
    }
    if (!records_.try_emplace(vlan, fwm_fwim_vlan{.pvlan = {.role = role}}).second) {
        return chip::existing(KIND, vlan);
    }
    changes_.note(vlan);
    return {};
}

Outcome VlanDirectory::remove(int vlan)
{
    changes_.note(vlan);
    return records_.erase(vlan) != 0 ? Outcome{} : chip::unknown(KIND, vlan);
}

Outcome VlanDirectory::set_role(int vlan, PrivateVlan role)
{
    fwm_fwim_vlan *found = find(vlan);
    if (found == nullptr) {
        return chip::unknown(KIND, vlan);
    }
    changes_.note(vlan);
    found->pvlan.role = role;
    return {};
}

PrivateVlan VlanDirectory::role(int vlan) const
{
    const auto found = records_.find(vlan);
    return found == records_.end() ? PrivateVlan::none : found->second.pvlan.role;
}

fwm_fwim_vlan *VlanDirectory::find(int vlan)
{
    const auto found = records_.find(vlan);
    return found == records_.end() ? nullptr : &found->second;
}

std::map<int, PrivateVlan> VlanDirectory::all() const
{
    std::map<int, PrivateVlan> roles;
    for (const auto &[vlan, record] : records_) {
        roles[vlan] = record.pvlan.role;
    }
    return roles;
}

void VlanDirectory::clear()
{
    for (const auto &[vlan, record] : records_) {
        changes_.note(vlan);
    }
    records_.clear();
}

} // namespace simswitch::fwm

using simswitch::fwm::PrivateVlan;

extern "C" {

struct fwm_fwim_vlan *FWM_FWIM_FIND_VLAN(int instance, uint16_t vlan)
{
    Call call(Layer::service, __func__, instance, vlan);
    return call.run_pointer([&]() -> fwm_fwim_vlan * {
        if (instance != simswitch::fwm::INSTANCE) {
            call.reason(simswitch::chip::unknown("instance", instance).reason);
            return nullptr;
        }
        return Switch::current().host.vlans.find(vlan);
    });
}

struct fwm_fwim_pvlan *FWM_FWIM_VLAN_PVLAN(struct fwm_fwim_vlan *vlan)
{
    Call call(Layer::service, __func__, vlan);
    return call.run_pointer([&]() -> fwm_fwim_pvlan * {
        const bool is_in_one = vlan != nullptr && vlan->pvlan.role != PrivateVlan::none;
        return is_in_one ? &vlan->pvlan : nullptr;
    });
}

int FWM_FWIM_PVLAN_IS_PRIMARY(struct fwm_fwim_pvlan *pvlan)
{
    Call call(Layer::service, __func__, pvlan);
    return call.run(
        [&] { return pvlan != nullptr && pvlan->role == PrivateVlan::primary ? 1 : 0; });
}

} // extern "C"
