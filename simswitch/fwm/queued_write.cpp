/*
 * queued_write.cpp: what each queued write does, and its words.
 */
#include "fwm/queued_write.h"

#include <fmt/format.h>

namespace simswitch::fwm
{

namespace
{

/** Does one kind of write. */
struct Applier {
    chip::Chip &chip;

    Outcome operator()(const PortControlWrite &w) const
    {
        return chip.ports.set_control(w.port, w.control, w.value);
    }
    Outcome operator()(const PortVlanControlWrite &w) const
    {
        return chip.ports.set_vlan_control(w.port, w.control, w.value);
    }
    Outcome operator()(const UntaggedVlanWrite &w) const
    {
        return chip.ports.set_untagged_vlan(w.port, w.vlan);
    }
    Outcome operator()(const DiscardWrite &w) const
    {
        return chip.ports.set_discard(w.port, w.mode);
    }
    Outcome operator()(const PortStateWrite &w) const
    {
        return chip.stgs.set_state_of_port(w.port, w.state);
    }
    Outcome operator()(const StgStateWrite &w) const
    {
        return chip.stgs.set_state(w.stg, w.port, w.state);
    }
    Outcome operator()(const VlanPortsAdd &w) const
    {
        return chip.vlans.add_ports(w.vlan, w.ports, w.untagged);
    }
    Outcome operator()(const VlanPortsRemove &w) const
    {
        return chip.vlans.remove_ports(w.vlan, w.ports);
    }
    Outcome operator()(const VlanDestroy &w) const { return chip.vlans.remove(w.vlan); }
    Outcome operator()(const VlanControlsWrite &w) const
    {
        return chip.vlans.set_controls(w.vlan, w.controls);
    }
    Outcome operator()(const VlanBlocksWrite &w) const
    {
        return chip.vlans.set_blocks(w.vlan, w.blocks);
    }
    Outcome operator()(const SwitchControlWrite &w) const
    {
        return chip.switch_controls.set(w.control, w.value);
    }
    Outcome operator()(const L3InterfaceWrite &w) const
    {
        return w.replace ? chip.l3_interfaces.set(w.id, w.interface)
                         : chip.l3_interfaces.create(w.id, w.interface);
    }
    Outcome operator()(const L3InterfaceDelete &w) const { return chip.l3_interfaces.remove(w.id); }
    Outcome operator()(const L3IngressWrite &w) const
    {
        return chip.l3_ingresses.set(w.id, w.ingress);
    }
    Outcome operator()(const L3IngressDestroy &w) const { return chip.l3_ingresses.remove(w.id); }
    Outcome operator()(const TranslationAdd &w) const
    {
        return chip.vlan_translations.create(w.key, w.action);
    }
    Outcome operator()(const TranslationDelete &w) const
    {
        return chip.vlan_translations.remove(w.key);
    }
    Outcome operator()(const TrunkWrite &w) const { return chip.trunks.set(w.trunk, w.record); }
    Outcome operator()(const TrunkMemberAdd &w) const
    {
        return chip.trunks.add_member(w.trunk, w.member);
    }
    Outcome operator()(const TrunkMemberDelete &w) const
    {
        return chip.trunks.remove_member(w.trunk, w.gport);
    }
};

/** Puts one kind of write in words. */
struct Describer {
    std::string operator()(const PortControlWrite &w) const
    {
        return fmt::format("port {} control {} = {}", w.port, w.control, w.value);
    }
    std::string operator()(const PortVlanControlWrite &w) const
    {
        return fmt::format("port {} vlan control {} = {}", w.port, w.control, w.value);
    }
    std::string operator()(const UntaggedVlanWrite &w) const
    {
        return fmt::format("port {} untagged vlan = {}", w.port, w.vlan);
    }
    std::string operator()(const DiscardWrite &w) const
    {
        return fmt::format("port {} discard = {}", w.port, w.mode);
    }
    std::string operator()(const PortStateWrite &w) const
    {
        return fmt::format("port {} stp = {}", w.port, w.state);
    }
    std::string operator()(const StgStateWrite &w) const
    {
        return fmt::format("stg {} port {} stp = {}", w.stg, w.port, w.state);
    }
    std::string operator()(const VlanPortsAdd &w) const
    {
        return fmt::format("vlan {} add ports", w.vlan);
    }
    std::string operator()(const VlanPortsRemove &w) const
    {
        return fmt::format("vlan {} remove ports", w.vlan);
    }
    std::string operator()(const VlanDestroy &w) const
    {
        return fmt::format("vlan {} destroy", w.vlan);
    }
    std::string operator()(const VlanControlsWrite &w) const
    {
        return fmt::format("vlan {} controls", w.vlan);
    }
    std::string operator()(const VlanBlocksWrite &w) const
    {
        return fmt::format("vlan {} block masks", w.vlan);
    }
    std::string operator()(const SwitchControlWrite &w) const
    {
        return fmt::format("switch control {} = {}", w.control, w.value);
    }
    std::string operator()(const L3InterfaceWrite &w) const
    {
        return fmt::format("l3 interface {} {}", w.id, w.replace ? "replace" : "create");
    }
    std::string operator()(const L3InterfaceDelete &w) const
    {
        return fmt::format("l3 interface {} delete", w.id);
    }
    std::string operator()(const L3IngressWrite &w) const
    {
        return fmt::format("l3 ingress {} write", w.id);
    }
    std::string operator()(const L3IngressDestroy &w) const
    {
        return fmt::format("l3 ingress {} destroy", w.id);
    }
    std::string operator()(const TranslationAdd &w) const
    {
        return fmt::format("translation {} add", text(w.key));
    }
    std::string operator()(const TranslationDelete &w) const
    {
        return fmt::format("translation {} delete", text(w.key));
    }
    std::string operator()(const TrunkWrite &w) const
    {
        return fmt::format("trunk {} write, {} members", w.trunk, w.record.members.size());
    }
    std::string operator()(const TrunkMemberAdd &w) const
    {
        return fmt::format("trunk {} add member {:#x}", w.trunk,
                           static_cast<unsigned>(w.member.gport));
    }
    std::string operator()(const TrunkMemberDelete &w) const
    {
        return fmt::format("trunk {} delete member {:#x}", w.trunk, static_cast<unsigned>(w.gport));
    }
};

} // namespace

Outcome apply(const QueuedWrite &write, chip::Chip &chip)
{
    return std::visit(Applier{chip}, write);
}

std::string describe(const QueuedWrite &write)
{
    return std::visit(Describer{}, write);
}

} // namespace simswitch::fwm
