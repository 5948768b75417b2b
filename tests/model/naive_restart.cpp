/*
 * naive_restart.cpp: what a restart leaves of the naive model, by docs/restart.md: a restore finds
 * the chip as it was and brings the configuration up beside it, the others begin anew.
 */
#include "model/naive_switch.h"

#include "config/address.h"

#include <algorithm>

namespace model_test
{

using lab::config::Kind;

void NaiveSwitch::restart(const std::string &mode)
{
    if (mode == "restore") {
        restore();
        return;
    }
    const bool lies = lies_;
    *this = NaiveSwitch(*config_, chip_);
    lies_ = lies;
}

int NaiveSwitch::stored_number(const NaiveInterface &interface) const
{
    const auto &plan = interface.plan;
    const auto record = channel_records_.find(plan.main != 0 ? plan.main : plan.ifindex);
    return record != channel_records_.end() && record->second.name == plan.name
               ? record->second.number
               : 0;
}

/**
 * What is up stays, with its number. Nobody knows of numbers that are kept: they are free. Nobody
 * counts the ports of VLANs; ports and their subinterfaces are known to hold theirs. Then what the
 * configuration has and the switch hasn't is added, what has lost its VLAN to another's deletion is
 * programmed again, and so are all pairs and virtual MACs.
 */
void NaiveSwitch::restore()
{
    vlans_.forget_uses();
    numbers_.forget_lost();
    for (const std::string &name : order_) {
        NaiveInterface &interface = interfaces_.at(name);
        const auto &plan = interface.plan;
        interface.filed = plan.kind == Kind::subinterface && interface.standing == Standing::up;
        if (const int stored = stored_number(interface);
            interface.standing != Standing::up && stored != 0) {
            // It is its owner's again, and is programmed again below.
            numbers_.give_back(stored);
            interface.number = stored;
            interface.standing = Standing::kept;
        } else if (interface.standing != Standing::up) {
            numbers_.forget(interface.number);
            interface.number = 0;
            interface.standing = Standing::down;
        } else if (plan.kind == Kind::svi) {
            vlans_.set_svi(plan.vlan, true);
        } else if (plan.chip_port != 0) {
            vlans_.restore_port(plan.kind == Kind::port ? int{NaiveVlans::ROUTED} : plan.vlan,
                                plan.chip_port);
        }
    }
    for (const auto &plan : lab::l3lif::vlan_plans_of(*config_)) {
        vlans_.set_up(plan.vlan, {});
    }
    for (const std::string &name : order_) {
        NaiveInterface &interface = interfaces_.at(name);
        if (int code = 0; interface.standing != Standing::up || !has_its_vlan(interface)) {
            add(interface, code);
        }
    }
    stations_.forget_owners(lab::config::mac_text(config_->device_mac));
    for (const auto &pair : lab::l3lif::pair_plans_of(*config_)) {
        stations_.add_pair(pair.primary, pair.secondary);
    }
    for (const auto &mac :
         lab::l3lif::virtual_mac_plans_of(*config_, lab::l3lif::plans_of(*config_))) {
        stations_.add_virtual_mac(owner_of(interfaces_.at(mac.owner)),
                                  lab::config::mac_text(mac.mac));
    }
}

} // namespace model_test
