/*
 * field.cpp: the field processor (sdk/field.h) over chip/field_entries.h and
 * chip/field_groups.h.
 *
 * Edits stay in the SDK's copy of an entry; only the reinstall is a write to
 * the chip.
 */
#include "chip/refusal.h"
#include "sdk/access.h"
#include "sdk/convert.h"

#include <sdk/field.h>

#include <algorithm>
#include <fmt/format.h>
#include <optional>

using namespace simswitch;

namespace
{

std::set<int> qualifiers_of(const bcm_field_qset_t &qset)
{
    std::set<int> qualifiers;
    for (unsigned qualifier = 0; qualifier < std::size(qset.w) * 32; ++qualifier) {
        if ((qset.w[qualifier / 32] & (1U << (qualifier % 32))) != 0) {
            qualifiers.insert(static_cast<int>(qualifier));
        }
    }
    return qualifiers;
}

} // namespace

extern "C" {

int bcm_field_group_create_id(int unit, bcm_field_qset_t qset, int priority, int group)
{
    const chip::FieldGroup wanted = {.priority = priority, .qualifiers = qualifiers_of(qset)};
    const std::string shown = fmt::format("qualifiers {{{}}}", fmt::join(wanted.qualifiers, " "));
    Call call(Layer::sdk, __func__, unit, Word{shown}, priority, group);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.field_groups.create(group, wanted); });
}

int bcm_field_entry_create(int unit, int group, bcm_field_entry_t *entry)
{
    Call call(Layer::sdk, __func__, unit, group);
    return sdk::read(call, unit, [&](chip::Chip &chip) {
        int id = 0;
        Outcome outcome = chip.field_entries.create(group, id);
        if (outcome.ok()) {
            *entry = static_cast<bcm_field_entry_t>(id);
            call.out("entry", id);
        }
        return outcome;
    });
}

int bcm_field_qualify_L3Routable(int unit, int entry, uint8_t data, uint8_t mask)
{
    Call call(Layer::sdk, __func__, unit, entry, data, mask);
    return sdk::read(call, unit, [&](chip::Chip &chip) -> Outcome {
        if (data > 1 || mask > 1) {
            return chip::out_of_range("data or mask of the L3-routable qualifier",
                                      std::max(data, mask), 0, 1);
        }
        return chip.field_entries.set_l3_routable(entry, mask == 0 ? std::nullopt
                                                                   : std::optional(data != 0));
    });
}

int bcm_field_action_add(int unit, int entry, int action, uint32_t first, uint32_t second)
{
    Call call(Layer::sdk, __func__, unit, entry, action, first, second);
    return sdk::read(
        call, unit, [&](chip::Chip &chip) { return chip.field_entries.add_action(entry, action); });
}

int bcm_field_entry_install(int unit, int entry)
{
    Call call(Layer::sdk, __func__, unit, entry);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.field_entries.install(entry); });
}

int bcm_field_action_ports_get(int unit, int entry, int action, bcm_pbmp_t *pbmp)
{
    Call call(Layer::sdk, __func__, unit, entry, action);
    return sdk::read(call, unit, [&](const chip::Chip &chip) {
        chip::PortSet ports;
        Outcome outcome = chip.field_entries.get_port_action(entry, action, ports);
        if (outcome.ok()) {
            *pbmp = sdk::to_sdk(ports);
            call.out("ports", *pbmp);
        }
        return outcome;
    });
}

int bcm_field_action_remove(int unit, int entry, int action)
{
    Call call(Layer::sdk, __func__, unit, entry, action);
    return sdk::read(call, unit, [&](chip::Chip &chip) {
        return chip.field_entries.remove_action(entry, action);
    });
}

int bcm_field_action_ports_add(int unit, int entry, int action, bcm_pbmp_t pbmp)
{
    Call call(Layer::sdk, __func__, unit, entry, action, pbmp);
    return sdk::read(call, unit, [&](chip::Chip &chip) {
        return chip.field_entries.add_port_action(entry, action, sdk::to_chip(pbmp));
    });
}

int bcm_field_qualify_InPorts_get(int unit, int entry, bcm_pbmp_t *data, bcm_pbmp_t *mask)
{
    Call call(Layer::sdk, __func__, unit, entry);
    return sdk::read(call, unit, [&](const chip::Chip &chip) {
        chip::InPorts in_ports;
        Outcome outcome = chip.field_entries.get_in_ports(entry, in_ports);
        if (outcome.ok()) {
            *data = sdk::to_sdk(in_ports.data);
            *mask = sdk::to_sdk(in_ports.mask);
            call.out("data", *data);
            call.out("mask", *mask);
        }
        return outcome;
    });
}

int bcm_field_qualifier_delete(int unit, int entry, int qualifier)
{
    Call call(Layer::sdk, __func__, unit, entry, qualifier);
    return sdk::read(call, unit, [&](chip::Chip &chip) {
        return chip.field_entries.remove_qualifier(entry, qualifier);
    });
}

int bcm_field_qualify_InPorts(int unit, int entry, bcm_pbmp_t data, bcm_pbmp_t mask)
{
    Call call(Layer::sdk, __func__, unit, entry, data, mask);
    return sdk::read(call, unit, [&](chip::Chip &chip) {
        return chip.field_entries.set_in_ports(entry, {sdk::to_chip(data), sdk::to_chip(mask)});
    });
}

int bcm_field_entry_reinstall(int unit, int entry)
{
    Call call(Layer::sdk, __func__, unit, entry);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.field_entries.install(entry); });
}

int bcm_field_group_enable_get(int unit, int group, int *enable)
{
    Call call(Layer::sdk, __func__, unit, group);
    return sdk::read(call, unit, [&](const chip::Chip &chip) -> Outcome {
        const chip::FieldGroup *found = chip.field_groups.find(group);
        if (found == nullptr) {
            return chip::unknown("field group", group);
        }
        *enable = found->enabled ? 1 : 0;
        call.out("enable", *enable);
        return {};
    });
}

int bcm_field_group_enable_set(int unit, int group, int enable)
{
    Call call(Layer::sdk, __func__, unit, group, enable);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        return chip.field_groups.set_enabled(group, enable != 0);
    });
}

} // extern "C"
