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

using namespace simswitch;

extern "C" {

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
