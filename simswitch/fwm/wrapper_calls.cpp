/*
 * wrapper_calls.cpp: the C functions of the batching wrappers
 * (fwmpd/wrappers.h) over wrappers.h.
 */
#include <fwmpd/wrappers.h>

#include "journal/call.h"
#include "sdk/access.h"
#include "sdk/convert.h"
#include "switch.h"

using namespace simswitch;

namespace
{

/** Runs a wrapper: the unit is checked, the body takes the wrapper layer. */
template <class Body> int queue_write(Call &call, int unit, Body &&body)
{
    return call.run([&]() -> Outcome {
        Outcome outcome = sdk::check_unit(unit);
        if (outcome.ok()) {
            outcome = body(Switch::current().wrappers);
        }
        return outcome;
    });
}

} // namespace

extern "C" {

int fwmpd_trident_batch_flush(void)
{
    Call call(Layer::wrapper, __func__);
    return call.run([]() -> Outcome {
        fwm::FlushReport report = Switch::current().wrappers.flush();
        return {report.code, std::move(report.text)};
    });
}

int fwmpd_bcm_port_control_set(int unit, int port, int control, int value)
{
    Call call(Layer::wrapper, __func__, unit, port, control, value);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_port_control(port, control, value);
    });
}

int fwmpd_bcm_port_untagged_vlan_set(int unit, int port, bcm_vlan_t vlan)
{
    Call call(Layer::wrapper, __func__, unit, port, vlan);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_untagged_vlan(port, vlan);
    });
}

int fwmpd_bcm_port_discard_set(int unit, int port, int mode)
{
    Call call(Layer::wrapper, __func__, unit, port, mode);
    return queue_write(call, unit,
                       [&](fwm::Wrappers &wrappers) { return wrappers.set_discard(port, mode); });
}

int fwmpd_bcm_port_stp_set(int unit, int port, int state)
{
    Call call(Layer::wrapper, __func__, unit, port, state);
    return queue_write(
        call, unit, [&](fwm::Wrappers &wrappers) { return wrappers.set_port_state(port, state); });
}

int fwmpd_bcm_stg_stp_set(int unit, int stg, int port, int state)
{
    Call call(Layer::wrapper, __func__, unit, stg, port, state);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_stg_state(stg, port, state);
    });
}

int fwmpd_bcm_vlan_port_add(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp, bcm_pbmp_t ubmp)
{
    Call call(Layer::wrapper, __func__, unit, vlan, pbmp, ubmp);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.add_vlan_ports(vlan, sdk::to_chip(pbmp), sdk::to_chip(ubmp));
    });
}

int fwmpd_bcm_vlan_port_remove(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp)
{
    Call call(Layer::wrapper, __func__, unit, vlan, pbmp);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.remove_vlan_ports(vlan, sdk::to_chip(pbmp));
    });
}

int fwmpd_bcm_vlan_destroy(int unit, bcm_vlan_t vlan)
{
    Call call(Layer::wrapper, __func__, unit, vlan);
    return queue_write(call, unit,
                       [&](fwm::Wrappers &wrappers) { return wrappers.destroy_vlan(vlan); });
}

bcm_vlan_control_vlan_t *fwmpd_bcm_vlan_control_vlan_get_from_cache(bcm_vlan_t vlan)
{
    Call call(Layer::wrapper, __func__, vlan);
    return call.run_pointer([&] { return Switch::current().wrappers.vlan_controls(vlan); });
}

int fwmpd_bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control)
{
    Call call(Layer::wrapper, __func__, unit, vlan, control);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_vlan_controls(vlan, control);
    });
}

int fwmpd_bcm_vlan_block_set(int unit, bcm_vlan_t vlan, bcm_vlan_block_t *block)
{
    Call call(Layer::wrapper, __func__, unit, vlan, block);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_vlan_blocks(vlan, *block);
    });
}

bcm_vlan_block_t *fwmpd_trident_get_bvbt(bcm_vlan_t vlan)
{
    Call call(Layer::wrapper, __func__, vlan);
    bcm_vlan_block_t *block =
        call.run_pointer([&] { return &Switch::current().wrappers.vlan_blocks(vlan); });
    // Callers rest on a record whatever happens: a fault gives them the one of no VLAN.
    return block != nullptr ? block : &Switch::current().wrappers.vlan_blocks(-1);
}

int fwmpd_trident_vlan_bvcvt_store(bcm_vlan_t vlan)
{
    Call call(Layer::wrapper, __func__, vlan);
    return call.run([&] {
        Switch::current().wrappers.store_vlan(vlan);
        return OK;
    });
}

int fwmpd_bcm_switch_control_set(int unit, int control, int value)
{
    Call call(Layer::wrapper, __func__, unit, control, value);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_switch_control(control, value);
    });
}

} // extern "C"
