/*
 * flood_list.cpp: see flood_list.h.
 */
#include "support/flood_list.h"

#include <fmt/format.h>

namespace rtifhal_test
{

namespace field_call
{

Lines flood_edit(int entry, const std::string &before, const std::string &after)
{
    return {
        fmt::format("bcm_field_action_ports_get(0, {}, 32) = 0 [ports={}]", entry, before),
        fmt::format("bcm_field_action_remove(0, {}, 32) = 0", entry),
        fmt::format("bcm_field_action_ports_add(0, {}, 32, {}) = 0", entry, after),
        fmt::format("bcm_field_entry_reinstall(0, {}) = 0", entry),
    };
}

Lines in_ports_edit(int entry, const std::string &before, const std::string &after)
{
    return {
        fmt::format("bcm_field_qualify_InPorts_get(0, {}) = 0 [data={} mask={{0-255}}]", entry,
                    before),
        fmt::format("bcm_field_qualifier_delete(0, {}, 13) = 0", entry),
        fmt::format("bcm_field_qualify_InPorts(0, {}, {}, {{0-255}}) = 0", entry, after),
        fmt::format("bcm_field_entry_reinstall(0, {}) = 0", entry),
    };
}

Lines edit_of_unknown(int entry, const std::string &after)
{
    return {
        fmt::format("bcm_field_action_ports_get(0, {}, 32) = -7", entry),
        fmt::format("bcm_field_action_remove(0, {}, 32) = -7", entry),
        fmt::format("bcm_field_action_ports_add(0, {}, 32, {}) = -7", entry, after),
        fmt::format("bcm_field_entry_reinstall(0, {}) = -7", entry),
    };
}

Lines joined(const std::vector<Lines> &parts)
{
    Lines all;
    for (const auto &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

} // namespace field_call

std::vector<int> FloodListTest::entries_of(const std::string &function) const
{
    std::vector<int> entries;
    for (const auto &call : calls_of({function})) {
        entries.push_back(std::stoi(call.substr(call.find(", ") + 2)));
    }
    return entries;
}

const simswitch::chip::FieldRule &FloodListTest::installed(int entry) const
{
    return *sw.chip.field_entries.find(entry)->installed;
}

bool FloodListTest::floods_to(int entry, int port) const
{
    return installed(entry).port_actions.at(32).has(port);
}

} // namespace rtifhal_test
