/*
 * directory.cpp: what the layer above answers.
 */
#include "services/directory.h"

#include "fwm/host_state.h"
#include "journal/call.h"
#include "rtifhal_types.h"
#include "switch.h"

#include <fwmpd/l3_cache.h>
#include <l3lif/l3lif_layer.h>
#include <services/l3vm.h>

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <stdexcept>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Outcome;
using simswitch::Switch;

alignas(8) unsigned char l3lif_global_data[simswitch::services::LAYER_DATA_BYTES] = {};

namespace simswitch::services
{

namespace
{

/** The context of an interface that is in no other. */
constexpr std::uint32_t DEFAULT_CONTEXT = 1;

} // namespace

void Directory::add(l3lif *lif)
{
    lifs_[lif->ifindex] = lif;
}

l3lif *Directory::find(std::uint32_t ifindex) const
{
    const auto found = lifs_.find(ifindex);
    return found == lifs_.end() ? nullptr : found->second;
}

bool Directory::has_subinterfaces(std::uint32_t ifindex) const
{
    const l3lif *lif = find(ifindex);
    return lif != nullptr && lif->subint_tree != nullptr && lif->subint_tree->count != 0;
}

std::vector<l3lif *> Directory::all() const
{
    std::vector<l3lif *> lifs;
    lifs.reserve(lifs_.size());
    for (const auto &[ifindex, lif] : lifs_) {
        lifs.push_back(lif);
    }
    return lifs;
}

std::optional<std::uint32_t> Directory::ready_iif(std::uint32_t ifindex) const
{
    const auto ready = ready_.find(ifindex);
    if (ready != ready_.end() && !ready->second) {
        return std::nullopt;
    }
    const auto given = iifs_.find(ifindex);
    if (given != iifs_.end()) {
        return given->second;
    }
    const l3lif *lif = find(ifindex);
    const l3lif_pd_ctxt *context = lif == nullptr ? nullptr : lif->l3lif_pd_ctxt;
    const l3_pd *hardware = context == nullptr ? nullptr : context->l3_pd;
    if (hardware == nullptr) {
        return std::nullopt;
    }
    const std::uint32_t iif =
        hardware->brcm_prog_complete != 0 ? hardware->prev_l3_if_index : hardware->l3intf_id;
    return iif == 0 ? std::nullopt : std::optional(iif);
}

l3lif *Directory::find_by_int_vlan(std::uint16_t vlan) const
{
    const auto found = std::find_if(lifs_.begin(), lifs_.end(), [vlan](const auto &entry) {
        return vlan != 0 && entry.second->int_vlan == vlan;
    });
    return found == lifs_.end() ? nullptr : found->second;
}

std::uint32_t Directory::context(std::uint32_t ifindex) const
{
    const auto given = contexts_.find(ifindex);
    if (given != contexts_.end()) {
        return given->second;
    }
    const l3lif *lif = find(ifindex);
    const std::uint32_t vrf =
        lif == nullptr || lif->l3lif_pi_ctxt == nullptr ? 0 : lif->l3lif_pi_ctxt->vrf;
    return vrf == 0 ? DEFAULT_CONTEXT : vrf;
}

std::uint32_t Directory::iod(std::uint32_t ifindex)
{
    const auto next = static_cast<std::uint32_t>(iods_.size()) + 1;
    const auto [place, is_new] = iod_of_.try_emplace(ifindex, next);
    if (is_new) {
        iods_.push_back(ifindex);
    }
    return place->second;
}

std::optional<std::uint32_t> Directory::ifindex_of_iod(std::uint32_t iod) const
{
    return iod == 0 || iod > iods_.size() ? std::nullopt : std::optional(iods_[iod - 1]);
}

void Directory::set_flood_entry(std::size_t slot, std::uint32_t entry)
{
    if (slot >= LAYER_DATA_FLOOD_ENTRY_COUNT) {
        throw std::out_of_range(fmt::format("flood entry slot {} is not in 0..{}", slot,
                                            LAYER_DATA_FLOOD_ENTRY_COUNT - 1));
    }
    std::memcpy(&l3lif_global_data[LAYER_DATA_FLOOD_ENTRIES + slot * sizeof entry], &entry,
                sizeof entry);
}

} // namespace simswitch::services

extern "C" {

struct l3lif *l3lif_find_lif_from_ifindex(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run_pointer([&] { return Switch::current().directory.find(ifindex); });
}

struct l3lif *l3lif_find_lif_from_int_vlan(uint16_t vlan)
{
    Call call(Layer::service, __func__, vlan);
    return call.run_pointer([&] { return Switch::current().directory.find_by_int_vlan(vlan); });
}

int lcache_im_get_iod_frm_ifindex(uint32_t ifindex, uint32_t *iod)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] {
        *iod = Switch::current().directory.iod(ifindex);
        call.out("iod", static_cast<int>(*iod));
        return 0;
    });
}

uint32_t l3vm_if_get_context_id(uint32_t iod)
{
    Call call(Layer::service, __func__, static_cast<int>(iod));
    return static_cast<uint32_t>(call.run([&] {
        const simswitch::services::Directory &directory = Switch::current().directory;
        const auto ifindex = directory.ifindex_of_iod(iod);
        return static_cast<int>(ifindex ? directory.context(*ifindex) : 0);
    }));
}

int l3lif_get_iif_for_ifindex_new(uint32_t ifindex, l3lif_iif_info_t *info)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&]() -> Outcome {
        const auto iif = Switch::current().directory.ready_iif(ifindex);
        if (!iif) {
            return {simswitch::fwm::ERROR_INTERFACE_NOT_READY, "the interface is not ready"};
        }
        *info = {};
        info->l3iif = *iif;
        call.out("l3iif", *iif);
        return {};
    });
}

int rtifhal_if_has_si(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] { return Switch::current().directory.has_subinterfaces(ifindex) ? 1 : 0; });
}

int l3lif_update_sdb_for_intf(struct l3lif *l3lif)
{
    Call call(Layer::service, __func__, l3lif);
    return call.run([&] {
        if (l3lif != nullptr) {
            Switch::current().directory.note_update(l3lif->ifindex);
        }
        return 0;
    });
}

} // extern "C"
