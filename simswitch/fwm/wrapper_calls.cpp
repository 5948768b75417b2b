/*
 * wrapper_calls.cpp: the C functions of the batching wrappers
 * (fwmpd/wrappers.h) over wrappers.h.
 */
#include <fwmpd/wrappers.h>

#include "chip/refusal.h"
#include "journal/call.h"
#include "sdk/access.h"
#include "sdk/convert.h"
#include "switch.h"

#include <fmt/format.h>
#include <span>

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

Outcome check_member_list(const bcm_trunk_member_t *members, int count)
{
    if (count < 0 || count > static_cast<int>(chip::TRUNK_MEMBER_MAX)) {
        return chip::out_of_range("number of trunk members", count, 0, chip::TRUNK_MEMBER_MAX);
    }
    if (members == nullptr && count > 0) {
        return {ERROR_PARAM, fmt::format("no members given, though their number is {}", count)};
    }
    return {};
}

/** The members of a caller's array; none when it is refused. */
std::span<const bcm_trunk_member_t> member_list(const bcm_trunk_member_t *members, int count)
{
    if (count == 0 || !check_member_list(members, count).ok()) {
        return {};
    }
    return {members, static_cast<std::size_t>(count)};
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

int fwmpd_bcm_set_vlan_pbmp(bcm_vlan_t vlan, int port)
{
    Call call(Layer::wrapper, __func__, vlan, port);
    return call.run([&] { return Switch::current().wrappers.cache_vlan_port(vlan, port); });
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

int fwmpd_bcm_vlan_control_port_set(int unit, int port, int control, int value)
{
    Call call(Layer::wrapper, __func__, unit, port, control, value);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.set_port_vlan_control(port, control, value);
    });
}

int fwmpd_bcm_vlan_translate_action_add(int unit, bcm_gport_t gport, int key_type, int outer_vlan,
                                        int inner_vlan, bcm_vlan_action_set_t *action)
{
    Call call(Layer::wrapper, __func__, unit, static_cast<std::uint32_t>(gport), key_type,
              outer_vlan, inner_vlan, action);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.add_translation({gport, key_type, outer_vlan, inner_vlan},
                                        sdk::to_chip(*action));
    });
}

int fwmpd_bcm_vlan_translate_action_delete(int unit, bcm_gport_t gport, int key_type,
                                           int outer_vlan, int inner_vlan)
{
    Call call(Layer::wrapper, __func__, unit, static_cast<std::uint32_t>(gport), key_type,
              outer_vlan, inner_vlan);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.remove_translation({gport, key_type, outer_vlan, inner_vlan});
    });
}

int fwmpd_bcm_trunk_set(int unit, int tid, bcm_trunk_info_t *info, int count,
                        bcm_trunk_member_t *members)
{
    const std::span<const bcm_trunk_member_t> list = member_list(members, count);
    Call call(Layer::wrapper, __func__, unit, tid, info, count, list);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) -> Outcome {
        Outcome refused = check_member_list(members, count);
        if (!refused.ok()) {
            return refused;
        }
        return wrappers.set_trunk(tid, sdk::to_chip(*info, list));
    });
}

int fwmpd_bcm_trunk_member_add(int unit, int tid, bcm_trunk_member_t member)
{
    Call call(Layer::wrapper, __func__, unit, tid, member);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.add_trunk_member(tid, sdk::to_chip(member));
    });
}

int fwmpd_bcm_trunk_member_delete(int unit, int tid, bcm_trunk_member_t member)
{
    Call call(Layer::wrapper, __func__, unit, tid, member);
    return queue_write(call, unit, [&](fwm::Wrappers &wrappers) {
        return wrappers.remove_trunk_member(tid, member.gport);
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
