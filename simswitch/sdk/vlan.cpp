/*
 * vlan.cpp: VLANs and their controls by direct calls (sdk/vlan.h) over
 * chip/vlans.h and chip/ports.h.
 */
#include "sdk/access.h"
#include "sdk/convert.h"

#include <sdk/vlan.h>

using namespace simswitch;

extern "C" {

void bcm_vlan_action_set_t_init(bcm_vlan_action_set_t *action)
{
    sdk::clear_record(__func__, action);
}

int bcm_vlan_create(int unit, bcm_vlan_t vlan)
{
    Call call(Layer::sdk, __func__, unit, vlan);
    return sdk::write(call, unit, [&](chip::Chip &chip) { return chip.vlans.create(vlan); });
}

void bcm_vlan_control_vlan_t_init(bcm_vlan_control_vlan_t *control)
{
    sdk::clear_record(__func__, control);
}

int bcm_vlan_control_vlan_get(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t *control)
{
    Call call(Layer::sdk, __func__, unit, vlan);
    return sdk::read(call, unit, [&](const chip::Chip &chip) {
        chip::VlanControls controls;
        Outcome outcome = chip.vlans.get_controls(vlan, controls);
        if (outcome.ok()) {
            *control = sdk::to_sdk(controls);
            call.out("control", *control);
        }
        return outcome;
    });
}

int bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control)
{
    Call call(Layer::sdk, __func__, unit, vlan, control);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        return chip.vlans.set_controls(vlan, sdk::to_chip(control));
    });
}

int bcm_vlan_control_port_set(int unit, int port, int control, int value)
{
    Call call(Layer::sdk, __func__, unit, port, control, value);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        return chip.ports.set_vlan_control(port, control, value);
    });
}

void bcm_vlan_block_t_init(bcm_vlan_block_t *block)
{
    sdk::clear_record(__func__, block);
}

} // extern "C"
