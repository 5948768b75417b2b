/*
 * egresses.cpp: the table of egress objects.
 */
#include "chip/egresses.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "egress object";

} // namespace

std::string text(const Egress &egress)
{
    return fmt::format(
        "interface {} mac {} vlan {} module {} port {} trunk {} encap {} flags {:#x}",
        egress.interface, text(egress.mac), egress.vlan, egress.module, egress.port, egress.trunk,
        egress.encap_id, egress.flags);
}

Outcome Egresses::create(const Egress &egress, int &id)
{
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    id = ids_.take();
    table_.put(id, egress);
    return {};
}

Outcome Egresses::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown(KIND, id);
    }
    ids_.give_back(id);
    return {};
}

Outcome Egresses::set(int id, const Egress &egress)
{
    if (!table_.has(id)) {
        return unknown(KIND, id);
    }
    table_.put(id, egress);
    return {};
}

Outcome Egresses::restore(int id, const Egress &record)
{
    const int last = FIRST_EGRESS + static_cast<int>(limit_) - 1;
    if (id < FIRST_EGRESS || id > last) {
        return out_of_range(KIND, id, FIRST_EGRESS, last);
    }
    table_.put(id, record);
    ids_.take(id);
    return {};
}

} // namespace simswitch::chip
