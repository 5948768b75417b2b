/*
 * lif.cpp: see lif.h.
 */
#include "l3lif/lif.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace lab::l3lif
{

namespace
{

/** A record that the library frees; throws std::bad_alloc. */
template <class Record> Record *zeroed()
{
    void *const memory = std::calloc(1, sizeof(Record));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<Record *>(memory);
}

} // namespace

Lif::Lif(simswitch::Switch &hardware, LifPlan plan) : hardware_(hardware), plan_(std::move(plan))
{
    record_.ifindex = plan_.ifindex;
    std::copy(plan_.mac.begin(), plan_.mac.end(), record_.mac);
    record_.l3lif_pi_ctxt = &properties_;
    record_.si_encap_vlan = plan_.vlan;
    record_.vlan = plan_.vlan;
    // The library sets it for all other kinds.
    record_.int_vlan = plan_.kind == config::Kind::svi ? plan_.vlan : std::uint16_t{0};
    properties_.ipv4_en = plan_.ipv4 ? 1 : 0;
    properties_.ipv6_en = plan_.ipv6 ? 1 : 0;
    properties_.vrf = plan_.vrf;
    properties_.ipv6_vrf = plan_.vrf;
    properties_.mtu = plan_.mtu;
    properties_.mpls_en = plan_.mpls ? 1 : 0;
    hardware_.directory.add(&record_);
}

Lif::~Lif()
{
    if (hardware_.directory.find(record_.ifindex) == &record_) {
        hardware_.directory.remove(record_.ifindex);
    }
    // The library frees the context when the interface goes for good; an
    // interface that is still up, or whose add failed, has it yet.
    if (record_.l3lif_pd_ctxt != nullptr) {
        std::free(record_.l3lif_pd_ctxt->l3_pd);
        std::free(record_.l3lif_pd_ctxt);
    }
}

void Lif::put_under_view()
{
    view_.ifindex = plan_.main;
    std::copy(plan_.mac.begin(), plan_.mac.end(), view_.mac);
    view_.int_vlan = plan_.vlan;
    view_.si_encap_vlan = plan_.vlan;
    view_.l3lif_pi_ctxt = &properties_;
    record_.main_l3lif = &view_;
}

::l3lif *Lif::take_over(const simswitch::services::StoredInterface &stored)
{
    properties_ = stored.properties.value_or(l3lif_pi_ctxt{});
    if (stored.hardware) {
        record_.l3lif_pd_ctxt = zeroed<l3lif_pd_ctxt>();
        record_.l3lif_pd_ctxt->l3_pd = zeroed<l3_pd>();
        *record_.l3lif_pd_ctxt->l3_pd = *stored.hardware;
        give_context_to_view();
    }
    ::l3lif *restored = record_.main_l3lif == &view_ ? &view_ : &record_;
    std::copy(stored.mac.begin(), stored.mac.end(), restored->mac);
    restored->int_vlan = stored.int_vlan;
    restored->vlan = stored.vlan;
    restored->si_encap_vlan = stored.si_encap_vlan;
    restored->tid = stored.tid;
    return restored;
}

int Lif::iif() const
{
    const l3lif_pd_ctxt *context = record_.l3lif_pd_ctxt;
    return context != nullptr && context->l3_pd != nullptr ? context->l3_pd->l3intf_id : 0;
}

} // namespace lab::l3lif
