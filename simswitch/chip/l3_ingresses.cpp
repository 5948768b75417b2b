/*
 * l3_ingresses.cpp: the table of L3 ingress objects.
 */
#include "chip/l3_ingresses.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "L3 ingress object";

} // namespace

std::string text(const L3Ingress &ingress)
{
    return fmt::format("vrf {} urpf {} class {} ipmc {} qos {} flags {:#x}", ingress.vrf,
                       ingress.urpf_mode, ingress.intf_class, ingress.ipmc_intf, ingress.qos_map,
                       ingress.flags);
}

Outcome L3Ingresses::create(int id, const L3Ingress &ingress)
{
    if (id < 0 || id > LAST_IIF) {
        return out_of_range(KIND, id, 0, LAST_IIF);
    }
    if (table_.has(id)) {
        return existing(KIND, id);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    table_.put(id, ingress);
    return {};
}

Outcome L3Ingresses::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown(KIND, id);
    }
    return {};
}

Outcome L3Ingresses::set(int id, const L3Ingress &ingress)
{
    if (!table_.has(id)) {
        return create(id, ingress);
    }
    table_.put(id, ingress);
    return {};
}

} // namespace simswitch::chip
