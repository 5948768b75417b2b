/*
 * chip.cpp: what concerns the chip as a whole.
 */
#include "chip/chip.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

// The id of an entry as a trace's line has it.

std::string id_text(int id)
{
    return std::to_string(id);
}

template <class Key> std::string id_text(const Key &key)
{
    return text(key);
}

} // namespace

void Chip::track_authors()
{
    for_each_table([this](const char *name, auto &table) {
        table.changes().listen([this, name](const auto &key, Write write) {
            if (write == Write::put) {
                authors.wrote(name, id_text(key));
            } else {
                authors.ended(name, id_text(key));
            }
        });
    });
}

Outcome Chip::check() const
{
    if (stgs.find(DEFAULT_STG) == nullptr) {
        return unknown("spanning tree group", DEFAULT_STG);
    }
    for (const auto &[id, vlan] : vlans.all()) {
        if (stgs.find(vlan.stg) == nullptr) {
            return {ERROR_NOT_FOUND,
                    fmt::format("VLAN {} is in spanning tree group {}, which does not exist", id,
                                vlan.stg)};
        }
    }
    return {};
}

void Chip::power_cycle()
{
    for_each_table([](const char *, auto &table) { table.clear(); });
    const Chip fresh(kind_, limits_);
    const auto refill = [](auto &table, const auto &fresh_table) {
        for (const auto &[id, record] : fresh_table.all()) {
            table.restore(id, record);
        }
    };
    // All other tables are empty after power-on.
    refill(stgs, fresh.stgs);
    refill(vlans, fresh.vlans);
    refill(field_groups, fresh.field_groups);
    refill(field_entries, fresh.field_entries);
    authors.clear();
}

} // namespace simswitch::chip
