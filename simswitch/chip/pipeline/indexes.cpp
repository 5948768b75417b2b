/*
 * indexes.cpp: what the pipeline derives from the chip's tables.
 */
#include "chip/pipeline/indexes.h"

#include <algorithm>

namespace simswitch::chip::pipeline
{

namespace
{

PortFacts facts_of(const Port &port)
{
    const auto value = [](const std::map<int, int> &controls, int control) {
        const auto found = controls.find(control);
        return found == controls.end() ? 0 : found->second;
    };
    PortFacts facts;
    facts.untagged_vlan = port.untagged_vlan;
    facts.discard = port.discard;
    facts.translates = value(port.vlan_controls, VLAN_CONTROL_TRANSLATES) != 0;
    facts.drops_on_miss = value(port.vlan_controls, VLAN_CONTROL_DROPS_ON_MISS) != 0;
    facts.key_type = value(port.vlan_controls, VLAN_CONTROL_TRANSLATE_KEY);
    facts.ip4 = value(port.controls, PORT_CONTROL_IP4) != 0;
    facts.ip6 = value(port.controls, PORT_CONTROL_IP6) != 0;
    facts.mpls = value(port.controls, PORT_CONTROL_MPLS) != 0;
    facts.ingress = value(port.controls, PORT_CONTROL_INGRESS);
    return facts;
}

int port_of(int gport)
{
    const int port = gport & GPORT_PORT_BITS;
    return gport_kind(gport) == GPORT_MODULE_PORT && is_port(port) ? port : -1;
}

} // namespace

void Indexes::refresh()
{
    stations.refresh(chip_.stations);
    routes.refresh(chip_.routes);
    if (ports_generation_ != chip_.ports.generation() ||
        trunks_generation_ != chip_.trunks.generation()) {
        refresh_ports();
    }
    if (groups_generation_ != chip_.field_groups.generation() ||
        entries_generation_ != chip_.field_entries.generation()) {
        refresh_rules();
    }
}

void Indexes::refresh_ports()
{
    ports_generation_ = chip_.ports.generation();
    trunks_generation_ = chip_.trunks.generation();
    ports_.fill({});
    for (const auto &[id, port] : chip_.ports.all()) {
        ports_[static_cast<std::size_t>(id)] = facts_of(port);
    }
    trunk_ports_.clear();
    for (const auto &[id, trunk] : chip_.trunks.all()) {
        std::vector<int> &ports = trunk_ports_[id];
        for (const TrunkMember &member : trunk.members) {
            const int port = port_of(member.gport);
            ports.push_back(port);
            if (port >= 0 && ports_[static_cast<std::size_t>(port)].trunk < 0) {
                ports_[static_cast<std::size_t>(port)].trunk = id;
            }
        }
    }
}

void Indexes::refresh_rules()
{
    groups_generation_ = chip_.field_groups.generation();
    entries_generation_ = chip_.field_entries.generation();
    std::map<int, RuleGroup> groups;
    for (const auto &[id, entry] : chip_.field_entries.all()) {
        const FieldGroup *group = chip_.field_groups.find(entry.group);
        if (group != nullptr && group->enabled && entry.installed) {
            RuleGroup &rules = groups[entry.group];
            rules.id = entry.group;
            rules.priority = group->priority;
            rules.rules.push_back({id, *entry.installed});
        }
    }
    rule_groups_.clear();
    for (auto &[id, group] : groups) {
        rule_groups_.push_back(std::move(group));
    }
    std::stable_sort(
        rule_groups_.begin(), rule_groups_.end(),
        [](const RuleGroup &a, const RuleGroup &b) { return a.priority > b.priority; });
}

const std::vector<int> *Indexes::trunk_ports(int trunk) const
{
    const auto found = trunk_ports_.find(trunk);
    return found == trunk_ports_.end() ? nullptr : &found->second;
}

} // namespace simswitch::chip::pipeline
