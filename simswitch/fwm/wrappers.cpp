/*
 * wrappers.cpp: the write queue, and the caches of VLAN controls and block
 * masks. The L3 objects are in l3_cache.cpp, the trunks in trunk_cache.cpp.
 */
#include "fwm/wrappers.h"

#include "chip/refusal.h"
#include "sdk/convert.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace simswitch::fwm
{

namespace
{

constexpr int SPARE_BLOCK = chip::LAST_VLAN + 1;

Outcome check_vlan(int vlan)
{
    if (!chip::is_vlan(vlan)) {
        return chip::out_of_range("VLAN", vlan, 1, chip::LAST_VLAN);
    }
    return {};
}

Outcome check_port(int port)
{
    if (!chip::is_port(port)) {
        return chip::out_of_range("port", port, 0, chip::LAST_PORT);
    }
    return {};
}

Outcome check_state(int port, int state)
{
    if (Outcome outcome = check_port(port); !outcome.ok()) {
        return outcome;
    }
    if (state < chip::STP_DISABLED || state > chip::STP_FORWARDING) {
        return chip::out_of_range("spanning tree state", state, chip::STP_DISABLED,
                                  chip::STP_FORWARDING);
    }
    return {};
}

/** Closes the report of a flush: the numbers before the refusals. */
void finish_text(FlushReport &report)
{
    if (report.writes == 0) {
        return;
    }
    std::string numbers = fmt::format("{} write{}", report.writes, report.writes == 1 ? "" : "s");
    if (report.refused != 0) {
        numbers += fmt::format(", {} refused: ", report.refused);
    }
    report.text.insert(0, numbers);
}

} // namespace

Wrappers::Wrappers(chip::Chip &chip) : chip_(chip)
{
    rebuild_caches();
}

FlushReport Wrappers::flush()
{
    FlushReport report;
    flushing_.swap(queue_);
    for (const QueuedWrite &write : flushing_) {
        ++report.writes;
        const Outcome outcome = apply(write, chip_);
        if (outcome.ok()) {
            ++chip_.writes;
            continue;
        }
        report.code = report.refused == 0 ? outcome.code : report.code;
        report.text += fmt::format("{}{}: {}", report.refused == 0 ? "" : "; ", describe(write),
                                   outcome.reason);
        ++report.refused;
    }
    flushing_.clear();
    finish_text(report);
    tell_of_write();
    return report;
}

std::vector<std::string> Wrappers::pending_text() const
{
    std::vector<std::string> lines;
    std::transform(queue_.begin(), queue_.end(), std::back_inserter(lines), describe);
    return lines;
}

void Wrappers::set_capacity(std::size_t writes)
{
    capacity_ = std::max<std::size_t>(writes, 1);
    if (queue_.size() >= capacity_) {
        flush_by_itself();
    }
}

Outcome Wrappers::set_port_control(int port, int control, int value)
{
    Outcome outcome = chip_.ports.check_control(port, control);
    if (outcome.ok()) {
        push(PortControlWrite{port, control, value});
    }
    return outcome;
}

Outcome Wrappers::set_port_vlan_control(int port, int control, int value)
{
    Outcome outcome = chip_.ports.check_vlan_control(port, control);
    if (outcome.ok()) {
        push(PortVlanControlWrite{port, control, value});
    }
    return outcome;
}

Outcome Wrappers::set_untagged_vlan(int port, int vlan)
{
    Outcome outcome = chip_.ports.check_untagged_vlan(port, vlan);
    if (outcome.ok()) {
        push(UntaggedVlanWrite{port, vlan});
    }
    return outcome;
}

Outcome Wrappers::set_discard(int port, int mode)
{
    Outcome outcome = chip_.ports.check_discard(port, mode);
    if (outcome.ok()) {
        push(DiscardWrite{port, mode});
    }
    return outcome;
}

Outcome Wrappers::set_port_state(int port, int state)
{
    Outcome outcome = check_state(port, state);
    if (outcome.ok()) {
        push(PortStateWrite{port, state});
    }
    return outcome;
}

Outcome Wrappers::set_stg_state(int stg, int port, int state)
{
    Outcome outcome = check_state(port, state);
    // Groups are allocated at once, so the chip already knows them all.
    if (outcome.ok() && chip_.stgs.find(stg) == nullptr) {
        outcome = chip::unknown("spanning tree group", stg);
    }
    if (outcome.ok()) {
        push(StgStateWrite{stg, port, state});
    }
    return outcome;
}

Outcome Wrappers::set_switch_control(int control, int value)
{
    Outcome outcome = chip::SwitchControls::check(control);
    if (outcome.ok()) {
        push(SwitchControlWrite{control, value});
    }
    return outcome;
}

Outcome Wrappers::add_vlan_ports(int vlan, const chip::PortSet &ports,
                                 const chip::PortSet &untagged)
{
    Outcome outcome = check_vlan(vlan);
    if (outcome.ok()) {
        vlan_ports_[vlan] |= ports;
        push(VlanPortsAdd{vlan, ports, untagged});
    }
    return outcome;
}

Outcome Wrappers::remove_vlan_ports(int vlan, const chip::PortSet &ports)
{
    Outcome outcome = check_vlan(vlan);
    if (outcome.ok()) {
        vlan_ports_[vlan] -= ports;
        push(VlanPortsRemove{vlan, ports});
    }
    return outcome;
}

Outcome Wrappers::cache_vlan_port(int vlan, int port)
{
    Outcome outcome = check_vlan(vlan);
    if (outcome.ok()) {
        outcome = check_port(port);
    }
    if (outcome.ok()) {
        vlan_ports_[vlan].add(port);
    }
    return outcome;
}

Outcome Wrappers::destroy_vlan(int vlan)
{
    Outcome outcome = check_vlan(vlan);
    if (outcome.ok()) {
        if (bcm_vlan_control_vlan_t *cached = vlan_controls(vlan)) {
            *cached = {};
            vlan_control_changes_.note(vlan);
        }
        vlan_ports_.erase(vlan);
        push(VlanDestroy{vlan});
    }
    return outcome;
}

Outcome Wrappers::set_vlan_controls(int vlan, const bcm_vlan_control_vlan_t &control)
{
    Outcome outcome = check_vlan(vlan);
    if (outcome.ok()) {
        forgotten_vlans_.erase(vlan);
        vlan_controls_[vlan] = control;
        vlan_control_changes_.note(vlan);
        push(VlanControlsWrite{vlan, sdk::to_chip(control)});
    }
    return outcome;
}

Outcome Wrappers::set_vlan_blocks(int vlan, const bcm_vlan_block_t &block)
{
    Outcome outcome = check_vlan(vlan);
    if (outcome.ok()) {
        push(VlanBlocksWrite{vlan, sdk::to_chip(block)});
    }
    return outcome;
}

bcm_vlan_control_vlan_t *Wrappers::vlan_controls(int vlan)
{
    if (!chip::is_vlan(vlan) || forgotten_vlans_.contains(vlan)) {
        return nullptr;
    }
    return &vlan_controls_[vlan];
}

void Wrappers::forget_vlan_control(int vlan)
{
    vlan_controls_.erase(vlan);
    forgotten_vlans_.insert(vlan);
    vlan_control_changes_.note(vlan);
}

void Wrappers::store_vlan(int vlan)
{
    stored_vlans_.push_back(vlan);
    if (chip::is_vlan(vlan)) {
        vlan_control_changes_.note(vlan);
    }
}

bcm_vlan_block_t &Wrappers::vlan_blocks(int vlan)
{
    const bool has_own = vlan >= 0 && vlan <= chip::LAST_VLAN;
    return vlan_blocks_[has_own ? vlan : SPARE_BLOCK];
}

template <class Body> Outcome Wrappers::write_at_once(Body &&body)
{
    if (pending() != 0) {
        flush_by_itself();
    }
    Outcome outcome = body();
    if (outcome.ok()) {
        ++chip_.writes;
    }
    return outcome;
}

Outcome Wrappers::create_vlan(int vlan, const chip::VlanControls &controls)
{
    Outcome outcome = write_at_once([&] { return chip_.vlans.create(vlan); });
    if (outcome.ok()) {
        vlan_blocks(vlan) = {};
        outcome = set_vlan_controls(vlan, sdk::to_sdk(controls));
    }
    tell_of_write();
    return outcome;
}

Outcome Wrappers::set_vlan_stg(int vlan, int stg)
{
    Outcome outcome = write_at_once([&] { return chip_.stgs.add_vlan(stg, vlan); });
    tell_of_write();
    return outcome;
}

Outcome Wrappers::add_translation(const chip::TranslationKey &key,
                                  const chip::TranslationAction &action)
{
    Outcome outcome = chip::VlanTranslations::check(key);
    if (outcome.ok()) {
        push(TranslationAdd{key, action});
    }
    return outcome;
}

Outcome Wrappers::remove_translation(const chip::TranslationKey &key)
{
    Outcome outcome = chip::VlanTranslations::check(key);
    if (outcome.ok()) {
        push(TranslationDelete{key});
    }
    return outcome;
}

void Wrappers::rebuild_caches()
{
    vlan_controls_.clear();
    forgotten_vlans_.clear();
    vlan_ports_.clear();
    vlan_blocks_.clear();
    for (const auto &[id, vlan] : chip_.vlans.all()) {
        if (vlan.controls != chip::VlanControls{}) {
            vlan_controls_[id] = sdk::to_sdk(vlan.controls);
        }
        if (vlan.blocks != chip::VlanBlocks{}) {
            vlan_blocks_[id] = sdk::to_sdk(vlan.blocks);
        }
    }
    l3_interfaces_.clear();
    l3_interfaces_from_ = 0;
    for (const auto &[id, interface] : chip_.l3_interfaces.all()) {
        l3_interfaces_.insert(id);
    }
    l3_ingresses_.clear();
    for (const auto &[id, ingress] : chip_.l3_ingresses.all()) {
        l3_ingresses_[id] = sdk::to_sdk(ingress);
    }
    trunks_.clear();
}

void Wrappers::power_cycle()
{
    drop_pending();
    for (const auto &[vlan, controls] : vlan_controls_) {
        vlan_control_changes_.note(vlan);
    }
    for (const int vlan : forgotten_vlans_) {
        vlan_control_changes_.note(vlan);
    }
    rebuild_caches();
}

const bcm_vlan_control_vlan_t *Wrappers::kept_vlan_controls(int vlan) const
{
    const auto it = vlan_controls_.find(vlan);
    return it == vlan_controls_.end() ? nullptr : &it->second;
}

void Wrappers::restore_vlan_controls(int vlan, const chip::VlanControls *controls)
{
    if (controls == nullptr) {
        forget_vlan_control(vlan);
        return;
    }
    forgotten_vlans_.erase(vlan);
    vlan_controls_[vlan] = sdk::to_sdk(*controls);
}

void Wrappers::tell_of_write() const
{
    if (after_write_) {
        after_write_();
    }
}

void Wrappers::push(const QueuedWrite &write)
{
    queue_.push_back(write);
    if (queue_.size() >= capacity_) {
        flush_by_itself();
    }
}

} // namespace simswitch::fwm
