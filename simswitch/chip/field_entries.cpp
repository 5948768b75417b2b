/*
 * field_entries.cpp: the table of field entries.
 */
#include "chip/field_entries.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "field entry";

Outcome lacks(int id, std::string_view what, int number)
{
    return {ERROR_NOT_FOUND, fmt::format("field entry {} has no {} {}", id, what, number)};
}

Outcome has_already(int id, int action)
{
    return {ERROR_EXISTS, fmt::format("field entry {} has action {} already", id, action)};
}

bool has_action(const FieldRule &rule, int action)
{
    return rule.port_actions.contains(action) || rule.actions.contains(action);
}

} // namespace

std::string text(const FieldRule &rule)
{
    std::string out;
    if (rule.in_ports) {
        out +=
            fmt::format("in-ports {}/{} ", rule.in_ports->data.text(), rule.in_ports->mask.text());
    }
    if (rule.l3_routable) {
        out += fmt::format("l3-routable {} ", *rule.l3_routable ? 1 : 0);
    }
    for (const auto &[action, ports] : rule.port_actions) {
        out += fmt::format("action {} {} ", action, ports.text());
    }
    for (int action : rule.actions) {
        out += fmt::format("action {} ", action);
    }
    if (!out.empty()) {
        out.pop_back();
    }
    return out;
}

std::string text(const FieldEntry &entry)
{
    if (!entry.installed) {
        return fmt::format("group {} not installed, copy ({})", entry.group, text(entry.copy));
    }
    return fmt::format("group {} installed ({}) copy {}", entry.group, text(*entry.installed),
                       entry.copy == *entry.installed ? "the same"
                                                      : fmt::format("({})", text(entry.copy)));
}

FieldEntries::FieldEntries(std::size_t limit, int region_size, const FieldGroups &groups)
    : limit_(limit), groups_(groups)
{
    boot(region_size);
}

Outcome FieldEntries::create(int group, int &id)
{
    if (groups_.find(group) == nullptr) {
        return unknown("field group", group);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    id = ids_.take();
    table_.put(id, FieldEntry{group, {}, {}});
    return {};
}

Outcome FieldEntries::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown(KIND, id);
    }
    if (id >= FIRST_FIELD_ENTRY) {
        ids_.give_back(id);
    }
    return {};
}

Outcome FieldEntries::add_port_action(int id, int action, const PortSet &ports)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    if (has_action(entry->copy, action)) {
        return has_already(id, action);
    }
    entry->copy.port_actions.emplace(action, ports);
    return {};
}

Outcome FieldEntries::add_action(int id, int action)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    if (has_action(entry->copy, action)) {
        return has_already(id, action);
    }
    entry->copy.actions.insert(action);
    return {};
}

Outcome FieldEntries::remove_action(int id, int action)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    if (entry->copy.port_actions.erase(action) + entry->copy.actions.erase(action) == 0) {
        return lacks(id, "action", action);
    }
    return {};
}

Outcome FieldEntries::set_in_ports(int id, const InPorts &in_ports)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    entry->copy.in_ports = in_ports;
    return {};
}

Outcome FieldEntries::set_l3_routable(int id, std::optional<bool> routable)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    entry->copy.l3_routable = routable;
    return {};
}

Outcome FieldEntries::remove_qualifier(int id, int qualifier)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    if (qualifier == QUALIFIER_IN_PORTS && entry->copy.in_ports) {
        entry->copy.in_ports.reset();
        return {};
    }
    if (qualifier == QUALIFIER_L3_ROUTABLE && entry->copy.l3_routable) {
        entry->copy.l3_routable.reset();
        return {};
    }
    return lacks(id, "qualifier", qualifier);
}

Outcome FieldEntries::install(int id)
{
    FieldEntry *entry = table_.edit(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    entry->installed = entry->copy;
    return {};
}

Outcome FieldEntries::get_port_action(int id, int action, PortSet &ports) const
{
    const FieldEntry *entry = table_.find(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    auto it = entry->copy.port_actions.find(action);
    if (it == entry->copy.port_actions.end()) {
        return lacks(id, "action", action);
    }
    ports = it->second;
    return {};
}

Outcome FieldEntries::get_in_ports(int id, InPorts &in_ports) const
{
    const FieldEntry *entry = table_.find(id);
    if (entry == nullptr) {
        return unknown(KIND, id);
    }
    if (!entry->copy.in_ports) {
        return lacks(id, "qualifier", QUALIFIER_IN_PORTS);
    }
    in_ports = *entry->copy.in_ports;
    return {};
}

void FieldEntries::boot(int region_size)
{
    FieldRule redirect;
    redirect.port_actions.emplace(ACTION_REDIRECT_PORTS, PortSet::front());
    FieldRule redirect_from_front = redirect;
    redirect_from_front.in_ports = InPorts{PortSet::front(), PortSet::all()};

    for (int from_top : {1, 3}) {
        table_.put(region_size - from_top, FieldEntry{SUP_GROUP, redirect, redirect});
    }
    for (int from_top : {4, 5, 8}) {
        table_.put(region_size - from_top,
                   FieldEntry{SUP_GROUP, redirect_from_front, redirect_from_front});
    }
}

Outcome FieldEntries::restore(int id, const FieldEntry &record)
{
    const int last = FIRST_FIELD_ENTRY + static_cast<int>(limit_) - 1;
    if (id < 0 || id > last) {
        return out_of_range(KIND, id, 0, last);
    }
    table_.put(id, record);
    ids_.take(id);
    return {};
}

} // namespace simswitch::chip
