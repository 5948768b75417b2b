/*
 * ports.cpp: the table of ports.
 */
#include "chip/ports.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

Outcome check_port(int port)
{
    if (!is_port(port)) {
        return out_of_range("port", port, 0, LAST_PORT);
    }
    return {};
}

bool has_control(Kind kind, int control)
{
    switch (control) {
    case PORT_CONTROL_IP4:
    case PORT_CONTROL_IP6:
    case PORT_CONTROL_IP4_MC:
    case PORT_CONTROL_IP6_MC:
    case PORT_CONTROL_MPLS:
    case PORT_CONTROL_INGRESS:
        return true;
    case PORT_CONTROL_VXLAN:
        return kind == Kind::trident2;
    default:
        return false;
    }
}

std::string controls_text(const std::map<int, int> &controls)
{
    std::string out;
    for (const auto &[control, value] : controls) {
        if (value != 0) {
            out += fmt::format(" {}={}", control, value);
        }
    }
    return out;
}

/** 0 is what a control is at boot, so it needs no place. */
void put(std::map<int, int> &controls, int control, int value)
{
    if (value == 0) {
        controls.erase(control);
    } else {
        controls[control] = value;
    }
}

int value_of(const std::map<int, int> &controls, int control)
{
    auto it = controls.find(control);
    return it == controls.end() ? 0 : it->second;
}

} // namespace

std::string text(const Port &port)
{
    return fmt::format("untagged {} discard {} controls{} vlan-controls{}", port.untagged_vlan,
                       port.discard, controls_text(port.controls),
                       controls_text(port.vlan_controls));
}

Outcome Ports::set_control(int port, int control, int value)
{
    Outcome outcome = check_control(port, control);
    if (outcome.ok()) {
        put(touch(port).controls, control, value);
    }
    return outcome;
}

Outcome Ports::set_vlan_control(int port, int control, int value)
{
    Outcome outcome = check_vlan_control(port, control);
    if (outcome.ok()) {
        put(touch(port).vlan_controls, control, value);
    }
    return outcome;
}

Outcome Ports::set_untagged_vlan(int port, int vlan)
{
    Outcome outcome = check_untagged_vlan(port, vlan);
    if (outcome.ok()) {
        touch(port).untagged_vlan = vlan;
    }
    return outcome;
}

Outcome Ports::set_discard(int port, int mode)
{
    Outcome outcome = check_discard(port, mode);
    if (outcome.ok()) {
        touch(port).discard = mode;
    }
    return outcome;
}

Outcome Ports::check_control(int port, int control) const
{
    Outcome outcome = check_port(port);
    if (outcome.ok() && !has_control(kind_, control)) {
        outcome = unavailable("port control", control, kind_name(kind_));
    }
    return outcome;
}

Outcome Ports::check_vlan_control(int port, int control) const
{
    Outcome outcome = check_port(port);
    if (outcome.ok() && (control < 0 || control > LAST_VLAN_PORT_CONTROL)) {
        outcome = out_of_range("VLAN control", control, 0, LAST_VLAN_PORT_CONTROL);
    }
    return outcome;
}

Outcome Ports::check_untagged_vlan(int port, int vlan) const
{
    Outcome outcome = check_port(port);
    if (outcome.ok() && !is_vlan(vlan)) {
        outcome = out_of_range("VLAN", vlan, 1, LAST_VLAN);
    }
    return outcome;
}

Outcome Ports::check_discard(int port, int mode) const
{
    Outcome outcome = check_port(port);
    if (outcome.ok() && (mode < 0 || mode > LAST_DISCARD_MODE)) {
        outcome = out_of_range("discard mode", mode, 0, LAST_DISCARD_MODE);
    }
    return outcome;
}

Port Ports::get(int port) const
{
    const Port *found = table_.find(port);
    return found != nullptr ? *found : Port{};
}

const Port *Ports::find(int port) const
{
    const Port *found = table_.find(port);
    return found == nullptr || *found == Port{} ? nullptr : found;
}

int Ports::control(int port, int control) const
{
    const Port *found = table_.find(port);
    return found != nullptr ? value_of(found->controls, control) : 0;
}

int Ports::vlan_control(int port, int control) const
{
    const Port *found = table_.find(port);
    return found != nullptr ? value_of(found->vlan_controls, control) : 0;
}

std::map<int, Port> Ports::all() const
{
    std::map<int, Port> changed = table_.all();
    std::erase_if(changed, [](const auto &entry) { return entry.second == Port{}; });
    return changed;
}

Port &Ports::touch(int port)
{
    if (Port *found = table_.edit(port)) {
        return *found;
    }
    return table_.put(port, {});
}

Outcome Ports::restore(int id, const Port &record)
{
    Outcome outcome = check_untagged_vlan(id, record.untagged_vlan);
    if (outcome.ok()) {
        outcome = check_discard(id, record.discard);
    }
    for (const auto &[control, value] : record.controls) {
        outcome = outcome.ok() ? check_control(id, control) : outcome;
    }
    for (const auto &[control, value] : record.vlan_controls) {
        outcome = outcome.ok() ? check_vlan_control(id, control) : outcome;
    }
    if (outcome.ok()) {
        table_.put(id, record);
    }
    return outcome;
}

} // namespace simswitch::chip
