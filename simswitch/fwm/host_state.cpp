/*
 * host_state.cpp: the port-channel map and the system's error texts.
 */
#include "fwm/host_state.h"

#include "journal/call.h"
#include "services/ifindex.h"
#include "switch.h"

#include <fwm/state.h>

#include <fmt/format.h>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Outcome;
using simswitch::Switch;

int g_fwm_pss_restore_mode = 0;
void *g_fwm_pss_context = nullptr;

namespace simswitch::fwm
{

void HostState::set_trunk_id(std::uint32_t ifindex, std::uint32_t tid)
{
    const std::uint32_t channel = if_index::main_interface(ifindex);
    trunk_id_changes_.note(channel);
    trunk_ids_[channel] = tid;
}

void HostState::forget_trunk_id(std::uint32_t ifindex)
{
    const std::uint32_t channel = if_index::main_interface(ifindex);
    trunk_id_changes_.note(channel);
    trunk_ids_.erase(channel);
}

void HostState::clear_trunk_ids()
{
    for (const auto &[channel, tid] : trunk_ids_) {
        trunk_id_changes_.note(channel);
    }
    trunk_ids_.clear();
}

std::optional<std::uint32_t> HostState::trunk_id(std::uint32_t ifindex) const
{
    const auto found = trunk_ids_.find(if_index::main_interface(ifindex));
    return found == trunk_ids_.end() ? std::nullopt : std::optional(found->second);
}

const char *HostState::error_text(int code)
{
    switch (code) {
    case 0:
        return "success";
    case ERROR_NO_SUCH_INTERFACE:
        return "no such interface";
    case ERROR_INTERFACE_NOT_READY:
        return "interface not ready";
    default:
        break;
    }
    std::string &text = unknown_errors_[code];
    if (text.empty()) {
        text = fmt::format("unknown error 0x{:x}", static_cast<unsigned>(code));
    }
    return text.c_str();
}

} // namespace simswitch::fwm

extern "C" {

int fwm_ifindex_2_tid(uint32_t ifindex, uint32_t *tid)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&]() -> Outcome {
        const auto known = Switch::current().host.trunk_id(ifindex);
        if (!known) {
            return {1, "port-channel has no trunk id"};
        }
        *tid = *known;
        call.out("tid", static_cast<unsigned long>(*known));
        return {};
    });
}

int fwm_pc_sdb_store(const uint16_t *key, const fwm_pc_sdb_value_t *value)
{
    Call call(Layer::service, __func__, *key, *value);
    return call.run([&] {
        Switch::current().host.set_trunk_id(value->ifindex, value->tid);
        return 0;
    });
}

const char *fwm_syserr2str(int code)
{
    Call call(Layer::service, __func__, code);
    return call.run_text([&] { return Switch::current().host.error_text(code); });
}

} // extern "C"
